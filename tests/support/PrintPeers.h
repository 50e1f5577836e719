// A client and a printer that drive the messages of print management themselves, as peers do that are not ours. For
// tests of tn.
#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "apps/tn/base/Tags.h"
#include "apps/tn/base/ValueText.h"
#include "support/ServedNode.h"
#include "talvenor/association/PDU_Service.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/print/PrintManagementMetas.h"
#include "talvenor/ul/SocketDULStream.h"
#include "talvenor/ul/SocketDULStreamFactory.h"

namespace PrintPeers
{
using Texts = std::vector<std::string>;

constexpr int kNoAnswer = 0xFFFF;
constexpr UINT32 kPixels = 0x7FE00010;
inline const std::string kForeign = "1.2.3.4.5";

inline void Put(DICOMDataObject& theObject, UINT32 theTag, UINT16 theType, const std::string& theText)
{
   theObject.DICOMObject::Push(MakeElement(theTag, theType, theText).release());
}

inline void PutItem(DICOMDataObject& theObject, UINT32 theTag, std::unique_ptr<DICOMDataObject> theItem)
{
   auto aSequence = std::make_unique<SequenceVR>(GroupOf(theTag), ElementOf(theTag));
   aSequence->SetTypeCode(VRCode::SQ);
   theObject.DICOMObject::Push(aSequence.release());
   if (theItem != nullptr)
   {
      theObject.Push(theItem.release());
   }
}

struct ImageForm
{
   unsigned int itsRows = 4;
   unsigned int itsColumns = 4;
   std::size_t itsBytes = 16; // 0 for no pixels
   const char* itsPhotometric = "MONOCHROME2";
};

// An image box's changes: the image at a position.
inline std::unique_ptr<DICOMDataObject> Box(const ImageForm& theForm, const char* thePosition = "1",
                                            char thePixel = 'p')
{
   auto anItem = std::make_unique<DICOMDataObject>();
   Put(*anItem, 0x00280002, VRCode::US, "1");
   Put(*anItem, 0x00280004, VRCode::CS, theForm.itsPhotometric);
   Put(*anItem, 0x00280010, VRCode::US, std::to_string(theForm.itsRows));
   Put(*anItem, 0x00280011, VRCode::US, std::to_string(theForm.itsColumns));
   Put(*anItem, 0x00280100, VRCode::US, "8");
   Put(*anItem, 0x00280101, VRCode::US, "8");
   Put(*anItem, 0x00280102, VRCode::US, "7");
   Put(*anItem, 0x00280103, VRCode::US, "0");
   if (theForm.itsBytes != 0)
   {
      const std::string aPixels(theForm.itsBytes, thePixel);
      auto aVR = std::make_unique<VR>(GroupOf(kPixels), ElementOf(kPixels));
      aVR->SetTypeCode(VRCode::OB);
      aVR->SetData(aPixels.data(), static_cast<UINT32>(aPixels.size()), '\0');
      anItem->DICOMObject::Push(aVR.release());
   }
   auto aBox = std::make_unique<DICOMDataObject>();
   Put(*aBox, 0x20200010, VRCode::US, thePosition);
   PutItem(*aBox, 0x20200110, std::move(anItem));
   return aBox;
}

// A client that drives the messages itself. Operations return the status of the answer.
class Client : public BasicGrayscalePrintManagementMeta
{
public:
   explicit Client(const ServedNode& theNode, bool theWantsJobs = false)
       : itsService(SocketDULStreamFactory::GetInstance())
   {
      itsService.SetLocalAddress("CLIENT");
      itsService.SetRemoteAddress("PRINTER");
      for (const char* const aClass :
           {PrintMetaSOPClass::kBasicGrayscale, PrintSOPClass::kPresentationLUT, PrintSOPClass::kPrintJob})
      {
         if (theWantsJobs || aClass != PrintSOPClass::kPrintJob)
         {
            itsService.AddPresentationContextProposal(aClass, "1.2.840.10008.1.2.1");
         }
      }
      itsService.RequestAssociation(
          SocketDULStreamFactory::GetInstance().GetConnectedDULStream("127.0.0.1", theNode.Port()));
      for (const char* const aPart :
           {PrintSOPClass::kFilmSession, PrintSOPClass::kFilmBox, PrintSOPClass::kPrinter,
            PrintSOPClass::kGrayscaleImageBox, PrintSOPClass::kColorImageBox, PrintSOPClass::kStandardColorImageBox})
      {
         itsService.AddAbstractSyntaxAlias(UID(aPart), UID(PrintMetaSOPClass::kBasicGrayscale));
      }
   }

