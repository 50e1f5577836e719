#include "talvenor/print/StandardFilm.h"

#include "talvenor/print/PrintOperations.h"

namespace
{
constexpr char kClass[] = "StandardFilm";
constexpr PrintOperation kCreate = NCreateOperation(kClass);
constexpr PrintOperation kSet = NSetOperation(kClass);
constexpr PrintOperation kDelete = NDeleteOperation(kClass);
constexpr PrintOperation kPrint = {kClass,
                                   "WritePrint",
                                   "NActionRQ::Write() failed",
                                   "thePDU::Read() failed",
                                   "NActionRSP::Read() received unexpected response",
                                   "NActionRSP::Read() received response without status",
                                   ErrorDescription::NActionRequestWrite,
                                   ErrorDescription::NActionResponseRead,
                                   kNAction.itsResponse.itsField,
                                   PrintStatusColumn::Print};
constexpr UINT16 kPrintAction = 1; // Action Type ID, PS3.4 H.4.1.2.4
} // namespace

StandardFilm::~StandardFilm() = default;

int StandardFilm::GetUID(UID& theUID) const
{
   return uGetUID(theUID);
}

int StandardFilm::WriteCreate(PDU_Service& theService, UID& theInstance, DICOMDataObject& theDataset,
                              AbstractPrintManagementMeta& theMeta) const
{
   return RunCreate(*this, kCreate, theService, theInstance, theDataset, theMeta);
}

int StandardFilm::WriteSet(PDU_Service& theService, const UID& theInstance, DICOMDataObject& theDataset,
                           AbstractPrintManagementMeta& theMeta) const
{
   return RunSet(*this, kSet, theService, theInstance, theDataset, theMeta);
}

int StandardFilm::WriteDelete(PDU_Service& theService, const UID& theInstance,
                              AbstractPrintManagementMeta& theMeta) const
{
   return RunDelete(*this, kDelete, theService, theInstance, theMeta);
}

int StandardFilm::WritePrint(PDU_Service& theService, const UID& theInstance, DICOMDataObject& theReply,
                             AbstractPrintManagementMeta& theMeta) const
{
   PrintExchange anExchange(kPrint, theService, theMeta);
   const auto anOutcome = anExchange.Run([&] { return NActionRQ::Write(theService, theInstance, kPrintAction); },
                                         [&](const DICOMCommandObject& theResponse, DICOMDataObject& theDataset) {
                                            return NActionRSP::Read(theResponse, theService, theDataset);
                                         });
   theReply.Reset();
   MergeAttributes(theReply, anExchange.GetDataset());
   return anOutcome != PrintExchange::Failed;
}

int StandardFilm::ReadCreate(PDU_Service& theService, const DICOMCommandObject& theRequest,
                             DICOMDataObject& theTarget) const
{
   return AnswerCreate(*this, theService, theRequest, theTarget, nullptr);
}

int StandardFilm::ReadCreate(PDU_Service& theService, const DICOMCommandObject& theRequest, DICOMDataObject& theTarget,
                             const PrintDecision& theDecision) const
{
   return AnswerCreate(*this, theService, theRequest, theTarget, theDecision);
}

int StandardFilm::ReadSet(PDU_Service& theService, const DICOMCommandObject& theRequest,
                          DICOMDataObject& theTarget) const
{
   return AnswerSet(*this, theService, theRequest, theTarget, nullptr);
}

int StandardFilm::ReadSet(PDU_Service& theService, const DICOMCommandObject& theRequest, DICOMDataObject& theTarget,
                          const PrintDecision& theDecision) const
{
   return AnswerSet(*this, theService, theRequest, theTarget, theDecision);
}

int StandardFilm::ReadPrint(PDU_Service& theService, const DICOMCommandObject& theRequest,
                            DICOMDataObject& theTarget) const
{
   return ReadPrint(theService, theRequest, theTarget, nullptr);
}

int StandardFilm::ReadPrint(PDU_Service& theService, const DICOMCommandObject& theRequest, DICOMDataObject& theTarget,
                            const PrintDecision& theDecision) const
{
   UID anInstance;
   if (!TakeInstance(*this, kNAction, theRequest, anInstance) || !NActionRQ::Read(theRequest, theService, theTarget))
   {
      return 0;
   }
   const PrintAnswer anAnswer = theDecision ? theDecision(theTarget) : PrintAnswer();
   const int isSent = anAnswer.HasDataset()
                          ? NActionRSP::Write(theService, theRequest, anInstance, *anAnswer.itsDataset, kPrintAction,
                                              anAnswer.itsStatus, anAnswer.itsComment, anAnswer.itsOffending)
                          : NActionRSP::Write(theService, theRequest, anInstance, kPrintAction, anAnswer.itsStatus,
                                              anAnswer.itsComment, anAnswer.itsOffending);
   return isSent && anAnswer.IsDone();
}

int StandardFilm::ReadDelete(PDU_Service& theService, const DICOMCommandObject& theRequest) const
{
   return AnswerDelete(*this, theService, theRequest);
}

int StandardFilm::Read(PDU_Service& theService, const DICOMCommandObject& theRequest, DICOMDataObject& theTarget) const
{
   switch (theRequest.GetUINT16(0, CommandElement::CommandField))
   {
   case kNCreate.itsRequest.itsField: return ReadCreate(theService, theRequest, theTarget);
   case kNSet.itsRequest.itsField: return ReadSet(theService, theRequest, theTarget);
   case kNAction.itsRequest.itsField: return ReadPrint(theService, theRequest, theTarget);
   case kNDelete.itsRequest.itsField: return ReadDelete(theService, theRequest);
   default: return 0;
   }
}
