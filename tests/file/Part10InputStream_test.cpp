// Reading the start of a file (PS3.10 7.1), and the arithmetic of positions.
#include "talvenor/file/Part10InputStream.h"

#include <algorithm>
#include <gtest/gtest.h>

#include "support/Elements.h"
#include "support/FileBytes.h"
#include "support/StreamErrors.h"
#include "talvenor/transfer/InputTransferSyntax.h"
#include "talvenor/transfer/TransferSyntaxType.h"

namespace
{
const std::string kOpen = "Part10InputStream::Open(): ";
const std::string kDatasetElement = Bytes("\x08\x00\x60\x00"
                                          "CS\x02\x00"
                                          "CT");

StreamError OpenError(const std::string& theBytes, int theForceVersion = 0, int theTolerant = 0)
{
   return StreamErrorOf([&] { OpenBytes(theBytes, theForceVersion, theTolerant); });
}

const StreamError kNone{"(nothing was thrown)", TN_NO_ERROR};

TEST(Part10InputStream, SmallFiles)
{
   const std::string aFile = kPreambleAndMagic + std::string(12, '\0');
   for (const unsigned int aSize : {0, 1, 8})
   {
      EXPECT_EQ(OpenError(aFile.substr(0, aSize)),
                (StreamError{kOpen + "File less than 8 bytes long", TN_PARSE_TO_OBJECT_FAILED}))
          << aSize;
   }
   for (const unsigned int aSize : {9, 127, 128, 131, 132, 133, 143})
   {
      const std::string aStart = aFile.substr(0, aSize);
      const auto aStream = OpenBytes(aStart);
      EXPECT_EQ(aStream->GetPart10Header(), nullptr) << aSize;
      EXPECT_EQ(aStream->GetTransferSyntaxUID(), "1.2.840.10008.1.2") << aSize;
      EXPECT_EQ(ReadText(*aStream, 200), aStart) << aSize;
   }
   EXPECT_EQ(OpenError(aFile),
             (StreamError{kOpen + "read header: Group 2 group length code missing", TN_PARSE_TO_OBJECT_FAILED}));
}

TEST(Part10InputStream, GuessesTheTransferSyntaxOfABareDataset)
{
   const std::string kImplicit = "1.2.840.10008.1.2", kLittle = "1.2.840.10008.1.2.1", kBig = "1.2.840.10008.1.2.2";
   const struct
   {
      const char* itsName;
      std::string itsBytes;
      std::string itsExpected;
   } kCases[] = {
       {"little explicit", Bytes("\x08\x00\x05\x00UI\x0A\x00"), kLittle},
       {"little implicit", Bytes("\x08\x00\x05\x00\x0A\x00\x00\x00"), kImplicit},
       {"big explicit", Bytes("\x00\x08\x00\x05UI\x00\x0A"), kBig},
       {"big without VR", Bytes("\x00\x08\x00\x05\x00\x00\x00\x0A"), kImplicit},
       {"equal bytes are little", Bytes("\x08\x08\x05\x00UI\x0A\x00"), kLittle},
       {"group length, big", Bytes("\x00\x00\x00\x00UL\x00\x04"), kBig},
       {"group length, little", Bytes("\x00\x00\x00\x00UL\x04\x00"), kLittle},
       {"group length, equal length bytes", Bytes("\x00\x00\x00\x00UL\x00\x00"), kLittle},
       {"group 0, little", Bytes("\x00\x00\x02\x00UI\x0A\x00"), kLittle},
       {"group 0, big", Bytes("\x00\x00\x00\x02UI\x00\x0A"), kBig},
       {"group 0, implicit", Bytes("\x00\x00\x02\x00\x0A\x00\x00\x00"), kImplicit},
       {"element 0100, little explicit", Bytes("\x08\x00\x00\x01SH\x02\x00"), kLittle},
       {"small letters", Bytes("\x08\x00\x05\x00ui\x0A\x00"), kImplicit},
       {"no such VR", Bytes("\x08\x00\x05\x00ZZ\x0A\x00"), kImplicit},
   };
   for (const auto& aCase : kCases)
   {
      EXPECT_EQ(OpenBytes(aCase.itsBytes + "xx")->GetTransferSyntaxUID(), aCase.itsExpected) << aCase.itsName;
   }
}

TEST(Part10InputStream, ReadsTheMetaInformation)
{
   const std::string aName = ShortElement(Bytes("\x02\x00\x13\x00"), "SH", "A NAME");
   std::string aHeader = FileHeader(kExplicitLittle) + aName;
   aHeader.replace(0, 4, Bytes("II*\0")); // a preamble may be that of another format
   const auto aStream = OpenBytes(aHeader + kDatasetElement);
   ASSERT_NE(aStream->GetPart10Header(), nullptr);
   EXPECT_EQ(std::string(reinterpret_cast<const char*>(aStream->GetPart10Header()->GetPreamble()), 4), Bytes("II*\0"));
   EXPECT_EQ(aStream->GetTransferSyntaxUID(), "1.2.840.10008.1.2.1");
   EXPECT_EQ(aStream->GetPart10Header()->GetSOPInstanceUID(), "1.22.3");
   EXPECT_EQ(aStream->GetPart10Header()->GetVersion(), 1);
   EXPECT_EQ(aStream->GetHeaderSize(), aHeader.size());
   EXPECT_EQ(aStream->GetStreamPosition(), aHeader.size());
   EXPECT_EQ(TextOf(*aStream->GetMetaInformation(), 0x00020013), "A NAME");
   EXPECT_EQ(ReadText(*aStream, 100), kDatasetElement);
}

TEST(Part10InputStream, MetaInformationMayEndTheFile)
{
   for (const std::string& aTail : {std::string(), std::string("\x02"), std::string("\x08")})
   {
      const auto aStream = OpenBytes(FileHeader(kExplicitLittle) + aTail);
      ASSERT_NE(aStream->GetPart10Header(), nullptr);
      EXPECT_EQ(ReadText(*aStream, 10), aTail);
   }
}

// An element in implicit VR (PS3.5 7.1.3).
std::string ImplicitElement(const std::string& theTag, const std::string& theValue)
{
   return theTag + static_cast<char>(theValue.size()) + Bytes("\0\0\0") + theValue;
}

TEST(Part10InputStream, MetaInformationMayBeImplicit)
{
   const std::string aHeader = kPreambleAndMagic + ImplicitElement(Bytes("\x02\x00\x00\x00"), Bytes("\x50\0\0\0")) +
                               ImplicitElement(Bytes("\x02\x00\x01\x00"), "\x07\x07") +
                               ImplicitElement(Bytes("\x02\x00\x10\x00"), kExplicitLittle) +
                               ImplicitElement(Bytes("\x02\x00\x12\x00"), "1.22.5");
   const auto aStream = OpenBytes(aHeader + kDatasetElement, 0, 1);
   EXPECT_EQ(aStream->GetTransferSyntaxUID(), "1.2.840.10008.1.2.1");
   EXPECT_EQ(aStream->GetPart10Header()->GetVersion(), 0x0001); // whatever the element says
   EXPECT_EQ(aStream->GetPart10Header()->GetImplementationClassUID(), "1.22.5");
   EXPECT_EQ(aStream->GetHeaderSize(), aHeader.size());
   EXPECT_EQ(ReadText(*aStream, 100), kDatasetElement);

   const std::string aBadLength = kPreambleAndMagic + ImplicitElement(Bytes("\x02\x00\x00\x00"), Bytes("\x50\0")) +
                                  ImplicitElement(Bytes("\x02\x00\x10\x00"), kExplicitLittle);
   EXPECT_EQ(OpenError(aBadLength), (StreamError{kOpen + "read header: Error accessing group 2 group length code",
                                                 TN_PARSE_TO_OBJECT_FAILED}));
}

TEST(Part10InputStream, TheGroupLengthIsNotTrusted)
{
   for (const std::string& aLength :
        {Bytes("\0\0\0\0"), Bytes("\x29\0\0\0"), Bytes("\xFF\xFF\xFF\x7F"), Bytes("\xFF\xFF\xFF\xFF")})
   {
      std::string aHeader = FileHeader(kExplicitLittle);
      aHeader.replace(140, 4, aLength);
      const auto aStream = OpenBytes(aHeader + kDatasetElement);
      EXPECT_EQ(aStream->GetHeaderSize(), aHeader.size());
   }
}

TEST(Part10InputStream, SaysWhatIsWrongWithTheMetaInformation)
{
   const std::string kNoVersion =
       kGroupLength + kSOPClass + kSOPInstance + TransferSyntaxElement(kExplicitLittle) + kImplementation;
   const struct
   {
      std::string itsElements; // after "DICM"
      std::string itsText;
      bool itsTolerantWorks;
   } kCases[] = {
       {kVersion + kSOPClass, "read header: Group 2 group length code missing", false},
       {kGroupLength + kDatasetElement, "read header: Non-group-2 data element in file meta information", false},
       {kNoVersion, "Invalid Part10 header: Missing/bad FileMetaInformationVersion", true},
   };
   for (const auto& aCase : kCases)
   {
      const StreamError anError{kOpen + aCase.itsText, TN_PARSE_TO_OBJECT_FAILED};
      EXPECT_EQ(OpenError(kPreambleAndMagic + aCase.itsElements), anError);
      EXPECT_EQ(OpenError(kPreambleAndMagic + aCase.itsElements, 0, 1), aCase.itsTolerantWorks ? kNone : anError);
   }
   EXPECT_EQ(OpenError(kPreambleAndMagic + kNoVersion, 1), kNone) << "not asked for when it is forced";
}

TEST(Part10InputStream, DecoderIsThatOfTheTransferSyntax)
{
   EXPECT_EQ(OpenBytes(FileHeader(kExplicitBig))->CreateDecoder()->GetTransferSyntaxType().GetUID(),
             "1.2.840.10008.1.2.2");
   const auto aStream = OpenBytes(FileHeader("1.2.840.10008.1.2.1.99")); // deflated
   EXPECT_EQ(StreamErrorOf([&] { aStream->CreateDecoder(); }),
             (StreamError{"Unknown transfer syntax type: 1.2.840.10008.1.2.1.99", TN_TRANSFER_SYNTAX_UNSUPPORTED}));
}

// A source of any length: the byte at a position is its lowest eight bits. Starts after the header of a file without
// meta information, with nothing pushed back.
class EndlessStream : public Part10InputStream
{
public:
   explicit EndlessStream(UINT64 theLength, int theCanSeek = 1) : itsLength(theLength), itsCanSeek(theCanSeek)
   {
      Part10InputStream::Open(0, 0);
      ReadText(*this, 144);
      itsReads.clear();
   }
   int CanSeek() const override { return itsCanSeek; }
   void Close() override { Part10InputStream::Close(); }
   UINT32 GetFileSize() const override { return 0xFFFFFFFF; }

