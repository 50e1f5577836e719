// The role of SCP: film boxes.
#include <algorithm>

#include "talvenor/foundation/MUIDFactory.h"
#include "talvenor/print/ImageDisplayFormat.h"
#include "talvenor/print/PrintReferences.h"
#include "talvenor/print/PrintRequest.h"

namespace
{
constexpr UINT16 kFilmBoxGroup = 0x2010;
constexpr UINT16 kImageDisplayFormat = 0x0010;
constexpr UINT16 kAnnotationFormat = 0x0030;
} // namespace

int AbstractPrintManagementMeta::ReadBasicFilmBox(PDU_Service& theService, const DICOMCommandObject& theRequest,
                                                  UINT16 theCommandField, const UID& theInstance)
{
   const NService* const aKind = FindRequest(theCommandField);
   if (aKind == nullptr || aKind == &kNGet)
   {
      return 0;
   }
   const Request aRequest = {theService, theRequest, *aKind, PrintSOPClass::kFilmBox, theInstance};
   if (aKind == &kNCreate)
   {
      return CreateFilmBox(aRequest);
   }
   AbstractFilmBox* const aFilmBox = FindPart(GetFilmBoxes(), theInstance);
   if (aFilmBox == nullptr)
   {
      return aRequest.Refuse(PrintStatus::kNoSuchInstance, "No such film box");
   }
   if (aKind == &kNAction)
   {
      return PrintFilmBoxRequest(aRequest, *aFilmBox);
   }
   return aKind == &kNSet ? SetFilmBox(aRequest, *aFilmBox) : DeleteFilmBox(aRequest, *aFilmBox);
}

int AbstractPrintManagementMeta::CreateFilmBox(const Request& theRequest)
{
   if (!IsCreated())
   {
      return theRequest.Refuse(PrintStatus::kNoSuchInstance, "A film box needs a film session");
   }
   if (FindPart(GetFilmBoxes(), theRequest.itsInstance) != nullptr)
   {
      return theRequest.Refuse(PrintStatus::kDuplicateInstance, "The film box exists");
   }
   if (GetFilmBoxes().size() >= kMostFilmBoxes || IsBusy())
   {
      return theRequest.Refuse(PrintStatus::kResourceLimitation,
                               IsBusy() ? "The film session is being printed" : "Too many film boxes");
   }
   if (!theRequest.HasData())
   {
      return theRequest.Refuse({PrintStatus::kMissingAttribute,
                                "A film box needs a display format",
                                {{kFilmBoxGroup, kImageDisplayFormat}}});
   }
   DICOMDataObject anAttributes;
   return itsFilmBoxMessages.ReadCreate(
       theRequest.itsService, theRequest.itsCommand, anAttributes,
       [&](DICOMDataObject& theDataset) { return MakeFilmBox(theRequest, theDataset); });
}

PrintAnswer AbstractPrintManagementMeta::MakeFilmBox(const Request& theRequest, DICOMDataObject& theAttributes)
{
   if (!theAttributes.HasAttribute(kFilmBoxGroup, kImageDisplayFormat))
   {
      return {
          PrintStatus::kMissingAttribute, "A film box needs a display format", {{kFilmBoxGroup, kImageDisplayFormat}}};
   }
   RWCString aFormat;
   theAttributes.GetString(kFilmBoxGroup, kImageDisplayFormat, aFormat);
   if (aFormat.empty())
   {
      return {PrintStatus::kMissingValue, "The display format is empty", {{kFilmBoxGroup, kImageDisplayFormat}}};
   }
   const unsigned int anImageCount = CountImageBoxes(aFormat, kMostImageBoxes);
   if (anImageCount == 0)
   {
      return {PrintStatus::kInvalidValue,
              "Unknown display format, or one with too many images",
              {{kFilmBoxGroup, kImageDisplayFormat}}};
   }
   PrintAnswer anAnswer = CheckFilmBox(theAttributes);
   if (anAnswer.IsDone())
   {
      anAnswer = CheckMemory(theAttributes, PrintStatus::kResourceLimitation);
   }
   if (!anAnswer.IsDone())
   {
      return anAnswer;
   }
   RWCString anAnnotationFormat;
   theAttributes.GetString(kFilmBoxGroup, kAnnotationFormat, anAnnotationFormat);
   RemoveReferences(theAttributes, PrintTag::kReferencedImageBoxes);
   RemoveReferences(theAttributes, PrintTag::kReferencedAnnotationBoxes);

   auto aFilmBox = std::make_unique<AbstractFilmBox>(*this);
   aFilmBox->Merge(theAttributes);
   aFilmBox->ProtoGen();
   aFilmBox->SetSOPInstanceUID(theRequest.itsInstance);
   aFilmBox->SetCreated(1);
   AddReference(*aFilmBox, PrintTag::kReferencedFilmSession, PrintSOPClass::kFilmSession, GetSOPInstanceUID());
   MakeBoxes(*aFilmBox, anImageCount, std::min(GetAnnotationBoxCount(anAnnotationFormat), kMostImageBoxes));
   AddReference(*this, PrintTag::kReferencedFilmBoxes, PrintSOPClass::kFilmBox, theRequest.itsInstance);
   anAnswer.itsDataset = aFilmBox.get();
   Add(aFilmBox.release());
   return anAnswer;
}

// What a film box references has to be there.
PrintAnswer AbstractPrintManagementMeta::CheckFilmBox(const DICOMDataObject& theAttributes) const
{
   for (const PrintReference& aReference : ReadReferences(theAttributes, PrintTag::kReferencedFilmSession))
   {
      if (aReference.itsSOPInstance != GetSOPInstanceUID())
      {
         return {PrintStatus::kInvalidValue, "Another film session", {PrintTag::kReferencedFilmSession}};
      }
   }
   return CheckReferencedLUTs(theAttributes);
}

