// Datasets and files.
#include <cerrno>
#include <new>

#include "talvenor/dataset/DICOMCluster.h"
#include "talvenor/dataset/DICOMObject.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/file/DICOMObjectLoader.h"
#include "talvenor/file/Part10FileInputStream.h"
#include "talvenor/foundation/CriticalSectionWhileInScope.h"
#include "talvenor/foundation/Exceptions.h"
#include "talvenor/foundation/OneLine.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/foundation/SystemClock.h"
#include "talvenor/foundation/TNTrace.h"
#include "talvenor/platform/FileHandle.h"

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

// Whatever reading a file may throw, as result and error number.
void Describe(TNResultCode& theResult, int& theSystemError, RWCString& theText)
{
   try
   {
      throw;
   }
   catch (const StreamIOException& anException)
   {
      theResult = anException.GetResultCode();
      theSystemError = anException.GetSystemErrorCode();
      theText = anException.why();
   }
   catch (const BadAllocException& anException)
   {
      theResult = TN_OUT_OF_MEMORY;
      theText = anException.why();
   }
   catch (const std::bad_alloc& anException)
   {
      theResult = TN_OUT_OF_MEMORY;
      theText = anException.what();
   }
   catch (const ExceptionBase& anException)
   {
      theResult = TN_INTERNAL_ERROR;
      theText = anException.why();
   }
   catch (const std::exception& anException)
   {
      theResult = TN_INTERNAL_ERROR;
      theText = anException.what();
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
      RWCString aText;
      Describe(theResult, theSystemError, aText);
      const RWCString aLine = OnOneLine("DICOMObject::LoadFromFile(\"" + theFileName + "\"): " + aText + ": " +
                                        TNResult::Describe(theResult)); // may throw, which an open entry must not see
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
