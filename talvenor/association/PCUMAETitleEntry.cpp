#include "talvenor/association/PCUMAETitleEntry.h"

#include <algorithm>
#include <tuple>

#include "talvenor/foundation/OneLine.h"
#include "talvenor/foundation/SystemClock.h"
#include "talvenor/foundation/TNTrace.h"

namespace
{

using Entry = PresentationContextUsageManager::PCUMAETitleEntry;

bool IsUsedLess(const Entry::ASTSFreqEntry* theOne, const Entry::ASTSFreqEntry* theOther)
{
   const auto anOrder = [](const Entry::ASTSFreqEntry& theRecord) {
      return std::tie(theRecord.itsUseCount, theRecord.itsKey.itsAbstractSyntax, theRecord.itsKey.itsTransferSyntax);
   };
   return anOrder(*theOne) < anOrder(*theOther);
}

RWCString Describe(const Entry::ASTSKey& theKey)
{
   return "Abstract Syntax = " + OnOneLine(theKey.itsAbstractSyntax) +
          ", Transfer Syntax = " + OnOneLine(theKey.itsTransferSyntax);
}

RWCString Describe(const Entry::ASTSFreqEntry& theRecord)
{
   return Describe(theRecord.itsKey) + ", Use Count = " + std::to_string(theRecord.itsUseCount) +
          ", Last Use Time = " + std::to_string(theRecord.itsLastUseTime);
}

void LogMissing(const char* theText, const Entry::ASTSFreqEntry& theRecord)
{
   LogEntry anEntry(gTNErrorLog);
   anEntry << theText << Describe(theRecord) << "\n";
}

} // namespace

Entry::ASTSKey::ASTSKey(const RWCString& theAbstractSyntax, const RWCString& theTransferSyntax)
    : itsAbstractSyntax(theAbstractSyntax), itsTransferSyntax(theTransferSyntax),
      itsHash(7 * std::hash<RWCString>()(theAbstractSyntax) + std::hash<RWCString>()(theTransferSyntax))
{}

Entry::PCUMAETitleEntry(const RWCString& theAETitle) : itsAETitle(theAETitle) {}

// The orders refer to the copies of the records.
Entry::PCUMAETitleEntry(const PCUMAETitleEntry& theOther)
    : itsAETitle(theOther.itsAETitle), itsRejected(theOther.itsRejected)
{
   for (const auto& [aKey, aRecord] : theOther.itsRecords)
   {
      itsRecords.emplace(aKey, std::make_unique<ASTSFreqEntry>(*aRecord));
   }
   for (const ASTSFreqEntry* aRecord : theOther.itsEntriesByFrequency)
   {
      itsEntriesByFrequency.push_back(itsRecords.at(aRecord->itsKey).get());
   }
   for (const ASTSFreqEntry* aRecord : theOther.itsEntriesByLastUseTime)
   {
      itsEntriesByLastUseTime.push_front(itsRecords.at(aRecord->itsKey).get());
   }
   itsEntriesByLastUseTime.reverse();
}

void Entry::IncrementUseCountAndTime(const RWCString& theAbstractSyntax, const RWCString& theTransferSyntax)
{
   const ASTSKey aKey(theAbstractSyntax, theTransferSyntax);
   const auto aPlace = itsRecords.find(aKey);
   if (aPlace != itsRecords.end())
   {
      Update(*aPlace->second);
   }
   else
   {
      Add(aKey);
   }
}

// A record leaves both orders before it changes: changed in its place it could not be found there again.
void Entry::Update(ASTSFreqEntry& theRecord)
{
   const bool wasInFrequencies = RemoveFromFrequencies(theRecord);
   if (!wasInFrequencies)
   {
      LogMissing("Error: Can't locate entry in itsEntriesByFrequency: ", theRecord);
   }
   if (itsEntriesByLastUseTime.remove(&theRecord) == 0)
   {
      LogMissing("Error: Can't locate entry in itsEntriesByLastUseTime: ", theRecord);
   }
   ++theRecord.itsUseCount;
   theRecord.itsLastUseTime = SystemClock::Get().WallMilliseconds();
   if (wasInFrequencies)
   {
      InsertByFrequency(theRecord);
   }
   itsEntriesByLastUseTime.push_front(&theRecord);
   TraceIncrement("Updated existing entry: ", theRecord);
}

void Entry::Add(const ASTSKey& theKey)
{
   auto aRecord = std::make_unique<ASTSFreqEntry>(ASTSFreqEntry{theKey, 1, SystemClock::Get().WallMilliseconds()});
   ASTSFreqEntry& aNewRecord = *aRecord;
   itsRecords.emplace(theKey, std::move(aRecord));
   InsertByFrequency(aNewRecord);
   itsEntriesByLastUseTime.push_front(&aNewRecord);
   TraceIncrement("Added new entry: ", aNewRecord);
}

bool Entry::RemoveFromFrequencies(ASTSFreqEntry& theRecord)
{
   const auto aPlace =
       std::lower_bound(itsEntriesByFrequency.begin(), itsEntriesByFrequency.end(), &theRecord, IsUsedLess);
   if (aPlace == itsEntriesByFrequency.end() || *aPlace != &theRecord)
   {
      return false;
   }
   itsEntriesByFrequency.erase(aPlace);
   return true;
}

void Entry::InsertByFrequency(ASTSFreqEntry& theRecord)
{
   itsEntriesByFrequency.insert(
       std::lower_bound(itsEntriesByFrequency.begin(), itsEntriesByFrequency.end(), &theRecord, IsUsedLess),
       &theRecord);
}

