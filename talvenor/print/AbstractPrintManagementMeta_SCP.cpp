// The role of SCP: which requests are taken, film session, printer and print jobs. Film boxes are in
// AbstractPrintManagementMeta_SCPFilm.cpp, other boxes in AbstractPrintManagementMeta_SCPBoxes.cpp. Requests are
// checked, the tree follows those that are accepted, and each is answered once.
//
// What can be refused without its data set is refused before that is read: the association skips it then, and nothing
// of it is ever held. The rest is decided between reading the data set and sending the answer (PrintDecision).
#include <algorithm>
#include <utility>

#include "talvenor/association/PDU_Service.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dataset/DICOMObjectIterator.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/foundation/MUIDFactory.h"
#include "talvenor/print/PrintReferences.h"
#include "talvenor/print/PrintRequest.h"

namespace
{
// Digits between full stops, PS3.5 9.1. That a component may not begin with a zero is left to those who make UIDs.
bool IsValidUID(const RWCString& theText)
{
   return !theText.empty() && theText.size() <= UID::kMaximumLength &&
          theText.find_first_not_of("0123456789.") == RWCString::npos && theText.front() != '.' &&
          theText.back() != '.' && theText.find("..") == RWCString::npos;
}

UINT64 CountElements(const DICOMObject& theObject)
{
   UINT64 aCount = 0;
   DICOMObjectIterator aWalk(theObject, ExplicitNoGroupLength);
   for (const VR* aVR = aWalk.First(); aVR != nullptr; aVR = aWalk.Next())
   {
      ++aCount;
      const SequenceVR* const aSequence = aVR->GetAsSequenceVR();
      if (aSequence == nullptr || aSequence->IsEmpty())
      {
         continue;
      }
      for (const DICOMDataObject* const anItem : *aSequence->GetSequenceArray())
      {
         aCount += 1 + (anItem != nullptr ? CountElements(*anItem) : 0);
      }
   }
   return aCount;
}

// Elements and items take memory besides their values: without counting them, empty ones would take ten times what they
// are allowed.
UINT64 SizeOf(const DICOMObject& theObject)
{
   constexpr UINT64 kOverhead = 100; // bytes, about
   return theObject.GetEncodedLength(ExplicitNoGroupLength) + kOverhead * CountElements(theObject);
}

UINT64 SizeOf(const AbstractFilmBox& theFilmBox)
{
   UINT64 aSize = SizeOf(static_cast<const DICOMObject&>(theFilmBox));
   for (const auto& aBox : theFilmBox.GetImageBoxes())
   {
      aSize += SizeOf(*aBox);
   }
   for (const auto& aBox : theFilmBox.GetAnnotationBoxes())
   {
      aSize += SizeOf(*aBox);
   }
   return aSize;
}
} // namespace

// A SOP class, and who takes its requests.
struct AbstractPrintManagementMeta::Service
{
   const char* itsSOPClass;
   const NService* itsRequests[4]; // null behind the last
   int (AbstractPrintManagementMeta::*itsRead)(const Request& theRequest);
};

const AbstractPrintManagementMeta::Service* AbstractPrintManagementMeta::FindService(const RWCString& theSOPClass)
{
   using Meta = AbstractPrintManagementMeta;
   static constexpr Service kServices[] = {
       {PrintSOPClass::kFilmSession, {&kNCreate, &kNSet, &kNAction, &kNDelete}, &Meta::ReadFilmSessionRequest},
       {PrintSOPClass::kFilmBox, {&kNCreate, &kNSet, &kNAction, &kNDelete}, &Meta::ReadFilmBoxRequest},
       {PrintSOPClass::kGrayscaleImageBox, {&kNSet}, &Meta::ReadImageBoxRequest},
       {PrintSOPClass::kColorImageBox, {&kNSet}, &Meta::ReadImageBoxRequest},
       {PrintSOPClass::kStandardColorImageBox, {&kNSet}, &Meta::ReadImageBoxRequest},
       {PrintSOPClass::kReferencedImageBox, {&kNSet}, &Meta::ReadImageBoxRequest},
       {PrintSOPClass::kAnnotationBox, {&kNSet}, &Meta::ReadAnnotationBoxRequest},
       {PrintSOPClass::kVOILUTBox, {&kNCreate, &kNSet, &kNDelete}, &Meta::ReadStandaloneBoxRequest},
       {PrintSOPClass::kPresentationLUT, {&kNCreate, &kNSet, &kNDelete}, &Meta::ReadStandaloneBoxRequest},
       {PrintSOPClass::kImageOverlayBox, {&kNCreate, &kNSet, &kNDelete}, &Meta::ReadStandaloneBoxRequest},
       {PrintSOPClass::kPrintOverlayBox, {&kNCreate, &kNSet, &kNDelete}, &Meta::ReadStandaloneBoxRequest},
       {PrintSOPClass::kPrinter, {&kNGet}, &Meta::ReadPrinterRequest},
       {PrintSOPClass::kPrintJob, {&kNGet}, &Meta::ReadPrintJobRequest},
   };
   const auto aPlace = std::find_if(std::begin(kServices), std::end(kServices),
                                    [&](const Service& theService) { return theSOPClass == theService.itsSOPClass; });
   return aPlace != std::end(kServices) ? &*aPlace : nullptr;
}

