// tn serve as an archive that is asked: queries, worklist queries and retrieves, by the program's own requesters.
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/DatasetBytes.h"
#include "support/Elements.h"
#include "support/FileBytes.h"
#include "support/QueryBytes.h"
#include "support/ServedNode.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/ul/Socket.h"

namespace
{
namespace fs = std::filesystem;

const char kSecondaryCapture[] = "1.2.840.10008.5.1.4.1.1.7";

struct Instance
{
   std::string itsUID;
   std::string itsPatientID;
   std::string itsName;
   std::string itsStudy;
   std::string itsDate;
   std::string itsSeries;
   std::string itsModality;
   std::string itsCharacterSet;
};

// Two patients, three studies, four series, five instances.
const Instance kInstances[] = {
    {"1.2.1", "A1", "Adams^Anna", "1.1", "20240105", "1.1.1", "CT", ""},
    {"1.2.2", "A1", "Adams^Anna", "1.1", "20240105", "1.1.1", "CT", ""},
    {"1.2.3", "A1", "Adams^Anna", "1.1", "20240105", "1.1.2", "MR", ""},
    {"1.2.4", "A1", "Adams^Anna", "1.3", "20240210", "1.3.1", "CT", ""},
    {"1.2.5", "B2", "M\xFCller^J\xF6rg", "1.5", "20231231", "1.5.1", "US", "ISO_IR 100"},
};

void Save(const std::string& thePath, DICOMDataObject& theDataset)
{
   TNResultCode aResult = TN_NO_ERROR;
   int anError = 0;
   ASSERT_TRUE(theDataset.SaveToFile(thePath, GivenOrLittleEndianExplicitFile, aResult, anError))
       << TNResult::Describe(aResult);
}

void Save(const std::string& thePath, const Instance& theInstance)
{
   DICOMDataObject aDataset;
   if (!theInstance.itsCharacterSet.empty())
   {
      aDataset.Push(TextElement(0x00080005, theInstance.itsCharacterSet, VRCode::CS));
   }
   aDataset.Push(BytesElement(0x00080016, VRCode::UI, kSecondaryCapture));
   aDataset.Push(BytesElement(0x00080018, VRCode::UI, theInstance.itsUID));
   aDataset.Push(TextElement(0x00080020, theInstance.itsDate, VRCode::DA));
   aDataset.Push(TextElement(0x00080060, theInstance.itsModality, VRCode::CS));
   aDataset.Push(TextElement(0x00100010, theInstance.itsName, VRCode::PN));
   aDataset.Push(TextElement(0x00100020, theInstance.itsPatientID));
   aDataset.Push(BytesElement(0x0020000D, VRCode::UI, theInstance.itsStudy));
   aDataset.Push(BytesElement(0x0020000E, VRCode::UI, theInstance.itsSeries));
   Save(thePath, aDataset);
}

// The values of one key in the JSON lines of tn find, each once.
std::set<std::string> ValuesIn(const std::string& theLines, const std::string& theKey)
{
   std::set<std::string> aValues;
   const std::string aName = "\"" + theKey + "\":\"";
   for (std::size_t aPlace = theLines.find(aName); aPlace != std::string::npos;
        aPlace = theLines.find(aName, aPlace + 1))
   {
      const std::size_t aBegin = aPlace + aName.size();
      aValues.insert(theLines.substr(aBegin, theLines.find('"', aBegin) - aBegin));
   }
   return aValues;
}

// An archive that has the instances.
class TnAnswers : public testing::Test
{
protected:
   void SetUp() override
   {
      for (const Instance& anInstance : kInstances)
      {
         Save(itsFolder.File(anInstance.itsUID), anInstance);
      }
      itsPeers = itsFolder.File("peers");
      itsNode = std::make_unique<ServedNode>(
          std::vector<std::string>{"--aet", "ARCHIVE", "--store", itsFolder.File("archive"), "--fsync", "none",
                                   "--peers", (std::ofstream(itsPeers) << "# none yet\n", itsPeers)});
      for (const Instance& anInstance : kInstances)
      {
         ASSERT_EQ(Ask("send", "", itsFolder.File(anInstance.itsUID)).itsCode, 0);
      }
   }

