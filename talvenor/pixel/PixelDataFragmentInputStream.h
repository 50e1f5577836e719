// The bytes of one item of encapsulated pixel data, read from the stream of the decoder (PS3.5 A.4).
#pragma once

#include "talvenor/io/InputStream.h"
#include "talvenor/pixel/ForwardSpan.h"

class EndianHandlingReader;

class TALVENOR_API PixelDataFragmentInputStream : public InputStream
{
public:
   // theReader is little endian (else ConstructorError), borrowed, and stands at the first byte of the item's value.
   PixelDataFragmentInputStream(EndianHandlingReader& theReader, UINT32 theLength);

   // Positions count from the first byte of the item; seeking goes forward only.
   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override;
   unsigned int Skip(unsigned int theCount) override;
   void Seek(unsigned int thePosition) override;
   INT64 Length() const override { return itsSpan.GetLength(); }
   unsigned int GetStreamPosition() const override { return itsSpan.GetPosition(); }
   void Close() override {} // the stream is the decoder's

   UINT32 GetLength() const { return itsSpan.GetLength(); }
   UINT32 GetRemaining() const { return itsSpan.GetRemaining(); }

private:
   EndianHandlingReader& itsReader;
   ForwardSpan itsSpan;
};
