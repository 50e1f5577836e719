// Ending an association: release, abort, and waiting for the peer to close (PS3.8 7.2, 7.3, 9.2).
#include "talvenor/association/AssociationTransport.h"
#include "talvenor/association/PDU_Service.h"
#include "talvenor/association/PDU_ServiceTrace.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/foundation/SystemClock.h"

namespace
{

// Gives a stream other time-outs, and its own one back.
class OtherTimeout
{
public:
   explicit OtherTimeout(DULStream& theStream) : itsStream(theStream), itsTimeout(theStream.GetTimeout()) {}
   OtherTimeout(const OtherTimeout&) = delete;
   OtherTimeout& operator=(const OtherTimeout&) = delete;
   ~OtherTimeout() { itsStream.SetTimeout(itsTimeout); }

private:
   DULStream& itsStream;
   int itsTimeout;
};
} // namespace

// Leaves the header behind, without the second test that Start makes of it.
void PDU_Service::SkipPDU()
{
   itsTransport->GetInput().SkipRemaining();
}

int PDU_Service::Close()
{
   int isReleased = 1;
   if (Connected() && IsInputConnected() && IsOutputConnected())
   {
      isReleased = Guarded([&] { return Release(); });
      if (!isReleased)
      {
         TraceResultCode("PDU_Service::Close(): ");
         if (itsResultCode == TN_INVALID_PDU)
         {
            TracePDU("Invalid PDU type received while awaiting release response");
            itsStatus = ProtocolError;
         }
      }
   }
   DropTransport();
   ClearContexts();
   return isReleased;
}

// The handshake of PS3.8 7.2, collisions included.
int PDU_Service::Release()
{
   PDUOutputStream& anOutput = itsTransport->GetOutput();
   anOutput.FinishPDU(); // a command whose data set never came
   TracePDU("PDU_Service::Close(): sending AReleaseRQPDU");
   AReleaseRQPDU::Write(anOutput);
   TracePDU("PDU_Service::Close():  AReleaseRQPDU sent, awaiting response AReleaseRPPDU");
   bool isCollision = false;
   for (;;)
   {
      PDUInputStream& anInput = itsTransport->GetInput();
      if (!anInput.HasMoreData() && !anInput.Start())
      {
         throw StreamIOException("EOF while reading PDU header", TN_END_OF_FILE, 0);
      }
      unsigned int aCount = 0;
      switch (anInput.GetPDUType())
      {
      case PDUInputStream::AReleaseRP:
         AReleaseRPPDU::ReadDynamic(anInput, aCount);
         TracePDU("PDU_Service::Close(): received AReleaseRP PDU");
         if (isCollision && !itsIsRequester)
         {
            TracePDU("PDU_Service::Close(): Releasing Association at peer's request, Sending AReleaseRP PDU (accepter "
                     "collision response)");
            AReleaseRPPDU::Write(anOutput);
            itsStatus = ReleasedByPeer;
            return 1;
         }
         TracePDU("PDU_Service::Close(): Released Association at local AE's request");
         itsStatus = ReleasedByUs;
         return 1;
      case PDUInputStream::AReleaseRQ:
         AReleaseRQPDU::ReadDynamic(anInput, aCount);
         if (isCollision)
         {
            TracePDU(
                "Second AReleaseRQPDU while looking for AReleaseRPPDU after release collision -- Abort association");
            AbortAndWaitForTransportCloseOrTimeout(AbortSourceServiceProvider, AbortReasonUnexpectedPDU);
            return Fail(TN_UNEXPECTED_PDU);
         }
         isCollision = true;
         TracePDU("PDU_Service::Close():", " handling colliding AReleaseRQPDU");
         if (itsIsRequester && !AnswerRelease())
         {
            return 0;
         }
         break;
      case PDUInputStream::AAbortRQ:
         AAbortRQPDU::ReadDynamic(anInput, aCount);
         TracePDU("Aborted association at peer's request");
         itsStatus = AbortedByPeer;
         return Fail(TN_PEER_ABORTED);
      case PDUInputStream::PDataTF:
         TracePDU("Unexpected PDU type - expected RELEASE RESPONSE, RELEASE REQUEST, or ABORT - ignoring");
         SkipPDU();
         break;
      default:
         SkipPDU();
         AbortAndWaitForTransportCloseOrTimeout(AbortSourceServiceProvider, AbortReasonUnexpectedPDU);
         return Fail(TN_UNEXPECTED_PDU);
      }
   }
}

