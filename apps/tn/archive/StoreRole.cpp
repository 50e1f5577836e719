#include "apps/tn/archive/StoreRole.h"

#include <chrono>
#include <cstdio>
#include <new>
#include <optional>
#include <thread>
#include <utility>

#include "apps/tn/archive/Archive.h"
#include "apps/tn/archive/Notices.h"
#include "apps/tn/archive/StoreRefusal.h"
#include "apps/tn/base/ErrorText.h"
#include "apps/tn/base/SystemFailure.h"
#include "apps/tn/base/Tags.h"
#include "apps/tn/files/LaterVRs.h"
#include "apps/tn/node/NodeLog.h"
#include "talvenor/association/PDU_Service.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/MUIDDictionary.h"
#include "talvenor/dictionary/MUIDDictionaryEntry.h"
#include "talvenor/file/Part10Header.h"
#include "talvenor/file/Part10OutputStreamOutputStream.h"
#include "talvenor/foundation/Exceptions.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/io/OutputStream.h"
#include "talvenor/transfer/InputTransferSyntax.h"
#include "talvenor/transfer/TransferSyntaxType.h"

namespace
{
constexpr UINT16 kIdentifyingGroup = 0x0008;
constexpr UINT16 kSOPClass = 0x0016;
constexpr UINT16 kSOPInstance = 0x0018;
constexpr unsigned long kMostLines = 20;    // in the log, for one association
constexpr std::size_t kLongestComment = 64; // characters (PS3.7 C.5.6)
constexpr char kOutOfMemory[] = "out of memory";

// The meta information on its way into the file.
class SpoolOutput : public OutputStream
{
public:
   explicit SpoolOutput(SpoolFile& theFile) : itsFile(theFile) {}

   using OutputStream::Write;
   void Write(const unsigned char* theBytes, unsigned int theCount) override { itsFile.Write(theBytes, theCount); }
   void Flush() override {}

private:
   SpoolFile& itsFile;
};

void PushUID(DICOMDataObject& theObject, UINT16 theElement, const RWCString& theUID)
{
   if (!theObject.Push(new VR(kIdentifyingGroup, theElement, UID(theUID))))
   {
      throw std::bad_alloc();
   }
}

void WriteMetaInformation(SpoolFile& theFile, PDU_Service& theService, const RWCString& theClass,
                          const RWCString& theInstance, const TransferSyntaxType& theSyntax)
{
   DICOMDataObject anObject;
   PushUID(anObject, kSOPClass, theClass);
   PushUID(anObject, kSOPInstance, theInstance);
   const UID aSyntax(theSyntax.GetUID());
   if (!theService.MakeChapter10(anObject, theService.GetRemoteAddress(), GivenOrLittleEndianExplicitFile, &aSyntax))
   {
      throw std::bad_alloc();
   }
   const Part10Header aHeader(nullptr, anObject, 0, 0);
   SpoolOutput anOutput(theFile);
   Part10OutputStreamOutputStream(aHeader).Open(anOutput);
}

// What is left of a data set that is not stored: an answer before its end would be taken for one to another message.
void Discard(InputStream& theStream)
{
   unsigned char aBlock[16384];
   try
   {
      while (theStream.Read(aBlock, sizeof aBlock) != 0)
      {}
   }
   catch (...)
   {
      std::throw_with_nested(SpoolingStream::SourceFailure());
   }
}

void CheckIsThat(const InstanceKeys& theKeys, std::size_t theKey, const RWCString& theExpected, UINT16 theElement)
{
   if (theKeys[theKey] != theExpected)
   {
      throw StoreRefusal(StoreStatus::kDoesNotMatchSOPClass,
                         std::string(InstanceKeys::GetColumns()[theKey].itsName) +
                             (theKeys[theKey].empty() ? " is missing" : " is not that of the request"),
                         {MAttributeTag(kIdentifyingGroup, theElement)});
   }
}

void Wait(double theSeconds)
{
   if (theSeconds > 0)
   {
      std::this_thread::sleep_for(std::chrono::duration<double>(theSeconds));
   }
}

void Add(std::string& theText, unsigned long theCount, const char* theName)
{
   if (theCount != 0)
   {
      theText += (theText.empty() ? "" : ", ") + std::to_string(theCount) + theName;
   }
}
} // namespace

