// Connected DULStreams in memory: what is written to one is read from the other. No sockets, no ports, no waiting.
//
//    auto [aRequester, anAcceptor] = ConnectedDULStreams();                 // one thread, or two
//    MemoryDULStream aStream(ScriptedChannel(FromHex("0500 0000 0004 0000 0000")), aRecording);   // no peer at all
//
// As with a socket, the peer sees written bytes when the stream is flushed, is closed or has to wait for input: a test
// notices a flush that was forgotten. A channel outlives its streams, so that a test can look at what was written after
// an association has destroyed them.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/io/IOBuffer.h"
#include "talvenor/ul/DULStream.h"

// One direction of a connection. Any thread may use it.
class MemoryChannel
{
public:
   // What a reader does that wants bytes when there are none and the channel is open: throw the time-out at once, which
   // suits a test with one thread, or wait for another thread, at most 10 seconds.
   enum WhenEmpty
   {
      kTimeOut,
      kWait
   };

   explicit MemoryChannel(WhenEmpty theWhenEmpty = kTimeOut) : itsWhenEmpty(theWhenEmpty) {}

   // False when the channel is closed: nobody will read it.
   bool Put(const std::vector<unsigned char>& theBytes)
   {
      const std::lock_guard aLock(itsMutex);
      if (itsIsClosed)
      {
         return false;
      }
      itsUnread.insert(itsUnread.end(), theBytes.begin(), theBytes.end());
      itsEverything.insert(itsEverything.end(), theBytes.begin(), theBytes.end());
      itsChanged.notify_all();
      return true;
   }

   // Returns fewer bytes than asked for only when the channel was closed.
   unsigned int Take(unsigned char* theBuffer, unsigned int theCount)
   {
      std::unique_lock aLock(itsMutex);
      unsigned int aTaken = 0;
      while (aTaken < theCount)
      {
         if (!itsUnread.empty())
         {
            theBuffer[aTaken++] = itsUnread.front();
            itsUnread.pop_front();
         }
         else if (itsIsClosed)
         {
            break;
         }
         else if (itsWhenEmpty == kTimeOut || itsChanged.wait_for(aLock, kLongest) == std::cv_status::timeout)
         {
            throw StreamIOException("MemoryDULStream::Read: timed out", TN_TRANSPORT_TIMED_OUT, 0);
         }
      }
      return aTaken;
   }

   // What was put is still read; then comes the end.
   void Close()
   {
      const std::lock_guard aLock(itsMutex);
      itsIsClosed = true;
      itsChanged.notify_all();
   }

   bool IsClosed() const
   {
      const std::lock_guard aLock(itsMutex);
      return itsIsClosed;
   }
   unsigned int UnreadCount() const
   {
      const std::lock_guard aLock(itsMutex);
      return static_cast<unsigned int>(itsUnread.size());
   }
   // All bytes since the beginning, read or not.
   std::vector<unsigned char> Everything() const
   {
      const std::lock_guard aLock(itsMutex);
      return itsEverything;
   }

private:
   static constexpr std::chrono::seconds kLongest{10};

   const WhenEmpty itsWhenEmpty;
   mutable std::mutex itsMutex;
   std::condition_variable itsChanged;
   std::deque<unsigned char> itsUnread;
   std::vector<unsigned char> itsEverything;
   bool itsIsClosed = false;
};

// The input of a stream without a peer: these bytes and then the end or, when the channel stays open, time-outs.
inline std::shared_ptr<MemoryChannel> ScriptedChannel(const std::vector<unsigned char>& theBytes, bool isClosed = true)
{
   auto aChannel = std::make_shared<MemoryChannel>();
   aChannel->Put(theBytes);
   if (isClosed)
   {
      aChannel->Close();
   }
   return aChannel;
}

class MemoryDULStream final : public DULStream
{
public:
   explicit MemoryDULStream(std::shared_ptr<MemoryChannel> theInput,
                            std::shared_ptr<MemoryChannel> theOutput = std::make_shared<MemoryChannel>(),
                            UINT32 theBlockSize = 32768)
       : DULStream(theBlockSize, theBlockSize), itsInput(std::move(theInput)), itsOutput(std::move(theOutput))
   {}
   ~MemoryDULStream() override { Close(); }

