// The operations of print SCUs for each DIMSE-N service, with their texts, and what the message classes share. Not part
// of the library's interface.
#pragma once

#include "talvenor/association/PDU_Service.h"
#include "talvenor/dimse/NMessage.h"
#include "talvenor/foundation/MUIDFactory.h"
#include "talvenor/print/AbstractPrintManagementMeta.h"
#include "talvenor/print/PrintAnswer.h"
#include "talvenor/print/PrintExchange.h"

constexpr PrintOperation NCreateOperation(const char* theClass)
{
   return {theClass,
           "WriteCreate",
           "NCreateRQ::Write() failed",
           "thePDU::Read() failed",
           "NCreateRSP::Read() received unexpected response",
           "NCreateRSP::Read() received response without status",
           ErrorDescription::NCreateRequestWrite,
           ErrorDescription::NCreateResponseRead,
           kNCreate.itsResponse.itsField,
           PrintStatusColumn::Create};
}

constexpr PrintOperation NSetOperation(const char* theClass)
{
   return {theClass,
           "WriteSet",
           "NSetRQ::Write() failed",
           "thePDU::Read() failed",
           "NSetRSP::Read() received unexpected response",
           "NSetRSP::Read() received response without status",
           ErrorDescription::NSetRequestWrite,
           ErrorDescription::NSetResponseRead,
           kNSet.itsResponse.itsField,
           PrintStatusColumn::Set};
}

constexpr PrintOperation NDeleteOperation(const char* theClass)
{
   return {theClass,
           "WriteDelete",
           "NDeleteRQ::Write() failed",
           "thePDU::Read() failed",
           "NDeleteRSP::Read() received unexpected response",
           "NDeleteRSP::Read() received response without status",
           ErrorDescription::NDeleteRequestWrite,
           ErrorDescription::NDeleteResponseRead,
           kNDelete.itsResponse.itsField,
           PrintStatusColumn::Set};
}

// Moves the elements of theSource into theTarget, as PrintObject::Merge does.
void MergeAttributes(DICOMDataObject& theTarget, DICOMDataObject& theSource);

// The three that film and advanced boxes have in common; theMessages is the class itself.
template <class Messages>
int RunCreate(const Messages& theMessages, const PrintOperation& theOperation, PDU_Service& theService,
              UID& theInstance, DICOMDataObject& theDataset, AbstractPrintManagementMeta& theMeta)
{
   if (theInstance.IsNull())
   {
      theInstance.Set(MUIDFactory::GetInstance().GetUID());
   }
   PrintExchange anExchange(theOperation, theService, theMeta);
   const auto anOutcome = anExchange.Run(
       [&] {
          return theDataset.IsEmpty() ? theMessages.NCreateRQ::Write(theService, theInstance)
                                      : theMessages.NCreateRQ::Write(theService, theDataset, theInstance);
       },
       [&](const DICOMCommandObject& theResponse, DICOMDataObject& theReply) {
          return theMessages.NCreateRSP::Read(theResponse, theService, theReply);
       });
   if (anOutcome == PrintExchange::Done)
   {
      RWCString anInstance;
      anExchange.GetCommand().GetString(0, CommandElement::AffectedSOPInstanceUID, anInstance);
      if (!anInstance.empty())
      {
         theInstance.Set(anInstance);
      }
      MergeAttributes(theDataset, anExchange.GetDataset());
   }
   return anOutcome != PrintExchange::Failed;
}

template <class Messages>
int RunSet(const Messages& theMessages, const PrintOperation& theOperation, PDU_Service& theService,
           const UID& theInstance, DICOMDataObject& theDataset, AbstractPrintManagementMeta& theMeta)
{
   return PrintExchange(theOperation, theService, theMeta)
              .Run([&] { return theMessages.NSetRQ::Write(theService, theDataset, theInstance); },
                   [&](const DICOMCommandObject& theResponse, DICOMDataObject& theReply) {
                      return theMessages.NSetRSP::Read(theResponse, theService, theReply);
                   }) != PrintExchange::Failed;
}

