#include "talvenor/dimse/NGetRQ.h"

#include <memory>

#include "talvenor/dataset/DICOMObjectIterator.h"
#include "talvenor/dataset/DICOMObjectLock.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/dimse/NMessage.h"

namespace
{
using Tags = RWTValOrderedVector<MAttributeTag>;

Tags TagsOf(const DICOMDataObject& theDataset)
{
   const DICOMObjectLock aLock(theDataset);
   DICOMObjectIterator anIterator(theDataset, ExplicitNoGroupLength);
   Tags aTags;
   for (const VR* aVR = anIterator.First(); aVR != nullptr; aVR = anIterator.Next())
   {
      if (aVR->GetElement() != 0) // a group length, which the iterator makes for group 0002
      {
         aTags.emplace_back(aVR->GetGroup(), aVR->GetElement());
      }
   }
   return aTags;
}

void PushEmpty(DICOMDataObject& theDataset, const MAttributeTag& theTag)
{
   const InstanceSpecificDataDictionary& aDictionary = theDataset.GetDataDictionary();
   const TNEndian::EndianType anEndian = theDataset.GetEndian();
   std::unique_ptr<VR> aVR;
   if (aDictionary.TypeCodeOf(theTag.Group(), theTag.Element()) == VRCode::SQ)
   {
      aVR = std::make_unique<SequenceVR>(theTag, anEndian);
   }
   else
   {
      aVR = std::make_unique<VR>(theTag, anEndian);
      aDictionary.TypeVR(*aVR);
   }
   theDataset.Push(aVR.release());
}
} // namespace

int NGetRQ::Write(PDU_Service& theService, DICOMDataObject& theAttributeList, const UID& theInstance) const
{
   const Tags aTags = TagsOf(theAttributeList);
   UID aSOPClass;
   return WriteNRequest(*this, kNGet, theService, {theInstance, DataSetType::kNoDataset, 0, &aTags}, aSOPClass);
}

int NGetRQ::Read(const DICOMCommandObject& theCommand, PDU_Service&, DICOMDataObject& theAttributeList) const
{
   if (!RecogniseNRequest(kNGet, theCommand))
   {
      return 0;
   }
   Tags aTags;
   if (theCommand.GetAttributeList(0, CommandElement::AttributeIdentifierList, aTags))
   {
      theAttributeList.Reset();
      for (const MAttributeTag& aTag : aTags)
      {
         PushEmpty(theAttributeList, aTag);
      }
   }
   return 1;
}
