#include <algorithm>
#include <memory>
#include <new>

#include "talvenor/association/UsablePresentationContext.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dataset/MVRFactory.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/dimse/CommandElement.h"
#include "talvenor/foundation/AETitle.h"
#include "talvenor/foundation/Exceptions.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/io/IOBuffer.h"
#include "talvenor/io/InputStream.h"
#include "talvenor/io/OutputStream.h"
#include "talvenor/pixel/PixelDataFragmentInputStreamVR.h"
#include "talvenor/services/RetrieveOperation.h"
#include "talvenor/services/StorageClasses.h"
#include "talvenor/services/StorageStatus.h"
#include "talvenor/transfer/InputTransferSyntax.h"
#include "talvenor/transfer/OutputTransferSyntax.h"
#include "talvenor/transfer/TransferSyntaxType.h"

namespace
{
constexpr UINT32 kPixelData = 0x7FE00010;
constexpr UINT16 kIdentifyingGroup = 0x0008;
constexpr UINT16 kSOPClassUID = 0x0016;
constexpr UINT16 kSOPInstanceUID = 0x0018;

constexpr char kPrivateCreator[] = "CORVAN0";
constexpr char kReconstructedImage[] = "ReconstImageFlag"; // 1: the pixels were compressed once

// A peer of a C-STORE sub-operation is not told whose C-MOVE it belongs to.
constexpr UINT16 kNoOriginatorMessage = 0;

[[noreturn]] void Throw(const char* theText, TNResultCode theCode)
{
   throw StreamIOException((RWCString("StandardRetrieve::Read: ") + theText).c_str(), theCode, 0);
}
} // namespace

// What the host has opened, and the context of the destination on which it is to go.
struct RetrieveOperation::Instance
{
   explicit Instance(TNEndian::EndianType theEndian) : itsHeader(theEndian) {}

   DICOMDataObject itsHeader;
   std::unique_ptr<InputTransferSyntax> itsInput;
   const TransferSyntaxType* itsSourceSyntax = nullptr;
   unsigned int itsSize = 0;
   RWCString itsSOPClass;
   RWCString itsSOPInstance;
   UsablePresentationContext itsContext;
};

bool RetrieveOperation::Store(const DICOMDataObject* theMatch)
{
   Tell(itsStoreService, Progress::SubOperationBegins, theMatch != nullptr ? *theMatch : itsIdentifier);
   Instance anInstance(itsCommand.GetEndian());
   if (!Open(theMatch, anInstance) || !Connect(theMatch, anInstance))
   {
      return false;
   }
   RunTimeClassStorage aStorage(anInstance.itsSOPClass);
   return Send(theMatch, anInstance, aStorage) && TakeAnswer(anInstance, aStorage);
}

bool RetrieveOperation::Open(const DICOMDataObject* theMatch, Instance& theInstance)
{
   if (!IsOpened(theMatch, theInstance))
   {
      return Fail(theMatch, "Retrieval of image file \"header\" failed. Check error log.");
   }
   const DICOMDataObject& aHeader = theInstance.itsHeader;
   aHeader.GetString(kIdentifyingGroup, kSOPClassUID, theInstance.itsSOPClass);
   aHeader.GetString(kIdentifyingGroup, kSOPInstanceUID, theInstance.itsSOPInstance);
   if (theInstance.itsSOPClass.empty() || theInstance.itsSOPInstance.empty())
   {
      return Fail(theMatch, "Retrieved image file \"header\" is missing SOPInstanceUID or SOPClassUID.");
   }
   return true;
}

bool RetrieveOperation::IsOpened(const DICOMDataObject* theMatch, Instance& theInstance)
{
   if (theMatch == nullptr)
   {
      return false;
   }
   InputTransferSyntax* anInput = nullptr;
   int hasFailed = 1;
   try
   {
      hasFailed = itsRetrieve.RetrieveHeader(theMatch, theInstance.itsHeader, anInput, theInstance.itsSourceSyntax,
                                             theInstance.itsSize);
   }
   catch (...) // whatever the host's code throws: the other instances are wanted too
   {}
   theInstance.itsInput.reset(anInput);
   if (hasFailed || anInput == nullptr || theInstance.itsSourceSyntax == nullptr)
   {
      return false;
   }
   theInstance.itsHeader.SetEndian(theInstance.itsSourceSyntax->GetEndian());
   return true;
}

