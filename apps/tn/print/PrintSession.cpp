#include "apps/tn/print/PrintSession.h"

#include "apps/tn/base/ExitCode.h"
#include "apps/tn/base/Tags.h"
#include "apps/tn/base/ValueText.h"
#include "apps/tn/network/AssociationAnswers.h"
#include "apps/tn/network/NetworkFailure.h"
#include "apps/tn/print/PrintTags.h"
#include "talvenor/association/PresentationContextProposals.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/foundation/OneLine.h"
#include "talvenor/print/PrintManagementMetas.h"
#include "talvenor/transfer/TransferSyntaxType.h"
#include "talvenor/ul/SocketDULStreamFactory.h"

namespace
{
using namespace PrintTags;

constexpr UINT64 kLongestAnswer = 16 << 20; // bytes: it is a few attributes

// That may come in place of one answer: the question is asked again then.
constexpr int kMostEvents = 8;

void Put(DICOMObject& theObject, UINT32 theTag, UINT16 theType, const std::string& theText)
{
   theObject.Push(MakeElement(theTag, theType, theText).release());
}

// All that is set from outside are code strings, but for the number of copies.
void PutAll(DICOMObject& theObject, const PrintAttributes& theAttributes)
{
   for (const auto& [aTag, aText] : theAttributes)
   {
      Put(theObject, aTag,
          aTag == kNumberOfCopies  ? VRCode::IS
          : aTag == kDisplayFormat ? VRCode::ST
                                   : VRCode::CS,
          aText);
   }
}

const char* OperationText(ErrorDescription::Operation theOperation)
{
   switch (theOperation)
   {
   case ErrorDescription::NActionRequestWrite:
   case ErrorDescription::NActionResponseRead: return "printing";
   case ErrorDescription::NCreateRequestWrite:
   case ErrorDescription::NCreateResponseRead: return "setting up";
   case ErrorDescription::NDeleteRequestWrite:
   case ErrorDescription::NDeleteResponseRead: return "clearing up";
   case ErrorDescription::NGetRequestWrite:
   case ErrorDescription::NGetResponseRead: return "asking for attributes";
   case ErrorDescription::NSetRequestWrite:
   case ErrorDescription::NSetResponseRead: return "sending an image";
   default: return "printing";
   }
}
} // namespace

// The library's side of the session: of grey or of colour images, whose callbacks are the same.
class PrintSession::Meta
{
public:
   virtual ~Meta() = default;
   virtual AbstractPrintManagementMeta& Get() = 0;

   static std::unique_ptr<Meta> New(PrintSession& theSession, bool theIsColour);

protected:
   explicit Meta(PrintSession& theSession) : itsSession(theSession) {}

   int TakeError(const ErrorDescription& theError)
   {
      const ErrorDescription::ErrorType aType = theError.GetErrorType();
      std::string aText = std::string(OperationText(theError.GetOperation())) + ": " + theError.GetMessage();
      if (theError.GetDICOMStatus() != 0)
      {
         char aNumber[16];
         std::snprintf(aNumber, sizeof aNumber, " (%04XH)", unsigned{theError.GetDICOMStatus()});
         aText += aNumber;
      }
      if (theError.GetResponseCommand() != nullptr)
      {
         const std::string aComment = TextOf(*theError.GetResponseCommand(), CommandTag::kErrorComment);
         aText += aComment.empty() ? "" : ": " + aComment;
      }
      if (aType == ErrorDescription::Warning)
      {
         itsSession.itsTell(aText);
         return 1;
      }
      // What did not come over the network is told by the association.
      const bool isOfPrinter = aType != ErrorDescription::ReadFailed && aType != ErrorDescription::WriteFailed;
      itsSession.itsFault = isOfPrinter && itsSession.itsFault.empty() ? aText : itsSession.itsFault;
      return 0;
   }
   void TakeEvent(const char* theSource, const char* const (&theNames)[5], UINT16 theEvent,
                  const DICOMDataObject& theInformation, UINT32 theInfo)
   {
      ++itsSession.itsEvents;
      const std::string aName = theEvent < 5 ? theNames[theEvent] : "event " + std::to_string(theEvent);
      const std::string anInfo = TextOf(theInformation, theInfo);
      itsSession.itsTell(theSource + aName + (anInfo.empty() || anInfo == "NORMAL" ? "" : ": " + anInfo));
   }
   void BeginImage() { itsSession.itsWatchdog.Begin(itsSession.itsRequester.GetTimeout()); }

