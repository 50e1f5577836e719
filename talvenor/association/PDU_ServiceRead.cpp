// Receiving messages (PS3.8 9.2, PS3.7 6.3), and what else a peer sends between and inside them.
#include <cerrno>
#include <limits>
#include <utility>

#include "talvenor/association/AssociationTransport.h"
#include "talvenor/association/PDU_Service.h"
#include "talvenor/association/PDU_ServiceTrace.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dataset/DICOMObject.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/foundation/SystemClock.h"
#include "talvenor/transfer/InputTransferSyntax.h"
#include "talvenor/transfer/TransferSyntaxManager.h"
#include "talvenor/transfer/TransferSyntaxType.h"

namespace
{
// A command set is held in memory; it consists of a few short elements.
constexpr UINT64 kLongestCommand = 1048576; // bytes

// What has a limit in bytes has one in elements too, or it would take up to 25 times those bytes in memory.
constexpr UINT64 kFewElements = 16384;
constexpr UINT64 kBytesPerElement = 256;

// PS3.7 E.1, Command Data Set Type.
bool AnnouncesDataset(const DICOMObject& theCommand)
{
   constexpr UINT16 kNoDataset = 0x0101;
   UINT16 aType = kNoDataset;
   return theCommand.GetUINT16(0x0000, 0x0800, aType) && aType != kNoDataset;
}

double SecondsSince(INT64 theStart)
{
   return static_cast<double>(SystemClock::Get().MonotonicMilliseconds() - theStart) / 1000;
}

// Why a message cannot be read, in the words of an A-ABORT (PS3.8 table 9-26). What is malformed is a parameter of a
// PDU, unless the PDU itself is of no type that there is.
AAbortRQPDU::AbortReason ReasonFor(TNResultCode theCode, const PDUInputStream& theInput)
{
   switch (theCode)
   {
   case TN_INVALID_PDU:
      return theInput.GetPDUType() == PDUInputStream::PDataTF ? AAbortRQPDU::AbortReasonInvalidPDUParameter
                                                              : AAbortRQPDU::AbortReasonUnrecognizedPDU;
   case TN_SYSTEM_CALL_FAILED:
   case TN_NOT_CONNECTED:
   case TN_OUT_OF_MEMORY:
   case TN_TRANSFER_SYNTAX_UNSUPPORTED:
   case TN_TRANSPORT_TIMED_OUT:
   case TN_CANCELLED: return AAbortRQPDU::AbortReasonNotSpecified; // nothing of it is the peer's
   default: return AAbortRQPDU::AbortReasonInvalidPDUParameter;
   }
}
} // namespace

// The bytes of one message, for a decoder that owns this. Shares the transport, so that it may outlive the association.
class PDU_Service::MessageSource : public InputStream
{
public:
   // theLimit is in bytes; what is longer is not read.
   MessageSource(std::shared_ptr<AssociationTransport> theTransport, UINT64 theLimit)
       : itsTransport(std::move(theTransport)), itsLimit(theLimit)
   {}

   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override
   {
      Check();
      const unsigned int aRead = Message().Read(theBuffer, theCount);
      CheckLength();
      return aRead;
   }
   void Close() override {}

private:
   DICOMMessageInputStream& Message() { return itsTransport->GetMessage(); }

   void Check() const
   {
      if (!itsTransport->IsOpen())
      {
         throw StreamIOException("PDU_Service::Read(): Association not connected", TN_NOT_CONNECTED, 0);
      }
   }

   void CheckLength()
   {
      if (Message().GetLength() > itsLimit)
      {
         throw StreamIOException("PDU_Service::Read(): message longer than allowed", TN_INVALID_ENCODING, 0);
      }
   }

   std::shared_ptr<AssociationTransport> itsTransport;
   UINT64 itsLimit;
};

InputTransferSyntax* PDU_Service::GetInputTransferSyntax()
{
   return OpenNextMessage(Wanted::Any);
}

// Null, with the result set, when there is no message: the peer has ended the association, or broken the protocol.
InputTransferSyntax* PDU_Service::OpenNextMessage(Wanted theWanted)
{
   if (!IsInputConnected())
   {
      Fail(TN_NOT_CONNECTED);
      return nullptr;
   }
   try
   {
      itsTransport->GetMessage().Flush(); // what nobody read of the message before
   }
   catch (...)
   {
      FailMessage();
      return nullptr;
   }
   while (StartPDU())
   {
      const unsigned char aType = itsTransport->GetInput().GetPDUType();
      if (aType != PDUInputStream::PDataTF)
      {
         HandleControlPDU(aType);
         return nullptr;
      }
      try
      {
         if (InputTransferSyntax* const aDecoder = OpenMessage(theWanted))
         {
            return aDecoder;
         }
      }
      catch (...)
      {
         FailMessage();
         return nullptr;
      }
   }
   return nullptr;
}

