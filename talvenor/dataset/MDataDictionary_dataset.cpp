#include "talvenor/dataset/DICOMObjectIterator.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/dictionary/MDataDictionary.h"

bool MDataDictionary::TypeVR(VR& theVR) const
{
   const MAttributeTag aTag(theVR.GetGroup(), theVR.GetElement());
   if (InstanceSpecificDataDictionary::IsValidPrivateCreatorAllocation(aTag))
   {
      theVR.SetTypeCode(VRCode::LO);
      return true;
   }
   const MDDEntry* anEntry = Find(aTag);
   theVR.SetTypeCode(anEntry != nullptr ? anEntry->GetTypeAsUshort() : VRCode::UN);
   return anEntry != nullptr;
}

int MDataDictionary::RunTimeClass(DICOMObject& theObject) const
{
   DICOMObjectIterator anIterator(theObject, ImplicitNoGroupLength);
   for (VR* aVR = anIterator.First(); aVR != nullptr; aVR = anIterator.Next())
   {
      TypeVR(*aVR);
   }
   return 1;
}
