// One TCP connection over IPv4, and the listening socket from which it may have come.
//
// Operations never throw: they return 0 or -1 and leave a TNResultCode and the platform's error number on the object.
// Waits are cut into slices of the abort poll interval; before and after each the abort flags are looked at. A set flag
// ends the wait with TN_CANCELLED. With a poll interval of 0 an abort request is never noticed.
//
// A socket is used by one thread at a time. Only the abort flags may be set from other threads. Connections are made
// with TCP_NODELAY: an upper layer that writes whole PDUs gains nothing from delayed small packets (PS3.8 9.1.4). Port
// and address parameters are IPv4; a host is a name or a dotted address, a port a number or the name of a service.
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <utility>

#include "talvenor/Export.h"
#include "talvenor/foundation/BasicTypes.h"
#include "talvenor/foundation/TNResult.h"
#include "talvenor/platform/IPv4Address.h"

namespace TNPlatform
{
struct ConstBlock;
struct MutableBlock;
enum class SocketKind;
enum class WaitFor;
} // namespace TNPlatform

namespace SocketRules
{
class SlicedWait;
enum class WaitResult;
} // namespace SocketRules

class TALVENOR_API Socket
{
public:
   using Handle = int; // of the operating system
   static constexpr Handle kNoHandle = -1;

   Socket();
   Socket(const Socket&) = delete;
   Socket& operator=(const Socket&) = delete;
   virtual ~Socket(); // closes what is open

   // Sends all theCount bytes and returns theCount, or returns -1: TN_NOT_CONNECTED, TN_CANCELLED, TN_END_OF_FILE when
   // the peer has reset the connection, TN_SYSTEM_CALL_FAILED. There is no time-out: a peer that stops reading holds
   // the caller until an abort flag is set.
   virtual int SendBinary(const unsigned char* theBytes, int theCount);

   // Waits for bytes and returns how many came, 1 to theCount; or returns -1: TN_END_OF_FILE when the peer has closed
   // or reset the connection, TN_TRANSPORT_TIMED_OUT, TN_CANCELLED, TN_NOT_CONNECTED, TN_SYSTEM_CALL_FAILED.
   virtual int ReadBinary(unsigned char* theBuffer, int theCount);

   // Connects, after closing an older connection. Returns 0 with TN_INVALID_ARGUMENT for a host or port that cannot be
   // resolved, TN_CONNECTION_REFUSED when nobody answers there (refused, timed out, network unreachable),
   // TN_SYSTEM_CALL_FAILED otherwise. See SetConnectTimeout.
   virtual int Open(const RWCString& theHost, const RWCString& thePort);

   // Listens on theBindAddress, or, when that is empty, on every address of this host. Port 0 lets the system choose a
   // free one: GetListenPort tells which. Binding to one address is an addition of this toolkit.
   int Listen(const RWCString& thePort, int theBacklog, const RWCString& theBindAddress = RWCString());
   int Listen(int thePort, int theBacklog, const RWCString& theBindAddress = RWCString());
   int GetListenPort() const; // an addition; 0 when not listening

   // Waits theTimeout seconds for a connection (0: without limit; negative: takes one that is there already) and holds
   // it until it is closed or unmanaged; only then the next can be accepted. TN_TIMED_OUT when none came. After
   // TN_SYSTEM_CALL_FAILED with EMFILE or ENFILE the caller should pause: the connection still waits.
   int Accept(int theTimeout);

   // The number of bytes that can be received without waiting. Returns 0 when not connected (TN_NOT_CONNECTED).
   int BytesAvailable(unsigned int& theCount);

   // Each ends both directions and closes. Close does both.
   void Close();
   void CloseListenSocket();
   void CloseConnectionSocket();

   // Adopt a handle that is connected or listening (this object closes it), closing one that is held; and give a handle
   // away without closing it. kNoHandle when there is none. They let one object accept and another serve.
   void ManageConnection(Handle theHandle);
   Handle UnmanageConnection();
   void ManageListenSocket(Handle theHandle);
   Handle UnmanageListenSocket();

   // Additions: transfers of several blocks in one system call. SendBlocks takes at most 64 blocks and returns 1 when
   // all are sent or -1 like SendBinary; theBytesSent says how far it got. It does not cut them into pieces: a send
   // never waits, so that the kernel takes what it has room for and no more. theLimit is the longest it waits for room
   // in all, in milliseconds (TN_TRANSPORT_TIMED_OUT); negative: no limit. ReadBlocks is ReadBinary into two blocks, of
   // which the second may be empty.
   int SendBlocks(const TNPlatform::ConstBlock* theBlocks, unsigned int theBlockCount, std::size_t& theBytesSent,
                  INT64 theLimit = -1);
   int ReadBlocks(const TNPlatform::MutableBlock (&theBlocks)[2]);