bool StoreRole::Accepts(const RWCString& theAbstractSyntax) const
{
   using namespace StorageSOPClass;
   const MUIDDictionaryEntry* const anEntry =
       MUIDDictionary::GetDefaultUIDDictionary().FindUID(std::string_view(theAbstractSyntax));
   if (anEntry == nullptr)
   {
      return theAbstractSyntax == kGEMR || theAbstractSyntax == kGECT ||
             (itsSettings.itsAcceptsUnknown && StoredPath::IsUID(theAbstractSyntax));
   }
   const RWCString& aKeyword = anEntry->GetMnemonic();
   return anEntry->GetType() == MUIDDictionaryEntry::SC && aKeyword.find("Storage") != RWCString::npos &&
          !aKeyword.starts_with("StorageCommitment") && !aKeyword.starts_with("MediaStorageDirectory");
}

int StoreRole::Serve(PDU_Service& theService, DICOMCommandObject& theCommand)
{
   if (itsSettings.itsAbortAfter != 0 && itsStored + itsKnown + itsRefused == itsSettings.itsAbortAfter)
   {
      theService.SetResultCode(TN_CANCELLED);
      return 0;
   }
   const std::unique_ptr<InputTransferSyntax> anInput(
       itsMessages.GetDatasetInputTransferSyntax(theCommand, theService));
   if (!anInput)
   {
      return 0;
   }
   try
   {
      Store(theService, theCommand, *anInput);
      const int isAnswered = Answer(theService, theCommand, nullptr);
      MakeNextFile();
      return isAnswered;
   }
   catch (const StoreRefusal& aRefusal)
   {
      itsFile.reset();
      LogRefusal(theService, theCommand, aRefusal);
      return Answer(theService, theCommand, &aRefusal);
   }
   catch (const SpoolingStream::SourceFailure& aFailure)
   {
      itsFile.reset();
      try
      {
         std::rethrow_if_nested(aFailure);
      }
      catch (const StreamIOException& aCause)
      {
         theService.SetResultCode(aCause.GetResultCode());
         // A release or an abort in the middle of a data set is answered when the next command is looked for.
         return aCause.GetResultCode() == TN_UNEXPECTED_PDU;
      }
      catch (const std::exception&)
      {
         theService.SetResultCode(TN_INTERNAL_ERROR);
      }
      return 0;
   }
}

// Throws StoreRefusal once the data set has passed, and SourceFailure when it does not come to its end.
void StoreRole::Store(PDU_Service& theService, const DICOMCommandObject& theCommand, InputTransferSyntax& theInput)
{
   const auto aRefuse = [&](const StoreRefusal& theRefusal) {
      Discard(theInput.GetStream());
      throw theRefusal;
   };
   try
   {
      Receive(theService, theCommand, theInput);
   }
   catch (const SpoolingStream::SourceFailure&)
   {
      throw;
   }
   catch (const StoreRefusal& aRefusal)
   {
      aRefuse(aRefusal);
   }
   catch (const std::system_error& anError)
   {
      aRefuse({StoreStatus::kOutOfResources, anError.what()});
   }
   catch (const std::bad_alloc&)
   {
      aRefuse({StoreStatus::kOutOfResources, kOutOfMemory});
   }
   catch (const BadAllocException&)
   {
      aRefuse({StoreStatus::kOutOfResources, kOutOfMemory});
   }
   catch (const ExceptionBase& anException)
   {
      aRefuse({StoreStatus::kCannotUnderstand, ErrorText(anException)});
   }
   catch (const std::exception& anError)
   {
      aRefuse({StoreStatus::kCannotUnderstand, anError.what()});
   }
}