void Entry::TraceIncrement(const char* theWhat, const ASTSFreqEntry& theRecord) const
{
   if (gTNTracer(TNTrace::TNTracePresentationContextManager))
   {
      LogEntry anEntry(gTNTracer);
      anEntry << "PresentationContextUsageManager::PCUMAETitleEntry::IncrementUseCountAndTime(AE Title = "
              << OnOneLine(itsAETitle) << "): " << theWhat << Describe(theRecord) << "\n";
   }
}

// Fills a list of proposals from the records of one peer. Two numbers shrink by what a record costs, the contexts
// counted grow by what was asked for, which may be more: a default syntax that was there already costs nothing.
class Entry::ProposalBuilder
{
public:
   ProposalBuilder(const PCUMAETitleEntry& theEntry, const PresentationContextUsageManager& theManager,
                   PresentationContextProposalsList& theList, ProposalsDictionary& theProposals, unsigned int theCount,
                   unsigned int theMaxCount)
       : itsEntry(theEntry), itsManager(theManager), itsList(theList), itsProposals(theProposals), itsCount(theCount),
         itsMaxCount(theMaxCount), itsBudget(INT64{theMaxCount} - theCount)
   {}

   void Build()
   {
      INT64 aFrequencyBudget = itsBudget / 2;
      const auto& aFrequencies = itsEntry.itsEntriesByFrequency;
      for (auto aPlace = aFrequencies.rbegin(); aPlace != aFrequencies.rend() && aFrequencyBudget > 0; ++aPlace)
      {
         const INT64 aBudgetBefore = itsBudget;
         if (!Offer(**aPlace, "Added proposal by frequency:"))
         {
            return;
         }
         aFrequencyBudget -= aBudgetBefore - itsBudget;
      }
      for (const ASTSFreqEntry* aRecord : itsEntry.itsEntriesByLastUseTime)
      {
         if (itsBudget <= 0 || !Offer(*aRecord, "Added proposal by last use time:"))
         {
            return;
         }
      }
   }

private:
   // False when the record does not fit, which ends the building.
   bool Offer(const ASTSFreqEntry& theRecord, const char* theTraceText)
   {
      const auto& [anAbstractSyntax, aTransferSyntax, aHash] = theRecord.itsKey;
      PresentationContextProposals* aProposals = FindPresentationContextProposals(itsProposals, anAbstractSyntax);
      if (aProposals != nullptr && aProposals->ContainsTransferSyntax(aTransferSyntax))
      {
         return true;
      }
      std::unique_ptr<PresentationContextProposals> aNewProposals;
      if (aProposals == nullptr)
      {
         aNewProposals = std::make_unique<PresentationContextProposals>(anAbstractSyntax);
         aProposals = aNewProposals.get();
      }
      const INT64 aCost = 1 + INT64{itsManager.CountAddableDefaultTransferSyntaxes(aTransferSyntax, *aProposals)};
      if (itsCount + aCost > itsMaxCount)
      {
         return false;
      }
      itsBudget -= aCost;
      aProposals->AddTransferSyntax(aTransferSyntax);
      itsCount += 1 + INT64{itsManager.AddDefaultTransferSyntaxes(aTransferSyntax, *aProposals)};
      Trace(theTraceText, *aProposals);
      if (aNewProposals)
      {
         itsProposals.emplace(anAbstractSyntax, aProposals);
         itsList.push_back(aProposals);
         aNewProposals.release();
      }
      return true;
   }

   void Trace(const char* theText, const PresentationContextProposals& theProposals) const
   {
      if (gTNTracer(TNTrace::TNTracePresentationContextManager))
      {
         LogEntry anEntry(gTNTracer);
         anEntry << "PresentationContextUsageManager::PCUMAETitleEntry::GetBestProposals(AE Title = "
                 << OnOneLine(itsEntry.itsAETitle) << "): " << theText << "\n"
                 << theProposals.ToString();
      }
   }

   const PCUMAETitleEntry& itsEntry;
   const PresentationContextUsageManager& itsManager;
   PresentationContextProposalsList& itsList;
   ProposalsDictionary& itsProposals; // those that may get further lists
   INT64 itsCount;                    // contexts counted so far
   const INT64 itsMaxCount;
   INT64 itsBudget; // contexts that may still be spent
};

void Entry::GetBestProposals(const PresentationContextUsageManager& theManager,
                             PresentationContextProposalsList& theList, ProposalsDictionary& theProposals,
                             unsigned int theCount, unsigned int theMaxCount) const
{
   ProposalBuilder(*this, theManager, theList, theProposals, theCount, theMaxCount).Build();
}

RWCString Entry::ToString() const
{
   RWCString aText = "AE Title: " + OnOneLine(itsAETitle) + "\n\tBy frequency:\n";
   for (const ASTSFreqEntry* aRecord : itsEntriesByFrequency)
   {
      aText += "\t\t" + Describe(*aRecord) + "\n";
   }
   aText += "\tBy last use time:\n";
   for (const ASTSFreqEntry* aRecord : itsEntriesByLastUseTime)
   {
      aText += "\t\t" + Describe(*aRecord) + "\n";
   }
   aText += "\tRejected:\n";
   for (const ASTSKey& aKey : itsRejected)
   {
      aText += "\t\t" + Describe(aKey) + "\n";
   }
   return aText;
}
