#include "talvenor/pixel/PixelDataFragmentInputStream.h"

#include "talvenor/foundation/Exceptions.h"
#include "talvenor/io/EndianHandlingReader.h"

PixelDataFragmentInputStream::PixelDataFragmentInputStream(EndianHandlingReader& theReader, UINT32 theLength)
    : itsReader(theReader), itsSpan(theLength)
{
   if (theReader.GetEndian() != TNEndian::LittleEndian)
   {
      throw ConstructorError("PixelDataFragmentInputStream::PixelDataFragmentInputStream: Attempt to construct "
                             "encapsulated PixelDataFragmentInputStream with syntax other than Little endian");
   }
}

unsigned int PixelDataFragmentInputStream::Read(unsigned char* theBuffer, unsigned int theCount)
{
   const UINT32 aWanted = itsSpan.Clip(theCount);
   const unsigned int aCount = aWanted != 0 ? itsReader.Read(theBuffer, aWanted) : 0;
   itsSpan.Advance(aCount);
   return aCount;
}

unsigned int PixelDataFragmentInputStream::Skip(unsigned int theCount)
{
   const UINT32 aWanted = itsSpan.Clip(theCount);
   const unsigned int aCount = aWanted != 0 ? itsReader.Skip(aWanted) : 0;
   itsSpan.Advance(aCount);
   return aCount;
}

void PixelDataFragmentInputStream::Seek(unsigned int thePosition)
{
   Skip(itsSpan.DistanceTo(thePosition, "PixelDataFragmentInputStream"));
}
