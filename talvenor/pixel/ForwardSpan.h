// How far a forward-only view of a part of a stream has come. The views that the decoders return (native pixel data, a
// fragment) differ in what they read from; what "forward only" means is the same. Not part of the library's interface.
#pragma once

#include <algorithm>

#include "talvenor/foundation/BasicTypes.h"

class ForwardSpan
{
public:
   explicit ForwardSpan(UINT32 theLength) : itsLength(theLength) {}

   UINT32 GetLength() const { return itsLength; }
   UINT32 GetPosition() const { return itsPosition; }
   UINT32 GetRemaining() const { return itsLength - itsPosition; }
   UINT32 Clip(UINT32 theCount) const { return std::min(theCount, GetRemaining()); }
   void Advance(UINT32 theCount) { itsPosition += theCount; }

   // The number of bytes to skip in order to stand at thePosition. Throws StreamIOException, the text beginning with
   // theClass, for a position behind the present one (TN_UNSUPPORTED) or beyond the end (TN_END_OF_FILE).
   UINT32 DistanceTo(UINT32 thePosition, const char* theClass) const;

private:
   UINT32 itsLength;
   UINT32 itsPosition = 0;
};
