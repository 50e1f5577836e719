#include "talvenor/print/PrintReferences.h"

#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/print/AbstractPrintManagementMeta.h"

namespace
{
SequenceVR::Items* ItemsOf(const DICOMDataObject& theObject, const MAttributeTag& theTag)
{
   VR* const aVR = theObject.GetVR(theTag);
   SequenceVR* const aSequence = aVR != nullptr ? aVR->GetAsSequenceVR() : nullptr;
   return aSequence != nullptr ? aSequence->GetSequenceArray() : nullptr;
}

UID UIDOf(const DICOMDataObject& theItem, UINT16 theElement)
{
   RWCString aText;
   theItem.GetString(0x0008, theElement, aText);
   return aText.size() <= UID::kMaximumLength ? UID(aText) : UID();
}

constexpr UINT16 kReferencedClass = 0x1150;
constexpr UINT16 kReferencedInstance = 0x1155;
} // namespace

std::vector<PrintReference> ReadReferences(const DICOMDataObject& theObject, const MAttributeTag& theTag,
                                           const UID& theSOPClass)
{
   std::vector<PrintReference> aReferences;
   const SequenceVR::Items* const anItems = ItemsOf(theObject, theTag);
   if (anItems == nullptr)
   {
      return aReferences;
   }
   for (const DICOMDataObject* const anItem : *anItems)
   {
      if (anItem == nullptr || aReferences.size() == kMostPrintReferences)
      {
         continue;
      }
      PrintReference aReference = {UIDOf(*anItem, kReferencedClass), UIDOf(*anItem, kReferencedInstance)};
      if (!aReference.itsSOPInstance.IsNull() && (theSOPClass.IsNull() || aReference.itsSOPClass == theSOPClass))
      {
         aReferences.push_back(std::move(aReference));
      }
   }
   return aReferences;
}

void RemoveReference(DICOMDataObject& theObject, const MAttributeTag& theTag, const UID& theInstance)
{
   if (SequenceVR::Items* const anItems = ItemsOf(theObject, theTag))
   {
      std::erase_if(*anItems, [&](DICOMDataObject* theItem) {
         const bool isIt = theItem != nullptr && UIDOf(*theItem, kReferencedInstance) == theInstance;
         if (isIt)
         {
            delete theItem;
         }
         return isIt;
      });
   }
}

void RemoveReferences(DICOMDataObject& theObject, const MAttributeTag& theTag)
{
   delete theObject.RemoveVR(theTag);
}

void AddReference(DICOMDataObject& theObject, const MAttributeTag& theTag, const UID& theSOPClass,
                  const UID& theInstance)
{
   theObject.AddReferenceSequence(theTag.Group(), theTag.Element(), theSOPClass.ToString(), theInstance.ToString());
}

void TakeNewInstanceUID(PrintObject& thePart, const UID& theSOPClass)
{
   thePart.SetSOPClassUID(theSOPClass);
   UID anInstance;
   if (thePart.GetMeta().GetNewSOPInstanceUID(theSOPClass, anInstance))
   {
      thePart.SetSOPInstanceUID(anInstance);
   }
}
