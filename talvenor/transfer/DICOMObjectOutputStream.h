// A sink of datasets: an encoder.
#pragma once

#include "talvenor/Export.h"

class DICOMObject;

class TALVENOR_API DICOMObjectOutputStream
{
public:
   virtual ~DICOMObjectOutputStream();

   // Writes every element in ascending order of tags. Elements without a type get the one that the dataset's own
   // dictionary knows.
   virtual void SaveDICOMObject(DICOMObject& theObject) = 0;
};
