// How a Socket gets its connection: connecting, listening and accepting, and the same for datagrams.
#include <cerrno>

#include "talvenor/foundation/OneLine.h"
#include "talvenor/platform/Sockets.h"
#include "talvenor/ul/Socket.h"
#include "talvenor/ul/SocketRules.h"
#include "talvenor/ul/SocketTrace.h"

namespace
{

// The errors that mean that nobody answers at that address.
TNResultCode ConnectFailure(int theError)
{
   return theError == ECONNREFUSED || theError == ETIMEDOUT || theError == ENETUNREACH ? TN_CONNECTION_REFUSED
                                                                                       : TN_SYSTEM_CALL_FAILED;
}

} // namespace

// Host and port of a peer. They may come from a configuration or a peer: they are logged on one line.
bool Socket::ResolvePeer(const RWCString& theHost, const RWCString& thePort, const char* theProtocol,
                         const char* theCaller, TNPlatform::IPv4Address& thePeer)
{
   const UINT32 anAddress = GetNetworkOrderIPAddrByName(theHost);
   if (anAddress == 0)
   {
      SocketTrace::Failure(theCaller, ": Can't resolve host \"", OnOneLine(theHost), "\"");
      return Failed(TN_INVALID_ARGUMENT, itsSystemErrorCode);
   }
   UINT16 aPort = 0;
   if (!GetNetworkOrderPortByName(thePort, theProtocol, aPort) || aPort == 0)
   {
      SocketTrace::Failure(theCaller, ": Can't resolve port \"", OnOneLine(thePort), "\"");
      return Failed(TN_INVALID_ARGUMENT, 0);
   }
   thePeer = TNPlatform::MakeIPv4Address(anAddress, aPort);
   return true;
}

int Socket::Open(const RWCString& theHost, const RWCString& thePort)
{
   CloseConnectionSocket();
   TNPlatform::IPv4Address aPeer;
   if (!ResolvePeer(theHost, thePort, "tcp", "Socket::Open()", aPeer))
   {
      return 0;
   }
   const Handle aHandle =
       NewSocket(TNPlatform::SocketKind::kStream, "Socket::Open()", ": Can't create a socket (error ");
   if (aHandle == kNoHandle)
   {
      return 0;
   }
   AdoptConnection(aHandle, aPeer);
   if (!Connect(aPeer))
   {
      SocketTrace::Failure("Socket::Open(): Can't connect socket to port ", TNPlatform::HostOrderPort(aPeer), " of ",
                           TNPlatform::DottedDecimal(aPeer), ": error ", itsSystemErrorCode);
      CloseConnectionSocket();
      return 0;
   }
   SocketTrace::Line(TNTrace::TNTraceSocketOpenClose, "Socket::Open(): Succeeded");
   return Succeeded();
}

// To the caller this is a connect that blocks; the wait is ours, so that abort requests and a time-out end it.
bool Socket::Connect(const TNPlatform::IPv4Address& thePeer)
{
   if (!TNPlatform::SetBlocking(itsConnectionSocket, false))
   {
      return Failed(TN_SYSTEM_CALL_FAILED, errno);
   }
   if (!TNPlatform::ConnectTo(itsConnectionSocket, thePeer))
   {
      if (errno != EINPROGRESS)
      {
         return Failed(ConnectFailure(errno), errno);
      }
      SocketRules::SlicedWait aWait(itsConnectTimeout, itsAbortPollInterval, itsAbortPollMilliseconds);
      const SocketRules::WaitResult aResult = Wait(aWait, itsConnectionSocket, TNPlatform::WaitFor::kOutput);
      if (aResult == SocketRules::WaitResult::kTimedOut)
      {
         return Failed(ConnectFailure(ETIMEDOUT), ETIMEDOUT);
      }
      if (aResult != SocketRules::WaitResult::kReady)
      {
         return FailedWait(aResult, TN_CONNECTION_REFUSED);
      }
      if (!TNPlatform::ConnectOutcome(itsConnectionSocket))
      {
         return Failed(ConnectFailure(errno), errno);
      }
   }
   return TNPlatform::SetBlocking(itsConnectionSocket, true) || Failed(TN_SYSTEM_CALL_FAILED, errno);
}

int Socket::Listen(int thePort, int theBacklog, const RWCString& theBindAddress)
{
   return Listen(std::to_string(thePort), theBacklog, theBindAddress);
}

