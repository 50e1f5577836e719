// Reads the multi-byte fields of a stream whose byte order is known.
//
// The order is told once, when the reader is built. Single values return their size in bytes, or 0 when fewer bytes
// arrived: a reader cannot tell then whether none or some did. Code that must know (a data element cut short is an
// error, a clean end is not) reads the bytes with ReadFully and converts them with TNEndian::Load and GetEndian.
// Not locked: one thread at a time.
#pragma once

#include <memory>

#include "talvenor/io/InputStream.h"
#include "talvenor/io/TNEndian.h"

class TALVENOR_API EndianHandlingReader : public InputStream
{
public:
   // A stream passed by reference is borrowed and must outlive the reader.
   EndianHandlingReader(InputStream& theStream, TNEndian::EndianType theEndian)
       : itsStream(&theStream), itsEndian(theEndian)
   {}

   // A stream passed by pointer, which must not be null, is owned and destroyed with the reader.
   EndianHandlingReader(InputStream* theStream, TNEndian::EndianType theEndian)
       : itsStream(theStream), itsOwnedStream(theStream), itsEndian(theEndian)
   {}

   // A copy reads from the same stream and never owns it.
   EndianHandlingReader(const EndianHandlingReader& theOther)
       : InputStream(theOther), itsStream(theOther.itsStream), itsEndian(theOther.itsEndian)
   {}
   EndianHandlingReader(const EndianHandlingReader& theOther, TNEndian::EndianType theEndian)
       : InputStream(theOther), itsStream(theOther.itsStream), itsEndian(theEndian)
   {}
   EndianHandlingReader& operator=(const EndianHandlingReader&) = delete;

   TNEndian::EndianType GetEndian() const { return itsEndian; }

   // An addition to the listed operations: the wrapped stream.
   InputStream& GetStream() const { return *itsStream; }

   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) final
   {
      return itsStream->Read(theBuffer, theCount);
   }
   unsigned int Read(char* theBuffer, unsigned int theCount)
   {
      return itsStream->Read(reinterpret_cast<unsigned char*>(theBuffer), theCount);
   }

   unsigned int Read(unsigned char& theValue) { return itsStream->Read(&theValue, 1); }
   unsigned int Read(char& theValue) { return Read(&theValue, 1); }
   unsigned int Read(UINT16& theValue) { return ReadValue(theValue); }
   unsigned int Read(INT16& theValue) { return ReadValue(theValue); }
   unsigned int Read(UINT32& theValue) { return ReadValue(theValue); }
   unsigned int Read(INT32& theValue) { return ReadValue(theValue); }
   unsigned int Read(FLOAT& theValue) { return ReadValue(theValue); }
   unsigned int Read(DOUBLE& theValue) { return ReadValue(theValue); }

   // Arrays of theCount values. Returns the number of bytes read (at most 0xFFFFFFFF is told), or 0 when the stream
   // ended first. In the native order this is one read of the stream when the stream delivers it whole.
   unsigned int Read(UINT16* theValues, unsigned int theCount);
   unsigned int Read(INT16* theValues, unsigned int theCount);
   unsigned int Read(UINT32* theValues, unsigned int theCount);
   unsigned int Read(INT32* theValues, unsigned int theCount);
   unsigned int Read(FLOAT* theValues, unsigned int theCount);
   unsigned int Read(DOUBLE* theValues, unsigned int theCount);

   // These go to the wrapped stream.
   unsigned int Skip(unsigned int theCount) final { return itsStream->Skip(theCount); }
   void Seek(unsigned int thePosition) final { itsStream->Seek(thePosition); }
   int CanSeek() const final { return itsStream->CanSeek(); }
   unsigned int GetStreamPosition() const final { return itsStream->GetStreamPosition(); }
   void Close() final { itsStream->Close(); }

private:
   template <class T>
   unsigned int ReadValue(T& theValue)
   {
      unsigned char aField[sizeof(T)];
      if (itsStream->ReadFully(aField, sizeof aField) != sizeof aField)
      {
         return 0;
      }
      theValue = TNEndian::Load<T>(aField, itsEndian);
      return sizeof aField;
   }

   template <class T>
   unsigned int ReadArray(T* theValues, unsigned int theCount);

   InputStream* itsStream;
   std::unique_ptr<InputStream> itsOwnedStream; // the same stream when the reader owns it
   TNEndian::EndianType itsEndian;
};
