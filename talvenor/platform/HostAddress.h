// The network address of this host, taken from its interfaces. No name server is asked, so the call never blocks.
#pragma once

#include <string>

namespace TNPlatform
{

// The first IPv4 address that is not a loopback, as "192.0.2.1"; empty if there is none.
std::string FirstIPv4Address();

} // namespace TNPlatform
