#include "talvenor/platform/HostAddress.h"

#include <arpa/inet.h>
#include <cstring>
#include <ifaddrs.h>
#include <memory>
#include <net/if.h>
#include <netinet/in.h>

namespace TNPlatform
{

namespace
{

bool IsUsable(const ifaddrs& theInterface)
{
   return theInterface.ifa_addr && theInterface.ifa_addr->sa_family == AF_INET &&
          (theInterface.ifa_flags & IFF_LOOPBACK) == 0;
}

std::string TextOf(const sockaddr& theAddress)
{
   sockaddr_in anAddress;
   std::memcpy(&anAddress, &theAddress, sizeof anAddress);
   char aText[INET_ADDRSTRLEN];
   return inet_ntop(AF_INET, &anAddress.sin_addr, aText, sizeof aText) ? aText : "";
}

} // namespace

std::string FirstIPv4Address()
{
   ifaddrs* aFirst = nullptr;
   if (getifaddrs(&aFirst) != 0)
   {
      return {};
   }
   const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> anOwner(aFirst, &freeifaddrs);
   for (const ifaddrs* anInterface = aFirst; anInterface; anInterface = anInterface->ifa_next)
   {
      if (IsUsable(*anInterface))
      {
         return TextOf(*anInterface->ifa_addr);
      }
   }
   return {};
}

} // namespace TNPlatform
