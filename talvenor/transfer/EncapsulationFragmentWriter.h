// Writes encapsulated pixel data fragment by fragment (PS3.5 A.4), without holding more than one of them. The encoders
// of explicit VR little endian and of the compressed syntaxes are such writers (OutputTransferSyntax::
// GetEncapsulationFragmentWriter).
//
// The first fragment begins the element. It is the caller's duty to make it the basic offset table, an empty fragment
// for none. FinishEncapsulation ends the element; until then the encoder refuses other elements.
#pragma once

#include "talvenor/Export.h"

class PixelDataFragment;

class TALVENOR_API EncapsulationFragmentWriter
{
public:
   virtual ~EncapsulationFragmentWriter();

   // Writes one item. With thePadOdd non-zero a fragment of odd length gets the pad byte of the transfer syntax;
   // without it the length goes out as it is. The pointer form takes the fragment and destroys it, also when writing
   // fails. Throws what the stream throws, and StreamIOException (TN_INVALID_ENCODING) for a length that no item can
   // have.
   virtual void SavePixelDataFragment(PixelDataFragment* theFragment, int thePadOdd) = 0;
   virtual void SavePixelDataFragment(PixelDataFragment& theFragment, int thePadOdd) = 0;

   // Ends the element that is in progress; does nothing when there is none.
   virtual void FinishEncapsulation() = 0;
   virtual int GetEncapsulationInProgress() const = 0;
};
