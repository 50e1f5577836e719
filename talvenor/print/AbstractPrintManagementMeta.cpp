// Construction, the hooks' defaults, and the role of SCU. The role of SCP is in AbstractPrintManagementMeta_SCP.cpp.
#include "talvenor/print/AbstractPrintManagementMeta.h"

#include <utility>

#include "talvenor/association/PDU_Service.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/print/PrintReferences.h"

AbstractPrintManagementMeta::AbstractPrintManagementMeta(const UID& theMetaSOPClass)
    : AbstractFilmSession(*this), itsMetaSOPClass(theMetaSOPClass), itsPrinter(std::make_unique<AbstractPrinter>(*this))
{}

AbstractPrintManagementMeta::~AbstractPrintManagementMeta() = default;

void* AbstractPrintManagementMeta::SetPrinterEventUserArg(void* theArg)
{
   return std::exchange(itsPrinterEventUserArg, theArg);
}

void* AbstractPrintManagementMeta::SetPrintJobEventUserArg(void* theArg)
{
   return std::exchange(itsPrintJobEventUserArg, theArg);
}

int AbstractPrintManagementMeta::ActionPrint(AbstractFilmSession* theSession, DICOMDataObject&)
{
   return theSession != nullptr;
}

int AbstractPrintManagementMeta::AcceptSOPClass(const UID&)
{
   return 1;
}

unsigned int AbstractPrintManagementMeta::GetAnnotationBoxCount(const RWCString&)
{
   return 0;
}

PrintAnswer AbstractPrintManagementMeta::AcceptPrint(const AbstractFilmBox*)
{
   return {};
}

// Requests name the SOP class of a part, but printers accept the meta SOP class that stands for all obligatory ones
// (PS3.4 H.3.1).
void AbstractPrintManagementMeta::AliasContexts(PDU_Service& theService) const
{
   if (itsMetaSOPClass.IsNull() || theService.GetUsablePresentationContextID(itsMetaSOPClass) == 0)
   {
      return;
   }
   UID anImageBoxClass;
   StandardBox* const aBox = const_cast<AbstractPrintManagementMeta*>(this)->GetImageBox();
   if (aBox != nullptr)
   {
      aBox->GetUID(anImageBoxClass);
   }
   for (const UID& aPart :
        {UID(PrintSOPClass::kFilmSession), UID(PrintSOPClass::kFilmBox), anImageBoxClass, UID(PrintSOPClass::kPrinter)})
   {
      if (!aPart.IsNull() && theService.GetUsablePresentationContextID(aPart) == 0)
      {
         theService.AddAbstractSyntaxAlias(aPart, itsMetaSOPClass);
      }
   }
}

int AbstractPrintManagementMeta::Write(PDU_Service& theService)
{
   AliasContexts(theService);
   if (!IsCreated() && !WriteSession(theService))
   {
      return 0;
   }
   for (const auto& aFilmBox : GetFilmBoxes())
   {
      if ((!aFilmBox->IsCreated() && !CreateAtPrinter(theService, *aFilmBox)) ||
          (aFilmBox->IsUnfinished() && !FillAtPrinter(theService, *aFilmBox)))
      {
         return 0;
      }
   }
   return 1;
}

int AbstractPrintManagementMeta::WriteSession(PDU_Service& theService)
{
   SetSOPClassUID(PrintSOPClass::kFilmSession);
   UID anInstance = GetSOPInstanceUID();
   if (!itsFilmSessionMessages.WriteCreate(theService, anInstance, *this, *this))
   {
      return 0;
   }
   SetSOPInstanceUID(anInstance);
   SetCreated(1);
   return 1;
}

int AbstractPrintManagementMeta::CreateAtPrinter(PDU_Service& theService, AbstractFilmBox& theFilmBox)
{
   theFilmBox.SetSOPClassUID(PrintSOPClass::kFilmBox);
   // What the film box knows of a session that is no more.
   RemoveReferences(theFilmBox, PrintTag::kReferencedFilmSession);
   RemoveReferences(theFilmBox, PrintTag::kReferencedImageBoxes);
   RemoveReferences(theFilmBox, PrintTag::kReferencedAnnotationBoxes);
   AddReference(theFilmBox, PrintTag::kReferencedFilmSession, GetSOPClassUID(), GetSOPInstanceUID());
   UID anInstance = theFilmBox.GetSOPInstanceUID();
   if (!itsFilmBoxMessages.WriteCreate(theService, anInstance, theFilmBox, *this))
   {
      return 0;
   }
   theFilmBox.SetSOPInstanceUID(anInstance);
   theFilmBox.SetCreated(1);
   theFilmBox.SetUnfinished(true);
   for (const auto& aBox : theFilmBox.GetImageBoxes())
   {
      aBox->SetCreated(0);
   }
   return 1;
}

