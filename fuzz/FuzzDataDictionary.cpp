// Loads the input as a data dictionary and, with an odd first byte, as a private one; whatever was loaded is found
// again and copied.
#include <sstream>

#include "fuzz/Fuzzing.h"
#include "talvenor/dictionary/MDataDictionary.h"
#include "talvenor/dictionary/MPrivateDataDictionary.h"
#include "talvenor/foundation/ExceptionBase.h"

namespace
{
template <class Dictionary>
void Load(Dictionary& theDictionary, const std::string& theText)
{
   std::istringstream aStream(theText);
   try
   {
      theDictionary.Load(aStream);
   }
   catch (const ExceptionBase& anException)
   {
      Require(anException.why()[0] != '\0', "a failure without a text");
   }
   std::size_t aCount = 0;
   theDictionary.ForEach([&](const MDDEntry& theEntry) {
      ++aCount;
      Require(theDictionary.MDataDictionary::Find(theEntry.Name()) == &theEntry, "a name is not found");
   });
   Require(aCount == theDictionary.Size(), "entries are lost");
   const Dictionary aCopy(theDictionary);
   Require(aCopy.Size() == aCount, "a copy has another size");
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* theData, std::size_t theSize)
{
   SetUpFuzzing();
   if (theSize == 0)
   {
      return 0;
   }
   const std::string aText(reinterpret_cast<const char*>(theData) + 1, theSize - 1);
   if (theData[0] & 1)
   {
      MPrivateDataDictionary aDictionary;
      Load(aDictionary, aText);
   }
   else
   {
      MDataDictionary aDictionary;
      Load(aDictionary, aText);
      aDictionary.ForEach([&](const MDDEntry& theEntry) {
         const MDDEntry* const aFound = aDictionary.Find(theEntry);
         const int aKind = theEntry.Group() >> 8;
         Require(aFound == &theEntry || aKind == 0x50 || aKind == 0x60, "a tag is not found");
      });
   }
   return 0;
}
