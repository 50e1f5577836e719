#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"

#include <algorithm>
#include <map>

#include "talvenor/dictionary/MDataDictionary.h"
#include "talvenor/dictionary/MPrivateDataDictionary.h"
#include "talvenor/dictionary/PrivateAllocation.h"
#include "talvenor/dictionary/PrivateDataDictionaryCatalog.h"

namespace
{
constexpr UINT16 kFirstBlock = 0x0010; // PS3.5 7.8.1
constexpr UINT16 kLastBlock = 0x00FF;
constexpr std::size_t kMaximumIdentifier = 64; // the length of an LO

UINT32 BlockKey(UINT16 theGroup, UINT16 theBlock)
{
   return static_cast<UINT32>(theGroup) << 16 | theBlock;
}
} // namespace

// The allocations by tag of the creator element. A group has 240 blocks at most, so that a creator is looked for among
// those of its group; a table of creators beside this one would take more memory than most items of a sequence do.
struct InstanceSpecificDataDictionary::Tables
{
   struct Allocation
   {
      PrivateAllocation itsKey;
      MAttributeTag itsTag;
   };

   const Allocation* Find(std::string_view theCreator, UINT16 theGroup) const
   {
      const UINT32 aHash = PrivateAllocation::HashOf(theCreator, theGroup);
      for (auto aPlace = itsAllocations.lower_bound(BlockKey(theGroup, 0)); aPlace != itsAllocations.end(); ++aPlace)
      {
         const PrivateAllocation& aKey = aPlace->second.itsKey;
         if (aKey.GetGroup() != theGroup)
         {
            break;
         }
         if (aKey.hash() == aHash && aKey.GetPrivateCreatorID() == theCreator)
         {
            return &aPlace->second;
         }
      }
      return nullptr;
   }

   std::map<UINT32, Allocation> itsAllocations;
};

InstanceSpecificDataDictionary::InstanceSpecificDataDictionary(const MDataDictionary& thePublicDictionary,
                                                               const PrivateDataDictionaryCatalog& theCatalog)
    : itsPublicDictionary(&thePublicDictionary), itsCatalog(&theCatalog)
{}

InstanceSpecificDataDictionary::InstanceSpecificDataDictionary(const InstanceSpecificDataDictionary& theOther)
    : itsTables(theOther.itsTables ? std::make_unique<Tables>(*theOther.itsTables) : nullptr),
      itsPublicDictionary(theOther.itsPublicDictionary), itsCatalog(theOther.itsCatalog),
      itsHashTableSize(theOther.itsHashTableSize)
{}

InstanceSpecificDataDictionary&
InstanceSpecificDataDictionary::operator=(const InstanceSpecificDataDictionary& theOther)
{
   if (this != &theOther)
   {
      itsTables = theOther.itsTables ? std::make_unique<Tables>(*theOther.itsTables) : nullptr;
      itsPublicDictionary = theOther.itsPublicDictionary;
      itsCatalog = theOther.itsCatalog;
      itsHashTableSize = theOther.itsHashTableSize;
   }
   return *this;
}

InstanceSpecificDataDictionary::~InstanceSpecificDataDictionary() = default;

std::string_view InstanceSpecificDataDictionary::WithoutSpaces(std::string_view theText)
{
   const std::size_t aFirst = theText.find_first_not_of(' ');
   return aFirst == std::string_view::npos ? std::string_view()
                                           : theText.substr(aFirst, theText.find_last_not_of(' ') - aFirst + 1);
}

bool InstanceSpecificDataDictionary::IsValidPrivateCreatorIdentifier(std::string_view theText)
{
   return !theText.empty() && theText.size() <= kMaximumIdentifier &&
          std::all_of(theText.begin(), theText.end(),
                      [](char theCharacter) { return theCharacter >= ' ' && theCharacter <= '~'; });
}

const MDDEntry* InstanceSpecificDataDictionary::Find(const MAttributeTag& theTag) const
{
   if (!IsValidPrivateGroup(theTag.Group()))
   {
      return itsPublicDictionary->Find(theTag);
   }
   const MPrivateDataDictionary* aDictionary = FindPrivateDictionary(theTag);
   return aDictionary != nullptr ? aDictionary->Find(theTag) : nullptr;
}

const MDDEntry* InstanceSpecificDataDictionary::Find(std::string_view theName, std::string_view theCreator) const
{
   if (theCreator.empty())
   {
      return itsPublicDictionary->Find(theName);
   }
   const MPrivateDataDictionary* aDictionary = FindPrivateDictionary(theCreator);
   return aDictionary != nullptr ? aDictionary->Find(theName) : nullptr;
}

const MPrivateDataDictionary* InstanceSpecificDataDictionary::FindPrivateDictionary(const MAttributeTag& theTag) const
{
   const PrivateAllocation* anOwner = FindBlockOwner(theTag.Group(), theTag.Element());
   return anOwner != nullptr ? itsCatalog->Find(anOwner->GetPrivateCreatorID()) : nullptr;
}