   PrintSession& itsSession;

private:
   template <class Base>
   class Of;
};

template <class Base>
class PrintSession::Meta::Of : public Meta, public Base
{
public:
   explicit Of(PrintSession& theSession) : Meta(theSession) {}

   AbstractPrintManagementMeta& Get() override { return *this; }
   PresentationLUTBox* GetPresentationLUTBox() override { return &this->itsPresentationLUTBoxMessages; }
   int ErrorCallback(const ErrorDescription& theError) override { return TakeError(theError); }
   int WriteBox(PDU_Service& theService, const UID& theInstance, DICOMDataObject& theBox) override
   {
      BeginImage(); // each has the whole time
      return Base::WriteBox(theService, theInstance, theBox);
   }
   void PrinterEventCallback(AbstractPrinter&, DICOMDataObject& theInformation, UINT16 theEvent, void*) override
   {
      static constexpr const char* kNames[5] = {"?", "NORMAL", "WARNING", "FAILURE", "?"}; // PS3.4 H.4.6.2.2
      TakeEvent("the printer reports ", kNames, theEvent, theInformation, kPrinterStatusInfo);
   }
   void PrintJobEventCallback(AbstractPrintJob&, DICOMDataObject& theInformation, UINT16 theEvent, void*) override
   {
      static constexpr const char* kNames[5] = {"?", "pending", "printing", "done", "failure"}; // PS3.4 H.4.5.2.2
      TakeEvent("the print job is ", kNames, theEvent, theInformation, kExecutionStatusInfo);
   }
   int ActionPrintFilmBox(AbstractFilmBox*, DICOMDataObject&) override { return 0; } // a client prints nothing itself
};

std::unique_ptr<PrintSession::Meta> PrintSession::Meta::New(PrintSession& theSession, bool theIsColour)
{
   if (theIsColour)
   {
      return std::make_unique<Of<StandardColorPrintManagementMeta>>(theSession);
   }
   return std::make_unique<Of<BasicGrayscalePrintManagementMeta>>(theSession);
}

PrintSession::PrintSession(const Requester& theRequester, bool theIsColour, PrintAttributes theSession, Teller theTell)
    : itsRequester(theRequester), itsTell(std::move(theTell)), itsService(SocketDULStreamFactory::GetInstance()),
      itsMeta(Meta::New(*this, theIsColour)), itsIsColour(theIsColour)
{
   PutAll(itsMeta->Get(), theSession);
   Propose(theIsColour);
   itsService.SetLongestDataset(kLongestAnswer);
   itsRequester.Associate(itsService, itsWatchdog);
   const char* const aClass = theIsColour ? PrintMetaSOPClass::kBasicColor : PrintMetaSOPClass::kBasicGrayscale;
   if (itsService.GetUsablePresentationContextID(UID(aClass)) == 0)
   {
      const NetworkFailure aFailure(ExitCode::kNoContext,
                                    "it does not print that way: " + ExplainClass(itsService, aClass, ""));
      itsRequester.Abort(itsService, itsWatchdog);
      throw aFailure;
   }
}

PrintSession::~PrintSession()
{
   itsRequester.Abort(itsService, itsWatchdog);
}

