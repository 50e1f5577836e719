#include "talvenor/file/Part10Header.h"

#include <algorithm>
#include <cstring>

#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/foundation/AETitle.h"
#include "talvenor/foundation/Exceptions.h"

namespace
{
// File meta elements, PS3.10 table 7.1-1.
constexpr UINT16 kMetaGroup = 0x0002;
constexpr UINT16 kVersion = 0x0001;
constexpr UINT16 kSOPClassUID = 0x0002;
constexpr UINT16 kSOPInstanceUID = 0x0003;
constexpr UINT16 kTransferSyntaxUID = 0x0010;
constexpr UINT16 kImplementationClassUID = 0x0012;
constexpr UINT16 kImplementationVersionName = 0x0013;
constexpr UINT16 kSourceAETitle = 0x0016;
constexpr UINT16 kPrivateCreatorUID = 0x0100;
constexpr UINT16 kPrivateInformation = 0x0102;

constexpr size_t kVersionNameLength = 16;

std::unique_ptr<unsigned char[]> CopyOf(const unsigned char* theBytes, size_t theCount)
{
   if (theBytes == nullptr)
   {
      return nullptr;
   }
   auto aCopy = std::make_unique_for_overwrite<unsigned char[]>(theCount);
   std::memcpy(aCopy.get(), theBytes, theCount);
   return aCopy;
}

// A header that lacks an element would make a file that cannot be read.
void Push(DICOMDataObject& theObject, std::unique_ptr<VR> theVR)
{
   if (!theObject.Push(theVR.release()))
   {
      throw BadAllocException(0);
   }
}

void PushText(DICOMDataObject& theObject, UINT16 theElement, UINT16 theTypeCode, const RWCString& theText)
{
   const char aPad = theTypeCode == VRCode::UI ? '\0' : ' ';
   auto aVR = std::make_unique<VR>(kMetaGroup, theElement);
   aVR->SetTypeCode(theTypeCode);
   aVR->SetData(theText.data(), static_cast<UINT32>(theText.size()), aPad);
   Push(theObject, std::move(aVR));
}

void PushBytes(DICOMDataObject& theObject, UINT16 theElement, const unsigned char* theBytes, UINT32 theLength)
{
   auto aVR = std::make_unique<VR>(kMetaGroup, theElement);
   aVR->SetTypeCode(VRCode::OB);
   aVR->SetData(theBytes, theLength, '\0');
   Push(theObject, std::move(aVR));
}
} // namespace

Part10Header::Part10Header(const RWCString& theSOPClassUID, const RWCString& theSOPInstanceUID,
                           const RWCString& theTransferSyntaxUID, const RWCString& theImplementationClassUID,
                           const RWCString& theImplementationVersionName)
    : Part10Header(nullptr, theSOPClassUID, theSOPInstanceUID, theTransferSyntaxUID, theImplementationClassUID,
                   theImplementationVersionName, RWCString())
{}

Part10Header::Part10Header(const RWCString& theSOPClassUID, const RWCString& theSOPInstanceUID,
                           const RWCString& theTransferSyntaxUID, const RWCString& theImplementationClassUID,
                           const RWCString& theImplementationVersionName, const RWCString& theSourceAETitle)
    : Part10Header(nullptr, theSOPClassUID, theSOPInstanceUID, theTransferSyntaxUID, theImplementationClassUID,
                   theImplementationVersionName, theSourceAETitle)
{}

Part10Header::Part10Header(unsigned char* thePreamble, const RWCString& theSOPClassUID,
                           const RWCString& theSOPInstanceUID, const RWCString& theTransferSyntaxUID,
                           const RWCString& theImplementationClassUID, const RWCString& theImplementationVersionName)
    : Part10Header(thePreamble, theSOPClassUID, theSOPInstanceUID, theTransferSyntaxUID, theImplementationClassUID,
                   theImplementationVersionName, RWCString())
{}

