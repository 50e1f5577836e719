#include "talvenor/association/CheckedPDU_Service.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "talvenor/ul/DULStreamFactory.h"
#include "tests/support/CapturedErrorLog.h"
#include "tests/support/TemporaryFile.h"

namespace
{

constexpr const char* kCT = "1.2.840.10008.5.1.4.1.1.2";
constexpr const char* kMR = "1.2.840.10008.5.1.4.1.1.4";
constexpr const char* kImplicit = "1.2.840.10008.1.2";

// Which questions a service answers with yes: R(emote title SCANNER), L(ocal title SCANNER), S(OP class CT), T(ransfer
// syntax implicit VR little endian), A(pplication context of the standard).
std::string Accepted(PDU_Service& theService)
{
   unsigned char anSCPRole = 0;
   unsigned char anSCURole = 1;
   std::string aText;
   aText += theService.ShouldIAcceptRemoteAppTitle("SCANNER") ? "R" : "";
   aText += theService.ShouldIAcceptLocalAppTitle("SCANNER") ? "L" : "";
   aText += theService.ShouldIAcceptAbstractSyntax(AbstractSyntaxSubItem(ULUID(kCT)), anSCPRole, anSCURole) ? "S" : "";
   aText += theService.CanYouHandleTransferSyntax(TransferSyntaxItem(ULUID(kImplicit))) ? "T" : "";
   aText +=
       theService.ShouldIAcceptApplicationContext(ApplicationContextItem(ULUID("1.2.840.10008.3.1.1.1"))) ? "A" : "";
   return aText;
}

} // namespace

TEST(CheckedPDU_Service, AcceptsWhatTheFileLists)
{
   const std::string aLongValue(70, '1');
   struct Case
   {
      const char* itsName;
      std::string itsFile;
      const char* itsAccepted;
   };
   const Case kCases[] = {
       {"an empty file", "", "RLSTA"},
       {"a SOP class, other lists empty", "# comment\nct\t1.2.840.10008.5.1.4.1.1.2 sop\n", "RLSTA"},
       {"another SOP class", "mr 1.2.840.10008.5.1.4.1.1.4 sop\n", "RLTA"},
       {"two keywords for SOP classes", "mr 1.2.840.10008.5.1.4.1.1.4 sop\nct 1.2.840.10008.5.1.4.1.1.2 ABSTRACT",
        "RLSTA"},
       {"another calling title", "x OTHER RemoteAE\n", "LSTA"},
       {"the calling title, in lower case of keyword", "x SCANNER remoteae\n", "RLSTA"},
       {"a calling title in another case", "x scanner RemoteAE\n", "LSTA"},
       {"another called title", "x OTHER LocalAE\n", "RSTA"},
       {"another transfer syntax", "x 1.2.840.10008.1.2.1 transfer\n", "RLSA"},
       {"a longer transfer syntax only", "x 1.2.840.10008.1.2.1.99 transfer\n", "RLSA"},
       {"another application context", "x 1.2.3 application\n", "RLST"},
       {"separators in plenty and lines from elsewhere", "\r\n \t\n \t x \t OTHER \t\tRemoteAE\r\n", "LSTA"},
       {"a comment begins in the first column only", " # OTHER RemoteAE\n", "LSTA"},
       {"unknown keyword", "x OTHER Remote\n", "RLSTA"},
       {"no keyword", "x RemoteAE\n", "RLSTA"},
       {"fields behind the third", "x OTHER RemoteAE LocalAE\n", "LSTA"},
       {"a value that is too long still closes the list", "x " + aLongValue + " RemoteAE\n", "LSTA"},
       {"nothing behind 254 characters counts", "x OTHER RemoteAE" + std::string(300, ' ') + "\nx OTHER LocalAE",
        "STA"},
       {"a keyword behind 254 characters", "x OTHER" + std::string(300, ' ') + "RemoteAE\n", "RLSTA"},
   };
   for (const Case& aCase : kCases)
   {
      const CapturedErrorLog anIgnoredLog;
      const TemporaryFile aFile(aCase.itsFile);
      DULStreamFactory aFactory;
      CheckedPDU_Service aService(aFactory, nullptr);
      EXPECT_TRUE(aService.InitializeFrom(aFile.Name())) << aCase.itsName;
      EXPECT_EQ(Accepted(aService), aCase.itsAccepted) << aCase.itsName;
      CheckedPDU_Service aCopy(aService);
      EXPECT_EQ(Accepted(aCopy), aCase.itsAccepted) << aCase.itsName;
      aService.ReleaseMemory();
      EXPECT_EQ(Accepted(aService), "RLSTA") << aCase.itsName;
   }
}