void StoreRole::Receive(PDU_Service& theService, const DICOMCommandObject& theCommand, InputTransferSyntax& theInput)
{
   const RWCString aClass = TextOf(theCommand, CommandTag::kAffectedSOPClassUID);
   const RWCString anInstanceUID = TextOf(theCommand, CommandTag::kAffectedSOPInstanceUID);
   if (itsSettings.itsFailStatus != 0)
   {
      throw StoreRefusal(static_cast<UINT16>(itsSettings.itsFailStatus), "as this node was told to answer");
   }
   if (aClass != theService.GetCurrentPresentationContext()->GetAbstractSyntaxUID().ToString())
   {
      throw StoreRefusal(StoreStatus::kSOPClassNotSupported, "the SOP class is not that of the context");
   }
   if (!StoredPath::IsUID(anInstanceUID))
   {
      throw StoreRefusal(StoreStatus::kInvalidInstance, "Affected SOP Instance UID is not valid");
   }
   SpoolFile& aFile = BeginFile();
   WriteMetaInformation(aFile, theService, aClass, anInstanceUID, theInput.GetTransferSyntaxType());
   const std::uint64_t aStart = aFile.GetSize();

   SpoolingStream aStream(theInput.GetStream(), aFile);
   LaterVRStream aDataset(aStream, SyntaxOf(theInput.GetTransferSyntaxType().GetUID()));
   const std::unique_ptr<InputTransferSyntax> aDecoder(
       theInput.GetTransferSyntaxType().CreateInputTransferSyntax(aDataset));
   IndexedInstance anInstance;
   anInstance.itsKeys.ReadWhole(*aDecoder);
   aStream.TakeRest(); // padding
   aFile.Finish();
   CheckIsThat(anInstance.itsKeys, Key::kSOPClass, aClass, kSOPClass);
   CheckIsThat(anInstance.itsKeys, Key::kSOPInstance, anInstanceUID, kSOPInstance);

   anInstance.itsTransferSyntax = theInput.GetTransferSyntaxType().GetUID();
   anInstance.itsSize = aFile.GetSize();
   const std::optional<InstanceKeys> aKeys =
       itsNotices != nullptr ? std::optional(anInstance.itsKeys) : std::nullopt; // many texts, seldom wanted
   if (!itsArchive.Keep(aFile, aStart, std::move(anInstance)))
   {
      ++itsKnown;
      return;
   }
   ++itsStored;
   if (aKeys)
   {
      Tell(theService, *aKeys);
   }
}

SpoolFile& StoreRole::BeginFile()
{
   itsFile = itsNextFile ? std::move(itsNextFile) : std::make_unique<SpoolFile>(itsArchive.GetSpoolFolder(), itsBuffer);
   return *itsFile;
}

// After the answer, while the sender is busy with its next instance: making and closing a file takes as long as writing
// a small one.
void StoreRole::MakeNextFile() noexcept
{
   itsFile.reset();
   try
   {
      itsNextFile = std::make_unique<SpoolFile>(itsArchive.GetSpoolFolder(), itsBuffer);
   }
   catch (const std::exception&)
   {} // the next instance tries again, and tells
}

void StoreRole::Tell(const PDU_Service& theService, const InstanceKeys& theKeys) const
{
   const StoredPath aPath = StoredPath::Of(theKeys);
   itsNotices->Tell({theKeys[Key::kStudy], theKeys[Key::kSeries], theKeys[Key::kSOPInstance], theKeys[Key::kSOPClass],
                     itsArchive.GetFullPath(aPath.GetText()), itsArchive.GetFullPath(aPath.GetUpperFolder()),
                     theService.GetRemoteAddress()});
}

int StoreRole::Answer(PDU_Service& theService, const DICOMCommandObject& theCommand, const StoreRefusal* theRefusal)
{
   Wait(itsSettings.itsDelay);
   if (theRefusal == nullptr)
   {
      return itsMessages.CStoreRSP::Write(theService, theCommand, 0, "", {});
   }
   return itsMessages.CStoreRSP::Write(theService, theCommand, theRefusal->GetStatus(),
                                       RWCString(theRefusal->what()).substr(0, kLongestComment),
                                       theRefusal->GetOffending());
}

void StoreRole::LogRefusal(const PDU_Service& theService, const DICOMCommandObject& theCommand,
                           const StoreRefusal& theRefusal)
{
   if (++itsRefused > kMostLines)
   {
      return;
   }
   char aStatus[8];
   std::snprintf(aStatus, sizeof aStatus, "%04XH", unsigned{theRefusal.GetStatus()});
   NodeLog::Line(theService, std::string("refused with ") + aStatus + ", " + theRefusal.what() + ": " +
                                 TextOf(theCommand, CommandTag::kAffectedSOPInstanceUID).substr(0, kLongestComment) +
                                 (itsRefused == kMostLines ? "; further refusals are only counted" : ""));
}

std::string StoreRole::Describe() const
{
   std::string aText;
   Add(aText, itsStored, " stored");
   Add(aText, itsKnown, " stored before");
   Add(aText, itsRefused, " refused");
   return aText;
}