Part10Header::Part10Header(unsigned char* thePreamble, const RWCString& theSOPClassUID,
                           const RWCString& theSOPInstanceUID, const RWCString& theTransferSyntaxUID,
                           const RWCString& theImplementationClassUID, const RWCString& theImplementationVersionName,
                           const RWCString& theSourceAETitle)
    : itsPreamble(thePreamble), itsSOPClassUID(theSOPClassUID), itsSOPInstanceUID(theSOPInstanceUID),
      itsTransferSyntaxUID(theTransferSyntaxUID), itsImplementationClassUID(theImplementationClassUID),
      itsImplementationVersionName(theImplementationVersionName), itsSourceAETitle(theSourceAETitle)
{}

Part10Header::Part10Header(const RWCString& theSOPClassUID, const RWCString& theSOPInstanceUID,
                           const RWCString& theTransferSyntaxUID, const RWCString& theImplementationClassUID,
                           const RWCString& theImplementationVersionName, const RWCString& theSourceAETitle,
                           const RWCString& thePrivateCreatorUID, unsigned char* thePrivateInformation,
                           UINT32 theLength)
    : Part10Header(nullptr, theSOPClassUID, theSOPInstanceUID, theTransferSyntaxUID, theImplementationClassUID,
                   theImplementationVersionName, theSourceAETitle)
{
   itsPrivateCreatorUID = thePrivateCreatorUID;
   itsPrivateInformation.reset(thePrivateInformation);
   itsPrivateInformationLength = theLength;
}

Part10Header::Part10Header(const unsigned char* thePreamble, const DICOMDataObject& theMetaInformation,
                           int theForceDefaultVersion, int theTolerant)
    : itsPreamble(CopyOf(thePreamble, kPreambleLength))
{
   if (theForceDefaultVersion)
   {
      SetDefaultVersion();
   }
   else
   {
      SetVersion(theMetaInformation, theTolerant);
   }

   struct RequiredText
   {
      UINT16 itsElement;
      RWCString Part10Header::*itsField;
      const char* itsMissingText;
      bool itsIsAlwaysRequired;
   };
   static constexpr RequiredText kRequired[] = {
       {kTransferSyntaxUID, &Part10Header::itsTransferSyntaxUID, "Missing TransferSyntaxUID", true},
       {kSOPClassUID, &Part10Header::itsSOPClassUID, "Missing MediaStorageSOPClassUID", false},
       {kSOPInstanceUID, &Part10Header::itsSOPInstanceUID, "Missing MediaStorageSOPInstanceUID", false},
       {kImplementationClassUID, &Part10Header::itsImplementationClassUID, "Missing ImplementationClassUID", false},
   };
   for (const RequiredText& aRow : kRequired)
   {
      const int isThere = theMetaInformation.GetString(kMetaGroup, aRow.itsElement, this->*aRow.itsField);
      if (!isThere && (aRow.itsIsAlwaysRequired || !theTolerant))
      {
         throw ConstructorError(aRow.itsMissingText);
      }
   }
   theMetaInformation.GetString(kMetaGroup, kImplementationVersionName, itsImplementationVersionName);
   theMetaInformation.GetString(kMetaGroup, kSourceAETitle, itsSourceAETitle);
   if (theMetaInformation.GetString(kMetaGroup, kPrivateCreatorUID, itsPrivateCreatorUID))
   {
      SetPrivateInformation(theMetaInformation, theTolerant);
   }
}

Part10Header::Part10Header(const Part10Header& theOther)
    : itsMajorVersion(theOther.itsMajorVersion), itsMinorVersion(theOther.itsMinorVersion),
      itsPreamble(CopyOf(theOther.itsPreamble.get(), kPreambleLength)), itsSOPClassUID(theOther.itsSOPClassUID),
      itsSOPInstanceUID(theOther.itsSOPInstanceUID), itsTransferSyntaxUID(theOther.itsTransferSyntaxUID),
      itsImplementationClassUID(theOther.itsImplementationClassUID),
      itsImplementationVersionName(theOther.itsImplementationVersionName), itsSourceAETitle(theOther.itsSourceAETitle),
      itsPrivateCreatorUID(theOther.itsPrivateCreatorUID),
      itsPrivateInformationLength(theOther.itsPrivateInformationLength),
      itsPrivateInformation(CopyOf(theOther.itsPrivateInformation.get(), theOther.itsPrivateInformationLength))
{}