bool RetrieveOperation::Connect(const DICOMDataObject* theMatch, Instance& theInstance)
{
   const UsablePresentationContext* aContext = nullptr;
   itsRetrieve.GetConnected(itsStoreService, itsDestination.itsHost, itsDestination.itsPort,
                            itsDestination.itsCallingTitle, itsDestination.itsTitle, theInstance.itsSOPClass,
                            theInstance.itsSourceSyntax->GetUID(), 0, aContext);
   if (aContext == nullptr)
   {
      return Fail(theMatch, "Unable to find usable presentation context.");
   }
   theInstance.itsContext = *aContext;
   return true;
}

// A data set of which a part is on its way is never ended as if it were whole, and an answer to it would be taken for
// that of the next instance: the association goes with it.
bool RetrieveOperation::Send(const DICOMDataObject* theMatch, Instance& theInstance, RunTimeClassStorage& theStorage)
{
   try
   {
      const bool isAsStored =
          theInstance.itsContext.GetTransferSyntaxUID().ToString() == theInstance.itsSourceSyntax->GetUID();
      const std::unique_ptr<InputStream> aStored(isAsStored ? itsRetrieve.OpenStoredDataset() : nullptr);
      const unsigned char aContextID = theInstance.itsContext.GetPresentationContextID();
      const UID aClass(theInstance.itsSOPClass);
      const UID anInstance(theInstance.itsSOPInstance);
      OutputStream* aStream = nullptr;
      OutputTransferSyntax* anEncoder = nullptr;
      if (aStored)
      {
         aStream = &theStorage.GetDatasetOutputStream(itsStoreService, aContextID, aClass, anInstance,
                                                      kNoOriginatorMessage, AETitle());
      }
      else
      {
         anEncoder = &theStorage.GetDatasetOutputTransferSyntax(itsStoreService, aContextID, aClass, anInstance,
                                                                kNoOriginatorMessage, AETitle());
      }
      Tell(itsStoreService, Progress::StoreRequestSent, theInstance.itsHeader);
      aStored ? SendStored(*aStored, *aStream) : SendDataset(theInstance, *anEncoder);
      theInstance.itsInput.reset();
      theStorage.FinishDatasetTransmission();
      return true;
   }
   catch (...)
   {
      NoteException();
   }
   const RWCString aReason = "Caught exception while creating output transfer syntax:CStore error: " +
                             TNResult::Describe(itsStoreService.GetResultCode());
   EndStoreAssociation();
   return Fail(theMatch, aReason);
}

// In pieces of the size that the destination takes.
void RetrieveOperation::SendStored(InputStream& theDataset, OutputStream& theOutput)
{
   constexpr unsigned int kMost = 262144; // bytes; the destination may have no limit
   const unsigned int aSize = std::min(theOutput.GetMaximumOutputBlockSize(), kMost);
   for (;;)
   {
      auto aPiece = std::make_unique<IOBuffer>(aSize);
      const unsigned int aCount = theDataset.ReadFully(aPiece->GetCopyInPointer(), aSize);
      if (aCount == 0)
      {
         return;
      }
      aPiece->SetBytesCopiedIn(aCount);
      theOutput.Write(aPiece.release());
   }
}

void RetrieveOperation::SendDataset(Instance& theInstance, OutputTransferSyntax& theOutput)
{
   InputTransferSyntax& anInput = *theInstance.itsInput;
   std::unique_ptr<VR> aVR(anInput.NextVR());
   for (; aVR != nullptr && aVR->GetTag() != kPixelData; aVR.reset(anInput.NextVR()))
   {
      theInstance.itsHeader.DICOMObject::Push(aVR.release());
   }
   const bool isContextNative =
       TransferSyntaxType::IsUncompressed(theInstance.itsContext.GetTransferSyntaxUID().ToString());
   if (aVR != nullptr && theInstance.itsSourceSyntax->IsCompressed() && isContextNative)
   {
      SendDecompressed(theInstance, theOutput, *aVR);
      aVR.reset(anInput.NextVR());
   }
   else
   {
      if (aVR != nullptr && aVR->GetAsPixelDataFragmentInputStreamVR() != nullptr)
      {
         aVR->SetTypeCode(VRCode::OB); // PS3.5 A.4; that files have OW there is no reason to keep them back
      }
      theOutput.SaveDICOMObject(theInstance.itsHeader);
   }
   for (; aVR != nullptr; aVR.reset(anInput.NextVR()))
   {
      theOutput.SaveVR(aVR.release());
   }
   if (anInput.IsCut())
   {
      Throw("the stored instance ends before its time", TN_END_OF_FILE);
   }
}

