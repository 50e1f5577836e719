// A file of which small pieces at known places are looked at: one read serves what lies close together.
#pragma once

#include <vector>

#include "apps/tn/files/PlainFile.h"
#include "talvenor/io/InputStream.h"

class FileWindow
{
public:
   // theFile is borrowed.
   explicit FileWindow(const PlainFile& theFile) : itsFile(theFile) {}

   UINT64 GetSize() const { return itsFile.GetSize(); }

   // The theCount (at most kMaximum) bytes from thePosition on, lent until the next call; null when the file ends
   // before the last of them. Throws StreamIOException when it cannot be read.
   const unsigned char* At(UINT64 thePosition, unsigned int theCount);

   static constexpr unsigned int kMaximum = 64;

   // Returns how many bytes from thePosition on, at most theCount, were copied to theBuffer; 0 at the end of the file.
   unsigned int CopyFrom(UINT64 thePosition, unsigned char* theBuffer, unsigned int theCount);

private:
   void MoveTo(UINT64 thePosition);

   const PlainFile& itsFile;
   UINT64 itsStart = 0; // of what has been read
   std::size_t itsCount = 0;
   std::vector<unsigned char> itsBytes;
};

// The file from its start on, for what reads streams.
class FileWindowStream : public InputStream
{
public:
   // theFile is borrowed.
   explicit FileWindowStream(FileWindow& theFile) : itsFile(theFile) {}

   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override
   {
      const unsigned int aCount = itsFile.CopyFrom(itsPosition, theBuffer, theCount);
      itsPosition += aCount;
      return aCount;
   }
   INT64 Length() const override { return static_cast<INT64>(itsFile.GetSize()); }
   void Close() override {}

private:
   FileWindow& itsFile;
   UINT64 itsPosition = 0;
};
