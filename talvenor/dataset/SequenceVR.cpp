#include "talvenor/dataset/SequenceVR.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dictionary/VRType.h"

namespace
{

struct DestroyItems
{
   void operator()(SequenceVR::Items* theItems) const
   {
      std::for_each(theItems->rbegin(), theItems->rend(), [](DICOMDataObject* theItem) { delete theItem; });
      delete theItems;
   }
};
using OwnedItems = std::unique_ptr<SequenceVR::Items, DestroyItems>;

OwnedItems CopyItems(const SequenceVR::Items* theItems)
{
   if (theItems == nullptr)
   {
      return nullptr;
   }
   OwnedItems aCopy(new SequenceVR::Items);
   aCopy->reserve(theItems->size());
   for (const DICOMDataObject* anItem : *theItems)
   {
      aCopy->push_back(anItem != nullptr ? new DICOMDataObject(*anItem) : nullptr); // within what was reserved
   }
   return aCopy;
}

bool ItemsEqual(const DICOMDataObject* theOne, const DICOMDataObject* theOther)
{
   return theOne == nullptr || theOther == nullptr ? theOne == theOther : theOne->ValueEquals(*theOther) != 0;
}

} // namespace

SequenceVR::SequenceVR(TNEndian::EndianType theEndian, MemoryAllocater& theAllocator) : VR(theEndian, theAllocator)
{
   SetTypeCode(VRCode::SQ);
}

SequenceVR::SequenceVR(const MAttributeTag& theTag, TNEndian::EndianType theEndian, MemoryAllocater& theAllocator)
    : VR(theTag, theEndian, theAllocator)
{
   SetTypeCode(VRCode::SQ);
}

SequenceVR::SequenceVR(UINT16 theGroup, UINT16 theElement, TNEndian::EndianType theEndian,
                       MemoryAllocater& theAllocator)
    : VR(theGroup, theElement, theEndian, theAllocator)
{
   SetTypeCode(VRCode::SQ);
}

SequenceVR::SequenceVR(const SequenceVR& theOther) : VR(theOther), itsItems(CopyItems(theOther.itsItems).release()) {}

SequenceVR& SequenceVR::operator=(const SequenceVR& theOther)
{
   if (this != &theOther)
   {
      OwnedItems aCopy = CopyItems(theOther.itsItems);
      VR::operator=(theOther);
      const OwnedItems anOld(std::exchange(itsItems, aCopy.release()));
   }
   return *this;
}

VR* SequenceVR::Copy() const
{
   return new SequenceVR(*this);
}

SequenceVR::~SequenceVR()
{
   const OwnedItems anOld(itsItems);
}

int SequenceVR::ValueEquals(const VR& theOther) const
{
   const SequenceVR* anOther = theOther.GetAsSequenceVR();
   if (anOther == nullptr || itsItems == nullptr || anOther->itsItems == nullptr)
   {
      return anOther != nullptr && itsItems == anOther->itsItems;
   }
   return std::equal(itsItems->begin(), itsItems->end(), anOther->itsItems->begin(), anOther->itsItems->end(),
                     ItemsEqual);
}

void SequenceVR::Reset()
{
   VR::Reset();
   const OwnedItems anOld(std::exchange(itsItems, nullptr));
}

int SequenceVR::IsEmpty() const
{
   return itsItems == nullptr || itsItems->empty();
}

int SequenceVR::AddSequenceItem(DICOMDataObject* theItem)
{
   if (GetTypeCode() != VRCode::SQ)
   {
      return 0;
   }
   if (itsItems == nullptr)
   {
      itsItems = new Items;
   }
   itsItems->push_back(theItem);
   return 1;
}
