#include "talvenor/pixel/BasicOffsetTable.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/io/MemoryStreams.h"
#include "talvenor/io/TNEndian.h"
#include "talvenor/pixel/PixelDataFragment.h"

namespace
{
constexpr UINT32 kOffsetSize = 4;
constexpr UINT32 kItemHeaderSize = 8;
constexpr UINT32 kEntriesInBlock = 16384;

[[noreturn]] void Throw(const std::string& theText, TNResultCode theCode = TN_INTERNAL_ERROR)
{
   throw StreamIOException(("BasicOffsetTable::Init" + theText).c_str(), theCode, 0);
}

// In blocks, so that memory grows with what arrives.
RWTValOrderedVector<UINT32> ReadOffsets(InputStream& theStream, UINT32 theCount)
{
   RWTValOrderedVector<UINT32> anOffsets;
   std::vector<unsigned char> aBlock(kOffsetSize * std::min(theCount, kEntriesInBlock));
   while (anOffsets.size() < theCount)
   {
      const UINT32 anEntries = std::min(theCount - static_cast<UINT32>(anOffsets.size()), kEntriesInBlock);
      if (theStream.ReadFully(aBlock.data(), anEntries * kOffsetSize) != anEntries * kOffsetSize)
      {
         Throw(": unexpected failure while reading offset table");
      }
      for (UINT32 anEntry = 0; anEntry < anEntries; ++anEntry)
      {
         anOffsets.push_back(LoadUINT32<TNEndian::LittleEndian>(aBlock.data() + size_t{anEntry} * kOffsetSize));
      }
   }
   return anOffsets;
}
} // namespace

BasicOffsetTable::BasicOffsetTable(INT32 theFrameCount) : itsFrameCount(std::max(theFrameCount, 0)) {}

void BasicOffsetTable::Init(const RWTValOrderedVector<UINT32>& theFragmentLengths,
                            const RWTValOrderedVector<INT32>& theStartIndices)
{
   const std::string aMethod = "(const size_t*, const int*): ";
   const auto aFrameCount = static_cast<size_t>(itsFrameCount);
   if (theStartIndices.size() < aFrameCount)
   {
      Throw(aMethod + "indices for " + std::to_string(theStartIndices.size()) + " of " + std::to_string(aFrameCount) +
            " frames");
   }
   RWTValOrderedVector<UINT32> anOffsets;
   UINT64 anOffset = 0;
   INT32 aFragment = 0;
   for (size_t aFrame = 0; aFrame < aFrameCount; ++aFrame)
   {
      const INT32 aStart = theStartIndices[aFrame];
      if (aFrame == 0 && aStart != 0)
      {
         Throw(aMethod + "invalid indices table - first entry not 0");
      }
      if (aStart < aFragment || static_cast<size_t>(aStart) > theFragmentLengths.size())
      {
         Throw(aMethod + "invalid indices table - entry " + std::to_string(aFrame) + " is " + std::to_string(aStart));
      }
      for (; aFragment < aStart; ++aFragment)
      {
         anOffset += UINT64{kItemHeaderSize} + theFragmentLengths[static_cast<size_t>(aFragment)];
      }
      if (anOffset >= kUnknownOffset)
      {
         Throw(aMethod + "offset of frame " + std::to_string(aFrame) + " does not fit 32 bits");
      }
      anOffsets.push_back(static_cast<UINT32>(anOffset));
   }
   itsOffsets = std::move(anOffsets);
}

void BasicOffsetTable::Init(InputStream& theStream, UINT32 theLength)
{
   if (theLength == 0)
   {
      itsOffsets.assign(itsFrameCount == 1 ? 1 : 0, 0);
      return;
   }
   const auto aFrameCount = static_cast<UINT32>(itsFrameCount);
   if (theLength / kOffsetSize != aFrameCount)
   {
      Throw(": invalid table - number of entries != number of frames", TN_INVALID_ENCODING);
   }
   itsOffsets = ReadOffsets(theStream, aFrameCount);
}

void BasicOffsetTable::Init(const unsigned char* theBytes, UINT32 theLength)
{
   MemoryInputStream aStream(theBytes, theLength);
   Init(aStream, theLength);
}

UINT32 BasicOffsetTable::GetOffset(INT32 theFrame) const
{
   if (theFrame == 0)
   {
      return 0;
   }
   const bool isKnown = theFrame > 0 && static_cast<size_t>(theFrame) < itsOffsets.size();
   return isKnown ? itsOffsets[static_cast<size_t>(theFrame)] : kUnknownOffset;
}

MemoryBufferedPixelDataFragment* BasicOffsetTable::GetAsPixelDataFragment() const
{
   const UINT64 aLength = UINT64{kOffsetSize} * static_cast<UINT32>(itsFrameCount);
   if (aLength > 0xFFFFFFFF)
   {
      throw StreamIOException("BasicOffsetTable::GetAsPixelDataFragment: too many frames for an offset table",
                              TN_INTERNAL_ERROR, 0);
   }
   auto aFragment = std::make_unique<MemoryBufferedPixelDataFragment>(static_cast<UINT32>(aLength));
   unsigned char* const aBytes = aFragment->GetData();
   if (IsEmpty())
   {
      std::fill_n(aBytes, aLength, static_cast<unsigned char>(0));
   }
   for (size_t aFrame = 0; aFrame < itsOffsets.size(); ++aFrame)
   {
      TNEndian::Store(aBytes + aFrame * kOffsetSize, itsOffsets[aFrame], TNEndian::LittleEndian);
   }
   return aFragment.release();
}

bool BasicOffsetTable::operator==(const BasicOffsetTable& theOther) const
{
   return itsOffsets == theOther.itsOffsets; // one for each frame: equal offsets are of equally many frames
}
