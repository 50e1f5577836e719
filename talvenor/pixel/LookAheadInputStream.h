// What the scanners of compressed images, JPEGFileInputStream and JP2FileInputStream, share: big-endian fields and a
// fast search for 0xFF, made on blocks that are read ahead of the position.
//
// Bytes read ahead are kept, and come first in whatever is read, skipped or searched next. The wrapped stream is
// therefore GetLookAheadCount bytes further than this one: what a BufferingInputStream below has recorded ends that
// many bytes behind GetPosition. Plain Read and Skip take no more from the wrapped stream than was asked for. Reads end
// at the limit, and nothing beyond it is taken from the wrapped stream. At most 64 KiB is read ahead, 4 KiB for a
// field. Not locked: one thread at a time.
#pragma once

#include <cstddef>
#include <limits>
#include <memory>

#include "talvenor/io/InputStream.h"
#include "talvenor/io/TNEndian.h"

class TALVENOR_API LookAheadInputStream : public InputStream
{
public:
   LookAheadInputStream(const LookAheadInputStream&) = delete;
   LookAheadInputStream& operator=(const LookAheadInputStream&) = delete;

   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override;

   // Skips in the wrapped stream, which may tell a full skip beyond its end when it can seek.
   unsigned int Skip(unsigned int theCount) override;

   // GetPosition, at most 0xFFFFFFFF.
   unsigned int GetStreamPosition() const override;

   // Any number of bytes. They need not be those that were read last; the limit allows them in addition.
   void Pushback(const unsigned char* theBytes, unsigned int theCount) override;
   unsigned int GetPushbackLimit() const override;

   // Closes the wrapped stream.
   void Close() override;

   // Additions to the listed operations. The number of bytes delivered, skipped or searched since construction or
   // Reset, less those pushed back (negative when more were pushed back than delivered):
   INT64 GetPosition() const { return itsSourcePosition - GetLookAheadCount(); }

   // The number of bytes that have been taken from the wrapped stream and not been delivered:
   unsigned int GetLookAheadCount() const { return static_cast<unsigned int>(itsEnd - itsBegin); }

   // Drops what was read ahead or pushed back, when the wrapped stream has been moved. Position and limit count from
   // here.
   void Reset();

protected:
   static constexpr INT64 kNoLimit = std::numeric_limits<INT64>::max();

   // theLimit is in bytes.
   LookAheadInputStream(InputStream& theStream, INT64 theLimit) : itsStream(&theStream), itsLimit(theLimit) {}

   // Takes theStream over; null is a stream without bytes.
   LookAheadInputStream(InputStream* theStream, INT64 theLimit)
       : itsStream(theStream), itsOwnedStream(theStream), itsLimit(theLimit)
   {}

   // These return false when the stream ends first, having consumed what there was. A value is an integer, big endian.
   bool NextByte(unsigned char& theByte)
   {
      if (itsBegin == itsEnd && !Fill(kFieldBlock))
      {
         return false;
      }
      theByte = itsBlock[itsBegin++];
      return true;
   }
   bool NextBytes(unsigned char* theBytes, unsigned int theCount);
   template <class T>
   bool NextValue(T& theValue)
   {
      unsigned char aField[sizeof(T)];
      if (!NextBytes(aField, sizeof aField))
      {
         return false;
      }
      theValue = TNEndian::Load<T, TNEndian::BigEndian>(aField);
      return true;
   }

   // Delivers bytes without consuming them; returns their number, less at the end of the stream.
   unsigned int Peek(unsigned char* theBytes, unsigned int theCount);

   // Consumes up to and including the next 0xFF.
   bool SkipPastFF();

   // Consumes theCount bytes. Where the wrapped stream skips without noticing its end, this does notice.
   bool SkipFully(INT64 theCount);

   // Consumes theCount bytes by reading them, for stretches so short that a seek would cost more. Returns their number,
   // less at the end of the stream.
   INT64 ReadAway(INT64 theCount);

private:
   static constexpr unsigned int kFieldBlock = 4096;   // read ahead for a field
   static constexpr unsigned int kSearchBlock = 65536; // read ahead for a search
   static constexpr unsigned int kHeadroom = 256;      // free in front of a block, for what is pushed back

   // Reads a block when nothing is left of the last one; false at the end.
   bool Fill(unsigned int theCount);

   // Within the limit.
   unsigned int ReadSource(unsigned char* theBuffer, unsigned int theCount);
   unsigned int SkipSource(unsigned int theCount);
   unsigned int Clip(unsigned int theCount) const;

   void MakeRoomInFront(unsigned int theCount);

   InputStream* itsStream;
   std::unique_ptr<InputStream> itsOwnedStream; // the same stream when it is owned
   INT64 itsLimit;
   INT64 itsSourcePosition = 0; // bytes taken from the wrapped stream
   std::size_t itsBegin = 0;    // what was read ahead or pushed back: itsBlock[itsBegin, itsEnd)
   std::size_t itsEnd = 0;
   std::size_t itsCapacity = 0;
   std::unique_ptr<unsigned char[]> itsBlock;
};
