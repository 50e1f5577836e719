#include "talvenor/dictionary/UID.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "talvenor/dictionary/MUIDDictionary.h"
#include "talvenor/foundation/Exceptions.h"

namespace
{
bool MayBeginOrEndUID(char theCharacter)
{
   return (theCharacter >= '0' && theCharacter <= '9') || theCharacter == '.';
}

unsigned int RoundedUpToEven(std::size_t theLength)
{
   return static_cast<unsigned int>(theLength + (theLength & 1));
}
} // namespace

UID::UID(const RWCString& theText)
{
   Set(theText);
}

UID::UID(const char* theText, int theLength)
{
   Set(theText, theLength);
}

UID::UID(const UID& theOther)
{
   Set(theOther);
}

UID::~UID()
{
   UnsetDictionary();
}

UID& UID::operator=(const UID& theOther)
{
   if (this != &theOther)
   {
      Set(theOther);
   }
   return *this;
}

MUIDDictionary* UID::DefaultDictionary()
{
   return &MUIDDictionary::itsDefaultUIDDictionary;
}

void UID::Clear()
{
   itsSize = 0;
   std::memset(itsText, 0, sizeof itsText);
}

void UID::Set(const char* theText, int theLength)
{
   if (theText == nullptr || theLength > static_cast<int>(kMaximumLength))
   {
      Clear();
      return;
   }
   // A NUL ends the text in either form.
   std::string_view aText(theText, strnlen(theText, theLength < 0 ? kMaximumLength : static_cast<unsigned>(theLength)));
   if (theLength > 0 && aText.size() == static_cast<unsigned>(theLength) && !MayBeginOrEndUID(aText.back()))
   {
      aText.remove_suffix(1);
   }
   aText = aText.substr(0, aText.find_last_not_of(' ') + 1);
   if (aText.empty() || !MayBeginOrEndUID(aText.front()))
   {
      Clear();
      return;
   }

   // The whole buffer is rewritten, because Write sends bytes behind the text. The text may be our own.
   char aBuffer[sizeof itsText] = {};
   std::copy(aText.begin(), aText.end(), aBuffer);
   std::copy(std::begin(aBuffer), std::end(aBuffer), itsText);
   itsSize = RoundedUpToEven(aText.size());
}

void UID::Set(const RWCString& theText)
{
   Set(theText.c_str(), -1);
}

void UID::Set(const UID& theOther)
{
   const std::string_view aText = theOther.itsText;
   char aBuffer[sizeof itsText] = {};
   std::copy(aText.begin(), aText.end(), aBuffer);
   std::copy(std::begin(aBuffer), std::end(aBuffer), itsText);
   itsSize = RoundedUpToEven(std::min(theOther.itsSize, kMaximumLength));
}

void UID::SetLength(unsigned int theSize)
{
   const unsigned int aSize = std::min(theSize, kMaximumLength);
   std::fill(itsText + aSize, std::end(itsText), '\0');
   itsSize = RoundedUpToEven(aSize);
}

bool UID::operator==(const char* theText) const
{
   return std::strcmp(itsText, theText != nullptr ? theText : "") == 0;
}

bool UID::operator==(const RWCString& theText) const
{
   return theText == itsText;
}

bool UID::operator==(const UID& theOther) const
{
   return std::strcmp(itsText, theOther.itsText) == 0;
}

int UID::SetUIDDictionary(const RWCString& theFileName)
{
   UnsetDictionary();
   auto aDictionary = std::make_unique<MUIDDictionary>();
   try
   {
      if (!aDictionary->Load(theFileName))
      {
         return 0;
      }
   }
   catch (const TalvenorException&)
   {
      return 0;
   }
   itsDictionary = aDictionary.release();
   itsOwnsDictionary = 1;
   return 1;
}

void UID::SetUIDDictionary(MUIDDictionary& theDictionary)
{
   if (&theDictionary == itsDictionary)
   {
      return; // also when it is owned: it must not be destroyed
   }
   UnsetDictionary();
   itsDictionary = &theDictionary;
}

void UID::UnsetDictionary()
{
   if (itsOwnsDictionary != 0)
   {
      delete itsDictionary;
   }
   itsDictionary = nullptr;
   itsOwnsDictionary = 0;
}
