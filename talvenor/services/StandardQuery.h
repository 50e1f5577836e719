// The query part of the Query/Retrieve service classes and of the Modality Worklist (PS3.4 C.4.1, K.4.1), base of the
// classes for the information models (QueryModels.h). C-FIND in both roles, on an association that is established
// before.
//
// As SCU a host derives and takes the matches in CFindProgressCallback:
//
//    if (aQuery.Write(aService, anIdentifier)) ...
//
// As SCP a host derives and says in DoQuery what matches:
//
//    if (aService.ReadCommand(aCommand)) aQuery.Read(aService, aCommand, aStatus, aComment, aMatchCount);
//
// Write and Read return non-zero for success and 0 for failure, with the cause in PDU_Service::GetResultCode; none ends
// the association of itself. A cancel of the peer (PS3.7 9.3.2.3) is not looked for while matches are sent: it turns up
// at the host's next ReadCommand, belongs to no service then and can be ignored. No data: an object serves any number
// of operations one after the other, and several at a time if the host's hooks do.
#pragma once

#include <cstddef>

#include "talvenor/dimse/CFindRQ.h"
#include "talvenor/dimse/CFindRSP.h"
#include "talvenor/foundation/BasicTypes.h"
#include "talvenor/services/InformationModel.h"
#include "talvenor/services/QueryProgress.h"

struct QueryAnswer;

class TALVENOR_API StandardQuery : public CFindRQ, public CFindRSP
{
public:
   StandardQuery() = default;
   ~StandardQuery() override;

   // The SOP class, from uGetUID.
   int GetUID(UID& theUID) const override;

   // The host's hook as SCP: appends a new dataset for each match to theMatches, which owns it then, and returns
   // non-zero. theModel is an InformationModel; thePeerTitle comes without padding.
   //
   // With non-zero and theStatus 0xFF01 the peer is told, at each match, that optional keys were not supported; with
   // any status but 0 the comment and the tags go with the matches. 0 is answered with theStatus, theErrorComment and
   // the tags of the elements at fault, and with 0xC001 where the status is 0 or none of a failure; matches are
   // destroyed then. An exception is answered as 0 without anything set.
   virtual int DoQuery(DICOMDataObject& theIdentifier, int theModel, const RWCString& thePeerTitle,
                       RWTValOrderedVector<DICOMDataObject*>& theMatches, UINT16& theStatus, RWCString& theErrorComment,
                       RWTValOrderedVector<MAttributeTag>& theOffending) = 0;

   // The host's callback as SCU, for each response and at the stages of QueryProgress. theIdentifier is the match; a
   // callback may take it apart, both objects are emptied before the next response. Matches can be stopped: by a
   // C-CANCEL sent from here, after which the responses go on until the final one, or by an abort.
   virtual void CFindProgressCallback(PDU_Service& theService, DICOMCommandObject& theResponse,
                                      DICOMDataObject& theIdentifier, int theProgress) = 0;

   // Sets the SOP class and returns 1.
   virtual int uGetUID(UID& theUID) const = 0;

   // Asks, and hands every response to the callback until one is final. 1 when that tells success. After 0 more
   // responses may be on their way, unless the callback was told QueryFailed: end the association.
   int Write(PDU_Service& theService, DICOMDataObject& theIdentifier);

   // Takes a command that ReadCommand has read: has DoQuery look for what it asks and sends a response for each match,
   // and a final one. The last three tell what was answered. The result is 0 also when the answer is an error of ours
   // (a null match, 0xC002). Without any answer: TN_SOP_CLASS_MISMATCH for another SOP class, TN_INTERNAL_ERROR with a
   // line in the error log for a SOP class without a model, and what CFindRQ::Read leaves for a request that cannot be
   // read.
   int Read(PDU_Service& theService, const DICOMCommandObject& theCommand, UINT16& theStatus,
            RWCString& theErrorComment, unsigned int& theMatchCount);

private:
   StandardQuery(const StandardQuery&) = delete;
   StandardQuery& operator=(const StandardQuery&) = delete;

   int SendMatches(PDU_Service& theService, const DICOMCommandObject& theCommand, QueryAnswer& theAnswer);
   int AnswerNullMatch(PDU_Service& theService, const DICOMCommandObject& theCommand, QueryAnswer& theAnswer,
                       std::size_t theIndex);
};
