// The messages of DIMSE-N: their bytes on the wire, what they recognise and what they refuse.
#include <functional>
#include <vector>

#include <gtest/gtest.h>

#include "support/CapturedTrace.h"
#include "support/DIMSEMessages.h"
#include "support/DefaultDictionary.h"
#include "support/MemoryAssociation.h"
#include "talvenor/dataset/MVRFactory.h"
#include "talvenor/dimse/CEchoRQ.h"
#include "talvenor/dimse/NActionRQ.h"
#include "talvenor/dimse/NActionRSP.h"
#include "talvenor/dimse/NCreateRQ.h"
#include "talvenor/dimse/NCreateRSP.h"
#include "talvenor/dimse/NDeleteRQ.h"
#include "talvenor/dimse/NDeleteRSP.h"
#include "talvenor/dimse/NEventReportRQ.h"
#include "talvenor/dimse/NEventReportRSP.h"
#include "talvenor/dimse/NGetRQ.h"
#include "talvenor/dimse/NGetRSP.h"
#include "talvenor/dimse/NSetRQ.h"
#include "talvenor/dimse/NSetRSP.h"

namespace
{
using namespace CommandBytes;
using namespace std::string_literals;
using Tags = RWTValOrderedVector<MAttributeTag>;

const std::string kPrinter = "1.2.840.10008.5.1.1.16"; // an even number of characters
const UID kInstance("1.2.3");

template <class Message>
ServiceOf<Message> Of(const std::string& theClass = kPrinter)
{
   return ServiceOf<Message>(theClass);
}

DICOMDataObject Dataset(const std::string& theText = "PRINTER1")
{
   DICOMDataObject aDataset(TNEndian::LittleEndian);
   aDataset.Push(TextElement(0x21100030, theText));
   return aDataset;
}
const std::string kDatasetBytes = DatasetBytes().Element(0x21100030, "LO", "PRINTER1").Bytes();

const DICOMCommandObject kRequest = Command({{0x0110, 9}});

// What follows the SOP class, up to the type.
std::string Request(unsigned int theField, UINT16 theID, unsigned int theType)
{
   return US(0x0100, theField) + US(0x0110, theID) + US(0x0700, 0) + US(0x0800, theType);
}
std::string Response(unsigned int theField, unsigned int theType, unsigned int theStatus, UINT16 theID = 9)
{
   return US(0x0100, theField) + US(0x0120, theID) + US(0x0800, theType) + US(0x0900, theStatus);
}
const std::string kAffectedClass = Element(0x0002, kPrinter), kRequestedClass = Element(0x0003, kPrinter);
const std::string kAffected = Element(0x1000, "1.2.3\0"s), kRequested = Element(0x1001, "1.2.3\0"s);

std::string With(const std::string& theElements)
{
   return ::With(kDatasetBytes, theElements);
}

TEST(DIMSE_N_Messages, AreWrittenAsTheStandardHasThem)
{
   const struct
   {
      const char* itsName;
      std::function<int(PDU_Service&, DICOMDataObject&)> itsWrite;
      std::function<std::string(UINT16)> itsExpected; // with that Message ID
   } kCases[] = {
       {"N-EVENT-REPORT-RQ", [](auto& s, auto& d) { return Of<NEventReportRQ>().Write(s, d, kInstance, 2); },
        [](UINT16 id) { return With(kAffectedClass + Request(0x0100, id, 0x0102) + kAffected + US(0x1002, 2)); }},
       {"N-EVENT-REPORT-RQ without information",
        [](auto& s, auto&) { return Of<NEventReportRQ>().Write(s, kInstance, 1); },
        [](UINT16 id) { return Alone(kAffectedClass + Request(0x0100, id, 0x0101) + kAffected + US(0x1002, 1)); }},
       {"N-EVENT-REPORT-RSP", [](auto& s, auto&) { return Of<NEventReportRSP>().Write(s, kRequest, kInstance, 2, 0); },
        [](UINT16) { return Alone(kAffectedClass + Response(0x8100, 0x0101, 0) + kAffected + US(0x1002, 2)); }},
       {"N-GET-RQ asks for elements, not for group lengths",
        [](auto& s, auto&) {
           DICOMDataObject aList;
           Fill(aList, {0x00280010, 0x00280000, 0x00280011});
           return Of<NGetRQ>().Write(s, aList, kInstance);
        },
        [](UINT16 id) {
           return Alone(kRequestedClass + Request(0x0110, id, 0x0101) + kRequested +
                        Element(0x1005, "\x28\0\x10\0\x28\0\x11\0"s));
        }},
       {"N-GET-RSP with attributes, for the class of the request",
        [](auto& s, auto& d) {
           return Of<NGetRSP>().Write(s, Command({{0x0110, 9}}, "1.2.34", 0x0003), kInstance, d, 0);
        },
        [](UINT16) { return With(Element(0x0002, "1.2.34") + Response(0x8110, 0x0102, 0) + kAffected); }},
       {"N-SET-RQ ends its PDU before the list", [](auto& s, auto& d) { return Of<NSetRQ>().Write(s, d, kInstance); },
        [](UINT16 id) {
           return Alone(kRequestedClass + Request(0x0120, id, 0x0102) + kRequested) +
                  PDUBytes::PData(PDUBytes::PDV(1, 2, kDatasetBytes));
        }},
       {"N-SET-RSP with explanations",
        [](auto& s, auto&) {
           return Of<NSetRSP>().Write(s, kRequest, kInstance, 0x0106, "Why", {{0x2020, 0x0110}});
        },
        [](UINT16) {
           return Alone(kAffectedClass + Response(0x8120, 0x0101, 0x0106) + Element(0x0901, "\x20\x20\x10\x01") +
                        Element(0x0902, "Why ") + kAffected);
        }},
       {"N-ACTION-RQ", [](auto& s, auto& d) { return Of<NActionRQ>().Write(s, d, kInstance, 1); },
        [](UINT16 id) { return With(kRequestedClass + Request(0x0130, id, 0x0102) + kRequested + US(0x1008, 1)); }},
       {"N-ACTION-RQ without information", [](auto& s, auto&) { return Of<NActionRQ>().Write(s, kInstance, 1); },
        [](UINT16 id) { return Alone(kRequestedClass + Request(0x0130, id, 0x0101) + kRequested + US(0x1008, 1)); }},
       {"N-ACTION-RSP to a request without Message ID, for no instance",
        [](auto& s, auto& d) { return Of<NActionRSP>().Write(s, Command({}), UID(), d, 1, 0xB601, "", {}); },
        [](UINT16) {
           return With(kAffectedClass + Response(0x8130, 0x0102, 0xB601, 0) + Element(0x1000, "") + US(0x1008, 1));
        }},
       {"N-CREATE-RQ", [](auto& s, auto& d) { return Of<NCreateRQ>().Write(s, d, kInstance); },
        [](UINT16 id) { return With(kAffectedClass + Request(0x0140, id, 0x0102) + kAffected); }},
       {"N-CREATE-RQ without attributes", [](auto& s, auto&) { return Of<NCreateRQ>().Write(s, kInstance); },
        [](UINT16 id) { return Alone(kAffectedClass + Request(0x0140, id, 0x0101) + kAffected); }},
       {"N-CREATE-RSP takes no class from the wrong element",
        [](auto& s, auto&) {
           return Of<NCreateRSP>().Write(s, Command({{0x0110, 9}}, "1.2.34", 0x0003), kInstance, 0x0111);
        },
        [](UINT16) { return Alone(kAffectedClass + Response(0x8140, 0x0101, 0x0111) + kAffected); }},
       {"N-DELETE-RQ", [](auto& s, auto&) { return Of<NDeleteRQ>().Write(s, kInstance); },
        [](UINT16 id) { return Alone(kRequestedClass + Request(0x0150, id, 0x0101) + kRequested); }},
       {"N-DELETE-RSP", [](auto& s, auto&) { return Of<NDeleteRSP>().Write(s, kRequest, kInstance, 0x0112); },
        [](UINT16) { return Alone(kAffectedClass + Response(0x8150, 0x0101, 0x0112) + kAffected); }},
   };
   struct Echo : CEchoRQ
   {
      int GetUID(UID& theUID) const override { return theUID = UID(kPrinter), 1; }
   };
   for (const auto& aCase : kCases)
   {
      UINT16 aLastID = 0;
      MemoryAssociation anOther(kPrinter);
      ASSERT_TRUE(Echo().Write(anOther, aLastID));
      MemoryAssociation aService(kPrinter);
      DICOMDataObject aDataset = Dataset();
      EXPECT_EQ(aCase.itsWrite(aService, aDataset), 1) << aCase.itsName;
      EXPECT_EQ(aService.Sent(), aCase.itsExpected(static_cast<UINT16>(aLastID + 1))) << aCase.itsName;
   }
}

TEST(DIMSE_N_Messages, OfAServiceWithoutSOPClassAreNotSent)
{
   DICOMDataObject aDataset = Dataset();
   const std::function<int(PDU_Service&)> kWrites[] = {
       [&](auto& s) { return Of<NGetRQ>("").Write(s, aDataset, kInstance); },
       [&](auto& s) { return Of<NCreateRQ>("").Write(s, aDataset, kInstance); },
       [&](auto& s) { return Of<NSetRSP>("").Write(s, Command({}, "1.2.34", 0x0003), kInstance, aDataset, 0); },
   };
   for (const auto& aWrite : kWrites)
   {
      MemoryAssociation aService(kPrinter);
      EXPECT_EQ(aWrite(aService), 0);
      EXPECT_EQ(aService.GetResultCode(), TN_SOP_CLASS_UNSUPPORTED);
      EXPECT_EQ(aService.Sent(), "");
   }
}

template <class Message>
int ReadWithDataset(const DICOMCommandObject& theCommand, PDU_Service& theService, DICOMDataObject& theDataset)
{
   return Of<Message>().Read(theCommand, theService, theDataset);
}
template <class Message>
int ReadAlone(const DICOMCommandObject& theCommand, PDU_Service& theService, DICOMDataObject&)
{
   return Of<Message>().Read(theCommand, theService);
}

TEST(DIMSE_N_Messages, AreRecognisedByTheirFieldAndReadWithWhatFollows)
{
   enum Outcome
   {
      kRefused,
      kUntouched,
      kRead
   };
   const struct
   {
      const char* itsName;
      int (*itsRead)(const DICOMCommandObject&, PDU_Service&, DICOMDataObject&);
      UINT16 itsField;
      Outcome itsWithout, itsWith; // with no data set, and with one
      TNResultCode itsCode;        // of a refusal, for another message too
   } kCases[] = {
       {"N-EVENT-REPORT-RQ", ReadWithDataset<NEventReportRQ>, 0x0100, kUntouched, kRead, TN_NO_ERROR},
       {"N-EVENT-REPORT-RSP", ReadWithDataset<NEventReportRSP>, 0x8100, kUntouched, kRead, TN_COMMAND_NOT_SUPPORTED},
       {"N-GET-RQ", ReadWithDataset<NGetRQ>, 0x0110, kUntouched, kUntouched, TN_NO_ERROR},
       {"N-GET-RSP", ReadWithDataset<NGetRSP>, 0x8110, kUntouched, kRead, TN_COMMAND_NOT_SUPPORTED},
       {"N-SET-RQ", ReadWithDataset<NSetRQ>, 0x0120, kRefused, kRead, TN_NO_ERROR},
       {"N-SET-RSP", ReadWithDataset<NSetRSP>, 0x8120, kUntouched, kRead, TN_COMMAND_NOT_SUPPORTED},
       {"N-ACTION-RQ", ReadWithDataset<NActionRQ>, 0x0130, kUntouched, kRead, TN_NO_ERROR},
       {"N-ACTION-RSP", ReadWithDataset<NActionRSP>, 0x8130, kUntouched, kRead, TN_COMMAND_NOT_SUPPORTED},
       {"N-CREATE-RQ", ReadWithDataset<NCreateRQ>, 0x0140, kRefused, kRead, TN_NO_ERROR},
       {"N-CREATE-RSP", ReadWithDataset<NCreateRSP>, 0x8140, kUntouched, kRead, TN_COMMAND_NOT_SUPPORTED},
       {"N-DELETE-RQ", ReadAlone<NDeleteRQ>, 0x0150, kUntouched, kRefused, TN_NO_ERROR},
       {"N-DELETE-RSP", ReadAlone<NDeleteRSP>, 0x8150, kUntouched, kRefused, TN_COMMAND_NOT_SUPPORTED},
   };
   for (const auto& aCase : kCases)
   {
      const bool isDelete = (aCase.itsField & 0xFF) == 0x50;
      const struct
      {
         const char* itsName;
         DICOMCommandObject itsCommand;
         Outcome itsOutcome;
         TNResultCode itsCode;
      } kForms[] = {
          {"no data set", Command({{0x0100, aCase.itsField}, {0x0800, 0x0101}}), aCase.itsWithout, TN_NO_ERROR},
          {"no type", Command({{0x0100, aCase.itsField}}), aCase.itsWithout, TN_NO_ERROR},
          {"type 0", Command({{0x0100, aCase.itsField}, {0x0800, 0}}), aCase.itsWith,
           isDelete ? TN_UNEXPECTED_DATASET : TN_NO_ERROR},
          {"another message", Command({{0x0100, 0x0030}, {0x0800, 0}}), kRefused, aCase.itsCode},
          {"no field", Command({{0x0800, 0}}), kRefused, aCase.itsCode},
      };
      for (const auto& aForm : kForms)
      {
         SCOPED_TRACE(aCase.itsName + ", "s + aForm.itsName);
         MemoryAssociation aService(kPrinter, PDUBytes::PData(PDUBytes::PDV(1, 2, kDatasetBytes)));
         DICOMDataObject aDataset = Dataset("before");
         EXPECT_EQ(aCase.itsRead(aForm.itsCommand, aService, aDataset), aForm.itsOutcome != kRefused);
         EXPECT_EQ(aService.GetResultCode(), aForm.itsCode);
         EXPECT_EQ(TextOf(aDataset, 0x21100030), aForm.itsOutcome == kRead ? "PRINTER1" : "before");
      }
   }
}

TEST(DIMSE_N_Messages, AnAttributeListBecomesEmptyElementsThatTheDictionaryTypes)
{
   const DefaultDictionary aDictionary("0028,0010,US,\"Rows\",Rows,1,1\n"
                                       "2010,0510,SQ,\"Boxes\",ReferencedImageBoxSequence,1,1\n");
   DICOMCommandObject aCommand = Command({{0x0100, 0x0110}});
   Tags aTags = {{0x2010, 0x0510}, {0x0028, 0x0010}, {0x0028, 0x0000}, {0x4321, 0x1000}};
   aCommand.Push(MVRFactory(TNEndian::LittleEndian, false).InternalGetVR(0, 0x1005, aTags));
   MemoryAssociation aService(kPrinter);
   DICOMDataObject aList = Dataset();
   ASSERT_TRUE(Of<NGetRQ>().Read(aCommand, aService, aList));
   EXPECT_EQ(TagsOf(aList), (std::vector<UINT32>{0x00280010, 0x20100510, 0x43211000}));
   EXPECT_EQ(aList.GetVR(0x0028, 0x0010)->GetTypeCode(), VRCode::US);
   EXPECT_NE(aList.GetVR(0x2010, 0x0510)->GetAsSequenceVR(), nullptr);
   EXPECT_TRUE(aList.GetVR(0x4321, 0x1000)->IsEmpty());
}

TEST(DIMSE_N_Messages, AreTracedWithTheirContents)
{
   const struct
   {
      const char* itsName;
      std::function<int(PDU_Service&, DICOMDataObject&)> itsAction;
      std::vector<std::string> itsLines; // each before a dump
   } kCases[] = {
       {"written",
        [](auto& s, auto& d) { return Of<NCreateRQ>().Write(s, d, kInstance); },
        {"NCreateRQ::WriteCommand(): NCreate Request Command Written: ",
         "NCreateRQ::Write(): NCreate Attribute List DataSet Written: "}},
       {"read",
        [](auto& s, auto& d) {
           return Of<NEventReportRQ>().Read(Command({{0x0100, 0x0100}, {0x0800, 0}}), s, d);
        },
        {"NEventReportRQ::Read(): NEventReport Request Command Read: ",
         "NEventReportRQ::Read(): NEventReport Request Data Read: "}},
       {"no WriteCommand",
        [](auto& s, auto&) { return Of<NDeleteRSP>().Write(s, kRequest, kInstance, 0); },
        {"NDeleteRSP::Write(): NDelete Response Command Written: "}},
   };
   for (const auto& aCase : kCases)
   {
      MemoryAssociation aService(kPrinter, PDUBytes::PData(PDUBytes::PDV(1, 2, kDatasetBytes)));
      DICOMDataObject aDataset = Dataset();
      const CapturedTrace aTrace("TNTraceDimsen");
      EXPECT_TRUE(aCase.itsAction(aService, aDataset)) << aCase.itsName;
      std::size_t aPlace = 0;
      for (const std::string& aLine : aCase.itsLines)
      {
         aPlace = aTrace.Text().find(aLine + "\n", aPlace);
         ASSERT_NE(aPlace, std::string::npos) << aCase.itsName << ": " << aTrace.Text();
         aPlace = aTrace.Text().find('(', aPlace + aLine.size()); // an element of the dump
      }
      EXPECT_NE(aPlace, std::string::npos) << aCase.itsName;
   }
}
} // namespace
