#include "apps/tn/send/SendFile.h"

#include "apps/tn/files/DatasetChecks.h"
#include "apps/tn/files/DatasetWalk.h"
#include "apps/tn/files/FileWindow.h"
#include "apps/tn/files/InputFile.h"
#include "talvenor/file/DICOMDirUtilities.h"
#include "talvenor/file/Part10Header.h"
#include "talvenor/transfer/TransferSyntaxManager.h"

namespace
{
void Require(const RWCString& theUID, const char* theName)
{
   constexpr std::size_t kLongest = 64; // PS3.5 9.1
   if (theUID.empty() || theUID.size() > kLongest)
   {
      throw IncompleteDataset(std::string(theUID.empty() ? "it has no " : "it has no valid ") + theName);
   }
}

bool IsServed(const RWCString& theTransferSyntaxUID)
{
   return TransferSyntaxManager::GetDefaultInstance().GetTransferSyntaxType(theTransferSyntaxUID) != nullptr;
}

// Returns whether there is meta information.
bool TakeHeader(FileWindow& theWindow, SendFile& theFile)
{
   FileWindowStream aStream(theWindow);
   InputFile anInput(aStream);
   theFile.itsTransferSyntaxUID = anInput.GetStream().GetTransferSyntaxUID();
   theFile.itsDatasetStart = anInput.GetStream().GetHeaderSize();
   const Part10Header* const aHeader = anInput.GetStream().GetPart10Header();
   if (aHeader != nullptr)
   {
      theFile.itsSOPClassUID = aHeader->GetSOPClassUID();
      theFile.itsSOPInstanceUID = aHeader->GetSOPInstanceUID();
   }
   return aHeader != nullptr;
}

void TakeDataset(FileWindow& theWindow, bool theHasHeader, SendFile& theFile)
{
   theFile.itsDatasetEnd = theWindow.GetSize();
   const DatasetSyntax aSyntax = SyntaxOf(theFile.itsTransferSyntaxUID);
   if (aSyntax.itsPixels == DatasetSyntax::Pixels::Hidden)
   {
      return;
   }
   DatasetWalk aWalk(theWindow, theFile.itsDatasetStart, aSyntax);
   try
   {
      aWalk.Run();
   }
   catch (const IncompleteDataset&)
   {
      if (!theHasHeader && aWalk.GetSOPClassUID().empty())
      {
         throw NotDICOM(); // nothing speaks for it
      }
      throw;
   }
   theFile.itsDatasetEnd = aWalk.GetEnd();
   theFile.itsIsIrregular = aWalk.IsIrregular();
   if (theFile.itsIsIrregular && theFile.GetDatasetSize() % 2 != 0 && !IsServed(theFile.itsTransferSyntaxUID))
   {
      throw IncompleteDataset("it has an odd length, and its transfer syntax cannot be encoded anew: " +
                              theFile.itsTransferSyntaxUID);
   }
   if (!aWalk.GetSOPClassUID().empty())
   {
      theFile.itsSOPClassUID = aWalk.GetSOPClassUID();
   }
   if (!aWalk.GetSOPInstanceUID().empty())
   {
      theFile.itsSOPInstanceUID = aWalk.GetSOPInstanceUID();
   }
}
} // namespace

SendFile LookAtFile(const std::string& thePath)
{
   const PlainFile aPlainFile(thePath);
   if (aPlainFile.IsBeingWritten())
   {
      static_cast<void>(InputFile(thePath)); // waits for the writer, or says that it waited in vain
      return LookAtFile(thePath);
   }
   SendFile aFile;
   aFile.itsPath = thePath;
   aFile.itsIdentity = aPlainFile.GetIdentity();
   FileWindow aWindow(aPlainFile);
   const bool hasHeader = TakeHeader(aWindow, aFile);
   if (aFile.itsSOPClassUID == DICOMDirUtilities::kSOPClassUID)
   {
      throw NotDICOM("it is a media directory, which is not sent");
   }
   try
   {
      TakeDataset(aWindow, hasHeader, aFile);
      if (aFile.GetDatasetSize() == 0)
      {
         throw IncompleteDataset("it has no dataset");
      }
      Require(aFile.itsSOPClassUID, "SOP class UID (0008,0016)");
      Require(aFile.itsSOPInstanceUID, "SOP instance UID (0008,0018)");
   }
   catch (const IncompleteDataset& anError)
   {
      if (hasHeader)
      {
         throw;
      }
      throw NotDICOM(std::string("not a DICOM file, or a damaged one without meta information: ") + anError.what());
   }
   return aFile;
}