int Socket::Listen(const RWCString& thePort, int theBacklog, const RWCString& theBindAddress)
{
   CloseListenSocket();
   TNPlatform::IPv4Address anAddress;
   if (!ResolveListenAddress(thePort, theBindAddress, anAddress))
   {
      return 0;
   }
   const Handle aHandle = NewSocket(TNPlatform::SocketKind::kStream, "Socket::Listen()", ": socket() failed (error ");
   if (aHandle == kNoHandle)
   {
      return 0;
   }
   // Without this a server that is started again has to wait until the last connections of its predecessor are
   // forgotten (TIME_WAIT). A port on which somebody else listens is refused all the same.
   TNPlatform::SetAddressReusable(aHandle);
   const char* aFailure = !TNPlatform::BindTo(aHandle, anAddress)            ? "bind"
                          : !TNPlatform::StartListening(aHandle, theBacklog) ? "listen"
                                                                             : nullptr;
   if (aFailure)
   {
      Failed(TN_SYSTEM_CALL_FAILED, errno);
      TNPlatform::CloseSocket(aHandle);
      SocketTrace::Failure("Socket::Listen(): ", aFailure, "() failed (error ", itsSystemErrorCode, ")");
      return 0;
   }
   ManageListenSocket(aHandle);
   SocketTrace::Line(TNTrace::TNTraceSocketOpenClose, "Socket::Listen(): succeeded");
   return Succeeded();
}

bool Socket::ResolveListenAddress(const RWCString& thePort, const RWCString& theBindAddress,
                                  TNPlatform::IPv4Address& theAddress)
{
   UINT16 aPort = 0;
   if (!GetNetworkOrderPortByName(thePort, "tcp", aPort))
   {
      SocketTrace::Failure("Socket::Listen(): invalid port");
      return Failed(TN_SYSTEM_CALL_FAILED, 0);
   }
   // 0.0.0.0 is every address, and not the failure that it is for a peer.
   std::uint32_t anAddress = 0;
   const bool isEvery =
       theBindAddress.empty() || (TNPlatform::ParseDottedDecimal(theBindAddress.c_str(), anAddress) && anAddress == 0);
   if (!isEvery && (anAddress = GetNetworkOrderIPAddrByName(theBindAddress)) == 0)
   {
      SocketTrace::Failure("Socket::Listen(): Can't resolve host \"", OnOneLine(theBindAddress), "\"");
      return Failed(TN_INVALID_ARGUMENT, itsSystemErrorCode);
   }
   theAddress = TNPlatform::MakeIPv4Address(anAddress, aPort);
   return true;
}

int Socket::GetListenPort() const
{
   TNPlatform::IPv4Address anAddress;
   return itsListenSocket != kNoHandle && TNPlatform::LocalAddress(itsListenSocket, anAddress)
              ? TNPlatform::HostOrderPort(anAddress)
              : 0;
}

int Socket::Accept(int theTimeout)
{
   if (!itsIsListened)
   {
      SocketTrace::Failure("Socket::Accept(): Not socket listened");
      return Failed(TN_NOT_CONNECTED, ENOTCONN);
   }
   if (itsConnectionSocket != kNoHandle)
   {
      SocketTrace::Failure("Socket::Accept(): Connection socket ", itsConnectionSocket,
                           " from previous accept() call still under management.");
      SocketTrace::Failure("Unable to perform new accept prior to Close() or UnmanageConnection()");
      return Failed(TN_INTERNAL_ERROR, 0);
   }
   TNPlatform::IPv4Address aPeer;
   const Handle aHandle = AcceptWithin(theTimeout, aPeer);
   if (aHandle == kNoHandle)
   {
      return 0;
   }
   AdoptConnection(aHandle, aPeer);
   ReadBackBufferSizes(aHandle, "Socket::Accept()");
   if (gTNTracer(TNTrace::TNTraceSocket)) // or the peer's name would be looked up for nothing
   {
      const RWCString aPeerName = GetPeerName();
      SocketTrace::Line(TNTrace::TNTraceSocket, "Socket::Accept(): connected to peer ",
                        aPeerName.empty() ? GetPeerIPAddress() : OnOneLine(aPeerName), " on socket ", aHandle);
   }
   return Succeeded();
}

