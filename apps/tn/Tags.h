// Elements of datasets by tag in one number, group in the high half, as the tables of tn have them.
#pragma once

#include "talvenor/dataset/DICOMObject.h"
#include "talvenor/foundation/BasicTypes.h"

inline UINT16 GroupOf(UINT32 theTag)
{
   return static_cast<UINT16>(theTag >> 16);
}

inline UINT16 ElementOf(UINT32 theTag)
{
   return static_cast<UINT16>(theTag);
}

// Lent; null when there is none.
inline const VR* FindVR(const DICOMObject& theObject, UINT32 theTag)
{
   return theObject.GetVR(GroupOf(theTag), ElementOf(theTag));
}

// Without trailing blanks; empty when there is none.
inline RWCString TextOf(const DICOMObject& theObject, UINT32 theTag)
{
   RWCString aText;
   theObject.GetString(GroupOf(theTag), ElementOf(theTag), aText);
   return aText;
}
