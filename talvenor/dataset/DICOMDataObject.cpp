#include "talvenor/dataset/DICOMDataObject.h"

#include <utility>

#include "talvenor/foundation/CriticalSectionWhileInScope.h"

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
      CriticalSectionWhileInScope aGuard(GetLock());
      itsPalettes = std::move(aCopy);
   }
   return *this;
}

DICOMDataObject::~DICOMDataObject() = default;

void DICOMDataObject::Reset()
{
   CriticalSectionWhileInScope aGuard(GetLock());
   itsPalettes = {};
   DICOMObject::Reset();
}

ColorPalette* DICOMDataObject::Get(const Palette& thePalette) const
{
   CriticalSectionWhileInScope aGuard(GetLock());
   return thePalette.get();
}

void DICOMDataObject::Set(Palette& thePalette, ColorPalette* theNewOne)
{
   CriticalSectionWhileInScope aGuard(GetLock());
   if (theNewOne != thePalette.get())
   {
      thePalette.reset(theNewOne);
   }
}

ColorPalette* DICOMDataObject::Remove(Palette& thePalette)
{
   CriticalSectionWhileInScope aGuard(GetLock());
   return thePalette.release();
}

DICOMDataObject::Palettes DICOMDataObject::CopyPalettes() const
{
   CriticalSectionWhileInScope aGuard(GetLock());
   const auto aCopyOf = [](const Palette& thePalette) {
      return thePalette != nullptr ? std::make_unique<ColorPalette>(*thePalette) : nullptr;
   };
   return {aCopyOf(itsPalettes.itsRed), aCopyOf(itsPalettes.itsGreen), aCopyOf(itsPalettes.itsBlue)};
}
