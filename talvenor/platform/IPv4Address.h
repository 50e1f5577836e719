// The address of one end of an IPv4 connection, as the operating system lays it out (sockaddr_in).
#pragma once

#include <cstdint>
#include <string>

namespace TNPlatform
{

struct IPv4Address
{
   std::uint16_t itsFamily = 0;  // 0: no address
   std::uint16_t itsPort = 0;    // in network byte order
   std::uint32_t itsAddress = 0; // in network byte order; 0: any address of this host
   unsigned char itsPadding[8] = {};

   bool IsSet() const { return itsFamily != 0; }
};
static_assert(sizeof(IPv4Address) == 16);

// Port and address in network byte order.
IPv4Address MakeIPv4Address(std::uint32_t theAddress, std::uint16_t thePort);

std::uint16_t HostOrderPort(const IPv4Address& theAddress);
std::uint16_t NetworkOrderPort(std::uint16_t thePort);

// "192.0.2.1". Parsing takes exactly that form: four decimal numbers of 0 to 255 without leading zeros.
std::string DottedDecimal(const IPv4Address& theAddress);
bool ParseDottedDecimal(const char* theText, std::uint32_t& theAddress);

} // namespace TNPlatform
