#include "apps/tn/files/FileWindow.h"

#include <algorithm>
#include <cstring>

namespace
{
// Holds the elements in front of the pixel data of most files.
constexpr std::size_t kWindow = 8192;
} // namespace

const unsigned char* FileWindow::At(UINT64 thePosition, unsigned int theCount)
{
   if (thePosition > GetSize() || theCount > GetSize() - thePosition)
   {
      return nullptr;
   }
   if (thePosition < itsStart || thePosition + theCount > itsStart + itsCount)
   {
      MoveTo(thePosition);
      if (itsCount < theCount) // it was cut meanwhile
      {
         return nullptr;
      }
   }
   return itsBytes.data() + (thePosition - itsStart);
}

unsigned int FileWindow::CopyFrom(UINT64 thePosition, unsigned char* theBuffer, unsigned int theCount)
{
   if (thePosition >= GetSize())
   {
      return 0;
   }
   if (thePosition < itsStart || thePosition >= itsStart + itsCount)
   {
      MoveTo(thePosition);
   }
   const auto aCount = static_cast<unsigned int>(std::min<UINT64>(theCount, itsStart + itsCount - thePosition));
   std::memcpy(theBuffer, itsBytes.data() + (thePosition - itsStart), aCount);
   return aCount;
}

// thePosition is in the file.
void FileWindow::MoveTo(UINT64 thePosition)
{
   itsBytes.resize(kWindow);
   itsStart = thePosition;
   itsCount = itsFile.ReadAt(itsBytes.data(), std::min<UINT64>(kWindow, GetSize() - thePosition), thePosition);
}
