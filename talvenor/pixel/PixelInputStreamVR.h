// Native (not encapsulated) pixel data, (7FE0,0010), still in the stream of the decoder that returned it: an element
// that is an input stream. Read or skip it to its end before the decoder is asked for the next element.
#pragma once

#include <memory>

#include "talvenor/dataset/VR.h"
#include "talvenor/io/InputStream.h"
#include "talvenor/pixel/ForwardSpan.h"

class EndianHandlingReader;

class TALVENOR_API PixelInputStreamVR : public VR, public InputStream
{
public:
   // An ordinary element with the whole value, owned by the caller. Throws StreamIOException when bytes have been read
   // from this one already, and when the stream ends first.
   virtual VR* GetVR() = 0;

   int IsStreamBuffered() const override { return 1; }
   PixelInputStreamVR* GetAsPixelInputStreamVR() override { return this; }

protected:
   explicit PixelInputStreamVR(TNEndian::EndianType theEndian) : VR(0x7FE0, 0x0010, theEndian) {}
};

class TALVENOR_API PixelInputStreamVRImpl : public PixelInputStreamVR
{
public:
   // theReader is borrowed and must outlive the element. theLength is in bytes. An odd length is accepted for OB only;
   // it is presented as the next even one, with 0 for the byte that the stream does not have.
   PixelInputStreamVRImpl(EndianHandlingReader& theReader, UINT32 theLength, UINT16 theTypeCode);
   PixelInputStreamVRImpl(const PixelInputStreamVRImpl&) = delete;
   PixelInputStreamVRImpl& operator=(const PixelInputStreamVRImpl& theOther); // throws: not supported

   // Positions count from the first byte of the value; seeking goes forward only.
   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override;
   unsigned int Skip(unsigned int theCount) override;
   void Seek(unsigned int thePosition) override;
   INT64 Length() const override { return itsSpan.GetLength(); }
   unsigned int GetStreamPosition() const override { return itsSpan.GetPosition(); }
   void Close() override {} // the stream is the decoder's

   VR* GetVR() override;
   std::unique_ptr<VR> Materialise(std::exception_ptr& theFailure) override;

   // Bytes not yet delivered.
   UINT32 GetRemaining() const { return itsSpan.GetRemaining(); }

private:
   UINT32 GetStreamBytesLeft() const;

   EndianHandlingReader& itsReader;
   ForwardSpan itsSpan; // of even length
   UINT32 itsLengthInStream;
};
