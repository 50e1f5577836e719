// Walks through encapsulated pixel data from one frame to the next; each kind of compression finds them in its own way.
// What ImageFrameInputStream is made of, and thrown away when it jumps to another place. Not part of the library's
// interface. Not locked.
#pragma once

#include <memory>

#include "talvenor/io/BufferingInputStream.h"
#include "talvenor/pixel/EncapsulatedDataInputStream.h"
#include "talvenor/pixel/ImageFrameInputStream.h"
#include "talvenor/pixel/ImageFramePixelInputStream.h"

class FrameWalk
{
public:
   // theType is one whose frames can be found. thePixels is borrowed and stands in front of the item of a fragment.
   static std::unique_ptr<FrameWalk> New(ImageFrameInputStream::CompressionType theType,
                                         PixelDataFragmentInputStreamVR& thePixels);

   virtual ~FrameWalk(); // ends the views on its frames
   FrameWalk(const FrameWalk&) = delete;
   FrameWalk& operator=(const FrameWalk&) = delete;

   // Leaves the present frame and finds the next one; false when there is none. The view on a frame that is not kept is
   // empty.
   bool Next(bool theIsKept);

   // Skips data in front of the first frame.
   virtual void SkipData(UINT32 theCount) = 0;

   // Skips what is behind the present frame, which stays readable when it was found by its markers.
   void SkipRest();

   struct Frame
   {
      INT32 itsFragment = 0; // in which it starts; counted, as the offset is, from where the walk began
      UINT64 itsOffset = 0;  // in the data
      UINT64 itsLength = 0;  // in bytes
   };
   const Frame& GetFrame() const { return itsFrame; }
   const ImageFramePixelInputStream& GetView() const { return itsView; }

   // The number of frames found.
   INT32 GetFrameCount() const { return itsFrameCount; }
   const EncapsulatedDataInputStream& GetData() const { return itsData; }

protected:
   explicit FrameWalk(PixelDataFragmentInputStreamVR& thePixels);

   virtual bool Find(bool theIsKept, Frame& theFrame) = 0;

   EncapsulatedDataInputStream itsData;
   BufferingInputStream itsRecording;

private:
   ImageFramePixelInputStream itsView;
   Frame itsFrame;
   INT32 itsFrameCount = 0;
   bool itsIsAtEnd = false;
};