   int Connected() const { return itsConnectionIsOpen; }
   int InputConnected() const { return itsInputIsConnected; }
   int OutputConnected() const { return itsOutputIsConnected; }
   int Listened() const { return itsIsListened; }

   TNResultCode GetResultCode() const { return itsResultCode; }
   void SetResultCode(TNResultCode theCode) { itsResultCode = theCode; }
   int GetSystemErrorCode() const { return itsSystemErrorCode; }
   int GetLastError() const { return itsSystemErrorCode; }
   int GetLinkError() const { return itsSystemErrorCode; }

   // The name is looked up at the first call on a connection and kept, found or not; it is empty while reverse look-up
   // is switched off. That call may take long (5 attempts, 3 seconds between them).
   RWCString GetPeerName();
   RWCString GetPeerIPAddress() const; // dotted decimal; empty when there never was a peer
   RWCString GetPeerPort() const;      // decimal

   // Seconds. The time-out is the time that one read may wait (0: no limit; negative: it fails at once) and caps one
   // wait of a send. A negative poll interval counts as 0.
   void SetTimeout(int theSeconds) { itsTimeout = theSeconds; }
   int GetTimeout() const { return itsTimeout; }
   void SetAbortPollInterval(int theSeconds) { itsAbortPollInterval = theSeconds; }
   int GetAbortPollInterval() const { return itsAbortPollInterval; }

   // Additions. A connect gives up after so many seconds as if the network had (TN_CONNECTION_REFUSED with ETIMEDOUT);
   // 0 leaves it to the network. With a positive number of poll milliseconds no slice is longer than that, so that an
   // abort request acts sooner than the seconds of the poll interval allow; what time-outs there are stays the same.
   void SetConnectTimeout(int theSeconds) { itsConnectTimeout = theSeconds; }
   int GetConnectTimeout() const { return itsConnectTimeout; }
   void SetAbortPollMilliseconds(int theMilliseconds) { itsAbortPollMilliseconds = theMilliseconds; }
   int GetAbortPollMilliseconds() const { return itsAbortPollMilliseconds; }

   // Requests to end what the socket waits for. A flag stays set until it is cleared. From any thread.
   void SetAbortRequestedFlag(int theFlag) { itsAbortRequestedFlag.store(theFlag, std::memory_order_relaxed); }
   static void SetGlobalAbortRequestedFlag(int theFlag);
   static int GetGlobalAbortRequestedFlag();
   int GetAbortRequestedFlag() const; // of this socket, of all, or the shared one

   // An addition: a flag of the host's, which is looked at, too, and may outlive the socket. For a host that ends waits
   // from another thread and does not know when an association is done with its socket. Null takes it away.
   void SetSharedAbortFlag(std::shared_ptr<const std::atomic<int>> theFlag) { itsSharedAbortFlag = std::move(theFlag); }

   // In bytes, for connections made from now on; after one was made, what the system granted.
   void SetTCPSendBufferSize(int theSize) { itsTCPSendBufferSize = theSize; }
   int GetTCPSendBufferSize() const { return itsTCPSendBufferSize; }
   void SetTCPReceiveBufferSize(int theSize) { itsTCPReceiveBufferSize = theSize; }
   int GetTCPReceiveBufferSize() const { return itsTCPReceiveBufferSize; }

   // What sockets are made with. Set at start-up, before other threads make sockets.
   static void SetDefaultTimeout(int theSeconds) { itsDefaultTimeout = theSeconds; }
   static int GetDefaultTimeout() { return itsDefaultTimeout; }
   static void SetDefaultAbortPollInterval(int theSeconds) { itsDefaultAbortPollInterval = theSeconds; }
   static int GetDefaultAbortPollInterval() { return itsDefaultAbortPollInterval; }
   static void SetDefaultTCPSendBufferSize(int theSize) { itsDefaultTCPSendBufferSize = theSize; }
   static int GetDefaultTCPSendBufferSize() { return itsDefaultTCPSendBufferSize; }
   static void SetDefaultTCPReceiveBufferSize(int theSize) { itsDefaultTCPReceiveBufferSize = theSize; }
   static int GetDefaultTCPReceiveBufferSize() { return itsDefaultTCPReceiveBufferSize; }
   static void SetEnableReverseDNSLookup(int theFlag) { itsEnableReverseDNSLookup = theFlag; }
   static int GetEnableReverseDNSLookup() { return itsEnableReverseDNSLookup; }
   static void SetDefaultConnectTimeout(int theSeconds) { itsDefaultConnectTimeout = theSeconds; }
   static int GetDefaultConnectTimeout() { return itsDefaultConnectTimeout; }
   static void SetDefaultAbortPollMilliseconds(int theMilliseconds)
   {
      itsDefaultAbortPollMilliseconds = theMilliseconds;
   }
   static int GetDefaultAbortPollMilliseconds() { return itsDefaultAbortPollMilliseconds; }

