// The basic offset table of encapsulated pixel data (PS3.5 A.4): for each frame the distance in bytes from the first
// byte of the first fragment item's tag to the first byte of the tag of the item in which the frame starts. Frames and
// fragments count from 0; the item of the table itself is no fragment. Not locked.
#pragma once

#include "talvenor/Export.h"
#include "talvenor/foundation/BasicTypes.h"

class InputStream;
class MemoryBufferedPixelDataFragment;

class TALVENOR_API BasicOffsetTable
{
public:
   static constexpr UINT32 kUnknownOffset = 0xFFFFFFFF;

   // Without offsets. A negative number of frames is none.
   explicit BasicOffsetTable(INT32 theFrameCount);

   // Each Init gives the table its offsets. One that throws StreamIOException leaves the table as it was.

   // From the lengths in bytes of the fragments and, for each frame, the index of the fragment in which it starts.
   // Frames that start in the same fragment get the same offset. Throws (TN_INTERNAL_ERROR) when the indices do not
   // begin with 0, are fewer than the frames, decrease or point behind the fragments, and for an offset that 32 bits
   // cannot hold.
   void Init(const RWTValOrderedVector<UINT32>& theFragmentLengths, const RWTValOrderedVector<INT32>& theStartIndices);

   // From the value of the item, theLength bytes of which 4 for each frame are read. An empty one gives the only frame
   // the offset 0, and no offsets otherwise. Throws when the number of entries is not that of the frames
   // (TN_INVALID_ENCODING), or the bytes end early (TN_INTERNAL_ERROR). What the entries say is not checked. A length
   // that lies takes no memory.
   void Init(InputStream& theStream, UINT32 theLength);
   void Init(const unsigned char* theBytes, UINT32 theLength);

   // kUnknownOffset when there is no such frame or no offset; 0 always for the first frame.
   UINT32 GetOffset(INT32 theFrame) const;

   // The value of the item, owned by the caller: 4 bytes for each frame, little endian, zeros when there are no
   // offsets.
   MemoryBufferedPixelDataFragment* GetAsPixelDataFragment() const;

   // Whether there are no offsets.
   bool IsEmpty() const { return itsOffsets.empty(); }
   INT32 GetFrameCount() const { return itsFrameCount; }

   // One for each frame; null when there are none.
   const UINT32* GetOffsets() const { return IsEmpty() ? nullptr : itsOffsets.data(); }

   // Tables without offsets are equal whatever their number of frames.
   bool operator==(const BasicOffsetTable& theOther) const;

private:
   INT32 itsFrameCount;
   RWTValOrderedVector<UINT32> itsOffsets; // empty, or one for each frame
};
