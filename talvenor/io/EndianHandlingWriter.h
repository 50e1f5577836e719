// Writes the multi-byte fields of a stream whose byte order is known. Every operation writes all it was given or throws
// what the stream throws. Not locked: one thread at a time.
#pragma once

#include "talvenor/io/OutputStream.h"
#include "talvenor/io/TNEndian.h"

class TALVENOR_API EndianHandlingWriter
{
public:
   // theStream is borrowed and must outlive the writer. Copies write to the same stream.
   EndianHandlingWriter(OutputStream& theStream, TNEndian::EndianType theEndian)
       : itsStream(&theStream), itsEndian(theEndian)
   {}
   EndianHandlingWriter(const EndianHandlingWriter& theOther, TNEndian::EndianType theEndian)
       : itsStream(theOther.itsStream), itsEndian(theEndian)
   {}
   EndianHandlingWriter(const EndianHandlingWriter&) = default;
   EndianHandlingWriter& operator=(const EndianHandlingWriter&) = default;

   // That of the stream.
   virtual unsigned int GetMaximumOutputBlockSize() const;

   // An addition to the listed operations: virtual, so that derived writers can be destroyed as writers.
   virtual ~EndianHandlingWriter();

   TNEndian::EndianType GetEndian() const { return itsEndian; }

   // An addition to the listed operations: the wrapped stream.
   OutputStream& GetStream() const { return *itsStream; }

   // Bytes as they are. The buffer is taken and destroyed.
   void Write(const unsigned char* theBytes, unsigned int theCount) { itsStream->Write(theBytes, theCount); }
   void Write(const char* theText, unsigned int theCount)
   {
      itsStream->Write(reinterpret_cast<const unsigned char*>(theText), theCount);
   }
   void Write(IOBuffer* theBuffer) { itsStream->Write(theBuffer); }

   void Write(unsigned char theValue) { itsStream->Write(&theValue, 1); }
   void Write(char theValue) { Write(&theValue, 1); }
   void Write(UINT16 theValue) { WriteValue(theValue); }
   void Write(INT16 theValue) { WriteValue(theValue); }
   void Write(UINT32 theValue) { WriteValue(theValue); }
   void Write(INT32 theValue) { WriteValue(theValue); }
   void Write(FLOAT theValue) { WriteValue(theValue); }
   void Write(DOUBLE theValue) { WriteValue(theValue); }

   // Arrays of theCount values: in the native order one write, in the foreign order block by block.
   void Write(const UINT16* theValues, unsigned int theCount);
   void Write(const INT16* theValues, unsigned int theCount);
   void Write(const UINT32* theValues, unsigned int theCount);
   void Write(const INT32* theValues, unsigned int theCount);
   void Write(const FLOAT* theValues, unsigned int theCount);
   void Write(const DOUBLE* theValues, unsigned int theCount);

   void Flush() { itsStream->Flush(); }

private:
   template <class T>
   void WriteValue(T theValue)
   {
      unsigned char aField[sizeof(T)];
      TNEndian::Store(aField, theValue, itsEndian);
      itsStream->Write(aField, sizeof aField);
   }

   template <class T>
   void WriteArray(const T* theValues, unsigned int theCount);

   OutputStream* itsStream;
   TNEndian::EndianType itsEndian;
};
