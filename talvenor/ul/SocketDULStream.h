// The DULStream over TCP: one Socket with a buffer in each direction.
//
// Input. PDU and PDV headers are read field by field (PS3.8 9.3); a system call for each would cost more than all other
// work on a small message. So a receive goes into two places at once: what the caller wants straight into his buffer,
// and what has arrived behind it, up to 8 KiB, into the stream's. A large body is copied by the kernel alone and the
// header of the next PDU comes with it. Reading ahead never waits for anything, as a receive returns what is there; and
// it loses nothing, as the bytes are kept here, come first and are counted by BytesAvailable, and nobody else reads the
// socket. The read-ahead limit of the PDU layer therefore needs no attention.
//
// Output. What is written is held back, up to 64 KiB or 64 buffers, and leaves in one system call: at FlushOutput, when
// that bound is reached, before a read has to ask the socket, and at Close. Buffers that were handed over are sent from
// where they are. A failed write keeps what was not sent, in order, so that the stream of PDUs stays intact for a last
// A-ABORT; the error appears in the call that tried to send. The pieces of Socket::SendBinary do not apply here: a send
// never waits, so the kernel takes what its buffer has room for, and the rest waits here with the abort flags looked
// at.
//
// A stream belongs to one thread at a time; other threads may set the abort flag of its socket.
#pragma once

#include <memory>

#include "talvenor/ul/DULStream.h"
#include "talvenor/ul/Socket.h"

class HeldOutput;

class TALVENOR_API SocketDULStream final : public DULStream
{
public:
   static constexpr UINT32 kBlockSize = 32768;

   // Sizes in bytes.
   explicit SocketDULStream(UINT32 thePreferredInputBlockSize = kBlockSize,
                            UINT32 theMaximumOutputBlockSize = kBlockSize);
   ~SocketDULStream() override; // closes

   // Connects. Throws with the result code of Socket::Open.
   void Open(const RWCString& theHost, const RWCString& thePort);

   // Additions. An acceptor hands a connection over:
   //    aStream->ManageConnection(aListener.UnmanageConnection());
   // The socket is there for its settings and its abort flag. Reading from it directly would miss the bytes that this
   // stream has read ahead; writing to it directly, those that it holds back.
   void ManageConnection(Socket::Handle theHandle);
   Socket& GetSocket() { return itsSocket; }
   const Socket& GetSocket() const { return itsSocket; }

   using DULStream::Write;
   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override;
   void Write(IOBuffer* theBuffer) override;
   void Write(const unsigned char* theBytes, unsigned int theCount) override;

   // Sends what is held back if the peer takes it within 2 seconds, and not when an abort was requested. The connection
   // of one that does not take it is reset.
   void Close() override;

   // Throws what a write throws.
   void FlushOutput() override;

   int GetTimeout() const override;
   int SetTimeout(int theSeconds) override;
   int BytesAvailable() override;
   RWCString GetPeerName() override;
   RWCString GetPeerIPAddress() const override;
   RWCString GetPeerPort() const override;
   int InputConnected() const override;
   int OutputConnected() const override;

private:
   unsigned int Receive(unsigned char* theBuffer, unsigned int theCount);
   void SendBeforeReading();
   bool CanSend();
   bool Hold(const unsigned char* theBytes, unsigned int theCount);
   bool SendHeldOutput(INT64 theLimit = -1); // in milliseconds; negative: no limit
   bool SendHeldOutputAnd(const unsigned char* theBytes, unsigned int theCount);
   [[noreturn]] void RaiseWriteFailure(const char* theText) const;

   Socket itsSocket;
   std::unique_ptr<unsigned char[]> itsReadAhead; // made at the first read
   unsigned int itsReadAheadStart = 0;
   unsigned int itsReadAheadCount = 0; // bytes from there on
   std::unique_ptr<HeldOutput> itsHeldOutput;
};
