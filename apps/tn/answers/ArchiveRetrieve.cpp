#include "apps/tn/answers/ArchiveRetrieve.h"

#include "apps/tn/answers/Interjection.h"
#include "apps/tn/answers/PeerList.h"
#include "apps/tn/answers/ValueMatcher.h"
#include "apps/tn/archive/Archive.h"
#include "apps/tn/base/ErrorText.h"
#include "apps/tn/base/Tags.h"
#include "apps/tn/base/ValueText.h"
#include "apps/tn/codec/Decompression.h"
#include "apps/tn/files/DatasetChecks.h"
#include "apps/tn/files/LaterVRs.h"
#include "apps/tn/files/StoredDataset.h"
#include "apps/tn/node/GuardedStream.h"
#include "apps/tn/send/SendFile.h"
#include "talvenor/association/PDU_Service.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/UID.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/file/Part10FileInputStream.h"
#include "talvenor/transfer/InputTransferSyntax.h"
#include "talvenor/transfer/TransferSyntaxManager.h"

namespace
{
// PS3.4 C.4.2.1.5
constexpr UINT16 kOutOfResources = 0xA701;
constexpr UINT16 kIdentifierDoesNotMatch = 0xA900;

constexpr UINT32 kSOPInstanceUID = 0x00080018;
constexpr char kPath[] = "path"; // of a match, on its scratchpad

// What the identifier names of a level, as the index has it: one value or, at its own level, several.
std::vector<std::string> UniqueValues(const IndexLevel& theLevel, const DICOMDataObject& theIdentifier)
{
   const UINT16 aType = theLevel.itsLevel == KeyLevel::kPatient ? VRCode::LO : VRCode::UI;
   return ValueMatcher(aType, TextOf(theIdentifier, theLevel.itsUniqueKey)).GetExactValues();
}
} // namespace

ArchiveRetrieve::ArchiveRetrieve(const RWCString& theSOPClass, Archive& theArchive, const PeerList* thePeers,
                                 const Settings& theSettings, GuardedStream* theStream,
                                 std::function<void(const std::string&)> theLog, std::function<void(bool)> theReached)
    : itsSOPClass(theSOPClass), itsArchive(theArchive), itsPeers(thePeers), itsSettings(theSettings),
      itsStream(theStream), itsLog(std::move(theLog)), itsReached(std::move(theReached))
{}

ArchiveRetrieve::~ArchiveRetrieve() = default;

int ArchiveRetrieve::uGetUID(UID& theUID) const
{
   theUID = UID(itsSOPClass);
   return 1;
}

int ArchiveRetrieve::GetMoveDestination(const RWCString& theDestinationTitle, RWCString& theCallingTitle,
                                        RWCString& theHost, RWCString& thePort)
{
   const std::optional<Peer> aPeer = itsPeers == nullptr ? std::nullopt : itsPeers->Find(theDestinationTitle);
   if (!aPeer)
   {
      return 0;
   }
   theCallingTitle = itsSettings.itsTitle;
   theHost = aPeer->itsHost;
   thePort = aPeer->itsPort;
   return 1;
}

int ArchiveRetrieve::DoQuery(DICOMDataObject& theIdentifier, int theModel, const RWCString&,
                             RWTValOrderedVector<DICOMDataObject*>& theMatches, UINT16& theStatus,
                             RWCString& theErrorComment, RWTValOrderedVector<MAttributeTag>&)
{
   constexpr std::size_t kLongestComment = 64;
   try
   {
      itsArchive.GetIndex().Flush();
      Select(static_cast<IndexModel>(theModel), theIdentifier, theMatches);
      return 1;
   }
   catch (const BadIdentifier& aFault)
   {
      theStatus = kIdentifierDoesNotMatch;
      theErrorComment = RWCString(aFault.what()).substr(0, kLongestComment);
   }
   catch (const SQLiteFailure& aFault)
   {
      theStatus = kOutOfResources;
      theErrorComment = ("the index: " + std::string(aFault.what())).substr(0, kLongestComment);
   }
   return 0;
}

void ArchiveRetrieve::Select(IndexModel theModel, const DICOMDataObject& theIdentifier,
                             RWTValOrderedVector<DICOMDataObject*>& theMatches) const
{
   const IndexLevel& aLevel = FindIndexLevel(theModel, theIdentifier);
   if (!itsSettings.itsIsRelational)
   {
      CheckUniqueKeys(theModel, aLevel, theIdentifier);
   }
   std::string aText =
       "SELECT instance.SOPInstanceUID, instance.path FROM " + JoinTables(GetIndexLevel(KeyLevel::kInstance));
   std::vector<std::string> aParameters;
   for (int aNumber = static_cast<int>(aLevel.itsLevel); aNumber >= 0; --aNumber)
   {
      const IndexLevel& anUpper = GetIndexLevel(static_cast<KeyLevel>(aNumber));
      const std::vector<std::string> aValues = UniqueValues(anUpper, theIdentifier);
      if (!aValues.empty())
      {
         aText += (aParameters.empty() ? " WHERE " : " AND ") + std::string(anUpper.itsTable) + "." +
                  anUpper.itsUniqueName + IsOneOf(aValues.size());
         aParameters.insert(aParameters.end(), aValues.begin(), aValues.end());
      }
      else if (&anUpper == &aLevel) // otherwise all that is stored would go
      {
         throw BadIdentifier(std::string(aLevel.itsUniqueName) + " is missing, or no list of values");
      }
   }
   const SQLiteDatabase anIndex(itsArchive.GetIndexPath(), IndexDatabase::kBusySeconds);
   SQLiteStatement aStatement(anIndex, aText);
   for (std::size_t anIndexOf = 0; anIndexOf < aParameters.size(); ++anIndexOf)
   {
      aStatement.Bind(static_cast<int>(anIndexOf) + 1, aParameters[anIndexOf]);
   }
   while (aStatement.Step())
   {
      auto aMatch = std::make_unique<DICOMDataObject>();
      aMatch->Push(MakeElement(kSOPInstanceUID, VRCode::UI, aStatement.GetText(0)).release());
      aMatch->PutScratchpadValue(kPath, aStatement.GetText(1));
      theMatches.push_back(aMatch.release());
   }
}

