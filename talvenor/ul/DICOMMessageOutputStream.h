// One DIMSE message, a command set or a data set, on its way out: an OutputStream for the encoder, which cuts it into
// presentation data values (see PDVOutputStream).
//
//    DICOMMessageOutputStream aMessage(aPDUStream);
//    aMessage.SetMessageType(PDVOutputStream::DataMessage);
//    aMessage.SetPresentationContextID(1);
//    ...                          // encode into aMessage
//    aMessage.FinishMessage();
//    aMessage.FinishPDU();        // unless the data set of this command is to share the PDU
//
// A message that is not finished is not completed by the destructor: its last PDV stays unsent. The PDU stream is
// borrowed and must outlive this object. Failures throw StreamIOException. One thread at a time.
#pragma once

#include "talvenor/io/OutputStream.h"
#include "talvenor/ul/PDVOutputStream.h"

class TALVENOR_API DICOMMessageOutputStream : public OutputStream, public PDVOutputStream
{
public:
   // A PDU of another type that is being composed on theStream is finished.
   explicit DICOMMessageOutputStream(PDUOutputStream& theStream);
   ~DICOMMessageOutputStream() override;

   // As those of PDVOutputStream.
   void Write(IOBuffer* theBuffer) override;
   void Write(const unsigned char* theBytes, unsigned int theCount) override;

   // Makes what was written so far a PDV of its own. Nothing is sent by that: see FlushOutput.
   void Flush() override;

   unsigned int GetMaximumOutputBlockSize() const override;

   // Both throw with TN_INTERNAL_ERROR once a byte of the message has been written.
   void SetMessageType(MessageType theType) override;
   void SetPresentationContextID(unsigned char theID) override;

   // Hands the whole message to the PDU stream and flushes that, but does not finish the PDU. The next message may then
   // be written. A message without bytes leaves no PDV.
   void FinishMessage();

   // An addition: the same, but a message without bytes is one empty PDV. For data sets, which a peer waits for.
   void FinishMessageEvenIfEmpty();

   // Bytes written to the message so far.
   UINT64 GetLength() const { return itsLength; }

   // An addition: gives the message up, see PDVOutputStream::DiscardMessage.
   void DiscardMessage();

private:
   void EndMessage();

   UINT64 itsLength = 0;
};
