#include "apps/tn/print/PrintRole.h"

#include <algorithm>
#include <iterator>

#include "apps/tn/base/Tags.h"
#include "apps/tn/base/ValueText.h"
#include "apps/tn/print/PrintTags.h"
#include "talvenor/association/PDU_Service.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/print/PrintManagementMetas.h"

namespace
{
const char* const kAccepted[] = {PrintMetaSOPClass::kBasicGrayscale, PrintMetaSOPClass::kBasicColor,
                                 PrintSOPClass::kPresentationLUT, PrintSOPClass::kPrinter, PrintSOPClass::kPrintJob};

// PS3.4 H.4.1.2.4 and H.4.2.2.4, each for the session and for a film box.
constexpr UINT16 kQueueFull[] = {0xC601, 0xC602};
constexpr UINT16 kEmptyPage[] = {0xB602, 0xB603};

constexpr UINT16 kJobDone = 3; // PS3.4 H.4.5.2.1

constexpr UINT32 kDataSetType = 0x00000800; // of command sets
constexpr UINT32 kRequestedSOPInstanceUID = 0x00001001;

bool HasContext(const PDU_Service& theService, const char* theSOPClass)
{
   return theService.GetUsablePresentationContextID(UID(theSOPClass)) != 0;
}

bool IsJobRequest(const DICOMCommandObject& theCommand)
{
   constexpr UINT16 kNGet = 0x0110;
   return theCommand.GetUINT16(0, ElementOf(CommandTag::kCommandField)) == kNGet &&
          TextOf(theCommand, CommandTag::kRequestedSOPClassUID) == PrintSOPClass::kPrintJob;
}

std::vector<const AbstractFilmBox*> FilmBoxesOf(const AbstractFilmSession& theSession)
{
   std::vector<const AbstractFilmBox*> aFilmBoxes;
   for (const auto& aFilmBox : theSession.GetFilmBoxes())
   {
      aFilmBoxes.push_back(aFilmBox.get());
   }
   return aFilmBoxes;
}

bool HasImage(const AbstractFilmBox& theFilmBox)
{
   const auto& aBoxes = theFilmBox.GetImageBoxes();
   return std::any_of(aBoxes.begin(), aBoxes.end(), [](const auto& theBox) {
      return !ItemsOf(FindVR(*theBox, PrintTags::kGrayscaleImageSequence)).empty() ||
             !ItemsOf(FindVR(*theBox, PrintTags::kColorImageSequence)).empty();
   });
}
} // namespace

// A print session of one kind. A film is written before its client is told that it is printed.
template <class Meta>
class PrintRole::Session : public Meta
{
public:
   explicit Session(PrintRole& theRole) : itsRole(theRole) {}

   PresentationLUTBox* GetPresentationLUTBox() override { return &this->itsPresentationLUTBoxMessages; }

   PrintAnswer AcceptPrint(const AbstractFilmBox* theFilmBox) override { return itsRole.Print(*this, theFilmBox); }
   int ActionPrintFilmBox(AbstractFilmBox*, DICOMDataObject&) override
   {
      itsRole.ReportJob(*this);
      return 1;
   }
   int ActionPrint(AbstractFilmSession*, DICOMDataObject&) override
   {
      itsRole.ReportJob(*this);
      return 1;
   }

   // Those of an SCU.
   void PrinterEventCallback(AbstractPrinter&, DICOMDataObject&, UINT16, void*) override {}
   void PrintJobEventCallback(AbstractPrintJob&, DICOMDataObject&, UINT16, void*) override {}
   int ErrorCallback(const ErrorDescription&) override { return 0; }

private:
   PrintRole& itsRole;
};

PrintRole::PrintRole(std::shared_ptr<Printer> thePrinter)
    : itsPrinter(std::move(thePrinter)), itsMemory(itsPrinter->GetMemory()), itsToldStatus(itsPrinter->GetStatus()),
      itsGraySession(std::make_unique<Session<BasicGrayscalePrintManagementMeta>>(*this)),
      itsColorSession(std::make_unique<Session<StandardColorPrintManagementMeta>>(*this))
{}

