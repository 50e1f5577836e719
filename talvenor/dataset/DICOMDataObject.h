// A data set, with the colour palettes that a host may have built from it.
#pragma once

#include "talvenor/dataset/ColorPalette.h"
#include "talvenor/dataset/DICOMObject.h"

class TransferSyntaxType;

class TALVENOR_API DICOMDataObject : public DICOMObject
{
public:
   explicit DICOMDataObject(TNEndian::EndianType theEndian = TNEndian::LittleEndian);

   // Deep, palettes included.
   DICOMDataObject(const DICOMDataObject& theOther);
   DICOMDataObject& operator=(const DICOMDataObject& theOther);
   ~DICOMDataObject() override;

   DICOMObjectType GetType() const override { return DataObject; }
   void Reset() override;   // the palettes too

   // Palettes: Get returns the stored one or null; Set adopts the new one and destroys the old; Remove hands it over.
   ColorPalette* GetRedColorPalette() const { return itsRedPalette.get(); }
   ColorPalette* GetGreenColorPalette() const { return itsGreenPalette.get(); }
   ColorPalette* GetBlueColorPalette() const { return itsBluePalette.get(); }
   void SetRedColorPalette(ColorPalette* thePalette) { itsRedPalette.reset(thePalette); }
   void SetGreenColorPalette(ColorPalette* thePalette) { itsGreenPalette.reset(thePalette); }
   void SetBlueColorPalette(ColorPalette* thePalette) { itsBluePalette.reset(thePalette); }
   ColorPalette* RemoveRedColorPalette() { return itsRedPalette.release(); }
   ColorPalette* RemoveGreenColorPalette() { return itsGreenPalette.release(); }
   ColorPalette* RemoveBlueColorPalette() { return itsBluePalette.release(); }

   // The ratio of lossy compression that the pixel data has been through, truncated to an integer, or -1 when it cannot
   // be told: from (0028,2112), else from the derivation description of a derived image, else, for a lossy
   // theTransferSyntax and pixel data that stands from theStart to theEnd (bytes; 0 for unknown), from the sizes.
   int GetLossyImageCompressionRatio(const TransferSyntaxType& theTransferSyntax, UINT32 theEnd = 0,
                                     UINT32 theStart = 0) const;

private:
   std::unique_ptr<ColorPalette> itsRedPalette;
   std::unique_ptr<ColorPalette> itsGreenPalette;
   std::unique_ptr<ColorPalette> itsBluePalette;
};