// Image boxes and look-up tables differ between the meta SOP classes.
bool AbstractPrintManagementMeta::Serves(const Service& theKind)
{
   UID anOwnClass;
   if (theKind.itsRead == &AbstractPrintManagementMeta::ReadImageBoxRequest)
   {
      const StandardBox* const aMessages = GetImageBox();
      return aMessages != nullptr && aMessages->GetUID(anOwnClass) && anOwnClass == theKind.itsSOPClass;
   }
   return theKind.itsRead != &AbstractPrintManagementMeta::ReadStandaloneBoxRequest ||
          FindStandaloneMessages(theKind.itsSOPClass) != nullptr;
}

int AbstractPrintManagementMeta::Read(PDU_Service& theService, const DICOMCommandObject& theCommand)
{
   const UINT16 aField = theCommand.GetUINT16(0, CommandElement::CommandField);
   const bool isEvent = aField == kNEventReport.itsRequest.itsField;
   const NService* const aKind = isEvent ? &kNEventReport : FindRequest(aField);
   if (aKind == nullptr)
   {
      theService.SetResultCode(TN_COMMAND_NOT_SUPPORTED);
      return 0;
   }
   RWCString aSOPClass;
   theCommand.GetString(0, aKind->itsSOPClass, aSOPClass);
   RWCString anInstance;
   if (!theCommand.GetString(0, CommandElement::AffectedSOPInstanceUID, anInstance))
   {
      theCommand.GetString(0, CommandElement::RequestedSOPInstanceUID, anInstance);
   }
   const Request aRequest = {theService, theCommand, *aKind, UID(aSOPClass), UID(anInstance)};
   if (!AcceptSOPClass(aRequest.itsSOPClass))
   {
      return aRequest.Refuse(PrintStatus::kClassNotSupported, "SOP class not accepted");
   }
   const Service* const aService = isEvent ? nullptr : FindService(aSOPClass);
   if (aService != nullptr)
   {
      return ReadRequest(*aService, aRequest, anInstance);
   }
   if (isEvent && ReadEventReport(theService, theCommand))
   {
      return 1;
   }
   theService.SetResultCode(TN_SOP_CLASS_MISMATCH);
   return 0;
}

// theInstance is the text that the command has, if any.
int AbstractPrintManagementMeta::ReadRequest(const Service& theKind, const Request& theRequest,
                                             const RWCString& theInstance)
{
   if (!Serves(theKind))
   {
      return theRequest.Refuse(PrintStatus::kClassNotSupported, "SOP class not served");
   }
   const auto& aRequests = theKind.itsRequests;
   if (std::find(std::begin(aRequests), std::end(aRequests), &theRequest.itsKind) == std::end(aRequests))
   {
      return theRequest.Refuse(PrintStatus::kUnrecognizedOperation, "No operation of this SOP class");
   }
   const bool isLeftToUs = theRequest.Is(kNCreate) && theInstance.empty(); // PS3.7 10.1.5.1.4
   if (!isLeftToUs && !IsValidUID(theInstance))
   {
      return theRequest.Refuse(PrintStatus::kInvalidInstance, "SOP instance UID not valid");
   }
   if (theRequest.HasData() && GetMemoryUse() >= itsMemoryLimit)
   {
      return theRequest.Refuse(theKind.itsRead == &AbstractPrintManagementMeta::ReadImageBoxRequest
                                   ? PrintStatus::kNoMemoryForImage
                                   : PrintStatus::kResourceLimitation,
                               "No room for more");
   }
   if (!isLeftToUs && theRequest.itsCommand.HasNonNullAttribute(0, theRequest.itsKind.itsInstance))
   {
      return (this->*theKind.itsRead)(theRequest);
   }
   // From here on the command names the instance, where it is looked for.
   const UID anInstance = isLeftToUs ? NewInstanceUID(theRequest.itsSOPClass) : theRequest.itsInstance;
   DICOMCommandObject aNamed = theRequest.itsCommand;
   aNamed.Push(new VR(0, theRequest.itsKind.itsInstance, anInstance));
   return (this->*theKind.itsRead)(
       {theRequest.itsService, aNamed, theRequest.itsKind, theRequest.itsSOPClass, anInstance});
}

