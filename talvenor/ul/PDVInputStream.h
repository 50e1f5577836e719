// Reads presentation data values (PDVs; PS3.8 9.3.5, annex E) from the P-DATA-TF PDUs of a PDU stream, one at a time.
// The layout of a PDV is in PDVOutputStream.h.
//
// What arrives is not trusted: an item length that leaves no room for the two bytes after it is refused, and data end
// with the PDU even if the item length promises more. Nothing is buffered here.
//
// Failures throw StreamIOException; after one the stream is good for nothing but Close, unless it was TN_UNEXPECTED_PDU
// between messages. The PDU stream is borrowed and must outlive this object. One thread at a time.
#pragma once

#include "talvenor/ul/PDVMessageType.h"

class PDUInputStream;

class TALVENOR_API PDVInputStream : public PDVMessageType
{
public:
   explicit PDVInputStream(PDUInputStream& theStream) : itsStream(theStream) {}
   PDVInputStream(const PDVInputStream&) = delete;
   PDVInputStream& operator=(const PDVInputStream&) = delete;
   virtual ~PDVInputStream();

   // Data of the current PDV. Both return the number of bytes read or skipped: fewer than theCount at the end of the
   // PDV, and when the PDU or the connection ends before it.
   virtual unsigned int Read(unsigned char* theBuffer, unsigned int theCount);
   virtual unsigned int Skip(unsigned int theCount);

   virtual unsigned int GetPreferredInputBlockSize() const;

   // Makes the header of the next PDV available; a header of whose data nothing has been read yet still is. Returns 0
   // when the connection ends behind the last PDV of a message. Throws with TN_PDV_NOT_FINISHED when the current PDV
   // has been read in part, with TN_UNEXPECTED_PDU when a PDU other than P-DATA-TF arrives (its header is then read,
   // its body is not), with TN_INVALID_PDU for an item length below 2, and with TN_END_OF_FILE when the PDU ends inside
   // the header or the connection inside a message.
   virtual int Start();

   // Closes the PDU stream.
   virtual void Close();

   // Of the current PDV: 0 and NoMessage when there is none.
   unsigned char GetPresentationContextID() const { return itsContextID; }
   UINT32 GetPDVLength() const { return itsItemLength; } // the item length: 2 more than the data
   MessageType GetMessageType() const { return itsMessageType; }
   int HasMoreData() const { return itsRemaining > 0; }
   UINT32 GetRemainingLength() const { return itsRemaining; }

   // Whether the last PDV read is the last one of its message; true before the first.
   int IsEndOfMessage() const { return itsIsEndOfMessage; }

private:
   bool ReadHeader();
   bool StartPDU();
   void TraceHeader() const;

   UINT32 itsItemLength = 0;
   unsigned char itsContextID = 0;
   MessageType itsMessageType = NoMessage;
   bool itsIsEndOfMessage = true;
   UINT32 itsRemaining = 0; // data bytes of the current PDV not yet read
   PDUInputStream& itsStream;
};
