// A frame as a complete element.
#include "talvenor/pixel/EncapsulatedPixelDataWrapperInputStream.h"

#include "support/EncapsulatedBytes.h"

namespace
{
const Bytes kHeader = {0xE0, 0x7F, 0x10, 0x00, 'O', 'B', 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0xFF};

TEST(EncapsulatedPixelDataWrapperInputStream, IsAnElement)
{
   const struct
   {
      Bytes itsFrame;
      Bytes itsFragment;
   } kCases[] = {{{}, {}}, {{1}, {1, 0xEE}}, {{1, 2, 3, 4}, {1, 2, 3, 4}}, {{1, 2, 3}, {1, 2, 3, 0xEE}}};
   for (const auto& aCase : kCases)
   {
      const auto aLength = static_cast<unsigned int>(aCase.itsFrame.size());
      SCOPED_TRACE(aLength);
      const Bytes anElement = kHeader + Table({0}) + Item(aCase.itsFragment) + kEndOfItems;
      for (const unsigned int aBlock : {1u, 7u, 100u})
      {
         auto aSource = std::make_unique<PiecewiseInputStream>(aCase.itsFrame + Bytes{9, 9}, 2);
         EncapsulatedPixelDataWrapperInputStream aStream(aSource.release(), aLength, 0xEE);
         EXPECT_EQ(aStream.Length(), static_cast<INT64>(anElement.size()));
         EXPECT_EQ(ReadToEnd(aStream, aBlock), anElement);
         EXPECT_EQ(StreamErrorOf([&] { aStream.Seek(0); }),
                   (StreamError{"Underlying InputStream does not support Seek(size_t)", TN_UNSUPPORTED, 0}));
      }
      // the frame does not begin with the source
      const Bytes aFile = Bytes{7, 7, 7} + aCase.itsFrame + Bytes{9, 9};
      MemoryInputStream aSource(aFile.data(), static_cast<unsigned int>(aFile.size()));
      aSource.Seek(3);
      EncapsulatedPixelDataWrapperInputStream aStream(aSource, aLength, 0xEE);
      for (std::size_t i = anElement.size() + 1; i-- > 0;)
      {
         aStream.Seek(static_cast<unsigned int>(i));
         EXPECT_EQ(ReadToEnd(aStream), Bytes(anElement.begin() + static_cast<std::ptrdiff_t>(i), anElement.end())) << i;
      }
      aStream.Seek(0xFFFFFFFF);
      EXPECT_EQ(aStream.GetStreamPosition(), anElement.size());
   }
}

TEST(EncapsulatedPixelDataWrapperInputStream, SeeksBeyond4GiBBySkipping)
{
   class Far : public InputStream
   {
   public:
      unsigned int Read(unsigned char*, unsigned int) override { return 0; }
      unsigned int Skip(unsigned int theCount) override
      {
         itsPosition += theCount;
         return theCount;
      }
      void Seek(unsigned int thePosition) override { itsPosition = thePosition; }
      int CanSeek() const override { return 1; }
      unsigned int GetStreamPosition() const override { return static_cast<unsigned int>(itsPosition); }
      void Close() override {}

      UINT64 itsPosition = 0xFFFFFFF0;
   } aSource;
   EncapsulatedPixelDataWrapperInputStream aStream(aSource, 1000, 0);
   aStream.Seek(32 + 100);
   EXPECT_EQ(aSource.itsPosition, 0x100000054u);
   aStream.Seek(0);
   EXPECT_EQ(aSource.itsPosition, 0xFFFFFFF0u);
}

TEST(EncapsulatedPixelDataWrapperInputStream, TellsWhatTheSourceDidNotSupply)
{
   PiecewiseInputStream aSource({1, 2});
   EncapsulatedPixelDataWrapperInputStream aStream(aSource, 5, 0);
   EXPECT_EQ(StreamErrorOf([&] { ReadToEnd(aStream); }),
             (StreamError{"EncapsulatedPixelDataWrapperInputStream::Read: EOF on wrapped input stream before all "
                          "specified data bytes supplied - Remaining Length, Remaining Fragment Length = 3, 4",
                          TN_INTERNAL_ERROR, 0}));
   EXPECT_THROW(EncapsulatedPixelDataWrapperInputStream(aSource, 0xFFFFFFFF, 0), StreamIOException);
}
} // namespace
