// Records what is read through it, so that bytes consumed while probing a stream can be delivered again.
//
// Reading always goes on in the wrapped stream; what was recorded is replayed with ReadBufferedData, oldest byte first.
// The recording is kept in blocks of 8192 bytes, which are freed as they are replayed and never moved.
// The recording can be limited to the bytes read last, for a search that may go on long before it finds what is to be
// delivered. Not locked: one thread at a time.
#pragma once

#include <list>

#include "talvenor/io/ByteBuffer.h"
#include "talvenor/io/InputStream.h"

class TALVENOR_API BufferingInputStream : public InputStream
{
public:
   // theStream is borrowed and must outlive this object.
   explicit BufferingInputStream(InputStream& theStream) : itsStream(theStream) {}

   BufferingInputStream(const BufferingInputStream&) = delete;
   BufferingInputStream& operator=(const BufferingInputStream&) = delete;

   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override;

   // Skipped bytes are recorded too.
   unsigned int Skip(unsigned int theCount) override;
   void Seek(unsigned int thePosition) override;
   int CanSeek() const override;
   INT64 Length() const override;

   // The position of the wrapped stream.
   unsigned int GetStreamPosition() const override;
   void Pushback(const unsigned char* theBytes, unsigned int theCount) override;
   unsigned int GetPushbackLimit() const override;
   unsigned int GetPreferredInputBlockSize() const override;
   void SetPreferredInputBlockSize(unsigned int theSize) override;
   void Close() override;

   // Copies out, or drops, recorded bytes and returns their number: less than theCount when fewer are recorded.
   unsigned int ReadBufferedData(unsigned char* theBuffer, unsigned int theCount);
   unsigned int SkipBufferedData(unsigned int theCount);

   // Bytes recorded and not yet replayed.
   UINT64 GetBufferedBytesAvailable() const { return itsBytesAvailable; }

   // Additions to the listed operations.

   // From now on at least the theLimit bytes that were read last stay recorded, older ones are dropped in the course of
   // reading, and skipping drops all: the wrapped stream skips then, and may seek. kNoLimit, as at first, keeps
   // everything.
   static constexpr unsigned int kNoLimit = 0xFFFFFFFF;
   void SetRecordingLimit(unsigned int theLimit) { itsRecordingLimit = theLimit; }

   // Recorded bytes first, and when there are none those of the wrapped stream, which are not recorded. Like Read and
   // Skip these may return less than theCount, and 0 at the end.
   unsigned int ReadOnward(unsigned char* theBuffer, unsigned int theCount);
   unsigned int SkipOnward(unsigned int theCount);

private:
   ByteBuffer& BlockWithSpace();
   void Record(const unsigned char* theBytes, unsigned int theCount);

   // Replays into theBuffer, or nowhere when it is null.
   unsigned int Replay(unsigned char* theBuffer, unsigned int theCount);

   InputStream& itsStream;
   std::list<ByteBuffer> itsBlocks; // oldest first; the first one is being replayed, the last one filled
   UINT64 itsBytesAvailable = 0;
   unsigned int itsRecordingLimit = kNoLimit;
};
