#include "talvenor/association/PresentationContextUsageManager.h"

#include <gtest/gtest.h>

#include <memory>

#include "tests/support/FakeClock.h"
#include "tests/support/OnAnotherThread.h"

namespace
{

using List = PresentationContextProposals::TransferSyntaxList;

constexpr const char* kCT = "1.2.840.10008.5.1.4.1.1.2";
constexpr const char* kMR = "1.2.840.10008.5.1.4.1.1.4";
constexpr const char* kUS = "1.2.840.10008.5.1.4.1.1.6.1";
constexpr const char* kImplicit = "1.2.840.10008.1.2";
constexpr const char* kExplicit = "1.2.840.10008.1.2.1";
constexpr const char* kBaseline = "1.2.840.10008.1.2.4.50";
constexpr const char* kLossless = "1.2.840.10008.1.2.4.70";
constexpr const char* kPeer = "ARCHIVE";

// Short names: "CT(70|E|I)" is a proposal of CT image storage with three lists.
std::string Short(const RWCString& theUID)
{
   const std::pair<const char*, const char*> kNames[] = {
       {kCT, "CT"}, {kMR, "MR"}, {kUS, "US"}, {kImplicit, "I"}, {kExplicit, "E"}, {kBaseline, "50"}, {kLossless, "70"}};
   for (const auto& [aUID, aName] : kNames)
   {
      if (theUID == aUID)
      {
         return aName;
      }
   }
   return theUID;
}

struct ProposalList // owns what it holds
{
   ~ProposalList()
   {
      for (const PresentationContextProposals* aProposals : itsList)
      {
         delete aProposals;
      }
   }
   std::string Text() const
   {
      std::string aText;
      for (const PresentationContextProposals* aProposals : itsList)
      {
         aText += (aText.empty() ? "" : " ") + Short(aProposals->GetAbstractSyntax()) + "(";
         for (const List& aList : aProposals->GetTransferSyntaxLists())
         {
            aText += (aText.back() == '(' ? "" : "|") + Short(aList.front());
         }
         aText += ")";
      }
      return aText;
   }
   PresentationContextProposalsList itsList;
};

std::string Best(const PresentationContextUsageManager& theManager, unsigned int theMaxCount,
                 const char* theAbstractSyntax = kCT, const char* theTransferSyntax = kLossless)
{
   ProposalList aList;
   theManager.GetBestProposals(aList.itsList, theMaxCount, kPeer, theAbstractSyntax, theTransferSyntax);
   return aList.Text();
}

void Use(PresentationContextUsageManager& theManager, const char* theAbstractSyntax, const char* theTransferSyntax,
         int theCount = 1)
{
   for (int i = 0; i < theCount; ++i)
   {
      theManager.IncrementUseCount(kPeer, theAbstractSyntax, theTransferSyntax);
   }
}

} // namespace

TEST(PresentationContextUsageManager, RemembersWhatAPeerRejectedUntilItAccepts)
{
   PresentationContextUsageManager aManager;
   aManager.RemoveRejectedContext(kPeer, kCT, kBaseline);
   aManager.AddRejectedContext(kPeer, kCT, kBaseline);
   EXPECT_TRUE(aManager.IsRejectedContext(kPeer, kCT, kBaseline));
   EXPECT_FALSE(aManager.IsRejectedContext(kPeer, kCT, kExplicit));
   EXPECT_FALSE(aManager.IsRejectedContext(kPeer, kMR, kBaseline));
   EXPECT_FALSE(aManager.IsRejectedContext("archive", kCT, kBaseline));
   aManager.RemoveRejectedContext(kPeer, kCT, kBaseline);
   EXPECT_FALSE(aManager.IsRejectedContext(kPeer, kCT, kBaseline));
}

TEST(PresentationContextUsageManager, ProposesWhatIsNeededNowOrNothing)
{
   const PresentationContextUsageManager aManager;
   EXPECT_EQ(Best(aManager, 3), "CT(70|E|I)");
   EXPECT_EQ(Best(aManager, 2), "");
   EXPECT_EQ(Best(aManager, 2, kCT, kExplicit), "CT(E|I)");
   ProposalList aList;
   aList.itsList.push_back(new PresentationContextProposals(kCT));
   aList.itsList.back()->AddTransferSyntax(kLossless);
   aManager.GetBestProposals(aList.itsList, 3, kPeer, kCT, kLossless);
   EXPECT_EQ(aList.Text(), "CT(70)") << "a context that was there counts";
   aManager.GetBestProposals(aList.itsList, 4, kPeer, kCT, kLossless);
   EXPECT_EQ(aList.Text(), "CT(70) CT(70|E|I)") << "a proposal that was there is left alone";
}

