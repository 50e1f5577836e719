#include "talvenor/ul/ImplementationVersionName.h"

#include <algorithm>
#include <string_view>

#include "talvenor/ul/PDUInputStream.h"
#include "talvenor/ul/PDUOutputStream.h"
#include "talvenor/ul/ULFailure.h"

void ImplementationVersionName::Set(const char* theName)
{
   std::string_view aName = theName != nullptr ? theName : "";
   aName = aName.empty() ? " " : aName.substr(0, kMaximumLength);
   std::array<char, kMaximumLength + 1> aCharacters{}; // the name may be our own
   std::copy(aName.begin(), aName.end(), aCharacters.begin());
   itsCharacters = aCharacters;
   itsLength = static_cast<unsigned int>(aName.size());
}

int ImplementationVersionName::Read(PDUInputStream& theStream, unsigned int theLength)
{
   if (theLength > kMaximumLength)
   {
      RaiseULFailure("ImplementationVersionName::Read: invalid item length", TN_ITEM_LENGTH_MISMATCH);
   }
   Set(" ");
   char aName[kMaximumLength] = {};
   if (theStream.DULRead(reinterpret_cast<unsigned char*>(aName), theLength) != theLength)
   {
      RaiseULFailure("ImplementationVersionName::Read: EOF while reading item", TN_END_OF_FILE);
   }
   const char* const anEnd = std::find(aName, aName + theLength, '\0');
   itsCharacters = {};
   std::copy(static_cast<const char*>(aName), anEnd, itsCharacters.begin());
   itsLength = static_cast<unsigned int>(anEnd - aName);
   return 1;
}

int ImplementationVersionName::Write(PDUOutputStream& theStream) const
{
   theStream.Write(reinterpret_cast<const unsigned char*>(itsCharacters.data()), itsLength);
   return 1;
}
