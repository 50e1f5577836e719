// Fills a command set (PS3.7 6.3.1): elements by their value representation, and those that all requests and all
// responses have. Types are set here and not looked up, because a host may have loaded no dictionary. Not part of the
// library's interface.
#pragma once

#include "talvenor/dataset/MVRFactory.h"
#include "talvenor/foundation/BasicTypes.h"

class AETitle;
class DICOMCommandObject;
class MAttributeTag;
class UID;
struct DIMSEMessage;

class CommandSetBuilder
{
public:
   // theCommand is borrowed, emptied and made little endian.
   explicit CommandSetBuilder(DICOMCommandObject& theCommand);

   // Return the Message ID that the request has taken. DIMSE-N names the SOP class in an element of the service.
   UINT16 PushRequest(const DIMSEMessage& theMessage, const UID& theSOPClass);
   UINT16 PushRequest(UINT16 theField, UINT16 theSOPClassElement, const UID& theSOPClass, UINT16 theDataSetType,
                      bool theHasPriority);
   void PushResponse(UINT16 theField, const UID& theSOPClass, const DICOMCommandObject& theRequest,
                     UINT16 theDataSetType, UINT16 theStatus);

   // What explains a failure, where there is something to say.
   void PushExplanation(const RWCString& theErrorComment, const RWTValOrderedVector<MAttributeTag>& theOffending);

   void PushAE(UINT16 theElement, const AETitle& theTitle);
   void PushAT(UINT16 theElement, RWTValOrderedVector<MAttributeTag> theTags);
   void PushLO(UINT16 theElement, const RWCString& theText);
   void PushUI(UINT16 theElement, const UID& theUID);
   void PushUS(UINT16 theElement, UINT16 theValue);

private:
   void Push(UINT16 theType, VR* theVR);

   DICOMCommandObject& itsCommand;
   MVRFactory itsFactory;
};
