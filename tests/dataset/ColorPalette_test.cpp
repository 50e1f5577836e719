#include "talvenor/dataset/ColorPalette.h"

#include <gtest/gtest.h>

#include <functional>

#include "support/MessageOf.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/foundation/ExceptionBase.h"

namespace
{
using Words = std::vector<UINT16>;

void PushBytes(DICOMDataObject& theSet, UINT16 theElement, const std::vector<unsigned char>& theBytes)
{
   VR* aVR = new VR(0x0028, theElement, theSet.GetEndian());
   aVR->SetData(theBytes.data(), static_cast<UINT32>(theBytes.size()), 0);
   theSet.Push(aVR);
}

void PushWords(DICOMDataObject& theSet, UINT16 theElement, const Words& theWords)
{
   std::vector<unsigned char> aBytes(theWords.size() * 2);
   for (std::size_t i = 0; i < theWords.size(); ++i)
   {
      TNEndian::Store<UINT16>(&aBytes[2 * i], theWords[i], theSet.GetEndian());
   }
   PushBytes(theSet, theElement, aBytes);
}

// The red table, with what every table needs.
DICOMDataObject SetWith(UINT16 thePixelRepresentation, const Words& theDescriptor, const Words& theData,
                        TNEndian::EndianType theEndian = TNEndian::LittleEndian)
{
   DICOMDataObject aSet(theEndian);
   PushWords(aSet, 0x0103, {thePixelRepresentation});
   PushWords(aSet, 0x1101, theDescriptor);
   PushWords(aSet, 0x1201, theData);
   return aSet;
}

ColorPalette PaletteOf(const DICOMDataObject& theSet)
{
   ColorPalette aPalette('R', 0, 0, 12);
   aPalette.Init(theSet);
   return aPalette;
}

Words EntriesOf(const ColorPalette& thePalette)
{
   Words anEntries;
   for (int i = 0; i < thePalette.GetNumberOfEntries(); ++i)
   {
      anEntries.push_back(thePalette.MapUnsignedPixel(static_cast<UINT16>(thePalette.GetFirstValueMapped() + i)));
   }
   return anEntries;
}

TEST(ColorPalette, MapsValuesOutsideTheTableToItsEnds)
{
   const ColorPalette aPalette = PaletteOf(SetWith(0, {4, 100, 16}, {10, 11, 12, 13}));
   struct Case
   {
      UINT16 itsPixel, itsExpected;
   };
   for (const Case& aCase : {Case{0, 10}, Case{99, 10}, Case{101, 11}, Case{103, 13}, Case{104, 13}, Case{65535, 13}})
   {
      EXPECT_EQ(aPalette.MapUnsignedPixel(aCase.itsPixel), aCase.itsExpected) << aCase.itsPixel;
   }
   EXPECT_EQ(aPalette.MapSignedPixel(-1), 10);
   EXPECT_EQ(ColorPalette('G', 4, 100, 16).MapUnsignedPixel(101), 0) << "no table";
}

TEST(ColorPalette, TheFirstValueHasTheSignOfThePixels)
{
   const ColorPalette aSigned = PaletteOf(SetWith(1, {2, 0xFFFF, 16}, {5, 6}));
   EXPECT_EQ(aSigned.GetFirstValueMapped(), -1);
   EXPECT_EQ(aSigned.MapSignedPixel(-1), 5);
   EXPECT_EQ(aSigned.MapSignedPixel(0), 6);
   const ColorPalette anUnsigned = PaletteOf(SetWith(0, {2, 0xFFFF, 16}, {5, 6}));
   EXPECT_EQ(anUnsigned.GetFirstValueMapped(), 0xFFFF);
   EXPECT_FALSE(PaletteOf(SetWith(1, {2, 7, 16}, {5, 6})) == PaletteOf(SetWith(0, {2, 7, 16}, {5, 6})));
}

TEST(ColorPalette, ReadsEntriesOfBytesAndWords)
{
   struct Case
   {
      const char* itsName;
      UINT16 itsBits;
      Words itsData, itsExpected;
   };
   const Case kCases[] = {
       {"value in the high byte", 8, {0x0000, 0x0100, 0x0200, 0xFF00}, {0, 1, 2, 255}},
       {"value in the low byte", 8, {0x0012, 0x0034}, {0x12, 0x34}},
       {"constant above zero in the low byte", 8, {0x01FF, 0x02FF}, {1, 2}},
       {"16 bits, low bytes 0", 16, {0x0100, 0x0200}, {0x0100, 0x0200}},
   };
   for (const Case& aCase : kCases)
   {
      for (const TNEndian::EndianType anEndian : {TNEndian::LittleEndian, TNEndian::BigEndian})
      {
         const Words aDescriptor = {static_cast<UINT16>(aCase.itsData.size()), 0, aCase.itsBits};
         EXPECT_EQ(EntriesOf(PaletteOf(SetWith(0, aDescriptor, aCase.itsData, anEndian))), aCase.itsExpected)
             << aCase.itsName << ", byte order " << anEndian;
      }
   }
   DICOMDataObject aSet = SetWith(0, {4, 0, 8}, {});
   PushBytes(aSet, 0x1201, {1, 2, 0xFE, 0xFF});
   EXPECT_EQ(EntriesOf(PaletteOf(aSet)), Words({1, 2, 0xFE, 0xFF})) << "one byte an entry";
}

TEST(ColorPalette, NoEntriesMeans65536)
{
   Words aData(65536);
   aData[65535] = 77;
   const ColorPalette aPalette = PaletteOf(SetWith(0, {0, 0, 16}, aData));
   EXPECT_EQ(aPalette.GetNumberOfEntries(), 65536);
   EXPECT_EQ(aPalette.MapUnsignedPixel(65535), 77);
}

TEST(ColorPalette, EachComponentHasItsOwnTable)
{
   DICOMDataObject aSet = SetWith(0, {2, 0, 16}, {1, 1});
   PushWords(aSet, 0x1102, {2, 0, 16});
   PushWords(aSet, 0x1202, {2, 2});
   PushWords(aSet, 0x1103, {2, 0, 16});
   PushWords(aSet, 0x1203, {3, 3});
   UINT16 anExpected = 1;
   for (const char aComponent : {'R', 'G', 'B'})
   {
      ColorPalette aPalette(aComponent, 0, 0, 8);
      aPalette.Init(aSet);
      EXPECT_EQ(aPalette.MapUnsignedPixel(0), anExpected++) << aComponent;
   }
}

TEST(ColorPalette, InitNamesTheFailingStep)
{
   using Damage = std::function<void(DICOMDataObject&)>;
   const auto aWithout = [](UINT16 theElement) -> Damage {
      return [=](DICOMDataObject& theSet) { delete theSet.RemoveVR(0x0028, theElement); };
   };
   const auto aWith = [](UINT16 theElement, Words theWords) -> Damage {
      return [=](DICOMDataObject& theSet) { PushWords(theSet, theElement, theWords); };
   };
   const std::pair<std::string, Damage> kCases[] = {
       {"unable to retrieve PixelRepresentation", aWithout(0x0103)},
       {"segmented palette not yet supported", aWith(0x1221, {0})},
       {"unable to retrieve descriptor attribute for R component", aWithout(0x1101)},
       {"unable to retrieve descriptor attribute for R component", aWith(0x1101, {2, 0, 16, 0})},
       {"unable to retrieve descriptor data for R component", aWithout(0x1201)},
       {"bits per entry is not 8 or 16 for R component", aWith(0x1101, {2, 0, 12})},
       {"bits per entry is not 8 or 16 for R component", aWith(0x1101, {2, 0})}, // the third word is missing
       {"descriptor data length does not match number of entries for R component", aWith(0x1101, {3, 0, 16})},
       {"unable to retrieve LUT data for R component", // a length without bytes
        [](DICOMDataObject& theSet) { theSet.Push(new VR(0x0028, 0x1201, 4, 0)); }},
   };
   for (const auto& [aText, aDamage] : kCases)
   {
      DICOMDataObject aSet = SetWith(0, {2, 7, 16}, {5, 6});
      ColorPalette aPalette = PaletteOf(aSet);
      aDamage(aSet);
      EXPECT_EQ(MessageOf<TalvenorException>([&] { aPalette.Init(aSet); }), "PaletteColor::Init: " + aText);
      EXPECT_FALSE(aPalette.IsValid()) << aText;
      EXPECT_EQ(aPalette.MapUnsignedPixel(9), 6) << "stays inside the table that is there";
   }
}

} // namespace
