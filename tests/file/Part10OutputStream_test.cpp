// Writing DICOM files: the header, the targets, and what becomes of their failures.
#include <cerrno>
#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <vector>

#include "support/CapturedErrorLog.h"
#include "support/CapturedTrace.h"
#include "support/FakeClock.h"
#include "support/FileBytes.h"
#include "support/RecordingOutputStream.h"
#include "support/StreamErrors.h"
#include "support/TemporaryFile.h"
#include "talvenor/file/Part10FileInputStream.h"
#include "talvenor/file/Part10FileOutputStream.h"
#include "talvenor/file/Part10Header.h"
#include "talvenor/file/Part10OutputStreamOutputStream.h"
#include "talvenor/foundation/AETitle.h"

namespace
{
const StreamError kNothingThrown{"(nothing was thrown)", TN_NO_ERROR};

Part10Header MakeHeader(const char* theVersionName = "NAME", const char* theTitle = "TITLE")
{
   return Part10Header("1.2.3", "1.22.3", "1.2.840.10008.1.2.1", "1.2.8", theVersionName, theTitle);
}

// PS3.10 7.1: the elements of MakeHeader and what may follow them, behind their true length.
std::string HeaderBytes(const std::string& theVersionName = "NAME", const std::string& theTitle = "TITLE ",
                        const std::string& theRest = "")
{
   const std::string anElements = kVersion + kSOPClass + kSOPInstance + TransferSyntaxElement(kExplicitLittle) +
                                  kImplementation + ShortElement(Bytes("\x02\x00\x13\x00"), "SH", theVersionName) +
                                  ShortElement(Bytes("\x02\x00\x16\x00"), "AE", theTitle) + theRest;
   const char aLength[] = {static_cast<char>(anElements.size()), static_cast<char>(anElements.size() >> 8), 0, 0};
   return kPreambleAndMagic + ShortElement(Bytes("\x02\x00\x00\x00"), "UL", std::string(aLength, 4)) + anElements;
}

void Write(OutputStream& theStream, const std::string& theText)
{
   theStream.Write(reinterpret_cast<const unsigned char*>(theText.data()), static_cast<unsigned int>(theText.size()));
}

std::string TextOf(const RecordingOutputStream& theTarget)
{
   return {theTarget.Bytes().begin(), theTarget.Bytes().end()};
}

TEST(Part10OutputStream, BeginsWithTheHeader)
{
   unsigned char* const aPreamble = new unsigned char[128]();
   aPreamble[0] = 'T';
   Part10Header aWithPreamble = MakeHeader();
   aWithPreamble.SetPreamble(aPreamble);
   Part10Header aWithPrivate = MakeHeader();
   aWithPrivate.SetPrivateCreatorUID("1.99");
   aWithPrivate.SetPrivateInformation(new unsigned char[3]{1, 2, 3});
   aWithPrivate.SetPrivateInformationLength(3);
   std::string aDefaultTitle = AETitle::GetDefaultAETitle();
   aDefaultTitle.resize((aDefaultTitle.size() + 1) & ~std::size_t{1}, ' ');

   const struct
   {
      const char* itsName;
      const Part10Header& itsHeader;
      std::string itsBytes;
   } kCases[] = {
       {"plain", MakeHeader(), HeaderBytes()},
       {"preamble", aWithPreamble, "T" + HeaderBytes().substr(1)},
       {"long version name", MakeHeader("ABCDEFGHIJKLMNOPQRST"), HeaderBytes("ABCDEFGHIJKLMNOP")},
       {"default title", MakeHeader("NAME", ""), HeaderBytes("NAME", aDefaultTitle)},
       {"private information", aWithPrivate,
        HeaderBytes("NAME", "TITLE ",
                    Bytes("\x02\x00\x00\x01UI\x04\x00"
                          "1.99"
                          "\x02\x00\x02\x01OB\x00\x00\x04\x00\x00\x00\x01\x02\x03\x00"))},
   };
   for (const auto& aCase : kCases)
   {
      RecordingOutputStream aTarget;
      Part10OutputStreamOutputStream aStream(aCase.itsHeader);
      aStream.Open(aTarget);
      EXPECT_EQ(TextOf(aTarget), aCase.itsBytes) << aCase.itsName;
      EXPECT_EQ(aStream.GetStreamPosition(), aCase.itsBytes.size()) << aCase.itsName;
      Write(aStream, "dataset");
      EXPECT_EQ(TextOf(aTarget), aCase.itsBytes + "dataset") << aCase.itsName;
      RecordingOutputStream another;
      aStream.Open(another);
      EXPECT_EQ(aStream.GetStreamPosition(), aCase.itsBytes.size()) << aCase.itsName;
   }
}

TEST(Part10OutputStream, WritesNothingOfAHeaderThatLacksAUID)
{
   const StreamError anExpected{"Invalid Part 10 header, missing either SOP Class UID, SOP Instance UID, Transfer "
                                "Syntax UID, or Implementation Class UID",
                                TN_INVALID_FILE_HANDLE};
   for (auto aSetter : {&Part10Header::SetSOPClassUID, &Part10Header::SetSOPInstanceUID,
                        &Part10Header::SetTransferSyntaxUID, &Part10Header::SetImplementationClassUID})
   {
      Part10Header aHeader = MakeHeader();
      (aHeader.*aSetter)("");
      RecordingOutputStream aTarget;
      Part10OutputStreamOutputStream aStream(aHeader);
      EXPECT_EQ(StreamErrorOf([&] { aStream.Open(aTarget); }), anExpected);
      EXPECT_EQ(TextOf(aTarget), "");
   }
}

// Fails at one of its operations.
class FailingOutputStream : public RecordingOutputStream
{
public:
   using OutputStream::Write;
   void Write(const unsigned char* theBytes, unsigned int theCount) override
   {
      FailIf(itsFault == 'W');
      RecordingOutputStream::Write(theBytes, theCount);
   }
   void Flush() override { FailIf(itsFault == 'F'); }
   void Close() override { FailIf(itsFault == 'C'); }
   unsigned int GetMaximumOutputBlockSize() const override { return 77; }