// Of a film box or an image box.
PrintAnswer AbstractPrintManagementMeta::CheckReferencedLUTs(const DICOMDataObject& theAttributes) const
{
   for (const PrintReference& aReference : ReadReferences(theAttributes, PrintTag::kReferencedPresentationLUTs))
   {
      const PrintObject* const aLUT = FindStandaloneBox(aReference.itsSOPInstance);
      if (aLUT == nullptr || !aLUT->IsCreated() || aLUT->GetSOPClassUID() != PrintSOPClass::kPresentationLUT)
      {
         return {PrintStatus::kInvalidValue, "No such presentation LUT", {PrintTag::kReferencedPresentationLUTs}};
      }
   }
   return {};
}

// Boxes in the order of the positions on the film.
void AbstractPrintManagementMeta::MakeBoxes(AbstractFilmBox& theFilmBox, unsigned int theImages,
                                            unsigned int theAnnotations)
{
   for (unsigned int i = 0; i < theImages; ++i)
   {
      auto aBox = std::make_unique<AbstractImageBox>(*this);
      aBox->ProtoGen();
      if (aBox->GetSOPClassUID().IsNull())
      {
         break; // no messages for image boxes
      }
      if (aBox->GetSOPInstanceUID().IsNull())
      {
         aBox->SetSOPInstanceUID(MUIDFactory::GetInstance().GetUID());
      }
      aBox->SetCreated(1);
      AddReference(theFilmBox, PrintTag::kReferencedImageBoxes, aBox->GetSOPClassUID(), aBox->GetSOPInstanceUID());
      theFilmBox.Add(aBox.release());
   }
   for (unsigned int i = 0; i < theAnnotations; ++i)
   {
      AddReference(theFilmBox, PrintTag::kReferencedAnnotationBoxes, PrintSOPClass::kAnnotationBox,
                   NewInstanceUID(PrintSOPClass::kAnnotationBox));
   }
   theFilmBox.ResyncAbstractAnnotationBoxs();
}

int AbstractPrintManagementMeta::SetFilmBox(const Request& theRequest, AbstractFilmBox& theFilmBox)
{
   if (!theRequest.HasData())
   {
      return theRequest.Refuse(PrintStatus::kMissingAttribute, "No attributes to change");
   }
   if (IsBusy() || theFilmBox.IsBusy())
   {
      return theRequest.Refuse(PrintStatus::kResourceLimitation, "The film box is being printed");
   }
   DICOMDataObject aChanges;
   return itsFilmBoxMessages.ReadSet(
       theRequest.itsService, theRequest.itsCommand, aChanges, [&](DICOMDataObject& theDataset) {
          RWCString anOldFormat;
          RWCString aNewFormat;
          theFilmBox.GetString(kFilmBoxGroup, kImageDisplayFormat, anOldFormat);
          if (theDataset.GetString(kFilmBoxGroup, kImageDisplayFormat, aNewFormat) && aNewFormat != anOldFormat)
          {
             return PrintAnswer{PrintStatus::kInvalidValue,
                                "The display format of a film box stays",
                                {{kFilmBoxGroup, kImageDisplayFormat}}};
          }
          PrintAnswer anAnswer = CheckFilmBox(theDataset);
          if (anAnswer.IsDone())
          {
             anAnswer = CheckMemory(theDataset, PrintStatus::kResourceLimitation);
          }
          if (!anAnswer.IsDone())
          {
             return anAnswer;
          }
          for (const PrintTag::Tag aTag : {PrintTag::kReferencedFilmSession, PrintTag::kReferencedImageBoxes,
                                           PrintTag::kReferencedAnnotationBoxes})
          {
             RemoveReferences(theDataset, aTag); // ours to tell
          }
          theFilmBox.Merge(theDataset);
          theFilmBox.Regenerate();
          return anAnswer;
       });
}

int AbstractPrintManagementMeta::PrintFilmBoxRequest(const Request& theRequest, AbstractFilmBox& theFilmBox)
{
   if (theRequest.itsCommand.GetUINT16(0, CommandElement::ActionTypeID) != kPrintAction)
   {
      return theRequest.Refuse(PrintStatus::kNoSuchAction, "A film box can only be printed");
   }
   if (theFilmBox.HasImageCollision())
   {
      return theRequest.Refuse(PrintStatus::kImageCollision, "Two images have one position");
   }
   DICOMDataObject anInformation;
   if (!itsFilmBoxMessages.ReadPrint(theRequest.itsService, theRequest.itsCommand, anInformation,
                                     [&](DICOMDataObject&) { return AcceptPrint(&theFilmBox); }))
   {
      return 0;
   }
   const BusyWhileInScope aMark(theFilmBox);
   return ActionPrintFilmBox(&theFilmBox, anInformation);
}

int AbstractPrintManagementMeta::DeleteFilmBox(const Request& theRequest, AbstractFilmBox& theFilmBox)
{
   if (theRequest.HasData())
   {
      return theRequest.Refuse(PrintStatus::kMistypedArgument, "A deletion has no data set");
   }
   if (IsBusy() || theFilmBox.IsBusy())
   {
      return theRequest.Refuse(PrintStatus::kResourceLimitation, "The film box is being printed");
   }
   RemoveReference(*this, PrintTag::kReferencedFilmBoxes, theRequest.itsInstance);
   std::erase_if(FilmBoxes(), [&](const auto& theBox) { return theBox.get() == &theFilmBox; });
   DropDeletedBoxes();
   return itsFilmBoxMessages.ReadDelete(theRequest.itsService, theRequest.itsCommand);
}
