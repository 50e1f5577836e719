#include "talvenor/ul/PDVOutputStream.h"

#include <algorithm>
#include <cstring>

#include "talvenor/foundation/TNTrace.h"
#include "talvenor/io/IOBuffer.h"
#include "talvenor/io/TNEndian.h"
#include "talvenor/ul/PDUOutputStream.h"

namespace
{

constexpr UINT32 kFallbackBufferSize = 4096; // for a transport that names no block size

void Trace(const char* theText)
{
   if (gTNTracer(TNTrace::TNTracePDataTF))
   {
      LogEntry anEntry(gTNTracer);
      anEntry << theText << "\n";
   }
}

} // namespace

PDVOutputStream::PDVOutputStream(PDUOutputStream& theStream)
    : itsMaximumDataSize(theStream.GetMaxUserDataSize() - kHeaderSize), itsStream(theStream)
{}

PDVOutputStream::~PDVOutputStream() = default;

void PDVOutputStream::PDV::Clear()
{
   itsBuffers.clear(); // keeps its capacity: the next PDV has as many
   itsLength = 0;
}

UINT32 PDVOutputStream::GetMaxPDVSize() const
{
   return itsStream.GetMaxUserDataSize();
}

unsigned int PDVOutputStream::GetMaximumOutputBlockSize() const
{
   return std::min<unsigned int>(itsMaximumDataSize, itsStream.GetMaximumOutputBlockSize());
}

void PDVOutputStream::SetMessageType(MessageType theType)
{
   itsStream.SetPDUType(PDUOutputStream::PDataTF);
   if (itsCurrent.itsLength > 0 && theType != itsCurrent.itsMessageType)
   {
      throw StreamIOException(
          "PDVOutputStream::SetMessageType(): Invalid attempt to change message type for non-empty PDV",
          TN_INTERNAL_ERROR, 0);
   }
   itsCurrent.itsMessageType = theType;
}

void PDVOutputStream::SetPresentationContextID(unsigned char theID)
{
   if (itsCurrent.itsLength > 0 && theID != itsCurrent.itsContextID)
   {
      throw StreamIOException("PDVOutputStream::SetPresentationContextID(): Invalid attempt to change presentation "
                              "context ID for non-empty PDV",
                              TN_INTERNAL_ERROR, 0);
   }
   itsCurrent.itsContextID = theID;
}

void PDVOutputStream::FlushOutput()
{
   itsStream.FlushOutput();
}

void PDVOutputStream::FinishPDU()
{
   itsStream.FinishPDU();
}

void PDVOutputStream::Write(const unsigned char* theBytes, unsigned int theCount)
{
   RequireUnfinished();
   while (theCount > 0)
   {
      IOBuffer& aBuffer = BufferWithRoom();
      const UINT32 aPiece = std::min({theCount, aBuffer.GetAvailableFreeSpace(), GetAvailableFreeSpace()});
      std::memcpy(aBuffer.GetCopyInPointer(), theBytes, aPiece);
      aBuffer.SetBytesCopiedIn(aPiece);
      itsCurrent.itsLength += aPiece;
      theBytes += aPiece;
      theCount -= aPiece;
      FinishPDVIfFull();
   }
}

void PDVOutputStream::Write(IOBuffer* theBuffer)
{
   std::unique_ptr<IOBuffer> aBuffer(theBuffer);
   const UINT32 aLength = aBuffer ? aBuffer->GetBytesAvailable() : 0;
   RequireUnfinished();
   if (aLength > itsMaximumDataSize)
   {
      throw StreamIOException("PDVOutputStream::Write(): IOBuffer contains more bytes than PDV user data size",
                              TN_INVALID_ARGUMENT, 0);
   }
   if (aLength == 0)
   {
      return;
   }
   if (aLength > GetAvailableFreeSpace())
   {
      FinishPDV(0);
   }
   itsCurrent.itsBuffers.push_back(std::move(aBuffer));
   itsCurrent.itsLength += aLength;
   FinishPDVIfFull();
}

// Between calls there is always room in the current PDV.
void PDVOutputStream::FinishPDVIfFull()
{
   if (GetAvailableFreeSpace() == 0)
   {
      FinishPDV(0);
   }
}