void PrintSession::Propose(bool theIsColour)
{
   for (const char* const aClass : {theIsColour ? PrintMetaSOPClass::kBasicColor : PrintMetaSOPClass::kBasicGrayscale,
                                    PrintSOPClass::kPresentationLUT, PrintSOPClass::kPrintJob})
   {
      auto aProposals = std::make_unique<PresentationContextProposals>(aClass);
      aProposals->AddTransferSyntaxList(new PresentationContextProposals::TransferSyntaxList{
          TransferSyntaxType::TSLEExplicitUID, TransferSyntaxType::TSLEImplicitUID});
      itsService.AddPresentationContextProposals(aProposals.release());
   }
}

template <class Action>
int PrintSession::Watched(Action theAction)
{
   itsFault.clear();
   itsWatchdog.Begin(itsRequester.GetTimeout());
   return theAction();
}

template <class Action>
void PrintSession::Require(Action theAction)
{
   const int isDone = Watched(theAction);
   const bool wasLate = itsWatchdog.End();
   if (!isDone)
   {
      const NetworkFailure aFailure = itsFault.empty() ? itsRequester.ExplainFailure(itsService, wasLate)
                                                       : NetworkFailure(ExitCode::kPeerFailed, itsFault);
      itsRequester.Abort(itsService, itsWatchdog);
      throw aFailure;
   }
}

std::string PrintSession::Status::Text() const
{
   std::string aText = itsStatus.empty() ? "of unknown status" : itsStatus;
   aText += itsInfo.empty() || itsInfo == itsStatus ? "" : " (" + itsInfo + ")";
   for (const std::string& aPart : {itsName, itsManufacturer, itsModel})
   {
      aText += aPart.empty() ? "" : ", " + aPart;
   }
   return OnOneLine(aText);
}

PrintSession::Status PrintSession::AskPrinter()
{
   DICOMDataObject anAnswer; // all that it tells: some refuse to be asked for what they do not know
   for (int i = 0; i < kMostEvents && anAnswer.IsEmpty(); ++i)
   {
      Require([&] { return itsMeta->Get().GetPrinter(itsService, anAnswer); });
   }
   return {TextOf(anAnswer, kPrinterStatus), TextOf(anAnswer, kPrinterStatusInfo), TextOf(anAnswer, kPrinterName),
           TextOf(anAnswer, kManufacturer), TextOf(anAnswer, kModelName)};
}

// The levels are what is to be seen (P-values): the printer is told so where it knows presentation LUTs, and some print
// nothing without (PS3.4 H.4.9).
void PrintSession::MakePresentationLUT()
{
   if (itsIsColour || !itsPresentationLUT.empty() ||
       itsService.GetUsablePresentationContextID(UID(PrintSOPClass::kPresentationLUT)) == 0)
   {
      return;
   }
   DICOMDataObject aTable;
   Put(aTable, kPresentationLUTShape, VRCode::CS, "IDENTITY");
   UID anInstance;
   Require([&] {
      return itsMeta->Get().GetPresentationLUTBox()->WriteCreate(itsService, anInstance, aTable, itsMeta->Get());
   });
   itsPresentationLUT = anInstance.ToString();
}

void PrintSession::SendFilm(const PrintAttributes& theFilm, Images theImages)
{
   AbstractPrintManagementMeta& aMeta = itsMeta->Get();
   Require([&] { return aMeta.Write(itsService); }); // the session itself comes first
   MakePresentationLUT();
   auto aFilm = std::make_unique<AbstractFilmBox>(aMeta);
   PutAll(*aFilm, theFilm);
   if (!itsPresentationLUT.empty())
   {
      aFilm->AddReferenceSequence(GroupOf(kReferencedPresentationLUTs), ElementOf(kReferencedPresentationLUTs),
                                  PrintSOPClass::kPresentationLUT, itsPresentationLUT);
   }
   UINT16 aPosition = 0;
   for (std::unique_ptr<DICOMDataObject>& anImage : theImages)
   {
      auto aBox = std::make_unique<AbstractImageBox>(aMeta);
      Put(*aBox, kImagePosition, VRCode::US, std::to_string(++aPosition));
      const UINT32 aTag = itsIsColour ? kColorImageSequence : kGrayscaleImageSequence;
      auto aSequence = std::make_unique<SequenceVR>(GroupOf(aTag), ElementOf(aTag));
      aSequence->SetTypeCode(VRCode::SQ);
      aBox->DICOMObject::Push(aSequence.release());
      aBox->Push(anImage.release());
      aFilm->Add(aBox.release());
   }
   AbstractFilmBox& aSent = *aFilm;
   aMeta.Add(aFilm.release());
   Require([&] { return WriteFilm(aSent); });
   aSent.DeleteAll(); // the printer has them
}

