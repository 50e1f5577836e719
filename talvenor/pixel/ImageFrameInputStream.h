// The frames of encapsulated pixel data (PS3.5 A.4), one stream each, whatever fragments they are spread over. JPEG and
// JPEG 2000 frames are found by their markers, RLE frames are one fragment each; the basic offset table is not needed,
// and where there is none, one is built while the frames go by. Nothing is decoded.
//
//    ImageFrameInputStream aFrames(*aVR.GetAsPixelDataFragmentInputStreamVR(), aSyntaxUID, aNumberOfFrames, 0);
//    while (const std::unique_ptr<InputStream> aFrame{aFrames.NextFrame()}) ...
//
// Frames count from 0. With an offset table, and a stream that can seek, GetFrame reaches any frame at once.
//
// A frame of JPEG or JPEG 2000 is in memory while it is the current one, because its end must be found before its
// length can be told; frames that are skipped are not. Offsets have 32 bits, as the table does, and so have positions
// in the stream: a frame beyond 4 GiB in the stream is reached by skipping forward from there.
//
// Failures throw StreamIOException, those of the streams below included. What the data says is not trusted: the number
// of frames costs no memory, and an offset that leads to no item throws (TN_INVALID_DELIMITER). After a failure the
// position is undefined, except that a basic offset table at fault has been passed: NextFrame goes on without it. A
// JPEG 2000 frame that is cut counts as none: who finds fewer frames than there should be has lost some.
// Not locked: one thread at a time.
#pragma once

#include <exception>
#include <memory>
#include <vector>

#include "talvenor/Export.h"
#include "talvenor/foundation/BasicTypes.h"

class BasicOffsetTable;
class FrameWalk;
class InputStream;
class PixelDataFragmentInputStreamVR;

class TALVENOR_API ImageFrameInputStream
{
public:
   enum CompressionType
   {
      JPEG = 0,
      JPEG2000 = 1,
      RLE = 2,
      NotEncapsulated = 3, // pixel data of defined length
      Undetermined = 4     // this class cannot tell where frames of that transfer syntax end
   };

   // thePixels, of which no item has been read yet, is owned in the pointer form; in the reference form it is borrowed
   // and must outlive this object. theNumberOfFrames is what the dataset says, (0028,0008). theFlag is kept and has no
   // effect.
   ImageFrameInputStream(PixelDataFragmentInputStreamVR* thePixels, const RWCString& theTransferSyntaxUID,
                         INT32 theNumberOfFrames, int theFlag);
   ImageFrameInputStream(PixelDataFragmentInputStreamVR& thePixels, const RWCString& theTransferSyntaxUID,
                         INT32 theNumberOfFrames, int theFlag);
   ImageFrameInputStream(const ImageFrameInputStream&) = delete;
   ImageFrameInputStream& operator=(const ImageFrameInputStream&) = delete;
   ~ImageFrameInputStream();

   // The next frame in the stream, owned by the caller; null behind the last one. It cannot seek backwards, its Length
   // is that of the frame. It may be destroyed at any time; it delivers nothing more once another frame has been asked
   // for or this object is gone.
   //
   // Behind frame theNumberOfFrames - 1 of JPEG and JPEG 2000 the rest of the pixel data is skipped, so that the
   // decoder stands at the next element. When that fails, this frame is good all the same; the failure is thrown by the
   // next call.
   InputStream* NextFrame();

   // Skips one frame and returns non-zero when there was one. With random access only the index of the current frame
   // moves on, at most to the last one: GetFrame(GetCurrentFrameIndex() + 1) is what follows.
   int SkipNextFrame();

   // Frame theFrame: any one with random access, otherwise one behind the current frame. Throws (TN_INTERNAL_ERROR) for
   // others, and when there are fewer frames.
   InputStream* GetFrame(INT32 theFrame);

   // Takes the item of the basic offset table from the stream, which the operations above do when they are first
   // called. Throws (TN_INVALID_ENCODING) when it has entries, but not one for each frame.
   void ReadBasicOffsetTable();

   // The table in use: the one that was set, the one in the data, the one built; null while there is none. The latter
   // two live as long as this object, in use or not.
   const BasicOffsetTable* GetBasicOffsetTable() const { return itsTable; }

   // Uses theTable, borrowed, or no table when it is null; for pixel data whose table is known from an earlier reading.
   // A table in the data replaces it when it is read.
   void SetBasicOffsetTable(const BasicOffsetTable* theTable) { itsTable = theTable; }

