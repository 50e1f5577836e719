#include "talvenor/foundation/TNXInitializer.h"

#include "talvenor/dictionary/MDataDictionary.h"
#include "talvenor/dictionary/MUIDDictionary.h"
#include "talvenor/dictionary/PrivateDataDictionaryCatalog.h"

bool TNXInitializer::SetDataDictionary(const RWCString& theFilename)
{
   return MDataDictionary::GetDefaultDataDictionary().Load(theFilename);
}

bool TNXInitializer::SetDataDictionary(std::istream& theStream)
{
   return MDataDictionary::GetDefaultDataDictionary().Load(theStream);
}

bool TNXInitializer::SetUIDDictionary(const RWCString& theFilename)
{
   return MUIDDictionary::GetDefaultUIDDictionary().Load(theFilename);
}

bool TNXInitializer::SetUIDDictionary(std::istream& theStream)
{
   return MUIDDictionary::GetDefaultUIDDictionary().Load(theStream);
}

int TNXInitializer::SetDefaultPrivateDataDictionaryList(const RWTValOrderedVector<RWCString>& theFilenames)
{
   return PrivateDataDictionaryCatalog::AddToDefaultCatalog(theFilenames);
}