   Outcome Ask(const std::string& theCommand, const std::string& theOptions, const std::string& theArguments = "") const
   {
      return Tn(theCommand + " " + theOptions + " ARCHIVE@127.0.0.1:" + itsNode->Port() + " " + theArguments);
   }

   TemporaryDirectory itsFolder;
   std::string itsPeers;
   std::unique_ptr<ServedNode> itsNode;
};
} // namespace

TEST_F(TnAnswers, QueriesByEveryRule)
{
   const struct
   {
      const char* itsName;
      const char* itsOptions;
      const char* itsKey;
      std::set<std::string> itsValues;
   } kRows[] = {
       {"all studies", "--level study", "StudyInstanceUID", {"1.1", "1.3", "1.5"}},
       {"patients", "--model patient --level patient", "PatientID", {"A1", "B2"}},
       {"name in another case", "--level study -k PatientName=adams*", "StudyInstanceUID", {"1.1", "1.3"}},
       {"name in another character set",
        "--level study --utf8 -k 'PatientName=m\u00DCLLER*'",
        "PatientName",
        {"M\u00FCller^J\u00F6rg"}},
       {"range of dates", "--level study -k StudyDate=20240101-", "StudyInstanceUID", {"1.1", "1.3"}},
       {"modalities of a study", "--level study -k ModalitiesInStudy=MR", "StudyInstanceUID", {"1.1"}},
       {"numbers", "--level study -k StudyInstanceUID=1.1", "NumberOfStudyRelatedInstances", {"3"}},
       {"list of UIDs", "--level study -k 'StudyInstanceUID=1.3\\1.5\\9'", "StudyInstanceUID", {"1.3", "1.5"}},
       {"series of a study", "--level series -k StudyInstanceUID=1.1 -k Modality", "Modality", {"CT", "MR"}},
       {"images of a series",
        "--level image -k StudyInstanceUID=1.1 -k SeriesInstanceUID=1.1.1",
        "SOPInstanceUID",
        {"1.2.1", "1.2.2"}},
       {"nothing", "--level study -k PatientName=Nobody", "StudyInstanceUID", {}},
       {"quotes of another language", "--level study -k \"PatientName=' OR '1'='1\"", "StudyInstanceUID", {}},
       {"where to fetch it",
        "--level study -k StudyInstanceUID=1.5 -k RetrieveAETitle",
        "RetrieveAETitle",
        {"ARCHIVE"}},
       {"a key that is not kept",
        "--level study -k StudyInstanceUID=1.5 -k PatientInsurancePlanCodeSequence",
        "StudyInstanceUID",
        {"1.5"}},
   };
   for (const auto& aRow : kRows)
   {
      const Outcome anAnswer = Ask("find --json", aRow.itsOptions);
      EXPECT_EQ(anAnswer.itsCode, 0) << aRow.itsName << ": " << anAnswer.itsErrors;
      EXPECT_EQ(ValuesIn(anAnswer.itsOutput, aRow.itsKey), aRow.itsValues)
          << aRow.itsName << ": " << anAnswer.itsOutput;
   }
}

TEST_F(TnAnswers, RefusesIdentifiersThatAreNoneOfTheModel)
{
   for (const char* const anOptions :
        {"--level series", "--level image -k StudyInstanceUID=1.1", "--level series -k 'StudyInstanceUID=1.1\\1.3'",
         "--level study -k StudyDate=soon"})
   {
      const Outcome anAnswer = Ask("find", anOptions);
      EXPECT_EQ(anAnswer.itsCode, 8) << anOptions;
      EXPECT_TRUE(Contains(anAnswer.itsErrors, "A900H")) << anAnswer.itsErrors;
   }
   EXPECT_TRUE(itsNode->Echoes());
}

