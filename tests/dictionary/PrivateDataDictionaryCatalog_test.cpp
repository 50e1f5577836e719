#include "talvenor/dictionary/PrivateDataDictionaryCatalog.h"

#include <gtest/gtest.h>
#include <latch>
#include <sstream>
#include <thread>

#include "support/TemporaryDirectory.h"
#include "talvenor/foundation/Exceptions.h"
#include "talvenor/foundation/TNTrace.h"

namespace
{
std::string FileText(const std::string& theCreator, const std::string& theName = "Example")
{
   return "PrivateCreator = " + theCreator + "\n0029,0010,DS,d," + theName + ",1,1\n";
}

MPrivateDataDictionary* NewDictionary(const std::string& theCreator, const std::string& theName = "Example")
{
   std::istringstream aStream(FileText(theCreator, theName));
   return new MPrivateDataDictionary(aStream);
}

// What goes to the error log while this exists.
class CapturedErrorLog
{
public:
   CapturedErrorLog() { gTNErrorLog.On(itsText); }
   ~CapturedErrorLog() { gTNErrorLog.Off(); }
   std::string Text() const { return itsText.str(); }
   std::size_t Count(const std::string& theText) const
   {
      std::size_t aCount = 0;
      for (std::size_t aPlace = Text().find(theText); aPlace != std::string::npos;
           aPlace = Text().find(theText, aPlace + 1))
      {
         ++aCount;
      }
      return aCount;
   }

private:
   std::ostringstream itsText;
};

// The default catalog is one for all tests.
class DefaultCatalog : public ::testing::Test
{
protected:
   void TearDown() override
   {
      PrivateDataDictionaryCatalog::GetDefaultPrivateDataDictionaryCatalog() = PrivateDataDictionaryCatalog();
   }
   TemporaryDirectory itsDirectory;
};
} // namespace

TEST(PrivateDataDictionaryCatalog, TakesOneDictionaryOfEachCreator)
{
   PrivateDataDictionaryCatalog aCatalog;
   EXPECT_EQ(aCatalog.Add(nullptr), 0);
   EXPECT_EQ(aCatalog.Add(new MPrivateDataDictionary), 0); // no creator
   EXPECT_EQ(aCatalog.Add(NewDictionary("A")), 1);
   EXPECT_EQ(aCatalog.Add(NewDictionary("A", "Other")), 0);
   EXPECT_EQ(aCatalog.Add(NewDictionary("A  B")), 1);
   EXPECT_TRUE(aCatalog.Contains("A"));
   EXPECT_FALSE(aCatalog.Contains("A B"));
   EXPECT_FALSE(aCatalog.Contains(""));
   ASSERT_NE(aCatalog.Find("A"), nullptr);
   EXPECT_NE(aCatalog.Find("A")->Find("Example"), nullptr);
}

TEST(PrivateDataDictionaryCatalog, RemovingGivesTheDictionaryAway)
{
   PrivateDataDictionaryCatalog aCatalog;
   MPrivateDataDictionary* aDictionary = NewDictionary("A");
   aCatalog.Add(aDictionary);
   aCatalog.Add(NewDictionary("B"));
   const std::unique_ptr<MPrivateDataDictionary> aRemoved(aCatalog.Remove("A"));
   EXPECT_EQ(aRemoved.get(), aDictionary);
   EXPECT_EQ(aCatalog.Remove("A"), nullptr);
   EXPECT_EQ(aCatalog.RemoveAndDestroy("B"), 1);
   EXPECT_EQ(aCatalog.RemoveAndDestroy("B"), 0);
   EXPECT_EQ(aCatalog.Add(NewDictionary("B")), 1);
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
   for (const PrivateDataDictionaryCatalog* aCatalog :
        {&aCopy, static_cast<const PrivateDataDictionaryCatalog*>(&anAssigned)})
   {
      EXPECT_NE(aCatalog->Find("A"), nullptr);
      EXPECT_NE(aCatalog->Find("B"), nullptr);
      EXPECT_FALSE(aCatalog->Contains("C"));
   }
   EXPECT_NE(aCopy.Find("A"), anAssigned.Find("A"));
}