// False, with the result set, when the answer could not be sent.
bool PDU_Service::AnswerRelease()
{
   return Guarded([&] {
             TracePDU("Releasing Association at peer's request");
             TracePDU("Sending A-RELEASE-RP");
             itsTransport->GetOutput().DropPDU(); // nothing may follow the answer
             AReleaseRPPDU::Write(itsTransport->GetOutput());
             return 1;
          }) != 0;
}

int PDU_Service::Abort(AbortSource theSource, AbortReason theReason)
{
   AAbortRQPDU& anAbort = *this;
   anAbort.AAbortRQPDU::SetSource(theSource);
   anAbort.AAbortRQPDU::SetReason(theReason);
   if (!IsOutputConnected())
   {
      return Fail(TN_NOT_CONNECTED);
   }
   return Guarded([&] {
      TracePDU("PDU_Service::Abort():", " sending AAbortRQPDU");
      itsTransport->GetOutput().DropPDU();
      anAbort.Write(itsTransport->GetOutput());
      itsStatus = AbortedByUs;
      return 1;
   });
}

void PDU_Service::AbortAndWaitForTransportCloseOrTimeout(AbortSource theSource, AbortReason theReason)
{
   if (Abort(theSource, theReason))
   {
      WaitForTransportCloseOrTimeout();
      return;
   }
   TraceResultCode("PDU_Service::AbortAndWaitForTransportCloseOrTimeout(): Abort() raised exception:");
   CloseTransport();
}

int PDU_Service::WaitForTransportCloseOrTimeout()
{
   if (IsInputConnected())
   {
      const std::shared_ptr<AssociationTransport> aTransport = itsTransport;
      const OtherTimeout aTimeout(aTransport->GetStream());
      try
      {
         WaitForClose();
      }
      catch (...)
      {
         TakeException();
         TraceResultCode("PDU_Service::WaitForTransportCloseOrTimeout(): ");
         itsStatus = Idle;
      }
   }
   TracePDU("PDU_Service::WaitForTransportCloseOrTimeout(): closing transport connection");
   CloseTransport();
   return 1;
}

void PDU_Service::WaitForClose()
{
   SystemClock& aClock = SystemClock::Get();
   const INT64 aDeadline = aClock.MonotonicMilliseconds() + INT64{std::max(itsARRTimer, 0)} * 1000;
   do
   {
      INT64 aRest = 0; // without limit
      if (itsARRTimer > 0)
      {
         aRest = aDeadline - aClock.MonotonicMilliseconds();
         if (aRest <= 0)
         {
            throw StreamIOException("PDU_Service::WaitForTransportCloseOrTimeout(): the peer does not close",
                                    TN_TRANSPORT_TIMED_OUT, 0);
         }
      }
      itsTransport->GetStream().SetTimeout(static_cast<int>((aRest + 999) / 1000));
   } while (TakePDUWhileClosing());
}

// False when the wait is over.
bool PDU_Service::TakePDUWhileClosing()
{
   constexpr char kPrefix[] = "PDU_Service::WaitForTransportCloseOrTimeout(): ";
   PDUInputStream& anInput = itsTransport->GetInput();
   try
   {
      if (anInput.HasMoreData())
      {
         SkipPDU(); // of a message that was broken off
      }
      if (!anInput.Start())
      {
         TracePDU(kPrefix, "Received EOF while reading PDU header");
         itsStatus = Idle;
         Fail(TN_CLOSED_BY_PEER);
         return false;
      }
   }
   catch (const StreamIOException& anException)
   {
      if (anException.GetResultCode() != TN_INVALID_PDU)
      {
         throw;
      }
      TracePDU(kPrefix, "Received Invalid PDU type");
      itsStatus = Idle;
      Fail(TN_INVALID_PDU);
      return false;
   }
   if (anInput.GetPDUType() == PDUInputStream::AAbortRQ)
   {
      unsigned int aCount = 0;
      AAbortRQPDU::ReadDynamic(anInput, aCount);
      TracePDU(kPrefix, "received AAbortRQPDU");
      itsStatus = AbortedByPeer;
      return false;
   }
   SkipPDU();
   Abort(AbortSourceServiceProvider, AbortReasonUnexpectedPDU);
   itsStatus = AbortedByUs;
   return true;
}
