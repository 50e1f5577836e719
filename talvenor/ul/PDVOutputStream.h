// Cuts what is written into presentation data values (PDVs) and puts them into P-DATA-TF PDUs (PS3.8 9.3.5, annex E). A
// PDV on the wire:
//
//    item length      4 bytes, big-endian: 2 + number of data bytes
//    context ID       1 byte
//    control header   1 byte: bit 0 command (clear: data set), bit 1 last fragment of the message
//    data             a fragment of the encoded message
//
// A PDV is as large as the PDU allows. A finished one is held back until it is known whether it is the last of its
// message: so every message ends with one PDV that says so. Several small PDVs share a PDU; the caller finishes the
// PDU.
//
// Data are copied once, into buffers of the transport's block size; buffers go to the transport as they are.
//
// Failures throw StreamIOException. After a failure of the transport the message is lost: abort the association. The
// PDU stream is borrowed and must outlive this object. One thread at a time.
#pragma once

#include <memory>
#include <vector>

#include "talvenor/ul/PDVMessageType.h"

class IOBuffer;
class PDUOutputStream;

class TALVENOR_API PDVOutputStream : public PDVMessageType
{
public:
   // Sizes are those of the PDU stream at this time.
   explicit PDVOutputStream(PDUOutputStream& theStream);
   PDVOutputStream(const PDVOutputStream&) = delete;
   PDVOutputStream& operator=(const PDVOutputStream&) = delete;

   // Drops what has not been handed to the PDU stream.
   virtual ~PDVOutputStream();

   // Ends the current PDV, and with theLast the message, after which nothing more is taken. A PDV without data is not
   // made: when the message ends, the one held back becomes its last; a message of no bytes leaves no trace.
   virtual void FinishPDV(int theLast);

   // Throws with TN_INTERNAL_ERROR when the message has ended.
   virtual void Write(const unsigned char* theBytes, unsigned int theCount);

   // Takes the buffer, also when it throws, and does not copy it: it shares the current PDV or starts the next one.
   // Throws with TN_INVALID_ARGUMENT when it holds more than a PDV can. Null and empty buffers are nothing.
   virtual void Write(IOBuffer* theBuffer);

   virtual unsigned int GetMaximumOutputBlockSize() const;

   // Both throw with TN_INTERNAL_ERROR when the current PDV holds data of another type or context. Until they are set a
   // message is one of data on context 0.
   virtual void SetMessageType(MessageType theType);
   virtual void SetPresentationContextID(unsigned char theID);

   virtual void FlushOutput();

   void FinishPDU();

   UINT32 GetMaxUserDataSize() const { return itsMaximumDataSize; } // data bytes of a PDV
   UINT32 GetMaxPDVSize() const;                                    // with its header
   UINT32 GetAvailableFreeSpace() const { return itsMaximumDataSize - itsCurrent.itsLength; }
   UINT32 GetPDVLength() const { return itsCurrent.itsLength; } // data bytes of the current PDV
   MessageType GetMessageType() const { return itsCurrent.itsMessageType; }
   unsigned char GetPresentationContextID() const { return itsCurrent.itsContextID; }

   // An addition, for a message that is given up: forgets the current PDV and the one held back, and accepts a new
   // message. PDVs that were handed to the PDU stream are not called back: the association has to be aborted then.
   void DiscardMessage();

protected:
   // Ends a message that has no bytes with an empty PDV: there is no other way to say that it ended.
   void FinishEmptyMessage();

   // Accepts the next message.
   void Rearm() { itsIsFinished = false; }

private:
   struct PDV
   {
      MessageType itsMessageType = NoMessage;
      UINT32 itsLength = 0; // bytes in the buffers
      std::vector<std::unique_ptr<IOBuffer>> itsBuffers;
      unsigned char itsContextID = 0;

      void Clear();
   };

   void RequireUnfinished() const;
   IOBuffer& BufferWithRoom();
   void FinishPDVIfFull();
   void WritePendingPDV(bool theLast);
   void WriteHeader(const PDV& thePDV, bool theLast);
   void TracePending() const;

   UINT32 itsMaximumDataSize;
   bool itsIsFinished = false; // the last fragment was handed on
   PDV itsCurrent;
   PDV itsPending; // finished and held back; of length 0 when there is none
   PDUOutputStream& itsStream;
};
