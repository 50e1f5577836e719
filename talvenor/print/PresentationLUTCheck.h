// What a client may put into a presentation LUT (PS3.3 C.11.4). Not part of the library's interface.
#pragma once

#include "talvenor/print/PrintAnswer.h"

// Of what theAttributes has, new or changed: a shape that the standard knows, and a LUT whose data has as many entries
// as its descriptor says.
PrintAnswer CheckPresentationLUT(const DICOMDataObject& theAttributes);