   int CreateSession(const std::string& theInstance = "")
   {
      DICOMDataObject aSession;
      itsSession = UID(theInstance);
      return Run([&] { return GetFilmSessionMessages().WriteCreate(itsService, itsSession, aSession, *this); });
   }
   int CreateFilm(const std::string& theFormat, const std::string& theInstance = "", UINT32 theReference = 0)
   {
      DICOMDataObject aFilm;
      Put(aFilm, 0x20100010, VRCode::ST, theFormat);
      if (theReference != 0)
      {
         aFilm.AddReferenceSequence(GroupOf(theReference), ElementOf(theReference), PrintSOPClass::kFilmSession,
                                    kForeign);
      }
      return CreateFilm(aFilm, theInstance);
   }
   int CreateFilm(DICOMDataObject& theFilm, const std::string& theInstance = "")
   {
      UID anInstance(theInstance);
      const int aStatus = Run([&] { return GetFilmBoxMessages().WriteCreate(itsService, anInstance, theFilm, *this); });
      if (aStatus == 0)
      {
         itsFilm = anInstance;
         itsBoxes.clear();
         for (const DICOMDataObject* const anItem : ItemsOf(FindVR(theFilm, 0x20100510)))
         {
            itsBoxes.emplace_back(TextOf(*anItem, 0x00081155));
         }
      }
      return aStatus;
   }
   int CreateLUT(DICOMDataObject& theLUT)
   {
      UID anInstance;
      return Run([&] { return GetPresentationLUTBox()->WriteCreate(itsService, anInstance, theLUT, *this); });
   }
   int SetImage(const UID& theBox, std::unique_ptr<DICOMDataObject> theChanges)
   {
      return Run([&] { return GetImageBox()->Write(itsService, theBox, *theChanges, *this); });
   }
   template <class Messages = StandardColorImageBox>
   int SetColorImage(const UID& theBox, std::unique_ptr<DICOMDataObject> theChanges)
   {
      return Run([&] { return Messages().Write(itsService, theBox, *theChanges, *this); });
   }
   int SetFilm(const UID& theFilm, const std::string& theFormat)
   {
      DICOMDataObject aFilm;
      Put(aFilm, 0x20100010, VRCode::ST, theFormat);
      return Run([&] { return GetFilmBoxMessages().WriteSet(itsService, theFilm, aFilm, *this); });
   }
   int PrintFilm(const UID& theFilm) { return PrintWith(GetFilmBoxMessages(), theFilm); }
   int PrintAll() { return PrintWith(GetFilmSessionMessages(), itsSession); }
   int DeleteFilm(const UID& theFilm)
   {
      return Run([&] { return GetFilmBoxMessages().WriteDelete(itsService, theFilm, *this); });
   }
   int DeleteSession()
   {
      return Run([&] { return GetFilmSessionMessages().WriteDelete(itsService, itsSession, *this); });
   }
   int AskJob(const UID& theJob, DICOMDataObject& theAnswer)
   {
      return Run([&] { return GetPrintJob(itsService, theJob, theAnswer); });
   }
   // Asks the printer until it answers: the events that have come before are through then.
   std::string AskStatus()
   {
      DICOMDataObject anAnswer;
      for (int i = 0; i < 5 && anAnswer.IsEmpty(); ++i)
      {
         Run([&] { return GetPrinter(itsService, anAnswer); });
      }
      return TextOf(anAnswer, 0x21100010) + " " + TextOf(anAnswer, 0x21100020);
   }
   bool IsConnected() const { return itsService.Connected() != 0; }

   void PrinterEventCallback(AbstractPrinter&, DICOMDataObject& theInformation, UINT16 theType, void*) override
   {
      itsEvents.push_back("printer " + std::to_string(theType) + " " + TextOf(theInformation, 0x21100020));
   }
   void PrintJobEventCallback(AbstractPrintJob& theJob, DICOMDataObject& theInformation, UINT16 theType, void*) override
   {
      itsEvents.push_back((theJob.GetSOPInstanceUID() == itsJob ? "job " : "another job ") + std::to_string(theType) +
                          " " + TextOf(theInformation, 0x21000030));
   }
   int ErrorCallback(const ErrorDescription& theError) override
   {
      itsStatus = theError.GetDICOMStatus() != 0 ? theError.GetDICOMStatus() : kNoAnswer;
      return theError.GetErrorType() == ErrorDescription::Warning;
   }
   int ActionPrintFilmBox(AbstractFilmBox*, DICOMDataObject&) override { return 0; }

