// The transport of an association that a node serves: a TCP connection with a deadline for what it is used for.
#pragma once

#include "apps/tn/node/Deadlines.h"
#include "talvenor/io/IOBuffer.h"
#include "talvenor/ul/DULStream.h"
#include "talvenor/ul/SocketDULStream.h"

class GuardedStream final : public DULStream
{
public:
   struct Limits // in seconds, 0 for none
   {
      double itsRequest = 30; // from the connection to the end of the request, and for the peer to close at the end
      double itsMessage = 60; // for one message: its command and its data set
      double itsIdle = 300;   // between messages
   };

   // Takes the connection.
   GuardedStream(Socket::Handle theConnection, Deadlines& theDeadlines, const Limits& theLimits)
       : DULStream(SocketDULStream::kBlockSize, SocketDULStream::kBlockSize), itsLimits(theLimits),
         itsGuard(theDeadlines, itsStream.GetSocket())
   {
      itsStream.GetSocket().SetAbortPollMilliseconds(kPollMilliseconds);
      itsStream.ManageConnection(theConnection);
      itsGuard.Set(Deadlines::Seconds(itsLimits.itsRequest), false);
   }

   // Connects to a peer of this node's own choice, under the same deadlines. Throws as SocketDULStream::Open does.
   GuardedStream(const RWCString& theHost, const RWCString& thePort, const GuardedStream& theOther)
       : DULStream(SocketDULStream::kBlockSize, SocketDULStream::kBlockSize), itsLimits(theOther.itsLimits),
         itsGuard(theOther.itsGuard.GetDeadlines(), itsStream.GetSocket())
   {
      itsStream.GetSocket().SetAbortPollMilliseconds(kPollMilliseconds);
      itsGuard.Set(Deadlines::Seconds(itsLimits.itsRequest), false);
      itsStream.Open(theHost, thePort);
      itsGuard.Set(Deadlines::Seconds(itsLimits.itsMessage), false);
   }

   // The next byte begins a message.
   void AwaitMessage()
   {
      itsAwaitsMessage = true;
      itsGuard.Set(Deadlines::Seconds(itsLimits.itsIdle), true);
   }

   // The peer waits for what this node does elsewhere: there is no deadline until something is sent to it.
   void Suspend() { itsGuard.Set(Deadlines::Seconds(0), false); }

   // Nothing more is expected but that the peer closes.
   void AwaitEnd()
   {
      itsAwaitsMessage = false;
      itsGuard.Set(Deadlines::Seconds(itsLimits.itsRequest), true);
   }

   using DULStream::Write;
   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override
   {
      if (!itsAwaitsMessage || theCount == 0)
      {
         return itsStream.Read(theBuffer, theCount);
      }
      if (itsStream.Read(theBuffer, 1) == 0)
      {
         return 0;
      }
      itsAwaitsMessage = false;
      itsGuard.Set(Deadlines::Seconds(itsLimits.itsMessage), false);
      return 1 + itsStream.Read(theBuffer + 1, theCount - 1);
   }
   void Write(IOBuffer* theBuffer) override
   {
      itsStream.Write(theBuffer);
      HasWritten();
   }
   void Write(const unsigned char* theBytes, unsigned int theCount) override
   {
      itsStream.Write(theBytes, theCount);
      HasWritten();
   }
   void Close() override { itsStream.Close(); }
   void FlushOutput() override
   {
      itsStream.FlushOutput();
      HasWritten();
   }
   int GetTimeout() const override { return itsStream.GetTimeout(); }
   int SetTimeout(int theSeconds) override { return itsStream.SetTimeout(theSeconds); }
   int BytesAvailable() override { return itsStream.BytesAvailable(); }
   int SetReadAheadLimit(unsigned int theLimit) override { return itsStream.SetReadAheadLimit(theLimit); }
   RWCString GetPeerName() override { return itsStream.GetPeerIPAddress(); } // nobody waits for a resolver
   RWCString GetPeerIPAddress() const override { return itsStream.GetPeerIPAddress(); }
   RWCString GetPeerPort() const override { return itsStream.GetPeerPort(); }
   int InputConnected() const override { return itsStream.InputConnected(); }
   int OutputConnected() const override { return itsStream.OutputConnected(); }

private:
   static constexpr int kPollMilliseconds = 100; // how soon an abort flag acts

   // What has been taken by the peer begins a new wait: an answer of many messages may take long, but each of them must
   // move.
   void HasWritten()
   {
      if (!itsAwaitsMessage)
      {
         itsGuard.Set(Deadlines::Seconds(itsLimits.itsMessage), false);
      }
   }

   Limits itsLimits;
   SocketDULStream itsStream;
   Deadlines::Guard itsGuard; // behind the stream, whose socket it watches
   bool itsAwaitsMessage = false;
};