// Goes on where an earlier attempt has failed: a film must not be printed with some of its images only.
int AbstractPrintManagementMeta::FillAtPrinter(PDU_Service& theService, AbstractFilmBox& theFilmBox)
{
   if (!WriteImageBoxes(theService, theFilmBox) || !WriteAnnotationBoxes(theService, theFilmBox))
   {
      return 0;
   }
   theFilmBox.SetUnfinished(false);
   return 1;
}

int AbstractPrintManagementMeta::WriteImageBoxes(PDU_Service& theService, AbstractFilmBox& theFilmBox)
{
   if (!theFilmBox.SetImageBoxInstanceUIDS() &&
       !ReportLocal("Write", "Printer has made fewer image boxes than the film box has"))
   {
      return 0;
   }
   for (const auto& aBox : theFilmBox.GetImageBoxes())
   {
      if (aBox->GetSOPInstanceUID().IsNull() || aBox->IsCreated())
      {
         continue;
      }
      if (!WriteImageBox(theService, *aBox))
      {
         return 0;
      }
      aBox->SetCreated(1);
   }
   return 1;
}

// What the printer is to apply to the image has to exist before the image references it.
int AbstractPrintManagementMeta::WriteImageBox(PDU_Service& theService, AbstractImageBox& theBox)
{
   const auto aCreate = [&](const StandardAdvancedBox& theMessages, const char* theSOPClass, PrintObject& thePart,
                            const MAttributeTag& theReference) {
      UID anInstance = thePart.GetSOPInstanceUID();
      thePart.SetSOPClassUID(theSOPClass);
      if (!thePart.IsCreated() && !theMessages.WriteCreate(theService, anInstance, thePart, *this))
      {
         return false;
      }
      thePart.SetSOPInstanceUID(anInstance);
      thePart.SetCreated(1);
      AddReference(theBox, theReference, theSOPClass, anInstance);
      return true;
   };
   if (!theBox.GetPrintOverlayBoxes().empty() &&
       !aCreate(itsPrintOverlayBoxMessages, PrintSOPClass::kPrintOverlayBox, *theBox.GetPrintOverlayBoxes().front(),
                PrintTag::kReferencedOverlays))
   {
      return 0;
   }
   if (!theBox.GetPresentationLUTBoxes().empty())
   {
      const PresentationLUTBox* const aMessages = GetPresentationLUTBox();
      if (!aCreate(aMessages != nullptr ? *aMessages : itsPresentationLUTBoxMessages, PrintSOPClass::kPresentationLUT,
                   *theBox.GetPresentationLUTBoxes().front(), PrintTag::kReferencedPresentationLUTs))
      {
         return 0;
      }
   }
   return WriteBox(theService, theBox.GetSOPInstanceUID(), theBox);
}

int AbstractPrintManagementMeta::WriteAnnotationBoxes(PDU_Service& theService, AbstractFilmBox& theFilmBox)
{
   if (!theFilmBox.SetAnnotationBoxInstanceUIDS() &&
       !ReportLocal("Write", "Printer has made fewer annotation boxes than the film box has"))
   {
      return 0;
   }
   for (const auto& aBox : theFilmBox.GetAnnotationBoxes())
   {
      if (!aBox->GetSOPInstanceUID().IsNull() &&
          !itsAnnotationBoxMessages.Write(theService, aBox->GetSOPInstanceUID(), *aBox, *this))
      {
         return 0;
      }
   }
   return 1;
}

// A response that lacks what the tree needs of it.
int AbstractPrintManagementMeta::ReportLocal(const char* theMethod, const char* theMessage)
{
   return ErrorCallback(ErrorDescription("printsop", __LINE__, "AbstractPrintManagementMeta", theMethod, theMessage,
                                         ErrorDescription::UnexpectedResponse, ErrorDescription::NCreateResponseRead, 0,
                                         nullptr, nullptr));
}

