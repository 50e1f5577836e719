// A service that a node gives to its peers: Verification, Storage, ... One object serves one association, on its
// thread.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "talvenor/foundation/BasicTypes.h"

class DICOMCommandObject;
class PDU_Service;

class NodeRole
{
public:
   static constexpr UINT64 kLongestIdentifier = 1 << 20; // room for 16,000 UIDs

   virtual ~NodeRole() = default;

   // Whether a presentation context for the abstract syntax is accepted, and its commands are for this role.
   virtual bool Accepts(const RWCString& theAbstractSyntax) const = 0;

   // Whether data sets may come in compressed transfer syntaxes: they may where they are kept as they come.
   virtual bool TakesCompressed() const { return false; }

   // Serves a command on such a context with all its messages. 0 when the association cannot go on, with the cause in
   // the result code of theService; a request that has been answered with a refusal is served.
   virtual int Serve(PDU_Service& theService, DICOMCommandObject& theCommand) = 0;

   // The longest data set of a request, in bytes, that is read into memory.
   virtual UINT64 GetLongestDataset() const { return kLongestIdentifier; }

   // What has been done, for the log at the end of the association ("12 stored, 1 refused"); empty for nothing.
   virtual std::string Describe() const = 0;
};

// Makes the role for an association with the peer; of any thread.
using NodeRoleMaker = std::function<std::unique_ptr<NodeRole>()>;
using NodeRoleMakers = std::vector<NodeRoleMaker>;
