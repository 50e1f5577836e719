#include "talvenor/ul/Socket.h"

#include <cerrno>
#include <utility>

#include "talvenor/platform/Clock.h"
#include "talvenor/platform/Sockets.h"
#include "talvenor/ul/SocketRules.h"
#include "talvenor/ul/SocketTrace.h"

// The settings with which sockets are made (seconds, bytes, milliseconds).
int Socket::itsDefaultTimeout = 300;
int Socket::itsDefaultAbortPollInterval = 60;
int Socket::itsDefaultTCPSendBufferSize = 64240;
int Socket::itsDefaultTCPReceiveBufferSize = 64240;
int Socket::itsEnableReverseDNSLookup = 1;
constinit std::atomic<int> Socket::itsGlobalAbortRequestedFlag = 0;
int Socket::itsDefaultConnectTimeout = 0;
int Socket::itsDefaultAbortPollMilliseconds = 0;

// Sockets of POSIX need no start-up of the platform, hence no count of those that live.
Socket::Socket() = default;

Socket::~Socket()
{
   Close();
}

int Socket::Failed(TNResultCode theCode, int theSystemErrorCode)
{
   itsResultCode = theCode;
   itsSystemErrorCode = theSystemErrorCode;
   return 0;
}

int Socket::Succeeded()
{
   itsResultCode = TN_NO_ERROR;
   itsSystemErrorCode = 0;
   return 1;
}

void Socket::Close()
{
   CloseListenSocket();
   CloseConnectionSocket();
}

void Socket::CloseListenSocket()
{
   const Handle aHandle = UnmanageListenSocket();
   if (aHandle != kNoHandle)
   {
      TNPlatform::CloseSocket(aHandle);
      SocketTrace::Line(TNTrace::TNTraceSocketOpenClose, "Socket::CloseListenSocket(): closed listen socket (", aHandle,
                        ")");
   }
}

void Socket::CloseConnectionSocket()
{
   const Handle aHandle = UnmanageConnection();
   if (aHandle != kNoHandle)
   {
      TNPlatform::CloseSocket(aHandle);
      SocketTrace::Line(TNTrace::TNTraceSocketOpenClose, "Socket::CloseConnectionSocket(): closed connection socket (",
                        aHandle, ")");
   }
}

void Socket::ManageConnection(Handle theHandle)
{
   CloseConnectionSocket();
   TNPlatform::IPv4Address aPeer;
   if (theHandle != kNoHandle)
   {
      TNPlatform::PeerAddress(theHandle, aPeer); // a peer without an IPv4 address has none that can be told
      AdoptConnection(theHandle, aPeer);
      ReadBackBufferSizes(theHandle, "Socket::ManageConnection()");
   }
   Succeeded();
   SocketTrace::Line(TNTrace::TNTraceSocket, "Socket::ManageConnection(): socket ", theHandle);
}

Socket::Handle Socket::UnmanageConnection()
{
   if (itsConnectionSocket != kNoHandle)
   {
      SocketTrace::Line(TNTrace::TNTraceSocket, "Socket::UnmanageConnection(): socket ", itsConnectionSocket);
   }
   itsConnectionIsOpen = false;
   itsInputIsConnected = false;
   itsOutputIsConnected = false;
   return std::exchange(itsConnectionSocket, kNoHandle);
}

// A listening socket is kept in non-blocking mode: a peer that gives up between the wait and the accept must not leave
// the acceptor waiting where no abort request is noticed.
void Socket::ManageListenSocket(Handle theHandle)
{
   CloseListenSocket();
   if (theHandle != kNoHandle)
   {
      itsListenSocket = theHandle;
      itsListenSocketIsOpen = true;
      itsIsListened = true;
      TNPlatform::SetBlocking(theHandle, false);
      ReadBackBufferSizes(theHandle, "Socket::ManageListenSocket()");
   }
   Succeeded();
   SocketTrace::Line(TNTrace::TNTraceSocket, "Socket::ManageListenSocket(): socket ", theHandle);
}

Socket::Handle Socket::UnmanageListenSocket()
{
   if (itsListenSocket != kNoHandle)
   {
      SocketTrace::Line(TNTrace::TNTraceSocket, "Socket::UnmanageListenSocket(): socket ", itsListenSocket);
   }
   itsListenSocketIsOpen = false;
   itsIsListened = false;
   return std::exchange(itsListenSocket, kNoHandle);
}

void Socket::AdoptConnection(Handle theHandle, const TNPlatform::IPv4Address& thePeer)
{
   itsConnectionSocket = theHandle;
   itsPeerAddress = thePeer;
   itsPeerName.clear();
   itsPeerNameIsKnown = false;
   itsConnectionIsOpen = true;
   itsInputIsConnected = true;
   itsOutputIsConnected = true;
   TNPlatform::SetNoDelay(theHandle); // fails where there is no such delay: on what is not TCP
}

