// The bytes of a dataset in a file, read where they are wanted. Throws StreamIOException when the file became shorter.
#pragma once

#include <algorithm>
#include <string>

#include "apps/tn/files/PlainFile.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/io/InputStream.h"

class StoredDataset : public InputStream
{
public:
   // From theStart to theEnd, in bytes from the start of the file.
   StoredDataset(const std::string& thePath, UINT64 theStart, UINT64 theEnd)
       : itsFile(thePath), itsPosition(theStart), itsEnd(theEnd)
   {}

   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override
   {
      const auto aCount = static_cast<unsigned int>(std::min<UINT64>(theCount, itsEnd - itsPosition));
      if (itsFile.ReadAt(theBuffer, aCount, itsPosition) != aCount)
      {
         throw StreamIOException("the file became shorter while it was sent", TN_END_OF_FILE, 0);
      }
      itsPosition += aCount;
      return aCount;
   }
   void Close() override {}

private:
   PlainFile itsFile;
   UINT64 itsPosition;
   UINT64 itsEnd;
};
