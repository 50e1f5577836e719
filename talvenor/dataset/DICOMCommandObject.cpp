#include "talvenor/dataset/DICOMCommandObject.h"

DICOMCommandObject::DICOMCommandObject(TNEndian::EndianType) : DICOMObject(TNEndian::LittleEndian) {}
