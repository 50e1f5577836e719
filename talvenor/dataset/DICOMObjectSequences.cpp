// The part of DICOMObject that fills sequences (PS3.5 7.5).
#include "talvenor/dataset/DICOMObject.h"

#include <utility>

#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/foundation/CriticalSectionWhileInScope.h"

namespace
{
// What an item names when it references an instance (PS3.3 10.8, SOP Instance Reference Macro).
constexpr UINT16 kReferenceGroup = 0x0008;
constexpr UINT16 kReferencedClass = 0x1150;
constexpr UINT16 kReferencedInstance = 0x1155;

// The instance first: items of one sequence hardly ever share it, and nearly always share the class.
bool References(const DICOMDataObject& theItem, const RWCString& theClassUID, const RWCString& theInstanceUID)
{
   RWCString aClassUID;
   RWCString anInstanceUID;
   return theItem.GetString(kReferenceGroup, kReferencedInstance, anInstanceUID) && anInstanceUID == theInstanceUID &&
          theItem.GetString(kReferenceGroup, kReferencedClass, aClassUID) && aClassUID == theClassUID;
}

bool HasReference(const VR* theVR, const RWCString& theClassUID, const RWCString& theInstanceUID)
{
   const SequenceVR* aSequence = theVR != nullptr ? theVR->GetAsSequenceVR() : nullptr;
   const SequenceVR::Items* anItems = aSequence != nullptr ? aSequence->GetSequenceArray() : nullptr;
   if (anItems == nullptr)
   {
      return false;
   }
   for (const DICOMDataObject* anItem : *anItems)
   {
      if (anItem != nullptr && References(*anItem, theClassUID, theInstanceUID))
      {
         return true;
      }
   }
   return false;
}

void PushUID(DICOMDataObject& theItem, UINT16 theElement, const RWCString& theText)
{
   auto aVR = std::make_unique<VR>(kReferenceGroup, theElement, theItem.GetEndian());
   aVR->SetTypeCode(VRCode::UI);
   aVR->SetData(theText.data(), static_cast<UINT32>(theText.size()), '\0');
   theItem.Push(aVR.release());
}
} // namespace

int DICOMObject::Push(DICOMDataObject* theItem)
{
   std::unique_ptr<DICOMDataObject> anItem(theItem);
   CriticalSectionWhileInScope aGuard(itsLock);
   VR* aLastPushed = itsNode.FindOwn(itsLastPushed);
   SequenceVR* aSequence = aLastPushed != nullptr ? aLastPushed->GetAsSequenceVR() : nullptr;
   if (anItem == nullptr || aSequence == nullptr)
   {
      return 0;
   }
   SequenceVR::Items*& anItems = aSequence->GetSequenceArray();
   if (anItems == nullptr)
   {
      anItems = new SequenceVR::Items;
      aSequence->SetLength(0);
   }
   anItems->push_back(anItem.get());
   anItem.release();
   return 1;
}

void DICOMObject::AddSequenceItem(UINT16 theGroup, UINT16 theElement, std::forward_list<VR*>& theElements)
{
   CriticalSectionWhileInScope aGuard(itsLock);
   if (!CanHoldItems(TagOf(theGroup, theElement)))
   {
      return;
   }
   auto anItem = std::make_unique<DICOMDataObject>(itsEndian);
   while (!theElements.empty())
   {
      VR* aVR = theElements.front();
      theElements.pop_front();
      anItem->Push(aVR);
   }
   AppendItem(theGroup, theElement, std::move(anItem));
}

void DICOMObject::AddReferenceSequence(UINT16 theGroup, UINT16 theElement, const RWCString& theClassUID,
                                       const RWCString& theInstanceUID)
{
   CriticalSectionWhileInScope aGuard(itsLock);
   const UINT32 aTag = TagOf(theGroup, theElement);
   if (!CanHoldItems(aTag) || HasReference(itsNode.Find(aTag), theClassUID, theInstanceUID))
   {
      return;
   }
   auto anItem = std::make_unique<DICOMDataObject>(itsEndian);
   PushUID(*anItem, kReferencedClass, theClassUID);
   PushUID(*anItem, kReferencedInstance, theInstanceUID);
   AppendItem(theGroup, theElement, std::move(anItem));
}

// Whether the tag is free for a sequence or holds one.
bool DICOMObject::CanHoldItems(UINT32 theTag) const
{
   const VR* aVR = itsNode.Find(theTag);
   return aVR == nullptr || (aVR->GetAsSequenceVR() != nullptr && aVR->GetTypeCode() == VRCode::SQ);
}

void DICOMObject::AppendItem(UINT16 theGroup, UINT16 theElement, std::unique_ptr<DICOMDataObject> theItem)
{
   const UINT32 aTag = TagOf(theGroup, theElement);
   std::unique_ptr<SequenceVR> aNewOne;
   SequenceVR* aSequence = nullptr;
   if (itsNode.Find(aTag) == nullptr)
   {
      aNewOne = std::make_unique<SequenceVR>(theGroup, theElement, TNEndian::NativeEndian());
      aSequence = aNewOne.get();
   }
   else
   {
      if (itsNode.FindOwn(aTag) == nullptr)
      {
         itsNode.CopyDown(); // an inherited sequence is shared by other datasets
      }
      aSequence = itsNode.FindOwn(aTag)->GetAsSequenceVR();
   }
   if (aSequence->AddSequenceItem(theItem.get()))
   {
      theItem.release();
   }
   if (aNewOne != nullptr)
   {
      Push(static_cast<VR*>(aNewOne.release()));
   }
}
