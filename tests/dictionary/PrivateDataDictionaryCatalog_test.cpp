#include "talvenor/dictionary/PrivateDataDictionaryCatalog.h"

#include <gtest/gtest.h>
#include <latch>
#include <sstream>
#include <thread>

#include "support/CapturedErrorLog.h"
#include "support/MessageOf.h"
#include "support/TemporaryDirectory.h"
#include "talvenor/foundation/Exceptions.h"
#include "talvenor/foundation/TNTrace.h"

namespace
{
using namespace std::string_literals;

std::string FileText(const std::string& theCreator, const std::string& theName = "Example")
{
   return "PrivateCreator = " + theCreator + "\n0029,0010,DS,d," + theName + ",1,1\n";
}

MPrivateDataDictionary* NewDictionary(const std::string& theCreator, const std::string& theName = "Example")
{
   std::istringstream aStream(FileText(theCreator, theName));
   return new MPrivateDataDictionary(aStream);
}
} // namespace

TEST(PrivateDataDictionaryCatalog, TakesOneDictionaryOfEachCreatorAndGivesItAway)
{
   PrivateDataDictionaryCatalog aCatalog;
   MPrivateDataDictionary* aDictionary = NewDictionary("A");
   EXPECT_EQ(aCatalog.Add(new MPrivateDataDictionary), 0); // no creator
   EXPECT_EQ(aCatalog.Add(aDictionary), 1);
   EXPECT_EQ(aCatalog.Add(NewDictionary("A", "Other")), 0); // destroyed
   EXPECT_EQ(aCatalog.Add(NewDictionary("A  B")), 1);
   EXPECT_FALSE(aCatalog.Contains("A B"));
   EXPECT_EQ(aCatalog.Find("A"), aDictionary);
   const std::unique_ptr<MPrivateDataDictionary> aRemoved(aCatalog.Remove("A"));
   EXPECT_EQ(aRemoved.get(), aDictionary);
   EXPECT_EQ(aCatalog.Remove("A"), nullptr);
   EXPECT_EQ(aCatalog.AddDeferred("A", "a.dic"), 1); // its place is free again
   EXPECT_EQ(aCatalog.RemoveAndDestroy("A  B"), 1);
   EXPECT_EQ(aCatalog.RemoveAndDestroy("A  B"), 0);
}

TEST(PrivateDataDictionaryCatalog, CopiesShareNoDictionary)
{
   TemporaryDirectory aDirectory;
   WriteFile(aDirectory.File("b.dic"), FileText("B"));
   auto aSource = std::make_unique<PrivateDataDictionaryCatalog>();
   aSource->Add(NewDictionary("A"));
   aSource->AddDeferred("B", aDirectory.File("b.dic"));
   const PrivateDataDictionaryCatalog aCopy(*aSource);
   PrivateDataDictionaryCatalog anAssigned;
   anAssigned.Add(NewDictionary("C"));
   anAssigned = aCopy;
   anAssigned = *&anAssigned;
   aSource.reset();
   for (const PrivateDataDictionaryCatalog* aCatalog : {&aCopy, &std::as_const(anAssigned)})
   {
      EXPECT_NE(aCatalog->Find("A"), nullptr);
      EXPECT_NE(aCatalog->Find("B"), nullptr);
      EXPECT_FALSE(aCatalog->Contains("C"));
   }
}

TEST(PrivateDataDictionaryCatalog, DeferredFilesAreReadWhenTheirCreatorIsMet)
{
   TemporaryDirectory aDirectory;
   PrivateDataDictionaryCatalog aCatalog;
   EXPECT_EQ(aCatalog.AddDeferred("A", aDirectory.File("a.dic")), 1);
   EXPECT_EQ(aCatalog.AddDeferred("A", aDirectory.File("b.dic")), 0);
   WriteFile(aDirectory.File("a.dic"), FileText("A")); // made only now: not read before
   const MPrivateDataDictionary* aDictionary = aCatalog.Find("A");
   ASSERT_NE(aDictionary, nullptr);
   std::filesystem::remove(aDirectory.File("a.dic"));
   EXPECT_EQ(aCatalog.Find("A"), aDictionary); // and only once

   aCatalog.AddDeferred("B", aDirectory.File("b.dic"));
   EXPECT_EQ(aCatalog.Add(NewDictionary("B", "Added")), 1); // stands before the deferred one
   EXPECT_NE(aCatalog.Find("B")->Find("Added"), nullptr);
}

TEST(PrivateDataDictionaryCatalog, DeferredFilesThatFailAreReportedOnce)
{
   TemporaryDirectory aDirectory;
   WriteFile(aDirectory.File("bad.dic"), "PrivateCreator = BAD\nnonsense\n");
   WriteFile(aDirectory.File("type.dic"), "PrivateCreator = TYPE\n0029,0010,XX,d,n,1,1\n");
   WriteFile(aDirectory.File("other.dic"), FileText("ANOTHER"));
   PrivateDataDictionaryCatalog aCatalog;
   aCatalog.AddDeferred("BAD", aDirectory.File("bad.dic"));
   aCatalog.AddDeferred("TYPE", aDirectory.File("type.dic"));
   aCatalog.AddDeferred("OTHER", aDirectory.File("other.dic"));
   aCatalog.AddDeferred("MISSING", aDirectory.File("missing.dic"));
   const CapturedErrorLog aLog;
   for (const char* aCreator : {"BAD", "TYPE", "OTHER", "MISSING", "BAD", "MISSING"})
   {
      EXPECT_FALSE(aCatalog.Contains(aCreator)) << aCreator;
   }
   for (const std::string& aPart :
        {aDirectory.File("bad.dic"), "nonsense"s, "Invalid type code: 0x20"s, "\"ANOTHER\""s, "Find(\"MISSING\")"s})
   {
      EXPECT_NE(aLog.Text().find(aPart), std::string::npos) << aPart;
      EXPECT_EQ(aLog.Text().find(aPart), aLog.Text().rfind(aPart)) << aPart;
   }
}

