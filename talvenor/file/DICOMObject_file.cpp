// Datasets and files.
#include <cerrno>
#include <memory>

#include "talvenor/dataset/DICOMCluster.h"
#include "talvenor/dataset/DICOMObject.h"
#include "talvenor/dataset/DICOMObjectIterator.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/UID.h"
#include "talvenor/file/CaughtException.h"
#include "talvenor/file/DICOMObjectLoader.h"
#include "talvenor/file/Part10FileInputStream.h"
#include "talvenor/file/Part10FileOutputStream.h"
#include "talvenor/file/Part10Header.h"
#include "talvenor/foundation/CriticalSectionWhileInScope.h"
#include "talvenor/foundation/LibraryIdentity.h"
#include "talvenor/foundation/OneLine.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/foundation/SystemClock.h"
#include "talvenor/foundation/TNTrace.h"
#include "talvenor/platform/FileHandle.h"
#include "talvenor/transfer/OutputTransferSyntax.h"
#include "talvenor/transfer/TransferSyntaxManager.h"

namespace
{
constexpr int kOpenAttempts = 8;
constexpr UINT64 kOpenPauseMilliseconds = 300;

// A file that has just been announced may not be visible yet (a network file system, a writer that renames): it gets
// some time to appear, the last of it for a caller who will try again. Returns 0 or the error number of the last
// attempt.
int WaitUntilOpenable(const RWCString& theFileName)
{
   int anError = 0;
   for (int anAttempt = 0; anAttempt < kOpenAttempts; ++anAttempt)
   {
      TNPlatform::FileHandle aFile;
      if (aFile.Open(theFileName.c_str(), TNPlatform::FileHandle::kRead))
      {
         return 0;
      }
      anError = errno;
      SystemClock::Get().Sleep(kOpenPauseMilliseconds);
   }
   return anError;
}

[[noreturn]] void ThrowSave(const char* theText, TNResultCode theCode, int theSystemError = 0)
{
   throw StreamIOException(theText, theCode, theSystemError);
}

RWCString TransferSyntaxOf(DICOMFileType theType, const UID* theTransferSyntax)
{
   switch (theType)
   {
   case LittleEndianImplicitFile: return TransferSyntaxType::TSLEImplicitUID;
   case GivenOrLittleEndianExplicitFile:
      return theTransferSyntax != nullptr ? theTransferSyntax->ToString() : TransferSyntaxType::TSLEExplicitUID;
   case BigEndianExplicitFile: return TransferSyntaxType::TSBEExplicitUID;
   }
   ThrowSave("DICOMObject::SaveToFile(): Error: Invalid file type specifier argument", TN_INVALID_ARGUMENT);
}

// theUID or, when it is empty, that of the dataset.
RWCString UIDOf(const DICOMObject& theObject, const RWCString& theUID, UINT16 theElement, const char* theMissingText,
                TNResultCode theMissingCode)
{
   RWCString aUID = theUID;
   if (aUID.empty() && (!theObject.GetString(0x0008, theElement, aUID) || aUID.empty()))
   {
      ThrowSave(theMissingText, theMissingCode);
   }
   return aUID;
}

std::unique_ptr<Part10FileOutputStream> OpenForWriting(const RWCString& theFileName, const Part10Header& theHeader)
{
   try
   {
      return std::make_unique<Part10FileOutputStream>(theFileName, theHeader);
   }
   catch (const StreamIOException& anException)
   {
      ThrowSave("Unable to open output file!", anException.GetResultCode(), anException.GetSystemErrorCode());
   }
}

void SaveElements(DICOMObject& theObject, const TransferSyntaxType& theSyntax, Part10FileOutputStream& theStream)
{
   const std::unique_ptr<OutputTransferSyntax> anEncoder(theSyntax.CreateOutputTransferSyntax(theStream));
   if (!anEncoder)
   {
      ThrowSave("Unable to create output transfer!", TN_INTERNAL_ERROR);
   }
   anEncoder->SetDataDictionary(theObject.GetDataDictionary()); // shared: it has the private blocks of the dataset
   DICOMObjectIterator anIterator(theObject, ExplicitNoGroupLength);
   while (VR* const aVR = anIterator.Next())
   {
      if (aVR->GetElement() != 0x0000)
      {
         anEncoder->SaveVR(*aVR);
      }
   }
}
} // namespace

