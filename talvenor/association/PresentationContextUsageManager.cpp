#include "talvenor/association/PresentationContextUsageManager.h"

#include "talvenor/association/PCUMAETitleEntry.h"
#include "talvenor/foundation/MutexWhileInScope.h"
#include "talvenor/foundation/OneLine.h"
#include "talvenor/foundation/TNTrace.h"
#include "talvenor/transfer/TransferSyntaxType.h"

namespace
{

// The instance is built before the UIDs of TransferSyntaxType.
constexpr const char* kExplicitVRLittleEndian = "1.2.840.10008.1.2.1";
constexpr const char* kImplicitVRLittleEndian = "1.2.840.10008.1.2";

void TraceEntry(const char* theText, const RWCString& theAETitle)
{
   if (gTNTracer(TNTrace::TNTracePresentationContextManager))
   {
      LogEntry anEntry(gTNTracer);
      anEntry << theText << OnOneLine(theAETitle) << "\n";
   }
}

void TraceBestProposals(const char* theOutcome, const PresentationContextProposalsList& theList,
                        unsigned int theMaxCount, const RWCString& theAETitle)
{
   if (!gTNTracer(TNTrace::TNTracePresentationContextManager))
   {
      return;
   }
   LogEntry anEntry(gTNTracer);
   anEntry << "PresentationContextUsageManager::GetBestProposals(MaxCount = " << theMaxCount
           << ", AE Title = " << OnOneLine(theAETitle) << "): " << theOutcome << theList.size() << " entries\n";
   for (const PresentationContextProposals* aProposals : theList)
   {
      anEntry << aProposals->ToString();
   }
}

} // namespace

PresentationContextUsageManager::PresentationContextUsageManager()
    : itsDefaultUncompressedTransferSyntaxes{kExplicitVRLittleEndian, kImplicitVRLittleEndian}
{}

PresentationContextUsageManager::PresentationContextUsageManager(const PresentationContextUsageManager& theOther)
{
   *this = theOther;
}

// The copies are made and exchanged under one mutex at a time: two managers assigned to each other do not wait for each
// other.
PresentationContextUsageManager&
PresentationContextUsageManager::operator=(const PresentationContextUsageManager& theOther)
{
   if (this == &theOther)
   {
      return *this;
   }
   decltype(itsEntries) anEntries;
   UIDList aSyntaxes;
   int aRecentUseTime = 0;
   {
      const MutexWhileInScope aLock(theOther.itsMutex);
      for (const auto& anEntry : theOther.itsEntries)
      {
         anEntries.insert(std::make_unique<PCUMAETitleEntry>(*anEntry));
      }
      aSyntaxes = theOther.itsDefaultUncompressedTransferSyntaxes;
      aRecentUseTime = theOther.itsRecentUseTime;
   }
   const MutexWhileInScope aLock(itsMutex);
   itsEntries.swap(anEntries);
   itsDefaultUncompressedTransferSyntaxes.swap(aSyntaxes);
   itsRecentUseTime = aRecentUseTime;
   return *this;
}

PresentationContextUsageManager::~PresentationContextUsageManager() = default;

std::size_t PresentationContextUsageManager::HashAETitleEntry::operator()(const RWCString& theAETitle) const
{
   return std::hash<RWCString>()(theAETitle);
}

std::size_t
PresentationContextUsageManager::HashAETitleEntry::operator()(const std::unique_ptr<PCUMAETitleEntry>& theEntry) const
{
   return (*this)(theEntry->GetAETitle());
}

const RWCString&
PresentationContextUsageManager::SameAETitle::TitleOf(const std::unique_ptr<PCUMAETitleEntry>& theEntry)
{
   return theEntry->GetAETitle();
}

PresentationContextUsageManager::PCUMAETitleEntry*
PresentationContextUsageManager::Find(const RWCString& theAETitle) const
{
   const auto aPlace = itsEntries.find(theAETitle);
   return aPlace != itsEntries.end() ? aPlace->get() : nullptr;
}

PresentationContextUsageManager::PCUMAETitleEntry&
PresentationContextUsageManager::FindOrAdd(const RWCString& theAETitle)
{
   PCUMAETitleEntry* const anEntry = Find(theAETitle);
   return anEntry != nullptr ? *anEntry : **itsEntries.insert(std::make_unique<PCUMAETitleEntry>(theAETitle)).first;
}

void PresentationContextUsageManager::IncrementUseCount(const RWCString& theAETitle, const RWCString& theAbstractSyntax,
                                                        const RWCString& theTransferSyntax)
{
   const MutexWhileInScope aLock(itsMutex);
   TraceEntry(Find(theAETitle) != nullptr
                  ? "PresentationContextUsageManager::IncrementUseCount: found entry for AE Title = "
                  : "PresentationContextUsageManager::IncrementUseCount: adding entry for AE Title = ",
              theAETitle);
   FindOrAdd(theAETitle).IncrementUseCountAndTime(theAbstractSyntax, theTransferSyntax);
}

void PresentationContextUsageManager::AddRejectedContext(const RWCString& theAETitle,
                                                         const RWCString& theAbstractSyntax,
                                                         const RWCString& theTransferSyntax)
{
   const MutexWhileInScope aLock(itsMutex);
   FindOrAdd(theAETitle).AddRejected({theAbstractSyntax, theTransferSyntax});
}

