// tn serve --print, and tn print on it: what clients are answered with, told of, and find on the disk.
#include <filesystem>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "apps/tn/print/PrintImage.h"
#include "support/PrintPeers.h"

namespace
{
namespace fs = std::filesystem;
using namespace PrintPeers;

std::string PixelsOf(const std::string& thePath)
{
   DICOMDataObject aDataset;
   TNResultCode aCode = TN_NO_ERROR;
   int anError = 0;
   aDataset.LoadFromFile(thePath, aCode, anError);
   const VR* const aVR = FindVR(aDataset, kPixels);
   return aVR == nullptr ? "none: " + thePath
                         : std::string(reinterpret_cast<const char*>(aVR->GetData()), aVR->GetLength());
}

class TnPrint : public testing::Test
{
protected:
   TnPrint() { fs::create_directory(Films()); }

   std::string Films() const { return itsFolder.File("films"); }
   Texts Options(Texts theMore = {}) const
   {
      theMore.insert(theMore.end(), {"--aet", "PRINTER", "--print", Films()});
      return theMore;
   }
   // Everything in the printer's folder, also what is hidden.
   Texts FilmFolders() const
   {
      std::set<std::string> aNames;
      for (const fs::directory_entry& anEntry : fs::directory_iterator(Films()))
      {
         aNames.insert(anEntry.path().filename());
      }
      return {aNames.begin(), aNames.end()};
   }
   std::string FilmFile(std::size_t theFilm, const std::string& theName) const
   {
      return Films() + "/" + FilmFolders().at(theFilm) + "/" + theName;
   }
   bool HasFile(std::size_t theFilm, const std::string& theName) const
   {
      return fs::exists(FilmFile(theFilm, theName));
   }

