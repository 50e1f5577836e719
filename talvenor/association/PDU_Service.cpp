#include "talvenor/association/PDU_Service.h"

#include <new>

#include "talvenor/association/AssociationTransport.h"
#include "talvenor/foundation/Exceptions.h"
#include "talvenor/foundation/LibraryIdentity.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/foundation/TNTrace.h"
#include "talvenor/ul/DULStreamFactory.h"

namespace
{
struct PDUName
{
   unsigned char itsType;
   const char* itsName;
};

// PS3.8 9.3.1.
constexpr PDUName kPDUNames[] = {
    {0x01, "A-ASSOCIATE-RQ"}, {0x02, "A-ASSOCIATE-AC"}, {0x03, "A-ASSOCIATE-RJ"}, {0x04, "P-DATA-TF"},
    {0x05, "A-RELEASE-RQ"},   {0x06, "A-RELEASE-RP"},   {0x07, "A-ABORT-RQ"},
};

constexpr unsigned int kSmallestSendLength = 14; // room for two bytes of a PDV
} // namespace

int PDU_Service::itsDefaultARRTimer = 180;
int PDU_Service::itsEnableCompressedTransferSyntaxFlag = 1;

PDU_Service::PDU_Service(DULStreamFactory& theFactory) : itsFactory(theFactory) {}

PDU_Service::PDU_Service(const PDU_Service& theOther)
    : AAssociateRQPDU(theOther), AAssociateACPDU(theOther), AAssociateRJPDU(theOther), AReleaseRQPDU(theOther),
      AReleaseRPPDU(theOther), AAbortRQPDU(theOther), itsARRTimer(theOther.itsARRTimer),
      itsReadStatistics(theOther.itsReadStatistics), itsWriteStatistics(theOther.itsWriteStatistics),
      itsLongestDataset(theOther.itsLongestDataset), itsFactory(theOther.itsFactory)
{
   for (const auto& aProposals : theOther.itsProposals)
   {
      AddPresentationContextProposals(new PresentationContextProposals(*aProposals));
   }
}

PDU_Service::~PDU_Service()
{
   CloseTransport();
}

RWCString PDU_Service::PDUTypeToString(unsigned char theType)
{
   for (const PDUName& aName : kPDUNames)
   {
      if (aName.itsType == theType)
      {
         return aName.itsName;
      }
   }
   return "Unrecognized (" + std::to_string(unsigned{theType}) + ")";
}

RWCString PDU_Service::GetPeerName() const
{
   if (!itsPeerName)
   {
      const RWCString aName = GetPeerHostName();
      itsPeerName = aName.empty() ? GetPeerIPAddress() : aName;
   }
   return *itsPeerName;
}

RWCString PDU_Service::GetPeerHostName() const
{
   return itsTransport ? itsTransport->GetStream().GetPeerName() : RWCString();
}

RWCString PDU_Service::GetPeerIPAddress() const
{
   return itsTransport ? itsTransport->GetStream().GetPeerIPAddress() : RWCString();
}

RWCString PDU_Service::GetPeerPort() const
{
   return itsTransport ? itsTransport->GetStream().GetPeerPort() : RWCString();
}

void PDU_Service::AddSCPSCURoleRequest(const SCPSCURoleSelectSubItem& theRole)
{
   AAssociateRQPDU::GetUserInformationItem().AddSCPSCURole(theRole);
}

void PDU_Service::SetApplicationContext(const UID& theName)
{
   AAssociateRQPDU::SetApplicationContext(ULUID(theName));
}

void PDU_Service::SetLocalAddress(const RWCString& theTitle)
{
   AAssociateRQPDU::SetCallingAppTitle(theTitle);
}

void PDU_Service::SetRemoteAddress(const RWCString& theTitle)
{
   AAssociateRQPDU::SetCalledAppTitle(theTitle);
}

RWCString PDU_Service::GetRemoteAddress() const
{
   return itsIsRequester ? GetCalledAppTitle() : GetCallingAppTitle();
}

int PDU_Service::SetTimeout(int theSeconds)
{
   return itsTransport ? itsTransport->GetStream().SetTimeout(theSeconds) : 0;
}

int PDU_Service::GetTimeout() const
{
   return itsTransport ? itsTransport->GetStream().GetTimeout() : 0;
}

void PDU_Service::ClearIOStats()
{
   ClearReadIOStats();
   ClearWriteIOStats();
}

