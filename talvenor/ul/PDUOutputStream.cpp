#include "talvenor/ul/PDUOutputStream.h"

#include <algorithm>

#include "talvenor/foundation/TNTrace.h"
#include "talvenor/io/IOBuffer.h"
#include "talvenor/io/TNEndian.h"
#include "talvenor/ul/DULStream.h"
#include "talvenor/ul/FieldDumper.h"
#include "talvenor/ul/ULFailure.h"

UINT32 PDUOutputStream::itsDefaultMaxPDUSendLength = 32768;

PDUOutputStream::PDUOutputStream(DULStream& theStream, UINT32 theMaxPDUSendLength)
    : itsStream(theStream), itsMaxUserDataSize(AllowedSendLength(theMaxPDUSendLength) - kHeaderLength)
{}

PDUOutputStream::PDUOutputStream(const PDUOutputStream& theOther)
    : PDUTypes(theOther), itsStream(theOther.itsStream), itsPDUType(theOther.itsPDUType),
      itsReserved(theOther.itsReserved), itsPDULength(theOther.itsPDULength),
      itsMaxUserDataSize(theOther.itsMaxUserDataSize)
{
   for (const auto& aBuffer : theOther.itsBuffers)
   {
      itsBuffers.push_back(std::make_unique<IOBuffer>(*aBuffer));
   }
}

PDUOutputStream::~PDUOutputStream() = default;

void PDUOutputStream::FlushOutput()
{
   itsStream.FlushOutput();
}

unsigned int PDUOutputStream::GetMaximumOutputBlockSize() const
{
   return std::min(itsMaxUserDataSize, itsStream.GetMaximumOutputBlockSize());
}

void PDUOutputStream::SetPDUType(unsigned char theType)
{
   if (theType != itsPDUType && itsPDULength != 0)
   {
      RaiseULFailure("PDUOutputStream::SetPDUType(): Invalid attempt to change PDU type for non-empty PDU",
                     TN_INTERNAL_ERROR);
   }
   itsPDUType = theType;
}

void PDUOutputStream::Write(const unsigned char* theBytes, unsigned int theCount)
{
   while (theCount != 0)
   {
      const UINT32 aSpace = FreeSpaceUpTo(GetLimit());
      if (aSpace == 0) // filled by a buffer that was handed over, or the limit was lowered
      {
         FinishPDU();
         continue;
      }
      IOBuffer& aBuffer = BufferWithSpace();
      const unsigned int aCount = std::min({theCount, aSpace, aBuffer.GetAvailableFreeSpace()});
      aBuffer.CopyIn(theBytes, aCount);
      itsPDULength += aCount;
      theBytes += aCount;
      theCount -= aCount;
      if (aCount == aSpace)
      {
         FinishPDU();
      }
   }
}

// The DULStream says which size suits it. A size that a P-DATA-TF cannot fill would be wasted memory, as would be what
// a stream without a limit calls its maximum.
IOBuffer& PDUOutputStream::BufferWithSpace()
{
   constexpr UINT32 kLargestBuffer = 1 << 20;
   if (itsBuffers.empty() || itsBuffers.back()->GetAvailableFreeSpace() == 0)
   {
      const UINT32 aBlockSize = itsStream.GetMaximumOutputBlockSize();
      const UINT32 aCapacity = aBlockSize != 0 ? aBlockSize : itsDefaultBufferSize;
      itsBuffers.push_back(std::make_unique<IOBuffer>(std::min({aCapacity, itsMaxUserDataSize, kLargestBuffer})));
   }
   return *itsBuffers.back();
}

void PDUOutputStream::Write(IOBuffer* theBuffer)
{
   std::unique_ptr<IOBuffer> aBuffer(theBuffer);
   const unsigned int aCount = aBuffer ? aBuffer->GetBytesAvailable() : 0;
   if (gTNTracer(TNTrace::TNTracePDataTF))
   {
      LogEntry anEntry(gTNTracer);
      anEntry << "PDUOutputStream::Write(IOBuffer*): buffer length = " << aCount
              << ", free space in current PDU = " << GetAvailableFreeSpace() << "\n";
   }
   if (aCount > GetLimit())
   {
      RaiseULFailure("PDUOutputStream::Write(): IOBuffer contains more bytes than PDU user data size",
                     TN_INVALID_ARGUMENT);
   }
   if (aCount == 0)
   {
      return;
   }
   if (aCount > FreeSpaceUpTo(GetLimit()))
   {
      FinishPDU();
   }
   itsBuffers.push_back(std::move(aBuffer));
   itsPDULength += aCount;
}

void PDUOutputStream::DULWrite(unsigned char theValue)
{
   Write(&theValue, 1);
}

void PDUOutputStream::DULWrite(unsigned short theValue)
{
   unsigned char aBytes[2];
   TNEndian::Store<TNEndian::BigEndian>(aBytes, theValue);
   Write(aBytes, sizeof aBytes);
}

void PDUOutputStream::DULWrite(unsigned int theValue)
{
   unsigned char aBytes[4];
   TNEndian::Store<TNEndian::BigEndian>(aBytes, theValue);
   Write(aBytes, sizeof aBytes);
}

void PDUOutputStream::FinishPDU()
{
   if (itsPDULength == 0)
   {
      return;
   }
   if (gTNTracer(TNTrace::TNTracePDataTF))
   {
      LogEntry anEntry(gTNTracer);
      anEntry << "PDUOutputStream::FinishPDU(): Send PDU: \n";
      Dump(gTNTracer);
   }
   auto aHeader = std::make_unique<IOBuffer>(kHeaderLength);
   unsigned char aBytes[kHeaderLength] = {itsPDUType, itsReserved};
   TNEndian::Store<TNEndian::BigEndian>(aBytes + 2, itsPDULength);
   aHeader->CopyIn(aBytes, kHeaderLength);

   // Whatever happens now, these bytes are not sent a second time.
   struct AtEnd
   {
      ~AtEnd() { itsOutput.DropPDU(); }
      PDUOutputStream& itsOutput;
   } anEnd{*this};
   itsStream.Write(aHeader.release());
   for (auto& aBuffer : itsBuffers)
   {
      itsStream.Write(aBuffer.release());
   }
}

void PDUOutputStream::DropPDU()
{
   itsBuffers.clear();
   itsPDULength = 0;
}

void PDUOutputStream::Dump(LogStream& theLog) const
{
   FieldDumper aDumper(theLog);
   aDumper.Line("PDU Type", std::to_string(itsPDUType) + " " + PDUTypeToString(itsPDUType));
   aDumper.Number("Reserved", itsReserved);
   aDumper.Number("PDU Length", itsPDULength);
   aDumper.Number("Maximum User Data Length", itsMaxUserDataSize);
}
