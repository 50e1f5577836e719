// The messages of DIMSE-C: their bytes on the wire, what they recognise and what they refuse.
#include <functional>
#include <sstream>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/CapturedTrace.h"
#include "support/DIMSEMessages.h"
#include "support/MemoryAssociation.h"
#include "talvenor/dimse/CEchoRQ.h"
#include "talvenor/dimse/CEchoRSP.h"
#include "talvenor/dimse/CFindRQ.h"
#include "talvenor/dimse/CFindRSP.h"
#include "talvenor/dimse/CMoveRQ.h"
#include "talvenor/dimse/CMoveRSP.h"
#include "talvenor/dimse/CStoreRQ.h"
#include "talvenor/dimse/CStoreRSP.h"
#include "talvenor/foundation/AETitle.h"
#include "talvenor/transfer/InputTransferSyntax.h"

namespace
{
using namespace CommandBytes;
using namespace std::string_literals;
using Tags = RWTValOrderedVector<MAttributeTag>;

const std::string kCT = "1.2.840.10008.5.1.4.1.1.2";

template <class Message>
ServiceOf<Message> Of(const std::string& theClass = kCT)
{
   return ServiceOf<Message>(theClass);
}

DICOMDataObject Dataset(const std::string& theClass = kCT, const std::string& theInstance = "1.2.3")
{
   DICOMDataObject aDataset(TNEndian::LittleEndian);
   for (const auto& [aTag, aText] : {std::pair(0x00080016u, theClass), std::pair(0x00080018u, theInstance)})
   {
      if (!aText.empty())
      {
         aDataset.Push(BytesElement(aTag, VRCode::UI, aText));
      }
   }
   return aDataset;
}
const std::string kDatasetBytes =
    DatasetBytes().Element(0x00080016, "UI", kCT + "\0"s).Element(0x00080018, "UI", "1.2.3\0"s).Bytes();

const DICOMCommandObject kRequest = Command({{0x0110, 513}});

std::string WithDataset(const std::string& theElements)
{
   return With(kDatasetBytes, theElements);
}

std::string Class(const std::string& theUID = kCT + "\0"s)
{
   return Element(0x0002, theUID);
}
// Of a C-STORE, C-FIND or C-MOVE request, up to the Message ID; then come priority and type.
std::string Request(unsigned int theField, UINT16 theID)
{
   return Class() + US(0x0100, theField) + US(0x0110, theID);
}
std::string Response(unsigned int theField, unsigned int theType, unsigned int theStatus)
{
   return Class() + US(0x0100, theField) + US(0x0120, 513) + US(0x0800, theType) + US(0x0900, theStatus);
}
const std::string kPriorityAndType = US(0x0700, 0) + US(0x0800, 0x0102);

UINT16 LastMessageID()
{
   MemoryAssociation aService(kCT);
   UINT16 anID = 0;
   EXPECT_TRUE(Of<CEchoRQ>().Write(aService, anID));
   return anID;
}

TEST(DIMSE_C_Messages, AreWrittenAsTheStandardHasThem)
{
   const struct
   {
      const char* itsName;
      std::function<int(PDU_Service&, DICOMDataObject&)> itsWrite;
      std::function<std::string(UINT16)> itsExpected; // with that Message ID
   } kCases[] = {
       {"C-ECHO-RQ", [](auto& s, auto&) { return Of<CEchoRQ>().Write(s); },
        [](UINT16 id) { return Alone(Request(0x0030, id) + US(0x0800, 0x0101)); }},
       {"C-ECHO-RSP echoes the class of the request; no Message ID",
        [](auto& s, auto&) { return Of<CEchoRSP>().Write(s, Command({}, "1.2.34"), 0x0110); },
        [](UINT16) {
           return Alone(Class("1.2.34") + US(0x0100, 0x8030) + US(0x0120, 0) + US(0x0800, 0x0101) + US(0x0900, 0x0110));
        }},
       {"C-STORE-RQ with a message of a C-MOVE",
        [](auto& s, auto& d) { return Of<CStoreRQ>().Write(s, d, AETitle(), 7, 1); },
        [](UINT16 id) {
           return WithDataset(Request(0x0001, id) + kPriorityAndType + Element(0x1000, "1.2.3\0"s) + US(0x1031, 7));
        }},
       {"C-STORE-RQ with an originator, on a context of the class",
        [](auto& s, auto& d) { return Of<CStoreRQ>().Write(s, d, AETitle("SCU"), 0, 0); },
        [](UINT16 id) {
           return WithDataset(Request(0x0001, id) + kPriorityAndType + Element(0x1000, "1.2.3\0"s) +
                              Element(0x1030, "SCU "));
        }},
       {"C-STORE-RSP with explanations",
        [](auto& s, auto&) {
           return Of<CStoreRSP>().Write(s, kRequest, 0xA900, "Why", Tags{{0x0008, 0x0016}, {0x0010, 0x0020}});
        },
        [](UINT16) {
           return Alone(Response(0x8001, 0x0101, 0xA900) + Element(0x0901, "\x08\0\x16\0\x10\0\x20\0"s) +
                        Element(0x0902, "Why ") + Element(0x1000, ""));
        }},
       {"C-STORE-RSP without a class of its own",
        [](auto& s, auto&) { return Of<CStoreRSP>("").Write(s, Command({}, "1.2.34"), 0, "", {}); },
        [](UINT16) {
           return Alone(Class("1.2.34") + US(0x0100, 0x8001) + US(0x0120, 0) + US(0x0800, 0x0101) + US(0x0900, 0) +
                        Element(0x1000, ""));
        }},
       {"C-FIND-RQ", [](auto& s, auto& d) { return Of<CFindRQ>().Write(s, d); },
        [](UINT16 id) { return WithDataset(Request(0x0020, id) + kPriorityAndType); }},
       {"C-FIND-RSP with a match",
        [](auto& s, auto& d) { return Of<CFindRSP>().Write(s, kRequest, 0xFF00, "", {}, d); },
        [](UINT16) { return WithDataset(Response(0x8020, 0x0102, 0xFF00)); }},
       {"C-FIND-RSP, the last", [](auto& s, auto&) { return Of<CFindRSP>().Write(s, kRequest, 0, "", {}); },
        [](UINT16) { return Alone(Response(0x8020, 0x0101, 0)); }},
       {"C-MOVE-RQ", [](auto& s, auto& d) { return Of<CMoveRQ>().Write(s, d, AETitle("STORE")); },
        [](UINT16 id) { return WithDataset(Request(0x0021, id) + Element(0x0600, "STORE ") + kPriorityAndType); }},
       {"C-MOVE-RSP, pending",
        [](auto& s, auto&) { return Of<CMoveRSP>().Write(s, kRequest, 0xFF00, 5, 2, 0, 1, "", {}); },
        [](UINT16) {
           return Alone(Response(0x8021, 0x0101, 0xFF00) + US(0x1020, 5) + US(0x1021, 2) + US(0x1022, 0) +
                        US(0x1023, 1));
        }},
       {"C-MOVE-RSP, the last, nothing moved",
        [](auto& s, auto&) { return Of<CMoveRSP>().Write(s, kRequest, 0, 5, 0, 0, 0, "", {}); },
        [](UINT16) { return Alone(Response(0x8021, 0x0101, 0)); }},
       {"C-MOVE-RSP, the last, with an identifier in a PDU of its own",
        [](auto& s, auto& d) { return Of<CMoveRSP>().Write(s, kRequest, 0xB000, 5, 3, 0, 0, "", {}, d); },
        [](UINT16) {
           return Alone(Response(0x8021, 0x0102, 0xB000) + US(0x1021, 3) + US(0x1022, 0) + US(0x1023, 0)) +
                  PDUBytes::PData(PDUBytes::PDV(1, 2, kDatasetBytes));
        }},
   };
   for (const auto& aCase : kCases)
   {
      const auto aNextID = static_cast<UINT16>(LastMessageID() + 1);
      MemoryAssociation aService(kCT);
      DICOMDataObject aDataset = Dataset();
      EXPECT_EQ(aCase.itsWrite(aService, aDataset), 1) << aCase.itsName;
      EXPECT_EQ(aService.Sent(), aCase.itsExpected(aNextID)) << aCase.itsName;
   }
}

TEST(DIMSE_C_Messages, AreRefusedBeforeAnythingIsSent)
{
   const struct
   {
      const char* itsName;
      std::function<int(PDU_Service&)> itsWrite;
      TNResultCode itsCode;
      int itsSpentIDs;
   } kCases[] = {
       {"C-ECHO-RQ without class", [](auto& s) { return Of<CEchoRQ>("").Write(s); }, TN_SOP_CLASS_UNSUPPORTED, 0},
       {"C-ECHO-RSP without class, whatever the request has",
        [](auto& s) { return Of<CEchoRSP>("").Write(s, Command({}, kCT), 0); }, TN_SOP_CLASS_UNSUPPORTED, 0},
       {"C-STORE-RSP without any class", [](auto& s) { return Of<CStoreRSP>("").Write(s, kRequest, 0, "", {}); },
        TN_NO_SOP_CLASS_UID, 0},
       {"C-STORE-RQ of another class",
        [](auto& s) {
           auto aDataset = Dataset("1.2");
           return Of<CStoreRQ>().Write(s, aDataset, AETitle(), 0, 1);
        },
        TN_SOP_CLASS_MISMATCH, 0},
       {"C-STORE-RQ of no class",
        [](auto& s) {
           auto aDataset = Dataset("");
           return Of<CStoreRQ>().Write(s, aDataset, AETitle(), 0, 1);
        },
        TN_NO_SOP_CLASS_UID, 0},
       {"C-STORE-RQ of no instance",
        [](auto& s) {
           auto aDataset = Dataset(kCT, "");
           return Of<CStoreRQ>().Write(s, aDataset, AETitle(), 0, 1);
        },
        TN_NO_SOP_INSTANCE_UID, 1},
       {"C-STORE-RQ composed for another class",
        [](auto& s) {
           DICOMCommandObject aCommand;
           return Of<CStoreRQ>().Compose(aCommand, s, "1.2", "1.2.3", 0, AETitle());
        },
        TN_SOP_CLASS_MISMATCH, 0},
       {"C-FIND-RSP, pending without a match",
        [](auto& s) { return Of<CFindRSP>().Write(s, kRequest, 0xFF01, "", {}); }, TN_INVALID_ARGUMENT, 0},
       {"C-FIND-RQ without a context",
        [](auto& s) {
           auto aDataset = Dataset();
           return Of<CFindRQ>("1.2").Write(s, aDataset);
        },
        TN_NO_CONTEXT_FOR_ABSTRACT_SYNTAX, 1},
   };
   for (const auto& aCase : kCases)
   {
      const UINT16 aLastID = LastMessageID();
      MemoryAssociation aService(kCT);
      EXPECT_EQ(aCase.itsWrite(aService), 0) << aCase.itsName;
      EXPECT_EQ(aService.GetResultCode(), aCase.itsCode) << aCase.itsName;
      EXPECT_EQ(aService.Sent(), "") << aCase.itsName;
      EXPECT_EQ(static_cast<UINT16>(LastMessageID() - aLastID), aCase.itsSpentIDs + 1) << aCase.itsName;
   }
}

TEST(DIMSE_C_Messages, AComposedRequestNamesTheOriginatorWholeOrNotAtAll)
{
   MemoryAssociation aService(kCT);
   for (const char* aTitle : {"", "   ", "SCU"})
   {
      DICOMCommandObject aCommand = Command({{0x0900, 1}});
      ASSERT_TRUE(Of<CStoreRQ>().Compose(aCommand, aService, kCT, "1.2.3", 0, AETitle(aTitle)));
      const bool isNamed = !AETitle(aTitle).IsNull();
      EXPECT_EQ(TextOf(aCommand, 0x1030), isNamed ? "SCU" : "(none)");
      EXPECT_EQ(aCommand.HasAttribute(0, 0x1031) != 0, isNamed);
      EXPECT_FALSE(aCommand.HasAttribute(0, 0x0900)) << "what stood there before";
      EXPECT_EQ(TextOf(aCommand, 0x1000), "1.2.3");
   }
}

TEST(DIMSE_C_Messages, AreRecognisedByTheirFieldAndReadWithWhatFollows)
{
   using Reader = std::function<int(const DICOMCommandObject&, PDU_Service&, DICOMDataObject&)>;
   const Reader aStoreRQ = [](auto& c, auto& s, auto& d) { return Of<CStoreRQ>().Read(c, s, d); };
   const Reader aFindRQ = [](auto& c, auto& s, auto& d) { return Of<CFindRQ>().Read(c, s, d); };
   const Reader aMoveRQ = [](auto& c, auto& s, auto& d) { return Of<CMoveRQ>().Read(c, s, d); };
   const Reader aFindRSP = [](auto& c, auto& s, auto& d) { return Of<CFindRSP>().Read(c, s, d); };
   const Reader aMoveRSP = [](auto& c, auto& s, auto& d) { return Of<CMoveRSP>().Read(c, s, d); };
   const Reader aStream = [](auto& c, auto& s, auto&) {
      return std::unique_ptr<InputTransferSyntax>(Of<CStoreRQ>().GetDatasetInputTransferSyntax(c, s)) != nullptr;
   };
   const Reader anEchoRQ = [](auto& c, auto&, auto&) { return Of<CEchoRQ>().Read(c); };
   const Reader anEchoRSP = [](auto& c, auto&, auto&) { return Of<CEchoRSP>().Read(c); };
   const Reader aStoreRSP = [](auto& c, auto&, auto&) { return Of<CStoreRSP>().Read(c); };
   constexpr int kNone = -1;
   constexpr const char* kUntouched = "before";
   const struct
   {
      const char* itsName;
      const Reader& itsRead;
      int itsField, itsType;
      int itsResult;
      TNResultCode itsCode;
      const char* itsInstance; // of the dataset afterwards
   } kCases[] = {
       {"C-STORE-RQ", aStoreRQ, 0x0001, 0x0102, 1, TN_NO_ERROR, "1.2.3"},
       {"C-STORE-RQ of type 0", aStoreRQ, 0x0001, 0x0000, 1, TN_NO_ERROR, "1.2.3"},
       {"C-STORE-RQ without data set", aStoreRQ, 0x0001, 0x0101, 0, TN_DATASET_MISSING, kUntouched},
       {"C-STORE-RQ without type", aStoreRQ, 0x0001, kNone, 0, TN_DATASET_MISSING, kUntouched},
       {"not a C-STORE-RQ", aStoreRQ, 0x0020, 0x0102, 0, TN_COMMAND_NOT_SUPPORTED, kUntouched},
       {"C-STORE-RQ, streamed", aStream, 0x0001, 0x0102, 1, TN_NO_ERROR, kUntouched},
       {"not a C-STORE-RQ, streamed", aStream, 0x8001, 0x0102, 0, TN_COMMAND_NOT_SUPPORTED, kUntouched},
       {"C-STORE-RQ, streamed, without data set", aStream, 0x0001, 0x0101, 0, TN_DATASET_MISSING, kUntouched},
       {"C-FIND-RQ", aFindRQ, 0x0020, 0x0102, 1, TN_NO_ERROR, "1.2.3"},
       {"C-FIND-RQ without data set", aFindRQ, 0x0020, 0x0101, 0, TN_DATASET_MISSING, kUntouched},
       {"C-MOVE-RQ", aMoveRQ, 0x0021, 0x0102, 1, TN_NO_ERROR, "1.2.3"},
       {"no field", aMoveRQ, kNone, 0x0102, 0, TN_COMMAND_NOT_SUPPORTED, kUntouched},
       {"C-FIND-RSP with a match", aFindRSP, 0x8020, 0x0102, 1, TN_NO_ERROR, "1.2.3"},
       {"C-FIND-RSP, the last", aFindRSP, 0x8020, 0x0101, 1, TN_NO_ERROR, kUntouched},
       {"not a C-FIND-RSP", aFindRSP, 0x0020, 0x0101, 0, TN_COMMAND_NOT_SUPPORTED, kUntouched},
       {"C-MOVE-RSP with an identifier", aMoveRSP, 0x8021, 0x0102, 1, TN_NO_ERROR, "1.2.3"},
       {"C-MOVE-RSP without type", aMoveRSP, 0x8021, kNone, 1, TN_NO_ERROR, kUntouched},
       {"C-ECHO-RQ", anEchoRQ, 0x0030, 0x0101, 1, TN_NO_ERROR, kUntouched},
       {"not a C-ECHO-RQ", anEchoRQ, 0x8030, 0x0101, 0, TN_NO_ERROR, kUntouched},
       {"C-ECHO-RSP", anEchoRSP, 0x8030, 0x0101, 1, TN_NO_ERROR, kUntouched},
       {"not a C-STORE-RSP", aStoreRSP, 0x8030, 0x0101, 0, TN_NO_ERROR, kUntouched},
       {"C-STORE-RSP", aStoreRSP, 0x8001, 0x0101, 1, TN_NO_ERROR, kUntouched},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      std::vector<std::pair<UINT32, UINT16>> aNumbers;
      if (aCase.itsField != kNone)
      {
         aNumbers.emplace_back(0x0100, aCase.itsField);
      }
      if (aCase.itsType != kNone)
      {
         aNumbers.emplace_back(0x0800, aCase.itsType);
      }
      MemoryAssociation aService(kCT, PDUBytes::PData(PDUBytes::PDV(1, 2, kDatasetBytes)));
      DICOMDataObject aDataset = Dataset(kCT, kUntouched);
      EXPECT_EQ(aCase.itsRead(Command(aNumbers), aService, aDataset), aCase.itsResult);
      EXPECT_EQ(aService.GetResultCode(), aCase.itsCode);
      EXPECT_EQ(TextOf(aDataset, 0x00080018), aCase.itsInstance);
   }
}

TEST(DIMSE_C_Messages, TakeEveryMessageIDOnceBeforeTheyBeginAgain)
{
   std::vector<int> aCounts[2] = {std::vector<int>(65536), std::vector<int>(65536)};
   const auto aTake = [](std::vector<int>& theCounts) {
      MemoryAssociation aService(kCT);
      DICOMCommandObject aCommand;
      for (int i = 0; i < 32768; ++i)
      {
         Of<CStoreRQ>().Compose(aCommand, aService, kCT, "1.2.3", 0, AETitle());
         ++theCounts[aCommand.GetUINT16(0, 0x0110)];
      }
   };
   std::thread aThread(aTake, std::ref(aCounts[0]));
   aTake(aCounts[1]);
   aThread.join();
   for (std::size_t i = 0; i < 65536; ++i)
   {
      ASSERT_EQ(aCounts[0][i] + aCounts[1][i], 1) << i;
   }
}

// The entries of a trace, each between bars, without the lines of their markers.
std::string Entries(const std::string& theTrace)
{
   std::istringstream aTrace(theTrace);
   std::string aText;
   for (std::string aLine; std::getline(aTrace, aLine);)
   {
      aText += aLine.starts_with("-----") || aLine.starts_with("<----") ? "|" : aLine + "\n";
   }
   return aText;
}

TEST(DIMSE_C_Messages, AreTraced)
{
   const struct
   {
      const char* itsName;
      std::function<int(PDU_Service&, DICOMDataObject&)> itsAction;
      std::string itsEntries;
   } kCases[] = {
       {"C-ECHO-RQ", [](auto& s, auto&) { return Of<CEchoRQ>().Write(s); },
        "|CEchoRQ::Write(): CEcho Request Command Written\n|"},
       {"C-STORE-RQ", [](auto& s, auto& d) { return Of<CStoreRQ>().Write(s, d, AETitle(), 0, 1); },
        "|CStoreRQ::Write(): CStoreRQ Request Command Written\nCStoreRQ Request Dataset Written\n|"
        "|CStoreRQ::Write(): Command and Dataset written OK\n|"},
       {"C-STORE-RQ that cannot be sent", [](auto& s, auto& d) { return !Of<CStoreRQ>().Write(s, d, AETitle(), 0, 3); },
        "|CStoreRQ::Write(): CStoreRQ Request Command Written\nCStoreRQ Request Dataset Written\n|"
        "|CStoreRQ::Write(): Error while writing CStoreRQ Request Command\n|"},
       {"C-STORE-RQ, read",
        [](auto& s, auto& d) {
           return Of<CStoreRQ>().Read(Command({{0x0100, 1}, {0x0800, 0}}), s, d);
        },
        "|CStoreRQ::Read(): CStoreRQ Request Command Read\n||CStoreRQ::Read(): CStoreRQ Request Dataset Read\n|"},
       {"C-FIND-RSP with a match", [](auto& s, auto& d) { return Of<CFindRSP>().Write(s, kRequest, 0, "", {}, d); },
        "|CFindRSP::Write(): CFindRSP Response Command Written\n||CFindRSP::Write(): CFindRSP Response Dataset "
        "Written\n|"},
       {"C-MOVE-RQ, read",
        [](auto& s, auto& d) {
           return Of<CMoveRQ>().Read(Command({{0x0100, 0x0021}, {0x0800, 0}}), s, d);
        },
        "|CMoveRQ::Read(): CMoveRQ Request Command Read\nCMoveRQ Request Dataset Read\n|"},
       {"C-MOVE-RSP with an identifier",
        [](auto& s, auto& d) { return Of<CMoveRSP>().Write(s, kRequest, 0, 0, 0, 0, 0, "", {}, d); },
        "|CMoveRSP::Write(): CMoveRSP Response Command Written\nCMoveRSP Response Dataset Written\n|"},
   };
   for (const auto& aCase : kCases)
   {
      MemoryAssociation aService(kCT, PDUBytes::PData(PDUBytes::PDV(1, 2, kDatasetBytes)));
      DICOMDataObject aDataset = Dataset();
      const CapturedTrace aTrace("TNTraceDimsec");
      EXPECT_TRUE(aCase.itsAction(aService, aDataset)) << aCase.itsName;
      gTNTracer.SetTrace(TNTrace::TNTraceDimsecDicomObjects);
      Of<CEchoRSP>().Read(Command({{0x0100, 0x8030}}));
      const std::string anEntries = Entries(aTrace.Text());
      const std::size_t aLast = anEntries.rfind("|CEchoRSP::Read(): CEchoRSP Response Command Read:\n");
      ASSERT_NE(aLast, std::string::npos) << anEntries;
      EXPECT_EQ(anEntries.substr(0, aLast), aCase.itsEntries) << aCase.itsName;
      EXPECT_NE(anEntries.find("(0000, 0100)", aLast), std::string::npos) << "the dump";
   }
}
} // namespace