Part10Header& Part10Header::operator=(const Part10Header& theOther)
{
   Part10Header aCopy(theOther);
   itsMajorVersion = aCopy.itsMajorVersion;
   itsMinorVersion = aCopy.itsMinorVersion;
   itsPreamble = std::move(aCopy.itsPreamble);
   itsSOPClassUID = std::move(aCopy.itsSOPClassUID);
   itsSOPInstanceUID = std::move(aCopy.itsSOPInstanceUID);
   itsTransferSyntaxUID = std::move(aCopy.itsTransferSyntaxUID);
   itsImplementationClassUID = std::move(aCopy.itsImplementationClassUID);
   itsImplementationVersionName = std::move(aCopy.itsImplementationVersionName);
   itsSourceAETitle = std::move(aCopy.itsSourceAETitle);
   itsPrivateCreatorUID = std::move(aCopy.itsPrivateCreatorUID);
   itsPrivateInformationLength = aCopy.itsPrivateInformationLength;
   itsPrivateInformation = std::move(aCopy.itsPrivateInformation);
   return *this;
}

Part10Header::~Part10Header() = default;

void Part10Header::SetDefaultVersion()
{
   itsMajorVersion = 0x00;
   itsMinorVersion = 0x01;
}

void Part10Header::SetVersion(const DICOMDataObject& theMetaInformation, int theTolerant)
{
   const VR* const aVR = theMetaInformation.GetVR(kMetaGroup, kVersion);
   if (aVR != nullptr && aVR->GetLength() >= 2 && aVR->GetData() != nullptr)
   {
      itsMajorVersion = aVR->GetData()[0];
      itsMinorVersion = aVR->GetData()[1];
      return;
   }
   if (!theTolerant)
   {
      throw ConstructorError("Missing/bad FileMetaInformationVersion");
   }
   SetDefaultVersion();
}

void Part10Header::SetPrivateInformation(const DICOMDataObject& theMetaInformation, int theTolerant)
{
   const VR* const aVR = theMetaInformation.GetVR(kMetaGroup, kPrivateInformation);
   if (aVR == nullptr)
   {
      if (!theTolerant)
      {
         throw ConstructorError("PrivateInformationCreatorUID present but missing PrivateInformation");
      }
      return;
   }
   unsigned char* aBytes = nullptr;
   if (theMetaInformation.GetBytesCopy(kMetaGroup, kPrivateInformation, aBytes))
   {
      itsPrivateInformation.reset(aBytes);
      itsPrivateInformationLength = aVR->GetLength();
   }
   else if (!theTolerant)
   {
      throw ConstructorError("PrivateInformationCreatorUID present but problem copying PrivateInformation");
   }
}

DICOMDataObject* Part10Header::AsDICOMDataObject(int theTolerant) const
{
   const bool hasRequired = !itsSOPClassUID.empty() && !itsSOPInstanceUID.empty() && !itsImplementationClassUID.empty();
   if (itsTransferSyntaxUID.empty() || (!theTolerant && !hasRequired))
   {
      return nullptr;
   }
   auto anObject = std::make_unique<DICOMDataObject>(TNEndian::LittleEndian);
   const unsigned char aVersion[] = {itsMajorVersion, itsMinorVersion};
   PushBytes(*anObject, kVersion, aVersion, sizeof aVersion);
   PushText(*anObject, kSOPClassUID, VRCode::UI, itsSOPClassUID);
   PushText(*anObject, kSOPInstanceUID, VRCode::UI, itsSOPInstanceUID);
   PushText(*anObject, kTransferSyntaxUID, VRCode::UI, itsTransferSyntaxUID);
   PushText(*anObject, kImplementationClassUID, VRCode::UI, itsImplementationClassUID);
   PushText(*anObject, kImplementationVersionName, VRCode::SH,
            itsImplementationVersionName.substr(0, kVersionNameLength));
   PushText(*anObject, kSourceAETitle, VRCode::AE,
            itsSourceAETitle.empty() ? AETitle::GetDefaultAETitle() : itsSourceAETitle);
   if (itsPrivateInformation && itsPrivateInformationLength != 0 && !itsPrivateCreatorUID.empty())
   {
      PushText(*anObject, kPrivateCreatorUID, VRCode::UI, itsPrivateCreatorUID);
      PushBytes(*anObject, kPrivateInformation, itsPrivateInformation.get(), itsPrivateInformationLength);
   }
   return anObject.release();
}
