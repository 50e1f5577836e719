// The part of DICOMObject that knows dictionaries and private blocks (PS3.5 7.8.1).
#include "talvenor/dataset/DICOMObject.h"

#include <utility>

#include "talvenor/dataset/DICOMNodeCursor.h"
#include "talvenor/dataset/MVRFactory.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/dictionary/MDataDictionary.h"
#include "talvenor/dictionary/PrivateDataDictionaryCatalog.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/foundation/CriticalSectionWhileInScope.h"

namespace
{
// The numbers of the creator elements, which are those of the blocks.
constexpr UINT16 kFirstBlock = 0x0010;
constexpr UINT16 kLastBlock = 0x00FF;

UINT16 ElementInBlock(UINT16 theBlock, UINT16 theElement)
{
   return static_cast<UINT16>(theBlock << 8 | (theElement & 0x00FF));
}
} // namespace

void DICOMObject::SetDataDictionary(InstanceSpecificDataDictionary* theDictionary)
{
   CriticalSectionWhileInScope aGuard(itsLock);
   if (theDictionary != itsOwnDictionary.get())
   {
      itsOwnDictionary.reset(theDictionary);
   }
   itsDictionary = theDictionary;
}

void DICOMObject::SetDataDictionary(InstanceSpecificDataDictionary& theDictionary)
{
   CriticalSectionWhileInScope aGuard(itsLock);
   if (&theDictionary != itsOwnDictionary.get()) // borrowing its own one leaves it the owner
   {
      itsOwnDictionary.reset();
   }
   itsDictionary = &theDictionary;
}

void DICOMObject::SetDataDictionary(const InstanceSpecificDataDictionary& theDictionary)
{
   SetDataDictionary(std::make_unique<InstanceSpecificDataDictionary>(theDictionary).release());
}

const InstanceSpecificDataDictionary& DICOMObject::GetDataDictionary() const
{
   CriticalSectionWhileInScope aGuard(itsLock);
   if (itsDictionary == nullptr)
   {
      itsOwnDictionary = std::make_unique<InstanceSpecificDataDictionary>(
          MDataDictionary::GetDefaultDataDictionary(),
          PrivateDataDictionaryCatalog::GetDefaultPrivateDataDictionaryCatalog());
      itsDictionary = itsOwnDictionary.get();
   }
   return *itsDictionary;
}

InstanceSpecificDataDictionary& DICOMObject::GetDataDictionary()
{
   CriticalSectionWhileInScope aGuard(itsLock);
   std::as_const(*this).GetDataDictionary();
   return *itsDictionary;
}

bool DICOMObject::HasDataDictionary() const
{
   CriticalSectionWhileInScope aGuard(itsLock);
   return itsDictionary != nullptr;
}

int DICOMObject::HasPrivateBlock(const RWCString& theCreator, UINT16 theGroup) const
{
   CriticalSectionWhileInScope aGuard(itsLock);
   return itsDictionary != nullptr && itsDictionary->ContainsCreatorAllocation(theCreator, theGroup);
}

UINT32 DICOMObject::TagOf(const RWCString& theName) const
{
   const InstanceSpecificDataDictionary& aDictionary =
       itsDictionary != nullptr ? *itsDictionary
                                : InstanceSpecificDataDictionary::GetDefaultInstanceSpecificDataDictionary();
   const MDDEntry* anEntry = aDictionary.Find(theName, "");
   return anEntry != nullptr ? anEntry->GetTag() : kNoTag;
}

// Without a dictionary nobody holds a block.
UINT32 DICOMObject::TagOf(const RWCString& theCreator, const RWCString& theName) const
{
   const MDDEntry* anEntry = itsDictionary != nullptr ? itsDictionary->Find(theName, theCreator) : nullptr;
   return anEntry != nullptr ? TagOf(theCreator, anEntry->Element(), anEntry->Group()) : kNoTag;
}

UINT32 DICOMObject::TagOf(const RWCString& theCreator, UINT16 theElement, UINT16 theGroup) const
{
   const MAttributeTag* aCreatorTag =
       itsDictionary != nullptr ? itsDictionary->FindPrivateAllocation(theCreator, theGroup) : nullptr;
   return aCreatorTag != nullptr ? TagOf(theGroup, ElementInBlock(aCreatorTag->Element(), theElement)) : kNoTag;
}

