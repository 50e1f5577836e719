// Loads the input as a UID dictionary or, with an odd first byte, as an index of private dictionaries.
#include <sstream>

#include <sys/mman.h>
#include <unistd.h>

#include "fuzz/Fuzzing.h"
#include "talvenor/dictionary/MUIDDictionary.h"
#include "talvenor/dictionary/PrivateDataDictionaryCatalog.h"
#include "talvenor/foundation/ExceptionBase.h"

namespace
{
void LoadUIDs(const std::string& theText)
{
   MUIDDictionary aDictionary;
   std::istringstream aStream(theText);
   try
   {
      aDictionary.Load(aStream);
   }
   catch (const ExceptionBase& anException)
   {
      Require(anException.why()[0] != '\0', "a failure without a text");
   }
   aDictionary.ForEach([&](const MUIDDictionaryEntry& theEntry) {
      Require(aDictionary.FindUID(theEntry.GetUID()) == &theEntry, "a UID is not found");
      Require(aDictionary.FindMnemonic(theEntry.GetMnemonic()) == &theEntry, "a mnemonic is not found");
   });
   const MUIDDictionary aCopy(aDictionary);
   Require(aCopy.Size() == aDictionary.Size(), "a copy has another size");
}

// The files that an index names are read when their creators are met, which is never here.
void LoadIndex(const std::string& theText)
{
   const int aFile = memfd_create("index", 0);
   Require(aFile >= 0, "no memory for the index");
   Require(write(aFile, theText.data(), theText.size()) == static_cast<ssize_t>(theText.size()), "short write");
   PrivateDataDictionaryCatalog aCatalog;
   try
   {
      aCatalog.AddDeferredIndex("/proc/self/fd/" + std::to_string(aFile));
   }
   catch (const ExceptionBase& anException)
   {
      Require(anException.why()[0] != '\0', "a failure without a text");
   }
   close(aFile);
   const PrivateDataDictionaryCatalog aCopy(aCatalog);
   Require(aCopy.Size() == aCatalog.Size(), "a copy has another size");
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
   theData[0] & 1 ? LoadIndex(aText) : LoadUIDs(aText);
   return 0;
}