   TemporaryDirectory itsFolder;
};

TEST_F(TnPrint, RefusesWhatIsWrongAndPrintsWhatIsThere)
{
   ServedNode aNode(Options());
   Client anOther(aNode);
   ASSERT_EQ(anOther.CreateSession(kForeign), 0);
   ASSERT_EQ(anOther.CreateFilm("STANDARD\\1,1", "1.2.9"), 0);
   Client aClient(aNode);
   EXPECT_EQ(aClient.CreateFilm("STANDARD\\1,2"), 0x0112) << "no session yet";
   ASSERT_EQ(aClient.CreateSession(), 0);
   EXPECT_EQ(aClient.PrintAll(), 0xC600) << "no films yet";
   ASSERT_EQ(aClient.CreateFilm("STANDARD\\1,2"), 0);
   ASSERT_EQ(aClient.itsBoxes.size(), 2u);
   const UID aFilm = aClient.itsFilm;
   const UID aFirst = aClient.itsBoxes[0];
   const UID aSecond = aClient.itsBoxes[1];
   ASSERT_EQ(aClient.SetImage(aFirst, Box({}, "1", 'a')), 0);
   ASSERT_EQ(aClient.SetImage(aSecond, Box({}, "2", 'b')), 0);

   const auto aSet = [&](ImageForm theForm) { return aClient.SetImage(aFirst, Box(theForm)); };
   const struct
   {
      const char* itsName;
      std::function<int()> itsAttempt;
      int itsStatus;
   } kRows[] = {
       {"film of millions", [&] { return aClient.CreateFilm("STANDARD\\9999,9999"); }, 0x0106},
       {"film of 2 to the 64 and some", [&] { return aClient.CreateFilm("STANDARD\\4294967297,4294967296"); }, 0x0106},
       {"film of none", [&] { return aClient.CreateFilm("STANDARD\\0,1"); }, 0x0106},
       {"film of no format", [&] { return aClient.CreateFilm(""); }, 0x0121},
       {"the same film", [&] { return aClient.CreateFilm("STANDARD\\1,1", aFilm.ToString()); }, 0x0111},
       {"film of another's session", [&] { return aClient.CreateFilm("SLIDE", "", 0x20100500); }, 0x0106},
       {"film with no LUT of ours", [&] { return aClient.CreateFilm("SLIDE", "", 0x20500500); }, 0x0106},
       {"two sessions", [&] { return aClient.CreateFilm("SLIDE", "1..2"); }, 0x0117},
       {"no such image box", [&] { return aClient.SetImage(UID("1.2.99"), Box({})); }, 0x0112},
       {"another's image box", [&] { return aClient.SetImage(anOther.itsBoxes[0], Box({})); }, 0x0112},
       {"a film is no image box", [&] { return aClient.SetImage(aFilm, Box({})); }, 0x0112},
       {"another's film", [&] { return aClient.SetFilm(anOther.itsFilm, "STANDARD\\1,1"); }, 0x0112},
       {"another format", [&] { return aClient.SetFilm(aFilm, "STANDARD\\5,5"); }, 0x0106},
       {"no pixels", [&] { return aSet({.itsBytes = 0}); }, 0x0120},
       {"too few pixels", [&] { return aSet({.itsBytes = 14}); }, 0x0106},
       {"too many pixels", [&] { return aSet({.itsBytes = 1000000}); }, 0x0106},
       {"pixels of 4 GB that are not there", [&] { return aSet({.itsRows = 65535, .itsColumns = 65535}); }, 0x0106},
       {"no rows", [&] { return aSet({.itsRows = 0}); }, 0x0106},
       {"colours", [&] { return aSet({.itsPhotometric = "RGB"}); }, 0x0106},
       {"third place of two", [&] { return aClient.SetImage(aFirst, Box({}, "3")); }, 0x0106},
       {"colour image box", [&] { return aClient.SetColorImage(aFirst, Box({})); }, 0x0122},
       {"colour image box of another UID", [&] { return aClient.SetColorImage<BasicColorImageBox>(aFirst, Box({})); },
        0x0122},
       {"print of another's film", [&] { return aClient.PrintFilm(anOther.itsFilm); }, 0x0112},
       {"print of an image box", [&] { return aClient.PrintFilm(aFirst); }, 0x0112},
       {"deletion of another's film", [&] { return aClient.DeleteFilm(anOther.itsFilm); }, 0x0112},
       {"a LUT of no shape",
        [&] {
           DICOMDataObject aLUT;
           Put(aLUT, 0x20500020, VRCode::CS, "STEEP");
           return aClient.CreateLUT(aLUT);
        },
        0x0106},
       {"a LUT of 65536 entries of which there is one",
        [&] {
           auto aTable = std::make_unique<DICOMDataObject>();
           Put(*aTable, 0x00283002, VRCode::US, "0\\0\\12");
           Put(*aTable, 0x00283006, VRCode::US, "7");
           DICOMDataObject aLUT;
           PutItem(aLUT, 0x20500010, std::move(aTable));
           return aClient.CreateLUT(aLUT);
        },
        0x0106},
   };
   for (const auto& aRow : kRows)
   {
      EXPECT_EQ(aRow.itsAttempt(), aRow.itsStatus) << aRow.itsName;
      ASSERT_TRUE(aClient.IsConnected()) << aRow.itsName;
   }
   EXPECT_EQ(FilmFolders(), Texts());
   EXPECT_EQ(aClient.PrintAll(), 0);
   ASSERT_EQ(FilmFolders().size(), 1u) << "and no other film of the session";
   EXPECT_EQ(PixelsOf(FilmFile(0, "image-001.dcm")), std::string(16, 'a'));
   EXPECT_EQ(PixelsOf(FilmFile(0, "image-002.dcm")), std::string(16, 'b'));
   EXPECT_FALSE(HasFile(0, "image-003.dcm"));

   ASSERT_EQ(aClient.SetImage(aSecond, Box({}, "1", 'b')), 0);
   EXPECT_EQ(aClient.PrintFilm(aFilm), 0xC604) << "two images in one place";
   EXPECT_EQ(anOther.PrintFilm(anOther.itsFilm), 0xB603) << "no image, and none of its neighbour's";
   EXPECT_EQ(anOther.PrintAll(), 0xB602);
   EXPECT_EQ(FilmFolders().size(), 3u);
   EXPECT_EQ(aClient.DeleteFilm(aFilm), 0);
   EXPECT_EQ(aClient.DeleteFilm(aFilm), 0x0112);
   EXPECT_EQ(aClient.SetImage(aFirst, Box({})), 0x0112) << "its film is gone";
   EXPECT_EQ(aClient.itsEvents, Texts()) << "nothing has happened to the printer";
   EXPECT_LE(LinesOf(aNode.Log()), 5u) << aNode.Log();
}

TEST_F(TnPrint, TellsOfJobsAndOfThePrinterWhoAskedForIt)
{
   ServedNode aNode(Options());
   Client aClient(aNode, true);
   ASSERT_EQ(aClient.CreateSession(), 0);
   ASSERT_EQ(aClient.CreateFilm("STANDARD\\1,1"), 0);
   ASSERT_EQ(aClient.SetImage(aClient.itsBoxes[0], Box({})), 0);
   ASSERT_EQ(aClient.PrintFilm(aClient.itsFilm), 0);
   ASSERT_FALSE(aClient.itsJob.IsNull());
   EXPECT_EQ(aClient.AskStatus(), "NORMAL NORMAL");
   EXPECT_EQ(aClient.itsEvents, Texts{"job 3 NORMAL"});
   const UID aJob = aClient.itsJob;
   DICOMDataObject anAnswer;
   ASSERT_EQ(aClient.AskJob(aJob, anAnswer), 0);
   const std::pair<UINT32, std::string> kExpected[] = {
       {0x20000020, "MED"},    {0x21000020, "DONE"},    {0x21000030, "NORMAL"},
       {0x21000070, "CLIENT"}, {0x21100030, "PRINTER"},
   };
   for (const auto& [aTag, aText] : kExpected)
   {
      EXPECT_EQ(TextOf(anAnswer, aTag), aText) << TagText(aTag);
   }
   EXPECT_EQ(TextOf(anAnswer, 0x21000040).size() + TextOf(anAnswer, 0x21000050).size(), 14u) << "date and time";
   EXPECT_EQ(aClient.AskJob(UID("1.2.99"), anAnswer), 0x0112);
   DICOMDataObject aPart;
   Put(aPart, 0x21000020, VRCode::CS, "");
   Put(aPart, 0x21109999, VRCode::CS, "");
   EXPECT_EQ(aClient.AskJob(aJob, aPart), 0x0107) << "what there is, with a warning";
   EXPECT_EQ(TextOf(aPart, 0x21000020), "DONE");

   // The printer fails, and is mended. Asked twice, it has reported that, and the event comes in front of no other
   // answer.
   const std::string anAside = itsFolder.File("aside");
   fs::rename(Films(), anAside);
   EXPECT_EQ(aClient.AskStatus(), "FAILURE PRINTER DOWN");
   EXPECT_EQ(aClient.AskStatus(), "FAILURE PRINTER DOWN");
   EXPECT_EQ(aClient.PrintFilm(aClient.itsFilm), 0xC602);
   EXPECT_EQ(aClient.PrintAll(), 0xC601);
   EXPECT_TRUE(aClient.itsJob.IsNull());
   Client aNewOne(aNode); // without a context for print jobs
   EXPECT_EQ(aNewOne.AskStatus(), "FAILURE PRINTER DOWN");
   fs::rename(anAside, Films());
   EXPECT_EQ(aClient.AskStatus(), "NORMAL NORMAL");
   EXPECT_EQ(aClient.AskStatus(), "NORMAL NORMAL");
   EXPECT_EQ(aClient.itsEvents, (Texts{"job 3 NORMAL", "printer 3 PRINTER DOWN", "printer 1 NORMAL"}));
   EXPECT_EQ(FilmFolders().size(), 1u);
   EXPECT_EQ(aClient.PrintFilm(aClient.itsFilm), 0) << "the session is as it was";
   EXPECT_EQ(aClient.AskStatus(), "NORMAL NORMAL");
   EXPECT_NE(aClient.itsJob, aJob);
   EXPECT_EQ(aClient.DeleteSession(), 0);
   DICOMDataObject anotherAnswer;
   EXPECT_EQ(aClient.AskJob(aJob, anotherAnswer), 0) << "a job outlives its session";

   EXPECT_EQ(aNewOne.AskStatus(), "NORMAL NORMAL");
   EXPECT_EQ(aNewOne.AskStatus(), "NORMAL NORMAL");
   ASSERT_EQ(aNewOne.CreateSession(), 0);
   ASSERT_EQ(aNewOne.CreateFilm("STANDARD\\1,1"), 0);
   EXPECT_EQ(aNewOne.PrintFilm(aNewOne.itsFilm), 0xB603);
   EXPECT_TRUE(aNewOne.itsJob.IsNull());
   EXPECT_EQ(aNewOne.AskStatus(), "NORMAL NORMAL");
   EXPECT_EQ(aNewOne.itsEvents, Texts{"printer 1 NORMAL"});
}

TEST_F(TnPrint, ClientsShareItsMemoryAndAreNotHarmedByEachOther)
{
   const fs::path aLeftover =
       Films() + "/.film-aB3xYz"; // of a printer that was killed; one that is young may be at work
   fs::create_directory(aLeftover);
   WriteFile(aLeftover / "film.dcm", "half");
   fs::last_write_time(aLeftover, fs::file_time_type::clock::now() - std::chrono::hours(2));
   fs::create_directory(Films() + "/.film-nEw123");
   constexpr std::size_t kImage = 900000;
   const ImageForm aLarge = {.itsRows = 900, .itsColumns = 1000, .itsBytes = kImage};
   ServedNode aNode(Options({"--print-memory", "4"}));
   auto aGreedy = std::make_unique<Client>(aNode);
   ASSERT_EQ(aGreedy->CreateSession(), 0);
   ASSERT_EQ(aGreedy->CreateFilm("STANDARD\\2,3"), 0);
   std::size_t anImages = 0;
   while (anImages < 6 && aGreedy->SetImage(aGreedy->itsBoxes[anImages], Box(aLarge, "1")) == 0)
   {
      ++anImages;
   }
   EXPECT_EQ(anImages, 4u) << "3.6 of 4 MB: there is no room for the longest data set, of 1 MB";
   Client aModest(aNode);
   EXPECT_EQ(aModest.CreateSession(), 0);
   EXPECT_EQ(aModest.CreateFilm("STANDARD\\1,1"), 0x0213);
   EXPECT_EQ(aGreedy->SetImage(aGreedy->itsBoxes[5], Box({}, "6")), 0xC605);
   aGreedy.reset(); // dies, without printing or releasing
   int aStatus = 0x0213;
   for (int i = 0; i < 500 && aStatus == 0x0213; ++i)
   {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
      aStatus = aModest.CreateFilm("STANDARD\\1,1");
   }
   ASSERT_EQ(aStatus, 0);
   ASSERT_EQ(aModest.SetImage(aModest.itsBoxes[0], Box(aLarge, "1", 'm')), 0);
   {
      Client aTooMuch(aNode);
      ASSERT_EQ(aTooMuch.CreateSession(), 0);
      ASSERT_EQ(aTooMuch.CreateFilm("STANDARD\\1,1"), 0);
      const ImageForm aTooLarge = {.itsRows = 2000, .itsColumns = 1000, .itsBytes = 2000000};
      EXPECT_EQ(aTooMuch.SetImage(aTooMuch.itsBoxes[0], Box(aTooLarge)), kNoAnswer) << "longer than allowed: aborted";
      EXPECT_FALSE(aTooMuch.IsConnected());
   }
   EXPECT_EQ(aModest.PrintFilm(aModest.itsFilm), 0);
   ASSERT_EQ(FilmFolders().size(), 2u);
   EXPECT_EQ(FilmFolders()[0], ".film-nEw123");
   EXPECT_EQ(PixelsOf(FilmFile(1, "image-001.dcm")), std::string(kImage, 'm'));
   EXPECT_EQ(aNode.Stop(), 0);
}

TEST_F(TnPrint, PrintsWhatTnPrintHasPrepared)
{
   ServedNode aNode(Options());
   const std::string aPrinter = "PRINTER@127.0.0.1:" + aNode.Port();
   const Texts aFiles = {Sample("ct-explicit.dcm"), Sample("cr-big-endian.dcm"), Sample("us-jpeg.dcm")};
   std::string aNames;
   for (const std::string& aFile : aFiles)
   {
      aNames += " '" + aFile + "'";
   }
   const Outcome aFilm = Tn("print --film 2x3 --bits 12 " + aPrinter + aNames);
   EXPECT_EQ(aFilm.itsCode, 0) << aFilm.itsErrors;
   EXPECT_TRUE(Contains(aFilm.itsOutput, "film 1: 3 images printed, job DONE")) << aFilm.itsOutput;
   EXPECT_EQ(aFilm.itsErrors, "tn print: " + aPrinter + ": the print job is done\n");
   const Outcome aSession = Tn("print --session " + aPrinter + aNames);
   EXPECT_EQ(aSession.itsCode, 0) << aSession.itsErrors;
   EXPECT_TRUE(Contains(aSession.itsOutput, "3 films printed, job DONE")) << aSession.itsOutput;
   ASSERT_EQ(FilmFolders().size(), 4u);
   for (std::size_t i = 0; i < aFiles.size(); ++i)
   {
      const struct
      {
         unsigned int itsBits;
         std::string itsPrinted;
      } kPrints[] = {{12, FilmFile(0, "image-00" + std::to_string(i + 1) + ".dcm")},
                     {8, FilmFile(1 + i, "image-001.dcm")}};
      for (const auto& aPrint : kPrints)
      {
         const auto anImage = PreparePrintImage(aFiles[i], 1, {.itsBits = aPrint.itsBits});
         const VR& aPixels = *FindVR(*anImage, kPixels);
         EXPECT_TRUE(PixelsOf(aPrint.itsPrinted) ==
                     std::string(reinterpret_cast<const char*>(aPixels.GetData()), aPixels.GetLength()))
             << aPrint.itsPrinted;
      }
   }
   for (const char* const aName : {"session.dcm", "film.dcm", "presentation-lut-1.dcm", "sheet.png"})
   {
      EXPECT_TRUE(HasFile(0, aName)) << aName;
   }
}

TEST_F(TnPrint, EventsInFrontOfAnswersLeaveNoGapsOnTheFilms)
{
   const std::string aFiles =
       " '" + Sample("ct-explicit.dcm") + "' '" + Sample("ct-explicit.dcm") + "' '" + Sample("ct-explicit.dcm") + "'";
   {
      // The printer is asked twice then, and the first film box made twice; images and the print are there all the
      // same.
      TalkativePrinter aPrinter({1, 5, 8, 11, 12});
      const Outcome anOutcome = Tn("print --timeout 10 --session --film 1x2 " + aPrinter.Address() + aFiles);
      EXPECT_EQ(anOutcome.itsCode, 0) << anOutcome.itsErrors;
      EXPECT_TRUE(Contains(anOutcome.itsErrors, "the printer reports WARNING")) << anOutcome.itsErrors;
      EXPECT_EQ(aPrinter.Finish(), Texts{"xx x- "});
   }
   TalkativePrinter aSmallPrinter({6}, 2); // the refusal of the second image
   const Outcome anOutcome = Tn("print --timeout 10 --session --film 1x2 " + aSmallPrinter.Address() + aFiles);
   EXPECT_EQ(anOutcome.itsCode, 8) << anOutcome.itsErrors;
   EXPECT_TRUE(Contains(anOutcome.itsErrors, "sending an image: Insufficient memory")) << anOutcome.itsErrors;
   EXPECT_EQ(aSmallPrinter.Finish(), Texts());
}
} // namespace