void RetrieveOperation::SendDecompressed(Instance& theInstance, OutputTransferSyntax& theOutput, VR& thePixels)
{
   DICOMDataObject& aHeader = theInstance.itsHeader;
   const RWCString& aSyntax = theInstance.itsSourceSyntax->GetUID();
   if (aSyntax != TransferSyntaxType::TSJPEG2KLosslessUID && aSyntax != TransferSyntaxType::TSRLEUID)
   {
      const MVRFactory aFactory(aHeader.GetEndian(), true, &aHeader.GetDataDictionary());
      constexpr UINT16 kYes = 1;
      aHeader.ReplaceVR(kPrivateCreator, aFactory.GetPrivateVR(kPrivateCreator, kReconstructedImage, kYes));
   }
   PixelDataFragmentInputStreamVR* const aCompressed = thePixels.GetAsPixelDataFragmentInputStreamVR();
   if (aCompressed == nullptr)
   {
      Throw("compressed pixel data is not in fragments", TN_UNSUPPORTED);
   }
   VR* aNative = nullptr;
   itsRetrieve.DoStreamingDecompression(aHeader, theInstance.itsSourceSyntax, aCompressed, aNative);
   std::unique_ptr<VR> aPixels(aNative);
   theOutput.SaveDICOMObject(aHeader);
   if (aPixels != nullptr)
   {
      theOutput.SaveVR(aPixels.release()); // may decompress as it is read
   }
   aCompressed->SkipToEOF(); // what the hook had no need of
}

bool RetrieveOperation::TakeAnswer(const Instance& theInstance, RunTimeClassStorage& theStorage)
{
   DICOMCommandObject anAnswer;
   if (!theStorage.ReadResponse(itsStoreService, anAnswer))
   {
      return FailWithoutAnswer(theInstance);
   }
   UINT16 aStatus = QueryStatus::kUnableToProcess;
   if (!anAnswer.GetUINT16(0, CommandElement::Status, aStatus))
   {
      itsStoreService.SetResultCode(TN_NO_STATUS);
   }
   if (!IsStored(aStatus))
   {
      RWCString aComment;
      anAnswer.GetString(0, CommandElement::ErrorComment, aComment);
      itsWasStoreRefused = true;
      Tell(itsStoreService, Progress::StoreRefused, theInstance.itsHeader, aStatus, "DICOM Error Comment: " + aComment,
           theInstance.itsSize);
      return false;
   }
   Tell(itsStoreService, Progress::SubOperationCompleted, theInstance.itsHeader, 0, RWCString(), theInstance.itsSize);
   return true;
}

bool RetrieveOperation::FailWithoutAnswer(const Instance& theInstance)
{
   itsHasStoreFailed = true;
   const TNResultCode aCode = itsStoreService.GetResultCode();
   RWCString aReason = "CStore error: " + TNResult::Describe(aCode);
   if (aCode == TN_SYSTEM_CALL_FAILED)
   {
      aReason += " (System error code " + std::to_string(itsStoreService.GetSystemErrorCode()) + ")";
   }
   Tell(itsStoreService, Progress::StoreAssociationFailed, theInstance.itsHeader, QueryStatus::kUnableToProcess,
        aReason, theInstance.itsSize);
   EndStoreAssociation();
   return false;
}

bool RetrieveOperation::Fail(const DICOMDataObject* theMatch, const RWCString& theReason)
{
   Tell(itsStoreService, Progress::SubOperationFailed, theMatch != nullptr ? *theMatch : itsIdentifier, 0, theReason);
   return false;
}

// In a handler: what was thrown becomes the result of the store association, as it does in its own operations.
void RetrieveOperation::NoteException()
{
   itsStoreService.SetSystemErrorCode(0);
   try
   {
      throw;
   }
   catch (const StreamIOException& anException)
   {
      itsStoreService.SetResultCode(anException.GetResultCode());
      itsStoreService.SetSystemErrorCode(anException.GetSystemErrorCode());
   }
   catch (const BadAllocException&)
   {
      itsStoreService.SetResultCode(TN_OUT_OF_MEMORY);
   }
   catch (const std::bad_alloc&)
   {
      itsStoreService.SetResultCode(TN_OUT_OF_MEMORY);
   }
   catch (...)
   {
      itsStoreService.SetResultCode(TN_INTERNAL_ERROR);
   }
}

// The result stays that of the failure.
void RetrieveOperation::EndStoreAssociation()
{
   if (!itsStoreService.Connected())
   {
      return;
   }
   const TNResultCode aCode = itsStoreService.GetResultCode();
   const int aSystemError = itsStoreService.GetSystemErrorCode();
   itsStoreService.AbortAndWaitForTransportCloseOrTimeout(PDU_Service::AbortSourceServiceUser,
                                                          PDU_Service::AbortReasonNotSpecified);
   itsStoreService.SetResultCode(aCode);
   itsStoreService.SetSystemErrorCode(aSystemError);
}
