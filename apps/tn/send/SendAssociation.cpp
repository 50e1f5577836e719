#include "apps/tn/send/SendAssociation.h"

#include <algorithm>

#include "apps/tn/base/ExitCode.h"
#include "apps/tn/base/Tags.h"
#include "apps/tn/codec/Decompression.h"
#include "apps/tn/files/DatasetChecks.h"
#include "apps/tn/files/DatasetCopy.h"
#include "apps/tn/files/DatasetSyntax.h"
#include "apps/tn/files/DecompressedCopy.h"
#include "apps/tn/files/InputFile.h"
#include "apps/tn/network/AssociationAnswers.h"
#include "apps/tn/network/NetworkFailure.h"
#include "apps/tn/network/Requester.h"
#include "apps/tn/send/SendFile.h"
#include "apps/tn/send/SendPlan.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/foundation/AETitle.h"
#include "talvenor/services/StorageClasses.h"
#include "talvenor/transfer/InputTransferSyntax.h"
#include "talvenor/transfer/OutputTransferSyntax.h"
#include "talvenor/transfer/TransferSyntaxManager.h"
#include "talvenor/ul/DICOMMessageOutputStream.h"
#include "talvenor/ul/SocketDULStreamFactory.h"

namespace
{
// A write to the peer failed. The association's result says why.
struct OutputFailure
{};
} // namespace

OutgoingFile::OutgoingFile(const SendFile& theFile, unsigned int theBlockSize)
    : itsFile(theFile), itsPlainFile(theFile.itsPath), itsPosition(theFile.itsDatasetStart)
{
   if (itsPlainFile.GetIdentity() != theFile.itsIdentity)
   {
      throw StreamIOException("it was changed after tn had looked at it", TN_OPEN_FAILED, 0);
   }
   itsFirst = ReadPiece(theBlockSize);
}

std::unique_ptr<IOBuffer> OutgoingFile::NextPiece(unsigned int theSize)
{
   if (itsFirst && itsFirst->GetBytesAvailable() <= theSize)
   {
      return std::move(itsFirst);
   }
   if (itsFirst) // read for another association, with larger blocks
   {
      itsFirst.reset();
      itsPosition = itsFile.itsDatasetStart;
   }
   return ReadPiece(theSize);
}

std::unique_ptr<IOBuffer> OutgoingFile::ReadPiece(unsigned int theSize)
{
   const auto aSize = static_cast<unsigned int>(std::min<UINT64>(theSize, itsFile.itsDatasetEnd - itsPosition));
   if (aSize == 0)
   {
      return nullptr;
   }
   auto aPiece = std::make_unique<IOBuffer>(aSize);
   if (itsPlainFile.ReadAt(aPiece->GetCopyInPointer(), aSize, itsPosition) != aSize)
   {
      throw IncompleteDataset("it became shorter while it was sent");
   }
   aPiece->SetBytesCopiedIn(aSize);
   itsPosition += aSize;
   return aPiece;
}

// What goes to the peer: every piece has to be taken within the time-out, however long the whole takes. Tells a failure
// of the network from one of the file.
class SendAssociation::Output : public OutputStream
{
public:
   Output(SendAssociation& theAssociation, OutputStream& theStream)
       : itsAssociation(theAssociation), itsStream(theStream)
   {}

   void Write(IOBuffer* theBuffer) override
   {
      const unsigned int aCount = theBuffer->GetBytesAvailable();
      Watched([&] { itsStream.Write(theBuffer); });
      itsAssociation.itsProgress(aCount);
   }
   void Write(const unsigned char* theBytes, unsigned int theCount) override
   {
      Watched([&] { itsStream.Write(theBytes, theCount); });
      itsAssociation.itsProgress(theCount);
   }
   void Flush() override {}
   unsigned int GetMaximumOutputBlockSize() const override { return itsStream.GetMaximumOutputBlockSize(); }

   template <class Action>
   void Watched(Action theAction)
   {
      itsAssociation.itsWatchdog.Begin(itsAssociation.itsRequester.GetTimeout());
      try
      {
         theAction();
         itsAssociation.itsWatchdog.End(); // reading the next piece is not the peer's affair
      }
      catch (const StreamIOException& anException)
      {
         itsAssociation.itsService.SetResultCode(anException.GetResultCode());
         itsAssociation.itsService.SetSystemErrorCode(anException.GetSystemErrorCode());
         throw OutputFailure();
      }
   }

private:
   SendAssociation& itsAssociation;
   OutputStream& itsStream;
};

