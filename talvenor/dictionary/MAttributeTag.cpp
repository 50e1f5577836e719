#include "talvenor/dictionary/MAttributeTag.h"

#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/dictionary/MDataDictionary.h"
#include "talvenor/dictionary/PrivateDataDictionaryCatalog.h"

RWCString MAttributeTag::AsNumericString() const
{
   static constexpr char kDigits[] = "0123456789abcdef";
   RWCString aText = "gggg, eeee";
   for (std::size_t aDigit = 0; aDigit < 4; ++aDigit)
   {
      const std::size_t aShift = 12 - 4 * aDigit;
      aText[aDigit] = kDigits[itsGroup >> aShift & 0xF];
      aText[aDigit + 6] = kDigits[itsElement >> aShift & 0xF];
   }
   return aText;
}

RWCString MAttributeTag::AsString(const InstanceSpecificDataDictionary& theDictionary) const
{
   const MDDEntry* anEntry = theDictionary.Find(*this);
   return anEntry != nullptr ? anEntry->Name() : AsNumericString();
}

RWCString MAttributeTag::AsString() const
{
   return AsString(
       InstanceSpecificDataDictionary(MDataDictionary::itsDefaultDataDictionary,
                                      PrivateDataDictionaryCatalog::itsDefaultPrivateDataDictionaryCatalog));
}