int AbstractPrintManagementMeta::PrintSession(PDU_Service& theService, UID& thePrintJob)
{
   return !GetFilmBoxes().empty() && Write(theService) &&
          Print(theService, itsFilmSessionMessages, GetSOPInstanceUID(), thePrintJob);
}

int AbstractPrintManagementMeta::PrintFilm(PDU_Service& theService, UID& thePrintJob, UINT16 theIndex)
{
   const std::size_t aCount = GetFilmBoxes().size();
   const std::size_t anIndex = theIndex == kLastFilmBox && aCount != 0 ? aCount - 1 : theIndex;
   return anIndex < aCount && Write(theService) &&
          Print(theService, itsFilmBoxMessages, GetFilmBoxes()[anIndex]->GetSOPInstanceUID(), thePrintJob);
}

int AbstractPrintManagementMeta::Print(PDU_Service& theService, const StandardFilm& theMessages, const UID& theInstance,
                                       UID& thePrintJob)
{
   DICOMDataObject aReply;
   if (!theMessages.WritePrint(theService, theInstance, aReply, *this))
   {
      return 0;
   }
   for (const PrintReference& aReference : ReadReferences(aReply, PrintTag::kReferencedPrintJobs))
   {
      if (FindPart(GetPrintJobs(), aReference.itsSOPInstance) == nullptr)
      {
         auto aJob = std::make_unique<AbstractPrintJob>(*this);
         aJob->SetSOPClassUID(aReference.itsSOPClass);
         aJob->SetSOPInstanceUID(aReference.itsSOPInstance);
         Add(aJob.release());
      }
   }
   thePrintJob = GetPrintJobs().empty() ? UID() : GetPrintJobs().back()->GetSOPInstanceUID();
   return 1;
}

int AbstractPrintManagementMeta::Delete(PDU_Service& theService)
{
   AliasContexts(theService);
   if (!itsFilmSessionMessages.WriteDelete(theService, GetSOPInstanceUID(), *this))
   {
      return 0;
   }
   SetCreated(0);
   for (const auto& aFilmBox : GetFilmBoxes())
   {
      aFilmBox->SetCreated(0);
   }
   return 1;
}

int AbstractPrintManagementMeta::DeleteFilm(PDU_Service& theService)
{
   if (GetFilmBoxes().empty())
   {
      return 1;
   }
   AliasContexts(theService);
   const AbstractFilmBox& aFilmBox = *GetFilmBoxes().back();
   if (aFilmBox.IsCreated() && !itsFilmBoxMessages.WriteDelete(theService, aFilmBox.GetSOPInstanceUID(), *this))
   {
      return 0;
   }
   FilmBoxes().pop_back();
   return 1;
}

int AbstractPrintManagementMeta::GetPrinter(PDU_Service& theService, DICOMDataObject& theAttributes)
{
   AliasContexts(theService);
   return itsPrinterMessages.WriteGet(theService, itsPrinter->GetSOPInstanceUID(), theAttributes, *this);
}

int AbstractPrintManagementMeta::GetPrintJob(PDU_Service& theService, const UID& thePrintJob,
                                             DICOMDataObject& theAttributes)
{
   return itsPrintJobMessages.WriteGet(theService, thePrintJob, theAttributes, *this);
}

int AbstractPrintManagementMeta::ReadEventReport(PDU_Service& theService, const DICOMCommandObject& theCommand)
{
   DICOMDataObject anInformation;
   const UINT16 anEventType = theCommand.GetUINT16(0x0000, 0x1002);
   if (itsPrinterMessages.ReadEventReport(theService, theCommand, anInformation, itsPrinter->GetSOPInstanceUID()))
   {
      PrinterEventCallback(*itsPrinter, anInformation, anEventType, itsPrinterEventUserArg);
      return 1;
   }
   for (const auto& aJob : GetPrintJobs())
   {
      if (itsPrintJobMessages.ReadEventReport(theService, theCommand, anInformation, aJob->GetSOPInstanceUID()))
      {
         PrintJobEventCallback(*aJob, anInformation, anEventType, itsPrintJobEventUserArg);
         return 1;
      }
   }
   // Of a job whose instance the printer has not told yet, or of one that is long over.
   return itsPrintJobMessages.ReadEventReport(theService, theCommand, anInformation, UID());
}
