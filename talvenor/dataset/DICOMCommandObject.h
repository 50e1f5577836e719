// A DIMSE command set (group 0000, PS3.7 6.3.1): always implicit VR little endian on the wire, so always little endian
// here, whatever byte order is passed.
#pragma once

#include "talvenor/dataset/DICOMObject.h"

class TALVENOR_API DICOMCommandObject : public DICOMObject
{
public:
   explicit DICOMCommandObject(TNEndian::EndianType theEndian = TNEndian::LittleEndian);
   DICOMCommandObject(const DICOMCommandObject& theOther) = default;
   DICOMCommandObject& operator=(const DICOMCommandObject& theOther) = default;

   DICOMObjectType GetType() const override { return CommandObject; }
};
