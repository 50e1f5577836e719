// Encapsulated pixel data that is still in the stream (PS3.5 A.4).
#include "talvenor/pixel/PixelDataFragmentInputStreamVR.h"

#include <gtest/gtest.h>

#include "support/CountingAllocater.h"
#include "support/Decoding.h"
#include "support/MessageOf.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/foundation/Exceptions.h"
#include "talvenor/io/EndianHandlingReader.h"
#include "talvenor/pixel/EncapsulatedPixelVR.h"

namespace
{
const Bytes kTable = {
    0xFE, 0xFF, 0x00, 0xE0, // item: the basic offset table
    0x04, 0x00, 0x00, 0x00, // length
    0x00, 0x00, 0x00, 0x00, // the first frame
};
const Bytes kFragment = {
    0xFE, 0xFF, 0x00, 0xE0, // item
    0x06, 0x00, 0x00, 0x00, // length
    1,    2,    3,    4,    5, 6,
};
const Bytes kOdd = {0xFE, 0xFF, 0x00, 0xE0, 0x01, 0x00, 0x00, 0x00, 7};
const Bytes kHeader = {0xE0, 0x7F, 0x10, 0x00, 'O', 'B', 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF};
const Bytes kElement = {0xFC, 0x7F, 0x10, 0x00, 'L', 'O', 0x00, 0x00}; // behind the pixels

// Encapsulated pixel data over theItems, header not included.
struct Encapsulated
{
   explicit Encapsulated(const Bytes& theItems, unsigned int thePieceSize = 0xFFFFFFFF,
                         MemoryAllocater& theAllocator = MemoryAllocater::GetDefault())
       : itsStream(theItems, thePieceSize), itsReader(itsStream, TNEndian::LittleEndian),
         itsPixels(itsReader, VR::kUndefinedLength, VRCode::OB, theAllocator)
   {}

