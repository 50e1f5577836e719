#include "talvenor/pixel/ImageFramePixelInputStream.h"

#include "talvenor/io/BufferingInputStream.h"
#include "talvenor/pixel/ForwardSpan.h"

struct ImageFramePixelInputStream::View
{
   BufferingInputStream& itsStream; // not touched when nothing remains
   LongForwardSpan itsSpan;
};

ImageFramePixelInputStream::ImageFramePixelInputStream(BufferingInputStream& theStream, UINT64 theLength)
    : itsView(std::make_shared<View>(View{theStream, LongForwardSpan(theLength)}))
{}

ImageFramePixelInputStream::~ImageFramePixelInputStream() = default;

unsigned int ImageFramePixelInputStream::Read(unsigned char* theBuffer, unsigned int theCount)
{
   const unsigned int aWanted = itsView->itsSpan.Clip(theCount);
   const unsigned int aCount = aWanted != 0 ? itsView->itsStream.ReadOnward(theBuffer, aWanted) : 0;
   itsView->itsSpan.Advance(aCount);
   return aCount;
}

unsigned int ImageFramePixelInputStream::Skip(unsigned int theCount)
{
   const unsigned int aWanted = itsView->itsSpan.Clip(theCount);
   const unsigned int aCount = aWanted != 0 ? itsView->itsStream.SkipOnward(aWanted) : 0;
   itsView->itsSpan.Advance(aCount);
   return aCount;
}

void ImageFramePixelInputStream::Seek(unsigned int thePosition)
{
   Skip(itsView->itsSpan.DistanceTo(thePosition, "ImageFramePixelInputStream"));
}

unsigned int ImageFramePixelInputStream::GetStreamPosition() const
{
   return static_cast<unsigned int>(itsView->itsSpan.GetPosition());
}

UINT64 ImageFramePixelInputStream::GetRemainingBytes() const
{
   return itsView->itsSpan.GetRemaining();
}

UINT64 ImageFramePixelInputStream::GetInitialLength() const
{
   return itsView->itsSpan.GetLength();
}

void ImageFramePixelInputStream::Flush()
{
   while (Skip(0xFFFFFFFF) != 0)
   {}
}

void ImageFramePixelInputStream::End()
{
   itsView->itsSpan.AdvanceToEnd();
}
