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
      Report(__LINE__, itsOperation.itsReadFailed, ErrorDescription::ReadFailed, ErrorDescription::PDURead);
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
   do
   {
      itsCommand.Reset();
      if (!itsService.Read(itsCommand))
      {
         return false;
      }
   } while (TakeOwedResponse(theRequestID));
   return true;
}

// The response of an earlier request that an event report has overtaken: taken for the present one, it would put every
// later response one place off.
bool PrintExchange::TakeOwedResponse(UINT16 theRequestID)
{
   UINT16 anAnswered = 0;
   if (!itsCommand.GetUINT16(0, CommandElement::MessageIDBeingRespondedTo, anAnswered) || anAnswered == theRequestID)
   {
      return false;
   }
   auto& anOwed = itsMeta.itsOwedResponses;
   const auto aPlace = std::find(anOwed.begin(), anOwed.end(), anAnswered);
   if (aPlace == anOwed.end())
   {
      return false;
   }
   anOwed.erase(aPlace);
   return true;
}

PrintExchange::Outcome PrintExchange::TakeOtherMessage(UINT16 theRequestID)
{
   if (itsMeta.ReadEventReport(itsService, itsCommand))
   {
      itsMeta.itsOwedResponses.push_back(theRequestID);
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
   const PrintStatusDescription aDescription = DescribePrintStatus(itsOperation.itsColumn, aStatus);
   return Report(__LINE__, aDescription.itsText, aDescription.itsType, itsOperation.itsRead, aStatus, true);
}

// What the callback makes of it.
PrintExchange::Outcome PrintExchange::Report(int theLine, const char* theMessage, ErrorDescription::ErrorType theType,
                                             ErrorDescription::Operation theOperation, UINT16 theStatus,
                                             bool theHasResponse)
{
   const DICOMObject* const aCommand = theHasResponse ? &itsCommand : nullptr;
   const DICOMObject* const aDataset = theHasResponse && !itsDataset.IsEmpty() ? &itsDataset : nullptr;
   const ErrorDescription anError("printsop", theLine, itsOperation.itsClass, itsOperation.itsMethod, theMessage,
                                  theType, theOperation, theStatus, aCommand, aDataset);
   return itsMeta.ErrorCallback(anError) ? Done : Failed;
}