TEST_F(TnAnswers, MovesWhatIsAskedForToWhomItKnows)
{
   const ServedNode aDestination({"--aet", "DEST", "--store", itsFolder.File("destination"), "--fsync", "none"});
   EXPECT_EQ(Ask("move --to DEST", "--study 1.1").itsCode, 8) << "it is not listed yet";
   std::ofstream(itsPeers) << "DEST@127.0.0.1:" << aDestination.Port() << "\nDEAD@127.0.0.1:1\n";

   const Outcome aDead = Ask("move --to DEAD", "--study 1.5");
   EXPECT_NE(aDead.itsCode, 0);
   EXPECT_TRUE(Contains(aDead.itsOutput + aDead.itsErrors, "1.2.5")) << aDead.itsOutput << aDead.itsErrors;

   const Outcome aSeries = Ask("move --to DEST", "--study 1.1 --series 1.1.1");
   EXPECT_EQ(aSeries.itsCode, 0) << aSeries.itsErrors;
   EXPECT_TRUE(fs::exists(itsFolder.File("destination/1.1/1.1.1/1.2.2.dcm")));
   EXPECT_FALSE(fs::exists(itsFolder.File("destination/1.1/1.1.2")));
   EXPECT_EQ(Ask("move --to DEST", "--study 1.5 --json").itsOutput,
             R"~({"level":"STUDY","uids":["1.5"],"status":0,"meaning":"complete (0000H)","completed":1,"failed":0,)~"
             R"("warnings":0,"failedInstances":[]})"
             "\n");
   const auto aDatasetOf = [](const std::string& thePath) {
      const std::string aText = Tn("dump --elements " + thePath).itsOutput;
      return aText.substr(aText.find("/\t0008")); // behind the meta information
   };
   EXPECT_EQ(aDatasetOf(itsFolder.File("destination/1.5/1.5.1/1.2.5.dcm")), aDatasetOf(itsFolder.File("1.2.5")));
}

// What the encoder does not write, or writes otherwise: a text of 40000 bytes with a length of 16 bits, a representation
// that the library does not know, a private element without a creator, a sequence of defined length.
TEST_F(TnAnswers, MovesTheBytesThatAreStored)
{
   const std::string aDataset =
       ShortElement(Bytes("\x08\x00\x16\x00"), "UI", kSecondaryCapture + std::string(1, '\0')) +
       ShortElement(Bytes("\x08\x00\x18\x00"), "UI", "1.2.77") + Bytes("\x08\x00\x19\x01UC\0\0\x02\0\0\0ab") +
       Bytes("\x08\x00\x15\x11SQ\0\0\x08\0\0\0\xFE\xFF\x00\xE0\0\0\0\0") +
       ShortElement(Bytes("\x09\x00\x01\x10"), "LO", "alone ") +
       ShortElement(Bytes("\x20\x00\x0D\x00"), "UI", Bytes("1.77\0\0").substr(0, 4)) +
       ShortElement(Bytes("\x20\x00\x0E\x00"), "UI", "1.77.1") +
       ShortElement(Bytes("\x06\x30\x50\x00"), "DS", std::string(40000, '1'));
   WriteFile(itsFolder.File("contours"), FileHeader(kExplicitLittle) + aDataset);
   const ServedNode aDestination({"--aet", "DEST", "--store", itsFolder.File("destination"), "--fsync", "none"});
   std::ofstream(itsPeers) << "DEST@127.0.0.1:" << aDestination.Port() << "\n";
   ASSERT_EQ(Ask("send", "", itsFolder.File("contours")).itsCode, 0);
   const Outcome aMove = Ask("move --to DEST", "--study 1.77");
   EXPECT_EQ(aMove.itsCode, 0) << aMove.itsErrors << aMove.itsOutput;
   EXPECT_TRUE(ReadFile(itsFolder.File("destination/1.77/1.77.1/1.2.77.dcm")).ends_with(aDataset));
}

