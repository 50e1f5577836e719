// An input stream on a file that can be locked (see LFStream).
//
// Positions of this interface have 32 bits; reading goes on beyond 4 GiB, and GetPosition and SetPosition of LFStream
// have 64. Not locked against other threads, but for the lock operations.
#pragma once

#include "talvenor/io/InputStream.h"
#include "talvenor/io/LFStream.h"

class TALVENOR_API LFInputStream : public LFStream, public InputStream
{
public:
   using LFStream::LFStream;

   // Reads until theCount bytes are there or the file ends. Throws StreamIOException with TN_SYSTEM_CALL_FAILED.
   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override;

   // Moves on, also beyond the end of the file, and returns the distance.
   unsigned int Skip(unsigned int theCount) override;
   void Seek(unsigned int thePosition) override;
   int CanSeek() const override;
   INT64 Length() const override;

   // Modulo 2^32.
   unsigned int GetStreamPosition() const override;
   void Pushback(const unsigned char* theBytes, unsigned int theCount) override;
   unsigned int GetPushbackLimit() const override;

   // The default size of file buffers, or 0xFFFFFFFF when that is 0.
   unsigned int GetPreferredInputBlockSize() const override;
   void Close() override;
};
