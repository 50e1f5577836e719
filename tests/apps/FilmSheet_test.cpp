// The picture of a printed sheet: which level of the screen becomes of a sample.
#include <gtest/gtest.h>

#include "apps/tn/print/FilmSheet.h"
#include "support/MemoryAssociation.h"
#include "support/PrintBytes.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dataset/VR.h"

namespace
{
using namespace PrintBytes;

std::string Words(const std::vector<UINT16>& theNumbers)
{
   DatasetBytes aBytes;
   for (const UINT16 aNumber : theNumbers)
   {
      aBytes.Number(aNumber, 2);
   }
   return aBytes.Bytes();
}

std::string Shape(const std::string& theShape)
{
   return Text(0x20500020, "CS", theShape);
}
std::string Table(const std::vector<UINT16>& theDescriptor, const std::vector<UINT16>& theEntries)
{
   return Sequence(0x20500010, {DatasetBytes()
                                    .Element(0x00283002, "US", Words(theDescriptor))
                                    .Element(0x00283006, "US", Words(theEntries))
                                    .Bytes()});
}

// Three grey levels side by side: 0, the middle and the most.
std::string GreyImage(UINT16 theBits, const std::string& thePhotometric)
{
   const bool isWide = theBits > 8;
   const std::string aPixels = isWide ? Words({0, 2048, 4095}) + Words({}) : std::string("\0\x80\xFF\0", 4);
   return Number(0x00280002, 1) + Text(0x00280004, "CS", thePhotometric) + Number(0x00280010, 1) +
          Number(0x00280011, 3) + Number(0x00280100, isWide ? 16 : 8) + Number(0x00280101, theBits) +
          Number(0x00280102, static_cast<UINT16>(theBits - 1)) + Number(0x00280103, 0) +
          DatasetBytes().Element(0x7FE00010, "OW", aPixels).Bytes();
}

// Of LIN OD with densities from 0.20 to 3.00 (the defaults) and from 0.50 to 2.00 the middle levels were computed with
// the other formula of PS3.14 7.1, the luminance of a JND index, turned round: L = 10 + 2000 * 10^-D.
const struct
{
   const char* itsName;
   std::string itsLUT; // of the film box; empty for none
   std::string itsFilm;
   std::string itsBox;
   UINT16 itsBits;
   const char* itsPhotometric;
   std::vector<int> itsLevels;
} kRows[] = {
    {"no LUT", "", "", "", 8, "MONOCHROME2", {0, 128, 255}},
    {"MONOCHROME1", "", "", "", 8, "MONOCHROME1", {255, 127, 0}},
    {"reversed", "", "", Text(0x20200020, "CS", "REVERSE"), 8, "MONOCHROME2", {255, 127, 0}},
    {"MONOCHROME1, reversed", "", "", Text(0x20200020, "CS", "REVERSE"), 8, "MONOCHROME1", {0, 128, 255}},
    {"IDENTITY of 12 bits", Shape("IDENTITY"), "", "", 12, "MONOCHROME2", {0, 128, 255}},
    {"INVERSE", Shape("INVERSE"), "", "", 8, "MONOCHROME2", {255, 127, 0}},
    {"INVERSE, reversed", Shape("INVERSE"), "", Text(0x20200020, "CS", "REVERSE"), 8, "MONOCHROME2", {0, 128, 255}},
    {"LIN OD", Shape("LIN OD"), "", "", 8, "MONOCHROME2", {255, 73, 0}},
    {"LIN OD of MONOCHROME1", Shape("LIN OD"), "", "", 8, "MONOCHROME1", {0, 74, 255}},
    {"LIN OD between densities",
     Shape("LIN OD"),
     Number(0x20100120, 50) + Number(0x20100130, 200),
     "",
     8,
     "MONOCHROME2",
     {255, 108, 0}},
    {"LIN OD without a range",
     Shape("LIN OD"),
     Number(0x20100120, 300) + Number(0x20100130, 20),
     "",
     8,
     "MONOCHROME2",
     {0, 128, 255}},
    {"a LUT of three entries", Table({3, 0, 12}, {4095, 0, 819}), "", "", 8, "MONOCHROME2", {255, 0, 51}},
    {"a LUT behind the polarity",
     Table({3, 0, 12}, {4095, 0, 819}),
     "",
     Text(0x20200020, "CS", "REVERSE"),
     12,
     "MONOCHROME2",
     {51, 0, 255}},
    {"entries beyond their bits", Table({3, 0, 8}, {65535, 0, 51}), "", "", 12, "MONOCHROME2", {255, 0, 51}},
    {"the LUT of the image box counts",
     Shape("INVERSE"),
     "",
     Sequence(0x20500500, {Reference(kLUT, "1.5")}),
     8,
     "MONOCHROME2",
     {0, 128, 255}},
};

TEST(FilmSheet, ShowsWhatPolarityAndPresentationLUTMakeOfALevel)
{
   for (const auto& aRow : kRows)
   {
      SCOPED_TRACE(aRow.itsName);
      std::string aFilm = Text(0x20100010, "ST", "STANDARD\\1,1") + aRow.itsFilm;
      std::string anInput = Request(0x0140, kSession, "1.1") + Request(0x0140, kLUT, "1.5", Shape("IDENTITY"));
      if (!aRow.itsLUT.empty())
      {
         anInput += Request(0x0140, kLUT, "1.4", aRow.itsLUT);
         aFilm += Sequence(0x20500500, {Reference(kLUT, "1.4")});
      }
      anInput += Request(0x0140, kFilm, "1.6", aFilm) +
                 Request(0x0120, kGray, "1.2.3",
                         Number(0x20200010, 1) + aRow.itsBox +
                             Sequence(0x20200110, {GreyImage(aRow.itsBits, aRow.itsPhotometric)}));
      Host aHost;
      MemoryAssociation aService(kMeta, anInput);
      DICOMCommandObject aCommand;
      while (aService.ReadCommand(aCommand))
      {
         ASSERT_TRUE(aHost.Read(aService, aCommand)) << std::hex << aCommand.GetUINT16(0, 0x0100);
      }
      const FilmSheet aSheet(*aHost.GetFilmBoxes().at(0));
      std::vector<int> aLevels;
      for (const UINT32 aSixth : {1, 3, 5}) // the middle of each third
      {
         aLevels.push_back(
             aSheet.GetPixels()[3 * (aSheet.GetHeight() / 2 * aSheet.GetWidth() + aSheet.GetWidth() * aSixth / 6)]);
      }
      EXPECT_EQ(aLevels, aRow.itsLevels);
   }
}
} // namespace
