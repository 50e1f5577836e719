#include "apps/tn/files/FileWindow.h"

namespace
{
// Holds the elements in front of the pixel data of most files.
constexpr std::size_t kWindow = 8192;
} // namespace

const unsigned char* FileWindow::At(UINT64 thePosition, unsigned int theCount)
{
   if (thePosition < itsStart || thePosition + theCount > itsStart + itsCount)
   {
      if (thePosition > GetSize() || theCount > GetSize() - thePosition)
      {
         return nullptr;
      }
      itsBytes.resize(kWindow);
      itsStart = thePosition;
      itsCount = itsFile.ReadAt(itsBytes.data(), itsBytes.size(), itsStart);
      if (itsCount < theCount) // it was cut meanwhile
      {
         return nullptr;
      }
   }
   return itsBytes.data() + (thePosition - itsStart);
}