PrintRole::~PrintRole() = default;

UINT64 PrintRole::GetLongestDataset() const
{
   return itsPrinter->GetMemory().GetLongestDataset();
}

bool PrintRole::Accepts(const RWCString& theAbstractSyntax) const
{
   return std::find(std::begin(kAccepted), std::end(kAccepted), theAbstractSyntax) != std::end(kAccepted);
}

// Printer, print jobs and presentation LUTs have contexts of their own, which belong to no meta SOP class: the gray
// session serves them where there is one.
AbstractPrintManagementMeta& PrintRole::FindSession(const PDU_Service& theService)
{
   const UsablePresentationContext* const aContext = theService.GetCurrentPresentationContext();
   const bool isColor = (aContext != nullptr && *aContext == UID(PrintMetaSOPClass::kBasicColor)) ||
                        !HasContext(theService, PrintMetaSOPClass::kBasicGrayscale);
   return isColor ? *itsColorSession : *itsGraySession;
}

int PrintRole::Serve(PDU_Service& theService, DICOMCommandObject& theCommand)
{
   itsService = &theService;
   theService.SetResultCode(TN_NO_ERROR);
   if (itsEvents.TakeAnswer(theService, theCommand))
   {
      return 1;
   }
   AbstractPrintManagementMeta& aSession = FindSession(theService);
   TellStatus();
   const int isDone = Read(theService, theCommand);
   const bool isAnswered = theService.Connected() && theService.GetResultCode() == TN_NO_ERROR;
   if (isDone || isAnswered)
   {
      ReportStatus(aSession);
   }
   itsRefused += !isDone && isAnswered;
   return isDone || isAnswered;
}

int PrintRole::Read(PDU_Service& theService, const DICOMCommandObject& theCommand)
{
   AbstractPrintManagementMeta& aSession = FindSession(theService);
   AbstractPrintJob* const aJob =
       IsJobRequest(theCommand) ? itsJobs.Find(UID(TextOf(theCommand, kRequestedSOPInstanceUID))) : nullptr;
   if (aJob != nullptr)
   {
      return aSession.GetPrintJobMessages().ReadGet(theService, theCommand, *aJob);
   }
   return ReadInto(aSession, theService, theCommand);
}

// A data set is read where the node has room for the longest, and refused otherwise.
int PrintRole::ReadInto(AbstractPrintManagementMeta& theSession, PDU_Service& theService,
                        const DICOMCommandObject& theCommand)
{
   constexpr UINT16 kNoDataset = 0x0101;
   const bool hasDataset = theCommand.GetUINT16(0, ElementOf(kDataSetType)) != kNoDataset;
   const bool hasRoom = !hasDataset || itsMemory.BeginReading();
   theSession.SetMemoryLimit(hasRoom ? AbstractPrintManagementMeta::kDefaultMemoryLimit : 0);
   const int isDone = theSession.Read(theService, theCommand);
   itsMemory.End(itsGraySession->GetMemoryUse() + itsColorSession->GetMemoryUse());
   return isDone;
}

// What the printer is asked for.
void PrintRole::TellStatus()
{
   const Printer::Status aStatus = itsPrinter->GetStatus();
   for (AbstractPrintManagementMeta* const aSession : {itsGraySession.get(), itsColorSession.get()})
   {
      AbstractPrinter& aPrinter = aSession->GetPrinterObject();
      const auto aPut = [&](UINT32 theTag, UINT16 theType, std::string_view theText) {
         aPrinter.DICOMObject::Push(MakeElement(theTag, theType, std::string(theText)).release());
      };
      aPut(PrintTags::kManufacturer, VRCode::LO, "Talvenor");
      aPut(PrintTags::kModelName, VRCode::LO, "tn serve --print");
      aPut(PrintTags::kPrinterStatus, VRCode::CS, aStatus.itsText);
      aPut(PrintTags::kPrinterStatusInfo, VRCode::CS, aStatus.itsInfo);
      aPut(PrintTags::kPrinterName, VRCode::LO, itsPrinter->GetName());
   }
}

