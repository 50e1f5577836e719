// A DICOM file, opened for writing under an exclusive lock: while a reader or another writer has the file, opening
// tries again as Part10FileInputStream does. A file that was there is emptied once it is locked, and not before.
#pragma once

#include "talvenor/file/Part10OutputStream.h"
#include "talvenor/io/LFStream.h"

class TALVENOR_API Part10FileOutputStream : public Part10OutputStream
{
public:
   // Opens and locks the file and writes the header, which is taken in the pointer form (also when this throws) and
   // borrowed in the other.
   Part10FileOutputStream(const RWCString& thePath, Part10Header* theHeader);
   Part10FileOutputStream(const RWCString& thePath, const Part10Header& theHeader);

   // Closes. What could not be written then, and nobody has been told of, is in the error log.
   ~Part10FileOutputStream() override;

   void Flush() override;
   void Seek(unsigned int thePosition) override;
   int CanSeek() const override { return 1; }

   // Throws when something could not be written, now or earlier; the file is unlocked and closed all the same.
   void Close() override;

protected:
   void WriteImpl(const unsigned char* theBytes, unsigned int theCount) override;
   void SeekImpl(unsigned int thePosition) override;

private:
   void OpenFile();
   bool CloseFile();

   RWCString itsPath;
   LFStream itsStream;
};
