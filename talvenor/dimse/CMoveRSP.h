// The C-MOVE response (PS3.7 9.3.4.2): how far the sub-operations are, and a last one. See DIMSE_C_Services.h for what
// the messages have in common.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

class DICOMCommandObject;
class DICOMDataObject;
class MAttributeTag;
class PDU_Service;
class UID;

class TALVENOR_API CMoveRSP
{
public:
   virtual ~CMoveRSP();

   // Sets the SOP class of the service; 0 when it has no fixed one.
   virtual int GetUID(UID& theUID) const = 0;

   // Answers theRequest on the current context, in the name of the SOP class that the request names, with an identifier
   // (the list of failed instances) or without.
   //
   // The numbers of sub-operations: a pending response (0xFF00 alone) carries all four, any other one never those that
   // remain, and the other three unless all of them are 0. The comment and the tags of the elements that caused a
   // failure are left out when they are empty. TN_SOP_CLASS_UNSUPPORTED when the service has no SOP class.
   int Write(PDU_Service& theService, const DICOMCommandObject& theRequest, UINT16 theStatus, UINT16 theRemaining,
             UINT16 theCompleted, UINT16 theFailed, UINT16 theWarning, const RWCString& theErrorComment,
             const RWTValOrderedVector<MAttributeTag>& theOffending, DICOMDataObject& theIdentifier) const;
   int Write(PDU_Service& theService, const DICOMCommandObject& theRequest, UINT16 theStatus, UINT16 theRemaining,
             UINT16 theCompleted, UINT16 theFailed, UINT16 theWarning, const RWCString& theErrorComment,
             const RWTValOrderedVector<MAttributeTag>& theOffending) const;

   // Succeeds without touching theIdentifier when theCommand announces no data set, and replaces its contents by the
   // data set otherwise. The status is left to the caller. TN_COMMAND_NOT_SUPPORTED when theCommand is another message.
   int Read(const DICOMCommandObject& theCommand, PDU_Service& theService, DICOMDataObject& theIdentifier) const;

protected:
   // Sends the command set alone and ends its PDU. theDataSetType is 0x0102 when an identifier will follow, 0x0101
   // otherwise. theSOPClass is set to what the response names.
   int WriteCommand(PDU_Service& theService, const DICOMCommandObject& theRequest, UINT16 theStatus,
                    UINT16 theRemaining, UINT16 theCompleted, UINT16 theFailed, UINT16 theWarning,
                    const RWCString& theErrorComment, const RWTValOrderedVector<MAttributeTag>& theOffending,
                    UINT16 theDataSetType, UID& theSOPClass) const;

private:
   // The numbers of sub-operations, as they are sent.
   struct Counts
   {
      UINT16 itsRemaining;
      UINT16 itsCompleted;
      UINT16 itsFailed;
      UINT16 itsWarning;
   };

   // theIdentifier, which may be null, is only shown in the trace: the two are one entry.
   int SendCommand(PDU_Service& theService, const DICOMCommandObject& theRequest, UINT16 theStatus,
                   const Counts& theCounts, const RWCString& theErrorComment,
                   const RWTValOrderedVector<MAttributeTag>& theOffending, UINT16 theDataSetType, UID& theSOPClass,
                   const DICOMDataObject* theIdentifier) const;
};
