// How a Socket sends and receives.
#include <algorithm>
#include <cerrno>
#include <limits>

#include "talvenor/foundation/SystemClock.h"
#include "talvenor/platform/Sockets.h"
#include "talvenor/ul/Socket.h"
#include "talvenor/ul/SocketRules.h"
#include "talvenor/ul/SocketTrace.h"

namespace
{

constexpr UINT64 kPauseMilliseconds = 200; // when the system is short of buffer space

bool IsWouldBlock(int theError)
{
   return theError == EAGAIN || theError == EWOULDBLOCK;
}

void TraceBytes(const TNPlatform::MutableBlock* theBlocks, std::size_t theCount)
{
   constexpr char kDigits[] = "0123456789abcdef";
   LogEntry anEntry(gTNTracer, LogStream::InfoSeverity);
   std::size_t aColumn = 0;
   for (; theCount != 0; ++theBlocks)
   {
      const auto* aByte = static_cast<const unsigned char*>(theBlocks->itsBytes);
      for (const auto* anEnd = aByte + std::min(theCount, theBlocks->itsCount); aByte != anEnd; ++aByte, --theCount)
      {
         aColumn = aColumn % 16 + 1;
         const char aText[] = {kDigits[*aByte >> 4], kDigits[*aByte & 15], aColumn == 16 ? '\n' : ' ', '\0'};
         anEntry << aText;
      }
   }
   if (aColumn != 16)
   {
      anEntry << "\n";
   }
}

} // namespace

int Socket::FailedTransfer(TNResultCode theCode, int theSystemErrorCode)
{
   Failed(theCode, theSystemErrorCode);
   if (gTNTracer(TNTrace::TNTraceSocketErrors))
   {
      SocketTrace::Line(TNTrace::TNTraceSocketErrors, "Socket: transfer on socket ", itsConnectionSocket,
                        " failed: ", TNResult::Describe(theCode), " System error ", theSystemErrorCode);
   }
   return -1;
}

SocketRules::SlicedWait Socket::TransferWait() const
{
   return SocketRules::SlicedWait(itsTimeout, itsAbortPollInterval, itsAbortPollMilliseconds);
}

int Socket::ReadBinary(unsigned char* theBuffer, int theCount)
{
   if (theBuffer == nullptr || theCount <= 0) // nothing wanted would look like the end of the connection
   {
      return FailedTransfer(TN_INVALID_ARGUMENT, 0);
   }
   return ReadBlocks({{theBuffer, static_cast<std::size_t>(theCount)}, {nullptr, 0}});
}

int Socket::ReadBlocks(const TNPlatform::MutableBlock (&theBlocks)[2])
{
   if (!itsConnectionIsOpen || !itsInputIsConnected)
   {
      SocketTrace::Line(TNTrace::TNTraceSocketErrors, "Socket::ReadBinary(): Not connected");
      return FailedTransfer(TN_NOT_CONNECTED, ENOTCONN);
   }
   if (itsTimeout < 0)
   {
      return FailedTransfer(TN_TRANSPORT_TIMED_OUT, 0);
   }
   std::size_t aRoom = itsTCPReceiveBufferSize > 0 ? static_cast<std::size_t>(itsTCPReceiveBufferSize)
                                                   : std::numeric_limits<int>::max();
   TNPlatform::MutableBlock aBlocks[2];
   for (int i = 0; i < 2; ++i)
   {
      aBlocks[i] = {theBlocks[i].itsBytes, std::min(theBlocks[i].itsCount, aRoom)};
      aRoom -= aBlocks[i].itsCount;
   }
   return Receive(aBlocks);
}

// Tries before it waits: on a busy connection the bytes are there, and one system call does.
int Socket::Receive(const TNPlatform::MutableBlock (&theBlocks)[2])
{
   SocketRules::SlicedWait aWait = TransferWait();
   for (;;)
   {
      if (aWait.WatchesFlags() && GetAbortRequestedFlag())
      {
         return FailedTransfer(TN_CANCELLED, 0);
      }
      const std::ptrdiff_t aCount =
          TNPlatform::ReceiveNow(itsConnectionSocket, theBlocks, theBlocks[1].itsCount == 0 ? 1 : 2);
      if (aCount > 0)
      {
         return Received(theBlocks, static_cast<int>(aCount));
      }
      const int anError = errno;
      if (aCount == 0 || anError == ECONNRESET)
      {
         itsInputIsConnected = false;
         SocketTrace::Line(TNTrace::TNTraceSocketEOF, "Socket::ReadBinary(socket ", itsConnectionSocket,
                           aCount == 0 ? "): recv() returned EOF" : "): EOF (connection reset)");
         return FailedTransfer(TN_END_OF_FILE, aCount == 0 ? 0 : anError);
      }
      if (anError == ENOBUFS && !aWait.IsOver())
      {
         SystemClock::Get().Sleep(kPauseMilliseconds);
         aWait.Deduct(static_cast<INT64>(kPauseMilliseconds) * SocketRules::kNanosecondsOfMillisecond);
      }
      else if (!IsWouldBlock(anError) && anError != ENOBUFS)
      {
         return FailedTransfer(TN_SYSTEM_CALL_FAILED, anError);
      }
      if (itsOwesAcknowledgement)
      {
         // A peer with the Nagle algorithm holds the rest of its message back until we acknowledge the beginning, which
         // the system puts off for 40 ms.
         itsOwesAcknowledgement = false;
         TNPlatform::AcknowledgeNow(itsConnectionSocket);
      }
      const SocketRules::WaitResult aResult = Wait(aWait, itsConnectionSocket, TNPlatform::WaitFor::kInput);
      if (aResult != SocketRules::WaitResult::kReady)
      {
         FailedWait(aResult, TN_TRANSPORT_TIMED_OUT);
         return FailedTransfer(itsResultCode, itsSystemErrorCode);
      }
   }
}

