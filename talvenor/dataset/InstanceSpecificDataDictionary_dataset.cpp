#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"

#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/PrivateAllocation.h"
#include "talvenor/foundation/Exceptions.h"

namespace
{
constexpr UINT32 kMaximumValue = 64; // bytes of a creator element's value, blanks around the text included

MAttributeTag TagOf(const VR& theVR)
{
   return MAttributeTag(theVR.GetGroup(), theVR.GetElement());
}

// The bytes as they are; the value must be there.
std::string_view ValueOf(const VR& theVR)
{
   return {reinterpret_cast<const char*>(theVR.GetData()), theVR.GetLength()};
}
} // namespace

bool InstanceSpecificDataDictionary::IsValidPrivateCreatorAllocation(const VR& theVR)
{
   return IsValidPrivateCreatorAllocation(theVR.GetGroup(), theVR.GetElement()) && theVR.GetLength() > 0 &&
          theVR.GetLength() <= kMaximumValue && theVR.GetData() != nullptr &&
          IsValidPrivateCreatorIdentifier(WithoutSpaces(ValueOf(theVR)));
}

int InstanceSpecificDataDictionary::TypeVR(VR& theVR) const
{
   const UINT16 aCode = TypeCodeOf(theVR.GetGroup(), theVR.GetElement());
   theVR.SetTypeCode(aCode != VRCode::None ? aCode : VRCode::UN);
   return aCode != VRCode::None ? 1 : 0;
}

int InstanceSpecificDataDictionary::RegisterPrivateCreator(const VR& theVR)
{
   return IsValidPrivateCreatorAllocation(theVR) ? RegisterPrivateCreator(ValueOf(theVR), TagOf(theVR)) : 0;
}

const MAttributeTag* InstanceSpecificDataDictionary::FindPrivateAllocation(const VR& theVR) const
{
   if (IsValidPrivateCreatorAllocation(theVR))
   {
      return FindPrivateAllocation(ValueOf(theVR), theVR.GetGroup());
   }
   const PrivateAllocation* anOwner = FindBlockOwner(theVR.GetGroup(), theVR.GetElement());
   return anOwner != nullptr ? FindPrivateAllocation(anOwner->GetPrivateCreatorID(), anOwner->GetGroup()) : nullptr;
}

int InstanceSpecificDataDictionary::AssignVRToPrivateBlock(VR& theVR, const RWCString& theCreator)
{
   const UINT16 aGroup = theVR.GetGroup();
   if (!IsValidPrivateGroup(aGroup))
   {
      return 0;
   }
   const std::string_view aCreator = WithoutSpaces(theCreator);
   if (!IsValidPrivateCreatorIdentifier(aCreator))
   {
      throw TNRuntimeException(("The private creator ID \"" + theCreator + "\" is invalid").c_str());
   }

   MAttributeTag aBlock(aGroup, 0);
   const int anIsNew = ContainsCreatorAllocation(aCreator, aGroup) ? 0 : 1;
   // Any free block will do: the element's own number says nothing about blocks.
   if (GetPrivateAllocation(aCreator, aBlock) == 0)
   {
      throw TNRuntimeException(("Unable to allocate private block in group (" + std::to_string(aGroup) +
                                ") for private creator ID \"" + theCreator +
                                "\": no more available blocks in that group")
                                   .c_str());
   }
   const bool anIsCreatorElement = IsValidPrivateCreatorAllocation(TagOf(theVR));
   theVR.SetElement(anIsCreatorElement ? aBlock.Element()
                                       : static_cast<UINT16>(aBlock.Element() << 8 | (theVR.GetElement() & 0xFF)));
   return anIsNew;
}

VR* InstanceSpecificDataDictionary::CreatePrivateCreatorAllocationAttribute(const RWCString& theCreator,
                                                                            TNEndian::EndianType theEndian) const
{
   const MAttributeTag* aBlock = FindAnyAllocation(theCreator);
   if (aBlock == nullptr)
   {
      return nullptr;
   }
   const RWCString aCreator(WithoutSpaces(theCreator));
   auto aVR = std::make_unique<VR>(aBlock->Group(), aBlock->Element(), aCreator.c_str(),
                                   static_cast<UINT32>(aCreator.size()), theEndian);
   aVR->SetTypeCode(VRCode::LO);
   return aVR.release();
}
