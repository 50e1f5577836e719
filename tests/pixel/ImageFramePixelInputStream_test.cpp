// The view on one frame.
#include "talvenor/pixel/ImageFramePixelInputStream.h"

#include "support/EncapsulatedBytes.h"
#include "talvenor/io/BufferingInputStream.h"

namespace
{
TEST(ImageFramePixelInputStream, ReadsWhatIsRecordedAndThenTheStream)
{
   PiecewiseInputStream aSource({1, 2, 3, 4, 5, 6, 7, 8}, 3);
   BufferingInputStream aRecording(aSource);
   aRecording.Skip(4);
   ImageFramePixelInputStream aFrame(aRecording, 6);
   EXPECT_EQ(aFrame.GetInitialLength(), 6u);
   aFrame.Seek(1);
   EXPECT_EQ(StreamErrorOf([&] { aFrame.Seek(0); }),
             (StreamError{"ImageFramePixelInputStream does not support backwards seeking via Seek(size_t)",
                          TN_UNSUPPORTED, 0}));
   EXPECT_EQ(StreamErrorOf([&] { aFrame.Seek(7); }),
             (StreamError{"ImageFramePixelInputStream::Seek(size_t): attempted seek past EOF", TN_END_OF_FILE, 0}));
   ImageFramePixelInputStream aCopy(aFrame);
   EXPECT_EQ(ReadToEnd(aFrame, 2), (Bytes{2, 3, 4, 5, 6}));
   EXPECT_EQ(aCopy.GetRemainingBytes(), 0u) << "the same view";
   EXPECT_EQ(aRecording.GetBufferedBytesAvailable(), 0u) << "what is read onward is not recorded";

   ImageFramePixelInputStream aNext(aRecording, 0x100000000);
   aNext.Flush();
   EXPECT_EQ(aSource.Consumed(), 8u);
   EXPECT_EQ(aNext.GetRemainingBytes(), 0xFFFFFFFEu) << "the stream ended before the frame";
}
} // namespace
