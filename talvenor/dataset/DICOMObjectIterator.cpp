#include "talvenor/dataset/DICOMObjectIterator.h"

#include "talvenor/dataset/DICOMObjectLock.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/VRType.h"

DICOMObjectIterator::DICOMObjectIterator(const DICOMObject& theObject, GroupLengthEncodingType theType)
    : itsObject(theObject), itsType(theType), itsCursor(theObject.GetNode())
{}

DICOMObjectIterator::~DICOMObjectIterator() = default;

VR* DICOMObjectIterator::First()
{
   const DICOMObjectLock aGuard(itsObject);
   itsGroupLengths.clear();
   itsCurrentGroup = -1;
   itsCursor.Rewind();
   return Next();
}

VR* DICOMObjectIterator::Next()
{
   const DICOMObjectLock aGuard(itsObject);
   VR* aVR = itsCursor.Next();
   if (aVR == nullptr)
   {
      return nullptr;
   }
   const UINT16 aGroup = static_cast<UINT16>(itsCursor.GetTag() >> 16);
   const bool isNewGroup = aGroup != itsCurrentGroup;
   itsCurrentGroup = aGroup;
   if (!isNewGroup || !HasGroupLength(itsType, aGroup))
   {
      return aVR;
   }
   // The cursor steps back instead of keeping the element for the next call, which may find it removed.
   itsCursor.Seek(itsCursor.GetTag());
   return MakeGroupLength(aGroup);
}

void DICOMObjectIterator::SetGroupLengthEncoding(GroupLengthEncodingType theType)
{
   const DICOMObjectLock aGuard(itsObject);
   itsType = theType;
}

// Typed here and not by a dictionary, which may be empty: an untyped element has no explicit header.
VR* DICOMObjectIterator::MakeGroupLength(UINT16 theGroup)
{
   const TNEndian::EndianType anEndian = itsObject.GetEndian();
   auto aVR = std::make_unique<VR>(theGroup, UINT16(0), UINT32(sizeof(UINT32)), 1, anEndian);
   aVR->SetTypeCode(VRCode::UL);
   TNEndian::Store(aVR->GetData(), itsObject.GetGroupLength(theGroup, itsType), anEndian);
   itsGroupLengths.push_back(std::move(aVR));
   return itsGroupLengths.back().get();
}
