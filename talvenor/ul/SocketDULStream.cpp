#include "talvenor/ul/SocketDULStream.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/platform/Sockets.h"
#include "talvenor/ul/HeldOutput.h"
#include "talvenor/ul/SocketTrace.h"

namespace
{

constexpr unsigned int kReadAheadSize = 8192;
constexpr unsigned int kUncopiedSize = 8192; // bytes of this count and more are sent from where the caller has them
constexpr INT64 kLastFlushMilliseconds = 2000;

[[noreturn]] void Raise(const char* theText, const RWCString& theReason, const Socket& theSocket)
{
   throw StreamIOException((theText + theReason).c_str(), theSocket.GetResultCode(), theSocket.GetSystemErrorCode());
}

} // namespace

SocketDULStream::SocketDULStream(UINT32 thePreferredInputBlockSize, UINT32 theMaximumOutputBlockSize)
    : DULStream(thePreferredInputBlockSize, theMaximumOutputBlockSize), itsHeldOutput(std::make_unique<HeldOutput>())
{}

SocketDULStream::~SocketDULStream()
{
   SocketDULStream::Close();
}

void SocketDULStream::Open(const RWCString& theHost, const RWCString& thePort)
{
   Close();
   if (!itsSocket.Open(theHost, thePort))
   {
      Raise("SocketDULStream::Open(const RWCString& theIPAddress, const RWCString& thePort) failed: ",
            TNResult::Describe(itsSocket.GetResultCode()), itsSocket);
   }
}

void SocketDULStream::ManageConnection(Socket::Handle theHandle)
{
   Close();
   itsSocket.ManageConnection(theHandle);
}

unsigned int SocketDULStream::Read(unsigned char* theBuffer, unsigned int theCount)
{
   unsigned int aCount = std::min(theCount, itsReadAheadCount);
   if (aCount != 0)
   {
      std::memcpy(theBuffer, itsReadAhead.get() + itsReadAheadStart, aCount);
      itsReadAheadStart += aCount;
      itsReadAheadCount -= aCount;
   }
   while (aCount < theCount)
   {
      const unsigned int aPart = Receive(theBuffer + aCount, theCount - aCount);
      if (aPart == 0)
      {
         break;
      }
      aCount += aPart;
   }
   return aCount;
}

// The buffer of the stream is empty. Returns how many bytes went to theBuffer, 0 at the end of the connection.
unsigned int SocketDULStream::Receive(unsigned char* theBuffer, unsigned int theCount)
{
   SendBeforeReading();
   if (itsSocket.Connected() && !itsSocket.InputConnected())
   {
      return 0; // the end was met by an earlier read, which returned less than was wanted
   }
   if (!itsReadAhead)
   {
      itsReadAhead = std::make_unique<unsigned char[]>(kReadAheadSize);
   }
   constexpr unsigned int kMost = std::numeric_limits<int>::max() - kReadAheadSize;
   const unsigned int aWanted = std::min(theCount, kMost);
   const int aReceived = itsSocket.ReadBlocks({{theBuffer, aWanted}, {itsReadAhead.get(), kReadAheadSize}});
   if (aReceived < 0)
   {
      if (itsSocket.GetResultCode() == TN_END_OF_FILE)
      {
         return 0;
      }
      Raise("SocketDULStream::Read(uchat_t*, size_t): ", TNResult::Describe(itsSocket.GetResultCode()), itsSocket);
   }
   const unsigned int aCount = std::min(static_cast<unsigned int>(aReceived), aWanted);
   itsReadAheadStart = 0;
   itsReadAheadCount = static_cast<unsigned int>(aReceived) - aCount;
   return aCount;
}

// Whoever reads from a peer that has not seen the question waits in vain. A peer that takes nothing any more may still
// have said something: that it has closed shows at the next write.
void SocketDULStream::SendBeforeReading()
{
   if (!itsHeldOutput->IsEmpty() && OutputConnected() && !SendHeldOutput() &&
       itsSocket.GetResultCode() != TN_END_OF_FILE)
   {
      Raise("SocketDULStream::Read(uchat_t*, size_t): while sending: ", TNResult::Describe(itsSocket.GetResultCode()),
            itsSocket);
   }
}

void SocketDULStream::Write(IOBuffer* theBuffer)
{
   std::unique_ptr<IOBuffer> aBuffer(theBuffer);
   if (!aBuffer || aBuffer->GetBytesAvailable() == 0)
   {
      return;
   }
   // Full before this write: an earlier one failed. The bound holds all the same.
   bool isSent = itsHeldOutput->IsFull() ? SendHeldOutput() : CanSend();
   if (isSent)
   {
      itsHeldOutput->Add(std::move(aBuffer));
      isSent = !itsHeldOutput->IsFull() || SendHeldOutput();
   }
   if (!isSent)
   {
      Raise("SocketDULStream::Write(IOBuffer* theBuffer): while sending: ",
            TNResult::Describe(itsSocket.GetResultCode()), itsSocket);
   }
}