TEST(PrivateDataDictionaryCatalog, DeferredFilesAreReadWhenTheirCreatorIsMet)
{
   TemporaryDirectory aDirectory;
   PrivateDataDictionaryCatalog aCatalog;
   EXPECT_EQ(aCatalog.AddDeferred("", aDirectory.File("a.dic")), 0);
   EXPECT_EQ(aCatalog.AddDeferred("A", aDirectory.File("a.dic")), 1);
   EXPECT_EQ(aCatalog.AddDeferred("A", aDirectory.File("b.dic")), 0);
   WriteFile(aDirectory.File("a.dic"), FileText("A")); // made only now: not read before
   const MPrivateDataDictionary* aDictionary = aCatalog.Find("A");
   ASSERT_NE(aDictionary, nullptr);
   EXPECT_NE(aDictionary->Find(MAttributeTag(0x0029, 0x1110)), nullptr);
   std::filesystem::remove(aDirectory.File("a.dic"));
   EXPECT_EQ(aCatalog.Find("A"), aDictionary); // and only once
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
   EXPECT_EQ(aLog.Count(aDirectory.File("bad.dic")), 1u) << aLog.Text();
   EXPECT_EQ(aLog.Count("nonsense"), 1u);
   EXPECT_EQ(aLog.Count("Invalid type code: 0x20"), 1u);
   EXPECT_EQ(aLog.Count("\"ANOTHER\""), 1u);
   EXPECT_EQ(aLog.Count("Find(\"MISSING\")"), 1u);
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
         std::jthread([this] { itsCatalog.Contains("BAD"); });
         ++itsQuestions;
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

TEST(PrivateDataDictionaryCatalog, AnAddedDictionaryStandsBeforeADeferredOne)
{
   TemporaryDirectory aDirectory;
   WriteFile(aDirectory.File("a.dic"), FileText("A", "FromFile"));
   PrivateDataDictionaryCatalog aCatalog;
   aCatalog.AddDeferred("A", aDirectory.File("a.dic"));
   EXPECT_EQ(aCatalog.Add(NewDictionary("A", "Added")), 1);
   ASSERT_NE(aCatalog.Find("A"), nullptr);
   EXPECT_NE(aCatalog.Find("A")->Find("Added"), nullptr);
   EXPECT_EQ(aCatalog.Add(NewDictionary("A")), 0);
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
      EXPECT_NE(aFound[0][aNumber]->Find("Example"), nullptr);
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
   try
   {
      aCatalog.AddDeferredIndex(aDirectory.File("bad"));
      ADD_FAILURE();
   }
   catch (const InvalidEntryDescriptionException& anException)
   {
      EXPECT_EQ(anException.GetMessage(), "Invalid private dictionary index entry at line 3: b.dic");
   }
}

TEST_F(DefaultCatalog, ListOfFilesStopsAtTheFirstRefused)
{
   for (const char* aName : {"A", "B", "C"})
   {
      WriteFile(itsDirectory.File(aName), FileText(aName));
   }
   EXPECT_EQ(PrivateDataDictionaryCatalog::AddToDefaultCatalog(RWTValOrderedVector<RWCString>{
                 itsDirectory.File("A"), itsDirectory.File("B"), itsDirectory.File("A"), itsDirectory.File("C")}),
             0);
   const auto& aCatalog = PrivateDataDictionaryCatalog::GetDefaultPrivateDataDictionaryCatalog();
   EXPECT_TRUE(aCatalog.Contains("A"));
   EXPECT_TRUE(aCatalog.Contains("B"));
   EXPECT_FALSE(aCatalog.Contains("C"));
   EXPECT_EQ(PrivateDataDictionaryCatalog::AddToDefaultCatalog(RWCString(itsDirectory.File("C"))), 1);
   EXPECT_TRUE(aCatalog.Contains("C"));
   EXPECT_EQ(PrivateDataDictionaryCatalog::AddToDefaultCatalog(RWTValOrderedVector<RWCString>()), 1);
}

TEST_F(DefaultCatalog, ListOfFilesSaysWhereItFailed)
{
   WriteFile(itsDirectory.File("bad"), "PrivateCreator = A\nnonsense\n");
   WriteFile(itsDirectory.File("type"), "PrivateCreator = A\n0029,0010,XX,d,n,1,1\n");
   try
   {
      PrivateDataDictionaryCatalog::AddToDefaultCatalog(RWTValOrderedVector<RWCString>{itsDirectory.File("bad")});
      ADD_FAILURE();
   }
   catch (const InvalidEntryDescriptionException& anException)
   {
      EXPECT_EQ(anException.GetMessage(), "PrivateDataDictionaryCatalog::AddToDefaultCatalog(FileList): Error: "
                                          "Invalid data dictionary entry description at line 2: nonsense");
   }
   EXPECT_THROW(
       PrivateDataDictionaryCatalog::AddToDefaultCatalog(RWTValOrderedVector<RWCString>{itsDirectory.File("type")}),
       InvalidValueTypeException);
}