int AbstractPrintManagementMeta::ReadFilmSessionRequest(const Request& theRequest)
{
   return ReadBasicFilmSession(theRequest.itsService, theRequest.itsCommand, theRequest.itsKind.itsRequest.itsField,
                               theRequest.itsInstance);
}

int AbstractPrintManagementMeta::ReadFilmBoxRequest(const Request& theRequest)
{
   return ReadBasicFilmBox(theRequest.itsService, theRequest.itsCommand, theRequest.itsKind.itsRequest.itsField,
                           theRequest.itsInstance);
}

int AbstractPrintManagementMeta::ReadBasicFilmSession(PDU_Service& theService, const DICOMCommandObject& theRequest,
                                                      UINT16 theCommandField, const UID& theInstance)
{
   const NService* const aKind = FindRequest(theCommandField);
   if (aKind == nullptr || aKind == &kNGet)
   {
      return 0;
   }
   const Request aRequest = {theService, theRequest, *aKind, PrintSOPClass::kFilmSession, theInstance};
   if (aKind == &kNCreate)
   {
      return CreateSession(aRequest);
   }
   if (!IsCreated() || theInstance != GetSOPInstanceUID())
   {
      return aRequest.Refuse(PrintStatus::kNoSuchInstance, "No such film session");
   }
   if (aKind == &kNAction)
   {
      return PrintSessionRequest(aRequest);
   }
   return aKind == &kNSet ? SetSession(aRequest) : DeleteSession(aRequest);
}

int AbstractPrintManagementMeta::CreateSession(const Request& theRequest)
{
   if (IsCreated())
   {
      return theRequest.itsInstance == GetSOPInstanceUID()
                 ? theRequest.Refuse(PrintStatus::kDuplicateInstance, "The film session exists")
                 : theRequest.Refuse(PrintStatus::kResourceLimitation, "One film session at a time");
   }
   DICOMDataObject anAttributes;
   return itsFilmSessionMessages.ReadCreate(
       theRequest.itsService, theRequest.itsCommand, anAttributes, [&](DICOMDataObject& theDataset) {
          PrintAnswer anAnswer = CheckMemory(theDataset, PrintStatus::kResourceLimitation);
          if (!anAnswer.IsDone())
          {
             return anAnswer;
          }
          RemoveReferences(theDataset, PrintTag::kReferencedFilmBoxes); // ours to tell
          Reset();
          Merge(theDataset);
          ProtoGen();
          SetSOPInstanceUID(theRequest.itsInstance);
          SetCreated(1);
          anAnswer.itsDataset = this;
          return anAnswer;
       });
}

int AbstractPrintManagementMeta::SetSession(const Request& theRequest)
{
   if (!theRequest.HasData())
   {
      return theRequest.Refuse(PrintStatus::kMissingAttribute, "No attributes to change");
   }
   if (IsAnythingBusy())
   {
      return theRequest.Refuse(PrintStatus::kResourceLimitation, "The film session is being printed");
   }
   DICOMDataObject aChanges;
   return itsFilmSessionMessages.ReadSet(
       theRequest.itsService, theRequest.itsCommand, aChanges, [&](DICOMDataObject& theDataset) {
          PrintAnswer anAnswer = CheckMemory(theDataset, PrintStatus::kResourceLimitation);
          if (!anAnswer.IsDone())
          {
             return anAnswer;
          }
          RemoveReferences(theDataset, PrintTag::kReferencedFilmBoxes);
          Merge(theDataset);
          // A session that is changed keeps its name and its films.
          PrintParts<AbstractFilmBox> aFilmBoxes = std::move(FilmBoxes());
          PrintParts<AbstractPrintJob> aJobs = std::move(PrintJobs());
          ProtoGen();
          SetSOPInstanceUID(theRequest.itsInstance);
          FilmBoxes() = std::move(aFilmBoxes);
          PrintJobs() = std::move(aJobs);
          ResyncAbstractFilmBoxs();
          return anAnswer;
       });
}