// Reads the header of the next PDU if the current one is exhausted. False, with the transport closed, when that fails.
bool PDU_Service::StartPDU()
{
   PDUInputStream& anInput = itsTransport->GetInput();
   if (anInput.HasMoreData())
   {
      return true;
   }
   try
   {
      if (anInput.Start())
      {
         return true;
      }
      Fail(TN_CLOSED_BY_PEER);
   }
   catch (...)
   {
      TakeException();
      FailHeader();
   }
   CloseTransport();
   return false;
}

// A header that cannot be read. The result is what reading threw, and becomes what it means here.
void PDU_Service::FailHeader()
{
   TraceResultCode("Caught exception while reading PDU header (Closing transport):");
   switch (itsResultCode)
   {
   case TN_INVALID_PDU:
      SaveResultCodes();
      Abort(AbortSourceServiceProvider, AbortReasonUnrecognizedPDU);
      RestoreResultCodes();
      break;
   case TN_PDU_LENGTH_MISMATCH:
      SaveResultCodes();
      AbortAndWaitForTransportCloseOrTimeout(AbortSourceServiceProvider, AbortReasonInvalidPDUParameter);
      RestoreResultCodes();
      itsStatus = ProtocolError;
      break;
   case TN_TRANSPORT_TIMED_OUT:
      if (itsIsReadingCommand)
      {
         itsResultCode = TN_REQUEST_WAIT_TIMED_OUT;
         TracePDU("Transport timed out while awaiting start of command");
      }
      break;
   case TN_CANCELLED:
      itsResultCode = TN_CLOSED_BY_PEER;
      itsSystemErrorCode = ECANCELED; // by this side, which can tell it by that
      break;
   default: itsResultCode = TN_CLOSED_BY_PEER; break;
   }
}

// A message that cannot be read, called in a handler. Another kind of PDU inside it is treated as between messages;
// what is malformed aborts the association.
void PDU_Service::FailMessage()
{
   TakeException();
   if (!itsTransport->IsOpen())
   {
      return;
   }
   if (itsResultCode == TN_UNEXPECTED_PDU && itsTransport->GetInput().GetPDUType() != PDUInputStream::PDataTF)
   {
      HandleControlPDU(itsTransport->GetInput().GetPDUType());
      return;
   }
   SaveResultCodes();
   AbortAndWaitForTransportCloseOrTimeout(AbortSourceServiceProvider,
                                          ReasonFor(itsResultCode, itsTransport->GetInput()));
   CloseTransport();
   RestoreResultCodes();
   itsStatus = ProtocolError;
}

// A decoder on the message whose first PDV is next; null when it is not the kind that is wanted and has been skipped.
InputTransferSyntax* PDU_Service::OpenMessage(Wanted theWanted)
{
   DICOMMessageInputStream& aMessage = itsTransport->GetMessage();
   if (!aMessage.Start())
   {
      throw StreamIOException("PDU_Service::GetInputTransferSyntax(): EOF while reading message header", TN_END_OF_FILE,
                              0);
   }
   const bool isCommand = aMessage.GetMessageType() == PDVMessageType::CommandMessage;
   const bool isExpected = isCommand || std::exchange(itsMayHaveDataset, false);
   if (!isCommand && theWanted == Wanted::Command)
   {
      if (!isExpected)
      {
         throw StreamIOException("PDU_Service::Read(): a data set that no command has announced", TN_UNEXPECTED_DATASET,
                                 0);
      }
      aMessage.Flush(); // nobody has read it
      return nullptr;
   }
   if (isCommand && theWanted == Wanted::Data)
   {
      throw StreamIOException("PDU_Service::Read(): a command instead of the data set", TN_INVALID_ENCODING, 0);
   }
   const UsablePresentationContext* const aContext =
       GetUsablePresentationContext(aMessage.GetCurrentPresentationContextID());
   if (aContext == nullptr)
   {
      throw StreamIOException("PDU_Service::GetInputTransferSyntax(): Presentation context specified in message not "
                              "found in association acceptance",
                              TN_CONTEXT_NOT_ACCEPTED, 0);
   }
   if (!isCommand && itsCurrentContext &&
       itsCurrentContext->GetPresentationContextID() != aContext->GetPresentationContextID())
   {
      throw StreamIOException(
          "PDU_Service::GetInputTransferSyntax(): Presentation context specified in data message does "
          "not match current presentation context in use for command",
          TN_PDV_CONTEXT_MISMATCH, 0);
   }
   itsCurrentContext = *aContext;
   itsMayHaveDataset = isCommand; // until it is known what the command says
   const RWCString aSyntax =
       isCommand ? TransferSyntaxType::TSLEImplicitUID : aContext->GetTransferSyntaxUID().ToString();
   const TransferSyntaxType* const aType = TransferSyntaxManager::GetDefaultInstance().GetTransferSyntaxType(aSyntax);
   if (aType == nullptr)
   {
      throw StreamIOException("PDU_Service::GetInputTransferSyntax(): Specified transfer syntax not supported",
                              TN_TRANSFER_SYNTAX_UNSUPPORTED, 0);
   }
   // What a host takes from the decoder itself is its own affair.
   const UINT64 aLimit = isCommand                   ? kLongestCommand
                         : theWanted == Wanted::Data ? itsLongestDataset
                                                     : std::numeric_limits<UINT64>::max();
   std::unique_ptr<InputTransferSyntax> aDecoder(
       aType->CreateInputTransferSyntax(new MessageSource(itsTransport, aLimit)));
   aDecoder->SetMostElements(kFewElements + aLimit / kBytesPerElement);
   return aDecoder.release();
}

