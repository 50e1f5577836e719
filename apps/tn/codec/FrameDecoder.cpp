#include "apps/tn/codec/FrameDecoder.h"

#include "apps/tn/codec/JPEGLosslessDecoder.h"

namespace
{
template <class Decoder>
std::unique_ptr<FrameDecoder> Make(const ImageDescription& theImage)
{
   return std::make_unique<Decoder>(theImage);
}

// Whether the first frame header of a JPEG codestream is that of the lossless process (T.81 B.1.1.3).
bool IsLosslessJPEG(std::span<const unsigned char> theFrame)
{
   constexpr unsigned char kSOF0 = 0xC0, kSOF3 = 0xC3, kDHT = 0xC4, kDAC = 0xCC, kSOF15 = 0xCF;
   std::size_t aPlace = 2;
   while (aPlace + 3 < theFrame.size() && theFrame[aPlace] == 0xFF)
   {
      const unsigned char aMarker = theFrame[aPlace + 1];
      if (aMarker >= kSOF0 && aMarker <= kSOF15 && aMarker != kDHT && aMarker != kDAC)
      {
         return aMarker == kSOF3;
      }
      aPlace += aMarker == 0xFF ? 1 : std::size_t{2} + (theFrame[aPlace + 2] << 8u | theFrame[aPlace + 3]);
   }
   return false;
}

// What the codestream is counts: baseline frames are met with in the lossless syntax.
class AnyJPEGDecoder : public FrameDecoder
{
public:
   explicit AnyJPEGDecoder(const ImageDescription& theImage)
       : FrameDecoder(theImage), itsLossy(theImage), itsLossless(theImage)
   {}

   Colours Decode(std::span<const unsigned char> theFrame, std::span<unsigned char> thePixels) override
   {
      FrameDecoder& aDecoder =
          IsLosslessJPEG(theFrame) ? static_cast<FrameDecoder&>(itsLossless) : static_cast<FrameDecoder&>(itsLossy);
      return aDecoder.Decode(theFrame, thePixels);
   }

private:
   JPEGDecoder itsLossy;
   JPEGLosslessDecoder itsLossless;
};

struct Row
{
   const char* itsUID;
   std::unique_ptr<FrameDecoder> (*itsMake)(const ImageDescription&);
};

// PS3.5 A.4
constexpr Row kDecoders[] = {
    {"1.2.840.10008.1.2.4.50", Make<AnyJPEGDecoder>},  // baseline
    {"1.2.840.10008.1.2.4.51", Make<AnyJPEGDecoder>},  // extended
    {"1.2.840.10008.1.2.4.57", Make<AnyJPEGDecoder>},  // any predictor
    {"1.2.840.10008.1.2.4.70", Make<AnyJPEGDecoder>},  // first-order prediction
    {"1.2.840.10008.1.2.4.80", Make<JPEGLSDecoder>},   // lossless
    {"1.2.840.10008.1.2.4.81", Make<JPEGLSDecoder>},   // near-lossless
    {"1.2.840.10008.1.2.4.90", Make<JPEG2000Decoder>}, // lossless
    {"1.2.840.10008.1.2.4.91", Make<JPEG2000Decoder>}, //
    {"1.2.840.10008.1.2.5", Make<RLEDecoder>},
};

const Row* Find(const RWCString& theSyntaxUID)
{
   for (const Row& aRow : kDecoders)
   {
      if (theSyntaxUID == aRow.itsUID)
      {
         return &aRow;
      }
   }
   return nullptr;
}
} // namespace

FrameDecoder::~FrameDecoder() = default;

bool FrameDecoder::IsServed(const RWCString& theSyntaxUID)
{
   return Find(theSyntaxUID) != nullptr;
}

std::unique_ptr<FrameDecoder> FrameDecoder::New(const RWCString& theSyntaxUID, const ImageDescription& theImage)
{
   const Row* const aRow = Find(theSyntaxUID);
   if (aRow == nullptr)
   {
      FailDecompression("tn has no decoder for transfer syntax " + theSyntaxUID);
   }
   return aRow->itsMake(theImage);
}
