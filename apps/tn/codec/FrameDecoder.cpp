#include "apps/tn/codec/FrameDecoder.h"

#include "apps/tn/codec/JPEGExtendedDecoder.h"
#include "apps/tn/codec/JPEGFrame.h"
#include "apps/tn/codec/JPEGLosslessDecoder.h"

namespace
{
template <class Decoder>
std::unique_ptr<FrameDecoder> Make(const ImageDescription& theImage)
{
   return std::make_unique<Decoder>(theImage);
}

// What the codestream is counts: baseline frames are met with in the lossless syntax.
class AnyJPEGDecoder : public FrameDecoder
{
public:
   explicit AnyJPEGDecoder(const ImageDescription& theImage) : FrameDecoder(theImage) {}

   Colours Decode(std::span<const unsigned char> theFrame, std::span<unsigned char> thePixels) override
   {
      const JPEGFrame::Kind aKind = JPEGFrame::KindOf(theFrame);
      if (aKind.itsProcess == JPEGFrame::kLossless)
      {
         return JPEGLosslessDecoder(itsImage).Decode(theFrame, thePixels);
      }
      if (aKind.itsProcess == JPEGFrame::kExtended && aKind.itsPrecision > 8)
      {
         return JPEGExtendedDecoder(itsImage).Decode(theFrame, thePixels);
      }
      return JPEGDecoder(itsImage).Decode(theFrame, thePixels);
   }
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
