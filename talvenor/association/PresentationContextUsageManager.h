// What this process remembers of its peers: which combinations of abstract and transfer syntax were used with each, how
// often and how lately, and which each of them rejected. A requester asks it what to propose besides what it needs now,
// and does not keep choosing compressed syntaxes that the peer never takes. The association service teaches it
// rejections and acceptances, the storage service uses.
//
//    PresentationContextProposalsList aList;   // who holds the list owns the proposals
//    PresentationContextUsageManager::GetInstance().GetBestProposals(aList, 128, "ARCHIVE", aCTImageStorage, aSyntax);
//
// AE titles are texts without padding (AETitle::GetTitle), UIDs are texts; both are compared exactly. Nothing is ever
// forgotten, so titles must be those of peers that the host chose to call.
//
// Any thread may call any operation at any time: each holds the mutex while it looks at what is remembered.
#pragma once

#include <memory>
#include <unordered_map>
#include <unordered_set>

#include "talvenor/association/PresentationContextProposals.h"
#include "talvenor/foundation/Mutex.h"

class TALVENOR_API PresentationContextUsageManager
{
public:
   class PCUMAETitleEntry; // what is remembered of one peer; PCUMAETitleEntry.h

   using UIDList = RWTValOrderedVector<RWCString>;

   // Without memory of any peer; the uncompressed syntaxes are explicit, then implicit VR little endian.
   PresentationContextUsageManager();
   PresentationContextUsageManager(const PresentationContextUsageManager& theOther);
   PresentationContextUsageManager& operator=(const PresentationContextUsageManager& theOther);
   ~PresentationContextUsageManager();

   static PresentationContextUsageManager& GetInstance() { return itsInstance; }

   // One more use of the combination with the peer, now.
   void IncrementUseCount(const RWCString& theAETitle, const RWCString& theAbstractSyntax,
                          const RWCString& theTransferSyntax);

   void AddRejectedContext(const RWCString& theAETitle, const RWCString& theAbstractSyntax,
                           const RWCString& theTransferSyntax);
   void RemoveRejectedContext(const RWCString& theAETitle, const RWCString& theAbstractSyntax,
                              const RWCString& theTransferSyntax);
   int IsRejectedContext(const RWCString& theAETitle, const RWCString& theAbstractSyntax,
                         const RWCString& theTransferSyntax) const;

   // Appends to theList what to propose to the peer for a dataset of theAbstractSyntax in theTransferSyntax: that and
   // the uncompressed syntaxes, and then what was used with the peer most often and most lately, so that the whole list
   // makes at most theMaxCount presentation contexts. Appends nothing when what is needed now does not fit. What was in
   // theList is counted, and not looked into otherwise.
   void GetBestProposals(PresentationContextProposalsList& theList, unsigned int theMaxCount,
                         const RWCString& theAETitle, const RWCString& theAbstractSyntax,
                         const RWCString& theTransferSyntax) const;

   // Adds a list of its own for each uncompressed syntax other than theTransferSyntax, and returns how many those are,
   // including any that theProposals had already.
   unsigned int AddDefaultTransferSyntaxes(const RWCString& theTransferSyntax,
                                           PresentationContextProposals& theProposals) const;

   // How many uncompressed syntaxes other than theTransferSyntax are in no list of theProposals.
   unsigned int CountAddableDefaultTransferSyntaxes(const RWCString& theTransferSyntax,
                                                    const PresentationContextProposals& theProposals) const;

   // The uncompressed syntaxes that are proposed beside every other one, best first. Get replaces the contents of
   // theList.
   void GetDefaultUncompressedTransferSyntaxes(UIDList& theList) const;
   void SetDefaultUncompressedTransferSyntaxes(const UIDList& theList);

   static unsigned int CountPresentationContexts(const PresentationContextProposalsList& theList);

   // 0 for the three uncompressed syntaxes of the standard (PS3.5 A.1 to A.3), 1 for any other text.
   static int IsCompressed(const RWCString& theTransferSyntax);

   // By abstract syntax. The proposals are borrowed.
   using ProposalsDictionary = std::unordered_map<RWCString, PresentationContextProposals*>;
   static PresentationContextProposals* FindPresentationContextProposals(const ProposalsDictionary& theDictionary,
                                                                         const RWCString& theAbstractSyntax);

   // In seconds. Kept for callers: no choice depends on it.
   int GetRecentUseTime() const;
   void SetRecentUseTime(int theSeconds);

   // Everything that is remembered, for people to read. Control characters of titles and UIDs are written as full
   // stops.
   RWCString ToString() const;

private:
   struct HashAETitleEntry // transparent: an entry is found by its title
   {
      using is_transparent = void;
      std::size_t operator()(const RWCString& theAETitle) const;
      std::size_t operator()(const std::unique_ptr<PCUMAETitleEntry>& theEntry) const;
   };
   struct SameAETitle
   {
      using is_transparent = void;
      static const RWCString& TitleOf(const RWCString& theAETitle) { return theAETitle; }
      static const RWCString& TitleOf(const std::unique_ptr<PCUMAETitleEntry>& theEntry);
      template <class A, class B>
      bool operator()(const A& theOne, const B& theOther) const
      {
         return TitleOf(theOne) == TitleOf(theOther);
      }
   };

   static PresentationContextUsageManager itsInstance;

   // With the mutex held.
   PCUMAETitleEntry* Find(const RWCString& theAETitle) const; // null when there is none
   PCUMAETitleEntry& FindOrAdd(const RWCString& theAETitle);

   mutable Mutex itsMutex;
   std::unordered_set<std::unique_ptr<PCUMAETitleEntry>, HashAETitleEntry, SameAETitle> itsEntries;
   UIDList itsDefaultUncompressedTransferSyntaxes;
   int itsRecentUseTime = 0;
};