// Half of what is left is spent on what was used most often, the rest on what was used last.
TEST(PresentationContextUsageManager, ProposesThePeersHistoryWithinTheLimit)
{
   struct Case
   {
      const char* itsName;
      unsigned int itsMaxCount;
      const char* itsExpected;
   };
   // CT needs three contexts, the budget is the rest.
   const Case kCases[] = {
       {"no budget", 3, "CT(70|E|I)"},
       {"a budget of 1 has no half; US 50 costs 3", 4, "CT(70|E|I)"},
       {"a budget of 3, half is 1: MR 70, the most used, costs 3", 6, "CT(70|E|I) MR(70|E|I)"},
       {"a budget of 6, half is 3: then US 50, the last used", 9, "CT(70|E|I) MR(70|E|I) US(50|E|I)"},
       {"a budget of 8, half is 4: MR 70 and MR 50, by which 5 are counted for MR", 11, "CT(70|E|I) MR(70|E|I|50)"},
       {"room for all", 128, "CT(70|E|I) MR(70|E|I|50) US(50|E|I)"},
   };
   PresentationContextUsageManager aManager;
   Use(aManager, kMR, kBaseline, 2);
   Use(aManager, kMR, kLossless, 3);
   Use(aManager, kUS, kBaseline);
   for (const Case& aCase : kCases)
   {
      EXPECT_EQ(Best(aManager, aCase.itsMaxCount), aCase.itsExpected) << aCase.itsName;
   }
}

TEST(PresentationContextUsageManager, OrdersByFrequencyAndByLastUse)
{
   FakeClock aClock(1'700'000'000'123);
   PresentationContextUsageManager aManager;
   Use(aManager, kCT, kBaseline, 3);
   aClock.Advance(1);
   Use(aManager, kCT, kLossless);
   const RWCString aRecord = "\t\tAbstract Syntax = " + RWCString(kCT) + ", Transfer Syntax = ";
   const RWCString aBaseline = aRecord + kBaseline + ", Use Count = 3, Last Use Time = 1700000000123\n";
   const RWCString aLossless = aRecord + kLossless + ", Use Count = 1, Last Use Time = 1700000001123\n";
   EXPECT_EQ(aManager.ToString(), "AE Title: ARCHIVE\n\tBy frequency:\n" + aLossless + aBaseline +
                                      "\tBy last use time:\n" + aLossless + aBaseline + "\tRejected:\n");
   aClock.Advance(1);
   Use(aManager, kCT, kBaseline);
   const RWCString aBaselineAgain = aRecord + kBaseline + ", Use Count = 4, Last Use Time = 1700000002123\n";
   EXPECT_EQ(aManager.ToString(), "AE Title: ARCHIVE\n\tBy frequency:\n" + aLossless + aBaselineAgain +
                                      "\tBy last use time:\n" + aBaselineAgain + aLossless + "\tRejected:\n");
}

TEST(PresentationContextUsageManager, ACopyRemembersTheSameAndGoesItsOwnWay)
{
   PresentationContextUsageManager aManager;
   Use(aManager, kMR, kLossless);
   aManager.AddRejectedContext(kPeer, kMR, kBaseline);
   PresentationContextUsageManager aCopy(aManager);
   EXPECT_EQ(aCopy.ToString(), aManager.ToString());
   Use(aCopy, kUS, kLossless);
   aCopy.RemoveRejectedContext(kPeer, kMR, kBaseline);
   EXPECT_EQ(Best(aManager, 128), "CT(70|E|I) MR(70|E|I)");
   EXPECT_TRUE(aManager.IsRejectedContext(kPeer, kMR, kBaseline));
   aManager = aCopy;
   EXPECT_EQ(aManager.ToString(), aCopy.ToString());
}

TEST(PresentationContextUsageManager, TheUncompressedSyntaxesAreAddedBesideOthers)
{
   PresentationContextUsageManager aManager;
   PresentationContextProposals aProposals(kCT);
   EXPECT_EQ(aManager.AddDefaultTransferSyntaxes(kExplicit, aProposals), 1u);
   EXPECT_EQ(aProposals.GetTransferSyntaxLists(), std::vector<List>{{kImplicit}});
   EXPECT_EQ(aManager.CountAddableDefaultTransferSyntaxes(kLossless, aProposals), 1u);
   EXPECT_EQ(aManager.AddDefaultTransferSyntaxes(kLossless, aProposals), 2u) << "one that was there counts too";
   EXPECT_EQ(aManager.CountAddableDefaultTransferSyntaxes(kLossless, aProposals), 0u);
   aManager.SetDefaultUncompressedTransferSyntaxes({kImplicit});
   EXPECT_EQ(Best(aManager, 128), "CT(70|I)");
}

TEST(PresentationContextUsageManager, TheThreeNativeSyntaxesAreNotCompressed)
{
   for (const char* const aUID : {"1.2.840.10008.1.2", "1.2.840.10008.1.2.1", "1.2.840.10008.1.2.2"})
   {
      EXPECT_FALSE(PresentationContextUsageManager::IsCompressed(aUID)) << aUID;
   }
   for (const char* const aUID : {"1.2.840.10008.1.2.1.99", "1.2.840.10008.1.2.5", ""})
   {
      EXPECT_TRUE(PresentationContextUsageManager::IsCompressed(aUID)) << aUID;
   }
}

TEST(PresentationContextUsageManager, ThreadsTeachAndAskAtOnce)
{
   PresentationContextUsageManager aManager;
   const auto work = [&] {
      for (int i = 0; i < 200; ++i)
      {
         Use(aManager, kMR, i % 2 != 0 ? kBaseline : kLossless);
         aManager.AddRejectedContext(kPeer, kUS, std::to_string(i));
         Best(aManager, 128);
      }
   };
   OnThreads(2, [&](int) { work(); });
   EXPECT_NE(aManager.ToString().find("Use Count = 200"), RWCString::npos);
}
