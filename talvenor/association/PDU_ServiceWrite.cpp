// Sending messages (PS3.8 9.2, PS3.7 6.3).
#include "talvenor/association/AssociationTransport.h"
#include "talvenor/association/PDU_Service.h"
#include "talvenor/association/PDU_ServiceTrace.h"
#include "talvenor/dataset/DICOMObject.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/foundation/SystemClock.h"
#include "talvenor/pixel/EncapsulatedPixelVR.h"
#include "talvenor/transfer/OutputTransferSyntax.h"
#include "talvenor/transfer/TransferSyntaxManager.h"
#include "talvenor/transfer/TransferSyntaxType.h"
#include "talvenor/ul/DICOMMessageOutputStream.h"

// A message stream that keeps the transport alive: a host may hold it while the association ends.
class PDU_Service::MessageOutput : public DICOMMessageOutputStream
{
public:
   explicit MessageOutput(std::shared_ptr<AssociationTransport> theTransport)
       : DICOMMessageOutputStream(theTransport->GetOutput()), itsTransport(std::move(theTransport))
   {}

private:
   std::shared_ptr<AssociationTransport> itsTransport;
};

namespace
{

// Fragments belong into encapsulated transfer syntaxes, native pixels into the others.
TNResultCode CheckPixelData(const DICOMObject& theObject, const TransferSyntaxType& theSyntax)
{
   const VR* const aPixels = theObject.GetVR(0x7FE0, 0x0010);
   if (aPixels == nullptr)
   {
      return TN_NO_ERROR;
   }
   const bool isEncapsulated = aPixels->GetAsEncapsulatedPixelVR() != nullptr || aPixels->GetAsSequenceVR() != nullptr;
   if (isEncapsulated == (theSyntax.IsEncapsulated() != 0))
   {
      return TN_NO_ERROR;
   }
   return isEncapsulated ? TN_ENCAPSULATED_WITH_NATIVE_SYNTAX : TN_NATIVE_WITH_ENCAPSULATED_SYNTAX;
}
} // namespace

DICOMMessageOutputStream* PDU_Service::CreateDICOMMessageOutputStream()
{
   if (!IsOutputConnected())
   {
      itsResultCode = TN_NOT_CONNECTED;
      throw StreamIOException("PDU_Service::CreateDICOMMessageOutputStream(): Association not connected",
                              TN_NOT_CONNECTED, 0);
   }
   return new MessageOutput(itsTransport);
}

int PDU_Service::Write(DICOMObject& theObject, const UID& theAbstractSyntax, int theFinishPDU)
{
   const unsigned char anID = GetUsablePresentationContextID(theAbstractSyntax);
   if (IsOutputConnected() && anID == 0)
   {
      return Fail(TN_NO_CONTEXT_FOR_ABSTRACT_SYNTAX);
   }
   return Write(theObject, anID, theFinishPDU);
}

int PDU_Service::Write(DICOMObject& theObject, unsigned char theID, int theFinishPDU)
{
   if (!IsOutputConnected())
   {
      return Fail(TN_NOT_CONNECTED);
   }
   if (theID == 0)
   {
      TracePDU("PDU_Service::Write(DICOMCommandObject&, uchar_t): no presentation context chosen (ID == 0)");
      return Fail(TN_NO_CONTEXT_CHOSEN);
   }
   const UsablePresentationContext* const aContext = GetUsablePresentationContext(theID);
   if (aContext == nullptr)
   {
      TracePDU("PDU_Service::Write(DICOMCommandObject&, uchar_t): invalid PC ID");
      return Fail(TN_NO_CONTEXT_FOR_ABSTRACT_SYNTAX);
   }
   const INT64 aStart = SystemClock::Get().MonotonicMilliseconds();
   const int isWritten = WriteObject(theObject, *aContext, theFinishPDU);
   ++(isWritten ? itsWriteStatistics.itsOKCount : itsWriteStatistics.itsErrorCount);
   itsWriteStatistics.itsSeconds += static_cast<double>(SystemClock::Get().MonotonicMilliseconds() - aStart) / 1000;
   return isWritten;
}

int PDU_Service::WriteObject(DICOMObject& theObject, const UsablePresentationContext& theContext, int theFinishPDU)
{
   const bool isCommand = theObject.GetType() == DICOMObject::CommandObject;
   const RWCString aSyntax =
       isCommand ? TransferSyntaxType::TSLEImplicitUID : theContext.GetTransferSyntaxUID().ToString();
   const TransferSyntaxType* const aType = TransferSyntaxManager::GetDefaultInstance().GetTransferSyntaxType(aSyntax);
   const TNResultCode aFault = aType == nullptr ? TN_TRANSFER_SYNTAX_UNSUPPORTED : CheckPixelData(theObject, *aType);
   itsCurrentContext = theContext;
   if (aFault != TN_NO_ERROR)
   {
      itsTransport->GetOutput().DropPDU(); // a command that was to share the PDU
      return Fail(aFault);
   }
   try
   {
      const std::unique_ptr<DICOMMessageOutputStream> aMessage(CreateDICOMMessageOutputStream());
      aMessage->SetMessageType(isCommand ? PDVMessageType::CommandMessage : PDVMessageType::DataMessage);
      aMessage->SetPresentationContextID(theContext.GetPresentationContextID());
      const std::unique_ptr<OutputTransferSyntax> anEncoder(aType->CreateOutputTransferSyntax(*aMessage));
      anEncoder->SaveDICOMObject(theObject);
      itsWriteStatistics.itsBytes += static_cast<double>(aMessage->GetLength());
      aMessage->FinishMessageEvenIfEmpty(); // the peer waits for its end
      if (!isCommand || theFinishPDU)
      {
         itsTransport->GetOutput().FinishPDU();
         itsTransport->GetOutput().FlushOutput();
      }
   }
   catch (...)
   {
      TakeException();
      SaveResultCodes();
      AbortAndWaitForTransportCloseOrTimeout(AbortSourceServiceProvider, AbortReasonNotSpecified);
      CloseTransport();
      RestoreResultCodes();
      return 0;
   }
   TraceObject("PDU_Service::Write(DICOMObject): Sent DICOM Object", theObject);
   itsResultCode = TN_NO_ERROR;
   return 1;
}
