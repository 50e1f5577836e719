#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/DICOMObjectDumper.h"
#include "talvenor/dataset/DICOMObjectLock.h"
#include "talvenor/foundation/TNTrace.h"

namespace
{
// The dataset before the log: the order in which DICOMObject::Dump takes the two.
template <class Object>
void DumpLocked(TNTrace& theTrace, const Object& theObject)
{
   const DICOMObjectLock anObjectLock(theObject);
   const LogLock aLogLock(theTrace);
   DICOMObjectDumper(theTrace).Dump(theObject);
}
} // namespace

void TNTrace::Dump(const DICOMDataObject& theObject)
{
   DumpLocked(*this, theObject);
}

void TNTrace::Dump(const DICOMCommandObject& theObject)
{
   DumpLocked(*this, theObject);
}

void TNTrace::Dump(const DICOMObject& theObject)
{
   DumpLocked(*this, theObject);
}

void TNTrace::Dump(const std::string& theFilename)
{
   DICOMObjectDumper(*this).Dump(theFilename); // which locks the trace when the file is there
}

void TNTrace::Dump(const VR& theVR, const InstanceSpecificDataDictionary& theDictionary)
{
   DumpVR(theVR, theDictionary);
}

void TNTrace::Dump(const VR& theVR, int theEndian, const InstanceSpecificDataDictionary& theDictionary)
{
   DumpVR(theVR, theEndian, theDictionary);
}

void TNTrace::DumpVR(const VR& theVR, const InstanceSpecificDataDictionary& theDictionary)
{
   const LogLock aLock(*this);
   DICOMObjectDumper(*this).DumpVR(theVR, theDictionary);
}

void TNTrace::DumpVR(const VR& theVR, int theEndian, const InstanceSpecificDataDictionary& theDictionary)
{
   const LogLock aLock(*this);
   const TNEndian::EndianType anEndian =
       theEndian == TNEndian::BigEndian ? TNEndian::BigEndian : TNEndian::LittleEndian;
   DICOMObjectDumper(*this).DumpVR(theVR, anEndian, theDictionary);
}
