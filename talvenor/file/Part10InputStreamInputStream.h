// A DICOM file that comes out of another stream.
#pragma once

#include "talvenor/file/Part10InputStream.h"

class TALVENOR_API Part10InputStreamInputStream : public Part10InputStream
{
public:
   Part10InputStreamInputStream() = default;
   ~Part10InputStreamInputStream() override;

   // Reads the header from theStream, which stands at its start, is borrowed and must outlive this one (or its Close,
   // which closes it too).
   virtual void Open(InputStream& theStream, int theForceDefaultVersion = 0, int theTolerant = 0);

   int CanSeek() const override;
   void Close() override;
   UINT32 GetFileSize() const override; // 0 when it is not known

protected:
   using Part10InputStream::Open;
   unsigned int ReadImpl(unsigned char* theBuffer, unsigned int theCount) override;
   void SeekImpl(unsigned int thePosition) override;

private:
   InputStream* itsStream = nullptr;
};