// The header is only as long as the operation needs it: it takes the rest itself.
int ArchiveRetrieve::RetrieveHeader(const DICOMDataObject* theMatch, DICOMDataObject& theHeader,
                                    InputTransferSyntax*& theInput, const TransferSyntaxType*& theSourceSyntax,
                                    unsigned int& theSize)
{
   constexpr int kFailed = 1;
   RWCString aPath;
   theMatch->GetScratchpadValue(kPath, aPath);
   try
   {
      itsPath = itsArchive.GetFullPath(aPath);
      auto aFile = std::make_unique<WithLaterVRs<Part10FileInputStream>>(itsPath);
      aFile->BeginDataset();
      itsFile = std::move(aFile);
      theSize = itsFile->GetFileSize();
      theSourceSyntax =
          TransferSyntaxManager::GetDefaultInstance().GetTransferSyntaxType(itsFile->GetTransferSyntaxUID());
      std::unique_ptr<InputTransferSyntax> anInput = itsFile->CreateDecoder();
      theHeader.SetEndian(theSourceSyntax->GetEndian());
      UINT32 aTag = 0;
      for (VR* aVR = nullptr; aTag < kSOPInstanceUID && (aVR = anInput->NextVR()) != nullptr;)
      {
         aTag = aVR->GetTag();
         theHeader.DICOMObject::Push(aVR);
      }
      theInput = anInput.release();
      return 0;
   }
   catch (const ExceptionBase& anException)
   {
      itsReason = ErrorText(anException);
      return kFailed;
   }
}

// What is stored goes as it came, unless it must not: values of odd length, and elements of a command, are mended by
// the encoder. What is wrong with a file that is not whole, or cannot be read, the decoder says.
InputStream* ArchiveRetrieve::OpenStoredDataset()
{
   try
   {
      const SendFile aFile = LookAtFile(itsPath);
      const bool canGo = !aFile.itsIsIrregular && aFile.GetDatasetSize() % 2 == 0;
      return canGo ? new StoredDataset(itsPath, aFile.itsDatasetStart, aFile.itsDatasetEnd) : nullptr;
   }
   catch (const IncompleteDataset&)
   {
      return nullptr;
   }
   catch (const ExceptionBase&)
   {
      return nullptr;
   }
}

bool ArchiveRetrieve::IsMoveCancelled(PDU_Service& theMoveService)
{
   const Interjection anInterjection = ReadInterjection(theMoveService);
   itsIsLost = anInterjection == Interjection::kOther;
   return anInterjection != Interjection::kNone;
}

void ArchiveRetrieve::DoStreamingDecompression(DICOMDataObject& theHeader, const TransferSyntaxType* theSourceSyntax,
                                               PixelDataFragmentInputStreamVR* theCompressedPixels,
                                               VR*& theDecompressedPixels)
{
   const auto aTell = [this](const RWCString& theText) { itsReason = "it cannot be decompressed: " + theText; };
   try
   {
      theDecompressedPixels =
          Decompression::MakePixels(std::make_unique<Decompression>(theHeader, *theSourceSyntax, *theCompressedPixels),
                                    aTell)
              .release();
   }
   catch (const ExceptionBase& anException)
   {
      aTell(ErrorText(anException));
      throw;
   }
}

void ArchiveRetrieve::CMoveProgressCallback(PDU_Service&, DICOMCommandObject&, DICOMDataObject&, int) {}

void ArchiveRetrieve::CMoveServiceProgressCallback(PDU_Service& theService, const DICOMObject& theObject, unsigned int,
                                                   UINT16, const RWCString& theMessage, CMoveProgressType theProgress)
{
   switch (theProgress)
   {
   case SubOperationBegins:
      itsReason.clear();
      itsIsAnnounced = false;
      if (itsStream != nullptr)
      {
         itsStream->Suspend(); // the destination has deadlines of its own
      }
      break;
   case StoreRequestSent:
      itsIsAnnounced = true;
      itsReached(true);
      break;
   case QueryRefused:
   case DestinationUnknown:
      itsHasRefused = true;
      itsLog("move refused: " + theMessage);
      break;
   case SubOperationFailed:
   case StoreAssociationFailed:
   case StoreRefused:
      if (!itsIsAnnounced && itsReason.empty())
      {
         itsReached(theService.Connected() != 0);
      }
      itsLog("not sent: " + TextOf(theObject, kSOPInstanceUID) + ": " + (itsReason.empty() ? theMessage : itsReason));
      break;
   default: break;
   }
}
