// Watches what is read: counts the bytes, keeps the last of them and, when a text stream is given, writes each to it as
// "12 (0xc): 0x41 (65)" (offset in decimal and hexadecimal, byte in hexadecimal and decimal), one to a line.
// A tool for finding where a decoder went wrong; everything but reading goes to the wrapped stream. Not locked.
#pragma once

#include <deque>
#include <iosfwd>

#include "talvenor/io/InputStream.h"

class TALVENOR_API TraceInputStream : public InputStream
{
public:
   // The streams are borrowed and must outlive this object. theHistorySize is the number of bytes kept.
   TraceInputStream(InputStream& theStream, unsigned int theHistorySize, std::ostream* theTrace = nullptr)
       : itsStream(theStream), itsHistorySize(theHistorySize), itsTrace(theTrace)
   {}

   TraceInputStream(const TraceInputStream&) = delete;
   TraceInputStream& operator=(const TraceInputStream&) = delete;

   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override;

   // Skipped bytes are read, so that they are counted, kept and traced like all others.
   unsigned int Skip(unsigned int theCount) override;
   void Seek(unsigned int thePosition) override;
   int CanSeek() const override;
   INT64 Length() const override;
   unsigned int GetStreamPosition() const override;
   void Pushback(const unsigned char* theBytes, unsigned int theCount) override;
   unsigned int GetPushbackLimit() const override;
   unsigned int GetPreferredInputBlockSize() const override;
   void SetPreferredInputBlockSize(unsigned int theSize) override;
   void Close() override;

   // Writes the kept bytes in the format of the trace, oldest first.
   void printHistory(std::ostream& theText) const;

private:
   void Keep(const unsigned char* theBytes, unsigned int theCount);

   InputStream& itsStream;
   std::deque<unsigned char> itsHistory; // the last bytes read, oldest first
   unsigned int itsHistorySize;
   UINT64 itsByteCounter = 0; // bytes read so far: the offset of the next one
   std::ostream* itsTrace;
};
