#include "talvenor/pixel/EncapsulatedDataInputStream.h"

#include <algorithm>
#include <limits>
#include <string>

#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/pixel/PixelDataFragmentInputStream.h"
#include "talvenor/pixel/PixelDataFragmentInputStreamVR.h"

namespace
{
constexpr unsigned int kNoLimit = 0xFFFFFFFF;
constexpr size_t kFirstTableSize = 256;
} // namespace

EncapsulatedDataInputStream::EncapsulatedDataInputStream(PixelDataFragmentInputStreamVR& thePixels,
                                                         unsigned int theLengthLimit)
    : itsPixels(thePixels),
      itsLimit(theLengthLimit == kNoLimit ? std::numeric_limits<UINT64>::max() : UINT64{theLengthLimit})
{
   itsLengths.reserve(kFirstTableSize);
   itsEnds.reserve(kFirstTableSize);
}

EncapsulatedDataInputStream::~EncapsulatedDataInputStream() = default;

unsigned int EncapsulatedDataInputStream::Read(unsigned char* theBuffer, unsigned int theCount)
{
   const unsigned int aWanted = Clip(theCount);
   return aWanted != 0 && HasBytes() ? Advance(itsFragment->Read(theBuffer, aWanted), aWanted) : 0;
}

unsigned int EncapsulatedDataInputStream::Skip(unsigned int theCount)
{
   unsigned int aSkipped = 0;
   while (const unsigned int aWanted = Clip(theCount - aSkipped))
   {
      if (!HasBytes())
      {
         break;
      }
      aSkipped += Advance(itsFragment->Skip(aWanted), aWanted);
   }
   return aSkipped;
}

bool EncapsulatedDataInputStream::HasBytes()
{
   while (!itsFragment)
   {
      if (!OpenNextFragment())
      {
         return false;
      }
   }
   return true;
}

bool EncapsulatedDataInputStream::OpenNextFragment()
{
   SkipToEndOfCurrentFragment();
   itsFragment.reset(itsPixels.NextFragment());
   if (!itsFragment)
   {
      return false;
   }
   const UINT32 aLength = itsFragment->GetLength();
   itsEnds.push_back(GetFragmentEnd(GetCurrentFragmentIndex()) + aLength);
   itsLengths.push_back(aLength);
   if (aLength == 0)
   {
      itsFragment.reset();
   }
   return true;
}

unsigned int EncapsulatedDataInputStream::Advance(unsigned int theCount, unsigned int theWanted)
{
   if (theCount == 0 && theWanted != 0)
   {
      const std::string aText = "EncapsulatedDataInputStream: EOF inside fragment " +
                                std::to_string(GetCurrentFragmentIndex()) + " (" +
                                std::to_string(itsFragment->GetRemaining()) + " bytes remaining)";
      throw StreamIOException(aText.c_str(), TN_END_OF_FILE, 0);
   }
   itsPosition += theCount;
   if (itsFragment->GetRemaining() == 0)
   {
      itsFragment.reset();
   }
   return theCount;
}

void EncapsulatedDataInputStream::SkipToEndOfCurrentFragment()
{
   while (itsFragment)
   {
      const UINT32 aRest = itsFragment->GetRemaining();
      Advance(itsFragment->Skip(aRest), aRest);
   }
}

void EncapsulatedDataInputStream::SkipToEnd()
{
   while (OpenNextFragment())
   {}
}

INT32 EncapsulatedDataInputStream::FindFragment(UINT64 theOffset) const
{
   const auto aPlace = std::upper_bound(itsEnds.begin(), itsEnds.end(), theOffset);
   return aPlace == itsEnds.end() ? -1 : static_cast<INT32>(aPlace - itsEnds.begin());
}

unsigned int EncapsulatedDataInputStream::Clip(unsigned int theCount) const
{
   // skipping whole fragments may have gone beyond the limit
   return itsPosition < itsLimit ? static_cast<unsigned int>(std::min<UINT64>(theCount, itsLimit - itsPosition)) : 0;
}

void EncapsulatedDataInputStream::Seek(unsigned int)
{
   throw StreamIOException("EncapsulatedDataInputStream does not support Seek(size_t)", TN_UNSUPPORTED, 0);
}

void EncapsulatedDataInputStream::Pushback(const unsigned char*, unsigned int)
{
   throw StreamIOException("EncapsulatedDataInputStream does not support Pushback(uchar_t*, size_t)", TN_UNSUPPORTED,
                           0);
}