void SocketDULStream::Write(const unsigned char* theBytes, unsigned int theCount)
{
   if (theCount == 0)
   {
      return;
   }
   bool isSent = itsHeldOutput->IsFull() ? SendHeldOutput() : CanSend();
   if (isSent)
   {
      isSent = theCount >= kUncopiedSize ? SendHeldOutputAnd(theBytes, theCount) : Hold(theBytes, theCount);
   }
   if (!isSent)
   {
      RaiseWriteFailure("SocketDULStream::Write(uchat_t*, size_t): ");
   }
}

void SocketDULStream::FlushOutput()
{
   if (!itsHeldOutput->IsEmpty() && !SendHeldOutput())
   {
      RaiseWriteFailure("SocketDULStream::FlushOutput(): ");
   }
}

void SocketDULStream::RaiseWriteFailure(const char* theText) const
{
   const TNResultCode aCode = itsSocket.GetResultCode();
   Raise(theText, aCode == TN_END_OF_FILE ? "EOF on output while sending" : TNResult::Describe(aCode), itsSocket);
}

bool SocketDULStream::CanSend()
{
   std::size_t aCount = 0;
   return itsSocket.SendBlocks(nullptr, 0, aCount) > 0;
}

bool SocketDULStream::Hold(const unsigned char* theBytes, unsigned int theCount)
{
   itsHeldOutput->Add(theBytes, theCount);
   return !itsHeldOutput->IsFull() || SendHeldOutput();
}

bool SocketDULStream::SendHeldOutput(INT64 theLimit)
{
   TNPlatform::ConstBlock aBlocks[HeldOutput::kMaxBuffers];
   std::size_t aSent = 0;
   const int aResult = itsSocket.SendBlocks(aBlocks, itsHeldOutput->Describe(aBlocks), aSent, theLimit);
   itsHeldOutput->Drop(aSent);
   return aResult > 0;
}

// Bytes that cannot be sent are copied, so that what the peer gets has no gap if it goes on.
bool SocketDULStream::SendHeldOutputAnd(const unsigned char* theBytes, unsigned int theCount)
{
   TNPlatform::ConstBlock aBlocks[HeldOutput::kMaxBuffers]; // what is held is not full, so there is room for one more
   const std::size_t aHeldCount = itsHeldOutput->GetByteCount();
   const unsigned int aBlockCount = itsHeldOutput->Describe(aBlocks);
   aBlocks[aBlockCount] = {theBytes, theCount};
   std::size_t aSent = 0;
   const int aResult = itsSocket.SendBlocks(aBlocks, aBlockCount + 1, aSent);
   itsHeldOutput->Drop(std::min(aSent, aHeldCount));
   if (aResult < 0 && OutputConnected())
   {
      const std::size_t aSentHere = aSent - std::min(aSent, aHeldCount);
      itsHeldOutput->Add(theBytes + aSentHere, theCount - aSentHere);
   }
   return aResult > 0;
}

// A peer that does not read must not hold up whoever closes, nor the memory of what was sent to him.
void SocketDULStream::Close()
{
   if (!itsHeldOutput->IsEmpty() && OutputConnected() && !SendHeldOutput(kLastFlushMilliseconds))
   {
      SocketTrace::Line(TNTrace::TNTraceDULStream, "SocketDULStream::Close(): ", itsHeldOutput->GetByteCount(),
                        " bytes could not be sent");
      TNPlatform::ResetSocket(itsSocket.UnmanageConnection());
   }
   itsHeldOutput->Clear();
   itsReadAheadCount = 0;
   itsSocket.Close();
}

int SocketDULStream::GetTimeout() const
{
   return itsSocket.GetTimeout();
}

int SocketDULStream::SetTimeout(int theSeconds)
{
   itsSocket.SetTimeout(theSeconds);
   return 1;
}

int SocketDULStream::BytesAvailable()
{
   unsigned int aCount = 0;
   if (!itsSocket.BytesAvailable(aCount))
   {
      Raise("SocketDULStream::BytesAvailable(): ", TNResult::Describe(itsSocket.GetResultCode()), itsSocket);
   }
   constexpr unsigned int kMost = std::numeric_limits<int>::max();
   return static_cast<int>(std::min(itsReadAheadCount + std::min(aCount, kMost), kMost));
}

RWCString SocketDULStream::GetPeerName()
{
   return itsSocket.GetPeerName();
}

RWCString SocketDULStream::GetPeerIPAddress() const
{
   return itsSocket.GetPeerIPAddress();
}

RWCString SocketDULStream::GetPeerPort() const
{
   return itsSocket.GetPeerPort();
}

int SocketDULStream::InputConnected() const
{
   return itsSocket.Connected() && itsSocket.InputConnected();
}

int SocketDULStream::OutputConnected() const
{
   return itsSocket.Connected() && itsSocket.OutputConnected();
}
