// TCP and UDP sockets of the operating system (IPv4): what the library asks of them, and nothing more.
//
// Every operation that can fail returns a false or negative value and leaves the reason in errno. Interrupted calls are
// repeated. Descriptors are closed when a program is executed, and writing to a dead peer raises no signal. Any thread
// may call; a descriptor belongs to one at a time, except that one may send while another receives.
#pragma once

#include <cstddef>
#include <cstdint>

#include "talvenor/platform/IPv4Address.h"

namespace TNPlatform
{

enum class SocketKind
{
   kStream,
   kDatagram
};

enum class SocketBuffer
{
   kReceive,
   kSend
};

enum class WaitFor
{
   kInput, // data, a connection to accept, the end or an error
   kOutput // room, the outcome of a connect, or an error
};

enum class WaitOutcome
{
   kReady,
   kTimedOut,
   kFailed // errno tells why
};

// A piece of memory for a transfer in several pieces.
struct ConstBlock
{
   const void* itsBytes;
   std::size_t itsCount;
};

struct MutableBlock
{
   void* itsBytes;
   std::size_t itsCount;
};

int CreateSocket(SocketKind theKind); // in blocking mode
void CloseSocket(int theSocket);      // ends both directions first; changes errno

// Closes a connection whose peer takes nothing any more: what he has not taken is dropped. Otherwise the system would
// keep it for minutes.
void ResetSocket(int theSocket);

// In bytes, as asked for. Linux doubles what it is given to have room for its own bookkeeping and reports the double;
// that is undone here, so that a size granted in full reads back as it was set.
bool SetBufferSize(int theSocket, SocketBuffer theBuffer, int theSize);
bool GetBufferSize(int theSocket, SocketBuffer theBuffer, int& theSize);

bool SetBlocking(int theSocket, bool isBlocking);
bool SetNoDelay(int theSocket);         // small packets leave at once: no Nagle algorithm
void AcknowledgeNow(int theSocket);     // what has been received, if that is still to be done
bool SetAddressReusable(int theSocket); // a port may be listened on again while old connections on it die away

bool BindTo(int theSocket, const IPv4Address& theAddress);
bool StartListening(int theSocket, int theBacklog);
bool LocalAddress(int theSocket, IPv4Address& theAddress);
bool PeerAddress(int theSocket, IPv4Address& theAddress); // false when not connected, or not IPv4

// Never blocks when the listening socket is in non-blocking mode. -1 with EAGAIN when nobody is waiting, also when the
// caller who was waiting has gone away in the meantime. The new socket is in blocking mode.
int AcceptConnection(int theListenSocket, IPv4Address& thePeer);

// On a socket in non-blocking mode false with EINPROGRESS means: wait for output, then ask ConnectOutcome.
bool ConnectTo(int theSocket, const IPv4Address& thePeer);
bool ConnectOutcome(int theSocket);

// theMilliseconds below 0: no limit.
WaitOutcome WaitUntilReady(int theSocket, WaitFor theEvent, std::int64_t theMilliseconds);

// The number of bytes transferred, or -1; neither ever waits, whatever the mode of the socket (EAGAIN). Receiving fills
// the blocks in order; 0 is the end of the connection.
std::ptrdiff_t ReceiveNow(int theSocket, const MutableBlock* theBlocks, std::size_t theBlockCount);
std::ptrdiff_t SendNow(int theSocket, const ConstBlock* theBlocks, std::size_t theBlockCount);
inline constexpr std::size_t kMaxBlocks = 64; // of one transfer

bool BytesReadable(int theSocket, unsigned int& theCount);

} // namespace TNPlatform
