// The Verification service class (PS3.4 A): is the peer there, and does it answer? C-ECHO in both roles.
//
//    Verification aVerification;
//    if (aVerification.Write(aService))   // as SCU
//    ...
//    if (aService.ReadCommand(aCommand) && aVerification.Read(aService, aCommand))   // as SCP
//
// The association is established before, with a context for 1.2.840.10008.1.1. Operations return non-zero for success
// and 0 for failure, with the cause in PDU_Service::GetResultCode; none ends the association of itself. No data: any
// thread may use one object, each thread on an association of its own.
#pragma once

#include "talvenor/dimse/CEchoRQ.h"
#include "talvenor/dimse/CEchoRSP.h"

class TALVENOR_API Verification : public CEchoRQ, public CEchoRSP
{
public:
   int GetUID(UID& theUID) const override;

   // Sends a C-ECHO request and waits for a response; what status it has, and which message it answers, is not
   // examined. TN_COMMAND_NOT_SUPPORTED when another message comes.
   int Write(PDU_Service& theService) const;

   // An addition for callers who do examine it: the response, and the Message ID that it has to answer.
   int Write(PDU_Service& theService, DICOMCommandObject& theResponse, UINT16& theMessageID) const;

   // Takes a command that ReadCommand has read: answers a C-ECHO request with Success, accepts a C-ECHO response
   // without an answer. TN_NO_AFFECTED_SOP_CLASS when the command names no SOP class, TN_SOP_CLASS_MISMATCH for another
   // one, TN_COMMAND_NOT_SUPPORTED for another message; nothing is sent then.
   int Read(PDU_Service& theService, DICOMCommandObject& theCommand) const;
};
