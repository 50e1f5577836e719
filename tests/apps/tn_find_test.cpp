// tn find and tn move against peers that answer well and badly.
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/QueryBytes.h"
#include "support/RunTn.h"
#include "support/ScriptedPeer.h"

namespace
{
using namespace PDUBytes;
using QueryBytes::Comment;
using QueryBytes::Element;
using QueryBytes::Even;
using QueryBytes::US;

const std::string kFind = "1.2.840.10008.5.1.4.1.2.2.1";
const std::string kMove = "1.2.840.10008.5.1.4.1.2.2.2";
const std::string kAccepted = Acceptance({{1, 0, "1.2.840.10008.1.2.1"}});
const std::string kBothAccepted = Acceptance({{1, 0, "1.2.840.10008.1.2.1"}, {3, 0, "1.2.840.10008.1.2.1"}});
const std::string kReleased = ReleaseResponse();

std::string Found(unsigned int theStatus, const std::string& theMore = "")
{
   return PData(QueryBytes::Response(0x8020, kFind, theStatus, false, theMore));
}

std::string Match(const std::string& theElements, unsigned int theStatus = 0xFF00)
{
   return PData(QueryBytes::Response(0x8020, kFind, theStatus, true, "") + PDV(1, 2, theElements));
}

// A study of a patient whose name is in Latin 1, with two modalities.
std::string Study(const std::string& theAccession, const std::string& theUID)
{
   return Match(DatasetBytes()
                    .Element(0x00080005, "CS", "ISO_IR 100")
                    .Element(0x00080050, "SH", Even(theAccession, ' '))
                    .Element(0x00080061, "CS", "CT\\PT ")
                    .Element(0x00081030, "LO", "\"Thorax\", \x1b[2J")
                    .Element(0x00100010, "PN", "M\xfcller^A")
                    .Element(0x0020000D, "UI", Even(theUID, '\0'))
                    .Bytes());
}

std::string Moved(unsigned int theStatus, const std::string& theMore = "", const std::string& theFailed = "",
                  unsigned char theContextID = 1)
{
   const std::string aCommand =
       PDV(theContextID, 3,
           CommandBytes::CommandSet(Element(0x0002, Even(kMove, '\0')) + US(0x0100, 0x8021) + US(0x0120, 5) +
                                    US(0x0800, theFailed.empty() ? 0x0101 : 0x0102) + US(0x0900, theStatus) + theMore));
   const std::string aList = DatasetBytes().Element(0x00080058, "UI", Even(theFailed, '\0')).Bytes();
   return PData(aCommand + (theFailed.empty() ? "" : PDV(theContextID, 2, aList)));
}

std::string Counts(unsigned int theCompleted, unsigned int theFailed)
{
   return US(0x1021, theCompleted) + US(0x1022, theFailed) + US(0x1023, 0);
}

struct Case
{
   const char* itsName;
   std::string itsArguments;
   std::vector<std::string> itsAnswers;
   int itsCode;
   std::string itsOutput;   // the whole of it
   std::string itsErrors;   // a part
   const char* itsReceived; // by the peer: types of PDUs
   std::string itsInput = "";
};

void Expect(const std::string& theCommand, const std::vector<Case>& theCases)
{
   const TemporaryDirectory aFolder;
   for (const Case& aCase : theCases)
   {
      SCOPED_TRACE(aCase.itsName);
      ScriptedPeer aPeer(aCase.itsAnswers);
      std::ofstream(aFolder.File("input")) << aCase.itsInput;
      const Outcome anOutcome =
          Tn(theCommand + " --timeout 5 " + aCase.itsArguments + " P@127.0.0.1:" + aPeer.Port(), aFolder.File("input"));
      EXPECT_EQ(anOutcome.itsCode, aCase.itsCode);
      EXPECT_EQ(anOutcome.itsOutput, aCase.itsOutput);
      EXPECT_PRED2(Contains, anOutcome.itsErrors, aCase.itsErrors);
      EXPECT_EQ(anOutcome.itsErrors.empty(), aCase.itsErrors.empty()) << anOutcome.itsErrors;
      EXPECT_EQ(aPeer.Finish(), aCase.itsReceived);
   }
}

TEST(TnFind, ShowsMatches)
{
   const std::string aStudy = Study("A1", "1.2.3");
   const std::string aJson = R"({"AccessionNumber":"A1","ModalitiesInStudy":["CT","PT"],)"
                             R"("StudyDescription":"\"Thorax\", �[2J","PatientName":"Müller^A",)"
                             R"("StudyInstanceUID":"1.2.3"})"
                             "\n";
   const std::string aHeading = "PatientName,PatientID,PatientBirthDate,PatientSex,StudyDate,StudyTime,AccessionNumber,"
                                "StudyID,StudyDescription,ModalitiesInStudy,NumberOfStudyRelatedSeries,"
                                "NumberOfStudyRelatedInstances,StudyInstanceUID\r\n";
   const std::string aRow = "Müller^A,,,,,,A1,,\"\"\"Thorax\"\", �[2J\",CT\\PT,,,1.2.3\r\n";
   Expect(
       "find",
       {{"JSON", "--json", {kAccepted, aStudy + aStudy + Found(0), kReleased}, 0, aJson + aJson, "", "145"},
        {"CSV", "--csv", {kAccepted, aStudy + Found(0), kReleased}, 0, aHeading + aRow, "", "145"},
        {"nothing, as CSV", "--csv", {kAccepted, Found(0), kReleased}, 0, aHeading, "", "145"},
        {"limit",
         "--json --limit 1",
         {kAccepted, aStudy + aStudy, Found(0xFE00), kReleased},
         0,
         aJson,
         "cancelled after 1 match,",
         "1445"},
        {"limit at the end", "--json --limit 1", {kAccepted, aStudy + Found(0), kReleased, ""}, 0, aJson, "", "1445"},
        {"two queries",
         "--json",
         {kAccepted, aStudy + Found(0), Found(0), kReleased},
         0,
         aJson,
         "",
         "1445",
         "PatientID=1\n# the next one\n\nPatientID=2\n"},
        {"keys not supported",
         "--json",
         {kAccepted, Match("", 0xFF01) + Found(0), kReleased},
         0,
         "{}\n",
         "does not support them",
         "145"}});
}

