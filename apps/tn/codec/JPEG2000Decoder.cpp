#include <algorithm>
#include <cstring>
#include <memory>

#include <openjpeg.h>

#include "apps/tn/codec/FrameDecoder.h"
#include "talvenor/io/TNEndian.h"

namespace
{
// The bytes of a frame as a stream of OpenJPEG.
struct Source
{
   std::span<const unsigned char> itsBytes;
   std::size_t itsPlace = 0;

   static OPJ_SIZE_T Read(void* theBuffer, OPJ_SIZE_T theCount, void* theSource)
   {
      Source& aSource = *static_cast<Source*>(theSource);
      const std::size_t aCount = std::min<std::size_t>(theCount, aSource.itsBytes.size() - aSource.itsPlace);
      if (aCount == 0)
      {
         return static_cast<OPJ_SIZE_T>(-1);
      }
      std::memcpy(theBuffer, aSource.itsBytes.data() + aSource.itsPlace, aCount);
      aSource.itsPlace += aCount;
      return aCount;
   }

   static OPJ_OFF_T Skip(OPJ_OFF_T theCount, void* theSource)
   {
      Source& aSource = *static_cast<Source*>(theSource);
      const auto aLeft = static_cast<OPJ_OFF_T>(aSource.itsBytes.size() - aSource.itsPlace);
      if (theCount < 0 || aLeft == 0)
      {
         return -1;
      }
      const OPJ_OFF_T aCount = std::min(theCount, aLeft);
      aSource.itsPlace += static_cast<std::size_t>(aCount);
      return aCount;
   }

   static OPJ_BOOL Seek(OPJ_OFF_T thePlace, void* theSource)
   {
      Source& aSource = *static_cast<Source*>(theSource);
      if (thePlace < 0 || static_cast<UINT64>(thePlace) > aSource.itsBytes.size())
      {
         return OPJ_FALSE;
      }
      aSource.itsPlace = static_cast<std::size_t>(thePlace);
      return OPJ_TRUE;
   }
};

template <auto Destroy>
struct Destroyer
{
   template <class Object>
   void operator()(Object* theObject) const
   {
      Destroy(theObject);
   }
};
using Codec = std::unique_ptr<opj_codec_t, Destroyer<opj_destroy_codec>>;
using Stream = std::unique_ptr<opj_stream_t, Destroyer<opj_stream_destroy>>;
using Image = std::unique_ptr<opj_image_t, Destroyer<opj_image_destroy>>;

// What OpenJPEG says first is the cause.
void Note(const char* theText, void* theFault)
{
   std::string& aFault = *static_cast<std::string*>(theFault);
   if (aFault.empty())
   {
      aFault = theText;
      aFault.erase(aFault.find_last_not_of(" \n\r") + 1);
   }
}

bool IsJP2(std::span<const unsigned char> theFrame)
{
   constexpr unsigned char kSignature[] = {0, 0, 0, 0x0C, 'j', 'P', ' ', ' '}; // T.800 I.5.1
   return theFrame.size() > sizeof kSignature && std::memcmp(theFrame.data(), kSignature, sizeof kSignature) == 0;
}

// Looks at the size marker (T.800 A.5.1) before OpenJPEG does, which makes room for every tile and component of it.
void CheckSize(std::span<const unsigned char> theFrame, const ImageDescription& theImage)
{
   constexpr unsigned char kStart[] = {0xFF, 0x4F, 0xFF, 0x51}; // SOC, SIZ
   constexpr std::size_t kLength = 38;                          // from SIZ up to the first component, less its marker
   const auto aStart = std::search(theFrame.begin(), theFrame.end(), std::begin(kStart), std::end(kStart));
   if (static_cast<std::size_t>(theFrame.end() - aStart) < sizeof kStart + kLength)
   {
      FailDecompression("the JPEG 2000 frame is cut, or is none");
   }
   const unsigned char* const aSize = &*aStart + sizeof kStart;
   const auto aNumber = [&](std::size_t thePlace) -> UINT64 {
      return TNEndian::Load<UINT32, TNEndian::BigEndian>(aSize + thePlace);
   };
   constexpr std::size_t kExtent = 4, kOffset = 12, kTile = 20, kTileOffset = 28, kComponents = 36;
   UINT64 aTiles = 1;
   for (const std::size_t anAxis : {std::size_t{0}, std::size_t{4}})
   {
      const UINT64 anEnd = aNumber(kExtent + anAxis);
      const UINT64 aTile = aNumber(kTile + anAxis);
      const UINT64 aFirst = aNumber(kTileOffset + anAxis);
      if (aTile == 0 || aFirst > anEnd || aNumber(kOffset + anAxis) > anEnd)
      {
         FailDecompression("the JPEG 2000 frame is damaged: its size makes no sense");
      }
      aTiles *= (anEnd - aFirst + aTile - 1) / aTile;
   }
   const UINT64 aPixels = UINT64{theImage.itsRows} * theImage.itsColumns;
   constexpr UINT64 kMostTiles = 64;     // whatever the size,
   constexpr UINT64 kLeastPixels = 1024; // and beyond these each with so many pixels
   if (aTiles > kMostTiles + aPixels / kLeastPixels)
   {
      FailDecompression("the JPEG 2000 frame has " + std::to_string(aTiles) + " tiles, too many for its size");
   }
   theImage.CheckAgainst(aNumber(kExtent + 4) - aNumber(kOffset + 4), aNumber(kExtent) - aNumber(kOffset),
                         TNEndian::Load<UINT16, TNEndian::BigEndian>(aSize + kComponents), 1);
}

Stream MakeStream(Source& theSource)
{
   Stream aStream(opj_stream_create(OPJ_J2K_STREAM_CHUNK_SIZE, OPJ_TRUE));
   if (aStream)
   {
      opj_stream_set_user_data(aStream.get(), &theSource, nullptr);
      opj_stream_set_user_data_length(aStream.get(), theSource.itsBytes.size());
      opj_stream_set_read_function(aStream.get(), Source::Read);
      opj_stream_set_skip_function(aStream.get(), Source::Skip);
      opj_stream_set_seek_function(aStream.get(), Source::Seek);
   }
   return aStream;
}

void CheckComponents(const opj_image_t& theImage, const ImageDescription& theDescription)
{
   for (UINT32 i = 0; i < theImage.numcomps; ++i)
   {
      const opj_image_comp_t& aComponent = theImage.comps[i];
      theDescription.CheckAgainst(aComponent.h, aComponent.w, theImage.numcomps, aComponent.prec);
      if (aComponent.dx != 1 || aComponent.dy != 1)
      {
         FailDecompression("the components of the JPEG 2000 frame have different sizes, which is not served");
      }
   }
}

bool HasColourTransform(opj_codec_t* theCodec)
{
   opj_codestream_info_v2_t* anInfo = opj_get_cstr_info(theCodec);
   const bool hasTransform = anInfo != nullptr && anInfo->m_default_tile_info.mct != 0;
   opj_destroy_cstr_info(&anInfo);
   return hasTransform;
}
} // namespace

