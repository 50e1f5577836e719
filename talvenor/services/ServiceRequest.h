// What the providers of the services have in common. Not part of the library's interface.
#pragma once

#include "talvenor/association/PDU_Service.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dictionary/UID.h"
#include "talvenor/dimse/CommandElement.h"

// As the result of an operation.
inline int Fail(PDU_Service& theService, TNResultCode theCode)
{
   theService.SetResultCode(theCode);
   return 0;
}

// Whether theCommand is for the SOP class of theProvider (TN_SOP_CLASS_MISMATCH), which is set.
template <class Provider>
bool IsForProvider(const Provider& theProvider, const DICOMCommandObject& theCommand, PDU_Service& theService,
                   UID& theSOPClass)
{
   RWCString aText;
   theCommand.GetString(0, CommandElement::AffectedSOPClassUID, aText);
   theProvider.GetUID(theSOPClass);
   return theSOPClass == aText || Fail(theService, TN_SOP_CLASS_MISMATCH);
}
