#include "talvenor/dataset/DICOMDataObject.h"

#include <utility>

#include "talvenor/dataset/DICOMObjectLock.h"

DICOMDataObject::DICOMDataObject(TNEndian::EndianType theEndian) : DICOMObject(theEndian) {}

DICOMDataObject::DICOMDataObject(const DICOMDataObject& theOther)
    : DICOMObject(theOther), itsPalettes(theOther.CopyPalettes())
{}

DICOMDataObject& DICOMDataObject::operator=(const DICOMDataObject& theOther)
{
   if (this != &theOther)
   {
      // One dataset is locked at a time: two threads may assign crosswise.
      Palettes aCopy = theOther.CopyPalettes();
      DICOMObject::operator=(theOther); // theOther may be an item of this dataset and is gone then
      const DICOMObjectLock aGuard(*this);
      itsPalettes = std::move(aCopy);
   }
   return *this;
}

DICOMDataObject::~DICOMDataObject() = default;

void DICOMDataObject::Reset()
{
   const DICOMObjectLock aGuard(*this);
   itsPalettes = {};
   DICOMObject::Reset();
}

ColorPalette* DICOMDataObject::Get(const Palette& thePalette) const
{
   const DICOMObjectLock aGuard(*this);
   return thePalette.get();
}

void DICOMDataObject::Set(Palette& thePalette, ColorPalette* theNewOne)
{
   const DICOMObjectLock aGuard(*this);
   if (theNewOne != thePalette.get())
   {
      thePalette.reset(theNewOne);
   }
}

ColorPalette* DICOMDataObject::Remove(Palette& thePalette)
{
   const DICOMObjectLock aGuard(*this);
   return thePalette.release();
}

DICOMDataObject::Palettes DICOMDataObject::CopyPalettes() const
{
   const DICOMObjectLock aGuard(*this);
   const auto aCopyOf = [](const Palette& thePalette) {
      return thePalette != nullptr ? std::make_unique<ColorPalette>(*thePalette) : nullptr;
   };
   return {aCopyOf(itsPalettes.itsRed), aCopyOf(itsPalettes.itsGreen), aCopyOf(itsPalettes.itsBlue)};
}
