// A file of which small pieces at known places are looked at: one read serves what lies close together.
#pragma once

#include <vector>

#include "apps/tn/files/PlainFile.h"

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

private:
   const PlainFile& itsFile;
   UINT64 itsStart = 0; // of what has been read
   std::size_t itsCount = 0;
   std::vector<unsigned char> itsBytes;
};
