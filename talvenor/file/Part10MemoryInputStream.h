// A DICOM file in memory.
#pragma once

#include "talvenor/file/Part10InputStream.h"

class TALVENOR_API Part10MemoryInputStream : public Part10InputStream
{
public:
   // Takes theBuffer (new[]), which Close frees. Throws TNRuntimeException for a null buffer with a size.
   Part10MemoryInputStream(unsigned char* theBuffer, UINT32 theSize, int theForceDefaultVersion = 0,
                           int theTolerant = 0);

   // Borrows theBuffer, which must outlive the stream.
   Part10MemoryInputStream(UINT32 theSize, const unsigned char* const& theBuffer, int theForceDefaultVersion = 0,
                           int theTolerant = 0);
   ~Part10MemoryInputStream() override;

   int CanSeek() const override { return 1; }
   void Close() override;
   UINT32 GetFileSize() const override { return itsSize; }

protected:
   unsigned int ReadImpl(unsigned char* theBuffer, unsigned int theCount) override;
   void SeekImpl(unsigned int thePosition) override;

private:
   UINT32 itsSize;
   UINT32 itsReadPosition = 0;
   std::unique_ptr<unsigned char[]> itsOwned; // null when the buffer is borrowed
   const unsigned char* itsBuffer;
   bool itsIsOpen = true;
};