   using DULStream::Write;
   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override
   {
      if (itsIsClosed)
      {
         throw StreamIOException("MemoryDULStream::Read: closed", TN_NOT_CONNECTED, 0);
      }
      itsReadAtEnd = false;
      if (itsInput->UnreadCount() < theCount)
      {
         SendHeldBytes();
      }
      const unsigned int aCount = itsInput->Take(theBuffer, theCount);
      itsReadAtEnd = aCount < theCount;
      return aCount;
   }
   void Write(IOBuffer* theBuffer) override
   {
      const std::unique_ptr<IOBuffer> aBuffer(theBuffer);
      if (aBuffer && aBuffer->GetBytesAvailable() != 0)
      {
         Write(aBuffer->GetCopyOutPointer(), aBuffer->GetBytesAvailable());
      }
   }
   void Write(const unsigned char* theBytes, unsigned int theCount) override
   {
      if (itsIsClosed)
      {
         throw StreamIOException("MemoryDULStream::Write: closed", TN_NOT_CONNECTED, 0);
      }
      itsHeldBytes.insert(itsHeldBytes.end(), theBytes, theBytes + theCount);
      if (itsOutput->IsClosed())
      {
         throw StreamIOException("MemoryDULStream::Write: the peer has closed", TN_END_OF_FILE, 0);
      }
   }
   void Close() override
   {
      if (!std::exchange(itsIsClosed, true))
      {
         SendHeldBytes();
         itsOutput->Close();
         itsInput->Close(); // the peer's next write fails
      }
   }
   void FlushOutput() override { SendHeldBytes(); }

   int GetTimeout() const override { return itsTimeout; }
   int SetTimeout(int theSeconds) override
   {
      itsTimeout = theSeconds;
      return 1;
   }
   int BytesAvailable() override { return static_cast<int>(itsInput->UnreadCount()); }
   int SetReadAheadLimit(unsigned int theLimit) override
   {
      itsReadAheadLimits.push_back(theLimit);
      return 1;
   }

   RWCString GetPeerName() override { return "memory"; }
   RWCString GetPeerIPAddress() const override { return "192.0.2.7"; }
   RWCString GetPeerPort() const override { return "104"; }
   int InputConnected() const override { return !itsIsClosed && !itsReadAtEnd; }
   int OutputConnected() const override { return !itsIsClosed && !itsOutput->IsClosed(); }

   // Ends one direction only: the peer reads what was written and then the end.
   void CloseOutput()
   {
      SendHeldBytes();
      itsOutput->Close();
   }

   MemoryChannel& Input() { return *itsInput; }
   MemoryChannel& Output() { return *itsOutput; }
   std::shared_ptr<MemoryChannel> ShareOutput() { return itsOutput; }

   // All that was written since the beginning, flushed or not.
   std::vector<unsigned char> Written() const
   {
      std::vector<unsigned char> aBytes = itsOutput->Everything();
      aBytes.insert(aBytes.end(), itsHeldBytes.begin(), itsHeldBytes.end());
      return aBytes;
   }
   // Written, and not yet flushed.
   std::size_t HeldCount() const { return itsHeldBytes.size(); }
   const std::vector<unsigned int>& ReadAheadLimits() const { return itsReadAheadLimits; }

private:
   void SendHeldBytes()
   {
      if (!itsHeldBytes.empty())
      {
         itsOutput->Put(std::exchange(itsHeldBytes, {}));
      }
   }

   std::shared_ptr<MemoryChannel> itsInput;
   std::shared_ptr<MemoryChannel> itsOutput;
   std::vector<unsigned char> itsHeldBytes;
   std::vector<unsigned int> itsReadAheadLimits;
   int itsTimeout = 300;
   bool itsIsClosed = false;
   bool itsReadAtEnd = false;
};

// Two ends of one connection. With kWait each end belongs to a thread of its own.
inline std::pair<std::unique_ptr<MemoryDULStream>, std::unique_ptr<MemoryDULStream>>
ConnectedDULStreams(MemoryChannel::WhenEmpty theWhenEmpty = MemoryChannel::kTimeOut)
{
   auto aThere = std::make_shared<MemoryChannel>(theWhenEmpty);
   auto aBack = std::make_shared<MemoryChannel>(theWhenEmpty);
   return {std::make_unique<MemoryDULStream>(aBack, aThere), std::make_unique<MemoryDULStream>(aThere, aBack)};
}
