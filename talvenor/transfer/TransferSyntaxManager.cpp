#include "talvenor/transfer/TransferSyntaxManager.h"

#include "talvenor/dictionary/MUIDDictionary.h"
#include "talvenor/dictionary/MUIDDictionaryEntry.h"
#include "talvenor/foundation/MutexWhileInScope.h"
#include "talvenor/transfer/TransferSyntaxTypes.h"

constinit Mutex TransferSyntaxManager::itsMutex;

TransferSyntaxManager::TransferSyntaxManager(const TransferSyntaxManager& theOther)
{
   *this = theOther;
}

TransferSyntaxManager& TransferSyntaxManager::operator=(const TransferSyntaxManager& theOther)
{
   if (this != &theOther)
   {
      MutexWhileInScope aLock(itsMutex);
      Clear();
      for (const auto& [aUID, aType] : theOther.itsTypes)
      {
         RegisterTransferSyntaxType(aType->Copy());
      }
   }
   return *this;
}

TransferSyntaxManager& TransferSyntaxManager::GetDefaultInstance()
{
   // Never destroyed: decoders that other threads still hold at exit refer to its type objects.
   static TransferSyntaxManager* ourInstance = nullptr;

   MutexWhileInScope aLock(itsMutex);
   if (ourInstance == nullptr)
   {
      auto anInstance = std::make_unique<TransferSyntaxManager>();
      anInstance->AddWellKnownSyntaxes();
      ourInstance = anInstance.release();
   }
   return *ourInstance;
}

void TransferSyntaxManager::AddWellKnownSyntaxes()
{
   RegisterTransferSyntaxType(new LittleEndianImplicitTransferSyntaxType);
   RegisterTransferSyntaxType(new LittleEndianExplicitTransferSyntaxType);
   RegisterTransferSyntaxType(new BigEndianExplicitTransferSyntaxType);
   RegisterTransferSyntaxType(new JPEG2KLosslessTransferSyntaxType);
   RegisterTransferSyntaxType(new JPEG2KTransferSyntaxType);
   RegisterTransferSyntaxType(new JPEG50TransferSyntaxType);
   RegisterTransferSyntaxType(new JPEG51TransferSyntaxType);
   RegisterTransferSyntaxType(new JPEG57TransferSyntaxType);
   RegisterTransferSyntaxType(new JPEG70TransferSyntaxType);
   RegisterTransferSyntaxType(new JPEGLSTransferSyntaxType);
   RegisterTransferSyntaxType(new JPEGNLSTransferSyntaxType);
   RegisterTransferSyntaxType(new RLETransferSyntaxType);
}

void TransferSyntaxManager::RegisterTransferSyntaxType(TransferSyntaxType* theType)
{
   std::unique_ptr<TransferSyntaxType> aType(theType);
   MutexWhileInScope aLock(itsMutex);
   const auto [aPlace, anIsNew] = itsTypes.try_emplace(aType->GetUID(), nullptr);
   if (anIsNew)
   {
      aPlace->second = std::move(aType);
   }
   else if (aPlace->second.get() == theType)
   {
      aType.release(); // the registered object itself: it stays where it is
   }
}

void TransferSyntaxManager::UnegisterTransferSyntaxType(const RWCString& theUID)
{
   MutexWhileInScope aLock(itsMutex);
   if (const auto aPlace = itsTypes.find(theUID); aPlace != itsTypes.end())
   {
      itsTypes.erase(aPlace); // by place: theUID may be the object's own
   }
}

const TransferSyntaxType* TransferSyntaxManager::GetTransferSyntaxType(const RWCString& theUID) const
{
   const auto aPlace = itsTypes.find(theUID);
   return aPlace != itsTypes.end() ? aPlace->second.get() : nullptr;
}

void TransferSyntaxManager::Clear()
{
   MutexWhileInScope aLock(itsMutex);
   itsTypes.clear();
}

TransferSyntaxType::BasicTransferSyntaxType TransferSyntaxManager::GetBasicTransferSyntaxType(const RWCString& theUID)
{
   const MUIDDictionaryEntry* anEntry = MUIDDictionary::GetDefaultUIDDictionary().FindUID(theUID);
   return anEntry != nullptr ? anEntry->GetBasicTransferSyntaxType() : TransferSyntaxType::UnknownBasicType;
}
