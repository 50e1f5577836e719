// One DICOM association seen from one side (PS3.8): requests it over a connected transport or answers a peer's request,
// negotiates presentation contexts, carries DIMSE messages both ways, and ends it by release or abort.
//
//    SocketDULStreamFactory& aFactory = SocketDULStreamFactory::GetInstance();
//    PDU_Service aService(aFactory);
//    aService.SetLocalAddress("WORKSTATION");
//    aService.SetRemoteAddress("ARCHIVE");
//    aService.AddPresentationContextProposal("1.2.840.10008.1.1", "1.2.840.10008.1.2");
//    if (aService.RequestAssociation(aFactory.GetConnectedDULStream("archive.example", "104")) && ...)
//       aService.Close();
//
// The service is at the same time each of the six PDUs of an association's life: a base holds the last PDU of its kind
// that was sent or received here (qualify its members, as in aService.AAssociateRJPDU::GetReason()), and the base of
// A-ASSOCIATE-RQ is where a request is composed. What to accept is decided by virtual hooks.
//
// Operations return non-zero for success; on failure they return 0 and leave GetResultCode and GetSystemErrorCode. They
// do not throw, unless said otherwise. Whatever a peer sends ends in a result, never in an exception; memory stays
// bounded by what has really arrived, command sets and association PDUs by 1 MiB.
//
// One thread at a time; another one may end a wait through the abort flags of the socket. One association at a time;
// the service may be used for the next when one has ended.
#pragma once

#include <functional>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "talvenor/association/PresentationContextProposals.h"
#include "talvenor/association/UsablePresentationContext.h"
#include "talvenor/dataset/DICOMFileType.h"
#include "talvenor/foundation/BasicTypes.h"
#include "talvenor/foundation/TNResult.h"
#include "talvenor/ul/AAbortRQPDU.h"
#include "talvenor/ul/AAssociateACPDU.h"
#include "talvenor/ul/AAssociateRJPDU.h"
#include "talvenor/ul/AAssociateRQPDU.h"
#include "talvenor/ul/AReleaseRPPDU.h"
#include "talvenor/ul/AReleaseRQPDU.h"

class AssociationTransport;
class DICOMCommandObject;
class DICOMMessageOutputStream;
class DICOMObject;
class DULStream;
class DULStreamFactory;
class ExceptionBase;
class InputTransferSyntax;

