#include "talvenor/dataset/ColorPalette.h"

#include <gtest/gtest.h>

#include <functional>

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
   for (const Case& aCase : {Case{0, 10}, Case{50, 10}, Case{100, 10}, Case{101, 11}, Case{102, 12}, Case{103, 13},
                             Case{500, 13}, Case{65535, 13}})
   {
      EXPECT_EQ(aPalette.MapUnsignedPixel(aCase.itsPixel), aCase.itsExpected) << aCase.itsPixel;
   }
   EXPECT_EQ(aPalette.MapSignedPixel(-1), 10);
   EXPECT_EQ(aPalette.GetLastValueMapped(), 103);
   EXPECT_EQ(aPalette.GetBitsPerEntry(), 12) << "as constructed";
   EXPECT_TRUE(aPalette.IsValid());
}

TEST(ColorPalette, TheFirstValueHasTheSignOfThePixels)
{
   const ColorPalette aSigned = PaletteOf(SetWith(1, {2, 0xFFFF, 16}, {5, 6}));
   EXPECT_EQ(aSigned.GetFirstValueMapped(), -1);
   EXPECT_EQ(aSigned.MapSignedPixel(-1), 5);
   EXPECT_EQ(aSigned.MapSignedPixel(0), 6);
   const ColorPalette anUnsigned = PaletteOf(SetWith(0, {2, 0xFFFF, 16}, {5, 6}));
   EXPECT_EQ(anUnsigned.GetFirstValueMapped(), 0xFFFF);
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
       {"value in both bytes", 8, {0x1212, 0x1212}, {0x12, 0x12}},
       {"constant above zero in the low byte", 8, {0x01FF, 0x02FF}, {1, 2}},
       {"16 bits", 16, {0x0012, 0x0034}, {0x0012, 0x0034}},
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
   EXPECT_EQ(aPalette.MapUnsignedPixel(65534), 0);
   EXPECT_EQ(aPalette.MapUnsignedPixel(65535), 77);
}

TEST(ColorPalette, EachComponentHasItsOwnTable)
{
   DICOMDataObject aSet = SetWith(0, {2, 0, 16}, {1, 1});
   PushWords(aSet, 0x1102, {2, 0, 16});
   PushWords(aSet, 0x1202, {2, 2});
   PushWords(aSet, 0x1103, {2, 0, 16});
   PushWords(aSet, 0x1203, {3, 3});
   PushBytes(aSet, 0x1199, {'1', '.', '2', 0});
   UINT16 anExpected = 1;
   for (const char aComponent : {'R', 'G', 'B'})
   {
      ColorPalette aPalette(aComponent, 0, 0, 8);
      aPalette.Init(aSet);
      EXPECT_EQ(aPalette.MapUnsignedPixel(0), anExpected++) << aComponent;
      EXPECT_EQ(aPalette.GetPaletteColorLookupTableUID(), "1.2");
   }
}

TEST(ColorPalette, InitNamesTheFailingStep)
{
   struct Case
   {
      const char* itsExpected;
      std::function<void(DICOMDataObject&)> itsDamage;
   };
   const auto aWithout = [](UINT16 theElement) {
      return [theElement](DICOMDataObject& theSet) { delete theSet.RemoveVR(0x0028, theElement); };
   };
   const Case kCases[] = {
       {"PaletteColor::Init: unable to retrieve PixelRepresentation", aWithout(0x0103)},
       {"PaletteColor::Init: segmented palette not yet supported",
        [](DICOMDataObject& theSet) { PushWords(theSet, 0x1221, {0}); }},
       {"PaletteColor::Init: unable to retrieve descriptor attribute for R component", aWithout(0x1101)},
       {"PaletteColor::Init: unable to retrieve descriptor attribute for R component",
        [](DICOMDataObject& theSet) {
           PushWords(theSet, 0x1101, {2, 0, 16, 0});
        }},
       {"PaletteColor::Init: unable to retrieve descriptor data for R component", aWithout(0x1201)},
       {"PaletteColor::Init: bits per entry is not 8 or 16 for R component",
        [](DICOMDataObject& theSet) {
           PushWords(theSet, 0x1101, {2, 0, 12});
        }},
       {"PaletteColor::Init: bits per entry is not 8 or 16 for R component", // the third word is missing
        [](DICOMDataObject& theSet) {
           PushWords(theSet, 0x1101, {2, 0});
        }},
       {"PaletteColor::Init: descriptor data length does not match number of entries for R component",
        [](DICOMDataObject& theSet) {
           PushWords(theSet, 0x1101, {3, 0, 16});
        }},
       {"PaletteColor::Init: unable to retrieve LUT data for R component", // a length without bytes
        [](DICOMDataObject& theSet) { theSet.Push(new VR(0x0028, 0x1201, 4, 0)); }},
   };
   for (const Case& aCase : kCases)
   {
      DICOMDataObject aSet = SetWith(0, {2, 7, 16}, {5, 6});
      ColorPalette aPalette = PaletteOf(aSet);
      aCase.itsDamage(aSet);
      try
      {
         aPalette.Init(aSet);
         ADD_FAILURE() << "no exception: " << aCase.itsExpected;
      }
      catch (const TalvenorException& anException)
      {
         EXPECT_STREQ(anException.why(), aCase.itsExpected);
      }
      EXPECT_FALSE(aPalette.IsValid()) << aCase.itsExpected;
      aPalette.MapUnsignedPixel(9); // stays inside the table that is there
   }
}

TEST(ColorPalette, AFailedInitKeepsWhatItHadStored)
{
   ColorPalette aPalette = PaletteOf(SetWith(0, {2, 7, 16}, {5, 6}));
   EXPECT_THROW(aPalette.Init(SetWith(1, {9, 0xFFFF, 16}, {1, 2, 3})), TalvenorException);
   EXPECT_EQ(aPalette.GetNumberOfEntries(), 9);
   EXPECT_EQ(aPalette.GetFirstValueMapped(), -1);
   EXPECT_EQ(aPalette.MapSignedPixel(5), 6) << "the old table's last entry";
}

TEST(ColorPalette, AnEmptyTableMapsToZero)
{
   const ColorPalette aPalette('G', 4, 100, 16);
   EXPECT_EQ(aPalette.GetLastValueMapped(), 103);
   EXPECT_FALSE(aPalette.IsValid());
   EXPECT_EQ(aPalette.MapUnsignedPixel(101), 0);
}

TEST(ColorPalette, CopiesAreEqualAndIndependent)
{
   ColorPalette aPalette = PaletteOf(SetWith(0, {2, 0, 16}, {5, 6}));
   const ColorPalette aCopy(aPalette);
   EXPECT_EQ(aCopy, aPalette);
   aPalette.Init(SetWith(0, {2, 0, 16}, {5, 7}));
   EXPECT_NE(aCopy, aPalette) << "one entry differs";
   EXPECT_EQ(aCopy.MapUnsignedPixel(1), 6);
   EXPECT_NE(ColorPalette('R', 4, 0, 8), ColorPalette('G', 4, 0, 8));
}
} // namespace
