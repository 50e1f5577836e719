#include "talvenor/dataset/DICOMCluster.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/NodeElements.h"
#include "talvenor/dataset/VRAccessEndian.h"

namespace
{

using testing::ElementsAre;

constexpr UINT32 kSOPInstance = 0x00080018;
constexpr UINT32 kStudyDate = 0x00080020; // study level
constexpr UINT32 kModality = 0x00080060;  // series level
constexpr UINT32 kPatientName = 0x00100010;
constexpr UINT32 kStudy = 0x0020000D;
constexpr UINT32 kSeries = 0x0020000E;
constexpr UINT32 kInstanceNumber = 0x00200013;
constexpr UINT32 kRows = 0x00280010;

void Put(DICOMNode& theNode, UINT32 theTag, const std::string& theText,
         TNEndian::EndianType theEndian = TNEndian::LittleEndian)
{
   auto aVR = std::make_unique<VR>(static_cast<UINT16>(theTag >> 16), static_cast<UINT16>(theTag), theEndian);
   aVR->SetData(theText.data(), static_cast<UINT32>(theText.size()), ' ');
   theNode.Insert(aVR.release());
}

std::string TextOf(const DICOMNode& theNode, UINT32 theTag)
{
   std::string aText = "(none)";
   const VR* aVR = theNode.Find(theTag);
   return aVR != nullptr && VRAccessLE(*aVR).GetString(aText) ? aText : "(none)";
}

// An instance as a scanner sends it: two elements of its own, two of its series, three of its study.
std::unique_ptr<DICOMNode> MakeDataset(const std::string& theStudy, const std::string& theSeries,
                                       const std::string& theInstance,
                                       TNEndian::EndianType theEndian = TNEndian::LittleEndian)
{
   auto aNode = std::make_unique<DICOMNode>();
   Put(*aNode, kSOPInstance, theInstance, theEndian);
   Put(*aNode, kStudyDate, "20200131", theEndian);
   Put(*aNode, kModality, "CT of " + theInstance, theEndian);
   Put(*aNode, kPatientName, "Name of " + theInstance, theEndian);
   Put(*aNode, kStudy, theStudy, theEndian);
   Put(*aNode, kSeries, theSeries, theEndian);
   Put(*aNode, kRows, "512", theEndian);
   return aNode;
}

const std::vector<UINT32> kAllTags = {kSOPInstance, kStudyDate, kModality, kPatientName, kStudy, kSeries, kRows};

std::vector<UINT32> OwnTags(const DICOMNode& theNode)
{
   std::vector<UINT32> aTags;
   for (const UINT32 aTag : TagsOf(theNode))
   {
      if (theNode.FindOwn(aTag) != nullptr)
      {
         aTags.push_back(aTag);
      }
   }
   return aTags;
}

std::string Listing(const DICOMCluster& theCluster)
{
   std::fflush(stdout);
   testing::internal::CaptureStdout();
   theCluster.List();
   std::fflush(stdout);
   return testing::internal::GetCapturedStdout();
}

TEST(DICOMCluster, SharesStudyAndSeriesOfTwoDatasets)
{
   DICOMCluster aCluster;
   EXPECT_EQ("Level 0 - 0 children\n", Listing(aCluster));
   const auto aFirst = MakeDataset("1.2", "1.2.3", "A");
   const auto aSecond = MakeDataset("1.2", "1.2.3", "B");
   EXPECT_EQ(1, aCluster.Normalize(*aFirst));
   EXPECT_EQ(1, aCluster.Normalize(*aSecond));

   for (const auto& aDataset : {aFirst.get(), aSecond.get()})
   {
      EXPECT_EQ(kAllTags, TagsOf(*aDataset)); // ascending
      EXPECT_EQ(kAllTags.size(), aDataset->Entries());
      EXPECT_THAT(OwnTags(*aDataset), ElementsAre(kSOPInstance, kRows));
      DICOMNodeCursor aCursor(*aDataset);
      while (aCursor.Next() != nullptr)
      {}
      aCursor.Seek(kSOPInstance + 1); // back, to an inherited one
      ASSERT_NE(nullptr, aCursor.Next());
      EXPECT_EQ(kStudyDate, aCursor.GetTag());
      EXPECT_EQ("Name of A", TextOf(*aDataset, kPatientName)); // the first one's
      EXPECT_EQ("CT of A", TextOf(*aDataset, kModality));
   }
   EXPECT_EQ("B", TextOf(*aSecond, kSOPInstance));
   EXPECT_EQ(aFirst->Find(kStudyDate), aSecond->Find(kStudyDate));
   std::vector<int> aGroups;
   aSecond->ListGroupsInRange(aGroups, 0x0009, 0x0028, true);
   EXPECT_THAT(aGroups, ElementsAre(0x0010, 0x0020, 0x0028));
   EXPECT_EQ("Level 0 - 1 children\n"
             "   Level 1 - 1 children\n"
             "      Level 2 - 2 children\n"
             "         Level 3 - 0 children\n"
             "         Level 3 - 0 children\n",
             Listing(aCluster));
}

TEST(DICOMCluster, TellsStudiesSeriesAndByteOrdersApart)
{
   DICOMCluster aCluster;
   const std::unique_ptr<DICOMNode> aDatasets[] = {
       MakeDataset("1.2", "1.2.3", "A"),
       MakeDataset(std::string("1.2\0", 4), "1.2.3 ", "padded otherwise"),
       MakeDataset("1.2", "1.2.4", "other series"),
       MakeDataset("1.3", "1.2.3", "other study"),
       MakeDataset("1.2", "1.2.3", "big-endian", TNEndian::BigEndian),
   };
   for (const auto& aDataset : aDatasets)
   {
      ASSERT_EQ(1, aCluster.Normalize(*aDataset));
   }
   EXPECT_EQ("Name of A", TextOf(*aDatasets[1], kPatientName));
   EXPECT_EQ("Name of A", TextOf(*aDatasets[2], kPatientName));
   EXPECT_EQ("CT of other series", TextOf(*aDatasets[2], kModality));
   EXPECT_EQ("Name of other study", TextOf(*aDatasets[3], kPatientName));
   EXPECT_EQ("Name of big-endian", TextOf(*aDatasets[4], kPatientName));
   EXPECT_THAT(Listing(aCluster), testing::StartsWith("Level 0 - 3 children\n"
                                                      "   Level 1 - 2 children\n"
                                                      "      Level 2 - 2 children\n"));
}

TEST(DICOMCluster, LeavesADatasetWithoutAKeyAsItIs)
{
   const struct
   {
      const char* itsName;
      void (*itsSpoil)(DICOMNode& theNode);
   } kCases[] = {
       {"no study", [](DICOMNode& theNode) { delete theNode.Remove(kStudy); }},
       {"empty series", [](DICOMNode& theNode) { Put(theNode, kSeries, ""); }},
       {"only padding", [](DICOMNode& theNode) { Put(theNode, kSeries, std::string(" \0\0 ", 4)); }},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      DICOMCluster aCluster;
      const auto aDataset = MakeDataset("1.2", "1.2.3", "A");
      aCase.itsSpoil(*aDataset);
      const std::vector<UINT32> aTags = TagsOf(*aDataset);
      EXPECT_EQ(0, aCluster.Normalize(*aDataset));
      EXPECT_EQ(aTags, OwnTags(*aDataset));
      EXPECT_FALSE(aDataset->HasParent());
      EXPECT_EQ("Level 0 - 0 children\n", Listing(aCluster));
   }
}

struct InheritedChangeCase
{
   const char* itsName;
   std::function<void(DICOMNode&)> itsChange;
   bool itsDetaches;
   std::vector<UINT32> itsTags;
};
const InheritedChangeCase kInheritedChangeCases[] = {
    {"remove an inherited one",
     [](DICOMNode& theNode) { delete theNode.Remove(kPatientName); },
     true,
     {kSOPInstance, kStudyDate, kModality, kStudy, kSeries, kRows}},
    {"replace an inherited one", [](DICOMNode& theNode) { Put(theNode, kPatientName, "New"); }, true, kAllTags},
    {"remove a group that nobody has", [](DICOMNode& theNode) { EXPECT_EQ(0, theNode.RemoveGroup(0x0011)); }, true,
     kAllTags},
    {"clear", [](DICOMNode& theNode) { theNode.Clear(); }, true, {}},
    {"remove what nobody has", [](DICOMNode& theNode) { EXPECT_EQ(nullptr, theNode.Remove(kInstanceNumber)); }, false,
     kAllTags},
    {"insert a new one",
     [](DICOMNode& theNode) { Put(theNode, kInstanceNumber, "1"); },
     false,
     {kSOPInstance, kStudyDate, kModality, kPatientName, kStudy, kSeries, kInstanceNumber, kRows}},
};

TEST(DICOMCluster, CopiesDownBeforeAnythingInheritedChanges)
{
   for (const InheritedChangeCase& aCase : kInheritedChangeCases)
   {
      SCOPED_TRACE(aCase.itsName);
      DICOMCluster aCluster;
      const auto aFirst = MakeDataset("1.2", "1.2.3", "A");
      const auto aSecond = MakeDataset("1.2", "1.2.3", "B");
      aCluster.Normalize(*aFirst);
      aCluster.Normalize(*aSecond);
      aCase.itsChange(*aSecond);
      EXPECT_EQ(aCase.itsTags, TagsOf(*aSecond));
      EXPECT_EQ(aCase.itsTags.size(), aSecond->Entries());
      EXPECT_EQ(aCase.itsDetaches, !aSecond->HasParent());

      EXPECT_EQ(kAllTags, TagsOf(*aFirst));
      EXPECT_EQ("Name of A", TextOf(*aFirst, kPatientName));
      EXPECT_THAT(Listing(aCluster), testing::HasSubstr(aCase.itsDetaches ? "   Level 2 - 1 " : "   Level 2 - 2 "));
   }
}

TEST(DICOMCluster, ACursorKeepsItsPlaceWhenItsNodeIsDetached)
{
   const std::function<void(DICOMNode&, std::unique_ptr<DICOMCluster>&)> aDetachments[] = {
       [](DICOMNode& theNode, std::unique_ptr<DICOMCluster>&) { theNode.CopyDown(); },
       [](DICOMNode&, std::unique_ptr<DICOMCluster>& theCluster) { theCluster.reset(); },
       [](DICOMNode& theNode, std::unique_ptr<DICOMCluster>& theCluster) { theCluster->Normalize(theNode); },
   };
   for (const auto& aDetach : aDetachments)
   {
      for (std::size_t aPlace = 0; aPlace <= kAllTags.size(); ++aPlace)
      {
         auto aCluster = std::make_unique<DICOMCluster>();
         const auto aDataset = MakeDataset("1.2", "1.2.3", "A");
         DICOMNodeCursor aCursor(*aDataset);
         std::vector<UINT32> aTags;
         const auto Walk = [&](std::size_t theSteps) {
            for (const VR* aVR = nullptr; aTags.size() < theSteps && (aVR = aCursor.Next()) != nullptr;)
            {
               aTags.push_back(aVR->GetTag());
            }
         };
         Walk(aPlace / 2);
         aCluster->Normalize(*aDataset);
         Walk(aPlace);
         aDetach(*aDataset, aCluster);
         Walk(1000);
         EXPECT_EQ(kAllTags, aTags) << "after " << aPlace;
      }
   }
}

TEST(DICOMCluster, IsLeftByDatasetsThatEnd)
{
   DICOMCluster aCluster;
   std::vector<std::unique_ptr<DICOMNode>> aDatasets;
   for (int i = 0; i < 5; ++i)
   {
      aDatasets.push_back(MakeDataset("1.2", "1.2.3", std::to_string(i)));
      aCluster.Normalize(*aDatasets.back());
   }
   for (const std::size_t aPlace : {2u, 3u, 0u}) // from the middle, the end, the beginning
   {
      aDatasets.erase(aDatasets.begin() + static_cast<std::ptrdiff_t>(aPlace));
   }
   EXPECT_THAT(Listing(aCluster), testing::HasSubstr("   Level 2 - 2 "));
   EXPECT_EQ("1", TextOf(*aDatasets[0], kSOPInstance));
   EXPECT_EQ("3", TextOf(*aDatasets[1], kSOPInstance));
   EXPECT_EQ("Name of 0", TextOf(*aDatasets[1], kPatientName)); // the donor is gone, its gift is not
}

TEST(DICOMCluster, AttachesAnAttachedDatasetAnew)
{
   DICOMCluster aCluster;
   DICOMCluster anOther;
   const auto aDataset = MakeDataset("1.2", "1.2.3", "A");
   EXPECT_EQ(1, aCluster.Normalize(*aDataset));
   EXPECT_EQ(1, aCluster.Normalize(*aDataset));
   EXPECT_THAT(Listing(aCluster), testing::HasSubstr("   Level 2 - 1 "));
   EXPECT_EQ(1, anOther.Normalize(*aDataset));
   EXPECT_THAT(Listing(aCluster), testing::HasSubstr("   Level 2 - 0 "));
   EXPECT_THAT(Listing(anOther), testing::HasSubstr("   Level 2 - 1 "));
   EXPECT_EQ(kAllTags, TagsOf(*aDataset));
   EXPECT_EQ("Name of A", TextOf(*aDataset, kPatientName));
}

// One record, key 0008,0001+level, that moves the key and 0010,0001+level.
std::vector<UINT32> MakeLevels(UINT32 theCount)
{
   std::vector<UINT32> aTable((theCount + 1) * DICOMCluster::kWordsPerLevel);
   for (UINT32 aLevel = 0; aLevel < theCount; ++aLevel)
   {
      UINT32* aRecord = aTable.data() + aLevel * DICOMCluster::kWordsPerLevel;
      aRecord[0] = 2;
      aRecord[1] = aRecord[2] = 0x00080001 + aLevel;
      aRecord[3] = 0x00100001 + aLevel;
   }
   return aTable;
}

TEST(DICOMCluster, FollowsAnyNumberOfLevels)
{
   for (const UINT32 aCount : {0u, 1u, 9u})
   {
      SCOPED_TRACE(aCount);
      DICOMCluster aCluster;
      DICOMNode aDatasets[2];
      std::vector<UINT32> aTags = {0x00200001};
      for (UINT32 aLevel = 0; aLevel < aCount; ++aLevel)
      {
         aTags.push_back(0x00080001 + aLevel);
         aTags.push_back(0x00100001 + aLevel);
      }
      std::sort(aTags.begin(), aTags.end());
      for (DICOMNode& aDataset : aDatasets)
      {
         for (const UINT32 aTag : aTags)
         {
            Put(aDataset, aTag, "x");
         }
         ASSERT_EQ(1, aCluster.Normalize(aDataset, MakeLevels(aCount).data()));
      }
      for (DICOMNode& aDataset : aDatasets)
      {
         EXPECT_EQ(aTags, TagsOf(aDataset));
         EXPECT_THAT(OwnTags(aDataset), ElementsAre(0x00200001u));
      }
      aDatasets[0].CopyDown();
      EXPECT_EQ(aTags, OwnTags(aDatasets[0]));
   }
}

TEST(DICOMCluster, RefusesATableThatOverflowsARecord)
{
   DICOMCluster aCluster;
   const auto aDataset = MakeDataset("1.2", "1.2.3", "A");
   std::vector<UINT32> aTable(2 * DICOMCluster::kWordsPerLevel);
   aTable[0] = 51;
   aTable[1] = kStudy;
   EXPECT_EQ(0, aCluster.Normalize(*aDataset, aTable.data()));
   EXPECT_EQ(kAllTags, OwnTags(*aDataset));
}

// Two tables on one tree can leave a tag with a study and with its series: the series stands nearer.
TEST(DICOMCluster, TheNearerElementHidesTheFartherOne)
{
   std::vector<UINT32> aTable(3 * DICOMCluster::kWordsPerLevel);
   aTable[0] = 1;
   aTable[1] = aTable[2] = kStudy;
   aTable[DICOMCluster::kWordsPerLevel] = 1;
   aTable[DICOMCluster::kWordsPerLevel + 1] = kSeries;
   aTable[DICOMCluster::kWordsPerLevel + 2] = kPatientName;
   const auto aFirst = MakeDataset("1.2", "1.2.3", "A");
   const auto aSecond = MakeDataset("1.2", "1.2.4", "B");
   DICOMCluster aCluster;
   aCluster.Normalize(*aFirst); // the name is the study's
   aCluster.Normalize(*aSecond, aTable.data());
   EXPECT_EQ("Name of B", TextOf(*aSecond, kPatientName));
   EXPECT_EQ(kAllTags, TagsOf(*aSecond));
   aSecond->CopyDown();
   EXPECT_EQ("Name of B", TextOf(*aSecond, kPatientName));
   EXPECT_EQ(kAllTags.size(), aSecond->Entries());
   EXPECT_EQ("Name of A", TextOf(*aFirst, kPatientName));
}

// Loading, reading, changing and ending datasets of one study on all sides, then the cluster goes while they live on.
TEST(DICOMCluster, ServesSeveralThreads)
{
   auto aCluster = std::make_unique<DICOMCluster>();
   std::atomic<int> aReadyCount = 0;
   std::atomic<bool> isClusterGone = false;
   std::atomic<int> aFaultCount = 0;
   const auto Check = [&](const DICOMNode& theNode) { aFaultCount += TagsOf(theNode) != kAllTags; };
   const auto Work = [&](int theThread) {
      std::vector<std::unique_ptr<DICOMNode>> aDatasets;
      for (int i = 0; i < 200; ++i)
      {
         aDatasets.push_back(MakeDataset("1.2", i % 2 != 0 ? "1.2.3" : "1.2.4", std::to_string(theThread)));
         aFaultCount += aCluster->Normalize(*aDatasets.back()) != 1;
         Check(*aDatasets[static_cast<std::size_t>(i) / 2]);
         if (i % 5 == 0)
         {
            Put(*aDatasets.back(), kPatientName, "New");
            Check(*aDatasets.back());
         }
         if (i % 7 == 0)
         {
            aDatasets.front().swap(aDatasets.back());
            aDatasets.pop_back();
            aDatasets.push_back(MakeDataset("1.2", "1.2.5", "again"));
         }
      }
      ++aReadyCount;
      while (!isClusterGone)
      {
         for (const auto& aDataset : aDatasets)
         {
            Check(*aDataset);
         }
         if (aDatasets.size() > 100)
         {
            aDatasets.pop_back();
         }
      }
      for (const auto& aDataset : aDatasets)
      {
         aFaultCount += aDataset->HasParent() || OwnTags(*aDataset) != kAllTags;
      }
   };
   std::vector<std::thread> aThreads;
   for (int i = 0; i < 3; ++i)
   {
      aThreads.emplace_back(Work, i);
   }
   while (aReadyCount < 3)
   {
      std::this_thread::yield();
   }
   EXPECT_THAT(Listing(*aCluster), testing::StartsWith("Level 0 - 1 children\n   Level 1 - 2 children\n"));
   aCluster.reset();
   isClusterGone = true;
   for (std::thread& aThread : aThreads)
   {
      aThread.join();
   }
   EXPECT_EQ(0, aFaultCount);
}

} // namespace