class TALVENOR_API PDU_Service : public AAssociateRQPDU,
                                 public AAssociateACPDU,
                                 public AAssociateRJPDU,
                                 public AReleaseRQPDU,
                                 public AReleaseRPPDU,
                                 public AAbortRQPDU
{
public:
   enum AssociationStatus
   {
      Requesting = 1,          // a request is being sent or awaited, on either side
      AcceptedAsAcceptor = 2,  // we accepted at least one context
      AcceptedAsRequester = 3, // the peer accepted at least one context
      Rejected = 4,            // an A-ASSOCIATE-RJ was sent or received, or no context was accepted
      ReleasedByUs = 5,
      ReleasedByPeer = 6,
      AbortedByUs = 7,
      AbortedByPeer = 8,
      Idle = 9,          // no association
      ProtocolError = 10 // the peer broke the protocol
   };

   // The states of PS3.8 9.2.1; 0 for none. Kept for hosts, the service does not consult it.
   enum DULState
   {
      NoState = 0,
      Sta1,
      Sta2,
      Sta3,
      Sta4,
      Sta5,
      Sta6,
      Sta7,
      Sta8,
      Sta9,
      Sta10,
      Sta11,
      Sta12,
      Sta13
   };

   using ProposalList = RWTValOrderedVector<PresentationContextProposals*>;
   using UsableContextList = RWTValOrderedVector<UsablePresentationContext>;
   using TransferSyntaxCandidates = RWTValOrderedVector<TransferSyntaxItem>;

   // theFactory is borrowed and must outlive the service.
   explicit PDU_Service(DULStreamFactory& theFactory);

   // A service with the same request, proposals, timers and statistics, without an association.
   PDU_Service(const PDU_Service& theOther);
   PDU_Service& operator=(const PDU_Service&) = delete;

   // Closes the transport without a release: Close first.
   ~PDU_Service() override;

   // Presentation contexts. IDs are 0 and pointers null where there is none; pointers stay valid until the association
   // ends.

   virtual unsigned char GetRequestedPresentationContextID(const UID& theAbstractSyntax) const;
   virtual int GetRequestedAbstractSyntaxUID(unsigned char theID, UID& theAbstractSyntax) const;
   virtual unsigned char GetUsablePresentationContextID(const UID& theAbstractSyntax,
                                                        const UID& theTransferSyntax) const;
   virtual unsigned char GetUsablePresentationContextID(const UID& theAbstractSyntax) const; // of the first one
   virtual int GetUsablePresentationContexts(const UID& theAbstractSyntax, UsableContextList& theContexts) const;
   virtual int GetUsablePresentationContexts(UsableContextList& theContexts) const; // all
   virtual const UsablePresentationContext* GetUsablePresentationContext(const UID& theAbstractSyntax,
                                                                         const UID& theTransferSyntax) const;
   virtual int GetUsablePresentationContextInfo(unsigned char theID, UsablePresentationContext& theContext) const;
   virtual int GetUsableTransferSyntaxUID(unsigned char theID, UID& theTransferSyntax) const;

   // The peer: the name of its host (its address when the name is not known), looked up once for each connection; the
   // host name alone; address and port. Empty without a transport.
   virtual RWCString GetPeerName() const;
   virtual RWCString GetPeerHostName() const;
   virtual RWCString GetPeerIPAddress() const;
   virtual RWCString GetPeerPort() const;

   // Gives a received dataset the meta information (group 0002) of a file: theType chooses the transfer
   // syntax, theTransferSyntax is the given one (null: explicit VR little endian). Returns 0, with a line in the error
   // log, when the dataset does not name its SOP class and instance, or for another type.
   virtual int MakeChapter10(DICOMObject& theObject, const RWCString& theSourceAETitle, DICOMFileType theType,
                             const UID* theTransferSyntax);

   // What the next request proposes. The first form takes the list and its proposals and sets the pointer to null, the
   // second copies. Proposals that lead beyond 128 contexts are left out.
   virtual void SetProposedPresentationContexts(ProposalList*& theProposals);
   virtual void SetProposedPresentationContexts(const ProposalList& theProposals);
   virtual void ClearProposedPresentationContexts();

   // For the next request.
   virtual void AddSCPSCURoleRequest(const SCPSCURoleSelectSubItem& theRole);
   virtual void SetApplicationContext(const UID& theName);
   virtual void SetLocalAddress(const RWCString& theTitle);  // the calling AE title
   virtual void SetRemoteAddress(const RWCString& theTitle); // the called AE title

   // The peer's AE title, without padding.
   virtual RWCString GetRemoteAddress() const;

   // Sends an A-ABORT. The transport stays open: see WaitForTransportCloseOrTimeout.
   virtual int Abort(AbortSource theSource, AbortReason theReason);

   // Releases the association, if there is one, and closes the transport. A P-DATA from the peer is ignored meanwhile.
   // 1 when it was released or none was there.
   virtual int Close();

   // Receive the next message. A command set replaces the contents of theCommand, and the data set of the command
   // before it is skipped when nobody has read it; one that no command has announced aborts the association
   // (TN_UNEXPECTED_DATASET). A data set is added to theObject, whose byte order becomes that of the transfer syntax.
   // When the peer releases or aborts, that is answered, and shows in the result (TN_PEER_RELEASED, TN_PEER_ABORTED).
   // Silence is TN_REQUEST_WAIT_TIMED_OUT in front of a command set, TN_TRANSPORT_TIMED_OUT otherwise. A wait for a
   // message that an abort flag has ended is TN_CLOSED_BY_PEER, too, with the system error ECANCELED.
   virtual int ReadCommand(DICOMCommandObject& theCommand);
   virtual int Read(DICOMObject& theObject);

   // Waits, at most for the ARR timer, until the peer closes the connection, and closes it. For the time after an abort
   // or a rejection (PS3.8 9.2.3, state 13).
   virtual int WaitForTransportCloseOrTimeout();

   // The transport's time-out for one read, in seconds; 0 without a transport. SetTimeout returns 0 where the transport
   // has none.
   virtual int SetTimeout(int theSeconds);
   virtual TNResultCode GetResultCode() const { return itsResultCode; }
   virtual void SetResultCode(TNResultCode theCode) { itsResultCode = theCode; }
   virtual int GetSystemErrorCode() const { return itsSystemErrorCode; }
   virtual void SetSystemErrorCode(int theCode) { itsSystemErrorCode = theCode; }
   virtual int GetTimeout() const;

   // Evaluate a received request as accepting one does, but without an answer, and an acceptance. Non-zero when there
   // is a usable context.
   virtual int InterogateAAssociateRQPDU();
   virtual int InterogateAAssociateACPDU();

   // Hooks of negotiation. The base accepts every title, application context and presentation context, and every
   // abstract syntax for which a role is left; it takes implicit and explicit VR little endian.
   virtual int CanYouHandleTransferSyntax(const TransferSyntaxItem& theSyntax);

   // Which of theCandidates to take, null for none. The base prefers lossless compression.
   virtual const TransferSyntaxItem* GetPreferredTransferSyntax(const AbstractSyntaxSubItem& theAbstractSyntax,
                                                                const TransferSyntaxCandidates& theCandidates);
   virtual void AddTransferSyntaxes(PresentationContextItem& theContext); // the two that the base takes
   virtual void GetImplementationClassUIDSubItem(ImplementationClassUIDSubItem& theItem) const;
   virtual void GetImplementationVersionNameSubItem(ImplementationVersionNameSubItem& theItem) const;
   virtual int ShouldIAcceptRemoteAppTitle(const RWCString& theTitle); // the calling one
   virtual int ShouldIAcceptLocalAppTitle(const RWCString& theTitle);  // the called one
   virtual int ShouldIAcceptApplicationContext(const ApplicationContextItem& theContext);

   // Asked last, with the answer that is about to be given.
   virtual int ShouldIAcceptPresentationContext(const PresentationContextItem& theContext,
                                                const PresentationContextAcceptItem& theAnswer);

   // May change the roles (0 or 1), which are those of the peer as it proposed them; the answer tells them.
   virtual int ShouldIAcceptAbstractSyntax(const AbstractSyntaxSubItem& theSyntax, unsigned char& theSCPRole,
                                           unsigned char& theSCURole);

protected:
   // An addition: a request has arrived that cannot be read; the transport is closed when this returns. The base does
   // nothing; a host that wants to may answer with Abort. Not called for an A-ABORT in its place, which needs no
   // answer.
   virtual void OnUnreadableRequest(TNResultCode theCode);

   // An addition: a set of bits of which bit 0 stands for version 1, the only one there is (PS3.8 9.3.2). The base
   // accepts every one; a refusal is the protocol machine's (source 2, reason 2) with TN_UNSUPPORTED here.
   virtual int ShouldIAcceptProtocolVersion(UINT16 theVersions);

public:
   // Requester: takes theStream, which is connected (null and others: TN_CLOSED_BY_US), ends what there was, proposes,
   // and waits for the answer. 1 when at least one context is usable.
   int RequestAssociation(DULStream* theStream);

   // Acceptor: takes theStream likewise, reads the request and answers it. 1 when at least one context is accepted.
   int WaitForAssociationRequest(DULStream* theStream);

   // An addition, for a host that has to turn requests down: takes theStream, reads the request, answers with an
   // A-ASSOCIATE-RJ and closes. 1 when it was sent.
   int RefuseAssociationRequest(DULStream* theStream, unsigned char theResult, unsigned char theSource,
                                unsigned char theReason);

   // Send one command or data set on a context: TN_NO_CONTEXT_CHOSEN for ID 0, TN_NO_CONTEXT_FOR_ABSTRACT_SYNTAX when
   // it is not usable; in the second form on the first one for the abstract syntax. With theFinishPDU 0 a command set
   // stays in the open PDU, which its data set will share. The context becomes the current one. A failure after the
   // first byte has gone out aborts the association.
   int Write(DICOMObject& theObject, unsigned char theID, int theFinishPDU);
   int Write(DICOMObject& theObject, const UID& theAbstractSyntax, int theFinishPDU);

   // A decoder on the next message, owned by the caller, who reads its elements until NextVR is null; what it leaves
   // unread is skipped before the next message. Null on failure, and when the peer has ended the association. The
   // decoder may outlive the association: reading then throws. Elements are decoded as StreamIOException allows: an
   // exception of the decoder leaves the association unusable (Abort it).
   InputTransferSyntax* GetInputTransferSyntax();

   // A stream for one message, owned by the caller. Throws StreamIOException (TN_NOT_CONNECTED) without a transport.
   // The PDU has to be finished (FinishPDU) behind the message. It may outlive the association: writing then throws.
   DICOMMessageOutputStream* CreateDICOMMessageOutputStream();

   // Aborts and waits as WaitForTransportCloseOrTimeout does. Afterwards the transport is closed.
   void AbortAndWaitForTransportCloseOrTimeout(AbortSource theSource, AbortReason theReason);

   // Proposals. 0 when 128 contexts are proposed already; the pointer form takes theProposals, and destroys them when
   // they lead beyond that.
   int AddPresentationContextProposal(const RWCString& theAbstractSyntax, const RWCString& theTransferSyntax);
   int AddPresentationContextProposals(PresentationContextProposals* theProposals);
   unsigned int GetProposedPresentationContextCount() const { return itsProposedContextCount; }

   // The first one with that ID; aliases come behind the contexts that they stand for.
   const UsablePresentationContext* GetUsablePresentationContext(unsigned char theID) const;
   unsigned int GetUsablePresentationContextCount() const
   {
      return static_cast<unsigned int>(itsUsableContexts.size());
   }
   const PresentationContextItem* GetRequestedPresentationContextItem(unsigned char theID) const
   {
      return GetPresentationContextItem(theID);
   }

   // The context to send a dataset with that is in theTransferSyntax: one in that syntax or, for an uncompressed one
   // and for one that the peer is known to reject (asked with theCheckRejected), one in an uncompressed syntax.
   const UsablePresentationContext*
   GetBestPresentationContext(const UID& theAbstractSyntax, const UID& theTransferSyntax, int theCheckRejected) const;
   unsigned char GetBestPresentationContextID(const UID& theAbstractSyntax, const UID& theTransferSyntax,
                                              int theCheckRejected) const;

   // Makes every usable context of theAbstractSyntax also one of theAlias, with the same ID.
   void AddAbstractSyntaxAlias(const UID& theAlias, const UID& theAbstractSyntax);

   // That of the message being read or written; ID 0 and null when there is none. Setting it is 0 for an unusable ID.
   const UsablePresentationContext* GetCurrentPresentationContext() const;
   unsigned char GetCurrentPresentationContextID() const;
   int SetCurrentPresentationContextID(unsigned char theID);
   void SetCurrentPresentationContext(const UsablePresentationContext& theContext) { itsCurrentContext = theContext; }

   AssociationStatus GetAssociationStatus() const { return itsStatus; }
   void SetAssociationStatus(AssociationStatus theStatus) { itsStatus = theStatus; }
   DULState GetDULState() const { return itsDULState; }
   int Connected() const { return itsStatus == AcceptedAsAcceptor || itsStatus == AcceptedAsRequester; }
   int WeAreRequester() const { return itsIsRequester; }

   // How long to wait for the peer to close after an abort, in seconds; 0 or less is without limit.
   int GetARRTimer() const { return itsARRTimer; }
   void SetARRTimer(int theSeconds) { itsARRTimer = theSeconds; }
   static int GetDefaultARRTimer() { return itsDefaultARRTimer; }
   static void SetDefaultARRTimer(int theSeconds) { itsDefaultARRTimer = theSeconds; }

   // Whether compressed contexts are used (GetBestPresentationContext).
   static int GetEnableCompressedTransferSyntax() { return itsEnableCompressedTransferSyntaxFlag; }
   static void SetEnableCompressedTransferSyntax(int theFlag) { itsEnableCompressedTransferSyntaxFlag = theFlag; }

   // An addition: the longest data set that Read takes, in bytes, and one element for each 256 of them, 16384 at least;
   // a longer one aborts the association (TN_INVALID_ENCODING). Without limit at first: a peer can send as much as it
   // likes.
   void SetLongestDataset(UINT64 theBytes) { itsLongestDataset = theBytes; }

   // Of ReadCommand, Read and Write: calls that succeeded and failed, bytes of messages without the headers of PDUs,
   // and time spent; waiting for a command to begin does not count.
   unsigned long GetReadOKCount() const { return itsReadStatistics.itsOKCount; }
   unsigned long GetReadErrorCount() const { return itsReadStatistics.itsErrorCount; }
   double GetBytesRead() const { return itsReadStatistics.itsBytes; }
   double GetReadSeconds() const { return itsReadStatistics.itsSeconds; }
   unsigned long GetWriteOKCount() const { return itsWriteStatistics.itsOKCount; }
   unsigned long GetWriteErrorCount() const { return itsWriteStatistics.itsErrorCount; }
   double GetBytesWritten() const { return itsWriteStatistics.itsBytes; }
   double GetWriteSeconds() const { return itsWriteStatistics.itsSeconds; }
   void ClearReadIOStats() { itsReadStatistics = {}; }
   void ClearWriteIOStats() { itsWriteStatistics = {}; }
   void ClearIOStats();

   // The transport, lent; null when there is none.
   DULStream* GetDULStream() const;
   DULStreamFactory& GetDULStreamFactory() const { return itsFactory; }

   static RWCString PDUTypeToString(unsigned char theType);

   // Settings of the whole process, for services made from then on.
   static int itsDefaultARRTimer;
   static int itsEnableCompressedTransferSyntaxFlag;

protected:
   // One slot: not to be nested.
   void SaveResultCodes();
   void RestoreResultCodes();

private:
   struct Statistics
   {
      unsigned long itsOKCount = 0;
      unsigned long itsErrorCount = 0;
      double itsBytes = 0;
      double itsSeconds = 0;
   };
   struct ContextKey
   {
      auto operator<=>(const ContextKey&) const = default;
      RWCString itsAbstractSyntax;
      RWCString itsTransferSyntax;
   };
   struct Refusal // of a request: what the A-ASSOCIATE-RJ says, and the result here
   {
      unsigned char itsSource;
      unsigned char itsReason;
      TNResultCode itsCode;
   };
   class MessageSource;
   class MessageOutput;

   void SetDULState(DULState theState) { itsDULState = theState; }

   // The transport.
   bool TakeTransport(std::unique_ptr<DULStream> theStream);
   void CloseTransport();
   void DropTransport();
   bool IsInputConnected() const;
   bool IsOutputConnected() const;
   void SetSendLimit(UINT32 thePeerMaximum);

   // Runs theAction; what it throws becomes the result.
   int Guarded(const std::function<int()>& theAction);
   void TakeException();
   int Fail(TNResultCode theCode);
   void TraceResultCode(const char* thePrefix) const;

   // Requesting.
   void ComposeRequest();
   int ReadAnswer();
   int TakeAcceptance();
   int TakeRejection();
   int RefuseAnswer();
   void TakeAcceptedContext(const PresentationContextAcceptItem& theAnswer);
   bool AreRolesAccepted(const ULUID& theSOPClass) const;
   void NoteRejectedSyntaxes(const PresentationContextItem& theContext) const;

   // Accepting.
   int ReadRequest();
   int RespondToAssociationRequest();
   std::optional<Refusal> FindRefusal();
   void PrepareAcceptance();
   void DecideContexts();
   void DecideContext(const PresentationContextItem& theContext);
   bool IsAbstractSyntaxAccepted(const PresentationContextItem& theContext);
   const TransferSyntaxItem* ChooseTransferSyntax(const PresentationContextItem& theContext);
   void SendRejection(unsigned char theResult, unsigned char theSource, unsigned char theReason);
   int Reject(const Refusal& theRefusal);
   void AddUsableContext(const UsablePresentationContext& theContext);
   void ClearContexts();

   // Receiving.
   enum class Wanted
   {
      Any,
      Command,
      Data
   };
   InputTransferSyntax* OpenNextMessage(Wanted theWanted);
   bool StartPDU();
   InputTransferSyntax* OpenMessage(Wanted theWanted);
   void FailHeader();
   void FailMessage();
   void HandleControlPDU(unsigned char theType);
   int ReadObject(DICOMObject& theObject, Wanted theWanted);

   // Sending.
   int WriteObject(DICOMObject& theObject, const UsablePresentationContext& theContext, int theFinishPDU);

   // Ending.
   int Release();
   bool AnswerRelease();
   void WaitForClose();
   bool TakePDUWhileClosing();
   void SkipPDU();

   RWTValOrderedVector<PresentationContextAcceptItem> itsAcceptedContexts;
   int itsARRTimer = itsDefaultARRTimer;
   std::list<UsablePresentationContext> itsUsableContexts; // their addresses are handed out
   std::map<ContextKey, const UsablePresentationContext*> itsUsableContextIndex;
   Statistics itsReadStatistics;
   Statistics itsWriteStatistics;
   std::shared_ptr<AssociationTransport> itsTransport; // null when there is none; streams handed out share it
   TNResultCode itsSavedResultCode = TN_NO_ERROR;
   int itsSavedSystemErrorCode = 0;
   bool itsIsReadingCommand = false;
   bool itsMayHaveDataset = false; // a data set may follow the last command
   UINT64 itsLongestDataset = ~UINT64{0};
   int itsIsRequester = 0;
   AssociationStatus itsStatus = Idle;
   DULState itsDULState = NoState;
   DULStreamFactory& itsFactory;
   TNResultCode itsResultCode = TN_NOT_CONNECTED;
   int itsSystemErrorCode = 0;
   std::optional<UsablePresentationContext> itsCurrentContext; // by value: it may outlive the association
   std::vector<std::unique_ptr<PresentationContextProposals>> itsProposals;
   unsigned int itsProposedContextCount = 0;
   mutable std::optional<RWCString> itsPeerName; // once looked up
};
