// What a media directory needs of a DICOM file: its meta information and the elements in front of the bulk of its data.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>

#include "talvenor/foundation/BasicTypes.h"

class DICOMDataObject;
class Part10InputStream;
struct DirectoryRecordType;

class InstanceHeader
{
public:
   // A file that is no DICOM file (PS3.10): one that is shorter, has no meta information, or cannot be one.
   class NotDICOM : public std::runtime_error
   {
   public:
      using std::runtime_error::runtime_error;
   };

   // Reads no more of the file than it must. Throws NotDICOM, or std::runtime_error for a DICOM file that a directory
   // cannot refer to, with the reason.
   explicit InstanceHeader(const std::string& thePath);
   ~InstanceHeader();
   InstanceHeader(const InstanceHeader&) = delete;
   InstanceHeader& operator=(const InstanceHeader&) = delete;

   // The type of the record that stands for the file.
   const DirectoryRecordType& GetRecordType() const { return *itsRecordType; }

   const RWCString& GetSOPClassUID() const { return itsSOPClassUID; }
   const RWCString& GetSOPInstanceUID() const { return itsSOPInstanceUID; }
   const RWCString& GetTransferSyntaxUID() const { return itsTransferSyntaxUID; }

   // The elements from the front of the dataset to the last that its records take keys from.
   const DICOMDataObject& GetElements() const { return *itsElements; }

   // Without trailing blanks; empty when it is missing.
   RWCString GetText(UINT32 theTag) const;

private:
   void ReadElements(Part10InputStream& theStream);
   UINT32 GetLastTag() const;
   void ChooseRecordType();
   void Require(const RWCString& theUID, const char* theName) const;

   std::unique_ptr<DICOMDataObject> itsElements;
   const DirectoryRecordType* itsRecordType = nullptr;
   RWCString itsSOPClassUID;
   RWCString itsSOPInstanceUID;
   RWCString itsTransferSyntaxUID;
};