// A Write that goes on past the end of its message would wait for ever for room.
void PDVOutputStream::RequireUnfinished() const
{
   if (itsIsFinished)
   {
      throw StreamIOException("PDVOutputStream::Write(): Invalid attempt to write to finished message",
                              TN_INTERNAL_ERROR, 0);
   }
}

IOBuffer& PDVOutputStream::BufferWithRoom()
{
   auto& aBuffers = itsCurrent.itsBuffers;
   if (aBuffers.empty() || aBuffers.back()->GetAvailableFreeSpace() == 0)
   {
      const UINT32 aBlockSize = GetMaximumOutputBlockSize();
      aBuffers.push_back(
          std::make_unique<IOBuffer>(aBlockSize > 0 ? aBlockSize : std::min(itsMaximumDataSize, kFallbackBufferSize)));
   }
   return *aBuffers.back();
}

void PDVOutputStream::FinishPDV(int theLast)
{
   if (itsIsFinished)
   {
      return;
   }
   itsIsFinished = theLast != 0;
   if (itsCurrent.itsLength > 0)
   {
      WritePendingPDV(false);
      std::swap(itsCurrent, itsPending);
      itsCurrent.itsMessageType = itsPending.itsMessageType;
      itsCurrent.itsContextID = itsPending.itsContextID;
   }
   if (itsIsFinished)
   {
      WritePendingPDV(true);
   }
}

void PDVOutputStream::FinishEmptyMessage()
{
   if (itsIsFinished || itsCurrent.itsLength > 0 || itsPending.itsLength > 0)
   {
      FinishPDV(1);
      return;
   }
   itsIsFinished = true;
   WriteHeader(itsCurrent, true);
}

void PDVOutputStream::DiscardMessage()
{
   itsCurrent.Clear();
   itsPending.Clear();
   itsIsFinished = false;
}

void PDVOutputStream::WritePendingPDV(bool theLast)
{
   if (itsPending.itsLength == 0)
   {
      return;
   }
   TracePending();
   WriteHeader(itsPending, theLast);
   for (std::unique_ptr<IOBuffer>& aBuffer : itsPending.itsBuffers)
   {
      itsStream.Write(aBuffer.release());
   }
   itsPending.Clear();
   Trace("PDVOutputStream::WritePendingPDV(): done writing PDV data");
}

void PDVOutputStream::WriteHeader(const PDV& thePDV, bool theLast)
{
   itsStream.SetPDUType(PDUOutputStream::PDataTF);
   if (itsStream.GetAvailableFreeSpace() < thePDV.itsLength + kHeaderSize)
   {
      Trace("PDVOutputStream::WritePendingPDV(): pending PDV will not fit in free space of current PDU, finish current "
            "PDU before sending pending PDV");
      itsStream.FinishPDU();
   }
   Trace("PDVOutputStream::WritePendingPDV(): writing PDV header (6 bytes)");
   auto aHeader = std::make_unique<IOBuffer>(kHeaderSize);
   unsigned char* const aBytes = aHeader->GetCopyInPointer();
   const int aControl = (thePDV.itsMessageType == CommandMessage ? kCommandBit : 0) | (theLast ? kLastFragmentBit : 0);
   TNEndian::Store<TNEndian::BigEndian>(aBytes, UINT32{thePDV.itsLength + (kHeaderSize - kItemLengthSize)});
   aBytes[4] = thePDV.itsContextID;
   aBytes[5] = static_cast<unsigned char>(aControl);
   aHeader->SetBytesCopiedIn(kHeaderSize);
   itsStream.Write(aHeader.release());
}

void PDVOutputStream::TracePending() const
{
   if (!gTNTracer(TNTrace::TNTracePDataTF))
   {
      return;
   }
   const auto write = [](LogEntry& theEntry, const char* theWhich, const PDV& thePDV) {
      theEntry << "\t" << theWhich << "Presentation Context ID: " << int{thePDV.itsContextID} << "\n\t" << theWhich
               << "PDV Length: " << thePDV.itsLength << "\n\t" << theWhich
               << "Message Type: " << MessageTypeToString(thePDV.itsMessageType) << "\n";
   };
   LogEntry anEntry(gTNTracer);
   anEntry << "PDVOutputStream::WritePendingPDV(): Send Pending PDV to PDUOutputStream: \n";
   write(anEntry, "", itsCurrent);
   write(anEntry, "Pending ", itsPending);
}
