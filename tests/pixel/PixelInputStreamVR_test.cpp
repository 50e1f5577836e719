// Native pixel data that is still in the stream, and one fragment of encapsulated pixel data: views that go forward.
#include "talvenor/pixel/PixelInputStreamVR.h"

#include <gtest/gtest.h>

#include "support/Decoding.h"
#include "support/MessageOf.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/foundation/Exceptions.h"
#include "talvenor/io/EndianHandlingReader.h"
#include "talvenor/io/MemoryStreams.h"

namespace
{
const Bytes kBytes = {1, 2, 3, 4, 5, 6, 7, 8};

// A native pixel element of theLength bytes over kBytes.
struct Native
{
   explicit Native(UINT32 theLength, UINT16 theType = VRCode::OB, unsigned int thePieceSize = 0xFFFFFFFF,
                   TNEndian::EndianType theEndian = TNEndian::LittleEndian)
       : itsStream(kBytes, thePieceSize), itsReader(itsStream, theEndian), itsPixels(itsReader, theLength, theType)
   {}

   PiecewiseInputStream itsStream;
   EndianHandlingReader itsReader;
   PixelInputStreamVRImpl itsPixels;
};

// The stream, read in pieces of theCount bytes.
std::string ReadAll(InputStream& theStream, unsigned int theCount)
{
   std::string aText;
   Bytes aBuffer(theCount);
   while (const unsigned int aCount = theStream.Read(aBuffer.data(), theCount))
   {
      aText += Hex(aBuffer.data(), aCount);
   }
   return aText;
}

StreamError ReadAgainError()
{
   return {"PixelInputStreamVRImpl::GetVR(): Data partially read from stream already", TN_INTERNAL_ERROR, 0};
}

TEST(PixelInputStreamVRImpl, PresentsAnEvenLength)
{
   const struct
   {
      const char* itsName;
      UINT32 itsLength;
      UINT16 itsType;
      UINT32 itsPresented;
      const char* itsBytes;
      std::size_t itsConsumed;
   } kCases[] = {
       {"even", 4, VRCode::OW, 4, "01020304", 4},
       {"odd", 5, VRCode::OB, 6, "010203040500", 5},
       {"one", 1, VRCode::OB, 2, "0100", 1},
       {"nothing", 0, VRCode::OB, 0, "", 0},
   };
   for (const auto& aCase : kCases)
   {
      for (const unsigned int aPiece : {1u, 2u, 3u, 100u})
      {
         SCOPED_TRACE(aCase.itsName + std::to_string(aPiece));
         Native aNative(aCase.itsLength, aCase.itsType);
         EXPECT_EQ(aNative.itsPixels.GetLength(), aCase.itsPresented);
         EXPECT_EQ(aNative.itsPixels.GetRemaining(), aCase.itsPresented);
         EXPECT_EQ(ReadAll(aNative.itsPixels, aPiece), aCase.itsBytes);
         EXPECT_EQ(aNative.itsStream.Consumed(), aCase.itsConsumed);
         EXPECT_EQ(aNative.itsPixels.GetRemaining(), 0u);

         Native aBuilt(aCase.itsLength, aCase.itsType, aPiece, TNEndian::BigEndian);
         const std::unique_ptr<VR> aVR(aBuilt.itsPixels.GetVR());
         EXPECT_EQ(aVR->GetTypeCode(), aCase.itsType);
         EXPECT_EQ(aVR->GetDataEndian(), TNEndian::BigEndian);
         EXPECT_EQ(Hex(aVR->GetData(), aVR->GetLength()), aCase.itsBytes);
         EXPECT_EQ(aBuilt.itsStream.Consumed(), aCase.itsConsumed);
      }
   }
}

TEST(PixelInputStreamVRImpl, RefusesWordsOfOddLength)
{
   const StreamError anExpected = {
       "PixelInputStreamVRImpl::PixelInputStreamVRImpl: odd length is invalid for data type != 'OB'", TN_INTERNAL_ERROR,
       0};
   for (const UINT16 aType : {VRCode::OW, VRCode::UN, VRCode::None})
   {
      EXPECT_EQ(StreamErrorOf([&] { Native(5, aType); }), anExpected);
   }
}

TEST(PixelInputStreamVRImpl, BuildsAnElementOnlyBeforeTheFirstByteIsRead)
{
   Native aNative(4);
   unsigned char aByte;
   EXPECT_EQ(aNative.itsPixels.Read(&aByte, 0), 0u);
   EXPECT_TRUE(std::unique_ptr<VR>(aNative.itsPixels.GetVR())) << "nothing had been read";
   EXPECT_EQ(StreamErrorOf([&] { aNative.itsPixels.GetVR(); }), ReadAgainError());

   DICOMDataObject anObject;
   PiecewiseInputStream aStream({0xE0, 0x7F, 0x10, 0x00, 'O', 'B', 0, 0, 2, 0, 0, 0, 1, 2});
   const auto aDecoder = MakeDecoder(TransferSyntaxType::TSLEExplicitUID, aStream);
   VR* const aPart = aDecoder->NextVR();
   EXPECT_EQ(aPart->GetAsPixelInputStreamVR()->Read(&aByte, 1), 1u);
   EXPECT_EQ(StreamErrorOf([&] { anObject.Push(aPart); }), ReadAgainError());
   EXPECT_EQ(anObject.Entries(), 0u) << "half an image is none";
}

TEST(PixelInputStreamVRImpl, TellsWhenTheStreamEndsFirst)
{
   Native aNative(10);
   EXPECT_EQ(ReadAll(aNative.itsPixels, 3), "0102030405060708");
   EXPECT_EQ(aNative.itsPixels.GetRemaining(), 2u);
   Native anOdd(9, VRCode::OB);
   EXPECT_EQ(ReadAll(anOdd.itsPixels, 3), "0102030405060708") << "no padding for what is missing";
   Native aBuilt(10);
   EXPECT_EQ(StreamErrorOf([&] { aBuilt.itsPixels.GetVR(); }),
             (StreamError{ShortValue(8, 10, "7fe0, 0010", "OB"), TN_END_OF_FILE, 0}));
}

TEST(PixelInputStreamVRImpl, IsNeitherCopiedNorAssigned)
{
   Native aNative(4);
   Native anOther(2);
   EXPECT_EQ(StreamErrorOf([&] { aNative.itsPixels = anOther.itsPixels; }).itsMessage,
             "PixelInputStreamVRImpl::operator=(): assignment not supported");
}

// The two views, each over 8 bytes of a stream that can seek (which they must not use for going back) or cannot.
class ForwardView : public ::testing::TestWithParam<bool>
{
protected:
   PiecewiseInputStream itsPieces{kBytes};
   MemoryInputStream itsMemory{kBytes.data(), static_cast<unsigned int>(kBytes.size())};
   EndianHandlingReader itsReader{GetParam() ? static_cast<InputStream&>(itsMemory) : itsPieces,
                                  TNEndian::LittleEndian};
   PixelInputStreamVRImpl itsPixels{itsReader, 6, VRCode::OW};
   PixelDataFragmentInputStream itsFragment{itsReader, 6};
};

TEST_P(ForwardView, OfPixelsSeeksAndSkipsForward)
{
   itsPixels.Seek(2);
   EXPECT_EQ(itsPixels.GetStreamPosition(), 2u);
   EXPECT_EQ(itsPixels.Skip(1), 1u);
   unsigned char aByte;
   ASSERT_EQ(itsPixels.Read(&aByte, 1), 1u);
   EXPECT_EQ(aByte, 4);
   EXPECT_EQ(StreamErrorOf([&] { itsPixels.Seek(3); }).itsMessage,
             "PixelInputStreamVRImpl does not support backwards seeking via Seek(size_t)");
   EXPECT_EQ(StreamErrorOf([&] { itsPixels.Seek(7); }).itsMessage,
             "PixelInputStreamVRImpl::Seek(size_t): attempted seek past EOF");
   itsPixels.Seek(6);
   EXPECT_EQ(itsPixels.Read(&aByte, 1), 0u);
   EXPECT_EQ(itsPixels.Skip(5), 0u);
   EXPECT_EQ(ReadAll(itsReader, 8), "0708") << "the stream stands behind the value";
}

TEST_P(ForwardView, OfAFragmentSeeksAndSkipsForward)
{
   itsFragment.Seek(3);
   EXPECT_EQ(itsFragment.GetStreamPosition(), 3u);
   EXPECT_EQ(itsFragment.Length(), 6);
   EXPECT_EQ(itsFragment.GetRemaining(), 3u);
   EXPECT_EQ(StreamErrorOf([&] { itsFragment.Seek(2); }).itsMessage,
             "PixelDataFragmentInputStream does not support backwards seeking via Seek(size_t)");
   EXPECT_EQ(StreamErrorOf([&] { itsFragment.Seek(7); }).itsMessage,
             "PixelDataFragmentInputStream::Seek(size_t): attempted seek past EOF");
   EXPECT_EQ(ReadAll(itsFragment, 2), "040506");
   EXPECT_EQ(itsFragment.Skip(9), 0u);
   EXPECT_EQ(ReadAll(itsReader, 8), "0708");
}

INSTANTIATE_TEST_SUITE_P(OverAStream, ForwardView, ::testing::Bool(),
                         [](const auto& theInfo) { return theInfo.param ? "ThatSeeks" : "ThatDoesNot"; });

TEST(PixelInputStreamVRImpl, SkipsThePadByteThatIsNotThere)
{
   Native aNative(5);
   aNative.itsPixels.Seek(6);
   EXPECT_EQ(aNative.itsStream.Consumed(), 5u);
   EXPECT_EQ(aNative.itsPixels.GetRemaining(), 0u);
}

TEST(PixelDataFragmentInputStream, IsLittleEndian)
{
   PiecewiseInputStream aStream(kBytes);
   EndianHandlingReader aReader(aStream, TNEndian::BigEndian);
   EXPECT_EQ(MessageOf<ConstructorError>([&] { PixelDataFragmentInputStream aFragment(aReader, 2); }),
             "PixelDataFragmentInputStream::PixelDataFragmentInputStream: Attempt to construct "
             "encapsulated PixelDataFragmentInputStream with syntax other than Little endian");
}
} // namespace
