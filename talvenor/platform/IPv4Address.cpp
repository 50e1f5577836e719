#include "talvenor/platform/IPv4Address.h"

#include <arpa/inet.h>
#include <netinet/in.h>

namespace TNPlatform
{

static_assert(sizeof(sockaddr_in) == sizeof(IPv4Address));

IPv4Address MakeIPv4Address(std::uint32_t theAddress, std::uint16_t thePort)
{
   IPv4Address anAddress;
   anAddress.itsFamily = AF_INET;
   anAddress.itsAddress = theAddress;
   anAddress.itsPort = thePort;
   return anAddress;
}

std::uint16_t HostOrderPort(const IPv4Address& theAddress)
{
   return ntohs(theAddress.itsPort);
}

std::uint16_t NetworkOrderPort(std::uint16_t thePort)
{
   return htons(thePort);
}

std::string DottedDecimal(const IPv4Address& theAddress)
{
   char aText[INET_ADDRSTRLEN];
   return inet_ntop(AF_INET, &theAddress.itsAddress, aText, sizeof aText) ? aText : "";
}

bool ParseDottedDecimal(const char* theText, std::uint32_t& theAddress)
{
   return inet_pton(AF_INET, theText, &theAddress) == 1;
}

} // namespace TNPlatform
