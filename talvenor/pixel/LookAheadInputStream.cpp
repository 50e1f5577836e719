#include "talvenor/pixel/LookAheadInputStream.h"

#include <algorithm>
#include <cstring>

#include "talvenor/foundation/StreamIOException.h"

unsigned int LookAheadInputStream::Read(unsigned char* theBuffer, unsigned int theCount)
{
   const unsigned int aPart = std::min(theCount, GetLookAheadCount());
   if (aPart > 0)
   {
      std::memcpy(theBuffer, itsBlock.get() + itsBegin, aPart);
      itsBegin += aPart;
   }
   return aPart + ReadSource(theBuffer + aPart, theCount - aPart);
}

unsigned int LookAheadInputStream::Skip(unsigned int theCount)
{
   const unsigned int aPart = std::min(theCount, GetLookAheadCount());
   itsBegin += aPart;
   return aPart + SkipSource(theCount - aPart);
}

unsigned int LookAheadInputStream::GetStreamPosition() const
{
   return static_cast<unsigned int>(std::clamp<INT64>(GetPosition(), 0, 0xFFFFFFFF));
}

void LookAheadInputStream::Pushback(const unsigned char* theBytes, unsigned int theCount)
{
   if (theCount == 0)
   {
      return;
   }
   if (theCount > GetPushbackLimit())
   {
      throw StreamIOException("LookAheadInputStream::Pushback: Pushback limit exceeded", TN_INTERNAL_ERROR, 0);
   }
   MakeRoomInFront(theCount);
   itsBegin -= theCount;
   std::memcpy(itsBlock.get() + itsBegin, theBytes, theCount);
}

unsigned int LookAheadInputStream::GetPushbackLimit() const
{
   return 0xFFFFFFFF - GetLookAheadCount();
}

void LookAheadInputStream::MakeRoomInFront(unsigned int theCount)
{
   if (itsBegin >= theCount)
   {
      return;
   }
   const std::size_t aRest = GetLookAheadCount();
   const std::size_t aNeed = aRest + theCount;
   if (aNeed > itsCapacity)
   {
      auto aBlock = std::make_unique_for_overwrite<unsigned char[]>(std::max<std::size_t>(2 * aNeed, kHeadroom));
      itsCapacity = std::max<std::size_t>(2 * aNeed, kHeadroom);
      std::copy_n(itsBlock.get() + itsBegin, aRest, aBlock.get() + itsCapacity - aRest);
      itsBlock = std::move(aBlock);
   }
   else if (aRest > 0)
   {
      std::memmove(itsBlock.get() + itsCapacity - aRest, itsBlock.get() + itsBegin, aRest);
   }
   itsEnd = itsCapacity;
   itsBegin = itsEnd - aRest;
}

void LookAheadInputStream::Close()
{
   if (itsStream != nullptr)
   {
      itsStream->Close();
   }
}

void LookAheadInputStream::Reset()
{
   itsBegin = 0;
   itsEnd = 0;
   itsSourcePosition = 0;
}

bool LookAheadInputStream::NextBytes(unsigned char* theBytes, unsigned int theCount)
{
   unsigned int aCount = 0;
   while (aCount < theCount)
   {
      if (itsBegin == itsEnd && !Fill(kFieldBlock))
      {
         return false;
      }
      const unsigned int aPart = std::min(theCount - aCount, GetLookAheadCount());
      std::memcpy(theBytes + aCount, itsBlock.get() + itsBegin, aPart);
      itsBegin += aPart;
      aCount += aPart;
   }
   return true;
}

unsigned int LookAheadInputStream::Peek(unsigned char* theBytes, unsigned int theCount)
{
   const unsigned int aCount = ReadFully(theBytes, theCount);
   Pushback(theBytes, aCount);
   return aCount;
}

bool LookAheadInputStream::SkipPastFF()
{
   do
   {
      const unsigned char* const aBegin = itsBlock.get() + itsBegin;
      const void* const aPlace = itsBegin < itsEnd ? std::memchr(aBegin, 0xFF, itsEnd - itsBegin) : nullptr;
      if (aPlace != nullptr)
      {
         itsBegin += static_cast<const unsigned char*>(aPlace) - aBegin + 1;
         return true;
      }
      itsBegin = itsEnd;
   } while (Fill(kSearchBlock));
   return false;
}

// A stream that can seek may skip beyond its end without a word, again and again. The last byte of each stretch is
// therefore read: what follows a skip is read ahead anyway, and a length of 2^62 in a hostile file ends at once.
bool LookAheadInputStream::SkipFully(INT64 theCount)
{
   constexpr INT64 kStretch = 0x40000000;
   INT64 aCount = theCount;
   while (aCount > 0)
   {
      const INT64 aHeld = std::min<INT64>(aCount, GetLookAheadCount());
      itsBegin += aHeld;
      aCount -= aHeld;
      if (aCount > 0)
      {
         const auto aStretch = static_cast<unsigned int>(std::min(aCount, kStretch));
         unsigned char aLast;
         if (SkipSource(aStretch - 1) != aStretch - 1 || !NextByte(aLast))
         {
            return false;
         }
         aCount -= aStretch;
      }
   }
   return true;
}

INT64 LookAheadInputStream::ReadAway(INT64 theCount)
{
   INT64 aCount = 0;
   while (aCount < theCount && (itsBegin < itsEnd || Fill(kFieldBlock)))
   {
      const INT64 aPart = std::min<INT64>(theCount - aCount, GetLookAheadCount());
      itsBegin += aPart;
      aCount += aPart;
   }
   return aCount;
}

bool LookAheadInputStream::Fill(unsigned int theCount)
{
   if (itsCapacity < kHeadroom + theCount)
   {
      itsBlock = std::make_unique_for_overwrite<unsigned char[]>(kHeadroom + theCount);
      itsCapacity = kHeadroom + theCount;
   }
   itsBegin = kHeadroom;
   itsEnd = kHeadroom; // stays so when the read throws
   itsEnd += ReadSource(itsBlock.get() + kHeadroom, theCount);
   return itsBegin < itsEnd;
}

unsigned int LookAheadInputStream::ReadSource(unsigned char* theBuffer, unsigned int theCount)
{
   const unsigned int aWish = Clip(theCount);
   const unsigned int aCount = aWish > 0 ? itsStream->Read(theBuffer, aWish) : 0;
   itsSourcePosition += aCount;
   return aCount;
}

unsigned int LookAheadInputStream::SkipSource(unsigned int theCount)
{
   const unsigned int aWish = Clip(theCount);
   const unsigned int aCount = aWish > 0 ? itsStream->Skip(aWish) : 0;
   itsSourcePosition += aCount;
   return aCount;
}

unsigned int LookAheadInputStream::Clip(unsigned int theCount) const
{
   return itsStream != nullptr ? static_cast<unsigned int>(std::min<INT64>(theCount, itsLimit - itsSourcePosition)) : 0;
}