template <class Messages>
int RunDelete(const Messages& theMessages, const PrintOperation& theOperation, PDU_Service& theService,
              const UID& theInstance, AbstractPrintManagementMeta& theMeta)
{
   return PrintExchange(theOperation, theService, theMeta)
              .Run([&] { return theMessages.NDeleteRQ::Write(theService, theInstance); },
                   [&](const DICOMCommandObject& theResponse, DICOMDataObject&) {
                      return theMessages.NDeleteRSP::Read(theResponse, theService);
                   }) != PrintExchange::Failed;
}

// SCP: the instance of a request of theKind that is for the SOP class of theMessages; false when it is for another one
// or names no instance.
template <class Messages>
bool TakeInstance(const Messages& theMessages, const NService& theKind, const DICOMCommandObject& theRequest,
                  UID& theInstance)
{
   RWCString aClass;
   RWCString anInstance;
   UID anOwnClass;
   if (!theRequest.GetString(0, theKind.itsSOPClass, aClass) ||
       !theRequest.GetString(0, theKind.itsInstance, anInstance) || !theMessages.GetUID(anOwnClass) ||
       anOwnClass != aClass || anInstance.size() > UID::kMaximumLength)
   {
      return false;
   }
   theInstance.Set(anInstance);
   return true;
}

// SCP: sends the answer with the response class. 1 when it was sent and tells that the request was carried out.
template <class Response>
int SendAnswer(const Response& theResponse, PDU_Service& theService, const DICOMCommandObject& theRequest,
               const UID& theInstance, const PrintAnswer& theAnswer)
{
   const int isSent = theAnswer.HasDataset()
                          ? theResponse.Write(theService, theRequest, theInstance, *theAnswer.itsDataset,
                                              theAnswer.itsStatus, theAnswer.itsComment, theAnswer.itsOffending)
                          : theResponse.Write(theService, theRequest, theInstance, theAnswer.itsStatus,
                                              theAnswer.itsComment, theAnswer.itsOffending);
   return isSent && theAnswer.IsDone();
}

// SCP: the three requests that film and advanced boxes have in common.
template <class Messages>
int AnswerCreate(const Messages& theMessages, PDU_Service& theService, const DICOMCommandObject& theRequest,
                 DICOMDataObject& theTarget, const PrintDecision& theDecision)
{
   UID anInstance;
   if (!TakeInstance(theMessages, kNCreate, theRequest, anInstance))
   {
      return 0;
   }
   const bool mayBeEmpty = theDecision != nullptr && IsMessage(theRequest, kNCreate.itsRequest.itsField);
   if (mayBeEmpty && !HasDataset(theRequest))
   {
      theTarget.Reset();
   }
   else if (!theMessages.NCreateRQ::Read(theRequest, theService, theTarget))
   {
      return 0;
   }
   const PrintAnswer anAnswer = theDecision ? theDecision(theTarget) : PrintAnswer();
   return SendAnswer<NCreateRSP>(theMessages, theService, theRequest, anInstance, anAnswer);
}

template <class Messages>
int AnswerSet(const Messages& theMessages, PDU_Service& theService, const DICOMCommandObject& theRequest,
              DICOMDataObject& theTarget, const PrintDecision& theDecision)
{
   UID anInstance;
   if (!TakeInstance(theMessages, kNSet, theRequest, anInstance) ||
       !theMessages.NSetRQ::Read(theRequest, theService, theTarget))
   {
      return 0;
   }
   const PrintAnswer anAnswer = theDecision ? theDecision(theTarget) : PrintAnswer();
   return SendAnswer<NSetRSP>(theMessages, theService, theRequest, anInstance, anAnswer);
}

template <class Messages>
int AnswerDelete(const Messages& theMessages, PDU_Service& theService, const DICOMCommandObject& theRequest)
{
   UID anInstance;
   return TakeInstance(theMessages, kNDelete, theRequest, anInstance) &&
          theMessages.NDeleteRQ::Read(theRequest, theService) &&
          theMessages.NDeleteRSP::Write(theService, theRequest, anInstance, 0);
}
