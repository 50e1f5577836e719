#include "talvenor/transfer/TransferSyntax.h"

#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/dictionary/MDataDictionary.h"
#include "talvenor/dictionary/PrivateDataDictionaryCatalog.h"

TransferSyntax::~TransferSyntax() = default;

TransferSyntax::TransferSyntax(InstanceSpecificDataDictionary& theDictionary)
{
   TransferSyntax::SetDataDictionary(theDictionary);
}

TransferSyntax::TransferSyntax(const InstanceSpecificDataDictionary& theDictionary)
{
   TransferSyntax::SetDataDictionary(theDictionary);
}

TransferSyntax::TransferSyntax(InstanceSpecificDataDictionary* theDictionary) : itsDictionary(theDictionary) {}

InstanceSpecificDataDictionary& TransferSyntax::GetDataDictionary() const
{
   if (!itsDictionary)
   {
      itsDictionary = std::make_shared<InstanceSpecificDataDictionary>(
          MDataDictionary::GetDefaultDataDictionary(),
          PrivateDataDictionaryCatalog::GetDefaultPrivateDataDictionaryCatalog());
   }
   return *itsDictionary;
}

void TransferSyntax::SetDataDictionary(InstanceSpecificDataDictionary& theDictionary)
{
   // Shares in the ownership of nothing: the dictionary stays the caller's. Its own one, asked for and handed back,
   // stays as it is.
   if (itsDictionary.get() != &theDictionary)
   {
      itsDictionary = std::shared_ptr<InstanceSpecificDataDictionary>(std::shared_ptr<void>(), &theDictionary);
   }
}

void TransferSyntax::SetDataDictionary(const InstanceSpecificDataDictionary& theDictionary)
{
   itsDictionary = std::make_shared<InstanceSpecificDataDictionary>(theDictionary);
}

void TransferSyntax::SetDataDictionary(InstanceSpecificDataDictionary* theDictionary)
{
   const bool isOwned = itsDictionary.use_count() != 0;
   if (itsDictionary.get() != theDictionary || !isOwned)
   {
      itsDictionary.reset(theDictionary);
   }
}

const InstanceSpecificDataDictionary& TransferSyntax::GetLookupDictionary() const
{
   return itsDictionary ? *itsDictionary : InstanceSpecificDataDictionary::GetDefaultInstanceSpecificDataDictionary();
}
