#include "talvenor/foundation/AETitle.h"

#include <algorithm>

void AETitle::Set(const char* theTitle)
{
   Assign(theTitle ? std::string_view(theTitle) : std::string_view());
}

void AETitle::Set(const std::string& theTitle)
{
   Set(theTitle.c_str());
}

std::string AETitle::GetTitle() const
{
   const std::string_view aTitle(itsCharacters.data(), itsLength);
   const std::size_t aFirst = aTitle.find_first_not_of(' ');
   if (aFirst == std::string_view::npos)
   {
      return std::string();
   }
   return std::string(aTitle.substr(aFirst, aTitle.find_last_not_of(' ') - aFirst + 1));
}

bool AETitle::IsNull() const
{
   return *this == AETitle();
}

bool AETitle::operator==(const char* theTitle) const
{
   return theTitle && *this == AETitle(theTitle);
}

void AETitle::Assign(std::string_view theTitle)
{
   theTitle.remove_prefix(std::min(theTitle.find_first_not_of(' '), theTitle.size()));
   theTitle = theTitle.substr(0, itsLength);
   itsCharacters.fill(' ');
   std::copy(theTitle.begin(), theTitle.end(), itsCharacters.begin());
   itsCharacters.back() = '\0';
}