TEST(TnFind, TellsWhyNot)
{
   Expect("find", {{"refused",
                    "--json",
                    {kAccepted, Found(0xA700, Comment("too many")), kReleased},
                    8,
                    "",
                    "refused: out of resources (A700H): too many",
                    "145"},
                   {"wants a study",
                    "--json --level series",
                    {kAccepted, Found(0xA900), kReleased},
                    8,
                    "",
                    "-k StudyInstanceUID=...",
                    "145"},
                   {"no status",
                    "--json",
                    {kAccepted, PData(QueryBytes::Command(US(0x0100, 0x8020)))},
                    8,
                    "",
                    "the answer has no status",
                    "147"},
                   {"not accepted", "--json", {Acceptance({{1, 3, ""}})}, 7, "", "1.2.840.10008.5.1.4.1.2.2.1", "1"},
                   {"no such keyword", "-k patientname=X", {}, 2, "", "is it PatientName?", ""},
                   {"no such tag", "-k '(0010,00)=X'", {}, 2, "", "(gggg,eeee)=VALUE", ""},
                   {"no sequence", "-k PatientID.Modality=CT", {}, 2, "", "(0010,0020) is no sequence", ""},
                   {"value of a sequence", "-k ReferencedStudySequence=X", {}, 2, "", "a sequence has no value", ""},
                   {"no number", "-k Rows=many", {}, 2, "", "many is no number", ""},
                   {"no such level", "--level patient", {}, 2, "", "--model patient has", ""}});
}