   // Whether theHost is a dotted address, which needs no resolver.
   static int IsIPAddress(const RWCString& theHost);
   // In network byte order. 0 with TN_HOST_ADDRESS_NOT_FOUND or TN_DNS_ERROR when the name has no address.
   UINT32 GetNetworkOrderIPAddrByName(const RWCString& theHost);
   // A decimal port, 0 to 65535, or the name of a service of theProtocol ("tcp" or "udp"). Returns 0 when it is
   // neither.
   static int GetNetworkOrderPortByName(const RWCString& thePort, const char* theProtocol, UINT16& theNetworkOrderPort);

   // Datagrams: a UDP socket bound to a port of this host, one whose default destination is a port of another host, and
   // one that was made elsewhere. Sending and reading are as for connections, a datagram at a time. They return 0 on
   // failure. The upper layer uses none of them.
   int BindUDPServer(const RWCString& thePort);
   int BindUDPClient(const RWCString& theHost, const RWCString& thePort);
   void ManageUDPConnection(Handle theHandle);

private:
   int Failed(TNResultCode theCode, int theSystemErrorCode); // returns 0
   int FailedWait(SocketRules::WaitResult theResult, TNResultCode theTimeOutCode);
   int FailedTransfer(TNResultCode theCode, int theSystemErrorCode); // returns -1
   int Succeeded();                                                  // returns 1

   bool ResolvePeer(const RWCString& theHost, const RWCString& thePort, const char* theProtocol, const char* theCaller,
                    TNPlatform::IPv4Address& thePeer);
   bool ResolveListenAddress(const RWCString& thePort, const RWCString& theBindAddress,
                             TNPlatform::IPv4Address& theAddress);
   Handle NewSocket(TNPlatform::SocketKind theKind, const char* theCaller, const char* theFailureText);
   bool ApplyBufferSizes(Handle theHandle, const char* theCaller);
   void ReadBackBufferSizes(Handle theHandle, const char* theCaller);
   void AdoptConnection(Handle theHandle, const TNPlatform::IPv4Address& thePeer);
   bool Connect(const TNPlatform::IPv4Address& thePeer);
   Handle AcceptWithin(int theTimeout, TNPlatform::IPv4Address& thePeer);

   SocketRules::SlicedWait TransferWait() const;
   SocketRules::WaitResult Wait(SocketRules::SlicedWait& theWait, Handle theHandle, TNPlatform::WaitFor theEvent);
   int Receive(const TNPlatform::MutableBlock (&theBlocks)[2]);
   int Received(const TNPlatform::MutableBlock (&theBlocks)[2], int theCount);
   bool CanSend(const char* theFailureText);
   std::ptrdiff_t SendSome(const TNPlatform::ConstBlock* theBlocks, std::size_t theBlockCount,
                           SocketRules::SlicedWait& theWait);
   void LookUpPeerName();

   int itsSystemErrorCode = 0;
   TNResultCode itsResultCode = TN_NO_ERROR;
   TNPlatform::IPv4Address itsPeerAddress;
   Handle itsConnectionSocket = kNoHandle;
   Handle itsListenSocket = kNoHandle;
   bool itsListenSocketIsOpen = false;
   bool itsConnectionIsOpen = false;
   bool itsIsListened = false;
   bool itsInputIsConnected = false;
   bool itsOutputIsConnected = false;
   bool itsOwesAcknowledgement = false; // bytes were received since the last were sent
   int itsTimeout = itsDefaultTimeout;
   int itsAbortPollInterval = itsDefaultAbortPollInterval;
   std::atomic<int> itsAbortRequestedFlag{0};
   std::shared_ptr<const std::atomic<int>> itsSharedAbortFlag;
   int itsTCPSendBufferSize = itsDefaultTCPSendBufferSize;
   int itsTCPReceiveBufferSize = itsDefaultTCPReceiveBufferSize;
   int itsConnectTimeout = itsDefaultConnectTimeout;
   int itsAbortPollMilliseconds = itsDefaultAbortPollMilliseconds;
   RWCString itsPeerName;
   bool itsPeerNameIsKnown = false; // looked up, with or without success

   static int itsDefaultTimeout;
   static int itsDefaultAbortPollInterval;
   static int itsDefaultTCPSendBufferSize;
   static int itsDefaultTCPReceiveBufferSize;
   static int itsEnableReverseDNSLookup;
   static std::atomic<int> itsGlobalAbortRequestedFlag;
   static int itsDefaultConnectTimeout;
   static int itsDefaultAbortPollMilliseconds;
};
