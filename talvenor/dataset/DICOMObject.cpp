#include "talvenor/dataset/DICOMObject.h"

#include <exception>
#include <mutex>
#include <utility>

#include "talvenor/dataset/DICOMNodeCursor.h"
#include "talvenor/dataset/DICOMObjectIterator.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/foundation/CriticalSectionWhileInScope.h"

namespace
{
// Beyond this many numbers a list of groups gives its memory back before it is filled again.
constexpr std::size_t kGroupListCapacity = 64;

// A dataset's lock as the standard library wants it. std::lock takes two of them without a fixed order: it never waits
// for one while it holds the other.
class Lockable
{
public:
   explicit Lockable(CriticalSection& theSection) : itsSection(theSection) {}
   void lock() { itsSection.Enter(); }
   bool try_lock() { return itsSection.TryEnter(); }
   void unlock() { itsSection.Leave(); }

private:
   CriticalSection& itsSection;
};
} // namespace

// What a copy takes over. It is complete before the target changes, so the two datasets are never locked together and
// a dataset can be assigned from an item of its own.
struct DICOMObject::Contents
{
   TNEndian::EndianType itsEndian;
   std::unique_ptr<InstanceSpecificDataDictionary> itsDictionary; // null: none was needed yet
   std::vector<std::unique_ptr<VR>> itsElements;                  // in ascending order
};

DICOMObject::DICOMObject(TNEndian::EndianType theEndian) : itsEndian(theEndian) {}

DICOMObject::DICOMObject(const DICOMObject& theOther) : itsEndian(TNEndian::LittleEndian)
{
   Fill(theOther.CopyContents());
}

DICOMObject& DICOMObject::operator=(const DICOMObject& theOther)
{
   if (this != &theOther)
   {
      Contents aCopy = theOther.CopyContents();
      CriticalSectionWhileInScope aGuard(itsLock);
      Reset();
      Fill(std::move(aCopy));
   }
   return *this;
}

DICOMObject::~DICOMObject() = default;

DICOMObject::Contents DICOMObject::CopyContents() const
{
   CriticalSectionWhileInScope aGuard(itsLock);
   Contents aCopy{itsEndian, nullptr, {}};
   if (itsDictionary != nullptr)
   {
      aCopy.itsDictionary = std::make_unique<InstanceSpecificDataDictionary>(*itsDictionary);
   }
   aCopy.itsElements.reserve(itsNode.Entries());
   DICOMNodeCursor aCursor(itsNode);
   while (const VR* aVR = aCursor.Next())
   {
      aCopy.itsElements.emplace_back(aVR->Copy());
   }
   return aCopy;
}

void DICOMObject::Fill(Contents theContents)
{
   itsEndian = theContents.itsEndian;
   itsOwnDictionary = std::move(theContents.itsDictionary);
   itsDictionary = itsOwnDictionary.get();
   for (std::unique_ptr<VR>& anElement : theContents.itsElements)
   {
      DICOMObject::Push(anElement.release());
   }
}

int DICOMObject::Push(VR* theVR)
{
   std::unique_ptr<VR> aVR(theVR);
   CriticalSectionWhileInScope aGuard(itsLock);
   if (aVR == nullptr)
   {
      return 0;
   }
   if (aVR->IsStreamBuffered())
   {
      return PushMaterialised(std::move(aVR));
   }
   if (aVR->GetLength() == VR::kUndefinedLength)
   {
      aVR->SetLength(0);
   }
   const UINT32 aTag = aVR->GetTag();
   if (static_cast<UINT16>(aTag) == 0)
   {
      return 1; // a group length
   }
   const bool isPrivate = (aTag & 0x00010000) != 0;
   if (isPrivate && !RegisterCreator(*aVR) && itsNode.Find(aTag) != nullptr)
   {
      return 0;
   }
   const int wasInserted = itsNode.Insert(aVR.release());
   itsLastPushed = wasInserted ? aTag : kNoTag;
   return wasInserted;
}

// 1 also for an element that is no creator element.
int DICOMObject::RegisterCreator(const VR& theVR)
{
   return !InstanceSpecificDataDictionary::IsValidPrivateCreatorAllocation(theVR.GetGroup(), theVR.GetElement()) ||
          GetDataDictionary().RegisterPrivateCreator(theVR);
}

int DICOMObject::PushMaterialised(std::unique_ptr<VR> theStreamVR)
{
   std::exception_ptr aFailure;
   std::unique_ptr<VR> aVR = theStreamVR->Materialise(aFailure);
   theStreamVR.reset();
   const int wasPushed = Push(aVR.release());
   if (aFailure)
   {
      std::rethrow_exception(aFailure);
   }
   return wasPushed;
}

UINT32 DICOMObject::Entries() const
{
   CriticalSectionWhileInScope aGuard(itsLock);
   return itsNode.Entries();
}