   UID itsSession;
   UID itsFilm;               // the last one, with the
   std::vector<UID> itsBoxes; // of its images
   UID itsJob;                // of the last print; empty for none
   Texts itsEvents;

private:
   int Run(const std::function<int()>& theOperation)
   {
      itsStatus = 0;
      const int isDone = theOperation();
      return isDone || itsStatus != 0 ? itsStatus : kNoAnswer;
   }
   int PrintWith(const StandardFilm& theMessages, const UID& theInstance)
   {
      DICOMDataObject aReply;
      const int aStatus = Run([&] { return theMessages.WritePrint(itsService, theInstance, aReply, *this); });
      const std::vector<DICOMDataObject*> aJobs = ItemsOf(FindVR(aReply, 0x21000500));
      itsJob = aJobs.empty() ? UID() : UID(TextOf(*aJobs.front(), 0x00081155));
      if (!itsJob.IsNull())
      {
         auto aJob = std::make_unique<AbstractPrintJob>(*this);
         aJob->SetSOPInstanceUID(itsJob);
         Add(aJob.release());
      }
      return aStatus;
   }

   PDU_Service itsService;
   int itsStatus = 0;
};

// A printer that reports events in front of some answers, and prints into its notes. Serves one client.
class TalkativePrinter : public BasicGrayscalePrintManagementMeta
{
public:
   // To the requests theOvertaken, counted from 1, the event comes first; image theRefused has no room.
   explicit TalkativePrinter(std::set<unsigned int> theOvertaken, unsigned int theRefused = 0)
       : itsOvertaken(std::move(theOvertaken)), itsRefused(theRefused)
   {
      itsListener.SetAbortPollMilliseconds(20);
      itsListener.Listen(0, 1, "127.0.0.1");
      itsThread = std::thread([this] { Serve(); });
   }
   ~TalkativePrinter() override { Finish(); }

   std::string Address() const { return "PRINTER@127.0.0.1:" + std::to_string(itsListener.GetListenPort()); }

   // What has been printed: for each film of the session its images.
   Texts Finish()
   {
      itsListener.SetAbortRequestedFlag(1);
      if (itsThread.joinable())
      {
         itsThread.join();
      }
      return itsPrints;
   }

   int ReadBox(PDU_Service& theService, const DICOMCommandObject& theRequest, DICOMDataObject& theTarget,
               const PrintDecision& theDecision) override
   {
      const PrintDecision aRefusal = [](DICOMDataObject&) { return PrintAnswer{0xC605, "", {}}; };
      return BasicGrayscalePrintManagementMeta::ReadBox(theService, theRequest, theTarget,
                                                        ++itsImages == itsRefused ? aRefusal : theDecision);
   }
   int ActionPrintFilmBox(AbstractFilmBox*, DICOMDataObject&) override { return 0; }
   int ActionPrint(AbstractFilmSession*, DICOMDataObject&) override
   {
      std::string aPrint;
      for (const auto& aFilm : GetFilmBoxes())
      {
         for (const auto& aBox : aFilm->GetImageBoxes())
         {
            aPrint += ItemsOf(FindVR(*aBox, 0x20200110)).empty() ? "-" : "x";
         }
         aPrint += " ";
      }
      itsPrints.push_back(aPrint);
      return 1;
   }
   void PrinterEventCallback(AbstractPrinter&, DICOMDataObject&, UINT16, void*) override {}
   void PrintJobEventCallback(AbstractPrintJob&, DICOMDataObject&, UINT16, void*) override {}
   int ErrorCallback(const ErrorDescription&) override { return 0; }

private:
   void Serve()
   {
      if (!itsListener.Accept(30))
      {
         return;
      }
      auto aStream = std::make_unique<SocketDULStream>();
      aStream->ManageConnection(itsListener.UnmanageConnection());
      PDU_Service aService(SocketDULStreamFactory::GetInstance());
      aService.WaitForAssociationRequest(aStream.release());
      aService.AddAbstractSyntaxAlias(UID(PrintSOPClass::kPrinter), UID(PrintMetaSOPClass::kBasicGrayscale));
      unsigned int aRequests = 0;
      for (DICOMCommandObject aCommand; aService.ReadCommand(aCommand);)
      {
         if (aCommand.GetUINT16(0, 0x0100) == 0x8100)
         {
            continue; // what the client says to an event
         }
         if (itsOvertaken.contains(++aRequests))
         {
            GetPrinterMessages().NEventReportRQ::Write(aService, UID(AbstractPrinter::kInstance), 2);
         }
         Read(aService, aCommand);
      }
   }

   const std::set<unsigned int> itsOvertaken;
   const unsigned int itsRefused;
   unsigned int itsImages = 0;
   Socket itsListener;
   Texts itsPrints;
   std::thread itsThread;
};
} // namespace PrintPeers
