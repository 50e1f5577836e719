// Prints datasets, elements and files as readable text: a line an element with its tag, length, value representation,
// description and a bounded rendering of the value, sequences framed and indented, command sets with their command,
// status and data set type spelt out:
//
//    --------- Start of DICOM Data Object ---------
//    (0008, 0016) 26/UI "SOP Class UID": "1.2.840.10008.5.1.4.1.1.2" (CT Image Storage)
//    Start of Sequence (Referenced Image Sequence)
//        > --------- Start of Item 0 of 1 ---------
//        > (0008, 1155) 4/UI "Referenced SOP Instance UID": "1.2"
//        > --------- End of Item 0 of 1 ---------
//    End of Sequence (Referenced Image Sequence)
//    (0028, 0010) 2/US "Rows": 512
//    --------- End of DICOM Data Object ---------
//
// Numbers are decimal, floats with the shortest digits that read back as the same value. Bytes below 0x20 and 0x7F show
// as "." so that a value cannot forge lines; others pass as they are, in the character set of the dataset. Texts are
// cut at 64 bytes, but not within a character of UTF-8. Private creator elements without a type are shown as LO.
//
// Each text goes to the dumper's own log stream, else to the default one, else nowhere. Nothing is computed while the
// stream is off. Not locked: hold the dataset, then the log, while a dump runs, as DICOMObject::Dump does. A file is
// the exception: loading it may take seconds, so its dump locks the log by itself, and only to print.
#pragma once

#include <iosfwd>
#include <memory>

#include "talvenor/foundation/BasicTypes.h"
#include "talvenor/io/TNEndian.h"

class DICOMCommandObject;
class DICOMDataObject;
class DICOMObject;
class InstanceSpecificDataDictionary;
class LogStream;
class VR;

class TALVENOR_API DICOMObjectDumper
{
public:
   DICOMObjectDumper();
   explicit DICOMObjectDumper(LogStream& theStream); // borrowed
   ~DICOMObjectDumper();
   DICOMObjectDumper(const DICOMObjectDumper&) = delete;
   DICOMObjectDumper& operator=(const DICOMObjectDumper&) = delete;

   // The stream to print to: a log stream or a standard stream (both borrowed), or a log stream over a file (owned),
   // which is appended to. A file that cannot be opened leaves a stream that is off.
   void SetStream(LogStream& theStream);
   void SetStream(std::ostream& theStream);
   void SetStream(const RWCString& theFileName);
   // Back to the default stream.
   void UnsetStream();

   // The stream of dumpers that have none; the default one that was owned before is destroyed, unless it is set again.
   // To be set before other threads dump.
   static void SetDefaultStream(LogStream& theStream);
   static void SetDefaultStream(std::ostream& theStream);
   static void SetDefaultStream(const RWCString& theFileName);
   static void UnsetDefaultStream();

   // Elements are read in the dataset's byte order and explained by its own dictionary.
   void Dump(const DICOMObject& theObject);
   void Dump(const DICOMDataObject& theObject);
   void Dump(const DICOMCommandObject& theObject);

   // Loads the file and prints it, or the error.
   void Dump(const RWCString& theFileName);

   // One element. theEndian is the byte order in which its value is read, by default the element's own; theDictionary
   // gives type and description.
   void Dump(const VR& theVR, const InstanceSpecificDataDictionary& theDictionary);
   void Dump(const VR& theVR, TNEndian::EndianType theEndian, const InstanceSpecificDataDictionary& theDictionary);
   void DumpVR(const VR& theVR, const InstanceSpecificDataDictionary& theDictionary);
   void DumpVR(const VR& theVR, TNEndian::EndianType theEndian, const InstanceSpecificDataDictionary& theDictionary);

   // The rendering of a value by its type code, without a line end. With theExplainsTag a single attribute tag is
   // followed by its description, which comes from the default dictionary.
   void PrintData(UINT32 theLength, const unsigned char* theValue, UINT16 theTypeCode, TNEndian::EndianType theEndian,
                  int theExplainsTag = 1);

   static bool IsAlpha(unsigned char theByte); // printable ASCII
   static bool IsDataAlpha(UINT32 theLength, const unsigned char* theValue);

   static LogStream* itsDefaultStream; // null while there is none

private:
   void DumpDOInternal(const DICOMObject& theObject, const char* theTitle);
   LogStream* GetStreamInUse() const; // null when nothing would be written
   static void ReplaceDefaultStream(LogStream* theStream, bool theOwns);

   static bool itsOwnsDefaultStream;

   LogStream* itsStream = nullptr;
   std::unique_ptr<LogStream> itsOwnStream;
};
