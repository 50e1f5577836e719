#include "talvenor/ul/DICOMMessageOutputStream.h"

#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/io/IOBuffer.h"
#include "talvenor/ul/PDUOutputStream.h"

namespace
{

void RequireEmpty(UINT64 theLength, const char* theMessage)
{
   if (theLength > 0)
   {
      throw StreamIOException(theMessage, TN_INTERNAL_ERROR, 0);
   }
}

} // namespace

DICOMMessageOutputStream::DICOMMessageOutputStream(PDUOutputStream& theStream) : PDVOutputStream(theStream)
{
   if (theStream.GetPDUType() != PDUOutputStream::PDataTF)
   {
      theStream.FinishPDU();
      theStream.SetPDUType(PDUOutputStream::PDataTF);
   }
}

DICOMMessageOutputStream::~DICOMMessageOutputStream() = default;

void DICOMMessageOutputStream::Write(IOBuffer* theBuffer)
{
   const unsigned int aLength = theBuffer != nullptr ? theBuffer->GetBytesAvailable() : 0;
   PDVOutputStream::Write(theBuffer);
   itsLength += aLength;
}

void DICOMMessageOutputStream::Write(const unsigned char* theBytes, unsigned int theCount)
{
   PDVOutputStream::Write(theBytes, theCount);
   itsLength += theCount;
}

void DICOMMessageOutputStream::Flush()
{
   FinishPDV(0);
}

unsigned int DICOMMessageOutputStream::GetMaximumOutputBlockSize() const
{
   return PDVOutputStream::GetMaximumOutputBlockSize();
}

void DICOMMessageOutputStream::SetMessageType(MessageType theType)
{
   RequireEmpty(itsLength, "DICOMMessageOutputStream::SetMessageType(): Invalid attempt to change message type for "
                           "non-empty message");
   PDVOutputStream::SetMessageType(theType);
}

void DICOMMessageOutputStream::SetPresentationContextID(unsigned char theID)
{
   RequireEmpty(itsLength, "DICOMMessageOutputStream::SetPresentationContextID(): Invalid attempt to change "
                           "presentation context ID for non-empty message");
   PDVOutputStream::SetPresentationContextID(theID);
}

void DICOMMessageOutputStream::FinishMessage()
{
   FinishPDV(1);
   EndMessage();
}

void DICOMMessageOutputStream::FinishMessageEvenIfEmpty()
{
   FinishEmptyMessage();
   EndMessage();
}

void DICOMMessageOutputStream::EndMessage()
{
   FlushOutput();
   itsLength = 0;
   Rearm();
}

void DICOMMessageOutputStream::DiscardMessage()
{
   PDVOutputStream::DiscardMessage();
   itsLength = 0;
}
