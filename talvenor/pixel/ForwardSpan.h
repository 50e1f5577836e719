// How far a forward-only view of a part of a stream has come. The views that the decoders return (native pixel data, a
// fragment) and that of a frame differ in what they read from; what "forward only" means is the same. Not part of the
// library's interface.
#pragma once

#include <algorithm>

#include "talvenor/foundation/BasicTypes.h"

// Throws StreamIOException, the text beginning with theClass, for a position behind the present one (TN_UNSUPPORTED) or
// beyond the end (TN_END_OF_FILE).
void CheckForwardSeek(UINT64 thePosition, UINT64 theTarget, UINT64 theLength, const char* theClass);

template <class Size>
class BasicForwardSpan
{
public:
   explicit BasicForwardSpan(Size theLength) : itsLength(theLength) {}

   Size GetLength() const { return itsLength; }
   Size GetPosition() const { return itsPosition; }
   Size GetRemaining() const { return itsLength - itsPosition; }
   UINT32 Clip(UINT32 theCount) const { return static_cast<UINT32>(std::min<UINT64>(theCount, GetRemaining())); }
   void Advance(UINT32 theCount) { itsPosition += theCount; }
   void AdvanceToEnd() { itsPosition = itsLength; }

   // The number of bytes to skip in order to stand at thePosition. Throws as CheckForwardSeek does.
   UINT32 DistanceTo(UINT32 thePosition, const char* theClass) const
   {
      CheckForwardSeek(itsPosition, thePosition, itsLength, theClass);
      return static_cast<UINT32>(thePosition - itsPosition);
   }

private:
   Size itsLength;
   Size itsPosition = 0;
};

using ForwardSpan = BasicForwardSpan<UINT32>;
using LongForwardSpan = BasicForwardSpan<UINT64>;
