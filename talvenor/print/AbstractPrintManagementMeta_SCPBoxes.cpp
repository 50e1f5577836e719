// The role of SCP: the boxes of images and annotations, and those that stand alone, look-up tables and overlays.
#include <algorithm>
#include <set>
#include <utility>

#include "talvenor/print/BasicImageCheck.h"
#include "talvenor/print/PresentationLUTCheck.h"
#include "talvenor/print/PrintReferences.h"
#include "talvenor/print/PrintRequest.h"

// The film box among whose parts the instance is.
template <class Part>
AbstractFilmBox* AbstractPrintManagementMeta::FindFilmBoxOf(const PrintParts<Part>& (AbstractFilmBox::*theParts)()
                                                                const,
                                                            const UID& theInstance) const
{
   const auto& aFilmBoxes = GetFilmBoxes();
   const auto aPlace = std::find_if(aFilmBoxes.begin(), aFilmBoxes.end(), [&](const auto& theFilmBox) {
      return FindPart((theFilmBox.get()->*theParts)(), theInstance) != nullptr;
   });
   return aPlace != aFilmBoxes.end() ? aPlace->get() : nullptr;
}

int AbstractPrintManagementMeta::ReadImageBoxRequest(const Request& theRequest)
{
   AbstractFilmBox* const aFilmBox = FindFilmBoxOf(&AbstractFilmBox::GetImageBoxes, theRequest.itsInstance);
   if (aFilmBox == nullptr)
   {
      return theRequest.Refuse(PrintStatus::kNoSuchInstance, "No such image box");
   }
   if (!theRequest.HasData())
   {
      return theRequest.Refuse(PrintStatus::kMissingAttribute, "No attributes to change");
   }
   if (IsBusy() || aFilmBox->IsBusy())
   {
      return theRequest.Refuse(PrintStatus::kResourceLimitation, "The film box is being printed");
   }
   AbstractImageBox& aBox = *FindPart(aFilmBox->GetImageBoxes(), theRequest.itsInstance);
   DICOMDataObject aChanges;
   return ReadBox(theRequest.itsService, theRequest.itsCommand, aChanges, [&](DICOMDataObject& theDataset) {
      const auto aCount = static_cast<unsigned int>(aFilmBox->GetImageBoxes().size());
      PrintAnswer anAnswer = CheckBasicImageBox(theDataset, theRequest.itsSOPClass, aCount);
      if (anAnswer.IsDone())
      {
         anAnswer = CheckReferencedLUTs(theDataset);
      }
      if (anAnswer.IsDone())
      {
         anAnswer = CheckMemory(theDataset, PrintStatus::kNoMemoryForImage);
      }
      if (anAnswer.IsDone())
      {
         aBox.Merge(theDataset);
         aBox.ResyncAbstractOverlayBoxs();
         aBox.ResyncAbstractPrintOverlayBoxs();
         aBox.ResyncAbstractLUTBoxs();
         aBox.ResyncAbstractPresentationLUTBoxs();
      }
      return anAnswer;
   });
}

int AbstractPrintManagementMeta::ReadAnnotationBoxRequest(const Request& theRequest)
{
   AbstractFilmBox* const aFilmBox = FindFilmBoxOf(&AbstractFilmBox::GetAnnotationBoxes, theRequest.itsInstance);
   if (aFilmBox == nullptr)
   {
      return theRequest.Refuse(PrintStatus::kNoSuchInstance, "No such annotation box");
   }
   if (!theRequest.HasData())
   {
      return theRequest.Refuse(PrintStatus::kMissingAttribute, "No attributes to change");
   }
   if (IsBusy() || aFilmBox->IsBusy())
   {
      return theRequest.Refuse(PrintStatus::kResourceLimitation, "The film box is being printed");
   }
   DICOMDataObject aChanges;
   return itsAnnotationBoxMessages.Read(
       theRequest.itsService, theRequest.itsCommand, aChanges, [&](DICOMDataObject& theDataset) {
          PrintAnswer anAnswer = CheckMemory(theDataset, PrintStatus::kResourceLimitation);
          if (anAnswer.IsDone())
          {
             FindPart(aFilmBox->GetAnnotationBoxes(), theRequest.itsInstance)->Merge(theDataset);
          }
          return anAnswer;
       });
}

const StandardAdvancedBox* AbstractPrintManagementMeta::FindStandaloneMessages(const UID& theSOPClass)
{
   const StandardAdvancedBox* const aCandidates[] = {GetPresentationLUTBox(), GetLUTBox(), &itsImageOverlayBoxMessages,
                                                     &itsPrintOverlayBoxMessages};
   for (const StandardAdvancedBox* const aCandidate : aCandidates)
   {
      UID anOwnClass;
      if (aCandidate != nullptr && aCandidate->GetUID(anOwnClass) && anOwnClass == theSOPClass)
      {
         return aCandidate;
      }
   }
   return nullptr;
}

