#include "apps/tn/archive/IndexDatabase.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "apps/tn/archive/Index.h"
#include "support/TemporaryDirectory.h"

namespace
{
IndexedInstance Instance(const std::string& thePatient, const std::string& theIssuer, const std::string& theStudy,
                         const std::string& theSeries, const std::string& theInstance)
{
   IndexedInstance anInstance;
   anInstance.itsKeys[Key::kPatientID] = thePatient;
   anInstance.itsKeys[Key::kIssuer] = theIssuer;
   anInstance.itsKeys[Key::kStudy] = theStudy;
   anInstance.itsKeys[Key::kSeries] = theSeries;
   anInstance.itsKeys[Key::kSOPInstance] = theInstance;
   anInstance.itsPath = theStudy + "/" + theSeries + "/" + theInstance;
   return anInstance;
}

// How many rows there are of patients, studies, series and instances.
std::string Rows(const std::string& thePath)
{
   const SQLiteDatabase aDatabase(thePath, 1);
   std::string aText;
   for (const char* aTable : {"patient", "study", "series", "instance"})
   {
      SQLiteStatement aStatement(aDatabase, std::string("SELECT count(*) FROM ") + aTable);
      aStatement.Step();
      aText += std::to_string(aStatement.GetNumber(0)) + " ";
   }
   return aText;
}

TEST(IndexDatabase, RowsComeAndGoWithTheirInstances)
{
   const TemporaryDirectory aFolder;
   const std::string aPath = aFolder.File("index");
   IndexDatabase anIndex(aPath);
   const auto anAdd = [&](const char* thePatient, const char* theIssuer, const char* theStudy, const char* theSeries,
                          const char* theInstance) {
      anIndex.Add(Instance(thePatient, theIssuer, theStudy, theSeries, theInstance));
   };
   const struct
   {
      const char* itsName;
      std::function<void()> itsStep;
      const char* itsRows;
   } kSteps[] = {
       {"first", [&] { anAdd("12", "A", "1.1", "1.1.1", "1"); }, "1 1 1 1 "},
       {"same series", [&] { anAdd("12", "A", "1.1", "1.1.1", "2"); }, "1 1 1 2 "},
       {"same UID", [&] { anAdd("12", "A", "1.1", "1.1.1", "2"); }, "1 1 1 2 "},
       {"other series", [&] { anAdd("12", "A", "1.1", "1.1.2", "3"); }, "1 1 2 3 "},
       {"same patient", [&] { anAdd("12", "A", "1.2", "1.2.1", "4"); }, "1 2 3 4 "},
       {"series UID of another study", [&] { anAdd("12", "A", "1.2", "1.1.1", "5"); }, "1 2 4 5 "},
       {"other issuer", [&] { anAdd("12", "", "1.3", "1.3.1", "6"); }, "2 3 5 6 "},
       {"ID and issuer run together", [&] { anAdd("1", "2 A", "1.4", "1.4.1", "7"); }, "3 4 6 7 "},
       {"no ID", [&] { anAdd("", "A", "1.5", "1.5.1", "8"); }, "4 5 7 8 "},
       {"no ID in another study", [&] { anAdd("", "A", "1.6", "1.6.1", "9"); }, "5 6 8 9 "},
       {"no study", [&] { anAdd("", "", "", "", "10"); }, "5 6 8 10 "},
       {"given up",
        [&] {
           anIndex.Begin();
           anAdd("13", "", "1.7", "1.7.1", "11");
           anIndex.Remove("1");
           anIndex.RollBack();
        },
        "5 6 8 10 "},
       {"the series that was given up", [&] { anAdd("13", "", "1.7", "1.7.1", "11"); }, "6 7 9 11 "},
       {"moved to another study", [&] { anAdd("12", "A", "1.2", "1.2.1", "11"); }, "5 6 8 11 "},
       {"a member of a series goes", [&] { EXPECT_TRUE(anIndex.Remove("1")); }, "5 6 8 10 "},
       {"the last of a series goes", [&] { EXPECT_TRUE(anIndex.Remove("2")); }, "5 6 7 9 "},
       {"the last of a study goes", [&] { EXPECT_TRUE(anIndex.Remove("3")); }, "5 5 6 8 "},
       {"the last of a patient goes", [&] { EXPECT_TRUE(anIndex.Remove("6")); }, "4 4 5 7 "},
       {"one that is gone goes", [&] { EXPECT_FALSE(anIndex.Remove("6")); }, "4 4 5 7 "},
       {"one without study goes", [&] { EXPECT_TRUE(anIndex.Remove("10")); }, "4 4 5 6 "},
       {"a series that was removed", [&] { anAdd("12", "A", "1.1", "1.1.1", "1"); }, "4 5 6 7 "},
   };
   for (const auto& aStep : kSteps)
   {
      aStep.itsStep();
      EXPECT_EQ(Rows(aPath), aStep.itsRows) << aStep.itsName;
   }
   EXPECT_EQ(anIndex.Find("11"), "1.2/1.2.1/11");
   EXPECT_EQ(anIndex.Find("10"), std::nullopt);
}

TEST(Index, AnInstanceIsFoundFromTheMomentItIsOnTheList)
{
   const TemporaryDirectory aFolder;
   const std::string aPath = aFolder.File("index");
   Index anIndex(aPath);
   anIndex.Add(Instance("1", "", "1.1", "1.1.1", "1"), nullptr);
   EXPECT_EQ(anIndex.Find("1"), "1.1/1.1.1/1");
   EXPECT_TRUE(anIndex.Flush());
   EXPECT_EQ(Rows(aPath), "1 1 1 1 ");

   Index::Ticket aTicket;
   anIndex.Add(Instance("1", "", "1.1", "1.1.2", "2"), &aTicket);
   EXPECT_EQ(aTicket.Wait(), "");
   EXPECT_EQ(Rows(aPath), "1 1 2 2 ");

   // With a ticket it is given up, without it is tried again.
   SQLiteDatabase another(aPath, 1);
   another.Execute("ALTER TABLE instance RENAME TO hidden");
   Index::Ticket aSecond;
   anIndex.Add(Instance("1", "", "1.1", "1.1.2", "3"), nullptr);
   anIndex.Add(Instance("1", "", "1.1", "1.1.2", "4"), &aSecond);
   EXPECT_NE(aSecond.Wait().find("no such table"), std::string::npos);
   EXPECT_FALSE(anIndex.Flush());
   EXPECT_EQ(anIndex.Find("3"), "1.1/1.1.2/3");
   another.Execute("ALTER TABLE hidden RENAME TO instance");
   EXPECT_EQ(anIndex.Find("4"), std::nullopt);
   for (int i = 0; i < 1000 && !anIndex.Flush(); ++i) // one that fails had begun before
   {}
   EXPECT_EQ(Rows(aPath), "1 1 2 3 ");
}

// Instances that come one after the other: each is looked for, and read where the last transaction has put the others.
TEST(Index, ReadingSeesEachTransactionAndLetsTheLogBeEmptied)
{
   const TemporaryDirectory aFolder;
   const std::string aPath = aFolder.File("index");
   Index anIndex(aPath);
   for (int i = 0; i < 400; ++i)
   {
      const std::string aName = std::to_string(i);
      ASSERT_EQ(anIndex.Find(aName), std::nullopt);
      Index::Ticket aTicket;
      anIndex.Add(Instance("1", "", "1.1", "1.1.1", aName), &aTicket);
      ASSERT_EQ(aTicket.Wait(), "");
      ASSERT_EQ(anIndex.Find(aName), "1.1/1.1.1/" + aName);
   }
   EXPECT_LT(std::filesystem::file_size(aPath + "-wal"), std::uintmax_t{6} << 20); // it is emptied from 4 MB on
}
} // namespace
