// Names and addresses of hosts and services, as Socket asks for them.
#include <algorithm>
#include <cerrno>
#include <charconv>

#include "talvenor/foundation/OneLine.h"
#include "talvenor/foundation/SystemClock.h"
#include "talvenor/platform/Resolver.h"
#include "talvenor/ul/Socket.h"
#include "talvenor/ul/SocketTrace.h"

namespace
{

using TNPlatform::ResolverOutcome;

constexpr int kReverseLookUps = 5;
constexpr UINT64 kPauseMilliseconds = 3000; // between them

// Texts for the outcomes of the resolver. They are older than this platform, whose resolver knows neither the first nor
// some others, and stay as log readers know them.
struct ResolverText
{
   ResolverOutcome itsOutcome;
   int itsSystemError; // 0: any
   const char* itsText;
};
constexpr ResolverText kResolverTexts[] = {
    {ResolverOutcome::kSystemError, ENOSYS, "Winsock not initialized"},
    {ResolverOutcome::kSystemError, EINTR, "Call canceled"},
    {ResolverOutcome::kSystemError, EFAULT, "Invalid pointer to hostname"},
    {ResolverOutcome::kSystemError, EINPROGRESS, "Winsock operation already in progress"},
    {ResolverOutcome::kSystemError, ENETDOWN, "Network is down"},
    {ResolverOutcome::kFamilyUnsupported, 0, "Address family not supported"},
    {ResolverOutcome::kHostNotFound, 0, "Authoritative \"host not found\""},
    {ResolverOutcome::kTryAgain, 0, "Non-authoratative \"host not found\""},
    {ResolverOutcome::kUnrecoverable, 0, "Non-recoverable error"},
    {ResolverOutcome::kNoData, 0, "Valid address, no data record of requested type (no name record)"},
};

RWCString TextOf(ResolverOutcome theOutcome, int theSystemError)
{
   const auto* aRow =
       std::find_if(std::begin(kResolverTexts), std::end(kResolverTexts), [&](const ResolverText& theRow) {
          return theRow.itsOutcome == theOutcome &&
                 (theRow.itsSystemError == 0 || theRow.itsSystemError == theSystemError);
       });
   return aRow != std::end(kResolverTexts) ? aRow->itsText : "Unknown error code";
}

TNResultCode CodeOf(ResolverOutcome theOutcome, TNResultCode theNotFoundCode)
{
   return theOutcome == ResolverOutcome::kHostNotFound || theOutcome == ResolverOutcome::kTryAgain ? theNotFoundCode
                                                                                                   : TN_DNS_ERROR;
}

// Whether the same question may have an answer in a moment.
bool IsTransient(ResolverOutcome theOutcome, int theSystemError)
{
   return theOutcome == ResolverOutcome::kTryAgain || (theOutcome == ResolverOutcome::kSystemError &&
                                                       (theSystemError == EINPROGRESS || theSystemError == ENETDOWN));
}

} // namespace

int Socket::IsIPAddress(const RWCString& theHost)
{
   std::uint32_t anAddress = 0;
   return TNPlatform::ParseDottedDecimal(theHost.c_str(), anAddress);
}

UINT32 Socket::GetNetworkOrderIPAddrByName(const RWCString& theHost)
{
   std::uint32_t anAddress = 0;
   if (TNPlatform::ParseDottedDecimal(theHost.c_str(), anAddress))
   {
      return anAddress;
   }
   // The resolver takes an empty name for this host, and a number for an address: neither was meant by whoever left a
   // field empty or mistyped a dotted address. No name has blanks or control characters in it.
   const bool isName =
       theHost.find_first_not_of("0123456789.") != RWCString::npos &&
       std::none_of(theHost.begin(), theHost.end(), [](unsigned char theByte) { return theByte <= ' '; });
   const ResolverOutcome anOutcome =
       isName ? TNPlatform::AddressOfHost(theHost, anAddress) : ResolverOutcome::kHostNotFound;
   if (anOutcome == ResolverOutcome::kFound)
   {
      return anAddress;
   }
   const int aSystemError = anOutcome == ResolverOutcome::kSystemError ? errno : 0;
   Failed(CodeOf(anOutcome, TN_HOST_ADDRESS_NOT_FOUND), aSystemError);
   SocketTrace::Line(
       TNTrace::TNTraceSocketErrors, "Socket::GetNetworkOrderIPAddrByName(): \"", OnOneLine(theHost),
       "\": ", anOutcome == ResolverOutcome::kNoData ? "Found name but no address" : TextOf(anOutcome, aSystemError));
   return 0;
}

int Socket::GetNetworkOrderPortByName(const RWCString& thePort, const char* theProtocol, UINT16& theNetworkOrderPort)
{
   const char* const anEnd = thePort.data() + thePort.size();
   UINT16 aPort = 0;
   const auto aResult = std::from_chars(thePort.data(), anEnd, aPort);
   if (aResult.ec == std::errc() && aResult.ptr == anEnd)
   {
      theNetworkOrderPort = TNPlatform::NetworkOrderPort(aPort);
      return 1;
   }
   // The resolver would take "99999" and " 104" for numbers.
   const bool isName = thePort.find_first_not_of("0123456789+- \t") != RWCString::npos;
   return isName && TNPlatform::PortOfService(thePort, theProtocol, theNetworkOrderPort);
}

RWCString Socket::GetPeerName()
{
   if (!itsEnableReverseDNSLookup)
   {
      return {};
   }
   if (!itsPeerNameIsKnown && itsPeerAddress.IsSet())
   {
      itsPeerNameIsKnown = true;
      LookUpPeerName();
   }
   return itsPeerName;
}

void Socket::LookUpPeerName()
{
   ResolverOutcome anOutcome = ResolverOutcome::kUnknown;
   int aSystemError = 0;
   for (int anAttempt = 1; anAttempt <= kReverseLookUps; ++anAttempt)
   {
      anOutcome = TNPlatform::HostOfAddress(itsPeerAddress, itsPeerName);
      aSystemError = anOutcome == ResolverOutcome::kSystemError ? errno : 0;
      if (anOutcome == ResolverOutcome::kFound)
      {
         return;
      }
      if (!IsTransient(anOutcome, aSystemError))
      {
         break;
      }
      if (anAttempt < kReverseLookUps)
      {
         SystemClock::Get().Sleep(kPauseMilliseconds);
      }
   }
   Failed(CodeOf(anOutcome, TN_HOST_NAME_NOT_FOUND), aSystemError);
   LogEntry anEntry(gTNErrorLog, LogStream::WarningSeverity);
   anEntry << "Socket::GetPeerName(): gethostbyaddr(" << GetPeerIPAddress()
           << ") unable to find the requested address: " << TextOf(anOutcome, aSystemError) << "\n";
}

RWCString Socket::GetPeerIPAddress() const
{
   return itsPeerAddress.IsSet() ? TNPlatform::DottedDecimal(itsPeerAddress) : RWCString();
}

RWCString Socket::GetPeerPort() const
{
   return itsPeerAddress.IsSet() ? std::to_string(TNPlatform::HostOrderPort(itsPeerAddress)) : RWCString();
}
