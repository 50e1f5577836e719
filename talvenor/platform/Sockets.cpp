#include "talvenor/platform/Sockets.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include "talvenor/platform/Clock.h"
#include "talvenor/platform/Uninterrupted.h"

namespace TNPlatform
{

namespace
{

constexpr std::int64_t kNanosecondsOfMillisecond = 1'000'000;

// A call on the address of a socket: (socket, sockaddr*, socklen_t*).
template <class Call>
bool GetAddress(Call theCall, int theSocket, IPv4Address& theAddress)
{
   sockaddr_in anAddress = {};
   socklen_t aLength = sizeof anAddress; // an address of another family is cut, but for its family
   if (theCall(theSocket, reinterpret_cast<sockaddr*>(&anAddress), &aLength) != 0)
   {
      return false;
   }
   if (anAddress.sin_family != AF_INET)
   {
      errno = EAFNOSUPPORT;
      return false;
   }
   theAddress = std::bit_cast<IPv4Address>(anAddress);
   return true;
}

bool SetOption(int theSocket, int theLevel, int theOption, int theValue)
{
   return ::setsockopt(theSocket, theLevel, theOption, &theValue, sizeof theValue) == 0;
}

int BufferOption(SocketBuffer theBuffer)
{
   return theBuffer == SocketBuffer::kReceive ? SO_RCVBUF : SO_SNDBUF;
}

// What accept(2) reports of a connection that broke before it was taken, and of the network it came from: no fault of
// the listening socket, which goes on waiting for the next one.
bool IsFaultOfTheConnection(int theError)
{
   constexpr int kErrors[] = {ECONNABORTED, EPROTO, ENETDOWN, ENOPROTOOPT, EHOSTDOWN, EHOSTUNREACH, ENETUNREACH, EPERM};
   return std::find(std::begin(kErrors), std::end(kErrors), theError) != std::end(kErrors);
}

template <class Block>
msghdr MessageOf(iovec (&thePieces)[kMaxBlocks], const Block* theBlocks, std::size_t theBlockCount)
{
   const std::size_t aCount = std::min(theBlockCount, kMaxBlocks);
   // The structure serves both directions and is therefore without const; a send only reads.
   std::transform(theBlocks, theBlocks + aCount, thePieces, [](const Block& theBlock) {
      return iovec{const_cast<void*>(theBlock.itsBytes), theBlock.itsCount};
   });
   msghdr aMessage = {};
   aMessage.msg_iov = thePieces;
   aMessage.msg_iovlen = aCount;
   return aMessage;
}

} // namespace

int CreateSocket(SocketKind theKind)
{
   return ::socket(AF_INET, (theKind == SocketKind::kStream ? SOCK_STREAM : SOCK_DGRAM) | SOCK_CLOEXEC, 0);
}

// A connection that is closed with bytes unread is reset, and on some systems the reset takes from the peer what was
// sent to him last: the A-ABORT or the rejection that tells why. So what has arrived is thrown away first, within
// reason.
void CloseSocket(int theSocket)
{
   constexpr int kMostReceives = 16;
   constexpr std::size_t kMostBytes = 1 << 20; // of one receive, which copies nothing (MSG_TRUNC, tcp(7))
   ::shutdown(theSocket, SHUT_RDWR);
   for (int i = 0; i<kMostReceives&& ::recv(theSocket, nullptr, kMostBytes, MSG_TRUNC | MSG_DONTWAIT)> 0; ++i)
   {}
   ::close(theSocket); // not repeated when interrupted: the descriptor is gone then
}

void ResetSocket(int theSocket)
{
   const linger aLinger = {1, 0};
   ::setsockopt(theSocket, SOL_SOCKET, SO_LINGER, &aLinger, sizeof aLinger);
   ::close(theSocket);
}

bool SetBufferSize(int theSocket, SocketBuffer theBuffer, int theSize)
{
   return SetOption(theSocket, SOL_SOCKET, BufferOption(theBuffer), theSize);
}

bool GetBufferSize(int theSocket, SocketBuffer theBuffer, int& theSize)
{
   int aSize = 0;
   socklen_t aLength = sizeof aSize;
   if (::getsockopt(theSocket, SOL_SOCKET, BufferOption(theBuffer), &aSize, &aLength) != 0)
   {
      return false;
   }
   theSize = aSize / 2;
   return true;
}

bool SetBlocking(int theSocket, bool isBlocking)
{
   const int aFlags = ::fcntl(theSocket, F_GETFL);
   return aFlags >= 0 && ::fcntl(theSocket, F_SETFL, isBlocking ? aFlags & ~O_NONBLOCK : aFlags | O_NONBLOCK) == 0;
}

bool SetNoDelay(int theSocket)
{
   return SetOption(theSocket, IPPROTO_TCP, TCP_NODELAY, 1);
}

void AcknowledgeNow(int theSocket)
{
   SetOption(theSocket, IPPROTO_TCP, TCP_QUICKACK, 1); // of no consequence where it fails
}

bool SetAddressReusable(int theSocket)
{
   return SetOption(theSocket, SOL_SOCKET, SO_REUSEADDR, 1);
}

bool BindTo(int theSocket, const IPv4Address& theAddress)
{
   const auto anAddress = std::bit_cast<sockaddr_in>(theAddress);
   return ::bind(theSocket, reinterpret_cast<const sockaddr*>(&anAddress), sizeof anAddress) == 0;
}

bool StartListening(int theSocket, int theBacklog)
{
   return ::listen(theSocket, theBacklog) == 0;
}

bool LocalAddress(int theSocket, IPv4Address& theAddress)
{
   return GetAddress(::getsockname, theSocket, theAddress);
}

bool PeerAddress(int theSocket, IPv4Address& theAddress)
{
   return GetAddress(::getpeername, theSocket, theAddress);
}

int AcceptConnection(int theListenSocket, IPv4Address& thePeer)
{
   sockaddr_in aPeer = {};
   const int aSocket = Uninterrupted([&] {
      socklen_t aLength = sizeof aPeer;
      return ::accept4(theListenSocket, reinterpret_cast<sockaddr*>(&aPeer), &aLength, SOCK_CLOEXEC);
   });
   if (aSocket >= 0)
   {
      thePeer = std::bit_cast<IPv4Address>(aPeer);
   }
   else if (IsFaultOfTheConnection(errno))
   {
      errno = EAGAIN;
   }
   return aSocket;
}

// Not repeated: an interrupted connect goes on by itself, like one in progress.
bool ConnectTo(int theSocket, const IPv4Address& thePeer)
{
   const auto aPeer = std::bit_cast<sockaddr_in>(thePeer);
   if (::connect(theSocket, reinterpret_cast<const sockaddr*>(&aPeer), sizeof aPeer) == 0)
   {
      return true;
   }
   errno = errno == EINTR ? EINPROGRESS : errno;
   return false;
}

bool ConnectOutcome(int theSocket)
{
   int anError = 0;
   socklen_t aLength = sizeof anError;
   if (::getsockopt(theSocket, SOL_SOCKET, SO_ERROR, &anError, &aLength) != 0)
   {
      return false;
   }
   errno = anError;
   return anError == 0;
}

WaitOutcome WaitUntilReady(int theSocket, WaitFor theEvent, std::int64_t theMilliseconds)
{
   const std::int64_t aDeadline =
       theMilliseconds < 0 ? 0 : MonotonicNanoseconds() + theMilliseconds * kNanosecondsOfMillisecond;
   pollfd aRequest = {theSocket, static_cast<short>(theEvent == WaitFor::kInput ? POLLIN : POLLOUT), 0};
   for (;;)
   {
      // Recomputed after each interruption, so that a stream of signals cannot stretch the wait.
      const std::int64_t aRest = std::max<std::int64_t>(aDeadline - MonotonicNanoseconds(), 0);
      const timespec aLimit = {static_cast<std::time_t>(aRest / 1'000'000'000),
                               static_cast<long>(aRest % 1'000'000'000)};
      const int aCount = ::ppoll(&aRequest, 1, theMilliseconds < 0 ? nullptr : &aLimit, nullptr);
      if (aCount == 0)
      {
         return WaitOutcome::kTimedOut;
      }
      if (aCount > 0 && (aRequest.revents & POLLNVAL) == 0)
      {
         return WaitOutcome::kReady;
      }
      if (aCount > 0 || errno != EINTR)
      {
         errno = aCount > 0 ? EBADF : errno;
         return WaitOutcome::kFailed;
      }
   }
}

std::ptrdiff_t ReceiveNow(int theSocket, const MutableBlock* theBlocks, std::size_t theBlockCount)
{
   iovec aPieces[kMaxBlocks];
   msghdr aMessage = MessageOf(aPieces, theBlocks, theBlockCount);
   return Uninterrupted([&] { return ::recvmsg(theSocket, &aMessage, MSG_DONTWAIT); });
}

std::ptrdiff_t SendNow(int theSocket, const ConstBlock* theBlocks, std::size_t theBlockCount)
{
   iovec aPieces[kMaxBlocks];
   const msghdr aMessage = MessageOf(aPieces, theBlocks, theBlockCount);
   return Uninterrupted([&] { return ::sendmsg(theSocket, &aMessage, MSG_DONTWAIT | MSG_NOSIGNAL); });
}

bool BytesReadable(int theSocket, unsigned int& theCount)
{
   int aCount = 0;
   if (::ioctl(theSocket, FIONREAD, &aCount) != 0)
   {
      return false;
   }
   theCount = static_cast<unsigned int>(std::max(aCount, 0));
   return true;
}

} // namespace TNPlatform