int AbstractPrintManagementMeta::ReadStandaloneBoxRequest(const Request& theRequest)
{
   const StandardAdvancedBox& aMessages = *FindStandaloneMessages(theRequest.itsSOPClass);
   if (theRequest.Is(kNCreate))
   {
      return CreateStandaloneBox(theRequest, aMessages);
   }
   PrintObject* const aBox = FindPart(itsStandaloneBoxes, theRequest.itsInstance);
   if (aBox == nullptr || !aBox->IsCreated() || aBox->GetSOPClassUID() != theRequest.itsSOPClass)
   {
      return theRequest.Refuse(PrintStatus::kNoSuchInstance, "No such look-up table or overlay");
   }
   if (theRequest.HasData() != theRequest.Is(kNSet))
   {
      return theRequest.HasData() ? theRequest.Refuse(PrintStatus::kMistypedArgument, "A deletion has no data set")
                                  : theRequest.Refuse(PrintStatus::kMissingAttribute, "No attributes to change");
   }
   if (IsAnythingBusy())
   {
      return theRequest.Refuse(PrintStatus::kResourceLimitation, "The film session is being printed");
   }
   if (theRequest.Is(kNDelete))
   {
      aBox->SetCreated(0);
      DropDeletedBoxes();
      return aMessages.ReadDelete(theRequest.itsService, theRequest.itsCommand);
   }
   DICOMDataObject aChanges;
   return aMessages.ReadSet(theRequest.itsService, theRequest.itsCommand, aChanges, [&](DICOMDataObject& theDataset) {
      PrintAnswer anAnswer = CheckStandaloneBox(theRequest.itsSOPClass, theDataset);
      if (anAnswer.IsDone())
      {
         aBox->Merge(theDataset);
      }
      return anAnswer;
   });
}

PrintAnswer AbstractPrintManagementMeta::CheckStandaloneBox(const UID& theSOPClass,
                                                            const DICOMDataObject& theAttributes) const
{
   PrintAnswer anAnswer =
       theSOPClass == PrintSOPClass::kPresentationLUT ? CheckPresentationLUT(theAttributes) : PrintAnswer();
   return anAnswer.IsDone() ? CheckMemory(theAttributes, PrintStatus::kResourceLimitation) : anAnswer;
}

int AbstractPrintManagementMeta::CreateStandaloneBox(const Request& theRequest, const StandardAdvancedBox& theMessages)
{
   if (FindStandaloneBox(theRequest.itsInstance) != nullptr)
   {
      return theRequest.Refuse(PrintStatus::kDuplicateInstance, "The look-up table or overlay exists");
   }
   if (itsStandaloneBoxes.size() >= kMostStandaloneBoxes)
   {
      return theRequest.Refuse(PrintStatus::kResourceLimitation, "Too many look-up tables and overlays");
   }
   if (!theRequest.HasData())
   {
      return theRequest.Refuse(PrintStatus::kMissingAttribute, "A look-up table or overlay without contents");
   }
   DICOMDataObject anAttributes;
   return theMessages.ReadCreate(
       theRequest.itsService, theRequest.itsCommand, anAttributes, [&](DICOMDataObject& theDataset) {
          PrintAnswer anAnswer = CheckStandaloneBox(theRequest.itsSOPClass, theDataset);
          const bool isPresentationLUT = theRequest.itsSOPClass == PrintSOPClass::kPresentationLUT;
          if (anAnswer.IsDone() && isPresentationLUT && !theDataset.HasNonNullAttribute(0x2050, 0x0010) &&
              !theDataset.HasNonNullAttribute(0x2050, 0x0020)) // PS3.3 C.11.4: a sequence or a shape
          {
             anAnswer = {
                 PrintStatus::kMissingAttribute, "A presentation LUT without LUT and shape", {{0x2050, 0x0020}}};
          }
          if (anAnswer.IsDone())
          {
             auto aBox = std::make_unique<PrintObject>(*this);
             aBox->SetSOPClassUID(theRequest.itsSOPClass);
             aBox->SetSOPInstanceUID(theRequest.itsInstance);
             aBox->SetCreated(1);
             aBox->Merge(theDataset);
             anAnswer.itsDataset = aBox.get();
             itsStandaloneBoxes.push_back(std::move(aBox));
          }
          return anAnswer;
       });
}

// What a client has deleted stays for the films that refer to it (PS3.4 H.4.9): they are printed with it.
void AbstractPrintManagementMeta::DropDeletedBoxes()
{
   std::set<RWCString> aReferenced;
   const auto aTake = [&](const PrintObject& theObject) {
      for (const PrintTag::Tag aTag :
           {PrintTag::kReferencedPresentationLUTs, PrintTag::kReferencedOverlays, PrintTag::kReferencedVOILUTs})
      {
         for (const PrintReference& aReference : ReadReferences(theObject, aTag))
         {
            aReferenced.insert(aReference.itsSOPInstance.ToString());
         }
      }
   };
   for (const auto& aFilmBox : GetFilmBoxes())
   {
      aTake(*aFilmBox);
      std::for_each(aFilmBox->GetImageBoxes().begin(), aFilmBox->GetImageBoxes().end(),
                    [&](const auto& theBox) { aTake(*theBox); });
   }
   std::erase_if(itsStandaloneBoxes, [&](const auto& theBox) {
      return !theBox->IsCreated() && !aReferenced.contains(theBox->GetSOPInstanceUID().ToString());
   });
}

const PrintObject* AbstractPrintManagementMeta::FindStandaloneBox(const UID& theInstance) const
{
   return FindPart(itsStandaloneBoxes, theInstance);
}