SendAssociation::SendAssociation(const Requester& theRequester, std::function<void(UINT64)> theProgress)
    : itsRequester(theRequester), itsService(SocketDULStreamFactory::GetInstance()), itsProgress(std::move(theProgress))
{}

SendAssociation::~SendAssociation()
{
   Abort();
}

void SendAssociation::Open(const SendBatch& theBatch)
{
   itsIsDecompressing = theBatch.itsIsDecompressed;
   for (const SendContext& aContext : theBatch.itsContexts)
   {
      auto aProposals = std::make_unique<PresentationContextProposals>(aContext.itsSOPClassUID);
      aProposals->AddTransferSyntaxList(new PresentationContextProposals::TransferSyntaxList(
          aContext.itsTransferSyntaxUIDs.begin(), aContext.itsTransferSyntaxUIDs.end()));
      itsService.AddPresentationContextProposals(aProposals.release());
   }
   itsRequester.Associate(itsService, itsWatchdog);
   const std::unique_ptr<DICOMMessageOutputStream> aMessage(itsService.CreateDICOMMessageOutputStream());
   itsBlockSize = aMessage->GetMaximumOutputBlockSize();
}

SendAssociation::Route SendAssociation::FindRoute(const SendFile& theFile) const
{
   const auto aFind = [&](const RWCString& theSyntax) -> unsigned char {
      return !IsOpen() ? 0 : itsService.GetUsablePresentationContextID(UID(theFile.itsSOPClassUID), UID(theSyntax));
   };
   const bool isNative = SyntaxOf(theFile.itsTransferSyntaxUID).IsNative();
   if (const unsigned char anID = aFind(theFile.itsTransferSyntaxUID); anID != 0)
   {
      const bool canEncode =
          TransferSyntaxManager::GetDefaultInstance().GetTransferSyntaxType(theFile.itsTransferSyntaxUID) != nullptr;
      return {anID, theFile.itsTransferSyntaxUID, !theFile.itsIsIrregular || !canEncode};
   }
   const bool canBeNative = isNative || (itsIsDecompressing && Decompression::IsServed(theFile.itsTransferSyntaxUID));
   for (const RWCString* const aSyntax : NativeSyntaxes())
   {
      if (const unsigned char anID = canBeNative ? aFind(*aSyntax) : 0; anID != 0)
      {
         return {anID, *aSyntax, false};
      }
   }
   throw NotAccepted("the peer does not take it: " +
                     ExplainClass(itsService, theFile.itsSOPClassUID, isNative ? "" : theFile.itsTransferSyntaxUID));
}

// Half of a dataset must not be ended as if it were whole, which the storage would do at its end: the association ends
// first.
void SendAssociation::Send(OutgoingFile& theFile, const Route& theRoute)
{
   const SendFile& aFile = theFile.GetFile();
   itsStorage = std::make_unique<RunTimeClassStorage>(aFile.itsSOPClassUID);
   try
   {
      itsWatchdog.Begin(itsRequester.GetTimeout());
      OutputStream& aStream = itsStorage->GetDatasetOutputStream(
          itsService, theRoute.itsContextID, UID(aFile.itsSOPClassUID), UID(aFile.itsSOPInstanceUID), 0, AETitle());
      itsWatchdog.End();
      Output anOutput(*this, aStream);
      theRoute.itsIsCopied ? Copy(theFile, anOutput) : Encode(aFile, theRoute, anOutput);
      anOutput.Watched([&] { itsStorage->FinishDatasetTransmission(); });
   }
   catch (const OutputFailure&)
   {
      GiveUp(itsWatchdog.End());
   }
   catch (...)
   {
      const bool wasLate = itsWatchdog.End();
      if (!IsOpen()) // announcing the file failed
      {
         GiveUp(wasLate);
      }
      Abort();
      throw;
   }
}

void SendAssociation::Copy(OutgoingFile& theFile, Output& theOutput)
{
   while (std::unique_ptr<IOBuffer> aPiece = theFile.NextPiece(itsBlockSize))
   {
      theOutput.Write(aPiece.release());
   }
   if (theFile.GetFile().GetDatasetSize() % 2 != 0) // of a deflated dataset (PS3.5 A.5)
   {
      constexpr unsigned char kPadding = 0;
      theOutput.Write(&kPadding, 1);
   }
}

