#include <gtest/gtest.h>

#include <sstream>

#include "talvenor/foundation/Exceptions.h"
#include "talvenor/foundation/LogStream.h"
#include "talvenor/ul/AAbortRQPDU.h"
#include "talvenor/ul/AAssociateACPDU.h"
#include "talvenor/ul/AAssociateRJPDU.h"
#include "talvenor/ul/AAssociateRQPDU.h"
#include "talvenor/ul/AReleaseRPPDU.h"
#include "talvenor/ul/AReleaseRQPDU.h"
#include "talvenor/ul/PDUOutputStream.h"
#include "tests/support/MessageOf.h"
#include "tests/support/StreamErrors.h"
#include "tests/support/ULBytes.h"

namespace
{
constexpr char kDICOM[] = "1.2.840.10008.3.1.1.1";
constexpr char kVerification[] = "1.2.840.10008.1.1";
constexpr char kImplicit[] = "1.2.840.10008.1.2";
constexpr char kExplicit[] = "1.2.840.10008.1.2.1";

Bytes UserInformation(const Bytes& theRoles = {})
{
   return ItemOfPDU(0x50,
                    ItemOfPDU(0x51, {0, 0, 0x40, 0}) + ItemOfPDU(0x52, "1.2.3") + ItemOfPDU(0x55, "T 1") + theRoles);
}

Bytes Context(unsigned char theID)
{
   return ItemOfPDU(0x20, Bytes{theID, 0, 0, 0} + ItemOfPDU(0x30, kVerification) + ItemOfPDU(0x40, kImplicit) +
                              ItemOfPDU(0x40, kExplicit));
}

const Bytes kRole = ItemOfPDU(0x54, Bytes{0, 17} + AsBytes(kVerification) + Bytes{1, 0}); // SCU, not SCP

const Bytes kRequest =
    PDUOf(1, AssociateFields() + ItemOfPDU(0x10, kDICOM) + Context(1) + Context(3) + UserInformation(kRole));
const Bytes kAcceptance = PDUOf(2, AssociateFields() + ItemOfPDU(0x10, kDICOM) +
                                       ItemOfPDU(0x21, Bytes{1, 0, 0, 0} + ItemOfPDU(0x40, kExplicit)) +
                                       ItemOfPDU(0x21, Bytes{3, 0, 4, 0} + ItemOfPDU(0x40, "")) + UserInformation());

UserInformationItem SampleUserInformation()
{
   return UserInformationItem(MaximumLengthSubItem(16384), ImplementationClassUIDSubItem("1.2.3"),
                              ImplementationVersionNameSubItem("T 1"));
}

AAssociateRQPDU SampleRequest()
{
   PresentationContextItem aContext;
   aContext.SetAbstractSyntax(kVerification);
   aContext.AddTransferSyntax(kImplicit);
   aContext.AddTransferSyntax(TransferSyntaxItem(kExplicit));
   AAssociateRQPDU aRequest("CALLING", "CALLED");
   aRequest.AddPresentationContext(aContext);
   aRequest.AddPresentationContext(new PresentationContextItem(aContext));
   aRequest.SetUserInformationItem(SampleUserInformation());
   aRequest.GetUserInformationItem().AddSCPSCURole(SCPSCURoleSelectSubItem(kVerification, 1, 0));
   aRequest.GetUserInformationItem().AddSCPSCURole(SCPSCURoleSelectSubItem(kVerification, 1, 0)); // listed already
   return aRequest;
}

AAssociateACPDU SampleAcceptance()
{
   AAssociateACPDU anAcceptance("CALLING", "CALLED");
   anAcceptance.SetApplicationContext(ApplicationContextItem(kDICOM));
   anAcceptance.AddPresentationContextAccept(PresentationContextAcceptItem(1, 0, TransferSyntaxItem(kExplicit)));
   anAcceptance.AddPresentationContextAccept(PresentationContextAcceptItem(3, 4, TransferSyntaxItem()));
   anAcceptance.SetUserInformationItem(SampleUserInformation());
   return anAcceptance;
}

template <class PDU>
Bytes Written(PDU thePDU)
{
   MemoryDULStream aTransport(ScriptedChannel({}));
   PDUOutputStream aStream(aTransport, 64);
   EXPECT_NE(thePDU.Write(aStream), 0);
   EXPECT_EQ(aTransport.HeldCount(), 0u) << "not flushed";
   EXPECT_EQ(thePDU.Size(), aTransport.Written().size());
   return aTransport.Written();
}

template <class PDU>
PDU ReadFrom(const Bytes& theBytes, PDU thePDU = PDU())
{
   PeerBytes aPeer(theBytes);
   unsigned int aCount = 0;
   EXPECT_EQ(thePDU.Read(aPeer.Stream(), aCount), 1);
   EXPECT_EQ(aCount, theBytes.size());
   return thePDU;
}

template <class PDU>
StreamError ErrorOfReading(const Bytes& theBytes)
{
   PeerBytes aPeer(theBytes);
   PDU aPDU;
   unsigned int aCount = 0;
   return StreamErrorOf([&] { aPDU.Read(aPeer.Stream(), aCount); });
}

TEST(AssociationPDUs, AreLaidOutAsInTheStandard)
{
   EXPECT_EQ(Written(SampleRequest()), kRequest);
   EXPECT_EQ(ReadFrom<AAssociateRQPDU>(kRequest), SampleRequest());
   EXPECT_EQ(Written(SampleAcceptance()), kAcceptance);
   EXPECT_EQ(ReadFrom<AAssociateACPDU>(kAcceptance), SampleAcceptance());

   EXPECT_EQ(AAssociateRQPDU().Size(), 6u + 68 + 25 + (4 + 8 + 4 + 4));
   AAssociateRQPDU aRequest;
   aRequest.GetUserInformationItem().SetVersion(ImplementationVersionNameSubItem(""));
   EXPECT_EQ(Written(aRequest),
             PDUOf(1, AssociateFields("", "") + ItemOfPDU(0x10, kDICOM) +
                          ItemOfPDU(0x50, ItemOfPDU(0x51, Bytes(4)) + ItemOfPDU(0x52, "") + ItemOfPDU(0x55, " "))));

   EXPECT_EQ(Written(AAssociateRJPDU()), PDUOf(3, {0, 1, 3, 1}));
   EXPECT_EQ(Written(AAssociateRJPDU(2, 1, 7)), PDUOf(3, {0, 2, 1, 7}));
   EXPECT_EQ(ReadFrom<AAssociateRJPDU>(PDUOf(3, {9, 2, 1, 7})), AAssociateRJPDU(2, 1, 7));
   EXPECT_EQ(Written(AReleaseRQPDU()), PDUOf(5, Bytes(4)));
   EXPECT_EQ(Written(AReleaseRPPDU()), PDUOf(6, Bytes(4)));
   EXPECT_EQ(Written(AAbortRQPDU()), PDUOf(7, {0, 0, 3, 1}));
   EXPECT_EQ(ReadFrom<AAbortRQPDU>(PDUOf(7, {9, 9, 2, 6})), AAbortRQPDU(2, 6));
}

TEST(AssociationPDUs, EveryCutEndsAsDocumented)
{
   const auto testCuts = [](const Bytes& thePDU, const std::vector<std::size_t>& theCompleteAt, auto theReader) {
      for (std::size_t aCut = 0; aCut < thePDU.size(); ++aCut)
      {
         SCOPED_TRACE(aCut);
         EXPECT_EQ(theReader(Bytes(thePDU.begin(), thePDU.begin() + static_cast<long>(aCut))).itsCode, TN_END_OF_FILE);
         if (aCut >= 6) // a shorter PDU, with another one behind it
         {
            const Bytes aBody(thePDU.begin() + 6, thePDU.begin() + static_cast<long>(aCut));
            const TNResultCode aCode = theReader(PDUOf(thePDU[0], aBody) + PDUOf(7, Bytes(200))).itsCode;
            const bool isComplete = std::find(theCompleteAt.begin(), theCompleteAt.end(), aCut) != theCompleteAt.end();
            EXPECT_EQ(aCode, isComplete ? TN_NO_ERROR : TN_END_OF_FILE);
         }
      }
   };
   const std::size_t aContext = Context(1).size();
   testCuts(kRequest, {74, 99, 99 + aContext, 99 + 2 * aContext}, ErrorOfReading<AAssociateRQPDU>);
   testCuts(kAcceptance, {74, 99, 99 + 8 + 23, 99 + 8 + 23 + 12}, ErrorOfReading<AAssociateACPDU>);
}

struct WrongPDUCase
{
   StreamError (*itsReader)(const Bytes&);
   const char* itsClass;
   const char* itsWrongType; // when an A-RELEASE-RP (or -RQ) comes
   const char* itsWrongLength;
   unsigned char itsType;
};
const WrongPDUCase kWrongPDUs[] = {
    {ErrorOfReading<AAssociateRQPDU>, "AAssociateRQPDU", "::Read: incorrect PDU type (0x6) should be 0x1", nullptr, 1},
    {ErrorOfReading<AAssociateACPDU>, "AAssociateACPDU", "::Read: incorrect PDU type (0x6) should be 0x2", nullptr, 2},
    {ErrorOfReading<AAssociateRJPDU>, "AAssociateRJPDU", "::Read: incorrect PDU type (0x6) should be 0x3",
     "::ReadDynamic: invalid PDU length", 3},
    {ErrorOfReading<AReleaseRQPDU>, "AReleaseRQPDU", "::Read: incorrect PDU type", "::ReadDynamic: invalid PDU length",
     5},
    {ErrorOfReading<AReleaseRPPDU>, "AReleaseRPPDU", "::Read: incorrect PDU type (0x5) should be 0x6",
     "::ReadDynamic: invalid PDU length", 6},
    {ErrorOfReading<AAbortRQPDU>, "AAbortRQPDU", "::Read: incorrect PDU type", "::Read: invalid PDU length", 7},
};

TEST(AssociationPDUs, WrongPDUsAreNamed)
{
   for (const WrongPDUCase& aCase : kWrongPDUs)
   {
      SCOPED_TRACE(aCase.itsClass);
      const RWCString aClass = aCase.itsClass;
      const Bytes anOther = PDUOf(aCase.itsType == 6 ? 5 : 6, Bytes(4));
      EXPECT_EQ(aCase.itsReader(anOther), (StreamError{aClass + aCase.itsWrongType, TN_PDU_TYPE_MISMATCH, 0}));
      EXPECT_EQ(aCase.itsReader({}), (StreamError{aClass + "::Read: EOF while reading PDU Header", TN_END_OF_FILE, 0}));
      EXPECT_EQ(aCase.itsReader(PDUOf(aCase.itsType, Bytes(3))),
                (StreamError{aClass + "::ReadDynamic: EOF while reading body", TN_END_OF_FILE, 0}));
      if (aCase.itsWrongLength != nullptr)
      {
         EXPECT_EQ(aCase.itsReader(PDUOf(aCase.itsType, Bytes(6))),
                   (StreamError{aClass + aCase.itsWrongLength, TN_PDU_LENGTH_MISMATCH, 0}));
      }
   }
}

struct HostileCase
{
   const char* itsName;
   Bytes itsItems; // behind the fixed fields
   const char* itsText;
   TNResultCode itsCode;
};

const Bytes kID = {1, 0, 0, 0}; // and reserved bytes
const Bytes kAbstract = ItemOfPDU(0x30, kVerification);
const Bytes kTransfer = ItemOfPDU(0x40, kImplicit);

Bytes User(const Bytes& theSubItems, long theLength = -1)
{
   return ItemOfPDU(0x50, theSubItems, theLength);
}

const HostileCase kRequests[] = {
    {"even ID", Context(2), "AAssociateRQPDU::ReadDynamic: Invalid presentation context ID (not an odd number)",
     TN_INVALID_ITEM},
    {"unknown item", ItemOfPDU(0x60, Bytes(9)) + Context(1), "AAssociateRQPDU::ReadDynamic: unrecognized subitem type",
     TN_INVALID_ITEM},
    {"answer in a request", ItemOfPDU(0x21, Bytes(4)), "AAssociateRQPDU::ReadDynamic: unrecognized subitem type",
     TN_INVALID_ITEM},
    {"long UID", ItemOfPDU(0x10, Bytes(65, '1')), "ApplicationContextItem::ReadDynamic: EOF while reading body",
     TN_END_OF_FILE},
    {"item behind the end of the PDU", ItemOfPDU(0x10, Bytes(4, '1'), 5),
     "ApplicationContextItem::ReadDynamic: EOF while reading body", TN_END_OF_FILE},
    {"context ends in its ID", ItemOfPDU(0x20, Bytes(1)),
     "PresentationContextItem::ReadDynamic: EOF while reading body", TN_END_OF_FILE},
    {"no abstract syntax", ItemOfPDU(0x20, kID + kTransfer),
     "AbstractSyntaxSubItem::Read: incorrect subitem type (0x40) should be 0x30", TN_ITEM_TYPE_MISMATCH},
    {"nothing in a context", ItemOfPDU(0x20, kID), "AbstractSyntaxSubItem::Read: EOF while reading subitem type",
     TN_END_OF_FILE},
    {"two abstract syntaxes", ItemOfPDU(0x20, kID + kAbstract + kAbstract),
     "TransferSyntaxItem::Read: incorrect item type (0x30) should be 0x40", TN_ITEM_TYPE_MISMATCH},
    {"context shorter than its syntaxes", ItemOfPDU(0x20, kID + kAbstract + kTransfer, 40),
     "PresentationContextItem::ReadDynamic: invalid item length", TN_ITEM_LENGTH_MISMATCH},
    {"context of length 0", ItemOfPDU(0x20, kID + kAbstract, 0),
     "PresentationContextItem::ReadDynamic: invalid item length", TN_ITEM_LENGTH_MISMATCH},
    {"context that takes the next item", ItemOfPDU(0x20, kID + kAbstract, 60) + User({}),
     "TransferSyntaxItem::Read: incorrect item type (0x50) should be 0x40", TN_ITEM_TYPE_MISMATCH},
    {"maximum of 6 bytes", User(ItemOfPDU(0x51, Bytes(6))), "MaximumLengthSubItem::ReadDynamic: invalid item length",
     TN_ITEM_LENGTH_MISMATCH},
    {"maximum of 3 bytes", User(ItemOfPDU(0x51, Bytes(3))),
     "UserInformationItem::ReadDynamic: EOF while reading itsMaximumLengthSubItem", TN_END_OF_FILE},
    {"user information too short", User(ItemOfPDU(0x51, Bytes(4)), 7),
     "UserInformationItem::ReadDynamic: invalid item length", TN_ITEM_LENGTH_MISMATCH},
    {"user information too long", User(ItemOfPDU(0x51, Bytes(4)), 9),
     "UserInformationItem::ReadDynamic: EOF while reading subitem type", TN_END_OF_FILE},
    {"user information without length",
     {0x50, 0, 0},
     "AAssociateRQPDU::ReadDynamic: EOF while reading body",
     TN_END_OF_FILE},
    {"unknown sub-item", User(ItemOfPDU(0x57, Bytes(4)) + kRole),
     "UserInformationItem::ReadDynamic: unknown subitem received", TN_INVALID_ITEM},
    {"window behind the end", User(ItemOfPDU(0x53, Bytes(4), 5)),
     "UserInformationItem::ReadDynamic: EOF while reading AsynchronousOperationsWindow subitem", TN_END_OF_FILE},
    {"negotiation without length", User({0x56, 0, 0}),
     "UserInformationItem::ReadDynamic: EOF while reading ExtendedSOPClassNegotiation subitem", TN_END_OF_FILE},
    {"version name without length", User({0x55}),
     "UserInformationItem::ReadDynamic: EOF while reading ImplementationVersionNameSubItem subitem", TN_END_OF_FILE},
    {"version name of 17", User(ItemOfPDU(0x55, Bytes(17, 'v'))),
     "ImplementationVersionName::Read: invalid item length", TN_ITEM_LENGTH_MISMATCH},
    {"version name behind the end", User(ItemOfPDU(0x55, Bytes(15, 'v'), 16)),
     "ImplementationVersionName::Read: EOF while reading item", TN_END_OF_FILE},
    {"role without roles", User(ItemOfPDU(0x54, Bytes{0, 1, '1'})),
     "SCPSCURoleSelectSubItem::ReadDynamic: EOF while reading body", TN_END_OF_FILE},
    {"role longer than its UID", User(ItemOfPDU(0x54, Bytes{0, 1, '1', 0, 0, 0})),
     "SCPSCURoleSelectSubItem::ReadDynamic: invalid item length", TN_ITEM_LENGTH_MISMATCH},
    {"role with a UID of 65535", User(ItemOfPDU(0x54, Bytes{0xFF, 0xFF} + Bytes(80, '1'))),
     "SCPSCURoleSelectSubItem::ReadDynamic: EOF while reading body", TN_END_OF_FILE},
};

const HostileCase kAcceptances[] = {
    {"unknown item", ItemOfPDU(0x20, Bytes(9)), "AAssociateACPDU::ReadDynamic: Unrecognized item type",
     TN_INVALID_ITEM},
    {"user information without length",
     {0x50, 0, 0},
     "AAssociateACPDU::ReadDynamic: EOF while reading UserInformationItem",
     TN_END_OF_FILE},
    {"answer without length",
     {0x21, 0},
     "PresentationContextAcceptItem::ReadDynamic: EOF while reading Reserved1 or Length",
     TN_END_OF_FILE},
    {"answer of 3 bytes", ItemOfPDU(0x21, Bytes(3)),
     "PresentationContextAcceptItem::ReadDynamic: Length smaller than required items", TN_END_OF_FILE},
    {"answer behind the end", ItemOfPDU(0x21, Bytes(3), 4),
     "PresentationContextAcceptItem::ReadDynamic: EOF while reading PCID, Reserved2, Result, or Reserved4",
     TN_END_OF_FILE},
    {"accepted without syntax", ItemOfPDU(0x21, Bytes{1, 0, 0, 0}),
     "PresentationContextAcceptItem::ReadDynamic: TransferSyntax sub-item was not sent", TN_END_OF_FILE},
    {"accepted with two syntaxes", ItemOfPDU(0x21, kID + kTransfer + kTransfer),
     "PresentationContextAcceptItem::ReadDynamic: invalid item length", TN_ITEM_LENGTH_MISMATCH},
    {"refused with half a syntax", ItemOfPDU(0x21, Bytes{1, 0, 3, 0, 0x40}),
     "TransferSyntaxItem::ReadDynamic: EOF while reading body", TN_END_OF_FILE},
};

// The end of the PDU bounds every item, whatever comes behind it.
const Bytes kNextPDU = PDUOf(5, Bytes(4));

template <class PDU, std::size_t N>
void TestLyingItems(const HostileCase (&theCases)[N])
{
   for (const HostileCase& aCase : theCases)
   {
      SCOPED_TRACE(aCase.itsName);
      PeerBytes aPeer(PDUOf(PDU::itsPDUType, AssociateFields() + aCase.itsItems) + kNextPDU);
      PDU aPDU;
      unsigned int aCount = 0;
      EXPECT_EQ(StreamErrorOf([&] { aPDU.Read(aPeer.Stream(), aCount); }),
                (StreamError{aCase.itsText, aCase.itsCode, 0}));
      const bool isSkipped = RWCString(aCase.itsText).find("unrecognized subitem") != RWCString::npos;
      EXPECT_TRUE(aPeer.Unread() == kNextPDU.size() || (!isSkipped && aPeer.Unread() > kNextPDU.size()));
   }
}

TEST(AssociationPDUs, LyingItemsAreRefused)
{
   TestLyingItems<AAssociateRQPDU>(kRequests);
   TestLyingItems<AAssociateACPDU>(kAcceptances);
}

TEST(AssociationPDUs, OneMebibyteIsEnough)
{
   const UINT32 aMaximum = PDUInputStream::GetDefaultMaxPDUReceiveLength();
   PDUInputStream::SetDefaultMaxPDUReceiveLength(0);
   EXPECT_EQ(ErrorOfReading<AAssociateACPDU>(PDUOf(2, AssociateFields(), 0xFFFFFFFF)),
             (StreamError{"AAssociateACPDU::ReadDynamic: invalid PDU length", TN_PDU_LENGTH_MISMATCH, 0}));
   PDUInputStream::SetDefaultMaxPDUReceiveLength(aMaximum);
}

TEST(AssociationPDUs, WhatPeersReallySendIsRead)
{
   // Items in another order and twice, UIDs padded with NULs, sub-items that are passed over, an ID that comes twice.
   const Bytes anIgnored = ItemOfPDU(0x53, {0, 1, 0, 1}) + ItemOfPDU(0x56, Bytes(10));
   const Bytes aContext = ItemOfPDU(0x20, Bytes{7, 1, 2, 3} + ItemOfPDU(0x30, AsBytes(kVerification) + Bytes{0}) +
                                              ItemOfPDU(0x40, AsBytes(kImplicit) + Bytes{0}));
   const AAssociateRQPDU aRequest = ReadFrom<AAssociateRQPDU>(
       PDUOf(1, AssociateFields() + UserInformation(kRole + kRole) + Context(7) + aContext + ItemOfPDU(0x10, "1.2") +
                    ItemOfPDU(0x10, "1.3") + UserInformation(anIgnored + kRole)),
       SampleRequest());
   EXPECT_TRUE(aRequest.GetApplicationContext().GetName() == "1.3");
   EXPECT_EQ(aRequest.GetUserInformationItem().GetSCPSCURoleList().size(), 1u);
   EXPECT_EQ(aRequest.GetUserInformationItem().GetIgnoredSubItemsLength(), (3u + 4) + (3 + 10));
   ASSERT_EQ(aRequest.GetPresentationContextCount(), 2u);
   EXPECT_EQ(aRequest.GetPresentationContextItem(7), aRequest.PresentationContextList()[1]);
   EXPECT_EQ(aRequest.GetPresentationContextItem(6), nullptr);
   EXPECT_EQ(aRequest.GetPresentationContextItem(1), nullptr) << "of the request before";
   EXPECT_TRUE(aRequest.GetPresentationContextItem(7)->GetAbstractSyntax().GetName() == kVerification);

   const auto anAcceptance =
       ReadFrom<AAssociateACPDU>(PDUOf(2, AssociateFields() + ItemOfPDU(0x21, Bytes{1, 0, 3, 0})), SampleAcceptance());
   ASSERT_EQ(anAcceptance.GetAcceptedContextList().size(), 1u);
   EXPECT_TRUE(anAcceptance.GetAcceptedContextList()[0].GetTransferSyntax().GetUID().IsNull());
   EXPECT_EQ(anAcceptance.GetUserInformationItem(), UserInformationItem());
}

TEST(AssociationPDUs, ARequestHas128ContextsAtMost)
{
   AAssociateRQPDU aRequest;
   for (unsigned int aNumber = 0; aNumber < 128; ++aNumber)
   {
      aRequest.AddPresentationContext(new PresentationContextItem);
   }
   EXPECT_EQ(MessageOf<TNRuntimeException>([&] { aRequest.AddPresentationContext(new PresentationContextItem); }),
             "AAssociateRQPDU::AddPresentationContext attempt to add more than 128 presentation contexts to request");
   const AAssociateRQPDU aCopy(aRequest);
   aRequest.ClearPresentationContexts();
   EXPECT_EQ(aRequest.GetPresentationContextItem(255), nullptr);
   ASSERT_NE(aCopy.GetPresentationContextItem(255), nullptr);
   EXPECT_EQ(aCopy.GetPresentationContextItem(255)->PresentationContextID(), 255);
   aRequest.AddPresentationContext(PresentationContextItem());
   EXPECT_NE(aRequest.GetPresentationContextItem(1), nullptr);
}

TEST(AssociationPDUs, WhatCannotBeEncodedIsNotSent)
{
   AAssociateRQPDU aRequest = SampleRequest();
   aRequest.AddPresentationContext(PresentationContextItem());
   AAssociateRQPDU aLong = SampleRequest();
   for (unsigned int aNumber = 0; aNumber < 4000; ++aNumber)
   {
      aLong.GetPresentationContextItem(3)->AddTransferSyntax(kImplicit);
   }
   MemoryDULStream aTransport(ScriptedChannel({}));
   PDUOutputStream aStream(aTransport, 32768);
   EXPECT_EQ(aRequest.Write(aStream), 0) << "a context without transfer syntax";
   EXPECT_EQ(aLong.Write(aStream), 0) << "an item of more than 65535 bytes";
   EXPECT_NE(AAbortRQPDU(0, 0).Write(aStream), 0);
   EXPECT_EQ(aTransport.Written(), PDUOf(7, Bytes(4)));
}

TEST(AssociationPDUs, DumpsNameCodesAndSpoilNoLog)
{
   const auto aDump = [](const auto& thePDU) {
      std::ostringstream aText;
      LogStream aLog(aText);
      thePDU.Dump(aLog);
      return aText.str();
   };
   const auto aLine = [](std::string theLabel, const std::string& theValue) {
      theLabel.resize(31, ' ');
      return "\t" + theLabel + theValue + "\n";
   };
   EXPECT_EQ(aDump(AAbortRQPDU(2, 9)),
             "AAbortRQPDU:\n" + aLine("Source:", "2 Service Provider") + aLine("Reason:", "9 Invalid Reason Code"));
   EXPECT_EQ(aDump(AAssociateRJPDU(1, 1, 7)), "AAssociateRJPDU:\n" + aLine("Result:", "1 Rejected-Permanent") +
                                                  aLine("Source:", "1 Service User") +
                                                  aLine("Reason:", "7 Called Application Entity Title Not Recognized"));
   EXPECT_NE(aDump(AAssociateRJPDU(1, 2, 7)).find("7 Invalid or Reserved Reason Code"), std::string::npos);

   const AAssociateRQPDU aRequest =
       ReadFrom<AAssociateRQPDU>(PDUOf(1, AssociateFields("A\nForged: 1") + Context(5) + UserInformation(kRole)));
   EXPECT_EQ(aDump(aRequest),
             "AAssociateRQPDU:\n" + aLine("Length:", "194") + aLine("Protocol Version:", "1") +
                 aLine("Calling AE Title:", "CALLING (16 bytes)") +
                 aLine("Called AE Title:", "A.Forged: 1 (16 bytes)") +
                 aLine("Application Context:", "1.2.840.10008.3.1.1.1 (21 bytes)") +
                 "\tProposed Presentation Contexts (1):\n" + "Presentation Context ID: 5\n" +
                 aLine("Item Length:", "69") + aLine("Abstract Syntax:", "1.2.840.10008.1.1 (17 bytes)") +
                 "\tTransfer Syntax(es) (2):\n" + aLine("Transfer Syntax:", "1.2.840.10008.1.2 (17 bytes)") +
                 aLine("Transfer Syntax:", "1.2.840.10008.1.2.1 (19 bytes)") + "User Information:\n" +
                 aLine("Item Length:", "49") + aLine("Maximum PDU Length:", "16384") +
                 aLine("Implementation Class:", "1.2.3 (5 bytes)") + aLine("Implementation Version:", "T 1 (3 bytes)") +
                 aLine("Ignored Subitems Length:", "0") + "SCP/SCU Role Select:\n" + aLine("Item Length:", "21") +
                 aLine("SOP Class:", "1.2.840.10008.1.1 (17 bytes)") + aLine("SCU Role:", "1 Proposed/Accepted") +
                 aLine("SCP Role:", "0 Not Proposed/Rejected"));
}
} // namespace

