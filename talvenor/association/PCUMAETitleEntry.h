// What the usage manager remembers of one peer: a record for each combination of abstract and transfer syntax that was
// used, in two orders, and the combinations that the peer rejected. Internal to the usage manager, whose mutex protects
// it.
//
// A record is owned by the dictionary and referred to from both orders:
//
//    itsRecords                key -> record
//    itsEntriesByFrequency     records, ascending by use count, abstract syntax, transfer syntax
//    itsEntriesByLastUseTime   records, the one used last in front
#pragma once

#include <forward_list>
#include <memory>
#include <unordered_map>
#include <unordered_set>

#include "talvenor/association/PresentationContextUsageManager.h"

class PresentationContextUsageManager::PCUMAETitleEntry
{
public:
   // A combination of abstract and transfer syntax. The hash is computed once.
   struct ASTSKey
   {
      ASTSKey(const RWCString& theAbstractSyntax, const RWCString& theTransferSyntax);
      bool operator==(const ASTSKey& theOther) const
      {
         return itsAbstractSyntax == theOther.itsAbstractSyntax && itsTransferSyntax == theOther.itsTransferSyntax;
      }

      RWCString itsAbstractSyntax;
      RWCString itsTransferSyntax;
      std::size_t itsHash;
   };
   struct HashASTSKey
   {
      std::size_t operator()(const ASTSKey& theKey) const { return theKey.itsHash; }
   };

   struct ASTSFreqEntry
   {
      ASTSKey itsKey;
      UINT32 itsUseCount;
      INT64 itsLastUseTime; // milliseconds since 1970-01-01T00:00:00Z
   };

   explicit PCUMAETitleEntry(const RWCString& theAETitle);
   PCUMAETitleEntry(const PCUMAETitleEntry& theOther);
   PCUMAETitleEntry& operator=(const PCUMAETitleEntry&) = delete;

   const RWCString& GetAETitle() const { return itsAETitle; }

   void IncrementUseCountAndTime(const RWCString& theAbstractSyntax, const RWCString& theTransferSyntax);

   void AddRejected(const ASTSKey& theKey) { itsRejected.insert(theKey); }
   void RemoveRejected(const ASTSKey& theKey) { itsRejected.erase(theKey); }
   bool IsRejected(const ASTSKey& theKey) const { return itsRejected.contains(theKey); }

   // Appends what the peer's history suggests. theProposals are those that may get further lists, by abstract syntax;
   // theCount, at most theMaxCount, is the number of contexts so far.
   void GetBestProposals(const PresentationContextUsageManager& theManager, PresentationContextProposalsList& theList,
                         ProposalsDictionary& theProposals, unsigned int theCount, unsigned int theMaxCount) const;

   RWCString ToString() const;

private:
   class ProposalBuilder;

   void Update(ASTSFreqEntry& theRecord);
   void Add(const ASTSKey& theKey);
   bool RemoveFromFrequencies(ASTSFreqEntry& theRecord);
   void InsertByFrequency(ASTSFreqEntry& theRecord);
   void TraceIncrement(const char* theWhat, const ASTSFreqEntry& theRecord) const;

   RWCString itsAETitle;
   RWTValOrderedVector<ASTSFreqEntry*> itsEntriesByFrequency;
   std::forward_list<ASTSFreqEntry*> itsEntriesByLastUseTime;
   std::unordered_map<ASTSKey, std::unique_ptr<ASTSFreqEntry>, HashASTSKey> itsRecords{kBuckets};
   std::unordered_set<ASTSKey, HashASTSKey> itsRejected{kBuckets};

   static constexpr std::size_t kBuckets = 64; // to start with
};