TEST(CheckedPDU_Service, TellsWhatItCutsAndNothingElse)
{
   const std::string aLongField(63, '1');
   const std::string aLongLine = "x y RemoteAE" + std::string(254 - 12, ' ');
   const struct
   {
      std::string itsLine;
      const char* itsLogged;
   } kCases[] = {
       {"x " + aLongField + " LocalAE", ""},
       {"x " + aLongField + "1 LocalAE", "field cut to 63 characters"},
       {aLongLine, ""},
       {aLongLine + " ", "line cut to 254 characters"},
   };
   for (const auto& aCase : kCases)
   {
      const CapturedErrorLog aLog;
      const TemporaryFile aFile(aCase.itsLine);
      DULStreamFactory aFactory;
      const CheckedPDU_Service aService(aFactory, aFile.Name());
      EXPECT_EQ(aLog.Text().empty(), *aCase.itsLogged == '\0') << aCase.itsLine << aLog.Text();
      EXPECT_NE(aLog.Text().find(aCase.itsLogged), std::string::npos) << aCase.itsLine << aLog.Text();
   }
}

TEST(CheckedPDU_Service, TitlesAreComparedWithoutTheirPadding)
{
   const TemporaryFile aFile("x SCANNER RemoteAE\n");
   DULStreamFactory aFactory;
   CheckedPDU_Service aService(aFactory, aFile.Name());
   EXPECT_TRUE(aService.ShouldIAcceptRemoteAppTitle("SCANNER         "));
   EXPECT_TRUE(aService.ShouldIAcceptRemoteAppTitle("  SCANNER"));
   EXPECT_FALSE(aService.ShouldIAcceptRemoteAppTitle("SCANNER2"));
   EXPECT_FALSE(aService.ShouldIAcceptRemoteAppTitle(""));
}

TEST(CheckedPDU_Service, AListedAbstractSyntaxWithoutARoleIsRefused)
{
   const TemporaryFile aFile("x " + std::string(kMR) + " sop\n");
   DULStreamFactory aFactory;
   CheckedPDU_Service aService(aFactory, aFile.Name());
   unsigned char aNoRole = 0;
   unsigned char aRole = 1;
   const AbstractSyntaxSubItem aSyntax{ULUID(kMR)};
   EXPECT_TRUE(aService.ShouldIAcceptAbstractSyntax(aSyntax, aRole, aNoRole));
   EXPECT_FALSE(aService.ShouldIAcceptAbstractSyntax(aSyntax, aNoRole, aNoRole));
}

TEST(CheckedPDU_Service, WithoutAReadableFileEverythingIsAccepted)
{
   const TemporaryFile aMissing;
   const std::string aFolder = std::filesystem::temp_directory_path();
   const TemporaryFile aFile("x OTHER RemoteAE\n");
   DULStreamFactory aFactory;
   for (const char* const aPath : {static_cast<const char*>(nullptr), aMissing.Name(), aFolder.c_str()})
   {
      const CapturedErrorLog aLog;
      CheckedPDU_Service aService(aFactory, aFile.Name());
      EXPECT_EQ(Accepted(aService), "LSTA");
      EXPECT_FALSE(aService.InitializeFrom(aPath));
      EXPECT_EQ(Accepted(aService), "RLSTA") << (aPath != nullptr ? aPath : "null");
      EXPECT_EQ(aLog.Text().find("the file cannot be read") != std::string::npos, aPath != nullptr);
   }
}