FrameDecoder::Colours JPEG2000Decoder::Decode(std::span<const unsigned char> theFrame,
                                              std::span<unsigned char> thePixels)
{
   CheckSize(theFrame, itsImage);
   std::string aFault;
   const auto aRequire = [&](bool theCondition, const char* theText) {
      if (!theCondition)
      {
         FailDecompression(std::string("JPEG 2000: ") + (aFault.empty() ? theText : aFault));
      }
   };
   Source aSource{theFrame};
   const Stream aStream = MakeStream(aSource);
   const Codec aCodec(opj_create_decompress(IsJP2(theFrame) ? OPJ_CODEC_JP2 : OPJ_CODEC_J2K));
   aRequire(aStream && aCodec, "no memory");
   opj_set_error_handler(aCodec.get(), Note, &aFault);
   opj_dparameters_t aParameters;
   opj_set_default_decoder_parameters(&aParameters);
   aRequire(opj_setup_decoder(aCodec.get(), &aParameters), "no decoder");
   aRequire(opj_decoder_set_strict_mode(aCodec.get(), OPJ_TRUE), "no strict decoder"); // cut frames are errors

   opj_image_t* aHeader = nullptr;
   const bool isRead = opj_read_header(aStream.get(), aCodec.get(), &aHeader);
   const Image anImage(aHeader);
   aRequire(isRead && anImage, "the frame has no header");
   CheckComponents(*anImage, itsImage);
   aRequire(opj_decode(aCodec.get(), aStream.get(), anImage.get()) && opj_end_decompress(aCodec.get(), aStream.get()),
            "the frame is damaged");
   CheckComponents(*anImage, itsImage);
   for (UINT32 aSample = 0; aSample < anImage->numcomps; ++aSample)
   {
      const opj_image_comp_t& aComponent = anImage->comps[aSample];
      aRequire(aComponent.data != nullptr, "a component has no samples");
      SampleCells aCells(itsImage, aComponent.prec, thePixels.data());
      const std::size_t aCount = std::size_t{itsImage.itsRows} * itsImage.itsColumns;
      for (std::size_t aPixel = 0; aPixel < aCount; ++aPixel)
      {
         aCells.Put(aPixel * itsImage.itsSamples + aSample, static_cast<UINT32>(aComponent.data[aPixel]));
      }
   }
   const bool isTransformed = itsImage.itsPhotometric == "YBR_RCT" || itsImage.itsPhotometric == "YBR_ICT" ||
                              (itsImage.IsYBR() && HasColourTransform(aCodec.get()));
   return itsImage.itsSamples == 3 && isTransformed ? Colours::RGB : Colours::AsDescribed;
}