void SendAssociation::Encode(const SendFile& theFile, const Route& theRoute, Output& theOutput)
{
   InputFile anInput(theFile.itsPath);
   Part10InputStream& aStream = anInput.GetStream();
   InstanceSpecificDataDictionary aDictionary(
       InstanceSpecificDataDictionary::GetDefaultInstanceSpecificDataDictionary());
   const std::unique_ptr<InputTransferSyntax> aDecoder = aStream.CreateDecoder();
   aDecoder->SetDataDictionary(aDictionary);
   const TransferSyntaxType* const aType =
       TransferSyntaxManager::GetDefaultInstance().GetTransferSyntaxType(theRoute.itsTransferSyntaxUID);
   const std::unique_ptr<OutputTransferSyntax> anEncoder(aType->CreateOutputTransferSyntax(theOutput));
   anEncoder->SetDataDictionary(aDictionary);
   std::size_t aCount = 0;
   DecodeWhole(*aDecoder, aStream, [&] {
      if (aDecoder->GetTransferSyntaxType().IsEncapsulated() && !aType->IsEncapsulated())
      {
         aCount = CopyDecompressed(*aDecoder, *anEncoder, aDictionary);
         return;
      }
      for (; std::unique_ptr<VR> aVR{aDecoder->NextVR()}; ++aCount)
      {
         SaveElement(*anEncoder, std::move(aVR));
      }
   });
   CheckIsWhole(*aDecoder, aStream, aCount);
}

SendAssociation::Answer SendAssociation::ReadAnswer()
{
   DICOMCommandObject anAnswer;
   itsWatchdog.Begin(itsRequester.GetTimeout());
   const int isAnswered = itsStorage->ReadResponse(itsService, anAnswer);
   const bool wasLate = itsWatchdog.End();
   if (!isAnswered)
   {
      GiveUp(wasLate);
   }
   UINT16 aMessageID = 0;
   Answer aResult{};
   const bool isOurs = anAnswer.GetUINT16(0, ElementOf(CommandTag::kMessageIDBeingRespondedTo), aMessageID) &&
                       aMessageID == itsStorage->GetMessageID();
   if (!isOurs || !anAnswer.GetUINT16(0, ElementOf(CommandTag::kStatus), aResult.itsStatus))
   {
      Abort();
      throw NetworkFailure(ExitCode::kPeerFailed, isOurs ? "the answer has no status"
                                                         : "the answer is to message " + std::to_string(aMessageID) +
                                                               ", sent was message " +
                                                               std::to_string(itsStorage->GetMessageID()));
   }
   aResult.itsComment = TextOf(anAnswer, CommandTag::kErrorComment);
   return aResult;
}

void SendAssociation::Close()
{
   itsWatchdog.Begin(itsRequester.GetTimeout());
   itsService.Close();
   itsWatchdog.End();
}

void SendAssociation::Abort()
{
   itsRequester.Abort(itsService, itsWatchdog);
}

// Ends what an operation of the network has failed on, and says why it did.
void SendAssociation::GiveUp(bool wasLate)
{
   if (!wasLate)
   {
      LearnWhy();
   }
   const NetworkFailure aFailure = itsRequester.ExplainFailure(itsService, wasLate);
   Abort();
   throw aFailure;
}

// A peer that aborts in the middle of a message may be noticed first by a write that fails: what it said before it
// closed can still be read.
void SendAssociation::LearnWhy()
{
   const TNResultCode aCode = itsService.GetResultCode();
   const int anError = itsService.GetSystemErrorCode();
   if (!IsOpen() || (aCode != TN_END_OF_FILE && aCode != TN_SYSTEM_CALL_FAILED))
   {
      return;
   }
   DICOMCommandObject anIgnored;
   itsWatchdog.Begin(std::chrono::seconds(1));
   itsService.Read(anIgnored);
   itsWatchdog.End();
   if (itsService.GetResultCode() != TN_PEER_ABORTED)
   {
      itsService.SetResultCode(aCode);
      itsService.SetSystemErrorCode(anError);
   }
}
