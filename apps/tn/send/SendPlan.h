// What is to be proposed for files that are to be sent (PS3.8 7.1.1.13): a presentation context for what each file is.
//
// A compressed file has one in its own transfer syntax and, if it may be decompressed, one that offers the native ones.
// A native one has one in its own, so that its bytes can go as they are, and one that offers the other native syntaxes,
// in case the peer does not take that. What does not fit into the contexts of one association goes into further ones.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "talvenor/foundation/BasicTypes.h"

struct SendFile;

struct SendContext
{
   bool operator==(const SendContext&) const = default;

   RWCString itsSOPClassUID;
   std::vector<RWCString> itsTransferSyntaxUIDs; // of which the peer takes one
};

// What one association is for.
struct SendBatch
{
   std::vector<SendContext> itsContexts;
   std::vector<std::size_t> itsFiles; // indices, in ascending order
   bool itsIsDecompressed = false;    // what the peer does not take compressed
};

constexpr std::size_t kMostContexts = 128; // the IDs are odd numbers of 8 bits

// theFiles in the order of their indices; no more than theMostContexts (at least 4) a batch.
std::vector<SendBatch> PlanBatches(std::span<const SendFile> theFiles, std::size_t theMostContexts = kMostContexts,
                                   bool theIsDecompressed = false);
