// What tn tells of itself and of DICOM, and the file of --config.
#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "apps/tn/base/ValueText.h"
#include "apps/tn/help/HelpFormatter.h"
#include "apps/tn/query/MatchWriter.h"
#include "support/RunTn.h"
#include "support/TemporaryDirectory.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/VR.h"

TEST(TnExplain, TellsWhatAWordIs)
{
   const struct
   {
      const char* itsWord;
      int itsCode;
      const char* itsAnswer; // part of it
   } kCases[] = {
       {"1.2.840.10008.1.2.4.70", 0, "first-order prediction"},
       {"1.2.840.10008.1.2.1.99", 0, "not served here"},
       {"CTImageStorage", 0, "1.2.840.10008.5.1.4.1.1.2 "},
       {"'CT Image Storage'", 0, "1.2.840.10008.5.1.4.1.1.2 "},
       {"0028,0010", 0, "(0028,0010)  Rows  US  1  "},
       {"'(7FE0,0010)'", 0, "PixelData"},
       {"'(60xx,3000)'", 0, "(6000,3000)  OverlayData"},
       {"00081140", 0, "ReferencedImageSequence  SQ"},
       {"0029,1001", 0, "private"},
       {"PatientName", 0, "(0010,0010)"},
       {"A701", 0, "the number of matches is not known (A701H)"},
       {"0xFE00", 0, "cancelled (FE00H)"},
       {"0122H", 0, "any service  refused: SOP class not supported (0122H)\n"},
       {"0124", 0, "refused: not authorized (0124H)"},
       {"A700", 0, "any service  refused: out of resources (A700H)\n"},
       {"C001", 0, "C-MOVE   failed: unable to process (C001H)\nothers   failed: unable to process (C001H)\n"},
       {"7FE0", 1, ""},
       {"DA", 0, "YYYYMMDD"},
       {"DA NoSuchThing", 1, "YYYYMMDD"},
       {"--json 00280010", 0, R"("tag":"0028,0010","keyword":"Rows","vr":"US","vm":"1","description":)"},
       {"--json 1.2.840.10008.1.2", 0, R"("type":"transfer syntax","served":"yes"})"},
       {"--json A700 NoSuchThing", 1,
        R"~({"word":"A700","status":"A700","C-STORE":"refused: out of resources (A700H)")~"},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsWord);
      const Outcome anOutcome = Tn(std::string("explain ") + aCase.itsWord);
      EXPECT_EQ(anOutcome.itsCode, aCase.itsCode) << anOutcome.itsErrors;
      const auto aLower = [](std::string theText) {
         std::transform(theText.begin(), theText.end(), theText.begin(),
                        [](unsigned char c) { return std::tolower(c); });
         return theText;
      };
      EXPECT_NE(aLower(anOutcome.itsOutput).find(aLower(aCase.itsAnswer)), std::string::npos) << anOutcome.itsOutput;
   }
}

TEST(TnCompletions, CompleteCommandsOptionsAndChoicesInBash)
{
   const TemporaryDirectory aFolder;
   const std::string aFile = aFolder.File("tn.bash");
   std::ofstream(aFile) << Tn("completions bash").itsOutput;
   const struct
   {
      const char* itsWords;
      const char* itsAnswer;
   } kCases[] = {
       {"conv", "convert "},
       {"dicomdir ''", "create list "},
       {"dicomdir list --off", "--offsets "},
       {"find --level '='", "patient study series image "},
       {"find --level '=' se", "series "},
       {"find --model ''", "patient study patient-study "},
       {"serve --fsync n", "none "},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsWords);
      const std::string aResult = aFolder.File("result");
      const std::string aCommand =
          std::string("bash -c \"source '") + aFile + "'; COMP_WORDS=(tn " + aCase.itsWords +
          "); COMP_CWORD=\\$(( \\${#COMP_WORDS[@]} - 1 )); _tn; printf '%s ' \\${COMPREPLY[@]}\" > '" + aResult + "'";
      EXPECT_EQ(std::system(aCommand.c_str()), 0);
      EXPECT_EQ(ReadFile(aResult), aCase.itsAnswer);
   }
}

TEST(HelpFormatter, NamesTypesAsPeopleDo)
{
   const struct
   {
      const char* itsType;
      const char* itsText;
   } kCases[] = {
       {"TEXT:{same,implicit}", "same|implicit"},
       {"ENUM:value in {file->1,group->2} OR {1,2}", "file|group"},
       {"INT:INT in [0 - 65535]", "0-65535"},
       {"SECONDS:FLOAT in [0 - 86400]", "SECONDS"},
       {"TEXT:FILE", "FILE"},
       {"FLOAT:NONNEGATIVE", "N"},
       {"TEXT", "TEXT"},
       {"", ""},
   };
   for (const auto& aCase : kCases)
   {
      EXPECT_EQ(HelpFormatter::SimplifyType(aCase.itsType), aCase.itsText) << aCase.itsType;
   }
}