VR* DICOMObject::Pop()
{
   CriticalSectionWhileInScope aGuard(itsLock);
   DICOMNodeCursor aCursor(itsNode);
   return aCursor.Next() != nullptr ? itsNode.Remove(aCursor.GetTag()) : nullptr;
}

void DICOMObject::Reset()
{
   CriticalSectionWhileInScope aGuard(itsLock);
   itsNode.Clear();
   itsLastPushed = kNoTag;
   itsIterator.reset();
   itsScratchpad.reset();
   if (itsOwnDictionary != nullptr)
   {
      itsOwnDictionary->ClearPrivateCreators();
   }
}

VR* DICOMObject::RemoveVR(UINT16 theGroup, UINT16 theElement)
{
   CriticalSectionWhileInScope aGuard(itsLock);
   return itsNode.Remove(TagOf(theGroup, theElement));
}

VR* DICOMObject::RemoveVR(const MAttributeTag& theTag)
{
   return RemoveVR(theTag.Group(), theTag.Element());
}

VR* DICOMObject::RemoveVR(const RWCString& theCreator, const RWCString& theName)
{
   CriticalSectionWhileInScope aGuard(itsLock);
   return itsNode.Remove(TagOf(theCreator, theName));
}

VR* DICOMObject::RemoveVR(const RWCString& theCreator, UINT16 theElement, UINT16 theGroup)
{
   CriticalSectionWhileInScope aGuard(itsLock);
   return itsNode.Remove(TagOf(theCreator, theElement, theGroup));
}

void DICOMObject::RemoveVRList(const TagList& theTags)
{
   CriticalSectionWhileInScope aGuard(itsLock);
   for (const MAttributeTag& aTag : theTags)
   {
      delete RemoveVR(aTag.Group(), aTag.Element());
   }
}

int DICOMObject::RemoveGroup(UINT16 theGroup)
{
   CriticalSectionWhileInScope aGuard(itsLock);
   return itsNode.RemoveGroup(theGroup);
}

void DICOMObject::ListGroupsInRange(std::vector<int>& theGroups, int theLow, int theHigh, bool theSkipOdd) const
{
   theGroups.clear();
   if (theGroups.capacity() > kGroupListCapacity)
   {
      std::vector<int>().swap(theGroups);
      theGroups.reserve(kGroupListCapacity);
   }
   CriticalSectionWhileInScope aGuard(itsLock);
   itsNode.ListGroupsInRange(theGroups, theLow, theHigh, theSkipOdd);
}

DICOMObjectIterator& DICOMObject::GetIterator(GroupLengthEncodingType theType) const
{
   CriticalSectionWhileInScope aGuard(itsLock);
   if (itsIterator == nullptr)
   {
      itsIterator = std::make_unique<DICOMObjectIterator>(*this, theType);
   }
   else
   {
      itsIterator->SetGroupLengthEncoding(theType);
   }
   return *itsIterator;
}

int DICOMObject::ValueEquals(const DICOMObject& theOther) const
{
   Lockable aMine(itsLock);
   Lockable anOthers(theOther.itsLock);
   std::scoped_lock aGuard(aMine, anOthers);
   DICOMObjectIterator aLeftWalk(*this, ExplicitNoGroupLength);
   DICOMObjectIterator aRightWalk(theOther, ExplicitNoGroupLength);
   while (true)
   {
      const VR* aLeft = aLeftWalk.Next();
      const VR* aRight = aRightWalk.Next();
      if (aLeft == nullptr || aRight == nullptr)
      {
         return aLeft == aRight;
      }
      if (aLeft->GetTag() != aRight->GetTag() || !aLeft->ValueEquals(*aRight))
      {
         return 0;
      }
   }
}

TNEndian::EndianType DICOMObject::GetEndian() const
{
   CriticalSectionWhileInScope aGuard(itsLock);
   return itsEndian;
}

void DICOMObject::SetEndian(TNEndian::EndianType theEndian)
{
   CriticalSectionWhileInScope aGuard(itsLock);
   itsEndian = theEndian;
}

void DICOMObject::PutScratchpadValue(const RWCString& theName, const RWCString& theValue)
{
   CriticalSectionWhileInScope aGuard(itsLock);
   if (itsScratchpad == nullptr)
   {
      itsScratchpad = std::make_unique<Scratchpad>();
   }
   itsScratchpad->insert_or_assign(theName, theValue);
}

int DICOMObject::GetScratchpadValue(const RWCString& theName, RWCString& theValue) const
{
   CriticalSectionWhileInScope aGuard(itsLock);
   if (itsScratchpad == nullptr)
   {
      return 0;
   }
   const auto aNote = itsScratchpad->find(theName);
   if (aNote == itsScratchpad->end())
   {
      return 0;
   }
   theValue = aNote->second;
   return 1;
}

int DICOMObject::RemoveScratchpadValue(const RWCString& theName)
{
   CriticalSectionWhileInScope aGuard(itsLock);
   return itsScratchpad != nullptr && itsScratchpad->erase(theName) != 0;
}
