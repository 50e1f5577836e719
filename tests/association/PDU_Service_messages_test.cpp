// The messages of an association.
#include <gtest/gtest.h>
#include <memory>
#include <thread>

#include "support/Elements.h"
#include "support/ScriptedService.h"
#include "talvenor/association/PDU_Service.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/pixel/EncapsulatedPixelVR.h"
#include "talvenor/transfer/InputTransferSyntax.h"
#include "talvenor/ul/DICOMMessageOutputStream.h"

namespace
{
using namespace ScriptedService;

TEST(PDU_ServiceRead, TakesWhateverAPeerSends)
{
   const std::string aCommandPDV = PDV(1, 3, kCommand);
   const struct
   {
      const char* itsName;
      std::string itsInput;
      Outcome itsOutcome; // of ReadCommand
   } kCases[] = {
       {"command", PData(aCommandPDV), kAccepted},
       {"command in pieces",
        PData(PDV(1, 1, kCommand.substr(0, 3))) + PData(PDV(1, 1, "") + PDV(1, 3, kCommand.substr(3))), kAccepted},
       {"data set that nobody announced", PData(PDV(1, 2, kDataSet) + aCommandPDV), Violated(TN_UNEXPECTED_DATASET)},
       {"PDU without PDVs", PData("") + PData(aCommandPDV), kAccepted},
       {"release", ReleaseRequest(), kReleased},
       {"release behind an empty PDU", PData("") + ReleaseRequest(), kReleased},
       {"release inside a message", PData(PDV(1, 1, kCommand)) + ReleaseRequest(), kReleased},
       {"abort", Abort(0, 0), kPeerAborted},
       {"abort inside a message", PData(PDV(1, 1, kCommand)) + Abort(0, 0), kPeerAborted},
       {"second request", kGoodRequest, kUnexpected},
       {"acceptance", kGoodAnswer, kUnexpected},
       {"rejection", Rejection(1, 1, 1), kUnexpected},
       {"release response", ReleaseResponse(), kUnexpected},
       {"type 99", PDU(99, "abcd"), {0, TN_INVALID_PDU, Status::AbortedByUs, "AC ABORT(2,1)"}},
       {"type 0", PDU(0, "abcd"), {0, TN_INVALID_PDU, Status::AbortedByUs, "AC ABORT(2,1)"}},
       {"4 GiB", PDU(4, "", 0xFFFFFFFF), Violated(TN_PDU_LENGTH_MISMATCH)},
       {"end", "", Ended(TN_CLOSED_BY_PEER, "AC")},
       {"end inside a header", "\4\0\0"s, Ended(TN_CLOSED_BY_PEER, "AC")},
       {"end inside a PDV", PDU(4, aCommandPDV, aCommandPDV.size() + 10), kAccepted}, // the command is whole
       {"end inside a message", PData(PDV(1, 1, kCommand)), Violated(TN_END_OF_FILE)},
       {"context not accepted", PData(PDV(3, 3, kCommand)), Violated(TN_CONTEXT_NOT_ACCEPTED)},
       {"PDV of length 0", PData("\0\0\0\0"s + "\1\3"s), Violated(TN_INVALID_PDU)},
       {"PDV of length 1", PData("\0\0\0\1"s + "\1\3"s), Violated(TN_INVALID_PDU)},
       {"data behind a command fragment", PData(PDV(1, 1, kCommand.substr(0, 3)) + PDV(1, 2, kDataSet)),
        Violated(TN_INVALID_ENCODING)},
       {"other context inside a message", PData(PDV(1, 1, kCommand.substr(0, 3)) + PDV(3, 3, kCommand.substr(3))),
        Violated(TN_PDV_CONTEXT_MISMATCH)},
       {"element longer than the command", PData(PDV(1, 3, "\0\0\0\1\xFE\xFF\xFF\xFF\x30\0"s)),
        Violated(TN_END_OF_FILE)},
   };
   for (const auto& aCase : kCases)
   {
      Scripted aService;
      ASSERT_TRUE(aService.Accept(kGoodRequest + aCase.itsInput));
      DICOMCommandObject aCommand;
      const int isRead = aService.ReadCommand(aCommand);
      EXPECT_EQ(OutcomeOf(isRead, aService), aCase.itsOutcome) << aCase.itsName;
      if (isRead)
      {
         EXPECT_EQ(aCommand.GetUINT16(0x0000, 0x0100), 0x30) << aCase.itsName;
         EXPECT_EQ(aService.GetCurrentPresentationContextID(), 1);
      }
   }
}

TEST(PDU_ServiceRead, SilenceIsATimeOut)
{
   Scripted aService;
   ASSERT_TRUE(aService.Accept(kGoodRequest, false));
   DICOMCommandObject aCommand;
   EXPECT_FALSE(aService.ReadCommand(aCommand));
   EXPECT_EQ(aService.GetResultCode(), TN_REQUEST_WAIT_TIMED_OUT);
   ASSERT_TRUE(aService.Accept(kGoodRequest, false));
   EXPECT_FALSE(aService.Read(aCommand));
   EXPECT_EQ(aService.GetResultCode(), TN_TRANSPORT_TIMED_OUT);
}

TEST(PDU_ServiceRead, ACommandSetIsBounded)
{
   std::string anInput = kGoodRequest;
   for (int i = 0; i < 140; ++i)
   {
      anInput += PData(PDV(1, 1, "\0\0\x02\x09\xFF\xFF\xFF\x7F"s + std::string(8192, 'x')));
   }
   Scripted aService;
   ASSERT_TRUE(aService.Accept(anInput));
   DICOMCommandObject aCommand;
   EXPECT_FALSE(aService.ReadCommand(aCommand));
   EXPECT_EQ(aService.GetResultCode(), TN_INVALID_ENCODING);
   EXPECT_EQ(aService.GetAssociationStatus(), Status::ProtocolError);
}

// In bytes, and in elements and items of all levels.
TEST(PDU_ServiceRead, ADataSetIsBoundedWhereTheHostSaysSo)
{
   const std::string anAnnouncement = kCommand + "\0\0\0\x08\2\0\0\0\2\1"s;
   constexpr UINT64 kLong = 160000;
   constexpr std::size_t kMostElements = 16384 + kLong / 256;
   const auto aSequence = [](std::size_t theItems) { // with its delimiter
      std::string aText = "\x08\0\x40\x11SQ\0\0\xFF\xFF\xFF\xFF"s;
      for (std::size_t i = 0; i < theItems; ++i)
      {
         aText += "\xFE\xFF\0\xE0\0\0\0\0"s;
      }
      return aText + "\xFE\xFF\xDD\xE0\0\0\0\0"s;
   };
   const struct
   {
      const char* itsName;
      UINT64 itsLimit;
      std::string itsDataSet;
      bool itsIsTaken;
   } kRows[] = {{"as long as it may be", 12, kDataSet, true},
                {"a byte more", 11, kDataSet, false},
                {"as many elements as it may have", kLong, aSequence(kMostElements - 2), true},
                {"an item more", kLong, aSequence(kMostElements - 1), false},
                {"any number", ~UINT64{0}, aSequence(kMostElements), true}};
   for (const auto& aRow : kRows)
   {
      std::string anInput = kGoodRequest + PData(PDV(1, 3, anAnnouncement));
      constexpr std::size_t kPiece = 10000;
      for (std::size_t aPlace = 0; aPlace < aRow.itsDataSet.size(); aPlace += kPiece)
      {
         const bool isLast = aPlace + kPiece >= aRow.itsDataSet.size();
         anInput += PData(PDV(1, isLast ? 2 : 0, aRow.itsDataSet.substr(aPlace, kPiece)));
      }
      Scripted aService;
      aService.SetLongestDataset(aRow.itsLimit);
      ASSERT_TRUE(aService.Accept(anInput));
      DICOMCommandObject aCommand;
      ASSERT_TRUE(aService.ReadCommand(aCommand)) << "commands have a limit of their own";
      DICOMDataObject aDataSet;
      const Outcome anOutcome = aRow.itsIsTaken ? kAccepted : Violated(TN_INVALID_ENCODING);
      EXPECT_EQ(OutcomeOf(aService.Read(aDataSet), aService), anOutcome) << aRow.itsName;
   }
}

TEST(PDU_ServiceWrite, MessagesArriveAsTheyWereSent)
{
   auto [aRequesterEnd, anAcceptorEnd] = ConnectedDULStreams(MemoryChannel::kWait);
   Scripted anAcceptor;
   std::thread aThread([&, aStream = anAcceptorEnd.release()] { anAcceptor.WaitForAssociationRequest(aStream); });
   Scripted aRequester;
   aRequester.AddPresentationContextProposal(kCT, "1.2.840.10008.1.2.1");
   ASSERT_TRUE(aRequester.RequestAssociation(aRequesterEnd.release()));
   aThread.join();
   ASSERT_TRUE(anAcceptor.Connected());

   DICOMCommandObject aCommand;
   aCommand.Push(NumberElement(0x00000100, VRCode::US, UINT16{1}));
   DICOMDataObject aDataSet;
   aDataSet.Push(TextElement(0x00100010, "A^B", VRCode::PN));
   aDataSet.Push(BytesElement(0x7FE00010, VRCode::OW, std::string(100000, 'p')));
   DICOMDataObject anEmpty;
   ASSERT_TRUE(aRequester.Write(aCommand, UID(kCT), 0));
   ASSERT_TRUE(aRequester.Write(aDataSet, UID(kCT), 1));
   ASSERT_TRUE(aRequester.Write(aCommand, 1, 0));
   ASSERT_TRUE(aRequester.Write(anEmpty, 1, 1));

   DICOMCommandObject aReceived;
   DICOMDataObject aReceivedSet;
   ASSERT_TRUE(anAcceptor.ReadCommand(aReceived));
   EXPECT_EQ(aReceived.GetUINT16(0x0000, 0x0100), 1);
   ASSERT_TRUE(anAcceptor.Read(aReceivedSet));
   EXPECT_TRUE(aReceivedSet.ValueEquals(aDataSet));
   ASSERT_TRUE(anAcceptor.ReadCommand(aReceived));
   aReceivedSet.Reset();
   ASSERT_TRUE(anAcceptor.Read(aReceivedSet)) << "an empty data set ends too";
   EXPECT_TRUE(aReceivedSet.IsEmpty());
   EXPECT_EQ(aRequester.GetWriteOKCount(), 4U);
   EXPECT_EQ(aRequester.GetBytesWritten(), anAcceptor.GetBytesRead());
}

TEST(PDU_ServiceWrite, WhatCannotBeSentIsTold)
{
   Scripted aService;
   DICOMCommandObject aCommand;
   aCommand.Push(NumberElement(0x00000100, VRCode::US, UINT16{1}));
   EXPECT_FALSE(aService.Write(aCommand, 1, 1));
   EXPECT_EQ(aService.GetResultCode(), TN_NOT_CONNECTED);
   ASSERT_TRUE(aService.Request(kGoodAnswer + ReleaseResponse()));
   EXPECT_FALSE(aService.Write(aCommand, 0, 1));
   EXPECT_EQ(aService.GetResultCode(), TN_NO_CONTEXT_CHOSEN);
   EXPECT_FALSE(aService.Write(aCommand, 3, 1));
   EXPECT_EQ(aService.GetResultCode(), TN_NO_CONTEXT_FOR_ABSTRACT_SYNTAX);
   EXPECT_FALSE(aService.Write(aCommand, UID(kVerification), 1));
   EXPECT_EQ(aService.GetResultCode(), TN_NO_CONTEXT_FOR_ABSTRACT_SYNTAX);

   DICOMDataObject aFragments;
   aFragments.Push(new EncapsulatedPixelVR(nullptr));
   ASSERT_TRUE(aService.Write(aCommand, 1, 0));
   EXPECT_FALSE(aService.Write(aFragments, 1, 1));
   EXPECT_EQ(aService.GetResultCode(), TN_ENCAPSULATED_WITH_NATIVE_SYNTAX);
   EXPECT_TRUE(aService.Close()) << "the association is still good";
   EXPECT_EQ(Describe(aService.Sent()), "RQ RELEASE");
}

TEST(PDU_ServiceStreams, WhatOutlivesTheAssociationFails)
{
   Scripted aService;
   ASSERT_TRUE(aService.Request(kGoodAnswer + PData(PDV(1, 2, kDataSet))));
   const std::unique_ptr<DICOMMessageOutputStream> aMessage(aService.CreateDICOMMessageOutputStream());
   const std::unique_ptr<InputTransferSyntax> aDecoder(aService.GetInputTransferSyntax());
   ASSERT_TRUE(aDecoder);
   aService.Close();
   EXPECT_THROW(aDecoder->NextVR(), StreamIOException);
   const unsigned char aByte = 0;
   aMessage->Write(&aByte, 1);
   EXPECT_THROW(
       {
          aMessage->FinishMessage();
          aMessage->FinishPDU();
          aMessage->FlushOutput();
       },
       StreamIOException);
   aService.SetResultCode(TN_NO_ERROR);
   EXPECT_THROW(std::unique_ptr<DICOMMessageOutputStream>(aService.CreateDICOMMessageOutputStream()),
                StreamIOException);
   EXPECT_EQ(aService.GetResultCode(), TN_NOT_CONNECTED);
}

TEST(PDU_ServiceFile, ObjectsGetMetaInformation)
{
   Scripted aService;
   DICOMDataObject anObject;
   anObject.Push(TextElement(0x00020010, "old", VRCode::UI));
   EXPECT_FALSE(aService.MakeChapter10(anObject, "", GivenOrLittleEndianExplicitFile, nullptr));
   EXPECT_EQ(anObject.Entries(), 1U);
   EXPECT_TRUE(anObject.HasAttribute(0x0002, 0x0001));
   anObject.Push(TextElement(0x00080016, "1.2.3", VRCode::UI));
   anObject.Push(TextElement(0x00080018, "1.2.3.4", VRCode::UI));
   EXPECT_FALSE(aService.MakeChapter10(anObject, "", static_cast<DICOMFileType>(4), nullptr));
   EXPECT_TRUE(aService.MakeChapter10(anObject, "SOURCE", GivenOrLittleEndianExplicitFile, nullptr));
   EXPECT_EQ(TextOf(anObject, 0x00020002), "1.2.3");
   EXPECT_EQ(TextOf(anObject, 0x00020003), "1.2.3.4");
   EXPECT_EQ(TextOf(anObject, 0x00020010), kExplicit);
   EXPECT_EQ(anObject.GetVR(0x0002, 0x0016)->GetLength(), 16U);
}
} // namespace
