// One component (red, green or blue) of a palette colour look-up table (PS3.3 C.7.6.3.1.5, C.7.6.3.1.6), built from a
// dataset's descriptor and data, mapping stored pixel values to intensities. A plain value; not locked.
#pragma once

#include <vector>

#include "talvenor/foundation/BasicTypes.h"

class DICOMDataObject;

class TALVENOR_API ColorPalette
{
public:
   // theComponent is 'R', 'G' or 'B'. The table is empty and not valid until Init.
   ColorPalette(char theComponent, int theNumberOfEntries, INT16 theFirstValueMapped, int theBitsPerEntry);

   // Fills the palette from the dataset's look-up table of this component. Throws TalvenorException, and the palette is
   // not valid then, when an attribute is missing or does not fit; segmented tables are not supported.
   void Init(const DICOMDataObject& theObject);

   // The table entry for a stored value: values at or below the first mapped one give the first entry, values at or
   // above the last the last. 0 while the table is empty.
   UINT16 MapSignedPixel(INT16 thePixel) const;
   UINT16 MapUnsignedPixel(UINT16 thePixel) const;

   int GetFirstValueMapped() const { return itsFirstValueMapped; }
   int GetLastValueMapped() const { return itsLastValueMapped; }
   int GetNumberOfEntries() const { return itsNumberOfEntries; }
   int GetBitsPerEntry() const { return itsBitsPerEntry; } // as constructed; Init does not change it
   char GetComponent() const { return itsComponent; }
   bool IsValid() const { return itsIsValid; }
   const RWCString& GetPaletteColorLookupTableUID() const { return itsUID; }
   void SetPaletteColorLookupTableUID(const RWCString& theUID) { itsUID = theUID; }

   bool operator==(const ColorPalette& theOther) const = default;

private:
   UINT16 Map(int thePixel) const;

   int itsNumberOfEntries;
   int itsFirstValueMapped;
   int itsLastValueMapped;
   int itsBitsPerEntry;
   char itsComponent;
   bool itsIsValid = false;
   bool itsFirstValueIsSigned = false;
   RWCString itsUID;
   std::vector<UINT16> itsEntries;
};