// Of the whole session without a film box.
PrintAnswer PrintRole::Print(AbstractPrintManagementMeta& theSession, const AbstractFilmBox* theFilmBox)
{
   const bool isFilm = theFilmBox != nullptr;
   const std::vector<const AbstractFilmBox*> aFilmBoxes = isFilm ? std::vector{theFilmBox} : FilmBoxesOf(theSession);
   try
   {
      for (const std::string& aFolder : itsPrinter->Print(theSession, aFilmBoxes))
      {
         NodeLog::Line(*itsService, "printed " + aFolder);
         ++itsFilms;
      }
   }
   catch (const std::exception& anError)
   {
      itsFailures.Line(*itsService, std::string("not printed: ") + anError.what());
      return {kQueueFull[isFilm], "The film cannot be written", {}, nullptr};
   }
   MakeJob(theSession);
   const bool isEmpty = std::none_of(aFilmBoxes.begin(), aFilmBoxes.end(),
                                     [](const AbstractFilmBox* theBox) { return HasImage(*theBox); });
   return {isEmpty ? kEmptyPage[isFilm] : UINT16{0}, "", {}, &itsReply};
}

// For a client that can ask for it.
void PrintRole::MakeJob(AbstractPrintManagementMeta& theSession)
{
   itsJob = nullptr;
   itsReply.Reset();
   if (HasContext(*itsService, PrintSOPClass::kPrintJob))
   {
      itsJob = &itsJobs.Add(theSession, itsPrinter->GetName(), itsService->GetRemoteAddress());
      itsReply.AddReferenceSequence(GroupOf(PrintTags::kReferencedPrintJobs),
                                    ElementOf(PrintTags::kReferencedPrintJobs), PrintSOPClass::kPrintJob,
                                    itsJob->GetSOPInstanceUID().ToString());
   }
}

// Once the client knows the job.
void PrintRole::ReportJob(AbstractPrintManagementMeta& theSession)
{
   if (itsJob != nullptr)
   {
      itsEvents.Report(*itsService, {&theSession.GetPrintJobMessages(), itsJob->GetSOPInstanceUID(), kJobDone,
                                     PrintTags::kExecutionStatusInfo, "NORMAL", itsPrinter->GetName()});
   }
}

// The printer is part of the meta SOP classes: every client takes its events.
void PrintRole::ReportStatus(AbstractPrintManagementMeta& theSession)
{
   const Printer::Status aStatus = itsPrinter->GetStatus();
   if (aStatus == itsToldStatus)
   {
      return;
   }
   itsToldStatus = aStatus;
   for (const char* const aMeta : {PrintMetaSOPClass::kBasicGrayscale, PrintMetaSOPClass::kBasicColor})
   {
      if (!HasContext(*itsService, PrintSOPClass::kPrinter) && HasContext(*itsService, aMeta))
      {
         itsService->AddAbstractSyntaxAlias(UID(PrintSOPClass::kPrinter), UID(aMeta));
      }
   }
   if (HasContext(*itsService, PrintSOPClass::kPrinter))
   {
      itsEvents.Report(*itsService,
                       {&theSession.GetPrinterMessages(), theSession.GetPrinterObject().GetSOPInstanceUID(),
                        aStatus.itsEvent, PrintTags::kPrinterStatusInfo, std::string(aStatus.itsInfo),
                        itsPrinter->GetName()});
   }
}

std::string PrintRole::Describe() const
{
   std::string aText =
       itsFilms == 0 ? "" : std::to_string(itsFilms) + (itsFilms == 1 ? " film" : " films") + " printed";
   if (itsRefused != 0)
   {
      aText += (aText.empty() ? "" : ", ") + std::to_string(itsRefused) + " print requests refused";
   }
   return aText;
}
