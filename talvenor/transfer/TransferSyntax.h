// What decoders and encoders have in common: the transfer syntax that they are made for and the data dictionary that
// they look types and private creators up in.
#pragma once

#include <memory>

#include "talvenor/foundation/BasicTypes.h"

class InstanceSpecificDataDictionary;
class TransferSyntaxType;

class TALVENOR_API TransferSyntax
{
public:
   virtual ~TransferSyntax();

   virtual const TransferSyntaxType& GetTransferSyntaxType() const = 0;

   // By default a dictionary of the object's own over the default public and private dictionaries, made on first use.
   virtual InstanceSpecificDataDictionary& GetDataDictionary() const;

   // The reference form borrows: the dictionary must outlive this object. The const reference form copies, the pointer
   // form adopts. The dictionary that was owned before is destroyed.
   virtual void SetDataDictionary(InstanceSpecificDataDictionary& theDictionary);
   virtual void SetDataDictionary(const InstanceSpecificDataDictionary& theDictionary);
   virtual void SetDataDictionary(InstanceSpecificDataDictionary* theDictionary);

protected:
   TransferSyntax() = default;
   explicit TransferSyntax(InstanceSpecificDataDictionary& theDictionary);
   explicit TransferSyntax(const InstanceSpecificDataDictionary& theDictionary);
   explicit TransferSyntax(InstanceSpecificDataDictionary* theDictionary);

   // Copies share the dictionary.
   TransferSyntax(const TransferSyntax&) = default;
   TransferSyntax& operator=(const TransferSyntax&) = default;

   // The dictionary for looking up only: without one of its own, the process-wide default one, which answers the same.
   const InstanceSpecificDataDictionary& GetLookupDictionary() const;

private:
   mutable std::shared_ptr<InstanceSpecificDataDictionary> itsDictionary; // owns nothing when borrowed
};