int Socket::Received(const TNPlatform::MutableBlock (&theBlocks)[2], int theCount)
{
   SocketTrace::Line(TNTrace::TNTraceSocket, "Socket::ReadBinary(): received ", theCount, " bytes from socket ",
                     itsConnectionSocket);
   if (gTNTracer(TNTrace::TNTraceSocketBytesRead))
   {
      TraceBytes(theBlocks, static_cast<std::size_t>(theCount));
   }
   itsOwesAcknowledgement = true;
   Succeeded();
   return theCount;
}

int Socket::SendBinary(const unsigned char* theBytes, int theCount)
{
   if (theBytes == nullptr || theCount < 0)
   {
      return FailedTransfer(TN_INVALID_ARGUMENT, 0);
   }
   if (!CanSend("Socket::SendBinary(): Not connected"))
   {
      return -1;
   }
   SocketRules::SlicedWait aWait = TransferWait().Within(SocketRules::kNoLimit);
   for (int aSent = 0; aSent < theCount;)
   {
      const int aPiece = SocketRules::PieceSize(theCount - aSent, itsTCPSendBufferSize);
      const TNPlatform::ConstBlock aBlock = {theBytes + aSent, static_cast<std::size_t>(aPiece)};
      const std::ptrdiff_t aCount = SendSome(&aBlock, 1, aWait);
      if (aCount < 0)
      {
         return -1;
      }
      aSent += static_cast<int>(aCount);
   }
   Succeeded();
   return theCount;
}

int Socket::SendBlocks(const TNPlatform::ConstBlock* theBlocks, unsigned int theBlockCount, std::size_t& theBytesSent,
                       INT64 theLimit)
{
   theBytesSent = 0;
   if (theBlockCount > TNPlatform::kMaxBlocks)
   {
      return FailedTransfer(TN_INVALID_ARGUMENT, 0);
   }
   if (!CanSend("Socket::SendBlocks(): Not connected"))
   {
      return -1;
   }
   TNPlatform::ConstBlock aBlocks[TNPlatform::kMaxBlocks];
   TNPlatform::ConstBlock* const anEnd = std::copy_n(theBlocks, theBlockCount, aBlocks);
   TNPlatform::ConstBlock* aFirst = aBlocks;
   SocketRules::SlicedWait aWait = TransferWait().Within(theLimit);
   for (;;)
   {
      while (aFirst != anEnd && aFirst->itsCount == 0)
      {
         ++aFirst;
      }
      if (aFirst == anEnd)
      {
         return Succeeded();
      }
      const std::ptrdiff_t aCount = SendSome(aFirst, static_cast<std::size_t>(anEnd - aFirst), aWait);
      if (aCount < 0)
      {
         return -1;
      }
      theBytesSent += static_cast<std::size_t>(aCount);
      for (auto aRest = static_cast<std::size_t>(aCount); aRest != 0;)
      {
         const std::size_t aPart = std::min(aRest, aFirst->itsCount);
         *aFirst = {static_cast<const unsigned char*>(aFirst->itsBytes) + aPart, aFirst->itsCount - aPart};
         aRest -= aPart;
         aFirst += aFirst->itsCount == 0 ? 1 : 0;
      }
   }
}

bool Socket::CanSend(const char* theFailureText)
{
   if (itsConnectionIsOpen && itsOutputIsConnected)
   {
      return true;
   }
   SocketTrace::Line(TNTrace::TNTraceSocketErrors, theFailureText);
   FailedTransfer(TN_NOT_CONNECTED, ENOTCONN);
   return false;
}

// One send of at least one byte, waiting for room when there is none. -1 with the failure recorded.
std::ptrdiff_t Socket::SendSome(const TNPlatform::ConstBlock* theBlocks, std::size_t theBlockCount,
                                SocketRules::SlicedWait& theWait)
{
   for (;;)
   {
      const std::ptrdiff_t aCount = TNPlatform::SendNow(itsConnectionSocket, theBlocks, theBlockCount);
      if (aCount >= 0)
      {
         itsOwesAcknowledgement = false; // it went along
         SocketTrace::Line(TNTrace::TNTraceSocket, "Socket: sent ", aCount, " bytes on socket ", itsConnectionSocket);
         return aCount;
      }
      const int anError = errno;
      if (anError == ECONNRESET || anError == EPIPE)
      {
         itsOutputIsConnected = false;
         return FailedTransfer(TN_END_OF_FILE, anError);
      }
      if (anError == ENOBUFS)
      {
         SystemClock::Get().Sleep(kPauseMilliseconds);
      }
      else if (!IsWouldBlock(anError))
      {
         return FailedTransfer(TN_SYSTEM_CALL_FAILED, anError);
      }
      const SocketRules::WaitResult aResult = Wait(theWait, itsConnectionSocket, TNPlatform::WaitFor::kOutput);
      if (aResult != SocketRules::WaitResult::kReady)
      {
         FailedWait(aResult, TN_TRANSPORT_TIMED_OUT);
         return FailedTransfer(itsResultCode, itsSystemErrorCode);
      }
   }
}

int Socket::BytesAvailable(unsigned int& theCount)
{
   theCount = 0;
   if (!itsConnectionIsOpen)
   {
      return Failed(TN_NOT_CONNECTED, ENOTCONN);
   }
   if (!TNPlatform::BytesReadable(itsConnectionSocket, theCount))
   {
      return Failed(TN_SYSTEM_CALL_FAILED, errno);
   }
   return Succeeded();
}