   char itsFault = 0;

private:
   static void FailIf(bool isFaulty)
   {
      if (isFaulty)
      {
         throw StreamIOException("target", TN_CLOSED_BY_PEER, 5);
      }
   }
};

TEST(Part10OutputStreamOutputStream, TellsWhatItsTargetTells)
{
   const StreamError aTold{"target", TN_CLOSED_BY_PEER, 5};
   FailingOutputStream aTarget;
   Part10OutputStreamOutputStream aStream(new Part10Header(MakeHeader()));
   EXPECT_EQ(StreamErrorOf([&] { Write(aStream, "x"); }),
             (StreamError{"Part10OutputStreamOutputStream::Write: Stream is not open", TN_INVALID_FILE_HANDLE}));
   aStream.Open(aTarget);
   EXPECT_EQ(aStream.GetMaximumOutputBlockSize(), 77u);
   EXPECT_EQ(aStream.GetTransferSyntaxUID(), "1.2.840.10008.1.2.1");
   EXPECT_EQ(aStream.CanSeek(), 0);
   EXPECT_EQ(StreamErrorOf([&] { aStream.Seek(0); }),
             (StreamError{"Part10OutputStream does not support Seek(size_t)", TN_UNSUPPORTED}));
   const unsigned int aPosition = aStream.GetStreamPosition();
   aTarget.itsFault = 'W';
   EXPECT_EQ(StreamErrorOf([&] { Write(aStream, "x"); }), aTold);
   EXPECT_EQ(StreamErrorOf([&] { Write(aStream, ""); }), kNothingThrown);
   EXPECT_EQ(aStream.GetStreamPosition(), aPosition);
   aTarget.itsFault = 'F';
   EXPECT_EQ(StreamErrorOf([&] { aStream.Flush(); }), aTold);
   aTarget.itsFault = 'C';
   EXPECT_EQ(StreamErrorOf([&] { aStream.Close(); }), aTold);
   EXPECT_EQ(StreamErrorOf([&] { aStream.Close(); }), kNothingThrown) << "closed already";
}

TEST(Part10FileOutputStream, WritesAFileThatOthersMayReadOnceItIsClosed)
{
   const TemporaryFile aFile(std::string(5000, 'x')); // longer than what replaces it
   const CapturedTrace aTrace("TNTraceFileIO");
   {
      const FakeClock aClock;
      Part10FileOutputStream aStream(aFile.Name(), new Part10Header(MakeHeader()));
      Write(aStream, "data");
      LFStream aReader(aFile.Name(), std::ios_base::in | std::ios_base::binary);
      EXPECT_EQ(aReader.LockNB(LFStream::Shared), 0);
      EXPECT_EQ(aStream.CanSeek(), 1);
      aStream.Seek(0);
      Write(aStream, "P");
      EXPECT_EQ(aStream.GetStreamPosition(), HeaderBytes().size() + 5) << "counts what is written";
      aStream.Close();
      aStream.Close();
      EXPECT_EQ(aReader.LockNB(LFStream::Shared), 1);
      EXPECT_EQ(StreamErrorOf([&] { Write(aStream, "x"); }),
                (StreamError{"Part10FileOutputStream::Write: file is not open", TN_INVALID_FILE_HANDLE}));
   }
   EXPECT_EQ(aFile.Contents(), "P" + HeaderBytes().substr(1) + "data");
   const std::string aName = aFile.Name();
   std::size_t aPlace = 0;
   for (const std::string& aLine :
        {"Open(\"" + aName + "\"): Attempting to lock file.\n", "Open(\"" + aName + "\"): File is locked.\n",
         "Close(\"" + aName + "\"): File is unlocked.\n"})
   {
      aPlace = aTrace.Text().find("Part10FileOutputStream::" + aLine, aPlace);
      ASSERT_NE(aPlace, std::string::npos) << aLine << aTrace.Text();
   }
}

// What does not fit on a full disk is told by the operation that finds out, and once more by Close, which is the last
// that a careful writer calls.
TEST(Part10FileOutputStream, TellsThatTheDiskIsFull)
{
   const StreamError aWriteError{"Part10OutputFileStream::Write(): itsLockStream->write failed", TN_SYSTEM_CALL_FAILED,
                                 ENOSPC};
   const StreamError aFlushError{"Part10OutputFileStream::Flush(): itsLockStream->flush() failed",
                                 TN_SYSTEM_CALL_FAILED, ENOSPC};
   const StreamError aSeekError{"Part10OutputFileStream::Seek(): itsLockStream->flush() failed", TN_SYSTEM_CALL_FAILED,
                                ENOSPC};
   using Operation = void (*)(OutputStream&);
   const struct
   {
      const char* itsName;
      Operation itsOperation;
      StreamError itsError;
   } kCases[] = {
       {"flush", [](OutputStream& theStream) { theStream.Flush(); }, aFlushError},
       {"large write", [](OutputStream& theStream) { Write(theStream, std::string(65536, 'x')); }, aWriteError},
       {"small writes",
        [](OutputStream& theStream) {
           for (int i = 0; i < 10000; ++i)
           {
              Write(theStream, "0123456789");
           }
        },
        aWriteError},
       {"seek", [](OutputStream& theStream) { theStream.Seek(0); }, aSeekError},
       {"close", [](OutputStream& theStream) { theStream.Close(); }, aFlushError},
   };
   const CapturedErrorLog aLog;
   const Part10Header aHeader = MakeHeader();
   for (const auto& aCase : kCases)
   {
      Part10FileOutputStream aStream("/dev/full", aHeader);
      EXPECT_EQ(StreamErrorOf([&] { aCase.itsOperation(aStream); }), aCase.itsError) << aCase.itsName;
      EXPECT_EQ(StreamErrorOf([&] { aStream.Close(); }),
                aCase.itsName == std::string("close") ? kNothingThrown : aFlushError)
          << aCase.itsName;
   }
   EXPECT_EQ(aLog.Text(), "");
   {
      const Part10FileOutputStream aForgotten("/dev/full", aHeader);
   }
   EXPECT_NE(aLog.Text().find("Part10FileOutputStream::Close(\"/dev/full\"): the file is not whole. errno = 28\n"),
             std::string::npos)
       << aLog.Text();
}

TEST(Part10FileOutputStream, TellsWhyAFileDoesNotOpen)
{
   const CapturedErrorLog aLog;
   EXPECT_EQ(
       StreamErrorOf([] { Part10FileOutputStream("/nowhere/x", new Part10Header(MakeHeader())); }),
       (StreamError{"Part10FileOutputStream::Open(/nowhere/x): File open failed", TN_SYSTEM_CALL_FAILED, ENOENT}));
   EXPECT_NE(aLog.Text().find("Part10FileOutputStream::Open(\"/nowhere/x\"): Unable to open file. errno = 2\n"),
             std::string::npos);
}
} // namespace
