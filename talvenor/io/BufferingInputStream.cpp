#include "talvenor/io/BufferingInputStream.h"

#include <algorithm>

#include "talvenor/foundation/StreamIOException.h"

namespace
{

constexpr unsigned int kBlockSize = 8192;

} // namespace

unsigned int BufferingInputStream::Read(unsigned char* theBuffer, unsigned int theCount)
{
   const unsigned int aCount = itsStream.Read(theBuffer, theCount);
   Record(theBuffer, aCount);
   while (!itsBlocks.empty() && itsBytesAvailable - itsBlocks.front().GetBytesAvailable() >= itsRecordingLimit)
   {
      SkipBufferedData(itsBlocks.front().GetBytesAvailable());
   }
   return aCount;
}

void BufferingInputStream::Record(const unsigned char* theBytes, unsigned int theCount)
{
   unsigned int aRecorded = 0;
   while (aRecorded < theCount)
   {
      ByteBuffer& aBlock = BlockWithSpace();
      const unsigned int aPart = std::min(theCount - aRecorded, aBlock.GetAvailableFreeSpace());
      aBlock.CopyIn(theBytes + aRecorded, aPart);
      itsBytesAvailable += aPart;
      aRecorded += aPart;
   }
}

unsigned int BufferingInputStream::Skip(unsigned int theCount)
{
   if (itsRecordingLimit != kNoLimit)
   {
      itsBlocks.clear();
      itsBytesAvailable = 0;
      return itsStream.Skip(theCount);
   }
   unsigned int aSkipped = 0;
   while (aSkipped < theCount)
   {
      ByteBuffer& aBlock = BlockWithSpace();
      const unsigned int aPart =
          itsStream.Read(aBlock.GetCopyInPointer(), std::min(theCount - aSkipped, aBlock.GetAvailableFreeSpace()));
      if (aPart == 0)
      {
         break;
      }
      aBlock.SetBytesCopiedIn(aPart);
      itsBytesAvailable += aPart;
      aSkipped += aPart;
   }
   return aSkipped;
}

ByteBuffer& BufferingInputStream::BlockWithSpace()
{
   if (itsBlocks.empty() || itsBlocks.back().GetAvailableFreeSpace() == 0)
   {
      itsBlocks.emplace_back(kBlockSize);
   }
   return itsBlocks.back();
}

unsigned int BufferingInputStream::ReadBufferedData(unsigned char* theBuffer, unsigned int theCount)
{
   return Replay(theBuffer, theCount);
}

unsigned int BufferingInputStream::SkipBufferedData(unsigned int theCount)
{
   return Replay(nullptr, theCount);
}

unsigned int BufferingInputStream::ReadOnward(unsigned char* theBuffer, unsigned int theCount)
{
   return itsBytesAvailable != 0 ? ReadBufferedData(theBuffer, theCount) : itsStream.Read(theBuffer, theCount);
}

unsigned int BufferingInputStream::SkipOnward(unsigned int theCount)
{
   return itsBytesAvailable != 0 ? SkipBufferedData(theCount) : itsStream.Skip(theCount);
}

unsigned int BufferingInputStream::Replay(unsigned char* theBuffer, unsigned int theCount)
{
   const auto aTotal = static_cast<unsigned int>(std::min<UINT64>(theCount, itsBytesAvailable));
   unsigned int aReplayed = 0;
   while (aReplayed < aTotal)
   {
      ByteBuffer& aBlock = itsBlocks.front();
      const unsigned int aPart = std::min(aTotal - aReplayed, aBlock.GetBytesAvailable());
      if (theBuffer != nullptr)
      {
         aBlock.CopyOut(theBuffer + aReplayed, aPart);
      }
      else
      {
         aBlock.Skip(aPart);
      }
      if (aBlock.GetBytesAvailable() == 0)
      {
         itsBlocks.pop_front();
      }
      itsBytesAvailable -= aPart;
      aReplayed += aPart;
   }
   return aTotal;
}

void BufferingInputStream::Seek(unsigned int)
{
   throw StreamIOException("BufferingInputStream does not support Seek(size_t)", TN_UNSUPPORTED, 0);
}

int BufferingInputStream::CanSeek() const
{
   return 0;
}

INT64 BufferingInputStream::Length() const
{
   return -1;
}

unsigned int BufferingInputStream::GetStreamPosition() const
{
   return itsStream.GetStreamPosition();
}

void BufferingInputStream::Pushback(const unsigned char* theBytes, unsigned int theCount)
{
   itsStream.Pushback(theBytes, theCount);
}

unsigned int BufferingInputStream::GetPushbackLimit() const
{
   return itsStream.GetPushbackLimit();
}

unsigned int BufferingInputStream::GetPreferredInputBlockSize() const
{
   return itsStream.GetPreferredInputBlockSize();
}

void BufferingInputStream::SetPreferredInputBlockSize(unsigned int theSize)
{
   itsStream.SetPreferredInputBlockSize(theSize);
}

void BufferingInputStream::Close()
{
   itsStream.Close();
}