// Where the entries of the log go may need the catalog: a dump that is traced looks up names.
TEST(PrivateDataDictionaryCatalog, AFaultIsReportedWhileOthersMayLookUp)
{
   class AskingBuffer : public std::stringbuf
   {
   public:
      explicit AskingBuffer(const PrivateDataDictionaryCatalog& theCatalog) : itsCatalog(theCatalog) {}
      int itsQuestions = 0;

   private:
      int sync() override
      {
         // In a thread of its own: one that already holds the lock could not tell.
         ++itsQuestions;
         const std::jthread aThread([this] { itsCatalog.Contains("BAD"); }); // waited for here
         return 0;
      }

      const PrivateDataDictionaryCatalog& itsCatalog;
   };
   TemporaryDirectory aDirectory;
   PrivateDataDictionaryCatalog aCatalog;
   aCatalog.AddDeferred("BAD", aDirectory.File("missing.dic"));
   AskingBuffer aBuffer(aCatalog);
   std::ostream aStream(&aBuffer);
   gTNErrorLog.On(aStream);
   EXPECT_FALSE(aCatalog.Contains("BAD"));
   gTNErrorLog.Off();
   EXPECT_GT(aBuffer.itsQuestions, 0);
}

TEST(PrivateDataDictionaryCatalog, ThreadsMeetADeferredCreatorTogether)
{
   TemporaryDirectory aDirectory;
   PrivateDataDictionaryCatalog aCatalog;
   constexpr int kCreators = 20;
   constexpr int kThreads = 4;
   for (int aNumber = 0; aNumber < kCreators; ++aNumber)
   {
      const std::string aCreator = "CREATOR " + std::to_string(aNumber);
      WriteFile(aDirectory.File(aCreator), FileText(aCreator));
      aCatalog.AddDeferred(aCreator, aDirectory.File(aCreator));
   }
   const MPrivateDataDictionary* aFound[kThreads][kCreators] = {};
   std::latch aStart(kThreads);
   {
      std::vector<std::jthread> aThreads;
      for (auto& aRow : aFound)
      {
         aThreads.emplace_back([&] {
            aStart.arrive_and_wait();
            for (int aNumber = 0; aNumber < kCreators; ++aNumber)
            {
               aRow[aNumber] = aCatalog.Find("CREATOR " + std::to_string(aNumber));
            }
         });
      }
   }
   for (int aNumber = 0; aNumber < kCreators; ++aNumber)
   {
      ASSERT_NE(aFound[0][aNumber], nullptr);
      for (const auto& aRow : aFound)
      {
         EXPECT_EQ(aRow[aNumber], aFound[0][aNumber]);
      }
   }
}

TEST(PrivateDataDictionaryCatalog, AnIndexDefersTheFilesBesideIt)
{
   TemporaryDirectory aDirectory;
   WriteFile(aDirectory.File("a.dic"), FileText("A, Inc."));
   WriteFile(aDirectory.File("b.dic"), FileText("B"));
   WriteFile(aDirectory.File("index"),
             "// file name, creator\r\n\r\na.dic, A, Inc.\r\n" + aDirectory.File("b.dic") + ",B");
   WriteFile(aDirectory.File("bad"), "a.dic,A, Inc.\n\nb.dic\n");
   PrivateDataDictionaryCatalog aCatalog;
   EXPECT_EQ(aCatalog.AddDeferredIndex(aDirectory.File("missing")), 0);
   EXPECT_EQ(aCatalog.AddDeferredIndex(aDirectory.File("index")), 1);
   EXPECT_EQ(aCatalog.Size(), 2u);
   EXPECT_TRUE(aCatalog.Contains("A, Inc."));
   EXPECT_TRUE(aCatalog.Contains("B"));
   EXPECT_EQ(MessageOf<InvalidEntryDescriptionException>([&] { aCatalog.AddDeferredIndex(aDirectory.File("bad")); }),
             "Invalid private dictionary index entry at line 3: b.dic");
}

TEST(PrivateDataDictionaryCatalog, ListOfFilesStopsAtTheFirstRefused)
{
   TemporaryDirectory aDirectory;
   for (const char* aName : {"A", "B"})
   {
      WriteFile(aDirectory.File(aName), FileText(aName));
   }
   WriteFile(aDirectory.File("bad"), "PrivateCreator = C\nnonsense\n");
   using Files = RWTValOrderedVector<RWCString>;
   const auto anAdd = [](const Files& theFiles) { return PrivateDataDictionaryCatalog::AddToDefaultCatalog(theFiles); };
   const RWCString aFirst = aDirectory.File("A");
   auto& aCatalog = PrivateDataDictionaryCatalog::GetDefaultPrivateDataDictionaryCatalog();
   EXPECT_EQ(anAdd({aFirst, aFirst, aDirectory.File("B")}), 0);
   EXPECT_TRUE(aCatalog.Contains("A"));
   EXPECT_FALSE(aCatalog.Contains("B"));
   EXPECT_EQ(anAdd({aDirectory.File("B")}), 1);
   EXPECT_EQ(MessageOf<InvalidEntryDescriptionException>([&] { anAdd({aDirectory.File("bad")}); }),
             "PrivateDataDictionaryCatalog::AddToDefaultCatalog(FileList): Error: "
             "Invalid data dictionary entry description at line 2: nonsense");
   aCatalog = PrivateDataDictionaryCatalog(); // one for all tests
}
