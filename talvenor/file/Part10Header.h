// File meta information (PS3.10 7.1): the 128-byte preamble and the elements of group 0002 in memory.
//
// Pointers passed in are taken over, unless said otherwise; copies are deep. A plain value, not locked.
#pragma once

#include <memory>

#include "talvenor/foundation/BasicTypes.h"

class DICOMDataObject;

class TALVENOR_API Part10Header
{
public:
   static constexpr unsigned int kPreambleLength = 128;

   // The version is 0x00, 0x01.
   Part10Header(const RWCString& theSOPClassUID, const RWCString& theSOPInstanceUID,
                const RWCString& theTransferSyntaxUID, const RWCString& theImplementationClassUID,
                const RWCString& theImplementationVersionName);
   Part10Header(const RWCString& theSOPClassUID, const RWCString& theSOPInstanceUID,
                const RWCString& theTransferSyntaxUID, const RWCString& theImplementationClassUID,
                const RWCString& theImplementationVersionName, const RWCString& theSourceAETitle);

   // The same with a preamble of 128 bytes (new[]).
   Part10Header(unsigned char* thePreamble, const RWCString& theSOPClassUID, const RWCString& theSOPInstanceUID,
                const RWCString& theTransferSyntaxUID, const RWCString& theImplementationClassUID,
                const RWCString& theImplementationVersionName);
   Part10Header(unsigned char* thePreamble, const RWCString& theSOPClassUID, const RWCString& theSOPInstanceUID,
                const RWCString& theTransferSyntaxUID, const RWCString& theImplementationClassUID,
                const RWCString& theImplementationVersionName, const RWCString& theSourceAETitle);

   // With private information of theLength bytes (new[]).
   Part10Header(const RWCString& theSOPClassUID, const RWCString& theSOPInstanceUID,
                const RWCString& theTransferSyntaxUID, const RWCString& theImplementationClassUID,
                const RWCString& theImplementationVersionName, const RWCString& theSourceAETitle,
                const RWCString& thePrivateCreatorUID, unsigned char* thePrivateInformation, UINT32 theLength);

   // From the elements of group 0002. thePreamble may be null; its 128 bytes are copied. Throws ConstructorError for a
   // missing element. With theForceDefaultVersion the version is 0x00, 0x01 whatever (0002,0001) says; with
   // theTolerant only the transfer syntax must be there, and a missing version is 0x00, 0x01.
   Part10Header(const unsigned char* thePreamble, const DICOMDataObject& theMetaInformation, int theForceDefaultVersion,
                int theTolerant);

   Part10Header(const Part10Header& theOther);
   Part10Header& operator=(const Part10Header& theOther);
   ~Part10Header();

   // 128 bytes; null stands for zeros.
   const unsigned char* GetPreamble() const { return itsPreamble.get(); }
   void SetPreamble(unsigned char* thePreamble) { itsPreamble.reset(thePreamble); }
   static unsigned int GetPreambleLength() { return kPreambleLength; }

   const RWCString& GetSOPClassUID() const { return itsSOPClassUID; }
   void SetSOPClassUID(const RWCString& theUID) { itsSOPClassUID = theUID; }
   const RWCString& GetSOPInstanceUID() const { return itsSOPInstanceUID; }
   void SetSOPInstanceUID(const RWCString& theUID) { itsSOPInstanceUID = theUID; }
   const RWCString& GetTransferSyntaxUID() const { return itsTransferSyntaxUID; }
   void SetTransferSyntaxUID(const RWCString& theUID) { itsTransferSyntaxUID = theUID; }
   const RWCString& GetImplementationClassUID() const { return itsImplementationClassUID; }
   void SetImplementationClassUID(const RWCString& theUID) { itsImplementationClassUID = theUID; }

   // Written with its first 16 characters.
   const RWCString& GetImplementationVersionName() const { return itsImplementationVersionName; }
   void SetImplementationVersionName(const RWCString& theName) { itsImplementationVersionName = theName; }

   // When empty, the default AE title is written.
   const RWCString& GetSourceAETitle() const { return itsSourceAETitle; }
   void SetSourceAETitle(const RWCString& theTitle) { itsSourceAETitle = theTitle; }

   // Written only together: creator, bytes and a length above 0.
   const RWCString& GetPrivateCreatorUID() const { return itsPrivateCreatorUID; }
   void SetPrivateCreatorUID(const RWCString& theUID) { itsPrivateCreatorUID = theUID; }
   UINT32 GetPrivateInformationLength() const { return itsPrivateInformationLength; }
   void SetPrivateInformationLength(UINT32 theLength) { itsPrivateInformationLength = theLength; }
   const unsigned char* GetPrivateInformation() const { return itsPrivateInformation.get(); }
   void SetPrivateInformation(unsigned char* theBytes) { itsPrivateInformation.reset(theBytes); }

   // Major x 256 + minor.
   UINT16 GetVersion() const { return static_cast<UINT16>(itsMajorVersion << 8 | itsMinorVersion); }

   // A mask of the version bits that this library understands (PS3.10 table 7.1-1), and whether a version has no other.
   static UINT16 GetSupportedVersions() { return 0x0001; }
   static bool IsSupported(UINT16 theVersion) { return (theVersion & ~GetSupportedVersions()) == 0; }

   // The meta elements as a new little-endian dataset, owned by the caller, without group length. Null when an element
   // that is required is empty: all four UIDs, or with theTolerant the transfer syntax.
   DICOMDataObject* AsDICOMDataObject(int theTolerant) const;

private:
   void SetVersion(const DICOMDataObject& theMetaInformation, int theTolerant);
   void SetDefaultVersion();
   void SetPrivateInformation(const DICOMDataObject& theMetaInformation, int theTolerant);

   unsigned char itsMajorVersion = 0x00;
   unsigned char itsMinorVersion = 0x01;
   std::unique_ptr<unsigned char[]> itsPreamble;
   RWCString itsSOPClassUID;
   RWCString itsSOPInstanceUID;
   RWCString itsTransferSyntaxUID;
   RWCString itsImplementationClassUID;
   RWCString itsImplementationVersionName;
   RWCString itsSourceAETitle;
   RWCString itsPrivateCreatorUID;
   UINT32 itsPrivateInformationLength = 0;
   std::unique_ptr<unsigned char[]> itsPrivateInformation;
};
