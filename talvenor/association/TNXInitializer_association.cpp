#include "talvenor/foundation/TNXInitializer.h"

#include "talvenor/association/PDU_Service.h"

void TNXInitializer::SetDefaultPDUARRTimer(int theSeconds)
{
   PDU_Service::SetDefaultARRTimer(theSeconds);
}

void TNXInitializer::SetEnableCompressedTransferSyntax(int theFlag)
{
   PDU_Service::SetEnableCompressedTransferSyntax(theFlag);
}
