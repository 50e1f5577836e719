// What the six PDUs of an association's beginning and end have in common (PS3.8 9.3): each is a value that knows its
// layout, writes itself to a PDUOutputStream and reads itself from a PDUInputStream. PDU is the class that derives from
// this.
#pragma once

#include "talvenor/Export.h"
#include "talvenor/foundation/BasicTypes.h"

class LogStream;
class PDUInputStream;
class PDUOutputStream;

template <class PDU>
class TALVENOR_API ULPDU
{
public:
   virtual ~ULPDU();

   // The encoded size in bytes, with the header; also brings the length fields inside up to date.
   unsigned int Size();

   // Writes, finishes and flushes the PDU. Returns 0 when it cannot be encoded (an item of more than 65535 bytes, a
   // presentation context without transfer syntax): then nothing of it is sent, and nothing stays queued. Throws what
   // the streams throw.
   int Write(PDUOutputStream& theStream);

   // Read calls Start of the stream, tests the type and calls ReadDynamic, which reads the rest of a PDU whose header
   // the stream has read. theBytesRead is set to the number of bytes of the whole PDU, less one for ReadDynamic, which
   // does not count the type. They return 1 or throw StreamIOException:
   //    TN_END_OF_FILE          the PDU or the connection ended too early
   //    TN_PDU_TYPE_MISMATCH    a PDU of another type came
   //    TN_PDU_LENGTH_MISMATCH, TN_ITEM_LENGTH_MISMATCH, TN_ITEM_TYPE_MISMATCH, TN_INVALID_ITEM    see the texts
   // After a failure the PDU is partly filled. Association PDUs of more than 1 MiB are refused, whatever the stream's
   // maximum is: with 128 contexts of 50 syntaxes each a request has half of that.
   int Read(PDUInputStream& theStream, unsigned int& theBytesRead);
   int ReadDynamic(PDUInputStream& theStream, unsigned int& theBytesRead);

   // An addition: a heading and one line for each field, as in the trace.
   void Dump(LogStream& theLog) const;

   // PDUs are equal when their contents are: the length follows from them.
   bool operator==(const ULPDU&) const { return true; }

protected:
   ULPDU() = default;
   ULPDU(const ULPDU&) = default;
   ULPDU& operator=(const ULPDU&) = default;

   unsigned char itsReserved = 0; // as received
   UINT32 itsPDULength = 0;       // of the last Size, Write or ReadDynamic
};
