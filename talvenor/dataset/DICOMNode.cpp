#include "talvenor/dataset/DICOMNode.h"

#include <algorithm>
#include <new>

#include "talvenor/dataset/DICOMNodeCursor.h"
#include "talvenor/dataset/DICOMNodeShared.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/foundation/CriticalSectionWhileInScope.h"

DICOMNode::DICOMNode() = default;

DICOMNode::DICOMNode(const std::string& theName) : itsShared(new Shared{theName}) {}

DICOMNode::~DICOMNode()
{
   // A shared node goes with its parent, which is past keeping a list of children.
   if (!itsShared)
   {
      const CriticalSectionWhileInScope aGuard(itsLock);
      Detach();
   }
}

int DICOMNode::Insert(VR* theVR)
{
   std::unique_ptr<VR> aVR(theVR);
   const CriticalSectionWhileInScope aGuard(itsLock);
   if (const DICOMNode* aParent = itsParent; aParent != nullptr && aParent->Find(theVR->GetTag()) != nullptr)
   {
      CopyDown();
   }
   return itsElements.Insert(aVR.release());
}

VR* DICOMNode::Find(UINT32 theTag) const
{
   const CriticalSectionWhileInScope aGuard(itsLock);
   VR* aVR = itsElements.Find(theTag);
   const DICOMNode* aParent = itsParent;
   return aVR == nullptr && aParent != nullptr ? aParent->Find(theTag) : aVR;
}

VR* DICOMNode::FindOwn(UINT32 theTag) const
{
   const CriticalSectionWhileInScope aGuard(itsLock);
   return itsElements.Find(theTag);
}

VR* DICOMNode::Remove(UINT32 theTag)
{
   const CriticalSectionWhileInScope aGuard(itsLock);
   VR* aVR = itsElements.Remove(theTag);
   if (const DICOMNode* aParent = itsParent; aVR == nullptr && aParent != nullptr && aParent->Find(theTag) != nullptr)
   {
      CopyDown();
      aVR = itsElements.Remove(theTag);
   }
   return aVR;
}

int DICOMNode::RemoveGroup(UINT16 theGroup)
{
   const CriticalSectionWhileInScope aGuard(itsLock);
   CopyDown();
   const UINT32 aFirstTag = static_cast<UINT32>(theGroup) << 16;
   return itsElements.RemoveRange(aFirstTag, aFirstTag | 0xFFFF) != 0;
}

void DICOMNode::Clear()
{
   const CriticalSectionWhileInScope aGuard(itsLock);
   itsElements.Clear();
   Detach();
}

void DICOMNode::CopyDown()
{
   const CriticalSectionWhileInScope aGuard(itsLock);
   if (const DICOMNode* aParent = itsParent; aParent != nullptr)
   {
      aParent->CopyElementsTo(itsElements);
      Detach();
   }
}

// The nearest node comes first and nothing is replaced: what an element hides stays behind.
void DICOMNode::CopyElementsTo(ElementTable& theTable) const
{
   const CriticalSectionWhileInScope aGuard(itsLock);
   ElementTable::Position aPosition;
   for (const VR* aVR = itsElements.At(aPosition); aVR != nullptr; aVR = itsElements.At(aPosition))
   {
      if (theTable.Find(itsElements.TagAt(aPosition)) == nullptr && theTable.Insert(aVR->Copy()) == 0)
      {
         throw std::bad_alloc();
      }
      itsElements.Advance(aPosition);
   }
   if (const DICOMNode* aParent = itsParent; aParent != nullptr)
   {
      aParent->CopyElementsTo(theTable);
   }
}

UINT32 DICOMNode::Entries() const
{
   const CriticalSectionWhileInScope aGuard(itsLock);
   const DICOMNode* aParent = itsParent;
   return itsElements.GetCount() + (aParent != nullptr ? aParent->Entries() : 0);
}

void DICOMNode::ListGroupsInRange(std::vector<int>& theGroups, int theLow, int theHigh, bool theSkipOdd) const
{
   constexpr int kHighestGroup = 0xFFFF;
   const CriticalSectionWhileInScope aGuard(itsLock);
   DICOMNodeCursor aCursor(*this);
   for (int aGroup = std::max(theLow, 0); aGroup <= std::min(theHigh, kHighestGroup); ++aGroup)
   {
      aCursor.Seek(static_cast<UINT32>(aGroup) << 16);
      if (aCursor.Next() == nullptr)
      {
         break;
      }
      aGroup = static_cast<int>(aCursor.GetTag() >> 16); // the next group that there is
      if (aGroup <= theHigh && !(theSkipOdd && aGroup % 2 != 0))
      {
         theGroups.push_back(aGroup);
      }
   }
}

std::string DICOMNode::GetName() const
{
   return itsShared ? itsShared->itsName : std::string();
}

// Makes a dataset's node a child; its lock is held and it has no parent.
void DICOMNode::AttachTo(DICOMNode& theParent)
{
   const CriticalSectionWhileInScope aGuard(theParent.itsLock);
   std::vector<DICOMNode*>& aDatasets = theParent.itsShared->itsDatasets;
   itsPlaceInParent = static_cast<UINT32>(aDatasets.size());
   aDatasets.push_back(this);
   itsParent.store(&theParent, std::memory_order_release);
}

// The node's lock is held. The last of the parent's datasets takes the place, so that leaving costs the same among
// thousands.
void DICOMNode::Detach()
{
   DICOMNode* aParent = itsParent;
   if (aParent == nullptr)
   {
      return;
   }
   const CriticalSectionWhileInScope aGuard(aParent->itsLock);
   std::vector<DICOMNode*>& aDatasets = aParent->itsShared->itsDatasets;
   aDatasets[itsPlaceInParent] = aDatasets.back();
   aDatasets[itsPlaceInParent]->itsPlaceInParent = itsPlaceInParent;
   aDatasets.pop_back();
   itsParent.store(nullptr, std::memory_order_release);
}
