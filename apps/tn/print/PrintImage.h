// An image as a printer takes it (PS3.3 C.13.5): grey levels of 8 or 12 bits, MONOCHROME2, or RGB of 8 bits.
#pragma once

#include <memory>
#include <string>

#include "talvenor/foundation/BasicTypes.h"

class DICOMDataObject;

struct PrintImageForm
{
   bool itsIsColour = false;
   unsigned int itsBits = 8; // or 12, in words; of grey levels
};

// The item of an image sequence with a frame, counted from 1, of the file. Colours become grey by their luminance where
// the form is grey. Throws IncompleteDataset or ExceptionBase.
std::unique_ptr<DICOMDataObject> PreparePrintImage(const std::string& thePath, UINT32 theFrame,
                                                   const PrintImageForm& theForm);