// PS3.8 9.3.1: user identity (58H) and what comes after it.
TEST(AssociationPDUs, UnknownUserInformationIsPassedOverWhereTheHostWantsIt)
{
   struct Guard
   {
      Guard() { UserInformationItem::SetOthersPassedOver(1); }
      ~Guard() { UserInformationItem::SetOthersPassedOver(0); }
   } const aGuard;
   PeerBytes aPeer(PDUOf(1, AssociateFields() + User(ItemOfPDU(0x51, Bytes(4)) + ItemOfPDU(0x58, Bytes(40)) + kRole)));
   AAssociateRQPDU aRequest;
   unsigned int aCount = 0;
   ASSERT_EQ(aRequest.Read(aPeer.Stream(), aCount), 1);
   EXPECT_EQ(aRequest.GetUserInformationItem().GetIgnoredSubItemsLength(), 43U);
   EXPECT_EQ(aRequest.GetUserInformationItem().GetSCPSCURoleList().size(), 1U);

   PeerBytes aLiar(PDUOf(1, AssociateFields() + User(ItemOfPDU(0x58, Bytes(40), 41))) + kNextPDU);
   EXPECT_EQ(
       StreamErrorOf([&] { aRequest.Read(aLiar.Stream(), aCount); }),
       (StreamError{"UserInformationItem::ReadDynamic: EOF while reading an unknown subitem", TN_END_OF_FILE, 0}));
}
