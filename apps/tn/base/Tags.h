// Elements of datasets by tag in one number, group in the high half, as the tables of tn have them.
#pragma once

#include <cstdio>
#include <string>

#include "talvenor/dataset/DICOMObject.h"
#include "talvenor/foundation/BasicTypes.h"

// Of command sets (PS3.7 E.1).
namespace CommandTag
{
inline constexpr UINT32 kAffectedSOPClassUID = 0x00000002;
inline constexpr UINT32 kRequestedSOPClassUID = 0x00000003;
inline constexpr UINT32 kCommandField = 0x00000100;
inline constexpr UINT32 kMessageID = 0x00000110;
inline constexpr UINT32 kMessageIDBeingRespondedTo = 0x00000120;
inline constexpr UINT32 kStatus = 0x00000900;
inline constexpr UINT32 kErrorComment = 0x00000902;
inline constexpr UINT32 kAffectedSOPInstanceUID = 0x00001000;
} // namespace CommandTag

inline UINT16 GroupOf(UINT32 theTag)
{
   return static_cast<UINT16>(theTag >> 16);
}

inline UINT16 ElementOf(UINT32 theTag)
{
   return static_cast<UINT16>(theTag);
}

// "(0010,0020)"
inline std::string TagText(UINT32 theTag)
{
   char aText[16];
   std::snprintf(aText, sizeof aText, "(%04x,%04x)", unsigned{GroupOf(theTag)}, unsigned{ElementOf(theTag)});
   return aText;
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
