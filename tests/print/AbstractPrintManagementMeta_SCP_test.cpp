// The SCP of print management: what each request is answered with, and what becomes of the tree.
#include <gtest/gtest.h>

#include "support/MemoryAssociation.h"
#include "support/PrintBytes.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dataset/SequenceVR.h"

namespace
{
using namespace PrintBytes;

std::string UIDIn(const DICOMObject& theObject, UINT16 theGroup, UINT16 theElement)
{
   RWCString aText;
   theObject.GetString(theGroup, theElement, aText);
   return aText;
}

// The tree in a line: S(session)[film{image,image}...].
std::string TreeOf(const AbstractPrintManagementMeta& theMeta)
{
   std::string aText = theMeta.IsCreated() ? "S" + theMeta.GetSOPInstanceUID().ToString() : "-";
   for (const auto& aFilm : theMeta.GetFilmBoxes())
   {
      aText += "[" + aFilm->GetSOPInstanceUID().ToString() + " " + UIDIn(*aFilm, 0x2010, 0x0060) + "{";
      for (const auto& aBox : aFilm->GetImageBoxes())
      {
         const VR* const anImage = aBox->GetVR(0x2020, 0x0110);
         aText += " " + aBox->GetSOPInstanceUID().ToString() + (anImage && !anImage->IsEmpty() ? "+" : "");
      }
      aText += "}]";
   }
   return aText;
}

struct Answer
{
   int itsStatus = -1; // none
   std::string itsInstance;
   std::vector<std::string> itsImageBoxes; // of the data set
   bool itsHasDataset = false;
};

Answer ReadAnswer(const std::string& theBytes)
{
   Answer anAnswer;
   MemoryAssociation aClient(kMeta, theBytes);
   DICOMCommandObject aCommand;
   if (theBytes.empty() || !aClient.ReadCommand(aCommand))
   {
      return anAnswer;
   }
   anAnswer.itsStatus = aCommand.GetUINT16(0, 0x0900);
   anAnswer.itsInstance = UIDIn(aCommand, 0, 0x1000);
   anAnswer.itsHasDataset = aCommand.GetUINT16(0, 0x0800) != 0x0101;
   EXPECT_EQ(aCommand.GetUINT16(0, 0x0120), 7) << "the request that is answered";
   DICOMDataObject aDataset;
   if (anAnswer.itsHasDataset && aClient.Read(aDataset))
   {
      if (VR* const aVR = aDataset.GetVR(0x2010, 0x0510))
      {
         for (const DICOMDataObject* const anItem : *aVR->GetAsSequenceVR()->GetSequenceArray())
         {
            anAnswer.itsImageBoxes.push_back(UIDIn(*anItem, 0x0008, 0x1155));
         }
      }
   }
   return anAnswer;
}

std::string Film(const std::string& theFormat, const std::string& theRest = "")
{
   return Text(0x20100010, "ST", theFormat) + theRest;
}
std::string ImageBox(const Image& theImage, UINT16 thePosition = 1)
{
   return Number(0x20200010, thePosition) + Sequence(0x20200110, {theImage.Bytes()});
}
// The request to make a presentation LUT of one table with that descriptor and so many bytes of data.
std::string TableRequest(const std::vector<UINT16>& theDescriptor, std::size_t theBytes)
{
   DatasetBytes aDescriptor;
   for (const UINT16 aNumber : theDescriptor)
   {
      aDescriptor.Number(aNumber, 2);
   }
   const std::string aTable = DatasetBytes().Element(0x00283002, "US", aDescriptor.Bytes()).Bytes() +
                              DatasetBytes().Element(0x00283006, "OW", std::string(theBytes, 'x')).Bytes();
   return Request(0x0140, kLUT, "1.4", Sequence(0x20500010, {aTable}));
}
const std::string kPrint = US(0x1008, 1);

struct Step
{
   const char* itsName;
   std::string itsRequest;
   int itsResult;
   int itsStatus;
   std::string itsTree; // afterwards; empty for unchanged
};

// Sends the requests of one association, and checks each answer.
void Play(Host& theHost, const std::vector<Step>& theSteps)
{
   std::string anInput;
   for (const Step& aStep : theSteps)
   {
      anInput += aStep.itsRequest;
   }
   MemoryAssociation aService(kMeta, anInput);
   for (const Step& aStep : theSteps)
   {
      SCOPED_TRACE(aStep.itsName);
      const std::string aTree = aStep.itsTree.empty() ? TreeOf(theHost) : aStep.itsTree;
      const std::size_t aSent = aService.Sent().size();
      DICOMCommandObject aCommand;
      ASSERT_TRUE(aService.ReadCommand(aCommand));
      EXPECT_EQ(theHost.Read(aService, aCommand), aStep.itsResult);
      EXPECT_EQ(ReadAnswer(aService.Sent().substr(aSent)).itsStatus, aStep.itsStatus);
      EXPECT_EQ(TreeOf(theHost), aTree);
   }
}

// What dcmprscu sends to print one film: no instance UIDs, a session without attributes.
TEST(AbstractPrintManagementMeta_SCP, PrintsForAClientThatNamesNothing)
{
   Host aHost;
   Play(aHost, {{"printer", Request(0x0110, kPrinter, kPrinterInstance), 1, 0, "-"},
                {"presentation LUT", Request(0x0140, kLUT, "", Text(0x20500020, "CS", "IDENTITY")), 1, 0, "-"},
                {"session", Request(0x0140, kSession, ""), 1, 0, "S1.2.2"},
                {"film",
                 Request(0x0140, kFilm, "",
                         Film("STANDARD\\1,2", Sequence(0x20100500, {Reference(kSession, "1.2.2")}) +
                                                   Sequence(0x20500500, {Reference(kLUT, "1.2.1")}))),
                 1, 0, "S1.2.2[1.2.4 { 1.2.6 1.2.7}]"},
                {"image", Request(0x0120, kGray, "1.2.7", ImageBox({}, 2)), 1, 0, "S1.2.2[1.2.4 { 1.2.6 1.2.7+}]"},
                {"print", Request(0x0130, kFilm, "1.2.4", "", kPrint), 1, 0, ""},
                {"print all", Request(0x0130, kSession, "1.2.2", "", kPrint), 1, 0, ""},
                {"film goes", Request(0x0150, kFilm, "1.2.4"), 1, 0, "S1.2.2"},
                {"session goes", Request(0x0150, kSession, "1.2.2"), 1, 0, "-"},
                {"LUT goes", Request(0x0150, kLUT, "1.2.1"), 1, 0, "-"}});
   EXPECT_EQ(aHost.itsNotes, (std::vector<std::string>{"print film 1.2.4", "print session 1.2.2"}));
}

TEST(AbstractPrintManagementMeta_SCP, TellsTheImageBoxesOfANewFilm)
{
   Host aHost;
   MemoryAssociation aService(kMeta,
                              Request(0x0140, kSession, "1.5") + Request(0x0140, kFilm, "1.6", Film("ROW\\1,2")));
   DICOMCommandObject aCommand;
   ASSERT_TRUE(aService.ReadCommand(aCommand) && aHost.Read(aService, aCommand));
   EXPECT_FALSE(ReadAnswer(aService.Sent()).itsHasDataset) << "a session without attributes";
   const std::size_t aSent = aService.Sent().size();
   ASSERT_TRUE(aService.ReadCommand(aCommand) && aHost.Read(aService, aCommand));
   const Answer anAnswer = ReadAnswer(aService.Sent().substr(aSent));
   EXPECT_EQ(anAnswer.itsInstance, "1.6");
   ASSERT_EQ(anAnswer.itsImageBoxes.size(), 3u);
   EXPECT_TRUE(aHost.GetFilmBoxes()[0]->IsCreated());
   for (std::size_t i = 0; i < 3; ++i)
   {
      EXPECT_EQ(aHost.GetFilmBoxes()[0]->GetImageBoxes()[i]->GetSOPInstanceUID(), anAnswer.itsImageBoxes[i]);
   }
   VR* const aFilms = aHost.GetVR(0x2000, 0x0500);
   ASSERT_NE(aFilms, nullptr);
   EXPECT_EQ(UIDIn(*aFilms->GetAsSequenceVR()->GetSequenceArray()->front(), 0x0008, 0x1155), "1.6");
}

TEST(AbstractPrintManagementMeta_SCP, RefusesWithTheRightStatusAndLeavesTheTree)
{
   Host aHost;
   const std::string aFilm = Film("STANDARD\\1,1");
   Play(
       aHost,
       {{"film without session", Request(0x0140, kFilm, "1.6", aFilm), 0, 0x0112, "-"},
        {"session with an instance that is none", Request(0x0140, kSession, "1..2"), 0, 0x0117, "-"},
        {"LUT without contents", Request(0x0140, kLUT, "1.4"), 0, 0x0120, "-"},
        {"LUT with neither LUT nor shape", Request(0x0140, kLUT, "1.4", Film("X")), 0, 0x0120, "-"},
        {"LUT of no known shape", Request(0x0140, kLUT, "1.4", Text(0x20500020, "CS", "STEEP")), 0, 0x0106, "-"},
        {"LUT without table", Request(0x0140, kLUT, "1.4", Sequence(0x20500010, {})), 0, 0x0121, "-"},
        {"LUT with an empty table", Request(0x0140, kLUT, "1.4", Sequence(0x20500010, {""})), 0, 0x0120, "-"},
        {"LUT of 65536 entries that are not there", TableRequest({0, 0, 12}, 2), 0, 0x0106, "-"},
        {"LUT of fewer entries than there are", TableRequest({2, 0, 12}, 512), 0, 0x0106, "-"},
        {"LUT that begins at 5", TableRequest({2, 5, 12}, 4), 0, 0x0106, "-"},
        {"LUT of 60 bits", TableRequest({2, 0, 60}, 4), 0, 0x0106, "-"},
        {"LUT with half a descriptor", TableRequest({2, 0}, 4), 0, 0x0106, "-"},
        {"LUT", TableRequest({2, 0, 12}, 4), 1, 0, "-"},
        {"LUT goes wrong", Request(0x0120, kLUT, "1.4", Text(0x20500020, "CS", "STEEP")), 0, 0x0106, "-"},
        {"LUT goes", Request(0x0150, kLUT, "1.4"), 1, 0, "-"},
        {"session", Request(0x0140, kSession, "1.5"), 1, 0, "S1.5"},
        {"session, again", Request(0x0140, kSession, "1.5"), 0, 0x0111, ""},
        {"another session", Request(0x0140, kSession, "1.55"), 0, 0x0213, ""},
        {"print without film", Request(0x0130, kSession, "1.5", "", kPrint), 0, 0xC600, ""},
        {"film without data set", Request(0x0140, kFilm, "1.6"), 0, 0x0120, ""},
        {"film without format", Request(0x0140, kFilm, "1.6", Text(0x20100060, "CS", "NONE")), 0, 0x0120, ""},
        {"film with an empty format", Request(0x0140, kFilm, "1.6", Film("")), 0, 0x0121, ""},
        {"film of millions", Request(0x0140, kFilm, "1.6", Film("STANDARD\\9999,9999")), 0, 0x0106, ""},
        {"film of another session",
         Request(0x0140, kFilm, "1.6", Film("SLIDE", Sequence(0x20100500, {Reference(kSession, "1.99")}))), 0, 0x0106,
         ""},
        {"film with a LUT that is not there",
         Request(0x0140, kFilm, "1.6", Film("SLIDE", Sequence(0x20500500, {Reference(kLUT, "1.4")}))), 0, 0x0106, ""},
        {"film", Request(0x0140, kFilm, "1.6", aFilm), 1, 0, "S1.5[1.6 { 1.2.3}]"},
        {"film, again", Request(0x0140, kFilm, "1.6", aFilm), 0, 0x0111, ""},
        {"foreign film", Request(0x0120, kFilm, "1.7", aFilm), 0, 0x0112, ""},
        {"another format", Request(0x0120, kFilm, "1.6", Film("STANDARD\\2,2")), 0, 0x0106, ""},
        {"the same format", Request(0x0120, kFilm, "1.6", aFilm), 1, 0, ""},
        {"changes without data set", Request(0x0120, kFilm, "1.6"), 0, 0x0120, ""},
        {"foreign image box", Request(0x0120, kGray, "1.99", ImageBox({})), 0, 0x0112, ""},
        {"no instance", Request(0x0120, kGray, "", ImageBox({})), 0, 0x0117, ""},
        {"image box with a LUT that is not there",
         Request(0x0120, kGray, "1.2.3", Sequence(0x20500500, {Reference(kLUT, "1.4")})), 0, 0x0106, ""},
        {"no position", Request(0x0120, kGray, "1.2.3", ImageBox({}, 2)), 0, 0x0106, ""},
        {"too few pixels", Request(0x0120, kGray, "1.2.3", ImageBox({.itsRows = 60000})), 0, 0x0106, ""},
        {"too many pixels", Request(0x0120, kGray, "1.2.3", ImageBox({.itsPixelBytes = 6})), 0, 0x0106, ""},
        {"no pixels", Request(0x0120, kGray, "1.2.3", ImageBox({.itsPixelBytes = 0})), 0, 0x0120, ""},
        {"no extent", Request(0x0120, kGray, "1.2.3", ImageBox({.itsRows = 0, .itsPixelBytes = 0})), 0, 0x0120, ""},
        {"colour", Request(0x0120, kGray, "1.2.3", ImageBox({.itsPhotometric = "RGB"})), 0, 0x0106, ""},
        {"9 of 8 bits", Request(0x0120, kGray, "1.2.3", ImageBox({.itsStored = 9})), 0, 0x0106, ""},
        {"two images", Request(0x0120, kGray, "1.2.3", Sequence(0x20200110, {Image().Bytes(), Image().Bytes()})), 0,
         0x0106, ""},
        {"not a sequence", Request(0x0120, kGray, "1.2.3", Text(0x20200110, "LO", "image")), 0, 0x0106, ""},
        {"colour image box", Request(0x0120, kColor, "1.2.3", ImageBox({})), 0, 0x0122, ""},
        {"created image box", Request(0x0140, kGray, "1.2.9", ImageBox({})), 0, 0x0211, ""},
        {"annotation", Request(0x0120, kAnnotation, "1.2.3", Text(0x20300020, "LO", "x")), 0, 0x0112, ""},
        {"action 2", Request(0x0130, kFilm, "1.6", "", US(0x1008, 2)), 0, 0x0123, ""},
        {"deletion with data set", Request(0x0150, kFilm, "1.6", aFilm), 0, 0x0212, ""},
        {"foreign session", Request(0x0150, kSession, "1.6"), 0, 0x0112, ""},
        {"foreign printer", Request(0x0110, kPrinter, "1.6"), 0, 0x0112, ""},
        {"foreign job", Request(0x0110, kJob, "1.6"), 0, 0x0112, ""},
        {"image", Request(0x0120, kGray, "1.2.3", ImageBox({})), 1, 0, "S1.5[1.6 { 1.2.3+}]"},
        {"changed film keeps its image", Request(0x0120, kFilm, "1.6", Text(0x20100060, "CS", "CUBIC")), 1, 0,
         "S1.5[1.6 CUBIC{ 1.2.3+}]"},
        {"changed session keeps its films", Request(0x0120, kSession, "1.5", Text(0x20000020, "CS", "HIGH")), 1, 0, ""},
        {"erased image", Request(0x0120, kGray, "1.2.3", Sequence(0x20200110, {})), 1, 0, "S1.5[1.6 CUBIC{ 1.2.3}]"},
        {"the session goes with its films", Request(0x0150, kSession, "1.5"), 1, 0, "-"}});
   EXPECT_TRUE(aHost.itsNotes.empty()) << aHost.itsNotes.front();
}

TEST(AbstractPrintManagementMeta_SCP, LeavesAloneWhatIsBeingPrintedAndBoundsWhatItHolds)
{
   Host aHost;
   const std::string anImage = Request(0x0120, kGray, "1.2.3", ImageBox({}));
   Play(aHost, {{"session", Request(0x0140, kSession, "1.5"), 1, 0, "S1.5"},
                {"film", Request(0x0140, kFilm, "1.6", Film("STANDARD\\1,2")), 1, 0, "S1.5[1.6 { 1.2.3 1.2.4}]"}});
   aHost.GetFilmBoxes()[0]->SetBusy();
   Play(aHost, {{"image", anImage, 0, 0x0213, ""},
                {"film changes", Request(0x0120, kFilm, "1.6", Film("STANDARD\\1,2")), 0, 0x0213, ""},
                {"film goes", Request(0x0150, kFilm, "1.6"), 0, 0x0213, ""},
                {"session goes", Request(0x0150, kSession, "1.5"), 0, 0x0213, ""}});
   aHost.GetFilmBoxes()[0]->ClearBusy();
   aHost.SetMemoryLimit(aHost.GetMemoryUse() + 100);
   Play(aHost, {{"too large", anImage, 0, 0xC605, ""}});
   aHost.SetMemoryLimit(aHost.GetMemoryUse());
   Play(aHost, {{"too large, unread", anImage, 0, 0xC605, ""},
                {"film changes, unread", Request(0x0120, kFilm, "1.6", Film("STANDARD\\1,2")), 0, 0x0213, ""}});
   std::string aCrowd;
   for (UINT32 i = 0; i < 900; ++i)
   {
      aCrowd += Text(0x20110000 + 0x10000 * 2 * (i / 256) + i % 256, "CS", "");
   }
   aHost.SetMemoryLimit(50000);
   Play(aHost, {{"900 elements of 8 bytes", Request(0x0120, kFilm, "1.6", aCrowd), 0, 0x0213, ""}});
   aHost.SetMemoryLimit(100000);
   Play(aHost, {{"image", anImage, 1, 0, "S1.5[1.6 { 1.2.3+ 1.2.4}]"},
                {"second image in the same place", Request(0x0120, kGray, "1.2.4", ImageBox({})), 1, 0,
                 "S1.5[1.6 { 1.2.3+ 1.2.4+}]"},
                {"collision", Request(0x0130, kFilm, "1.6", "", kPrint), 0, 0xC604, ""}});
   aHost.itsPrintAnswer.itsStatus = 0xC601;
   Play(aHost, {{"the images go", Request(0x0120, kGray, "1.2.4", Sequence(0x20200110, {})), 1, 0,
                 "S1.5[1.6 { 1.2.3+ 1.2.4}]"},
                {"the host cannot print a film", Request(0x0130, kFilm, "1.6", "", kPrint), 0, 0xC601, ""},
                {"nor all", Request(0x0130, kSession, "1.5", "", kPrint), 0, 0xC601, ""}});
   EXPECT_TRUE(aHost.itsNotes.empty());
   for (int i = 1; i < static_cast<int>(AbstractPrintManagementMeta::kMostFilmBoxes); ++i)
   {
      aHost.Add(new AbstractFilmBox(aHost));
   }
   Play(aHost, {{"too many films", Request(0x0140, kFilm, "1.7", Film("SLIDE")), 0, 0x0213, ""}});
}

TEST(AbstractPrintManagementMeta_SCP, KeepsADeletedLUTForTheFilmsThatReferToIt)
{
   Host aHost;
   const std::string aReference = Sequence(0x20500500, {Reference(kLUT, "1.4")});
   const std::string aFilm = "S1.5[1.6 { 1.2.3}]";
   Play(aHost, {{"LUT", Request(0x0140, kLUT, "1.4", Text(0x20500020, "CS", "IDENTITY")), 1, 0, "-"},
                {"session", Request(0x0140, kSession, "1.5"), 1, 0, "S1.5"},
                {"film", Request(0x0140, kFilm, "1.6", Film("SLIDE", aReference)), 1, 0, aFilm},
                {"LUT goes", Request(0x0150, kLUT, "1.4"), 1, 0, aFilm},
                {"LUT goes, again", Request(0x0150, kLUT, "1.4"), 0, 0x0112, aFilm},
                {"for no other film", Request(0x0140, kFilm, "1.7", Film("SLIDE", aReference)), 0, 0x0106, aFilm}});
   EXPECT_NE(aHost.FindStandaloneBox("1.4"), nullptr);
   Play(aHost, {{"film goes", Request(0x0150, kFilm, "1.6"), 1, 0, "S1.5"}});
   EXPECT_EQ(aHost.FindStandaloneBox("1.4"), nullptr);
}

TEST(AbstractPrintManagementMeta_SCP, TellsThePrintJobThatTheHostNames)
{
   Host aHost;
   Play(aHost, {{"session", Request(0x0140, kSession, "1.5"), 1, 0, "S1.5"},
                {"film", Request(0x0140, kFilm, "1.6", Film("SLIDE")), 1, 0, "S1.5[1.6 { 1.2.3}]"}});
   DICOMDataObject aReply;
   aReply.AddReferenceSequence(0x2100, 0x0500, kJob, "2.9");
   for (const UINT16 aStatus : {0, 0xB603}) // with a warning, too
   {
      aHost.itsPrintAnswer = {aStatus, "", {}, &aReply};
      MemoryAssociation aService(kMeta, Request(0x0130, kFilm, "1.6", "", kPrint));
      DICOMCommandObject aCommand;
      ASSERT_TRUE(aService.ReadCommand(aCommand) && aHost.Read(aService, aCommand));
      MemoryAssociation aClient(kMeta, aService.Sent());
      DICOMDataObject aDataset;
      ASSERT_TRUE(aClient.ReadCommand(aCommand) && aClient.Read(aDataset));
      EXPECT_EQ(aCommand.GetUINT16(0, 0x0900), aStatus);
      ASSERT_NE(aDataset.GetVR(0x2100, 0x0500), nullptr);
      EXPECT_EQ(UIDIn(*aDataset.GetVR(0x2100, 0x0500)->GetAsSequenceVR()->GetSequenceArray()->front(), 8, 0x1155),
                "2.9");
   }
   EXPECT_EQ(aHost.itsNotes.size(), 2u);
}

TEST(AbstractPrintManagementMeta_SCP, TellsOfThePrinterWhatIsAskedFor)
{
   struct Row
   {
      const char* itsName;
      std::vector<UINT16> itsElements; // of group 2110
      int itsStatus;
      std::string itsValue; // the status of the printer in the answer
   };
   for (const Row& aRow : std::vector<Row>{{"all", {}, 0, "NORMAL"},
                                           {"one", {0x0010}, 0, "NORMAL"},
                                           {"one that is not there", {0x0010, 0x0030}, 0x0107, "NORMAL"},
                                           {"only one that is not there", {0x0030}, 0x0107, ""}})
   {
      DatasetBytes aList;
      for (const UINT16 anElement : aRow.itsElements)
      {
         aList.Number(0x2110, 2).Number(anElement, 2);
      }
      Host aHost;
      MemoryAssociation aService(kMeta,
                                 Request(0x0110, kPrinter, kPrinterInstance, "",
                                         aRow.itsElements.empty() ? "" : CommandBytes::Element(0x1005, aList.Bytes())));
      DICOMCommandObject aCommand;
      ASSERT_TRUE(aService.ReadCommand(aCommand));
      EXPECT_EQ(aHost.Read(aService, aCommand), 1) << aRow.itsName;
      MemoryAssociation aClient(kMeta, aService.Sent());
      DICOMDataObject aDataset;
      ASSERT_TRUE(aClient.ReadCommand(aCommand));
      EXPECT_EQ(aCommand.GetUINT16(0, 0x0900), aRow.itsStatus) << aRow.itsName;
      EXPECT_EQ(aCommand.GetUINT16(0, 0x0800) != 0x0101 && aClient.Read(aDataset), !aRow.itsValue.empty());
      EXPECT_EQ(UIDIn(aDataset, 0x2110, 0x0010), aRow.itsValue) << aRow.itsName;
   }
}

TEST(AbstractPrintManagementMeta_SCP, TheHostIsAskedWhichSOPClassesItTakes)
{
   struct Choosy : Host
   {
      int AcceptSOPClass(const UID& theSOPClass) override { return theSOPClass != kPrinter; }
   } aHost;
   const std::string anEvent = Text(0x21100020, "CS", "SUPPLY LOW");
   Play(aHost,
        {{"printer", Request(0x0110, kPrinter, kPrinterInstance), 0, 0x0122, "-"},
         {"event of the printer", Request(0x0100, kPrinter, kPrinterInstance, anEvent, US(0x1002, 2)), 0, 0x0122, "-"},
         {"event of a job", Request(0x0100, kJob, "1.9", anEvent, US(0x1002, 2)), 1, 0, "-"},
         {"session", Request(0x0140, kSession, "1.5"), 1, 0, "S1.5"}});
   EXPECT_TRUE(aHost.itsNotes.empty()) << "nobody is told of an event that is refused";
}

TEST(AbstractPrintManagementMeta_SCP, LeavesOtherCommandsToOthers)
{
   Host aHost;
   MemoryAssociation aService(kMeta, Request(0x0030, "1.2.840.10008.1.1", "") +
                                         Request(0x0140, "1.2.840.10008.3.1.2.3.3", "1.2"));
   for (const TNResultCode aCode : {TN_COMMAND_NOT_SUPPORTED, TN_SOP_CLASS_MISMATCH})
   {
      DICOMCommandObject aCommand;
      ASSERT_TRUE(aService.ReadCommand(aCommand));
      EXPECT_EQ(aHost.Read(aService, aCommand), 0);
      EXPECT_EQ(aService.GetResultCode(), aCode);
   }
   EXPECT_EQ(aService.Sent(), "");
}
} // namespace
