// Collects the body of a protocol data unit (PDU, PS3.8 9.3.1) and hands header and body to a DULStream when the PDU is
// finished.
//
// A P-DATA-TF body that grows beyond what the peer accepts goes out as several PDUs. No other PDU can be divided, nor
// does the peer's maximum hold for it (PS3.8 D.1): whatever is written to one stays together until FinishPDU.
//
// Failures throw StreamIOException. After one that came from the DULStream the current PDU is gone and the association
// lost. Not locked: one thread at a time.
#pragma once

#include <memory>
#include <vector>

#include "talvenor/ul/PDUTypes.h"

class DULStream;
class IOBuffer;
class LogStream;

class TALVENOR_API PDUOutputStream : public PDUTypes
{
public:
   // The capacity of a buffer when the DULStream does not tell its maximum block size.
   static constexpr unsigned int itsDefaultBufferSize = 4096;

   // theStream is borrowed. The length is that of a whole PDU in bytes, as for SetMaxPDUSendLength. The type is
   // P-DATA-TF until it is set.
   PDUOutputStream(DULStream& theStream, UINT32 theMaxPDUSendLength);
   // Writes to the same DULStream, with a copy of the body so far.
   PDUOutputStream(const PDUOutputStream& theOther);
   PDUOutputStream& operator=(const PDUOutputStream&) = delete;

   // Virtual operations in slot order.
   virtual void FlushOutput();
   // The smaller of GetMaxUserDataSize and the DULStream's.
   virtual unsigned int GetMaximumOutputBlockSize() const;
   virtual ~PDUOutputStream();

   // Throws with TN_INTERNAL_ERROR when a body of another type is queued: finish or drop that first.
   void SetPDUType(unsigned char theType);
   unsigned char GetPDUType() const { return itsPDUType; }
   UINT32 GetPDULength() const { return itsPDULength; } // bytes of the body that are queued

   // Appends to the body, by copying. A P-DATA-TF is finished as soon as it is full.
   void Write(const unsigned char* theBytes, unsigned int theCount);
   // Appends the unread bytes of the buffer, which is taken over, without copying them. When they do not fit, the
   // current PDU is finished first; one that they fill stays queued. Throws with TN_INVALID_ARGUMENT when they cannot
   // fit any PDU. Null writes nothing.
   void Write(IOBuffer* theBuffer);

   // One number in big-endian byte order.
   void DULWrite(unsigned char theValue);
   void DULWrite(unsigned short theValue);
   void DULWrite(unsigned int theValue);

   // Hands the PDU over; does nothing when it has no body. FlushOutput is a step of its own.
   void FinishPDU();
   // An addition: forgets the body so far. What has gone out of a message with earlier PDUs cannot be taken back.
   void DropPDU();

   UINT32 GetMaxUserDataSize() const { return itsMaxUserDataSize; } // of a P-DATA-TF body
   UINT32 GetAvailableFreeSpace() const { return FreeSpaceUpTo(itsMaxUserDataSize); }
   // Of a whole P-DATA-TF with its header, in bytes. Less than 14 becomes 14: the smallest that carries data.
   UINT32 GetMaxPDUSendLength() const { return itsMaxUserDataSize + kHeaderLength; }
   void SetMaxPDUSendLength(UINT32 theLength) { itsMaxUserDataSize = AllowedSendLength(theLength) - kHeaderLength; }
   static UINT32 GetDefaultMaxPDUSendLength() { return itsDefaultMaxPDUSendLength; }
   static void SetDefaultMaxPDUSendLength(UINT32 theLength)
   {
      itsDefaultMaxPDUSendLength = AllowedSendLength(theLength);
   }

   // An addition: header and limit in the trace's form.
   void Dump(LogStream& theLog) const;

private:
   static constexpr UINT32 kHeaderLength = 6;

   static UINT32 AllowedSendLength(UINT32 theLength) { return theLength < 14 ? 14 : theLength; }
   UINT32 FreeSpaceUpTo(UINT32 theLimit) const { return theLimit > itsPDULength ? theLimit - itsPDULength : 0; }
   UINT32 GetLimit() const { return itsPDUType == PDataTF ? itsMaxUserDataSize : 0xFFFFFFFF; }
   IOBuffer& BufferWithSpace();

   static UINT32 itsDefaultMaxPDUSendLength;

   DULStream& itsStream;
   unsigned char itsPDUType = PDataTF;
   unsigned char itsReserved = 0;
   UINT32 itsPDULength = 0;
   UINT32 itsMaxUserDataSize;
   std::vector<std::unique_ptr<IOBuffer>> itsBuffers; // the body
};