const MPrivateDataDictionary* InstanceSpecificDataDictionary::FindPrivateDictionary(std::string_view theCreator) const
{
   return itsCatalog->Find(theCreator);
}

UINT16 InstanceSpecificDataDictionary::TypeCodeOf(UINT16 theGroup, UINT16 theElement) const
{
   if (IsValidPrivateCreatorAllocation(theGroup, theElement))
   {
      return VRCode::LO;
   }
   const MDDEntry* anEntry = Find(MAttributeTag(theGroup, theElement));
   return anEntry != nullptr ? anEntry->GetTypeAsUshort() : VRCode::None;
}

int InstanceSpecificDataDictionary::RegisterPrivateCreator(std::string_view theCreator, const MAttributeTag& theTag)
{
   const std::string_view aCreator = WithoutSpaces(theCreator);
   if (!IsValidPrivateCreatorIdentifier(aCreator) || !IsValidPrivateCreatorAllocation(theTag))
   {
      return 0;
   }
   if (const MAttributeTag* aHeld = FindPrivateAllocation(aCreator, theTag.Group()))
   {
      return *aHeld == theTag ? 1 : 0;
   }
   if (itsTables != nullptr && itsTables->itsAllocations.contains(theTag.GetTag()))
   {
      return 0;
   }
   if (itsTables == nullptr)
   {
      itsTables = std::make_unique<Tables>();
   }
   itsTables->itsAllocations.emplace(theTag.GetTag(),
                                     Tables::Allocation{PrivateAllocation(RWCString(aCreator), theTag.Group()),
                                                        MAttributeTag(theTag.Group(), theTag.Element())});
   return 1;
}

int InstanceSpecificDataDictionary::GetPrivateAllocation(std::string_view theCreator, MAttributeTag& theTag)
{
   const UINT16 aGroup = theTag.Group();
   if (!IsValidPrivateGroup(aGroup))
   {
      return 0;
   }
   if (const MAttributeTag* aHeld = FindPrivateAllocation(theCreator, aGroup))
   {
      theTag.SetElement(aHeld->Element());
      return 1;
   }
   for (unsigned int aBlock = std::max(theTag.Element(), kFirstBlock); aBlock <= kLastBlock; ++aBlock)
   {
      const MAttributeTag aCandidate(aGroup, static_cast<UINT16>(aBlock));
      if (itsTables == nullptr || !itsTables->itsAllocations.contains(aCandidate.GetTag()))
      {
         if (RegisterPrivateCreator(theCreator, aCandidate) == 0)
         {
            return 0; // not a valid creator, or a group without blocks: no other block would do
         }
         theTag.SetElement(aCandidate.Element());
         return 1;
      }
   }
   return 0;
}

const MAttributeTag* InstanceSpecificDataDictionary::FindPrivateAllocation(std::string_view theCreator,
                                                                           UINT16 theGroup) const
{
   if (itsTables == nullptr)
   {
      return nullptr;
   }
   const Tables::Allocation* anAllocation = itsTables->Find(WithoutSpaces(theCreator), theGroup);
   return anAllocation != nullptr ? &anAllocation->itsTag : nullptr;
}

const PrivateAllocation* InstanceSpecificDataDictionary::FindBlockOwner(UINT16 theGroup, UINT16 theElement) const
{
   if (itsTables == nullptr || !IsValidPrivateGroup(theGroup) || !IsValidPrivateElementCode(theElement))
   {
      return nullptr;
   }
   const auto aPlace = itsTables->itsAllocations.find(BlockKey(theGroup, theElement >> 8));
   return aPlace != itsTables->itsAllocations.end() ? &aPlace->second.itsKey : nullptr;
}

int InstanceSpecificDataDictionary::GetPrivateBlockGroup(std::string_view theCreator) const
{
   const MPrivateDataDictionary* aDictionary = FindPrivateDictionary(theCreator);
   return aDictionary != nullptr ? aDictionary->GetPrivateBlockGroup() : -1;
}

const MAttributeTag* InstanceSpecificDataDictionary::FindAnyAllocation(std::string_view theCreator) const
{
   if (const int aGroup = GetPrivateBlockGroup(WithoutSpaces(theCreator)); aGroup >= 0)
   {
      return FindPrivateAllocation(theCreator, static_cast<UINT16>(aGroup));
   }
   if (itsTables != nullptr)
   {
      for (const auto& [aTag, anAllocation] : itsTables->itsAllocations) // in ascending order
      {
         if (anAllocation.itsKey.GetPrivateCreatorID() == WithoutSpaces(theCreator))
         {
            return &anAllocation.itsTag;
         }
      }
   }
   return nullptr;
}

void InstanceSpecificDataDictionary::ClearPrivateCreators()
{
   itsTables.reset();
}

unsigned int InstanceSpecificDataDictionary::HashPrivateAllocation(const PrivateAllocation& theAllocation)
{
   return theAllocation.hash();
}

void InstanceSpecificDataDictionary::SetHashTableSize(unsigned int theSize)
{
   itsHashTableSize = theSize;
}
