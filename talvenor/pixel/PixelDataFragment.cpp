#include "talvenor/pixel/PixelDataFragment.h"

#include <cstring>
#include <string>

#include "talvenor/dataset/AllocatedBytes.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/io/EndianHandlingWriter.h"
#include "talvenor/io/InputStream.h"

namespace
{
constexpr UINT32 kCopyBlock = 65536;

[[noreturn]] void ThrowCut(const char* theMethod, UINT32 theBytesLeft)
{
   const std::string aText = std::string("StreamBufferedPixelDataFragment::") + theMethod +
                             ": EOF before end of input stream (" + std::to_string(theBytesLeft) + " bytes remaining)";
   throw StreamIOException(aText.c_str(), TN_END_OF_FILE, 0);
}
} // namespace

PixelDataFragment::~PixelDataFragment() = default;

MemoryBufferedPixelDataFragment::MemoryBufferedPixelDataFragment(UINT32 theLength, MemoryAllocater& theAllocator)
    : PixelDataFragment(theLength), itsData(static_cast<unsigned char*>(theAllocator.Allocate(theLength))),
      itsAllocator(theAllocator), itsOwnsData(true)
{}

MemoryBufferedPixelDataFragment::MemoryBufferedPixelDataFragment(unsigned char* theData, UINT32 theLength,
                                                                 MemoryAllocater& theAllocator)
    : PixelDataFragment(theLength), itsData(theData), itsAllocator(theAllocator), itsOwnsData(true)
{}

MemoryBufferedPixelDataFragment::MemoryBufferedPixelDataFragment(UINT32 theLength, unsigned char* const& theData,
                                                                 MemoryAllocater& theAllocator)
    : PixelDataFragment(theLength), itsData(theData), itsAllocator(theAllocator), itsOwnsData(false)
{}

MemoryBufferedPixelDataFragment::MemoryBufferedPixelDataFragment(const MemoryBufferedPixelDataFragment& theOther)
    : MemoryBufferedPixelDataFragment(theOther.GetLength(), theOther.itsAllocator)
{
   if (GetLength() != 0)
   {
      std::memcpy(itsData, theOther.itsData, GetLength());
   }
}

MemoryBufferedPixelDataFragment::~MemoryBufferedPixelDataFragment()
{
   if (itsOwnsData)
   {
      itsAllocator.Free(itsData);
   }
}

void MemoryBufferedPixelDataFragment::WriteData(EndianHandlingWriter& theWriter)
{
   if (GetLength() != 0)
   {
      theWriter.Write(itsData, GetLength());
   }
}

StreamBufferedPixelDataFragment::StreamBufferedPixelDataFragment(InputStream& theStream, UINT32 theLength,
                                                                 MemoryAllocater& theAllocator)
    : PixelDataFragment(theLength), itsStream(theStream), itsAllocator(theAllocator)
{}

StreamBufferedPixelDataFragment::StreamBufferedPixelDataFragment(InputStream* theStream, UINT32 theLength,
                                                                 MemoryAllocater& theAllocator)
    : PixelDataFragment(theLength), itsStream(*theStream), itsOwnedStream(theStream), itsAllocator(theAllocator)
{}

StreamBufferedPixelDataFragment::StreamBufferedPixelDataFragment(const StreamBufferedPixelDataFragment& theOther)
    : PixelDataFragment(theOther), itsStream(theOther.itsStream), itsAllocator(theOther.itsAllocator)
{
   if (!theOther.CanGetData())
   {
      throw StreamIOException("StreamBufferedPixelDataFragment::StreamBufferedPixelDataFragment: data has already been "
                              "consumed from stream and is not available internally",
                              TN_INTERNAL_ERROR, 0);
   }
   const unsigned char* const aSource = theOther.GetData();
   if (GetLength() != 0)
   {
      itsData = static_cast<unsigned char*>(itsAllocator.Allocate(GetLength()));
      std::memcpy(itsData, aSource, GetLength());
   }
   itsIsConsumed = true;
}

StreamBufferedPixelDataFragment::~StreamBufferedPixelDataFragment()
{
   itsAllocator.Free(itsData);
}

const unsigned char* StreamBufferedPixelDataFragment::GetData() const
{
   ReadIntoMemory();
   return itsData;
}

unsigned char* StreamBufferedPixelDataFragment::GetData()
{
   ReadIntoMemory();
   return itsData;
}

void StreamBufferedPixelDataFragment::ReadIntoMemory() const
{
   if (GetLength() == 0 || itsData != nullptr)
   {
      return;
   }
   if (itsIsConsumed)
   {
      throw StreamIOException("StreamBufferedPixelDataFragment::GetData(): data has already been consumed from the "
                              "stream and is unavailable in memory",
                              TN_INTERNAL_ERROR, 0);
   }
   itsIsConsumed = true;
   AllocatedBytes aBytes(nullptr, FreeThrough{&itsAllocator});
   const UINT32 aCount = ReadAllocatedBytes(itsStream, GetLength(), itsAllocator, aBytes);
   if (aCount != GetLength())
   {
      ThrowCut("GetData()", GetLength() - aCount);
   }
   itsData = aBytes.release();
}

void StreamBufferedPixelDataFragment::WriteData(EndianHandlingWriter& theWriter)
{
   if (GetLength() == 0)
   {
      return;
   }
   if (itsData != nullptr)
   {
      theWriter.Write(itsData, GetLength());
      return;
   }
   if (itsIsConsumed)
   {
      throw StreamIOException("StreamBufferedPixelDataFragment::WriteData: data has already been consumed from the "
                              "stream and is unavailable in memory",
                              TN_INTERNAL_ERROR, 0);
   }
   itsIsConsumed = true;
   const auto aBlock = std::make_unique_for_overwrite<unsigned char[]>(kCopyBlock);
   for (UINT32 aLeft = GetLength(); aLeft != 0;)
   {
      const UINT32 aCount = itsStream.Read(aBlock.get(), std::min(aLeft, kCopyBlock));
      if (aCount == 0)
      {
         ThrowCut("WriteData()", aLeft);
      }
      theWriter.Write(aBlock.get(), aCount);
      aLeft -= aCount;
   }
}
