// Whether the image that a client puts into an image box can be printed (PS3.4 H.4.3.1.2.1): the pixels are all there,
// and described without contradiction. Not part of the library's interface.
#pragma once

#include "talvenor/print/PrintAnswer.h"

class UID;

// theBox is what the client sends; theSOPClass tells gray image boxes from colour ones, and others are not looked at.
// theBoxCount is that of the film. A box without image, or with an empty one, is fine.
PrintAnswer CheckBasicImageBox(const DICOMDataObject& theBox, const UID& theSOPClass, unsigned int theBoxCount);