// Requests the sizes that are positive and keeps what was granted. A receive buffer larger than 64 KiB is announced
// when the connection is made: it must be set before that, and on the listening socket, from which connections inherit.
bool Socket::ApplyBufferSizes(Handle theHandle, const char* theCaller)
{
   struct Step
   {
      TNPlatform::SocketBuffer itsBuffer;
      const char* itsName;
      int& itsSize;
   };
   const Step aSteps[] = {{TNPlatform::SocketBuffer::kReceive, "SO_RCVBUF", itsTCPReceiveBufferSize},
                          {TNPlatform::SocketBuffer::kSend, "SO_SNDBUF", itsTCPSendBufferSize}};
   for (const Step& aStep : aSteps)
   {
      const char* aVerb = nullptr;
      if (aStep.itsSize > 0 && !TNPlatform::SetBufferSize(theHandle, aStep.itsBuffer, aStep.itsSize))
      {
         aVerb = "set";
      }
      else if (!TNPlatform::GetBufferSize(theHandle, aStep.itsBuffer, aStep.itsSize))
      {
         aVerb = "get";
      }
      if (aVerb)
      {
         Failed(TN_SYSTEM_CALL_FAILED, errno);
         SocketTrace::Failure(theCaller, ": Can't ", aVerb, " ", aStep.itsName, " for socket: Error ",
                              itsSystemErrorCode);
         return false;
      }
   }
   return true;
}

void Socket::ReadBackBufferSizes(Handle theHandle, const char* theCaller)
{
   if (!TNPlatform::GetBufferSize(theHandle, TNPlatform::SocketBuffer::kReceive, itsTCPReceiveBufferSize))
   {
      SocketTrace::Failure(theCaller, ": Can't get SO_RCVBUF for socket: Error ", errno);
   }
   if (!TNPlatform::GetBufferSize(theHandle, TNPlatform::SocketBuffer::kSend, itsTCPSendBufferSize))
   {
      SocketTrace::Failure(theCaller, ": Can't get SO_SNDBUF for socket: Error ", errno);
   }
}

// A new socket with the buffer sizes asked for; kNoHandle with the failure recorded.
Socket::Handle Socket::NewSocket(TNPlatform::SocketKind theKind, const char* theCaller, const char* theFailureText)
{
   const Handle aHandle = TNPlatform::CreateSocket(theKind);
   if (aHandle == kNoHandle)
   {
      Failed(TN_SYSTEM_CALL_FAILED, errno);
      SocketTrace::Failure(theCaller, theFailureText, itsSystemErrorCode, ")");
   }
   else if (!ApplyBufferSizes(aHandle, theCaller))
   {
      TNPlatform::CloseSocket(aHandle);
      return kNoHandle;
   }
   return aHandle;
}

void Socket::SetGlobalAbortRequestedFlag(int theFlag)
{
   itsGlobalAbortRequestedFlag.store(theFlag, std::memory_order_relaxed);
}

int Socket::GetGlobalAbortRequestedFlag()
{
   return itsGlobalAbortRequestedFlag.load(std::memory_order_relaxed);
}

int Socket::GetAbortRequestedFlag() const
{
   return itsAbortRequestedFlag.load(std::memory_order_relaxed) != 0 || GetGlobalAbortRequestedFlag() != 0 ||
          (itsSharedAbortFlag && itsSharedAbortFlag->load(std::memory_order_relaxed) != 0);
}

SocketRules::WaitResult Socket::Wait(SocketRules::SlicedWait& theWait, Handle theHandle, TNPlatform::WaitFor theEvent)
{
   const auto aWaitOnce = [&](INT64 theMilliseconds) {
      SocketTrace::Line(TNTrace::TNTraceSocket, "Socket: waiting ", theMilliseconds, " ms for ",
                        theEvent == TNPlatform::WaitFor::kInput ? "input" : "output", " of socket ", theHandle);
      switch (TNPlatform::WaitUntilReady(theHandle, theEvent, theMilliseconds))
      {
      case TNPlatform::WaitOutcome::kReady: return SocketRules::WaitResult::kReady;
      case TNPlatform::WaitOutcome::kTimedOut: return SocketRules::WaitResult::kTimedOut;
      default: itsSystemErrorCode = errno; return SocketRules::WaitResult::kFailed;
      }
   };
   return theWait.Wait([this] { return GetAbortRequestedFlag() != 0; }, aWaitOnce, TNPlatform::MonotonicNanoseconds);
}

// Records why a wait ended that did not end in readiness.
int Socket::FailedWait(SocketRules::WaitResult theResult, TNResultCode theTimeOutCode)
{
   switch (theResult)
   {
   case SocketRules::WaitResult::kTimedOut: return Failed(theTimeOutCode, 0);
   case SocketRules::WaitResult::kCancelled: return Failed(TN_CANCELLED, 0);
   default: return Failed(TN_SYSTEM_CALL_FAILED, itsSystemErrorCode);
   }
}
