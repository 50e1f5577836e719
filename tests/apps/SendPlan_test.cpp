// Which presentation contexts are proposed for which files.
#include "apps/tn/send/SendPlan.h"

#include <gtest/gtest.h>

#include "apps/tn/send/SendFile.h"

namespace
{
const std::string kImplicit = "1.2.840.10008.1.2";
const std::string kExplicit = "1.2.840.10008.1.2.1";
const std::string kBig = "1.2.840.10008.1.2.2";
const std::string kJPEG = "1.2.840.10008.1.2.4.50";
const std::string kDeflated = "1.2.840.10008.1.2.1.99";

using Files = std::vector<std::pair<std::string, std::string>>; // SOP class, transfer syntax

std::vector<SendBatch> Plan(const Files& theFiles, std::size_t theMost)
{
   std::vector<SendFile> aFiles;
   for (const auto& [aClass, aSyntax] : theFiles)
   {
      SendFile aFile;
      aFile.itsSOPClassUID = aClass;
      aFile.itsTransferSyntaxUID = aSyntax;
      aFiles.push_back(aFile);
   }
   return PlanBatches(aFiles, theMost);
}

TEST(SendPlan, ProposesWhatTheFilesAre)
{
   const struct
   {
      const char* itsName;
      Files itsFiles;
      std::vector<SendContext> itsContexts;
   } kCases[] = {
       {"native: its own, and the others", {{"1", kExplicit}}, {{"1", {kExplicit}}, {"1", {kImplicit, kBig}}}},
       {"two native ones of a class",
        {{"1", kImplicit}, {"1", kBig}, {"1", kImplicit}},
        {{"1", {kImplicit}}, {"1", {kBig}}, {"1", {kExplicit}}}},
       {"all three",
        {{"1", kImplicit}, {"1", kExplicit}, {"1", kBig}},
        {{"1", {kImplicit}}, {"1", {kExplicit}}, {"1", {kBig}}}},
       {"compressed: nothing else", {{"1", kJPEG}}, {{"1", {kJPEG}}}},
       {"deflated, which is not decoded", {{"1", kDeflated}}, {{"1", {kDeflated}}}},
       {"in the order of the files",
        {{"2", kJPEG}, {"1", kExplicit}, {"2", kJPEG}},
        {{"2", {kJPEG}}, {"1", {kExplicit}}, {"1", {kImplicit, kBig}}}},
   };
   for (const auto& aCase : kCases)
   {
      const std::vector<SendBatch> aBatches = Plan(aCase.itsFiles, kMostContexts);
      ASSERT_EQ(aBatches.size(), 1u) << aCase.itsName;
      EXPECT_EQ(aBatches[0].itsContexts, aCase.itsContexts) << aCase.itsName;
      EXPECT_EQ(aBatches[0].itsFiles.size(), aCase.itsFiles.size()) << aCase.itsName;
   }
}

// Each file is in one batch, which has contexts for it, and no batch has too many.
TEST(SendPlan, DividesWhatOneAssociationCannotPropose)
{
   Files aFiles;
   for (int i = 0; i < 300; ++i)
   {
      aFiles.emplace_back("1.2." + std::to_string(i % 100), i % 3 == 0 ? kJPEG : kExplicit);
   }
   EXPECT_TRUE(Plan({}, kMostContexts).empty());
   for (const std::size_t aMost : {std::size_t{4}, std::size_t{5}, kMostContexts})
   {
      std::vector<int> aCounts(aFiles.size());
      for (const SendBatch& aBatch : Plan(aFiles, aMost))
      {
         EXPECT_LE(aBatch.itsContexts.size(), aMost);
         EXPECT_TRUE(std::is_sorted(aBatch.itsFiles.begin(), aBatch.itsFiles.end()));
         for (const std::size_t aFile : aBatch.itsFiles)
         {
            ++aCounts[aFile];
            const SendContext aWanted{aFiles[aFile].first, {aFiles[aFile].second}};
            EXPECT_NE(std::find(aBatch.itsContexts.begin(), aBatch.itsContexts.end(), aWanted),
                      aBatch.itsContexts.end());
         }
      }
      EXPECT_EQ(aCounts, std::vector<int>(aFiles.size(), 1)) << aMost;
   }
}
} // namespace
