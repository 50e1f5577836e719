// The fragments of encapsulated pixel data (PS3.5 A.4) as one continuous stream: their bytes one after another, without
// the headers of their items. The item of the basic offset table is no fragment: whoever makes this stream has taken
// it.
//
// Which fragments there were is kept, 12 bytes of memory for each. Fragments count from 0 where this stream began;
// offsets count bytes of data, item headers not included, unless said otherwise.
//
// Throws StreamIOException as PixelDataFragmentInputStreamVR::NextFragment does, and with TN_END_OF_FILE when the
// pixel data ends inside a fragment. Not locked: one thread at a time.
#pragma once

#include <memory>
#include <vector>

#include "talvenor/io/InputStream.h"

class PixelDataFragmentInputStream;
class PixelDataFragmentInputStreamVR;

class TALVENOR_API EncapsulatedDataInputStream : public InputStream
{
public:
   // thePixels is borrowed, outlives this stream and stands in front of an item. theLengthLimit, in bytes, ends the
   // stream; 0xFFFFFFFF is no limit.
   explicit EncapsulatedDataInputStream(PixelDataFragmentInputStreamVR& thePixels,
                                        unsigned int theLengthLimit = 0xFFFFFFFF);
   ~EncapsulatedDataInputStream() override;
   EncapsulatedDataInputStream(const EncapsulatedDataInputStream&) = delete;
   EncapsulatedDataInputStream& operator=(const EncapsulatedDataInputStream&) = delete;

   // One read delivers bytes of one fragment.
   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override;

   // Goes through as many fragments as it takes.
   unsigned int Skip(unsigned int theCount) override;
   void Seek(unsigned int thePosition) override; // throws: not supported
   int CanSeek() const override { return 0; }

   // Modulo 2^32.
   unsigned int GetStreamPosition() const override { return static_cast<unsigned int>(itsPosition); }
   void Pushback(const unsigned char* theBytes, unsigned int theCount) override; // throws: not supported
   void Close() override {}                                                      // the stream is the decoder's

   // The lengths in bytes of the fragments that have been opened; the last of them is the current one, -1 before the
   // first.
   const RWTValOrderedVector<UINT32>& GetFragmentLengthTable() const { return itsLengths; }
   INT32 GetCurrentFragmentIndex() const { return static_cast<INT32>(itsLengths.size()) - 1; }
   void SkipToEndOfCurrentFragment();

   // Additions to the listed operations.

   // Skips the rest of the current fragment and opens the next one, also an empty one; false when there is none.
   bool OpenNextFragment();

   void SkipToEnd();

   // The number of bytes read and skipped.
   UINT64 GetPosition() const { return itsPosition; }

   // The offset behind a fragment that has been opened: that of its first byte is GetFragmentEnd(theIndex - 1).
   UINT64 GetFragmentEnd(INT32 theIndex) const { return theIndex < 0 ? 0 : itsEnds[static_cast<size_t>(theIndex)]; }

   // The fragment with the byte at theOffset, and -1 when none that has been opened has it.
   INT32 FindFragment(UINT64 theOffset) const;

private:
   // Makes the current fragment one with bytes left; false at the end.
   bool HasBytes();
   unsigned int Advance(unsigned int theCount, unsigned int theWanted);
   unsigned int Clip(unsigned int theCount) const;

   PixelDataFragmentInputStreamVR& itsPixels;
   UINT64 itsLimit;
   UINT64 itsPosition = 0;
   std::unique_ptr<PixelDataFragmentInputStream> itsFragment; // the current one, until its last byte is delivered
   RWTValOrderedVector<UINT32> itsLengths;
   std::vector<UINT64> itsEnds; // GetFragmentEnd
};