int DICOMObject::LoadFromFile(const RWCString& theFileName, UINT32& theFileSize, TNResultCode& theResult,
                              int& theSystemError, UINT16 theStopGroup, UINT16 theStopElement, int theKnownTagsOnly,
                              DICOMCluster* theCluster)
{
   theResult = TN_NO_ERROR;
   theSystemError = WaitUntilOpenable(theFileName);
   if (theSystemError != 0)
   {
      theResult = TN_OPEN_FAILED;
      return 0;
   }
   CriticalSectionWhileInScope aLock(itsLock);
   Reset();
   try
   {
      Part10FileInputStream aStream(theFileName, 1, 1); // what a file lacks in its header, its dataset may have
      theFileSize = aStream.GetFileSize();
      DICOMObjectLoader aLoader(*this, aStream);
      aLoader.SetStopAt(theStopGroup, theStopElement);
      aLoader.SetKnownTagsOnly(theKnownTagsOnly != 0);
      aLoader.Load();
      if (theCluster != nullptr)
      {
         itsLastPushed = kNoTag; // it may move to a shared node
         theCluster->Normalize(itsNode);
      }
      return 1;
   }
   catch (...)
   {
      const CaughtException aFailure;
      theResult = aFailure.itsResult;
      theSystemError = aFailure.itsSystemError;
      const RWCString aLine = // may throw, which an open entry must not see
          OnOneLine("DICOMObject::LoadFromFile(\"" + theFileName + "\"): " + aFailure.itsText + ": " +
                    TNResult::Describe(theResult));
      startentry(gTNErrorLog) << aLine << "\n" << endentry;
      return 0;
   }
}

int DICOMObject::LoadFromFile(const RWCString& theFileName, TNResultCode& theResult, int& theSystemError)
{
   UINT32 aFileSize = 0;
   return LoadFromFile(theFileName, aFileSize, theResult, theSystemError);
}

int DICOMObject::LoadFromFile(const RWCString& theFileName)
{
   TNResultCode aResult;
   int anError;
   return LoadFromFile(theFileName, aResult, anError);
}

int DICOMObject::SaveToFile(const RWCString& theFileName, DICOMFileType theType, const RWCString&,
                            TNResultCode& theResult, int& theSystemError, const RWCString& theSOPClassUID,
                            const RWCString& theSOPInstanceUID, const UID* theTransferSyntax)
{
   theResult = TN_NO_ERROR;
   theSystemError = 0;
   CriticalSectionWhileInScope aLock(itsLock);
   try
   {
      const RWCString aSyntaxUID = TransferSyntaxOf(theType, theTransferSyntax);
      const Part10Header aHeader(
          UIDOf(*this, theSOPClassUID, 0x0016, "Input file has no SOP Class UID!", TN_NO_SOP_CLASS_UID),
          UIDOf(*this, theSOPInstanceUID, 0x0018, "Input file has no SOP Instance UID!", TN_NO_SOP_INSTANCE_UID),
          aSyntaxUID, kImplementationClassUID, kImplementationVersionName);
      // Looked up before the file is opened, which empties it.
      const TransferSyntaxType* const aSyntax =
          TransferSyntaxManager::GetDefaultInstance().GetTransferSyntaxType(aSyntaxUID);
      if (aSyntax == nullptr)
      {
         ThrowSave("Unable to create output transfer syntax type!", TN_TRANSFER_SYNTAX_UNSUPPORTED);
      }
      const std::unique_ptr<Part10FileOutputStream> aStream = OpenForWriting(theFileName, aHeader);
      SaveElements(*this, *aSyntax, *aStream);
      aStream->Flush();
      aStream->Close();
      return 1;
   }
   catch (...)
   {
      const CaughtException aFailure;
      theResult = aFailure.itsResult;
      theSystemError = aFailure.itsSystemError;
      const RWCString aLine = OnOneLine("DICOMObject::SaveToFile(\"" + theFileName + "\"):Error:" + aFailure.itsText +
                                        " Result:" + TNResult::Describe(theResult));
      startentry(gTNErrorLog) << aLine << "\n" << endentry;
      return 0;
   }
}

int DICOMObject::SaveToFile(const RWCString& theFileName, DICOMFileType theType, TNResultCode& theResult,
                            int& theSystemError)
{
   return SaveToFile(theFileName, theType, RWCString(), theResult, theSystemError);
}

int DICOMObject::SaveToFile(const RWCString& theFileName, DICOMFileType theType, const RWCString& theImplementation)
{
   TNResultCode aResult;
   int anError;
   return SaveToFile(theFileName, theType, theImplementation, aResult, anError);
}
