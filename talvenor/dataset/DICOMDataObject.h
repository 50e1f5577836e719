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
   void Reset() override; // the palettes too

   // Palettes: Get lends the stored one or null; Set adopts the new one and destroys the old; Remove hands it over.
   ColorPalette* GetRedColorPalette() const { return Get(itsPalettes.itsRed); }
   ColorPalette* GetGreenColorPalette() const { return Get(itsPalettes.itsGreen); }
   ColorPalette* GetBlueColorPalette() const { return Get(itsPalettes.itsBlue); }
   void SetRedColorPalette(ColorPalette* thePalette) { Set(itsPalettes.itsRed, thePalette); }
   void SetGreenColorPalette(ColorPalette* thePalette) { Set(itsPalettes.itsGreen, thePalette); }
   void SetBlueColorPalette(ColorPalette* thePalette) { Set(itsPalettes.itsBlue, thePalette); }
   ColorPalette* RemoveRedColorPalette() { return Remove(itsPalettes.itsRed); }
   ColorPalette* RemoveGreenColorPalette() { return Remove(itsPalettes.itsGreen); }
   ColorPalette* RemoveBlueColorPalette() { return Remove(itsPalettes.itsBlue); }

   // The ratio of lossy compression that the pixel data has been through, truncated to an integer, or -1 when it cannot
   // be told: from (0028,2112), else from the derivation description of a derived image, else, for a lossy
   // theTransferSyntax and pixel data that stands from theStart to theEnd (bytes; 0 for unknown), from the sizes.
   int GetLossyImageCompressionRatio(const TransferSyntaxType& theTransferSyntax, UINT32 theEnd = 0,
                                     UINT32 theStart = 0) const;

   // Keep the attributes of lossy compression (PS3.3 C.7.6.1.1.5) true; the pixel data stays as it is. A ratio below 1
   // is unknown.
   //
   // Before the dataset is written or sent in theTargetSyntax: when that is lossy, or the dataset lossy already, marks
   // the dataset as lossy and fills method, ratio and, for a derived image, derivation description where they are
   // empty. With theAdjustPhotometric, pixels for baseline JPEG become YBR_FULL_422, unless the private version marker
   // of the dataset is above 1.
   void UpdateOutgoingLossyCompressionRelatedAttributes(const TransferSyntaxType& theTargetSyntax, int theRatio,
                                                        bool theAdjustPhotometric);

   // After the dataset has been received in theTransferSyntax: with theDerive and a lossy syntax, describes it as an
   // image derived from the instance whose UIDs it bears (image type, derivation description, source image sequence,
   // method; the marker and the ratio stay). Nothing happens when it names a lossy method already. Otherwise as the
   // outgoing one without adjustment. New UIDs are the caller's.
   void UpdateIncomingLossyCompressionRelatedAttributes(const TransferSyntaxType& theTransferSyntax, bool theDerive,
                                                        int theRatio);

private:
   using Palette = std::unique_ptr<ColorPalette>;
   struct Palettes
   {
      Palette itsRed, itsGreen, itsBlue;
   };

   ColorPalette* Get(const Palette& thePalette) const;
   void Set(Palette& thePalette, ColorPalette* theNewOne);
   ColorPalette* Remove(Palette& thePalette);
   Palettes CopyPalettes() const;

   Palettes itsPalettes;
};
static_assert(sizeof(DICOMDataObject) <= 232, "one for every item of every sequence");