TEST(TnMove, TellsWhatWasMoved)
{
   const std::string aStudies =
       "{\"StudyInstanceUID\":\"1.2.3\",\"x\":[1,{\"y\":null}]}\n{\"StudyInstanceUID\":\"1.2.4\"}\n";
   const std::string anInstance = "{\"StudyInstanceUID\":\"1.2.3\",\"SeriesInstanceUID\":\"1.2.3.1\","
                                  "\"SOPInstanceUID\":\"1.2.3.1.";
   Expect(
       "move --to DEST",
       {{"a study",
         "--study 1.2.3",
         {kAccepted, Moved(0xFF00, US(0x1020, 1) + Counts(1, 0)) + Moved(0, Counts(2, 0)), kReleased},
         0,
         "study 1.2.3: 2 completed, 0 failed, 0 with warnings\n",
         "",
         "145"},
        {"some failed",
         "--study 1.2.3",
         {kAccepted, Moved(0xB000, Counts(1, 2), "1.2.3.4\\1.2.3.5"), kReleased},
         1,
         "study 1.2.3: 1 completed, 2 failed, 0 with warnings\nfailed 1.2.3.4\nfailed 1.2.3.5\n",
         "one or more sub-operations failed (B000H)",
         "145"},
        {"failed, and called a success",
         "--study 1.2.3",
         {kAccepted, Moved(0, Counts(1, 1)), kReleased},
         1,
         "study 1.2.3: 1 completed, 1 failed, 0 with warnings\n",
         "",
         "145"},
        {"unknown destination",
         "--study 1.2.3",
         {kAccepted, Moved(0xA801), kReleased},
         8,
         "study 1.2.3: 0 completed, 0 failed, 0 with warnings\n",
         "DEST has to be made known to the archive",
         "145"},
        {"of two studies one fails",
         "",
         {kAccepted, Moved(0xC001), Moved(0, Counts(3, 0)), kReleased},
         1,
         "study 1.2.3: 0 completed, 0 failed, 0 with warnings\nstudy 1.2.4: 3 completed, 0 failed, 0 with warnings\n",
         "unable to process (C001H)",
         "1445",
         aStudies},
        {"instances of one series",
         "",
         {kAccepted, Moved(0, Counts(2, 0)), kReleased},
         0,
         "2 instances of series 1.2.3.1: 2 completed, 0 failed, 0 with warnings\n",
         "",
         "145",
         anInstance + "1\"}\n" + anInstance + "2\"}\n\n" + anInstance + "1\"}\n"},
        {"by accession number",
         "--accession A1",
         {kBothAccepted, Study("A1", "1.2.3") + Study("A11", "1.2.4") + Found(0), Moved(0, Counts(2, 0), "", 3),
          kReleased},
         0,
         "study 1.2.3: 2 completed, 0 failed, 0 with warnings\n",
         "",
         "1445"},
        {"no such accession number",
         "--accession A2",
         {kBothAccepted, Study("A1", "1.2.3") + Found(0)},
         1,
         "",
         "no study has the accession number A2",
         "147"},
        {"no matches on standard input", "", {}, 1, "", "nothing to move", ""},
        {"no JSON",
         "",
         {},
         2,
         "",
         "standard input, line 2: no JSON object at character 1",
         "",
         "{\"StudyInstanceUID\":\"1.2.3\"}\nx"},
        {"no UID in it", "", {}, 2, "", "line 1: there is no StudyInstanceUID", "", "{\"PatientName\":\"A\"}\n"},
        {"no UID", "--study 1.2.*", {}, 2, "", "1.2.* is no UID", ""},
        {"a wild card", "--accession 'A*'", {}, 2, "", "whole numbers", ""},
        {"what belongs to what", "--study 1 --study 2 --series 3", {}, 2, "", "not clear what belongs to what", ""}});
}
} // namespace
