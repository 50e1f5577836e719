// The connected byte stream under the DICOM upper layer (PS3.8 9): the PDU streams read from it and write to it. A TCP
// connection is one (SocketDULStream); a host may bring its own.
//
// Failures throw StreamIOException with the result code and the platform's error number. The operations after Write are
// optional: their defaults here say "not supported". A stream belongs to one thread at a time. The order of the virtual
// operations is part of the interface.
#pragma once

#include "talvenor/Export.h"
#include "talvenor/foundation/BasicTypes.h"

class IOBuffer;
class TNTrace;

class TALVENOR_API DULStream
{
public:
   // Sizes in bytes: of the reads that suit the stream best, and of the buffers in which writers should hand over their
   // data; 0 when the stream does not mind.
   DULStream(UINT32 thePreferredInputBlockSize, UINT32 theMaximumOutputBlockSize)
       : itsPreferredInputBlockSize(thePreferredInputBlockSize), itsMaximumOutputBlockSize(theMaximumOutputBlockSize)
   {}
   DULStream(const DULStream&) = delete;
   DULStream& operator=(const DULStream&) = delete;
   virtual ~DULStream();

   // Waits until all theCount bytes have arrived. Returns fewer only where the connection ended, and 0 from then on. A
   // time-out throws with TN_TRANSPORT_TIMED_OUT, an abort request with TN_CANCELLED.
   virtual unsigned int Read(unsigned char* theBuffer, unsigned int theCount) = 0;

   // Reads and discards, at most 2048 bytes at a time, until theCount bytes are gone or a read returns 0. Returns the
   // number of bytes discarded.
   virtual unsigned int Skip(unsigned int theCount);

   // Write all bytes or throw. A stream may hold bytes back until FlushOutput, but never changes their order. A buffer
   // is taken over and destroyed, also when writing fails; null writes nothing.
   virtual void Write(IOBuffer* theBuffer) = 0;
   virtual void Write(const unsigned char* theBytes, unsigned int theCount) = 0;

   // Ends the connection. Never throws for a stream that is closed already.
   virtual void Close() = 0;

   // Sends what Write held back. A writer that now waits for the peer calls it, or both wait.
   virtual void FlushOutput();

   // Seconds that one read may take; 0: no limit. SetTimeout returns 0 when the stream has no time-outs.
   virtual int GetTimeout() const;
   virtual int SetTimeout(int theSeconds);

   // The number of bytes that can be read without waiting; -1 when the stream does not know. 0 is also the answer at
   // the end of the connection: only a read tells that end from silence.
   virtual int BytesAvailable();

   // How many bytes from here are sure to come or harmless to wait for: 10 before a PDU header, the length of the PDU
   // after it. A stream with a buffer may use it to size its reads. Returns 1.
   virtual int SetReadAheadLimit(unsigned int theLimit);

   // In bytes, for streams that write in the background.
   virtual void SetOutputLowWaterMark(unsigned int theSize);
   virtual unsigned int GetOutputLowWaterMark() const;
   virtual void SetOutputHighWaterMark(unsigned int theSize);
   virtual unsigned int GetOutputHighWaterMark() const;

   virtual UINT32 GetPreferredInputBlockSize() const;
   virtual UINT32 GetMaximumOutputBlockSize() const;

   // The host name of the peer, its address in dotted decimal and its port in decimal; empty when not known.
   virtual RWCString GetPeerName();
   virtual RWCString GetPeerIPAddress() const;
   virtual RWCString GetPeerPort() const;

   // Whether more may be read or written, as far as is known without trying.
   virtual int InputConnected() const;
   virtual int OutputConnected() const;

   void SetPreferredInputBlockSize(UINT32 theSize) { itsPreferredInputBlockSize = theSize; }
   void SetMaximumOutputBlockSize(UINT32 theSize) { itsMaximumOutputBlockSize = theSize; }

   // One unsigned value in big-endian byte order (PS3.8 9.3.1). DULRead returns the number of bytes that arrived; the
   // value means something only when that is its size.
   unsigned int DULRead(unsigned char& theValue);
   unsigned int DULRead(unsigned short& theValue);
   unsigned int DULRead(unsigned int& theValue);
   void DULWrite(unsigned char theValue);
   void DULWrite(unsigned short theValue);
   void DULWrite(unsigned int theValue);

   TNTrace& GetErrorLog() const; // gTNErrorLog
   TNTrace& GetTraceLog() const; // gTNTracer
   bool IsTraced() const;        // whether TNTraceDULStream is set

private:
   UINT32 itsPreferredInputBlockSize;
   UINT32 itsMaximumOutputBlockSize;
};
