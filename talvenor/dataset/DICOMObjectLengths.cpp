// The encoded lengths of DICOMObject: what the headers of PS3.5 7.1.2 and 7.1.3 add to the values. Sums are of 64 bits
// and saturate, because the lengths of elements in memory can add up to more than a 32-bit length holds.
#include "talvenor/dataset/DICOMObject.h"

#include <algorithm>

#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/DICOMNodeCursor.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/foundation/CriticalSectionWhileInScope.h"

namespace
{
// In bytes. Sequences and items are counted as encoders write them, with undefined length and delimiters (PS3.5 7.5).
constexpr UINT64 kShortHeader = 8;
constexpr UINT64 kLongHeader = 12; // explicit VR of the types with a 32-bit length
constexpr UINT64 kDelimiter = 8;
constexpr UINT64 kItem = 8 + kDelimiter;
constexpr UINT64 kGroupLengthElement = 12;

UINT64 SequenceLength(const SequenceVR& theSequence, bool theIsImplicit)
{
   UINT64 aSum = (theIsImplicit ? kShortHeader : kLongHeader) + kDelimiter;
   const SequenceVR::Items* anItems = theSequence.GetSequenceArray();
   if (anItems == nullptr)
   {
      return aSum;
   }
   const GroupLengthEncodingType aType = theIsImplicit ? ImplicitNoGroupLength : ExplicitNoGroupLength;
   for (const DICOMDataObject* anItem : *anItems)
   {
      aSum += kItem + (anItem != nullptr ? anItem->GetEncodedLength(aType) : 0);
   }
   return aSum;
}

UINT64 ElementLength(const VR& theVR, bool theIsImplicit)
{
   if (const SequenceVR* aSequence = theVR.GetAsSequenceVR())
   {
      return SequenceLength(*aSequence, theIsImplicit);
   }
   const bool hasLongHeader = !theIsImplicit && HasLongHeaderVRCode(theVR.GetTypeCode());
   // Encapsulated pixel data have no length of their own: what they come to is known to their encoder alone.
   const UINT64 aValue = theVR.GetLength() != VR::kUndefinedLength ? theVR.GetLength() : 0;
   return (hasLongHeader ? kLongHeader : kShortHeader) + aValue + (aValue & 1);
}

UINT32 Saturated(UINT64 theSum)
{
   return static_cast<UINT32>(std::min<UINT64>(theSum, 0xFFFFFFFF));
}
} // namespace

UINT32 DICOMObject::GetGroupLength(UINT16 theGroup, GroupLengthEncodingType theType) const
{
   CriticalSectionWhileInScope aGuard(itsLock);
   UINT64 aSum = 0;
   DICOMNodeCursor aCursor(itsNode);
   aCursor.Seek(TagOf(theGroup, 0));
   for (const VR* aVR = aCursor.Next(); aVR != nullptr && aVR->GetGroup() == theGroup; aVR = aCursor.Next())
   {
      aSum += ElementLength(*aVR, IsImplicit(theType));
   }
   return Saturated(aSum);
}

UINT32 DICOMObject::GetEncodedLength(GroupLengthEncodingType theType) const
{
   CriticalSectionWhileInScope aGuard(itsLock);
   UINT64 aSum = 0;
   int aGroup = -1;
   DICOMNodeCursor aCursor(itsNode);
   while (const VR* aVR = aCursor.Next())
   {
      if (aVR->GetGroup() != aGroup)
      {
         aGroup = aVR->GetGroup();
         aSum += HasGroupLength(theType, aVR->GetGroup()) ? kGroupLengthElement : 0;
      }
      aSum += ElementLength(*aVR, IsImplicit(theType));
   }
   return Saturated(aSum);
}
