// A DICOM file, opened for reading under a shared lock: any number of readers, or one writer (see LFStream).
//
// While another process holds the file for writing, opening tries again once a second, as often as the default lock
// wait time of LFStream says; 0 is without limit.
#pragma once

#include "talvenor/file/Part10InputStream.h"
#include "talvenor/io/LFStream.h"

class TALVENOR_API Part10FileInputStream : public Part10InputStream
{
public:
   explicit Part10FileInputStream(const RWCString& thePath, int theForceDefaultVersion = 0, int theTolerant = 0);
   ~Part10FileInputStream() override;

   int CanSeek() const override { return 1; }
   void Close() override;
   UINT32 GetFileSize() const override; // as it was when the file was opened

   // Opens and locks the file and measures its size.
   virtual void OpenFile();

protected:
   unsigned int ReadImpl(unsigned char* theBuffer, unsigned int theCount) override;
   void SeekImpl(unsigned int thePosition) override;

private:
   RWCString itsPath;
   LFStream itsStream;
   UINT64 itsFileSize = 0;
};
