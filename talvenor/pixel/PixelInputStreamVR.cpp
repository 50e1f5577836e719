#include "talvenor/pixel/PixelInputStreamVR.h"

#include "talvenor/dictionary/VRType.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/io/EndianHandlingReader.h"

namespace
{
// The length as it is presented: even.
UINT32 EvenLength(UINT32 theLength, UINT16 theTypeCode)
{
   if ((theLength & 1) == 0)
   {
      return theLength;
   }
   if (theTypeCode != VRCode::OB)
   {
      throw StreamIOException(
          "PixelInputStreamVRImpl::PixelInputStreamVRImpl: odd length is invalid for data type != 'OB'",
          TN_INTERNAL_ERROR, 0);
   }
   return theLength + 1;
}
} // namespace

PixelInputStreamVRImpl::PixelInputStreamVRImpl(EndianHandlingReader& theReader, UINT32 theLength, UINT16 theTypeCode)
    : PixelInputStreamVR(theReader.GetEndian()), itsReader(theReader), itsSpan(EvenLength(theLength, theTypeCode)),
      itsLengthInStream(theLength)
{
   SetTypeCode(theTypeCode);
   SetLength(itsSpan.GetLength());
}

PixelInputStreamVRImpl& PixelInputStreamVRImpl::operator=(const PixelInputStreamVRImpl&)
{
   throw StreamIOException("PixelInputStreamVRImpl::operator=(): assignment not supported", TN_UNSUPPORTED, 0);
}

UINT32 PixelInputStreamVRImpl::GetStreamBytesLeft() const
{
   return itsSpan.GetPosition() < itsLengthInStream ? itsLengthInStream - itsSpan.GetPosition() : 0;
}

unsigned int PixelInputStreamVRImpl::Read(unsigned char* theBuffer, unsigned int theCount)
{
   const UINT32 aWanted = itsSpan.Clip(theCount);
   if (const UINT32 aFromStream = std::min(aWanted, GetStreamBytesLeft()))
   {
      const unsigned int aCount = itsReader.Read(theBuffer, aFromStream);
      itsSpan.Advance(aCount);
      return aCount;
   }
   if (aWanted != 0)
   {
      *theBuffer = 0; // the pad byte
      itsSpan.Advance(1);
   }
   return aWanted;
}

unsigned int PixelInputStreamVRImpl::Skip(unsigned int theCount)
{
   const UINT32 aWanted = itsSpan.Clip(theCount);
   const UINT32 aFromStream = std::min(aWanted, GetStreamBytesLeft());
   const UINT32 aSkipped = aFromStream != 0 ? itsReader.Skip(aFromStream) : 0;
   const UINT32 aCount = aSkipped == aFromStream ? aWanted : aSkipped;
   itsSpan.Advance(aCount);
   return aCount;
}

void PixelInputStreamVRImpl::Seek(unsigned int thePosition)
{
   Skip(itsSpan.DistanceTo(thePosition, "PixelInputStreamVRImpl"));
}

VR* PixelInputStreamVRImpl::GetVR()
{
   if (itsSpan.GetPosition() != 0)
   {
      throw StreamIOException("PixelInputStreamVRImpl::GetVR(): Data partially read from stream already",
                              TN_INTERNAL_ERROR, 0);
   }
   auto aVR = std::make_unique<VR>(GetGroup(), GetElement(), GetDataEndian(), GetMemoryAllocater());
   aVR->SetTypeCode(GetTypeCode());
   if (itsLengthInStream != 0)
   {
      itsSpan.Advance(itsSpan.GetLength()); // whatever comes: the value cannot be read twice
      aVR->SetLength(itsLengthInStream);
      if (!aVR->ReadData(itsReader))
      {
         throw StreamIOException("PixelInputStreamVRImpl::GetVR(): EOF before all of data read", TN_END_OF_FILE, 0);
      }
      aVR->SetLength(itsSpan.GetLength()); // the buffer holds the pad byte already
   }
   return aVR.release();
}

std::unique_ptr<VR> PixelInputStreamVRImpl::Materialise(std::exception_ptr&)
{
   return std::unique_ptr<VR>(GetVR()); // half an image is no value: a failure passes through
}
