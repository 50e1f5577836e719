#include "talvenor/platform/Resolver.h"

#include <bit>
#include <cerrno>
#include <cstring>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace TNPlatform
{

namespace
{

ResolverOutcome OutcomeOf(int theError)
{
   switch (theError)
   {
   case 0: return ResolverOutcome::kFound;
   case EAI_NONAME: return ResolverOutcome::kHostNotFound;
   case EAI_AGAIN: return ResolverOutcome::kTryAgain;
   case EAI_FAIL: return ResolverOutcome::kUnrecoverable;
   case EAI_FAMILY: return ResolverOutcome::kFamilyUnsupported;
   case EAI_SYSTEM: return ResolverOutcome::kSystemError;
#ifdef EAI_NODATA
   case EAI_NODATA: return ResolverOutcome::kNoData;
#endif
#ifdef EAI_ADDRFAMILY
   case EAI_ADDRFAMILY: return ResolverOutcome::kNoData; // the host has addresses, of other families only
#endif
   default: return ResolverOutcome::kUnknown;
   }
}

// The first IPv4 address and port that the resolver has for a host and a service, either of which may be null.
ResolverOutcome Resolve(const char* theHost, const char* theService, int theKind, sockaddr_in& theAddress)
{
   addrinfo aWish = {};
   aWish.ai_family = AF_INET;
   aWish.ai_socktype = theKind;
   addrinfo* aFirst = nullptr;
   const int anError = ::getaddrinfo(theHost, theService, &aWish, &aFirst);
   if (anError != 0)
   {
      return OutcomeOf(anError);
   }
   const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> anOwner(aFirst, &::freeaddrinfo);
   std::memcpy(&theAddress, aFirst->ai_addr, sizeof theAddress);
   return ResolverOutcome::kFound;
}

} // namespace

ResolverOutcome AddressOfHost(const std::string& theName, std::uint32_t& theAddress)
{
   sockaddr_in anAddress;
   const ResolverOutcome anOutcome = Resolve(theName.c_str(), nullptr, SOCK_STREAM, anAddress);
   if (anOutcome == ResolverOutcome::kFound)
   {
      theAddress = anAddress.sin_addr.s_addr;
   }
   return anOutcome;
}

ResolverOutcome HostOfAddress(const IPv4Address& theAddress, std::string& theName)
{
   const auto anAddress = std::bit_cast<sockaddr_in>(theAddress);
   char aName[NI_MAXHOST] = "";
   const int anError = ::getnameinfo(reinterpret_cast<const sockaddr*>(&anAddress), sizeof anAddress, aName,
                                     sizeof aName, nullptr, 0, NI_NAMEREQD);
   if (anError == 0)
   {
      theName = aName;
   }
   return OutcomeOf(anError);
}

bool PortOfService(const std::string& theName, const char* theProtocol, std::uint16_t& thePort)
{
   sockaddr_in anAddress;
   const int aKind = std::strcmp(theProtocol, "udp") == 0 ? SOCK_DGRAM : SOCK_STREAM;
   if (Resolve(nullptr, theName.c_str(), aKind, anAddress) != ResolverOutcome::kFound)
   {
      return false;
   }
   thePort = anAddress.sin_port;
   return true;
}

} // namespace TNPlatform
