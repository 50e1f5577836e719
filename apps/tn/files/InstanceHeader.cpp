#include "apps/tn/files/InstanceHeader.h"

#include <algorithm>
#include <iterator>

#include "apps/tn/base/ErrorText.h"
#include "apps/tn/base/Tags.h"
#include "apps/tn/files/DirectoryRecordTypes.h"
#include "apps/tn/files/LaterVRs.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/file/DICOMDirUtilities.h"
#include "talvenor/file/Part10FileInputStream.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/transfer/ConcreteInputTransferSyntaxes.h"
#include "talvenor/transfer/TransferSyntaxManager.h"

namespace
{
constexpr UINT32 kSOPClass = 0x00080016;
constexpr UINT32 kSOPInstance = 0x00080018;
constexpr UINT32 kStudyInstance = 0x0020000D;
constexpr UINT32 kSeriesInstance = 0x0020000E;
constexpr UINT32 kRows = 0x00280010;

// The syntaxes whose datasets are compressed as a whole (PS3.5 A.5, A.7 and A.9).
constexpr const char* kDeflatedSyntaxes[] = {"1.2.840.10008.1.2.1.99", "1.2.840.10008.1.2.4.95",
                                             "1.2.840.10008.1.2.4.205"};

// A syntax that the library does not serve still has a header that it can read: every other syntax of the standard is
// explicit VR little endian outside the pixel data.
std::unique_ptr<InputTransferSyntax> MakeDecoder(Part10InputStream& theStream)
{
   const RWCString& aUID = theStream.GetTransferSyntaxUID();
   if (TransferSyntaxManager::GetDefaultInstance().GetTransferSyntaxType(aUID) != nullptr)
   {
      return theStream.CreateDecoder();
   }
   if (!aUID.starts_with("1.2.840.10008.1.2.") ||
       std::find(std::begin(kDeflatedSyntaxes), std::end(kDeflatedSyntaxes), aUID) != std::end(kDeflatedSyntaxes))
   {
      throw std::runtime_error("its transfer syntax is not supported: " + aUID);
   }
   return std::make_unique<LittleEndianExplicitInputTransferSyntax>(theStream);
}

std::unique_ptr<Part10FileInputStream> OpenFile(const std::string& thePath)
{
   constexpr int kForceDefaultVersion = 1;
   constexpr int kTolerant = 1;
   std::unique_ptr<WithLaterVRs<Part10FileInputStream>> aStream;
   try
   {
      aStream = std::make_unique<WithLaterVRs<Part10FileInputStream>>(thePath, kForceDefaultVersion, kTolerant);
      aStream->BeginDataset();
   }
   catch (const StreamIOException& anException)
   {
      if (anException.GetResultCode() == TN_PARSE_TO_OBJECT_FAILED || anException.GetResultCode() == TN_END_OF_FILE)
      {
         throw InstanceHeader::NotDICOM("not a DICOM file");
      }
      throw;
   }
   if (aStream->GetPart10Header() == nullptr)
   {
      throw InstanceHeader::NotDICOM("not a DICOM file (without file meta information)");
   }
   return aStream;
}
} // namespace

InstanceHeader::~InstanceHeader() = default;

InstanceHeader::InstanceHeader(const std::string& thePath) : itsElements(std::make_unique<DICOMDataObject>())
{
   try
   {
      const std::unique_ptr<Part10FileInputStream> aStream = OpenFile(thePath);
      itsSOPClassUID = aStream->GetPart10Header()->GetSOPClassUID();
      itsSOPInstanceUID = aStream->GetPart10Header()->GetSOPInstanceUID();
      itsTransferSyntaxUID = aStream->GetTransferSyntaxUID();
      if (itsSOPClassUID == DICOMDirUtilities::kSOPClassUID)
      {
         throw NotDICOM("a media directory");
      }
      ReadElements(*aStream);
   }
   catch (const ExceptionBase& anException)
   {
      throw std::runtime_error(ErrorText(anException));
   }
   itsSOPClassUID = itsSOPClassUID.empty() ? GetText(kSOPClass) : itsSOPClassUID;
   itsSOPInstanceUID = itsSOPInstanceUID.empty() ? GetText(kSOPInstance) : itsSOPInstanceUID;
   Require(itsSOPClassUID, "SOP class UID (0008,0016)");
   Require(itsSOPInstanceUID, "SOP instance UID (0008,0018)");
   ChooseRecordType();
   if (!itsRecordType->itsStandsAtTheRoot)
   {
      Require(GetText(kStudyInstance), "study instance UID (0020,000D)");
      Require(GetText(kSeriesInstance), "series instance UID (0020,000E)");
   }
}

void InstanceHeader::ReadElements(Part10InputStream& theStream)
{
   const std::unique_ptr<InputTransferSyntax> aDecoder = MakeDecoder(theStream);
   aDecoder->SetDataDictionary(itsElements->GetDataDictionary());
   itsElements->SetEndian(aDecoder->GetTransferSyntaxType().GetEndian());
   UINT32 aLastTag = GetLastTag();
   while (std::unique_ptr<VR> aVR{aDecoder->NextVR()})
   {
      const UINT32 aTag = aVR->GetTag();
      if (aTag > aLastTag)
      {
         return;
      }
      itsElements->Push(aVR.release());
      if (aTag == kSOPClass)
      {
         aLastTag = GetLastTag();
      }
   }
}

UINT32 InstanceHeader::GetLastTag() const
{
   const DirectoryRecordType* const aType =
       FindRecordType(itsSOPClassUID.empty() ? GetText(kSOPClass) : itsSOPClassUID);
   return aType != nullptr ? aType->GetLastTag() : kRows;
}

// A class that the tables do not know is an image if it looks like one.
void InstanceHeader::ChooseRecordType()
{
   itsRecordType = FindRecordType(itsSOPClassUID);
   if (itsRecordType == nullptr && itsElements->HasNonNullAttribute(GroupOf(kRows), ElementOf(kRows)))
   {
      itsRecordType = &kImageRecord;
   }
   if (itsRecordType == nullptr)
   {
      throw std::runtime_error("it has no image, and no type of record is known for its SOP class " + itsSOPClassUID);
   }
}

void InstanceHeader::Require(const RWCString& theUID, const char* theName) const
{
   if (theUID.empty())
   {
      throw std::runtime_error(std::string("it has no ") + theName);
   }
}

RWCString InstanceHeader::GetText(UINT32 theTag) const
{
   return TextOf(*itsElements, theTag);
}