// What a peer may send instead of a message: it ends the association, or has no business here.
void PDU_Service::HandleControlPDU(unsigned char theType)
{
   PDUInputStream& anInput = itsTransport->GetInput();
   unsigned int aCount = 0;
   const auto aRead = [&](auto theAction) {
      return Guarded([&] {
         theAction();
         return 1;
      });
   };
   switch (theType)
   {
   case PDUInputStream::AReleaseRQ:
      if (aRead([&] { AReleaseRQPDU::ReadDynamic(anInput, aCount); }) && AnswerRelease())
      {
         itsStatus = ReleasedByPeer;
         Fail(TN_PEER_RELEASED);
         return;
      }
      CloseTransport();
      return;
   case PDUInputStream::AAbortRQ:
      aRead([&] { AAbortRQPDU::ReadDynamic(anInput, aCount); });
      TracePDU("Aborting association at peer's request");
      itsStatus = AbortedByPeer;
      CloseTransport();
      Fail(TN_PEER_ABORTED);
      return;
   default:
      if (!aRead([&] { SkipPDU(); }))
      {
         TraceResultCode("Error reading remainder of PDU");
      }
      TracePDU("Unexpected PDU type");
      Abort(AbortSourceServiceProvider, AbortReasonUnexpectedPDU);
      CloseTransport();
      Fail(TN_UNEXPECTED_PDU);
   }
}

int PDU_Service::ReadCommand(DICOMCommandObject& theCommand)
{
   theCommand.Reset();
   itsCurrentContext.reset();
   itsIsReadingCommand = true;
   const int isRead = ReadObject(theCommand, Wanted::Command);
   itsIsReadingCommand = false;
   return isRead;
}

int PDU_Service::Read(DICOMObject& theObject)
{
   return ReadObject(theObject, theObject.GetType() == DICOMObject::CommandObject ? Wanted::Command : Wanted::Data);
}

int PDU_Service::ReadObject(DICOMObject& theObject, Wanted theWanted)
{
   INT64 aStart = SystemClock::Get().MonotonicMilliseconds();
   const std::unique_ptr<InputTransferSyntax> aDecoder(OpenNextMessage(theWanted));
   if (!aDecoder)
   {
      ++itsReadStatistics.itsErrorCount;
      return 0;
   }
   if (itsIsReadingCommand)
   {
      aStart = SystemClock::Get().MonotonicMilliseconds(); // waiting for work is not reading
   }
   const std::shared_ptr<AssociationTransport> aTransport = itsTransport;
   try
   {
      if (theWanted == Wanted::Data)
      {
         theObject.SetEndian(aDecoder->GetTransferSyntaxType().GetEndian());
         aDecoder->SetDataDictionary(theObject.GetDataDictionary()); // shared: creators type what follows
      }
      while (VR* const aVR = aDecoder->NextVR())
      {
         theObject.Push(aVR);
      }
      itsReadStatistics.itsBytes += static_cast<double>(aTransport->GetMessage().GetLength());
      aTransport->GetMessage().Flush(); // trailing padding
   }
   catch (...)
   {
      FailMessage();
      ++itsReadStatistics.itsErrorCount;
      return 0;
   }
   if (theWanted == Wanted::Command)
   {
      itsMayHaveDataset = AnnouncesDataset(theObject);
   }
   ++itsReadStatistics.itsOKCount;
   itsReadStatistics.itsSeconds += SecondsSince(aStart);
   TraceObject("PDU_Service::Read(DICOMObject): Received DICOM Object", theObject);
   itsResultCode = TN_NO_ERROR;
   return 1;
}