   PiecewiseInputStream itsStream;
   EndianHandlingReader itsReader;
   PixelDataFragmentInputStreamVR itsPixels;
};

StreamError Delimiter(const char* theText)
{
   return {theText, TN_INVALID_DELIMITER, 0};
}

std::string Text(PixelDataFragmentInputStreamVR& thePixels)
{
   DatasetText aText;
   aText.AddElement(thePixels);
   return aText.Text();
}

std::string Text(const EncapsulatedPixelVR& thePixels)
{
   std::string aText;
   for (int i = 1; i <= thePixels.GetFragmentCount(); ++i)
   {
      const PixelDataFragment& aFragment = thePixels.GetFragment(i);
      aText += "[" + Hex(aFragment.GetData(), aFragment.GetLength()) + "]";
   }
   return aText;
}

TEST(PixelDataFragmentInputStreamVR, SaysWhatStandsInPlaceOfAnItem)
{
   const char* const kNoHeader = "Error or EOF while reading encapsulation delimiter";
   const struct
   {
      const char* itsName;
      Bytes itsBytes;
      const char* itsText;
   } kCases[] = {
       {"nothing", {}, kNoHeader},
       {"all but one byte", First(kSequenceDelimiter, 7), kNoHeader},
       {"another element",
        {0x08, 0x00, 0xFE, 0xFF, 0x00, 0x00, 0x00, 0x00},
        "Unexpected attribute - expected encapsulation delimiter (fffe, e000) or (fffe, e0dd) but got 0008, fffe)"},
       {"the end of an item",
        {0xFE, 0xFF, 0x0D, 0xE0, 0x00, 0x00, 0x00, 0x00},
        "Unexpected attribute - expected encapsulation start-of-fragment delimiter (fffe, e000) but got fffe, e00d)"},
       {"an end with a length",
        {0xFE, 0xFF, 0xDD, 0xE0, 0x04, 0x00, 0x00, 0x00},
        "Encapsulation end delimiter (fffe, e0dd) has non-zero length (length should be 0)"},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      Encapsulated aSource(kTable + aCase.itsBytes, 1);
      EXPECT_EQ(StreamErrorOf([&] { Text(aSource.itsPixels); }), Delimiter(aCase.itsText));
      Encapsulated aSkipped(kTable + aCase.itsBytes);
      EXPECT_EQ(StreamErrorOf([&] { aSkipped.itsPixels.SkipToEOF(); }), Delimiter(aCase.itsText));
      Encapsulated aBuilt(kTable + aCase.itsBytes);
      EXPECT_EQ(StreamErrorOf([&] { aBuilt.itsPixels.GetVR(); }), Delimiter(aCase.itsText));
   }
   Encapsulated anEnd(First(kSequenceDelimiter, 4) + Bytes{1, 0, 0, 0});
   EXPECT_THROW(anEnd.itsPixels.NextFragment(), StreamIOException);
   EXPECT_EQ(anEnd.itsPixels.NextFragment(), nullptr) << "an end all the same";
}

TEST(PixelDataFragmentInputStreamVR, KeepsTheCauseOfAStreamThatFails)
{
   class Failing : public InputStream
   {
   public:
      unsigned int Read(unsigned char*, unsigned int) override
      {
         throw StreamIOException("disk", TN_SYSTEM_CALL_FAILED, 5);
      }
      void Close() override {}
   } aStream;
   EndianHandlingReader aReader(aStream, TNEndian::LittleEndian);
   PixelDataFragmentInputStreamVR aPixels(aReader);
   try
   {
      aPixels.NextFragment();
      FAIL();
   }
   catch (const StreamIOException& anException)
   {
      EXPECT_EQ(anException.GetMessage(), "Error or EOF while reading encapsulation delimiter");
      EXPECT_EQ(anException.GetResultCode(), TN_INVALID_DELIMITER);
      ASSERT_NE(anException.GetException(), nullptr);
      EXPECT_EQ(anException.GetException()->GetMessage(), "disk");
   }
}

TEST(PixelDataFragmentInputStreamVR, SkipsToTheElementBehind)
{
   PiecewiseInputStream aStream(kHeader + kTable + kFragment + kOdd + kSequenceDelimiter + kElement);
   const auto aDecoder = MakeDecoder(TransferSyntaxType::TSLEExplicitUID, aStream);
   const std::unique_ptr<VR> aVR(aDecoder->NextVR());
   PixelDataFragmentInputStreamVR& aPixels = *aVR->GetAsPixelDataFragmentInputStreamVR();
   std::unique_ptr<PixelDataFragmentInputStream>(aPixels.NextFragment())->Skip(4);
   aPixels.SkipToEOF();
   EXPECT_EQ(std::unique_ptr<VR>(aDecoder->NextVR())->GetTag(), 0x7FFC0010u);
}

TEST(PixelDataFragmentInputStreamVR, BuildsTheElementOnce)
{
   Encapsulated aSource(kTable + kFragment + kOdd + kSequenceDelimiter);
   const std::unique_ptr<EncapsulatedPixelVR> aBuilt(aSource.itsPixels.GetVR());
   ASSERT_NE(aBuilt, nullptr);
   EXPECT_EQ(aBuilt->GetItemCount(), 3u);
   EXPECT_EQ(aBuilt->GetBasicOffsetTableItem()->GetLength(), 4u);
   EXPECT_EQ(Text(*aBuilt), "[010203040506][07]");
   EXPECT_EQ(aSource.itsPixels.GetVR(), nullptr);

   Encapsulated aBegun(kTable + kFragment + kOdd + kSequenceDelimiter);
   std::unique_ptr<PixelDataFragmentInputStream>(aBegun.itsPixels.NextFragment())->Skip(4);
   EXPECT_EQ(aBegun.itsPixels.GetVR(), nullptr) << "the offset table has been taken";
   EXPECT_EQ(Text(aBegun.itsPixels), "7FE00010 OB fragments [010203040506] [07]") << "the rest can still be read";
}

TEST(PixelDataFragmentInputStreamVR, KeepsWholeFragmentsWhenItFailsMidway)
{
   const struct
   {
      const char* itsName;
      Bytes itsItems;
      UINT32 itsKept;
      StreamError itsError;
   } kCases[] = {
       {"in the offset table",
        First(kTable, 10),
        0,
        {"EOF encountered while reading data in encapsulation fragment 0", TN_END_OF_FILE, 0}},
       {"in the second fragment",
        kTable + kFragment + First(kFragment, 9),
        2,
        {"EOF encountered while reading data in encapsulation fragment 2", TN_END_OF_FILE, 0}},
       {"a fragment of all lengths",
        kTable + Bytes{0xFE, 0xFF, 0x00, 0xE0, 0xFF, 0xFF, 0xFF, 0xFF, 1},
        1,
        {"EOF encountered while reading data in encapsulation fragment 1", TN_END_OF_FILE, 0}},
       {"no delimiter", kTable + kFragment, 2, Delimiter("Error or EOF while reading encapsulation delimiter")},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      CountingAllocater anAllocator;
      {
         Encapsulated aSource(aCase.itsItems, 0xFFFFFFFF, anAllocator);
         std::exception_ptr aFailure;
         const std::unique_ptr<VR> aKept = aSource.itsPixels.Materialise(aFailure);
         ASSERT_NE(aKept, nullptr);
         EXPECT_EQ(aKept->GetAsEncapsulatedPixelVR()->GetItemCount(), aCase.itsKept);
         ASSERT_TRUE(aFailure);
         EXPECT_EQ(StreamErrorOf([&] { std::rethrow_exception(aFailure); }), aCase.itsError);
      }
      EXPECT_EQ(anAllocator.Live(), 0u);
      EXPECT_FALSE(anAllocator.HasSeenStrangers());
      for (const unsigned int aSize : anAllocator.Sizes())
      {
         EXPECT_LE(aSize, 1024u * 1024) << "a length that lies takes no memory";
      }
      DICOMDataObject anObject;
      PiecewiseInputStream aStream(kHeader + aCase.itsItems);
      const auto aDecoder = MakeDecoder(TransferSyntaxType::TSLEExplicitUID, aStream);
      EXPECT_EQ(StreamErrorOf([&] { anObject.Push(aDecoder->NextVR()); }), aCase.itsError);
      EXPECT_EQ(anObject.Entries(), 1u) << "the dataset has what arrived";
   }
}

// The window of an item of defined length holds also for the fragments in it.
TEST(PixelDataFragmentInputStreamVR, EndsWithTheItemAroundIt)
{
   Bytes aBytes = {0x88, 0x00, 0x00, 0x02, 'S',  'Q',  0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF, // icon image sequence
                   0xFE, 0xFF, 0x00, 0xE0, 0x1C, 0x00, 0x00, 0x00};                        // item of 28 bytes
   aBytes = aBytes + kHeader + kTable + First(kFragment, 4) + Bytes{6, 0, 0, 0, 1, 2, 3, 4, 5, 6} + kSequenceDelimiter;
   EXPECT_EQ(Decode(TransferSyntaxType::TSLEExplicitUID, aBytes).itsError,
             Delimiter("Error or EOF while reading encapsulation delimiter"));
}

TEST(PixelDataFragmentInputStreamVR, IsLittleEndianAndDoesNotSeek)
{
   PiecewiseInputStream aStream({});
   EndianHandlingReader aReader(aStream, TNEndian::BigEndian);
   EXPECT_EQ(MessageOf<ConstructorError>([&] { PixelDataFragmentInputStreamVR aPixels(aReader); }),
             "Attempt to construct encapsulated PixelDataFragmentInputStreamVR with syntax "
             "other than Little endian");
   Encapsulated aSource({});
   EXPECT_EQ(StreamErrorOf([&] { aSource.itsPixels.Seek(0); }).itsMessage,
             "PixelDataFragmentInputStreamVR does not support Seek(size_t)");
}
} // namespace