int AbstractPrintManagementMeta::PrintSessionRequest(const Request& theRequest)
{
   if (theRequest.itsCommand.GetUINT16(0, CommandElement::ActionTypeID) != kPrintAction)
   {
      return theRequest.Refuse(PrintStatus::kNoSuchAction, "A film session can only be printed");
   }
   const PrintParts<AbstractFilmBox>& aFilmBoxes = GetFilmBoxes();
   if (aFilmBoxes.empty())
   {
      return theRequest.Refuse(PrintStatus::kNoFilmBoxes, "The film session has no film boxes");
   }
   if (std::any_of(aFilmBoxes.begin(), aFilmBoxes.end(),
                   [](const auto& theBox) { return theBox->HasImageCollision(); }))
   {
      return theRequest.Refuse(PrintStatus::kImageCollision, "Two images have one position");
   }
   DICOMDataObject anInformation;
   if (!itsFilmSessionMessages.ReadPrint(theRequest.itsService, theRequest.itsCommand, anInformation,
                                         [&](DICOMDataObject&) { return AcceptPrint(nullptr); }))
   {
      return 0;
   }
   const BusyWhileInScope aMark(*this);
   return ActionPrint(this, anInformation);
}

int AbstractPrintManagementMeta::DeleteSession(const Request& theRequest)
{
   if (theRequest.HasData())
   {
      return theRequest.Refuse(PrintStatus::kMistypedArgument, "A deletion has no data set");
   }
   if (IsAnythingBusy())
   {
      return theRequest.Refuse(PrintStatus::kResourceLimitation, "The film session is being printed");
   }
   DeleteAll();
   DropDeletedBoxes();
   Reset();
   SetCreated(0);
   return itsFilmSessionMessages.ReadDelete(theRequest.itsService, theRequest.itsCommand);
}

UINT64 AbstractPrintManagementMeta::GetMemoryUse() const
{
   UINT64 aSize = SizeOf(static_cast<const DICOMObject&>(*this));
   for (const auto& aFilmBox : GetFilmBoxes())
   {
      aSize += SizeOf(*aFilmBox);
   }
   for (const auto& aBox : itsStandaloneBoxes)
   {
      aSize += SizeOf(static_cast<const DICOMObject&>(*aBox));
   }
   return aSize;
}

PrintAnswer AbstractPrintManagementMeta::CheckMemory(const DICOMDataObject& theNewOne, UINT16 theStatus) const
{
   if (SizeOf(theNewOne) + GetMemoryUse() > itsMemoryLimit)
   {
      return {theStatus, "The print session has become too large", {}};
   }
   return {};
}

int AbstractPrintManagementMeta::ReadPrinterRequest(const Request& theRequest)
{
   if (theRequest.itsInstance != itsPrinter->GetSOPInstanceUID())
   {
      return theRequest.Refuse(PrintStatus::kNoSuchInstance, "No such printer");
   }
   return itsPrinterMessages.ReadGet(theRequest.itsService, theRequest.itsCommand, *itsPrinter);
}

int AbstractPrintManagementMeta::ReadPrintJobRequest(const Request& theRequest)
{
   AbstractPrintJob* const aJob = FindPart(GetPrintJobs(), theRequest.itsInstance);
   if (aJob == nullptr)
   {
      return theRequest.Refuse(PrintStatus::kNoSuchInstance, "No such print job");
   }
   return itsPrintJobMessages.ReadGet(theRequest.itsService, theRequest.itsCommand, *aJob);
}

UID AbstractPrintManagementMeta::NewInstanceUID(const UID& theSOPClass)
{
   UID anInstance;
   if (!GetNewSOPInstanceUID(theSOPClass, anInstance) || anInstance.IsNull())
   {
      anInstance.Set(MUIDFactory::GetInstance().GetUID());
   }
   return anInstance;
}

bool AbstractPrintManagementMeta::IsAnythingBusy() const
{
   const auto& aFilmBoxes = GetFilmBoxes();
   return IsBusy() || std::any_of(aFilmBoxes.begin(), aFilmBoxes.end(),
                                  [](const auto& theFilmBox) { return theFilmBox->IsBusy(); });
}