TEST(HelpFormatter, FillsParagraphsAndLeavesExamples)
{
   EXPECT_EQ(HelpFormatter::Filled("one two three\nfour\n\nExample:\n  tn  x | tn y | tn z\nmore", 10),
             "one two\nthree four\n\nExample:\n  tn  x | tn y | tn z\nmore\n");
   EXPECT_EQ(HelpFormatter::Filled("abcdefghijklm no", 10), "abcdefghijklm\nno\n");
   EXPECT_EQ(HelpFormatter::Filled("", 10), "");
}

TEST(MatchWriter, ATableFitsTheTerminal)
{
   DICOMDataObject aMatch;
   const struct
   {
      UINT32 itsTag;
      const char* itsText;
   } kValues[] = {
       {0x00100010, "M\xC3\xA4kinen-Lehtinen^Tyyne"}, {0x00081030, "Thorax, two planes"}, {0x0020000D, "1.2.3.4.5"}};
   for (const auto& aValue : kValues)
   {
      aMatch.Push(MakeElement(aValue.itsTag, 0, aValue.itsText).release());
   }
   const std::vector<QueryKeys::Column> aColumns = {
       {"PatientName", {0x00100010}}, {"StudyDescription", {0x00081030}}, {"StudyInstanceUID", {0x0020000D}}};
   const struct
   {
      std::size_t itsWidth;
      const char* itsText;
   } kCases[] = {
       {0, "PatientName             StudyDescription    StudyInstanceUID\n"
           "M\xC3\xA4kinen-Lehtinen^Tyyne  Thorax, two planes  1.2.3.4.5\n"},
       {40, "PatientName    StudyDescript\xE2\x80\xA6  StudyIns\xE2\x80\xA6\n"
            "M\xC3\xA4kinen-Leht\xE2\x80\xA6  Thorax, two p\xE2\x80\xA6  1.2.3.4.5\n"},
       {18, "PatientName       M\xC3\xA4kinen-Lehtinen^Tyyne\n"
            "StudyDescription  Thorax, two planes\n"
            "StudyInstanceUID  1.2.3.4.5\n"},
   };
   for (const auto& aCase : kCases)
   {
      std::ostringstream anOutput;
      const auto aWriter = MatchWriter::Make(MatchWriter::Form::Table, anOutput, aColumns, aCase.itsWidth);
      aWriter->Write(aMatch);
      aWriter->Finish();
      EXPECT_EQ(anOutput.str(), aCase.itsText) << aCase.itsWidth;
   }
}

TEST(TnConfig, NamesPeersAndSetsOptionsWhereTheCommandLineDoesNot)
{
   const TemporaryDirectory aFolder;
   const std::string aFile = aFolder.File("tn.toml");
   std::ofstream(aFile) << "[peers]\narchive = \"ARCHIVE@localhost:9\"\nother = \"localhost:9\"\n"
                           "[echo]\naet = \"FROM_FILE\"\n[send]\nretry = 2\n";
   const auto aBad = [&aFolder](const char* theName, const char* theText) {
      std::ofstream(aFolder.File(theName)) << theText;
      return "--config '" + aFolder.File(theName) + "' ";
   };
   const std::string aBroken = aFolder.File("broken.toml");
   std::ofstream(aBroken) << "[peers]\narchive = \"ARCHIVE@\"\n";
   const struct
   {
      const char* itsName;
      std::string itsArguments;
      int itsCode;
      const char* itsText; // part of standard output and standard error
   } kCases[] = {
       {"named", "--config '" + aFile + "' echo --json @archive", 5, "\"ARCHIVE\""},
       {"option of the file", "--config '" + aFile + "' echo --json @archive", 5, "\"FROM_FILE\""},
       {"option of the line", "--config '" + aFile + "' echo --aet ME --json @archive", 5, "\"ME\""},
       {"without a title", "--config '" + aFile + "' echo --json @other", 5, "\"ANY-SCP\""},
       {"behind the command", "echo --json @archive --config '" + aFile + "'", 5, "\"FROM_FILE\""},
       {"unknown name", "--config '" + aFile + "' echo @nobody", 2, "@nobody; there are @archive, @other"},
       {"unknown command", aBad("command", "[sned]\nretry = 2\n") + "echo localhost:9", 2, "no command tn sned"},
       {"unknown option", aBad("option", "[send]\nrety = 2\n") + "echo localhost:9", 2, "tn send has no option --rety"},
       {"no number", "echo --repeat many localhost:9", 2, "many is no number above 0"},
       {"no file", "echo @archive", 2, "--config"},
       {"missing file", "--config '" + aFile + ".not' echo localhost:9", 2, ".not"},
       {"peer written wrongly", "--config '" + aBroken + "' echo localhost:9", 2, "peer archive"},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      const Outcome anOutcome = Tn(aCase.itsArguments, "/dev/null", "unset TN_CONFIG; ");
      EXPECT_EQ(anOutcome.itsCode, aCase.itsCode) << anOutcome.itsErrors;
      EXPECT_NE((anOutcome.itsOutput + anOutcome.itsErrors).find(aCase.itsText), std::string::npos)
          << anOutcome.itsOutput << anOutcome.itsErrors;
   }
}
