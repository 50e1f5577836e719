#include "talvenor/io/BoundedInputStream.h"

#include <algorithm>
#include <typeinfo>

#include "talvenor/io/EndianHandlingReader.h"

namespace
{

// The stream that a reader (or a reader on a reader) hands its reads on to. Classes derived from the reader stay: they
// may do more.
InputStream* BelowReaders(InputStream* theStream)
{
   while (theStream != nullptr && typeid(*theStream) == typeid(EndianHandlingReader))
   {
      theStream = &static_cast<EndianHandlingReader*>(theStream)->GetStream();
   }
   return theStream;
}

} // namespace

BoundedInputStream::BoundedInputStream(InputStream* theStream, unsigned int theLimit)
    : itsStream(BelowReaders(theStream)), itsPosition(&itsOwnPosition), itsEnd(itsStream != nullptr ? theLimit : 0)
{
   if (itsStream != nullptr && typeid(*itsStream) == typeid(BoundedInputStream))
   {
      const auto* const anOuter = static_cast<const BoundedInputStream*>(itsStream);
      itsStream = anOuter->itsStream;
      itsPosition = anOuter->itsPosition;
      itsEnd = std::min(anOuter->itsEnd, *itsPosition + theLimit);
   }
}

unsigned int BoundedInputStream::Read(unsigned char* theBuffer, unsigned int theCount)
{
   const unsigned int aWish = std::min(theCount, GetRemaining());
   if (aWish == 0)
   {
      return 0;
   }
   const unsigned int aCount = itsStream->Read(theBuffer, aWish);
   *itsPosition += aCount;
   return aCount;
}

void BoundedInputStream::Close()
{
   if (itsStream != nullptr)
   {
      itsStream->Close();
   }
}

unsigned int BoundedInputStream::SkipRemaining()
{
   unsigned char aBuffer[16384];
   unsigned int aSkipped = 0;
   while (const unsigned int aCount = Read(aBuffer, sizeof aBuffer))
   {
      aSkipped += aCount;
   }
   return aSkipped;
}
