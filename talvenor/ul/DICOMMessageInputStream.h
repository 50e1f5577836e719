// One DIMSE message, a command set or a data set, as it arrives: an InputStream for the decoder, which joins the
// presentation data values of the message (see PDVInputStream).
//
//    DICOMMessageInputStream aMessage(aPDUStream);
//    while (aMessage.Start())
//    {
//       ...                    // choose a decoder by GetMessageType and GetCurrentPresentationContextID; read
//       aMessage.Flush();      // whatever the decoder left
//    }
//
// PDVs without data are taken as they come, except in endless series. The data of a message stay on the context and of
// the type of its first PDV, or reading fails.
//
// The PDU stream is borrowed and must outlive this object. Failures throw StreamIOException; after one the stream
// is good for nothing but Close, unless it was TN_UNEXPECTED_PDU between messages. One thread at a time.
#pragma once

#include "talvenor/io/InputStream.h"
#include "talvenor/ul/PDVInputStream.h"

class TALVENOR_API DICOMMessageInputStream : public InputStream, public PDVInputStream
{
public:
   explicit DICOMMessageInputStream(PDUInputStream& theStream) : PDVInputStream(theStream) {}
   ~DICOMMessageInputStream() override;

   // Across the PDVs of the message. Both return the number of bytes read or skipped: fewer than theCount at the end of
   // the message. Throws with TN_PDV_CONTEXT_MISMATCH when the message goes on in another presentation context, with
   // TN_INVALID_ENCODING when it goes on as the other type of message, with TN_END_OF_FILE when a PDV is longer than
   // its PDU or the connection ends, and as PDVInputStream::Start.
   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override;
   unsigned int Skip(unsigned int theCount) override;

   unsigned int GetPreferredInputBlockSize() const override;

   // Begins the next message. Returns 0, and the context ID is 0, when the connection ends in front of it. Throws with
   // TN_MESSAGE_NOT_FINISHED while there is an unfinished one, and as PDVInputStream::Start.
   int Start() override;

   void Close() override;

   // Discards the rest of the message, if there is any, up to and including its last fragment. Throws as Read does.
   void Flush();

   // Bytes of the message read or skipped so far.
   UINT64 GetLength() const { return itsLength; }

   // That of the message.
   unsigned char GetCurrentPresentationContextID() const { return itsMessageContextID; }

   // An addition: whether a part of the message has not been read, be it an empty last fragment.
   int HasUnfinishedMessage() const { return HasMoreData() || !IsEndOfMessage(); }

private:
   template <class Operation>
   unsigned int ForEachPiece(unsigned int theCount, Operation theOperation);
   bool StartNextPDV();

   UINT64 itsLength = 0;
   unsigned char itsMessageContextID = 0;
   MessageType itsFirstType = NoMessage; // that of its first PDV
};
