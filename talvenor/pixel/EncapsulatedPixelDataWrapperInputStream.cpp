#include "talvenor/pixel/EncapsulatedPixelDataWrapperInputStream.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/io/SeekTo.h"
#include "talvenor/io/TNEndian.h"

namespace
{
constexpr UINT32 kFragmentLengthPosition = 28;
constexpr unsigned char kPrefix[] = {
    0xE0, 0x7F, 0x10, 0x00, 'O', 'B', 0, 0, 0xFF, 0xFF, 0xFF, 0xFF, // (7FE0,0010)
    0xFE, 0xFF, 0x00, 0xE0, 4,   0,   0, 0, 0,    0,    0,    0,    // basic offset table
    0xFE, 0xFF, 0x00, 0xE0, 0,   0,   0, 0,                         // fragment, its length is filled in
};
constexpr unsigned char kEnd[] = {0xFE, 0xFF, 0xDD, 0xE0, 0, 0, 0, 0};
} // namespace

EncapsulatedPixelDataWrapperInputStream::EncapsulatedPixelDataWrapperInputStream(
    std::unique_ptr<InputStream> theOwnedSource, InputStream& theSource, UINT32 theLength, unsigned char thePadByte)
    : itsOwnedSource(std::move(theOwnedSource)), itsSource(theSource),
      itsOrigin(theSource.CanSeek() ? theSource.GetStreamPosition() : 0), itsLength(theLength)
{
   static_assert(std::size(kPrefix) == kPrefixLength);
   if (theLength == 0xFFFFFFFF)
   {
      throw StreamIOException("EncapsulatedPixelDataWrapperInputStream: frame too large for a fragment (4294967295 "
                              "bytes)",
                              TN_INTERNAL_ERROR, 0);
   }
   const UINT32 aPadLength = theLength & 1;
   std::copy(std::begin(kPrefix), std::end(kPrefix), itsPrefix);
   StoreUINT32<TNEndian::LittleEndian>(itsPrefix + kFragmentLengthPosition, theLength + aPadLength);
   itsTrailer[0] = thePadByte;
   std::copy(std::begin(kEnd), std::end(kEnd), itsTrailer + aPadLength);
   itsTrailerLength = aPadLength + static_cast<UINT32>(std::size(kEnd));
}

EncapsulatedPixelDataWrapperInputStream::EncapsulatedPixelDataWrapperInputStream(InputStream& theSource,
                                                                                 UINT32 theLength,
                                                                                 unsigned char thePadByte)
    : EncapsulatedPixelDataWrapperInputStream(nullptr, theSource, theLength, thePadByte)
{}

EncapsulatedPixelDataWrapperInputStream::EncapsulatedPixelDataWrapperInputStream(InputStream* theSource,
                                                                                 UINT32 theLength,
                                                                                 unsigned char thePadByte)
    : EncapsulatedPixelDataWrapperInputStream(std::unique_ptr<InputStream>(theSource), *theSource, theLength,
                                              thePadByte)
{}

unsigned int EncapsulatedPixelDataWrapperInputStream::Read(unsigned char* theBuffer, unsigned int theCount)
{
   unsigned int aCount = 0;
   if (itsPosition < kPrefixLength)
   {
      const auto aStart = static_cast<unsigned int>(itsPosition);
      aCount = std::min(theCount, kPrefixLength - aStart);
      std::copy_n(itsPrefix + aStart, aCount, theBuffer);
   }
   else if (itsPosition < GetFrameEnd())
   {
      aCount = ReadFrame(theBuffer, theCount);
   }
   else
   {
      const auto aStart = static_cast<unsigned int>(itsPosition - GetFrameEnd());
      aCount = std::min(theCount, itsTrailerLength - aStart);
      std::copy_n(itsTrailer + aStart, aCount, theBuffer);
   }
   itsPosition += aCount;
   return aCount;
}

unsigned int EncapsulatedPixelDataWrapperInputStream::ReadFrame(unsigned char* theBuffer, unsigned int theCount)
{
   const UINT64 aRest = GetFrameEnd() - itsPosition;
   const auto aWanted = static_cast<unsigned int>(std::min<UINT64>(theCount, aRest));
   const unsigned int aCount = aWanted != 0 ? itsSource.Read(theBuffer, aWanted) : 0;
   if (aCount == 0 && aWanted != 0)
   {
      const std::string aText = "EncapsulatedPixelDataWrapperInputStream::Read: EOF on wrapped input stream before all "
                                "specified data bytes supplied - Remaining Length, Remaining Fragment Length = " +
                                std::to_string(aRest) + ", " + std::to_string(aRest + (itsLength & 1));
      throw StreamIOException(aText.c_str(), TN_INTERNAL_ERROR, 0);
   }
   return aCount;
}

void EncapsulatedPixelDataWrapperInputStream::Seek(unsigned int thePosition)
{
   if (!itsSource.CanSeek())
   {
      throw StreamIOException("Underlying InputStream does not support Seek(size_t)", TN_UNSUPPORTED, 0);
   }
   const UINT64 aPosition = std::min<UINT64>(thePosition, GetTotalLength());
   const UINT64 aDistance = std::clamp<UINT64>(aPosition, kPrefixLength, GetFrameEnd()) - kPrefixLength;
   SeekTo(itsSource, itsOrigin + aDistance);
   itsPosition = aPosition;
}
