// A window on another stream: reads end after a given number of bytes although the stream goes on. Sequences and items
// of defined length (PS3.5 7.5) and bodies of PDUs (PS3.8 9.3) are read through it. A window cannot seek, nor can it
// tell its position, whatever the stream below it can do.
//
// Windows are nested as deep as sequences are. A window on a window (also one seen through an EndianHandlingReader)
// reads from the stream below them all, and all share one position, so that depth costs nothing: a file of ten
// megabytes can have a million elements 500 windows deep. A window is a span of the stream: it ends at the same byte
// whichever window the bytes before are read through, and never beyond the end of one around it. Not locked: one
// thread at a time.
#pragma once

#include "talvenor/foundation/BasicTypes.h"
#include "talvenor/io/InputStream.h"

class TALVENOR_API BoundedInputStream final : public InputStream
{
public:
   // theStream is borrowed and must outlive this window, as must the windows around this one. theLimit is in bytes.
   // Null is a stream without bytes.
   BoundedInputStream(InputStream& theStream, unsigned int theLimit) : BoundedInputStream(&theStream, theLimit) {}
   BoundedInputStream(InputStream* theStream, unsigned int theLimit);

   BoundedInputStream(const BoundedInputStream&) = delete;
   BoundedInputStream& operator=(const BoundedInputStream&) = delete;

   // Returns fewer bytes than asked for at the end of this or an outer window, 0 when nothing is left. Throws what the
   // stream throws.
   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override;

   // Closes the stream below, not only the window.
   void Close() override;

   // Additions to the listed operations: the number of bytes that this window and those around it still allow, and the
   // reading of them. SkipRemaining returns the number of bytes skipped, less than GetRemaining when the stream ends.
   unsigned int GetRemaining() const
   {
      return *itsPosition < itsEnd ? static_cast<unsigned int>(itsEnd - *itsPosition) : 0;
   }
   unsigned int SkipRemaining();

private:
   InputStream* itsStream;    // the stream below all windows, or null
   UINT64 itsOwnPosition = 0; // used by the outermost window only
   UINT64* itsPosition;       // the outermost one's: bytes read through it and the windows in it
   UINT64 itsEnd;             // of this window, as a position
};
