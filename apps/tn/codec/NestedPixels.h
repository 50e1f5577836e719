// Pixel data inside sequence items, mostly icons: compressed as the image is (PS3.5 A.4), which a native syntax has no
// place for.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

class DICOMDataObject;

// Makes compressed pixel data in the items of theObject, however deep, native, and what the items say of it true. An
// icon that cannot be decompressed goes with its Icon Image Sequence (0088,0200), which nobody needs; for others
// StreamIOException (TN_DECOMPRESSION_FAILED) is thrown.
void DecompressNested(DICOMDataObject& theObject, const RWCString& theSyntaxUID);