DULStream* PDU_Service::GetDULStream() const
{
   return itsTransport ? &itsTransport->GetStream() : nullptr;
}

void PDU_Service::GetImplementationClassUIDSubItem(ImplementationClassUIDSubItem& theItem) const
{
   theItem.Set(RWCString(kImplementationClassUID));
}

void PDU_Service::GetImplementationVersionNameSubItem(ImplementationVersionNameSubItem& theItem) const
{
   theItem.SetName(kImplementationVersionName);
}

void PDU_Service::OnUnreadableRequest(TNResultCode) {}

void PDU_Service::SaveResultCodes()
{
   itsSavedResultCode = itsResultCode;
   itsSavedSystemErrorCode = itsSystemErrorCode;
}

void PDU_Service::RestoreResultCodes()
{
   itsResultCode = itsSavedResultCode;
   itsSystemErrorCode = itsSavedSystemErrorCode;
}

// Ends what there was before. False, and nothing taken, for a stream that is not connected.
bool PDU_Service::TakeTransport(std::unique_ptr<DULStream> theStream)
{
   Close();
   DropTransport();
   if (!theStream || !theStream->InputConnected() || !theStream->OutputConnected())
   {
      itsResultCode = TN_CLOSED_BY_US;
      itsStatus = Idle;
      return false;
   }
   itsTransport = std::make_shared<AssociationTransport>(std::move(theStream));
   itsIsRequester = 0;
   itsMayHaveDataset = false;
   itsStatus = Requesting;
   return true;
}

// Of an association that was open or on its way nothing is left; how one ended stays to be read.
void PDU_Service::CloseTransport()
{
   if (itsTransport)
   {
      try
      {
         itsTransport->Close();
      }
      catch (const ExceptionBase& anException)
      {
         startentry(gTNErrorLog) << "PDU_Service::CloseTransport(): " << anException.why() << "\n" << endentry;
      }
   }
   if (itsStatus == Requesting || Connected())
   {
      itsStatus = Idle;
   }
}

void PDU_Service::DropTransport()
{
   CloseTransport();
   itsTransport.reset();
   itsPeerName.reset();
}

bool PDU_Service::IsInputConnected() const
{
   return itsTransport && itsTransport->IsOpen() && itsTransport->GetStream().InputConnected();
}

bool PDU_Service::IsOutputConnected() const
{
   return itsTransport && itsTransport->IsOpen() && itsTransport->GetStream().OutputConnected();
}

// thePeerMaximum is the length of the longest P-DATA the peer takes, 0 for no limit (PS3.8 D.1).
void PDU_Service::SetSendLimit(UINT32 thePeerMaximum)
{
   const UINT32 aDefault = PDUOutputStream::GetDefaultMaxPDUSendLength();
   const UINT32 aLimit = thePeerMaximum == 0 ? aDefault : std::min(thePeerMaximum, aDefault);
   itsTransport->GetOutput().SetMaxPDUSendLength(std::max(aLimit, kSmallestSendLength));
}

int PDU_Service::Guarded(const std::function<int()>& theAction)
{
   try
   {
      return theAction();
   }
   catch (...)
   {
      TakeException();
      return 0;
   }
}

// Whatever the layers below throw, as result and platform error. To be called in a handler.
void PDU_Service::TakeException()
{
   itsSystemErrorCode = 0;
   try
   {
      throw;
   }
   catch (const StreamIOException& anException)
   {
      itsResultCode = anException.GetResultCode();
      itsSystemErrorCode = anException.GetSystemErrorCode();
   }
   catch (const BadAllocException&)
   {
      itsResultCode = TN_OUT_OF_MEMORY;
   }
   catch (const std::bad_alloc&)
   {
      itsResultCode = TN_OUT_OF_MEMORY;
   }
   catch (...)
   {
      itsResultCode = TN_INTERNAL_ERROR;
   }
}

int PDU_Service::Fail(TNResultCode theCode)
{
   itsResultCode = theCode;
   itsSystemErrorCode = 0;
   return 0;
}

void PDU_Service::TraceResultCode(const char* thePrefix) const
{
   if (gTNTracer(TNTrace::TNTracePDU))
   {
      const RWCString anError = itsResultCode == TN_SYSTEM_CALL_FAILED
                                    ? " (System error code " + std::to_string(itsSystemErrorCode) + ")"
                                    : RWCString();
      startentry(gTNTracer) << thePrefix << TNResult::Describe(itsResultCode) << anError << "\n" << endentry;
   }
}
