// Names of hosts and services, looked up by the operating system: hosts file, name servers, services file. The calls
// block for as long as the system's configuration says.
#pragma once

#include <cstdint>
#include <string>

#include "talvenor/platform/IPv4Address.h"

namespace TNPlatform
{

enum class ResolverOutcome
{
   kFound,
   kHostNotFound,
   kTryAgain, // no answer for now
   kNoData,   // the name is there, without a record of the kind asked for
   kUnrecoverable,
   kFamilyUnsupported,
   kSystemError, // errno tells more
   kUnknown
};

// The first IPv4 address, in network byte order.
ResolverOutcome AddressOfHost(const std::string& theName, std::uint32_t& theAddress);
ResolverOutcome HostOfAddress(const IPv4Address& theAddress, std::string& theName);

// The port of a service in network byte order. False when the name is unknown. theProtocol is "tcp" or "udp".
bool PortOfService(const std::string& theName, const char* theProtocol, std::uint16_t& thePort);

} // namespace TNPlatform
