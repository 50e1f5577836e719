// TNTrace: a log stream whose trace points are switched by eighteen flags, and the two global streams of the library.
//
//    if (gTNTracer(TNTrace::TNTracePDU))
//    {
//       LogEntry anEntry(gTNTracer);
//       anEntry << "AAssociateRQPDU::Write(): length = " << aLength << "\n";
//    }
//
// Testing a flag is one relaxed atomic load: a change shows at the next test of another thread, without locking.
// Dumps are written by DICOMObjectDumper into this stream; while it is off they write nothing.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "talvenor/foundation/CapturingVersioningLogStream.h"

class DICOMCommandObject;
class DICOMDataObject;
class DICOMObject;
class InstanceSpecificDataDictionary;
class VR;

class TALVENOR_API TNTrace : public CapturingVersioningLogStream
{
public:
   enum TNTraceFlag
   {
      TNTraceNone = 0,
      TNTraceSocket = 1,
      TNTraceSocketErrors = 2,
      TNTraceSocketOpenClose = 3,
      TNTraceSocketEOF = 4,
      TNTraceSocketBytesRead = 5,
      TNTracePDU = 6,
      TNTracePDUDicomObjects = 7,
      TNTracePDataTF = 8,
      TNTracePDUVerbose = 9,
      TNTraceDimsec = 10,
      TNTraceDimsecDicomObjects = 11,
      TNTraceDimsen = 12,
      TNTraceAssociation = 13,
      TNTraceFileIO = 14,
      TNTraceThreads = 15,
      TNTracePresentationContextManager = 16,
      TNTraceDULStream = 17
   };
   static constexpr unsigned int itsFlagCount = 18;

   explicit TNTrace(unsigned int theThreshold = 0);
   TNTrace(const char* theFilename, unsigned int theThreshold, int theOpenMode = OpenMode::Append,
           int theProtection = OpenMode::Shared);
   // Clears all flags first, so that the trace points of threads that are still running stop.
   ~TNTrace() override;

   bool Trace(unsigned int theFlag) const
   {
      return theFlag < itsFlagCount && (itsFlags.load(std::memory_order_relaxed) >> theFlag & 1u) != 0;
   }
   bool operator()(unsigned int theFlag) const { return Trace(theFlag); }

   // Numbers of 18 and above are ignored.
   void SetTrace(unsigned int theFlag);
   void ClearTrace(unsigned int theFlag);
   // By name, in any case of letters; unknown names are ignored.
   void SetTrace(const std::string& theName);
   void ClearTrace(const std::string& theName);
   // Clears all flags.
   void Clear();
   // Sets every flag of a list of names separated by commas. Nothing is cleared, and blanks are part of a name.
   void SetList(const std::string& theNames);

   // Defined in dataset/. They hold the stream for the whole dump.
   void Dump(const DICOMDataObject& theObject);
   void Dump(const DICOMCommandObject& theObject);
   void Dump(const DICOMObject& theObject);
   void Dump(const std::string& theFilename); // of a DICOM file
   // One element, its value read in the byte order theEndian, a TNEndian::EndianType; by default the element's own.
   void Dump(const VR& theVR, const InstanceSpecificDataDictionary& theDictionary);
   void Dump(const VR& theVR, int theEndian, const InstanceSpecificDataDictionary& theDictionary);
   void DumpVR(const VR& theVR, const InstanceSpecificDataDictionary& theDictionary);
   void DumpVR(const VR& theVR, int theEndian, const InstanceSpecificDataDictionary& theDictionary);

private:
   std::atomic<std::uint32_t> itsFlags{0}; // flag n is bit n
};

// Diagnostics of what happens, gated by the flags. Off, with all flags clear, until the host switches it on.
extern TALVENOR_API TNTrace gTNTracer;

// Errors, written unconditionally. Off until the host switches it on.
extern TALVENOR_API TNTrace gTNErrorLog;
