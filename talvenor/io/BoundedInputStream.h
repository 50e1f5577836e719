// A window on another stream: reads end after a given number of bytes although the stream goes on. Sequences and items
// of defined length (PS3.5 7.5) and bodies of PDUs (PS3.8 9.3) are read through it. A window cannot seek, nor can it
// tell its position, whatever the stream below it can do.
//
// Windows are nested as deep as sequences are. A window on a window (also one seen through an EndianHandlingReader)
// reads from the stream below them all and takes what it got from the allowance of each window around it, so that depth
// costs a few instructions a level and no call. Bytes read through an outer window do not shorten an inner one, but no
// window ever reads beyond the end of one around it. Not locked: one thread at a time.
#pragma once

#include <algorithm>

#include "talvenor/io/InputStream.h"

class TALVENOR_API BoundedInputStream final : public InputStream
{
public:
   // theStream is borrowed and must outlive this window. theLimit is in bytes. Null is a stream without bytes.
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
      unsigned int aRemaining = itsBytesAllowed;
      for (const BoundedInputStream* aWindow = itsOuter; aWindow != nullptr; aWindow = aWindow->itsOuter)
      {
         aRemaining = std::min(aRemaining, aWindow->itsBytesAllowed);
      }
      return aRemaining;
   }
   unsigned int SkipRemaining();

private:
   InputStream* itsStream;                 // the stream below all windows, or null
   BoundedInputStream* itsOuter = nullptr; // the window around this one
   unsigned int itsBytesAllowed;           // bytes of this window not yet read
};