// An event report that comes in place of the answer to the creation of the film box ends that without the printer's
// image boxes. The film box is made anew then: printed with the session, it would be an empty sheet.
int PrintSession::WriteFilm(AbstractFilmBox& theFilm)
{
   constexpr int kMostAttempts = 5;
   AbstractPrintManagementMeta& aMeta = itsMeta->Get();
   for (int anAttempt = 1;; ++anAttempt)
   {
      const unsigned long anEvents = itsEvents;
      if (aMeta.Write(itsService))
      {
         return 1;
      }
      const bool isOvertaken =
          itsEvents != anEvents && theFilm.IsCreated() && FindVR(theFilm, kReferencedImageBoxes) == nullptr;
      if (!isOvertaken || anAttempt == kMostAttempts ||
          !aMeta.GetFilmBoxMessages().WriteDelete(itsService, theFilm.GetSOPInstanceUID(), aMeta))
      {
         return 0;
      }
      itsFault.clear();
      theFilm.SetCreated(0);
      theFilm.SetSOPInstanceUID(UID());
   }
}

std::string PrintSession::PrintFilm()
{
   const std::string aJob = Print(false);
   if (!Watched([&] { return itsMeta->Get().DeleteFilm(itsService); }) && !itsFault.empty())
   {
      itsTell(itsFault); // it is printed all the same
   }
   itsWatchdog.End();
   return aJob;
}

std::string PrintSession::PrintAll()
{
   return Print(true);
}

std::string PrintSession::Print(bool theIsAll)
{
   AbstractPrintManagementMeta& aMeta = itsMeta->Get();
   UID aJob;
   Require([&] {
      return theIsAll ? aMeta.PrintSession(itsService, aJob)
                      : aMeta.PrintFilm(itsService, aJob, AbstractPrintManagementMeta::kLastFilmBox);
   });
   const bool isKnown = std::exchange(itsLastJob, aJob.ToString()) == aJob.ToString(); // of an earlier film
   if (aJob.IsNull() || isKnown || itsService.GetUsablePresentationContextID(UID(PrintSOPClass::kPrintJob)) == 0)
   {
      return "";
   }
   return AskJob(aJob);
}

// Once more where an event report comes in place of the answer: what the printer has to tell of this job is out of the
// way of the next film then.
std::string PrintSession::AskJob(const UID& theJob)
{
   DICOMDataObject anAnswer;
   for (int i = 0; i < kMostEvents && anAnswer.IsEmpty(); ++i)
   {
      const int isTold = Watched([&] { return itsMeta->Get().GetPrintJob(itsService, theJob, anAnswer); });
      itsWatchdog.End();
      if (!isTold) // it may be over, and forgotten
      {
         return "";
      }
   }
   const std::string anInfo = TextOf(anAnswer, kExecutionStatusInfo);
   const std::string aStatus = TextOf(anAnswer, kExecutionStatus);
   return aStatus.empty() ? "" : "job " + aStatus + (anInfo.empty() || anInfo == aStatus ? "" : " (" + anInfo + ")");
}

void PrintSession::End()
{
   AbstractPrintManagementMeta& aMeta = itsMeta->Get();
   if (aMeta.IsCreated() && !Watched([&] { return aMeta.Delete(itsService); }) && !itsFault.empty())
   {
      itsTell(itsFault);
   }
   itsWatchdog.Begin(itsRequester.GetTimeout());
   itsService.Close();
   itsWatchdog.End();
}
