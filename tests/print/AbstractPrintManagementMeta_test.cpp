// The SCU of print management: what it sends in which order, and what it tells of failures.
#include <functional>

#include <gtest/gtest.h>

#include "support/FakeClock.h"
#include "support/MemoryAssociation.h"
#include "support/PrintBytes.h"
#include "talvenor/association/PDU_Service.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dimse/CEchoRQ.h"

namespace
{
using namespace PrintBytes;
using Notes = std::vector<std::string>;

// The commands that were sent: field, class and instance.
Notes CommandsIn(const std::string& theBytes)
{
   Notes aCommands;
   MemoryAssociation aPrinter(kMeta, theBytes);
   for (DICOMCommandObject aCommand; aPrinter.ReadCommand(aCommand);)
   {
      char aField[8];
      std::snprintf(aField, sizeof aField, "%04X", aCommand.GetUINT16(0, 0x0100));
      std::string aText = aField;
      for (const UINT16 anElement : {0x0002, 0x0003, 0x1000, 0x1001})
      {
         RWCString aUID;
         if (aCommand.GetString(0, anElement, aUID))
         {
            aText += " " + aUID;
         }
      }
      aCommands.push_back(aText);
   }
   return aCommands;
}

const std::string kSessionCreated = Response(0x8140, 0, "2.1");
const std::string kFilmCreated =
    Response(0x8140, 0, "2.2", Sequence(0x20100510, {Reference(kGray, "2.3"), Reference(kGray, "2.4")}));
const std::string kSet = Response(0x8120, 0);
const std::string kPrinted = Response(0x8130, 0, "", Sequence(0x21000500, {Reference(kJob, "2.9")}));
const std::string kEvent =
    Request(0x0100, kPrinter, kPrinterInstance, Text(0x21100020, "CS", "SUPPLY LOW"), US(0x1002, 2));

// A session with a film of two images.
void Fill(Host& theHost)
{
   theHost.SetSOPInstanceUID("1.1");
   auto* const aFilm = new AbstractFilmBox(theHost);
   aFilm->SetSOPInstanceUID("1.2");
   aFilm->Add(new AbstractImageBox(theHost));
   aFilm->Add(new AbstractImageBox(theHost));
   theHost.Add(aFilm);
}

TEST(AbstractPrintManagementMeta, PrintsATreeAndSendsNothingTwice)
{
   Host aHost;
   Fill(aHost);
   MemoryAssociation aService(kMeta, kSessionCreated + kFilmCreated + kSet + kSet + kPrinted + kPrinted +
                                         Response(0x8150, 0) + Response(0x8150, 0));
   UID aJob;
   ASSERT_TRUE(aHost.PrintFilm(aService, aJob, AbstractPrintManagementMeta::kLastFilmBox));
   EXPECT_EQ(aJob, "2.9");
   EXPECT_TRUE(aHost.Write(aService));
   aJob = UID();
   EXPECT_TRUE(aHost.PrintSession(aService, aJob));
   EXPECT_EQ(aJob, "2.9");
   EXPECT_FALSE(aHost.PrintFilm(aService, aJob, 1)) << "there is one film box";
   EXPECT_TRUE(aHost.DeleteFilm(aService) && aHost.GetFilmBoxes().empty());
   EXPECT_TRUE(aHost.DeleteFilm(aService)) << "none left";
   EXPECT_FALSE(aHost.PrintSession(aService, aJob)) << "none left";
   EXPECT_TRUE(aHost.Delete(aService) && !aHost.IsCreated());
   EXPECT_EQ(CommandsIn(aService.Sent()),
             (Notes{"0140 " + kSession + " 1.1", "0140 " + kFilm + " 1.2", "0120 " + kGray + " 2.3",
                    "0120 " + kGray + " 2.4", "0130 " + kFilm + " 2.2", "0130 " + kSession + " 2.1",
                    "0150 " + kFilm + " 2.2", "0150 " + kSession + " 2.1"}));
   EXPECT_TRUE(aHost.itsNotes.empty()) << aHost.itsNotes.front();
}

TEST(AbstractPrintManagementMeta, DoesNotPrintAFilmWithoutTheImageThatFailed)
{
   Host aHost;
   Fill(aHost);
   MemoryAssociation aService(kMeta,
                              kSessionCreated + kFilmCreated + kSet + Response(0x8120, 0xC605) + kSet + kPrinted);
   UID aJob;
   EXPECT_FALSE(aHost.PrintFilm(aService, aJob, 0));
   EXPECT_TRUE(aHost.PrintFilm(aService, aJob, 0));
   const Notes aCommands = CommandsIn(aService.Sent());
   ASSERT_EQ(aCommands.size(), 6u);
   EXPECT_EQ(aCommands[4], "0120 " + kGray + " 2.4") << "once more, and only this one";
   EXPECT_EQ(aHost.itsNotes, Notes{"StandardBox::Write: Insufficient memory in printer to store image (26, 8)"});
}

TEST(AbstractPrintManagementMeta, StopsWhereThePrinterHasFewerImageBoxesThanTheFilm)
{
   Host aHost;
   Fill(aHost);
   MemoryAssociation aService(kMeta, kSessionCreated + Response(0x8140, 0, "2.2"));
   EXPECT_FALSE(aHost.Write(aService));
   ASSERT_EQ(aHost.itsNotes.size(), 1u);
   EXPECT_EQ(CommandsIn(aService.Sent()).size(), 2u);
}

// The attributes that the printer does know are there, for the callback as for the caller.
TEST(AbstractPrintManagementMeta, TakesWhatThePrinterTellsWithAWarning)
{
   struct Asking : Host
   {
      int ErrorCallback(const ErrorDescription& theError) override
      {
         itsTold = theError.GetResponseDataset();
         EXPECT_TRUE(itsTold != nullptr && itsTold->HasAttribute(0x2110, 0x0010));
         return Host::ErrorCallback(theError);
      }
      const DICOMObject* itsTold = nullptr;
   } aHost;
   aHost.itsTolerance = 1;
   MemoryAssociation aService(kMeta,
                              Response(0x8110, 0x0107, "", Text(0x21100010, "CS", "NORMAL")) + Response(0x8110, 0));
   DICOMDataObject anAttributes;
   anAttributes.Push(new VR(0x2110, 0x0099, "", 0));
   EXPECT_TRUE(aHost.GetPrinter(aService, anAttributes));
   EXPECT_NE(aHost.itsTold, nullptr);
   EXPECT_TRUE(anAttributes.HasAttribute(0x2110, 0x0010) && !anAttributes.HasAttribute(0x2110, 0x0099));
   EXPECT_TRUE(aHost.GetPrinter(aService, anAttributes));
   EXPECT_TRUE(anAttributes.HasAttribute(0x2110, 0x0010)) << "nothing told, nothing changed";
   EXPECT_EQ(aHost.itsNotes, Notes{"StandardStatus::WriteGet: Attribute(s) Not Recognized in Context of this SOP "
                                   "Class (22, 7)"});
}

// The four operations that have statuses of their own, on one association.
struct Operation
{
   const char* itsName; // of class and method
   UINT16 itsResponse;
   std::function<int(Host&, PDU_Service&)> itsRun;
   const char* itsSendFailed; // and the texts and numbers of the other failures
   const char* itsReadFailed;
   const char* itsUnexpected;
   int itsWrite;
};

DICOMDataObject gDataset;
UID gInstance("1.9");
const Operation kOperations[] = {
    {"StandardFilm::WriteCreate", 0x8140,
     [](Host& h, PDU_Service& s) { return h.GetFilmBoxMessages().WriteCreate(s, gInstance, gDataset, h); },
     "NCreateRQ::Write() failed", "thePDU::Read() failed", "NCreateRSP::Read() received unexpected response", 9},
    {"StandardFilm::WriteSet", 0x8120,
     [](Host& h, PDU_Service& s) { return h.GetFilmBoxMessages().WriteSet(s, gInstance, gDataset, h); },
     "NSetRQ::Write() failed", "thePDU::Read() failed", "NSetRSP::Read() received unexpected response", 25},
    {"StandardFilm::WritePrint", 0x8130,
     [](Host& h, PDU_Service& s) { return h.GetFilmBoxMessages().WritePrint(s, gInstance, gDataset, h); },
     "NActionRQ::Write() failed", "thePDU::Read() failed", "NActionRSP::Read() received unexpected response", 5},
    {"StandardBox::Write", 0x8120,
     [](Host& h, PDU_Service& s) { return h.GetImageBox()->Write(s, gInstance, gDataset, h); },
     "NSetRQ::Write() failed", "PDU::Read() failed", "NSetRSP::Read received unexpected response", 25},
};

std::string Note(const Operation& theOperation, const std::string& theText, int theOperationNumber, int theType)
{
   return std::string(theOperation.itsName) + ": " + theText + " (" + std::to_string(theOperationNumber) + ", " +
          std::to_string(theType) + ")";
}

// Contexts of their own: the meta SOP class is aliased by whole operations only.
int RunOn(const Operation& theOperation, Host& theHost, const std::string& theInput)
{
   MemoryAssociation aService(kMeta, theInput);
   aService.AddAbstractSyntaxAlias(kFilm, kMeta);
   aService.AddAbstractSyntaxAlias(kGray, kMeta);
   gDataset.Reset();
   return theOperation.itsRun(theHost, aService);
}

TEST(AbstractPrintManagementMeta, TellsWhatAStatusMeans)
{
   const struct
   {
      UINT16 itsStatus;
      const char* itsTexts[4]; // by operation; null for an unknown status
   } kRows[] = {
       {0x0106,
        {"Invalid Attribute Value or Memory Requested Unavailable",
         "Invalid Attribute Value or Memory Requested Unavailable", "Invalid Attribute",
         "Invalid Attribute or Memory Requested Unavailable"}},
       {0x0107,
        {"Attribute(s) Not Recognized in Context of this SOP Class",
         "Attribute(s) Not Recognized in Context of this SOP Class"}},
       {0x0110, {"Cannot decode DIMSE Attribute", "Cannot decode DIMSE Attribute"}},
       {0x0111, {"Specified SOP Instance UID already in use"}},
       {0x0112, {nullptr, "Specified SOP Instance does not exist"}},
       {0x0117, {"Invalid SOP Instance UID syntax", "Invalid SOP Instance UID syntax"}},
       {0x0120, {"Mandatory Attribute Missing", "Mandatory Attribute Missing"}},
       {0x0121, {"Mandatory Attribute was given, but had no value", "Mandatory Attribute was given, but had no value"}},
       {0x0213,
        {"Resource Limitation: Can't Create Session or Film", nullptr, "Requested Resource Temporarily Unavailable",
         "Requested Memory Allocation Temporarily Unavailable"}},
       {0xB600,
        {"Memory Allocation Not Supported", "Memory Allocation Not Supported", "Memory Allocation Not Supported"}},
       {0xB601, {nullptr, nullptr, "Film Session Printing(Collation) Not Supported"}},
       {0xB602, {nullptr, nullptr, "Film Session Contains No Images(Empty Page)"}},
       {0xB603, {nullptr, nullptr, "Film Session Contains No Images(Empty Page)"}},
       {0xB604, {}},
       {0xC600, {nullptr, nullptr, "Film Session Contains No Film Instances"}},
       {0xC601, {nullptr, nullptr, "Print Queue Full"}},
       {0xC603, {nullptr, nullptr, "Specified Magnification Produces Image Size Larger Than Image Box Size"}},
       {0xC604, {nullptr, nullptr, "Multiple Images Assigned to Image Position(Image Collision)"}},
       {0xC605, {nullptr, nullptr, nullptr, "Insufficient memory in printer to store image"}},
       {0xC606, {nullptr, nullptr, nullptr, "More than one VOI LUT Box contained in the image"}},
   };
   for (const auto& aRow : kRows)
   {
      const bool isWarning = aRow.itsStatus == 0x0107 || (aRow.itsStatus >= 0xB600 && aRow.itsStatus <= 0xB603);
      for (int i = 0; i < 4; ++i)
      {
         for (const int isTolerated : {0, 1})
         {
            const Operation& anOperation = kOperations[i];
            SCOPED_TRACE(std::string(anOperation.itsName) + " " + std::to_string(aRow.itsStatus));
            Host aHost;
            aHost.itsTolerance = isTolerated;
            EXPECT_EQ(RunOn(anOperation, aHost, Response(anOperation.itsResponse, aRow.itsStatus)), isTolerated);
            const char* const aText = aRow.itsTexts[i];
            EXPECT_EQ(aHost.itsNotes,
                      Notes{Note(anOperation, aText ? aText : "Unknown Status Returned", anOperation.itsWrite + 1,
                                 !aText      ? 9
                                 : isWarning ? 7
                                             : 8)});
         }
      }
   }
}

TEST(AbstractPrintManagementMeta, TellsWhatElseFails)
{
   for (const Operation& anOperation : kOperations)
   {
      const std::string aWithoutStatus = Message(US(0x0100, anOperation.itsResponse) + US(0x0800, 0x0101), "");
      const struct
      {
         const char* itsName;
         std::string itsInput;
         std::string itsNote;
      } kRows[] = {
          {"silence", "", Note(anOperation, anOperation.itsReadFailed, 2, 2)},
          {"the wrong response", Response(0x8150, 0),
           Note(anOperation, anOperation.itsUnexpected, anOperation.itsWrite + 1, 4)},
          {"an event of a stranger", Request(0x0100, kSession, "1.1", "", US(0x1002, 1)),
           Note(anOperation, anOperation.itsUnexpected, anOperation.itsWrite + 1, 4)},
          {"a data set that does not come",
           Message(US(0x0100, anOperation.itsResponse) + US(0x0800, 0x0102) + US(0x0900, 0), ""),
           Note(anOperation, anOperation.itsReadFailed, 2, 2)},
      };
      for (const auto& aRow : kRows)
      {
         Host aHost;
         aHost.itsTolerance = 1; // there is nothing to go on with
         EXPECT_EQ(RunOn(anOperation, aHost, aRow.itsInput), 0) << anOperation.itsName << ": " << aRow.itsName;
         EXPECT_EQ(aHost.itsNotes, Notes{aRow.itsNote}) << aRow.itsName;
      }
      Host aHost;
      EXPECT_EQ(RunOn(anOperation, aHost, aWithoutStatus), 0);
      ASSERT_EQ(aHost.itsNotes.size(), 1u);
      EXPECT_TRUE(aHost.itsNotes.front().ends_with(", 3)")) << aHost.itsNotes.front();
      MemoryAssociation aForeign("1.2.3");
      EXPECT_EQ(anOperation.itsRun(aHost, aForeign), 0);
      EXPECT_EQ(aHost.itsNotes.back(), Note(anOperation, anOperation.itsSendFailed, anOperation.itsWrite, 5));
   }
}

TEST(AbstractPrintManagementMeta, HandlesAnEventThatComesBeforeAResponse)
{
   struct Echo : CEchoRQ
   {
      int GetUID(UID& theUID) const override { return theUID = UID(kMeta), 1; }
   };
   UINT16 aLastID = 0;
   MemoryAssociation anOther(kMeta);
   ASSERT_TRUE(Echo().Write(anOther, aLastID));
   Host aHost;
   aHost.itsTolerance = 1;
   EXPECT_EQ(aHost.SetPrinterEventUserArg(&aHost), nullptr);
   // The event overtakes the response to the first request, which is not to be taken for that to the second.
   MemoryAssociation aService(kMeta, kEvent + Response(0x8120, 0xC605, "", "", static_cast<UINT16>(aLastID + 1)) +
                                         Response(0x8120, 0, "", "", static_cast<UINT16>(aLastID + 2)) +
                                         Request(0x0100, kJob, "7.7", "", US(0x1002, 3)));
   aService.AddAbstractSyntaxAlias(kGray, kMeta);
   DICOMDataObject aBox;
   EXPECT_EQ(aHost.WriteBox(aService, "1.9", aBox), 1);
   EXPECT_EQ(aHost.WriteBox(aService, "1.8", aBox), 1);
   EXPECT_EQ(aHost.itsNotes, (Notes{"printer event 2 SUPPLY LOW mine",
                                    "StandardBox::Write: Insufficient memory in printer to store image (26, 8)"}));
   DICOMCommandObject aCommand;
   ASSERT_TRUE(aService.ReadCommand(aCommand));
   EXPECT_EQ(aHost.ReadEventReport(aService, aCommand), 1) << "of a job that nobody knows: answered, nobody called";
   EXPECT_EQ(aHost.itsNotes.size(), 2u);
   EXPECT_EQ(CommandsIn(aService.Sent()), (Notes{"0120 " + kGray + " 1.9", "8100 " + kPrinter + " " + kPrinterInstance,
                                                 "0120 " + kGray + " 1.8", "8100 " + kJob + " 7.7"}));
}

TEST(AbstractPrintManagementMeta, AFilmBoxIsGeneratedAnewWhenItIsNoLongerBusy)
{
   Host aHost;
   Fill(aHost);
   AbstractFilmBox& aFilm = *aHost.GetFilmBoxes().front();
   FakeClock aClock;
   aFilm.SetBusy();
   aClock.OnceSlept(2000, [&] { aFilm.ClearBusy(); });
   aFilm.ProtoGen();
   EXPECT_EQ(aClock.Slept(), 2000u) << "milliseconds, in steps of a second";
   EXPECT_TRUE(aFilm.GetImageBoxes().empty());
   EXPECT_EQ(aFilm.GetSOPInstanceUID(), "1.2.1");
   for (const char* anInstance : {"3.1", "3.2"})
   {
      aFilm.AddReferenceSequence(0x2010, 0x0510, kGray, anInstance);
   }
   aFilm.ResyncAbstractImageBoxs();
   const AbstractImageBox* const aSecond = aFilm.GetImageBoxes().at(1).get();
   delete aFilm.RemoveVR(0x2010, 0x0510);
   aFilm.AddReferenceSequence(0x2010, 0x0510, kGray, "3.2");
   aFilm.ResyncAbstractImageBoxs();
   ASSERT_EQ(aFilm.GetImageBoxes().size(), 1u);
   EXPECT_EQ(aFilm.GetImageBoxes().front().get(), aSecond) << "what is still referenced stays";
}
} // namespace
