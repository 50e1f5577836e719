// The registry of transfer syntaxes: type objects by UID, which must match exactly.
//
// Threads: registering, unregistering, clearing and copying take one process-wide mutex. Lookups take none: they run
// side by side, but not beside a change. The default registry is made on first use and lives as long as the process.
#pragma once

#include <memory>
#include <unordered_map>

#include "talvenor/foundation/BasicTypes.h"
#include "talvenor/foundation/Mutex.h"
#include "talvenor/transfer/TransferSyntaxType.h"

class TALVENOR_API TransferSyntaxManager
{
public:
   TransferSyntaxManager() = default;
   TransferSyntaxManager(const TransferSyntaxManager& theOther); // copies every type object
   TransferSyntaxManager& operator=(const TransferSyntaxManager& theOther);

   // The process-wide registry with the syntaxes of AddWellKnownSyntaxes.
   static TransferSyntaxManager& GetDefaultInstance();

   // Registers one object of each class of TransferSyntaxTypes.h.
   void AddWellKnownSyntaxes();

   // Takes theType. The first registration of a UID wins: a later object is destroyed.
   void RegisterTransferSyntaxType(TransferSyntaxType* theType);

   // Destroys the object; a UID that is not registered is ignored.
   void UnegisterTransferSyntaxType(const RWCString& theUID);

   // Null when the UID is not registered. Valid until the UID is unregistered or the registry cleared.
   const TransferSyntaxType* GetTransferSyntaxType(const RWCString& theUID) const;

   void Clear();

   // The basic kind that the default UID dictionary (not this registry) states; UnknownBasicType without an entry.
   static TransferSyntaxType::BasicTransferSyntaxType GetBasicTransferSyntaxType(const RWCString& theUID);

private:
   static Mutex itsMutex; // guards the changes of every registry

   std::unordered_map<RWCString, std::unique_ptr<TransferSyntaxType>> itsTypes;
};
