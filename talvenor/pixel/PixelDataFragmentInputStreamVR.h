// Encapsulated pixel data, (7FE0,0010), still in the stream of the decoder that returned it (PS3.5 A.4). Read it item
// by item with NextFragment, skip it with SkipToEOF, or have it built in memory with GetVR, before the decoder is asked
// for the next element.
#pragma once

#include <memory>

#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/VRType.h"

class EncapsulatedPixelVR;
class EndianHandlingReader;
class PixelDataFragmentInputStream;

class TALVENOR_API PixelDataFragmentInputStreamVR : public VR
{
public:
   // theReader is little endian (else ConstructorError), borrowed, and stands behind the element's header.
   explicit PixelDataFragmentInputStreamVR(EndianHandlingReader& theReader, UINT32 theLength = kUndefinedLength,
                                           UINT16 theTypeCode = VRCode::OB,
                                           MemoryAllocater& theAllocator = GetDefaultMemoryAllocater());

   // The next item, owned by the caller, who reads or skips it to its end before the next call; the basic offset table
   // comes first. Null behind the delimiter. Throws StreamIOException (TN_INVALID_DELIMITER) where there is neither.
   PixelDataFragmentInputStream* NextFragment();

   // Skips everything up to and including the delimiter. Throws as NextFragment does, and when the stream ends inside a
   // fragment.
   void SkipToEOF();

   // The whole element, owned by the caller; null when it was made before or an item has been asked for.
   EncapsulatedPixelVR* GetVR();

   void Seek(unsigned int thePosition); // throws: not supported

   // Additions for access to items out of order. Whether the decoder's stream can seek, and its position: between two
   // items, and behind the delimiter, the place to come back to. Positions are the stream's, 32 bits.
   int CanSeekToItem() const;
   unsigned int GetItemPosition() const;

   // Goes theDistance bytes on from a position, to where the header of an item stands; NextFragment reads it, also when
   // it has returned null before. The sum may be beyond 32 bits: what is beyond is skipped.
   void SeekToItem(unsigned int thePosition, UINT32 theDistance);

   int IsStreamBuffered() const override { return 1; }
   PixelDataFragmentInputStreamVR* GetAsPixelDataFragmentInputStreamVR() override { return this; }
   std::unique_ptr<VR> Materialise(std::exception_ptr& theFailure) override;

private:
   EndianHandlingReader& itsReader;
   bool itsHasBegun = false;
   bool itsHasEnded = false;
};