   UINT64 itsSourcePosition = 0;
   std::vector<unsigned int> itsReads;
   std::vector<unsigned int> itsSeeks;

protected:
   unsigned int ReadImpl(unsigned char* theBuffer, unsigned int theCount) override
   {
      itsReads.push_back(theCount);
      const auto aCount =
          static_cast<unsigned int>(std::min<UINT64>(theCount, itsLength - std::min(itsSourcePosition, itsLength)));
      for (unsigned int i = 0; i < aCount; ++i)
      {
         theBuffer[i] = static_cast<unsigned char>(itsSourcePosition++);
      }
      return aCount;
   }
   void SeekImpl(unsigned int thePosition) override
   {
      itsSeeks.push_back(thePosition);
      itsSourcePosition = thePosition;
   }

private:
   UINT64 itsLength;
   int itsCanSeek;
};

TEST(Part10InputStream, PushbackGoesInFrontUpToItsLimits)
{
   EndlessStream aStream(1000);
   ReadText(aStream, 300);
   const auto aPushback = [&](const std::string& theBytes) {
      aStream.Pushback(reinterpret_cast<const unsigned char*>(theBytes.data()),
                       static_cast<unsigned int>(theBytes.size()));
   };
   aPushback("last");
   aPushback("first");
   EXPECT_EQ(aStream.GetStreamPosition(), 435u);
   EXPECT_EQ(aStream.GetPushbackLimit(), 247u);
   EXPECT_EQ(ReadText(aStream, 10), std::string("firstlast") + static_cast<char>(444 & 0xFF));

   aPushback(std::string(200, 'x'));
   EXPECT_EQ(StreamErrorOf([&] { aPushback(std::string(200, 'x')); }),
             (StreamError{"Part10InputStream::Pushback: Pushback limit exceeded", TN_INTERNAL_ERROR}));
   aPushback(std::string(56, 'y'));
   EXPECT_EQ(aStream.GetPushbackLimit(), 0u);
   EXPECT_EQ(ReadText(aStream, 256), std::string(56, 'y') + std::string(200, 'x'));

   aStream.Seek(5);
   EXPECT_EQ(
       StreamErrorOf([&] { aPushback("123456"); }),
       (StreamError{"Part10InputStream::Pushback: Pushback length > current stream position", TN_INTERNAL_ERROR}));
   aPushback("12345");
   EXPECT_EQ(aStream.GetStreamPosition(), 0u);
}

TEST(Part10InputStream, SeeksThroughWhatIsPushedBackOrInTheSource)
{
   const struct
   {
      const char* itsName;
      unsigned int itsTarget; // from position 140, with 4 bytes pushed back
      bool itsSeeksSource;
      std::string itsNext;
   } kCases[] = {
       {"where it is", 140, false, "abcd"},
       {"inside", 142, false, "cd\x90\x91"},
       {"to the end", 144, false, "\x90\x91\x92\x93"},
       {"beyond", 145, true, "\x91\x92\x93\x94"},
       {"back", 139, true, "\x8B\x8C\x8D\x8E"},
   };
   for (const auto& aCase : kCases)
   {
      EndlessStream aStream(1000);
      aStream.Pushback(reinterpret_cast<const unsigned char*>("abcd"), 4);
      aStream.Seek(aCase.itsTarget);
      EXPECT_EQ(aStream.GetStreamPosition(), aCase.itsTarget) << aCase.itsName;
      EXPECT_EQ(!aStream.itsSeeks.empty(), aCase.itsSeeksSource) << aCase.itsName;
      EXPECT_EQ(ReadText(aStream, 4), aCase.itsNext) << aCase.itsName;
   }
}

TEST(Part10InputStream, SkipsBySeekingOrElseByReadingInBlocks)
{
   EndlessStream aReading(10000, 0);
   EXPECT_EQ(aReading.Skip(5000), 5000u);
   EXPECT_EQ(aReading.itsReads, (std::vector<unsigned int>{2048, 2048, 904}));
   EXPECT_EQ(aReading.Skip(0xFFFFFFFF), 10000u - 5144u); // the end of the source
   EXPECT_EQ(aReading.GetStreamPosition(), 10000u);

   EndlessStream aSeeking(10000);
   EXPECT_EQ(aSeeking.Skip(5000), 5000u);
   EXPECT_EQ(aSeeking.Skip(0), 0u);
   EXPECT_EQ(aSeeking.Skip(20000), 20000u);
   EXPECT_EQ(aSeeking.itsSeeks, (std::vector<unsigned int>{5144, 25144}));
   EXPECT_EQ(aSeeking.GetStreamPosition(), 25144u);
}

TEST(Part10InputStream, GoesOnBeyondFourGigabytes)
{
   EndlessStream aStream(0x1'0000'2000);
   aStream.Seek(0xFFFFFFF0);
   EXPECT_EQ(aStream.Skip(0x30), 0x30u); // no seek to 0x20
   EXPECT_EQ(aStream.itsSeeks, (std::vector<unsigned int>{0xFFFFFFF0}));
   EXPECT_EQ(aStream.itsSourcePosition, 0x1'0000'0020u);
   EXPECT_EQ(aStream.GetStreamPosition(), 0x20u); // modulo 2^32

   // Bytes from both sides of the border are pushed back.
   const std::string aBytes(0x40, 'x');
   aStream.Pushback(reinterpret_cast<const unsigned char*>(aBytes.data()), 0x40);
   EXPECT_EQ(aStream.GetStreamPosition(), 0xFFFFFFE0u);
   EXPECT_EQ(ReadText(aStream, 0x41), aBytes + '\x20');
   EXPECT_EQ(aStream.Skip(0xFFFFFFFF), 0x2000u - 0x21u); // the end
}
} // namespace