// Asks for a connection before waiting for one: a busy server saves every second system call.
Socket::Handle Socket::AcceptWithin(int theTimeout, TNPlatform::IPv4Address& thePeer)
{
   SocketRules::SlicedWait aWait(theTimeout, itsAbortPollInterval, itsAbortPollMilliseconds);
   for (;;)
   {
      if (aWait.WatchesFlags() && theTimeout >= 0 && GetAbortRequestedFlag())
      {
         Failed(TN_CANCELLED, 0);
         return kNoHandle;
      }
      const Handle aHandle = TNPlatform::AcceptConnection(itsListenSocket, thePeer);
      if (aHandle != kNoHandle)
      {
         return aHandle;
      }
      const bool isNobodyThere = errno == EAGAIN || errno == EWOULDBLOCK;
      SocketRules::WaitResult aResult = SocketRules::WaitResult::kTimedOut;
      if (!isNobodyThere)
      {
         itsSystemErrorCode = errno;
         aResult = SocketRules::WaitResult::kFailed;
      }
      else if (theTimeout >= 0)
      {
         aResult = Wait(aWait, itsListenSocket, TNPlatform::WaitFor::kInput);
      }
      if (aResult != SocketRules::WaitResult::kReady)
      {
         FailedWait(aResult, TN_TIMED_OUT);
         if (aResult == SocketRules::WaitResult::kFailed)
         {
            SocketTrace::Failure("Socket::Accept(theTimeout = ", theTimeout, "): error ", itsSystemErrorCode);
         }
         return kNoHandle;
      }
   }
}

int Socket::BindUDPServer(const RWCString& thePort)
{
   CloseConnectionSocket();
   UINT16 aPort = 0;
   if (!GetNetworkOrderPortByName(thePort, "udp", aPort))
   {
      SocketTrace::Failure("Socket::BindUDPServer(): Can't resolve port \"", OnOneLine(thePort), "\"");
      return Failed(TN_INVALID_ARGUMENT, 0);
   }
   const Handle aHandle =
       NewSocket(TNPlatform::SocketKind::kDatagram, "Socket::BindUDPServer()", ": Can't create a socket (error ");
   if (aHandle == kNoHandle)
   {
      return 0;
   }
   AdoptConnection(aHandle, {});
   if (!TNPlatform::BindTo(aHandle, TNPlatform::MakeIPv4Address(0, aPort)))
   {
      Failed(TN_SYSTEM_CALL_FAILED, errno);
      SocketTrace::Failure("Socket::BindUDPServer(): bind() failed (error ", itsSystemErrorCode, ")");
      CloseConnectionSocket();
      return 0;
   }
   return Succeeded();
}

int Socket::BindUDPClient(const RWCString& theHost, const RWCString& thePort)
{
   CloseConnectionSocket();
   TNPlatform::IPv4Address aPeer;
   if (!ResolvePeer(theHost, thePort, "udp", "Socket::BindUDPClient()", aPeer))
   {
      return 0;
   }
   const Handle aHandle =
       NewSocket(TNPlatform::SocketKind::kDatagram, "Socket::BindUDPClient()", ": Can't create a socket (error ");
   if (aHandle == kNoHandle)
   {
      return 0;
   }
   AdoptConnection(aHandle, aPeer);
   // A datagram socket connects at once: only its default destination is set.
   if (!TNPlatform::SetBlocking(aHandle, true) || !TNPlatform::ConnectTo(aHandle, aPeer) ||
       !TNPlatform::SetBlocking(aHandle, false))
   {
      Failed(ConnectFailure(errno), errno);
      SocketTrace::Failure("Socket::BindUDPClient(): Can't connect socket to port ", TNPlatform::HostOrderPort(aPeer),
                           ": error ", itsSystemErrorCode);
      CloseConnectionSocket();
      return 0;
   }
   return Succeeded();
}

void Socket::ManageUDPConnection(Handle theHandle)
{
   CloseConnectionSocket();
   TNPlatform::IPv4Address aPeer;
   if (theHandle != kNoHandle)
   {
      TNPlatform::PeerAddress(theHandle, aPeer); // a server of datagrams has no peer
      AdoptConnection(theHandle, aPeer);
      ReadBackBufferSizes(theHandle, "Socket::ManageUDPConnection()");
      TNPlatform::SetBlocking(theHandle, false);
   }
   Succeeded();
}