   // Whether there is a table with offsets and a stream that can seek.
   int IsRandomFrameAccessAvailable() const;

   // -1 before the first frame.
   INT32 GetCurrentFrameIndex() const { return itsFrameIndex; }
   INT32 GetNumberOfFrames() const { return itsNumberOfFrames; }

   // In bytes; -1 when there is no current frame.
   INT64 GetCurrentFrameLength() const;

   // Additions to the listed operations.

   int GetFlag() const { return itsFlag; }

   // What the transfer syntax and the form of the pixel data tell.
   CompressionType GetCompressionType() const { return itsCompressionType; }

   // Passes over the next frame in the stream as NextFrame finds it, without keeping its bytes, and returns non-zero
   // when there was one. Length and place are then those of the frame passed over. SkipNextFrame does this without
   // random access; this one does it with random access too, for who wants to know where all frames are.
   int PassNextFrame();

   // Where the current frame lies. Numbers that are not known are -1: the index of the fragment and the offset in the
   // data, after GetFrame has jumped over what nobody has read; all of them when there is no current frame.
   struct FramePlace
   {
      // Index of the fragment in which the frame starts, from 0; the table of offsets is no fragment.
      INT32 itsFirstFragment = -1;

      // Of the item of that fragment, header included, from the first fragment's item: what a basic offset table holds.
      // Frames that start in the same fragment have the same.
      INT64 itsItemOffset = -1;

      // Of the frame's first byte in the data of all fragments, headers not included.
      INT64 itsDataOffset = -1;

      // Bytes of that fragment in front of the frame's first byte.
      INT64 itsBytesBefore = -1;

      // The lengths in bytes of the fragments that hold the frame, from that one on; as many as the frame spans.
      RWTValOrderedVector<UINT32> itsFragmentLengths;
   };
   FramePlace GetCurrentFramePlace() const;

   // The lengths of the fragments that have been met, also by looking ahead for the end of a frame: from the first
   // fragment on or, after GetFrame has jumped, from the first one of the frame it jumped to.
   RWTValOrderedVector<UINT32> GetFragmentLengthTable() const;

private:
   struct FrameStart
   {
      INT32 itsFragment;    // from the first one, or from where the walk began when that is not known
      UINT64 itsItemOffset; // as in FramePlace
      UINT32 itsBytesBefore;
   };

   ImageFrameInputStream(std::unique_ptr<PixelDataFragmentInputStreamVR> theOwnedPixels,
                         PixelDataFragmentInputStreamVR& thePixels, const RWCString& theTransferSyntaxUID,
                         INT32 theNumberOfFrames, int theFlag);

   // Reads the offset table when that has not been done, and throws when frames cannot be told apart.
   void Prepare();
   bool TakeNextFrame(bool theIsKept);
   void NoteFrame();
   void RecordStart();
   void BuildTable();
   FrameStart GetFrameStart() const;
   InputStream* NewView() const;
   InputStream* GetFrameSequential(INT32 theFrame);
   InputStream* GetFrameRandom(INT32 theFrame);
   bool IsKnownAt(INT32 theFrame, UINT32 theOffset) const;
   void JumpToFrame(INT32 theFrame, UINT32 theOffset);

   std::unique_ptr<PixelDataFragmentInputStreamVR> itsOwnedPixels;
   PixelDataFragmentInputStreamVR& itsPixels;
   RWCString itsTransferSyntaxUID;
   CompressionType itsCompressionType;
   INT32 itsNumberOfFrames;
   int itsFlag;

   bool itsHasReadTable = false;
   unsigned int itsOrigin = 0; // position of the first fragment's item in a stream that can seek
   std::unique_ptr<BasicOffsetTable> itsReadTable;
   std::unique_ptr<BasicOffsetTable> itsBuiltTable;
   const BasicOffsetTable* itsTable = nullptr; // in use: one of those or the caller's

   INT32 itsFrameIndex = -1;
   bool itsHasFrame = false;           // whether the walk stands at the current frame
   std::unique_ptr<FrameWalk> itsWalk; // from the first fragment, or from the last jump on
   UINT32 itsWalkOffset = 0;           // of the item where it began, from the first fragment's item
   INT32 itsWalkFragment = 0;          // the index of that fragment, -1 when it is not known
   INT32 itsWalkFrame = 0;             // that of the first frame found, -1 when it is not known
   std::vector<FrameStart> itsStarts;  // of the frames from 0 on, as far as they have gone by
   std::exception_ptr itsFailure;      // of the skipping behind the last frame, not told yet
};