// The request to cancel has come before the first instance is on its way.
TEST_F(TnAnswers, MovesNothingMoreOnceItIsCancelled)
{
   const std::string kStudyRoot = "1.2.840.10008.5.1.4.1.2.2.2";
   const ServedNode aDestination({"--aet", "DEST", "--store", itsFolder.File("destination"), "--fsync", "none"});
   std::ofstream(itsPeers) << "DEST@127.0.0.1:" << aDestination.Port() << "\n";
   const std::string anIdentifier =
       DatasetBytes().Element(0x00080052, "CS", "STUDY ").Element(0x0020000D, "UI", Bytes("1.1\0")).Bytes();
   const std::string aCancel = PDUBytes::PData(QueryBytes::Command(
       QueryBytes::US(0x0100, 0x0FFF) + QueryBytes::US(0x0120, 5) + QueryBytes::US(0x0800, 0x0101)));
   const std::string aRequest = PDUBytes::Request({{1, kStudyRoot, {kExplicitLittle}}}) +
                                QueryBytes::Request(0x0021, kStudyRoot, anIdentifier, "DEST") + aCancel +
                                PDUBytes::ReleaseRequest();
   Socket aSocket;
   aSocket.SetTimeout(5);
   aSocket.Open("127.0.0.1", itsNode->Port());
   aSocket.SendBinary(reinterpret_cast<const unsigned char*>(aRequest.data()), static_cast<int>(aRequest.size()));
   std::string anAnswer;
   unsigned char aBlock[1024];
   for (int aCount = 0; (aCount = aSocket.ReadBinary(aBlock, sizeof aBlock)) > 0;)
   {
      anAnswer.append(aBlock, aBlock + aCount);
   }
   EXPECT_TRUE(Contains(anAnswer, PDUBytes::PData(QueryBytes::Response(0x8021, kStudyRoot, 0xFE00, false, ""))));
   EXPECT_TRUE(PDUBytes::Describe(anAnswer).ends_with("RELEASED")) << PDUBytes::Describe(anAnswer);
   EXPECT_FALSE(fs::exists(itsFolder.File("destination/1.1")));
}

TEST(TnWorklist, AnswersFromTheFolderAsItIs)
{
   const TemporaryDirectory aFolder;
   const ServedNode aNode({"--worklist", aFolder.File("")});
   const std::string aPeer = " NODE@127.0.0.1:" + aNode.Port();

   DICOMDataObject anItem;
   anItem.Push(BytesElement(0x00080016, VRCode::UI, "1.2.840.10008.5.1.4.31"));
   anItem.Push(BytesElement(0x00080018, VRCode::UI, "1.9"));
   anItem.Push(TextElement(0x00100010, "Adams^Anna", VRCode::PN));
   auto* const aStep = new DICOMDataObject;
   aStep->Push(TextElement(0x00080060, "MR", VRCode::CS));
   aStep->Push(TextElement(0x00400002, "20240105", VRCode::DA));
   auto* const aSteps = new SequenceVR(0x0040, 0x0100);
   aSteps->AddSequenceItem(aStep);
   anItem.Push(aSteps);
   Save(aFolder.File("item.wl"), anItem);
   std::ofstream(aFolder.File("notes.txt")) << "no worklist item";

   const auto anAsk = [&](const std::string& theKeys) {
      return ValuesIn(Tn("find --json --worklist " + theKeys + aPeer).itsOutput, "PatientName").size();
   };
   EXPECT_EQ(anAsk("-k PatientName"), 1u);
   EXPECT_EQ(anAsk("-k PatientName -k ScheduledProcedureStepSequence.Modality=MR"), 1u);
   EXPECT_EQ(anAsk("-k PatientName -k ScheduledProcedureStepSequence.Modality=CT"), 0u);
   EXPECT_TRUE(Contains(aNode.Log(), "notes.txt"));
}
