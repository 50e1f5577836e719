#include "talvenor/foundation/TNXInitializer.h"

#include "talvenor/ul/PDUInputStream.h"
#include "talvenor/ul/PDUOutputStream.h"
#include "talvenor/ul/Socket.h"

void TNXInitializer::SetDefaultMaxPDUReceiveLength(unsigned int theLength)
{
   PDUInputStream::SetDefaultMaxPDUReceiveLength(theLength);
}

void TNXInitializer::SetDefaultMaxPDUSendLength(unsigned int theLength)
{
   PDUOutputStream::SetDefaultMaxPDUSendLength(theLength);
}

void TNXInitializer::SetDefaultSocketTimeout(int theSeconds)
{
   Socket::SetDefaultTimeout(theSeconds);
}

void TNXInitializer::SetDefaultSocketAbortPollInterval(int theSeconds)
{
   Socket::SetDefaultAbortPollInterval(theSeconds);
}

void TNXInitializer::SetDefaultTCPReceiveBufferSize(int theSize)
{
   Socket::SetDefaultTCPReceiveBufferSize(theSize);
}

void TNXInitializer::SetDefaultTCPSendBufferSize(int theSize)
{
   Socket::SetDefaultTCPSendBufferSize(theSize);
}

void TNXInitializer::SetEnableReverseDNSLookup(int theFlag)
{
   Socket::SetEnableReverseDNSLookup(theFlag);
}