int DICOMObject::Push(const RWCString& theCreator, VR* theVR)
{
   std::unique_ptr<VR> aVR(theVR);
   CriticalSectionWhileInScope aGuard(itsLock);
   if (aVR == nullptr || theCreator.empty() ||
       GetDataDictionary().GetPrivateBlockGroup(theCreator) != aVR->GetGroup() || !PlaceInBlock(theCreator, *aVR) ||
       !TypePrivate(*aVR))
   {
      return 0;
   }
   return Push(aVR.release());
}

int DICOMObject::Push(const RWCString& theCreator, const RWCString& theName, VR* theVR)
{
   std::unique_ptr<VR> aVR(theVR);
   CriticalSectionWhileInScope aGuard(itsLock);
   if (aVR == nullptr || theCreator.empty() || theName.empty())
   {
      return 0;
   }
   const MDDEntry* anEntry = GetDataDictionary().Find(theName, theCreator);
   if (anEntry == nullptr)
   {
      return 0;
   }
   aVR->SetElement(anEntry->Element());
   return Push(theCreator, aVR.release()); // which takes the type from the same entry
}

// Gives the element its number in the creator's block, allocating one if need be. 0 when no block is to be had.
int DICOMObject::PlaceInBlock(const RWCString& theCreator, VR& theVR)
{
   const MAttributeTag* aCreatorTag = GetDataDictionary().FindPrivateAllocation(theCreator, theVR.GetGroup());
   const UINT16 aBlock = aCreatorTag != nullptr ? aCreatorTag->Element() : AllocateBlock(theCreator, theVR.GetGroup());
   if (aBlock == 0)
   {
      return 0;
   }
   theVR.SetElement(ElementInBlock(aBlock, theVR.GetElement()));
   return 1;
}

// Allocates a block and stores its creator element. Returns the block's number, 0 when none is free.
UINT16 DICOMObject::AllocateBlock(const RWCString& theCreator, UINT16 theGroup)
{
   RegisterStoredCreators(theGroup);
   InstanceSpecificDataDictionary& aDictionary = GetDataDictionary();
   if (const MAttributeTag* aCreatorTag = aDictionary.FindPrivateAllocation(theCreator, theGroup))
   {
      return aCreatorTag->Element();
   }
   for (UINT16 aBlock = kFirstBlock; aBlock <= kLastBlock; ++aBlock)
   {
      const MAttributeTag aTag(theGroup, aBlock);
      // A stored creator element whose text cannot be registered (padded with a NUL, say) keeps its block all the same.
      const bool isFree = itsNode.Find(aTag.GetTag()) == nullptr;
      if (isFree && aDictionary.RegisterPrivateCreator(theCreator, aTag))
      {
         const MVRFactory aFactory(itsEndian, true, &aDictionary);
         return Push(aFactory.InternalGetVR(theGroup, aBlock, theCreator, ' ')) ? aBlock : UINT16(0);
      }
   }
   return 0;
}

// Creator elements that were pushed under another dictionary than the present one hold their blocks too.
void DICOMObject::RegisterStoredCreators(UINT16 theGroup)
{
   DICOMNodeCursor aCursor(itsNode);
   aCursor.Seek(TagOf(theGroup, kFirstBlock));
   const UINT32 aLast = TagOf(theGroup, kLastBlock);
   for (const VR* aVR = aCursor.Next(); aVR != nullptr && aVR->GetTag() <= aLast; aVR = aCursor.Next())
   {
      RegisterCreator(*aVR);
   }
}

// Types a private element by the dictionary. Where that knows nothing better than UN, the element's own type stays; 0
// when the two contradict each other.
int DICOMObject::TypePrivate(VR& theVR) const
{
   const UINT16 anOwnType = theVR.GetTypeCode();
   const bool hasOwnType = anOwnType != VRCode::None && anOwnType != VRCode::UN;
   GetDataDictionary().TypeVR(theVR);
   if (theVR.GetTypeCode() == VRCode::UN && hasOwnType)
   {
      theVR.SetTypeCode(anOwnType);
   }
   return !hasOwnType || theVR.GetTypeCode() == anOwnType;
}
