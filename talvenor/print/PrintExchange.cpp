#include "talvenor/print/PrintExchange.h"

#include <algorithm>

#include "talvenor/dimse/DIMSEMessage.h"
#include "talvenor/dimse/MessageID.h"
#include "talvenor/print/AbstractPrintManagementMeta.h"

PrintExchange::PrintExchange(const PrintOperation& theOperation, PDU_Service& theService,
                             AbstractPrintManagementMeta& theMeta)
    : itsOperation(theOperation), itsService(theService), itsMeta(theMeta)
{}

PrintExchange::Outcome PrintExchange::Run(
    const std::function<int()>& theWrite,
    const std::function<int(const DICOMCommandObject& theResponse, DICOMDataObject& theDataset)>& theRead)
{
   if (!theWrite())
   {
      Report(__LINE__, itsOperation.itsWriteFailed, ErrorDescription::WriteFailed, itsOperation.itsWrite);
      return Failed;
   }
   const UINT16 aRequestID = LastMessageIDOfThread();
   if (!ReadNextCommand(aRequestID))
   {
      return Failed;
   }
   if (!IsMessage(itsCommand, itsOperation.itsResponseField))
   {
      return TakeOtherMessage(aRequestID);
   }
   if (!theRead(itsCommand, itsDataset))
   {
      const bool isWrong = itsService.GetResultCode() == TN_UNEXPECTED_DATASET;
      Report(__LINE__, isWrong ? itsOperation.itsUnexpected : itsOperation.itsReadFailed,
             isWrong ? ErrorDescription::InvalidResponse : ErrorDescription::ReadFailed,
             isWrong ? itsOperation.itsRead : ErrorDescription::PDURead);
      return Failed;
   }
   return TakeStatus();
}

bool PrintExchange::ReadNextCommand(UINT16 theRequestID)
{
   for (;;)
   {
      itsCommand.Reset();
      if (!itsService.Read(itsCommand))
      {
         Report(__LINE__, itsOperation.itsReadFailed, ErrorDescription::ReadFailed, ErrorDescription::PDURead);
         return false;
      }
      const PrintOperation* const anEarlier = TakeOwedResponse(theRequestID);
      if (anEarlier == nullptr)
      {
         return true;
      }
      if (!IsOwedResponseFine(*anEarlier))
      {
         itsMeta.itsOwedResponses.emplace_back(theRequestID, &itsOperation);
         return false;
      }
   }
}

// What an earlier request asked for, when this is its response, which an event report has overtaken: taken for the
// present one, it would put every later response one place off.
const PrintOperation* PrintExchange::TakeOwedResponse(UINT16 theRequestID)
{
   UINT16 anAnswered = 0;
   if (!itsCommand.GetUINT16(0, CommandElement::MessageIDBeingRespondedTo, anAnswered) || anAnswered == theRequestID)
   {
      return nullptr;
   }
   auto& anOwed = itsMeta.itsOwedResponses;
   const auto aPlace =
       std::find_if(anOwed.begin(), anOwed.end(), [&](const auto& theOne) { return theOne.first == anAnswered; });
   if (aPlace == anOwed.end())
   {
      return nullptr;
   }
   const PrintOperation* const anOperation = aPlace->second;
   anOwed.erase(aPlace);
   return anOperation;
}

// The operation has long returned as if it had succeeded. That it has not is told all the same: the film would be
// printed without the image that the printer refused.
bool PrintExchange::IsOwedResponseFine(const PrintOperation& theOperation)
{
   const UINT16 aStatus = itsCommand.GetUINT16(0, CommandElement::Status);
   return aStatus == 0 || ReportStatus(__LINE__, theOperation, aStatus) == Done;
}

PrintExchange::Outcome PrintExchange::TakeOtherMessage(UINT16 theRequestID)
{
   if (itsMeta.ReadEventReport(itsService, itsCommand))
   {
      itsMeta.itsOwedResponses.emplace_back(theRequestID, &itsOperation);
      return Overtaken;
   }
   Report(__LINE__, itsOperation.itsUnexpected, ErrorDescription::UnexpectedResponse, itsOperation.itsRead, 0, true);
   return Failed;
}

PrintExchange::Outcome PrintExchange::TakeStatus()
{
   UINT16 aStatus = 0;
   if (!itsCommand.GetUINT16(0, CommandElement::Status, aStatus))
   {
      return Report(__LINE__, itsOperation.itsNoStatus, ErrorDescription::MissingStatus, itsOperation.itsRead, 0, true);
   }
   if (aStatus == 0)
   {
      return Done;
   }
   return ReportStatus(__LINE__, itsOperation, aStatus);
}

PrintExchange::Outcome PrintExchange::Report(int theLine, const char* theMessage, ErrorDescription::ErrorType theType,
                                             ErrorDescription::Operation theOperation, UINT16 theStatus,
                                             bool theHasResponse)
{
   const DICOMObject* const aCommand = theHasResponse ? &itsCommand : nullptr;
   const DICOMObject* const aDataset = theHasResponse && !itsDataset.IsEmpty() ? &itsDataset : nullptr;
   return Report(ErrorDescription("printsop", theLine, itsOperation.itsClass, itsOperation.itsMethod, theMessage,
                                  theType, theOperation, theStatus, aCommand, aDataset));
}

PrintExchange::Outcome PrintExchange::ReportStatus(int theLine, const PrintOperation& theOperation, UINT16 theStatus)
{
   const PrintStatusDescription aDescription = DescribePrintStatus(theOperation.itsColumn, theStatus);
   return Report(ErrorDescription("printsop", theLine, theOperation.itsClass, theOperation.itsMethod,
                                  aDescription.itsText, aDescription.itsType, theOperation.itsRead, theStatus,
                                  &itsCommand, itsDataset.IsEmpty() ? nullptr : &itsDataset));
}

// What the callback makes of it.
PrintExchange::Outcome PrintExchange::Report(const ErrorDescription& theError)
{
   return itsMeta.ErrorCallback(theError) ? Done : Failed;
}