void PresentationContextUsageManager::RemoveRejectedContext(const RWCString& theAETitle,
                                                            const RWCString& theAbstractSyntax,
                                                            const RWCString& theTransferSyntax)
{
   const MutexWhileInScope aLock(itsMutex);
   if (PCUMAETitleEntry* const anEntry = Find(theAETitle))
   {
      anEntry->RemoveRejected({theAbstractSyntax, theTransferSyntax});
   }
   else
   {
      TraceEntry("PresentationContextUsageManager::RemoveRejectedContext: found no entry for AE Title = ", theAETitle);
   }
}

int PresentationContextUsageManager::IsRejectedContext(const RWCString& theAETitle, const RWCString& theAbstractSyntax,
                                                       const RWCString& theTransferSyntax) const
{
   const MutexWhileInScope aLock(itsMutex);
   const PCUMAETitleEntry* const anEntry = Find(theAETitle);
   return anEntry != nullptr && anEntry->IsRejected({theAbstractSyntax, theTransferSyntax});
}

void PresentationContextUsageManager::GetBestProposals(PresentationContextProposalsList& theList,
                                                       unsigned int theMaxCount, const RWCString& theAETitle,
                                                       const RWCString& theAbstractSyntax,
                                                       const RWCString& theTransferSyntax) const
{
   auto aProposals = std::make_unique<PresentationContextProposals>(theAbstractSyntax);
   aProposals->AddTransferSyntax(theTransferSyntax);
   AddDefaultTransferSyntaxes(theTransferSyntax, *aProposals);
   const unsigned int aCount = CountPresentationContexts(theList) + aProposals->GetPresentationContextCount();
   if (aCount > theMaxCount)
   {
      TraceBestProposals("Return list is full. Returning: ", theList, theMaxCount, theAETitle);
      return;
   }
   ProposalsDictionary aDictionary{{theAbstractSyntax, aProposals.get()}};
   theList.push_back(aProposals.get());
   aProposals.release();
   TraceBestProposals("Added proposal unconditionally: ", theList, theMaxCount, theAETitle);

   const MutexWhileInScope aLock(itsMutex);
   const PCUMAETitleEntry* const anEntry = Find(theAETitle);
   if (anEntry != nullptr)
   {
      anEntry->GetBestProposals(*this, theList, aDictionary, aCount, theMaxCount);
   }
   TraceBestProposals(anEntry != nullptr ? "Returning: " : "No proposals found for specified AE Title. Returning: ",
                      theList, theMaxCount, theAETitle);
}

unsigned int
PresentationContextUsageManager::AddDefaultTransferSyntaxes(const RWCString& theTransferSyntax,
                                                            PresentationContextProposals& theProposals) const
{
   const MutexWhileInScope aLock(itsMutex);
   unsigned int aCount = 0;
   for (const RWCString& aSyntax : itsDefaultUncompressedTransferSyntaxes)
   {
      if (aSyntax != theTransferSyntax)
      {
         theProposals.AddTransferSyntax(aSyntax);
         ++aCount;
      }
   }
   return aCount;
}

unsigned int PresentationContextUsageManager::CountAddableDefaultTransferSyntaxes(
    const RWCString& theTransferSyntax, const PresentationContextProposals& theProposals) const
{
   const MutexWhileInScope aLock(itsMutex);
   unsigned int aCount = 0;
   for (const RWCString& aSyntax : itsDefaultUncompressedTransferSyntaxes)
   {
      aCount += aSyntax != theTransferSyntax && !theProposals.ContainsTransferSyntax(aSyntax);
   }
   return aCount;
}

void PresentationContextUsageManager::GetDefaultUncompressedTransferSyntaxes(UIDList& theList) const
{
   const MutexWhileInScope aLock(itsMutex);
   theList = itsDefaultUncompressedTransferSyntaxes;
}

void PresentationContextUsageManager::SetDefaultUncompressedTransferSyntaxes(const UIDList& theList)
{
   const MutexWhileInScope aLock(itsMutex);
   itsDefaultUncompressedTransferSyntaxes = theList;
}

unsigned int PresentationContextUsageManager::CountPresentationContexts(const PresentationContextProposalsList& theList)
{
   unsigned int aCount = 0;
   for (const PresentationContextProposals* aProposals : theList)
   {
      aCount += aProposals->GetPresentationContextCount();
   }
   return aCount;
}

int PresentationContextUsageManager::IsCompressed(const RWCString& theTransferSyntax)
{
   return !TransferSyntaxType::IsUncompressed(theTransferSyntax);
}

PresentationContextProposals*
PresentationContextUsageManager::FindPresentationContextProposals(const ProposalsDictionary& theDictionary,
                                                                  const RWCString& theAbstractSyntax)
{
   const auto aPlace = theDictionary.find(theAbstractSyntax);
   return aPlace != theDictionary.end() ? aPlace->second : nullptr;
}

int PresentationContextUsageManager::GetRecentUseTime() const
{
   const MutexWhileInScope aLock(itsMutex);
   return itsRecentUseTime;
}

void PresentationContextUsageManager::SetRecentUseTime(int theSeconds)
{
   const MutexWhileInScope aLock(itsMutex);
   itsRecentUseTime = theSeconds;
}

RWCString PresentationContextUsageManager::ToString() const
{
   const MutexWhileInScope aLock(itsMutex);
   RWCString aText;
   for (const auto& anEntry : itsEntries)
   {
      aText += anEntry->ToString();
   }
   return aText;
}
