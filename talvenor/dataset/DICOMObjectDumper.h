// Prints datasets, elements and files as readable text: a line an element with its tag, length, value representation,
// description and a bounded rendering of the value, sequences framed and indented, command sets with their command,
// status and data set type spelt out. Bytes below 0x20 and 0x7F show as "." so that a value cannot forge lines.
//
// Each text goes to the dumper's own log stream, else to the default one, else nowhere. Not locked: DICOMObject::Dump
// holds the dataset and the log while it prints.
#pragma once

#include <memory>
#include <ostream>
#include <string>

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
   explicit DICOMObjectDumper(LogStream& theStream);   // borrowed
   ~DICOMObjectDumper();
   DICOMObjectDumper(const DICOMObjectDumper&) = delete;
   DICOMObjectDumper& operator=(const DICOMObjectDumper&) = delete;

   // The stream to print to: a log stream or a standard stream (both borrowed), or a log stream over a file (owned).
   void SetStream(LogStream& theStream);
   void SetStream(std::ostream& theStream);
   void SetStream(const RWCString& theFileName);
   void UnsetStream();

   // The stream of dumpers that have none; the default one that was owned before is destroyed.
   static void SetDefaultStream(LogStream& theStream);
   static void SetDefaultStream(std::ostream& theStream);
   static void SetDefaultStream(const RWCString& theFileName);

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

   // The rendering of a value by its type code; theDictionary (may be null) explains a single attribute tag.
   void PrintData(UINT32 theLength, const unsigned char* theValue, UINT16 theTypeCode, TNEndian::EndianType theEndian,
                  const InstanceSpecificDataDictionary* theDictionary = nullptr);

   static bool IsAlpha(unsigned char theByte);   // printable ASCII
   static bool IsDataAlpha(UINT32 theLength, const unsigned char* theValue);

private:
   void DumpDOInternal(const DICOMObject& theObject, const RWCString& theTitle, unsigned int theIndentation,
                       unsigned int theNesting);

   LogStream* itsStream = nullptr;
   std::unique_ptr<LogStream> itsOwnStream;
   std::string itsText;   // the lines being composed; written to the stream in large pieces
};
