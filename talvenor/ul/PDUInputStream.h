// Reads one protocol data unit (PDU, PS3.8 9.3.1) at a time from a DULStream, its body as a stream with an end.
//
//    while (aStream.Start())                       // a header is read: GetPDUType, GetPDULength
//       while (aStream.HasMoreData()) ... Read ... // the body
//
// The stream is between PDUs, or inside one while GetRemainingLength is above 0. No read goes beyond the current PDU,
// whatever a length inside it says. Numbers are big-endian.
//
// Failures throw StreamIOException; the counts then stay as they were at the failure, and the association has to be
// aborted. The end of the connection between two PDUs is no failure. Not locked: one thread at a time.
#pragma once

#include "talvenor/io/InputStream.h"
#include "talvenor/ul/PDUTypes.h"

class DULStream;
class LogStream;

class TALVENOR_API PDUInputStream : public InputStream, public PDUTypes
{
public:
   // theStream is borrowed. The greatest PDU length that is accepted is the default.
   explicit PDUInputStream(DULStream& theStream);
   // Reads on from the same DULStream, at the same place of the same PDU.
   PDUInputStream(const PDUInputStream& theOther);
   ~PDUInputStream() override;

   // Body bytes of the current PDU: fewer than asked for at its end only, 0 behind it. When the connection ends inside
   // the PDU they return 0, or throw (TN_END_OF_FILE) when this call has bytes already.
   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override;
   unsigned int Skip(unsigned int theCount) override;

   // Those of the DULStream.
   unsigned int GetPreferredInputBlockSize() const override;
   void SetPreferredInputBlockSize(unsigned int theSize) override;

   // Closes the DULStream.
   void Close() override;

   // Sees to it that a header is read. Returns 0 when the connection ended before one, or within its first two bytes.
   // Throws for a type that does not exist (TN_INVALID_PDU, as soon as its byte is there), a length above the maximum
   // (TN_PDU_LENGTH_MISMATCH), and a header that ends in its length (TN_END_OF_FILE).
   //
   // When the current PDU has unread bytes nothing is read. If none was read, its header is tested again, and now the
   // maximum includes the six bytes of the header: a PDU of nearly the maximum length passes the first Start only. Who
   // has called Start goes on with ReadDynamic of a PDU, and drops a PDU with SkipRemaining.
   int Start();

   unsigned char GetPDUType() const { return itsPDUType; } // 0 for 8 and above
   unsigned char GetReserved() const { return itsReserved; }
   UINT32 GetPDULength() const { return itsPDULength; }
   UINT32 GetRemainingLength() const { return itsRemainingLength; } // bytes of the body that were not read
   int HasMoreData() const { return itsRemainingLength > 0; }

   // One number of the body. They return the number of bytes read, and set the value when that is its size.
   unsigned int DULRead(unsigned char& theValue);
   unsigned int DULRead(unsigned short& theValue);
   unsigned int DULRead(unsigned int& theValue);
   // An addition: bytes of a field. As with numbers, and other than with Read, the count alone tells that the
   // connection ended inside.
   unsigned int DULRead(unsigned char* theBuffer, unsigned int theCount);

   // Starts and skips the rest of the PDU. Non-zero when there was something to skip.
   int DiscardPDU();
   // An addition: skips the rest of the current PDU, without Start and its test. Returns the number of bytes; throws
   // (TN_END_OF_FILE) when the connection ends before, so that who skips PDU after PDU comes to an end.
   unsigned int SkipRemaining();

   // The greatest PDU length that is accepted, in bytes; 0: any. 1 to 7 become 8.
   UINT32 GetMaxPDUReceiveLength() const { return itsMaxPDUReceiveLength; }
   void SetMaxPDUReceiveLength(UINT32 theLength) { itsMaxPDUReceiveLength = AllowedReceiveLength(theLength); }
   static UINT32 GetDefaultMaxPDUReceiveLength() { return itsDefaultMaxPDUReceiveLength; }
   static void SetDefaultMaxPDUReceiveLength(UINT32 theLength)
   {
      itsDefaultMaxPDUReceiveLength = AllowedReceiveLength(theLength);
   }

   // An addition: the header in the trace's form.
   void Dump(LogStream& theLog) const;

private:
   static UINT32 AllowedReceiveLength(UINT32 theLength) { return theLength > 0 && theLength < 8 ? 8 : theLength; }

   int ReadHeader();
   void TestHeaderAgain() const;
   unsigned int ReadFromTransport(unsigned char* theBuffer, unsigned int theCount);
   template <class T>
   unsigned int ReadNumber(T& theValue);

   static UINT32 itsDefaultMaxPDUReceiveLength;

   DULStream* itsStream;
   unsigned char itsPDUType = 0;
   unsigned char itsReserved = 0;
   UINT32 itsPDULength = 0;
   UINT32 itsRemainingLength = 0;
   UINT32 itsMaxPDUReceiveLength;
};
