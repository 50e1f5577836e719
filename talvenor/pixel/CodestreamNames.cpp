#include "talvenor/pixel/CodestreamNames.h"

#include <algorithm>
#include <iterator>

namespace CodestreamNames
{
namespace
{

// Second bytes of markers: ISO 10918-1 Table B.1; SOF55 and LSE, which took the place of JPG7 and JPG8: ISO 14495-1
// C.1.1.
constexpr Row kJPEGMarkers[] = {
    {0x01, 0x01, "TEM", 0, "For temporary private use in arithmetic coding"},
    {0x02, 0xBF, "", 0, "Reserved"},
    {0xC0, 0xC0, "SOF0", 0, "Start of frame, baseline DCT"},
    {0xC1, 0xC1, "SOF1", 0, "Start of frame, extended sequential DCT"},
    {0xC2, 0xC2, "SOF2", 0, "Start of frame, progressive DCT"},
    {0xC3, 0xC3, "SOF3", 0, "Start of frame, lossless (sequential)"},
    {0xC4, 0xC4, "DHT", 0, "Define Huffman table(s)"},
    {0xC5, 0xC5, "SOF5", 0, "Start of frame, differential sequential DCT"},
    {0xC6, 0xC6, "SOF6", 0, "Start of frame, differential progressive DCT"},
    {0xC7, 0xC7, "SOF7", 0, "Start of frame, differential lossless (sequential)"},
    {0xC8, 0xC8, "JPG", 0, "Reserved for JPEG extensions"},
    {0xC9, 0xC9, "SOF9", 0, "Start of frame, extended sequential DCT, arithmetic coding"},
    {0xCA, 0xCA, "SOF10", 0, "Start of frame, progressive DCT, arithmetic coding"},
    {0xCB, 0xCB, "SOF11", 0, "Start of frame, lossless (sequential), arithmetic coding"},
    {0xCC, 0xCC, "DAC", 0, "Define arithmetic coding conditioning(s)"},
    {0xCD, 0xCD, "SOF13", 0, "Start of frame, differential sequential DCT, arithmetic coding"},
    {0xCE, 0xCE, "SOF14", 0, "Start of frame, differential progressive DCT, arithmetic coding"},
    {0xCF, 0xCF, "SOF15", 0, "Start of frame, differential lossless (sequential), arithmetic coding"},
    {0xD0, 0xD7, "RST", 0, "Restart"},
    {0xD8, 0xD8, "SOI", 0, "Start of image"},
    {0xD9, 0xD9, "EOI", 0, "End of image"},
    {0xDA, 0xDA, "SOS", 0, "Start of scan"},
    {0xDB, 0xDB, "DQT", 0, "Define quantization table(s)"},
    {0xDC, 0xDC, "DNL", 0, "Define number of lines"},
    {0xDD, 0xDD, "DRI", 0, "Define restart interval"},
    {0xDE, 0xDE, "DHP", 0, "Define hierarchical progression"},
    {0xDF, 0xDF, "EXP", 0, "Expand reference component(s)"},
    {0xE0, 0xEF, "APP", 0, "Application segment"},
    {0xF0, 0xF6, "JPG", 0, "Reserved for JPEG extensions"},
    {0xF7, 0xF7, "SOF55", 0, "Start of frame, JPEG-LS"},
    {0xF8, 0xF8, "LSE", 0, "JPEG-LS preset parameters"},
    {0xF9, 0xFD, "JPG", 9, "Reserved for JPEG extensions"},
    {0xFE, 0xFE, "COM", 0, "Comment"},
};

// ISO 15444-1 Table A.1 and A.2.
constexpr Row kJPEG2000Markers[] = {
    {0xFF30, 0xFF3F, "", 0, "Reserved"},
    {0xFF4F, 0xFF4F, "SOC", 0, "Start of codestream"},
    {0xFF50, 0xFF50, "CAP", 0, "Extended capabilities"},
    {0xFF51, 0xFF51, "SIZ", 0, "Image and tile size"},
    {0xFF52, 0xFF52, "COD", 0, "Coding style default"},
    {0xFF53, 0xFF53, "COC", 0, "Coding style component"},
    {0xFF55, 0xFF55, "TLM", 0, "Tile-part lengths"},
    {0xFF56, 0xFF56, "PRF", 0, "Profile"},
    {0xFF57, 0xFF57, "PLM", 0, "Packet length, main header"},
    {0xFF58, 0xFF58, "PLT", 0, "Packet length, tile-part header"},
    {0xFF59, 0xFF59, "CPF", 0, "Corresponding profile"},
    {0xFF5C, 0xFF5C, "QCD", 0, "Quantization default"},
    {0xFF5D, 0xFF5D, "QCC", 0, "Quantization component"},
    {0xFF5E, 0xFF5E, "RGN", 0, "Region of interest"},
    {0xFF5F, 0xFF5F, "POC", 0, "Progression order change"},
    {0xFF60, 0xFF60, "PPM", 0, "Packed packet headers, main header"},
    {0xFF61, 0xFF61, "PPT", 0, "Packed packet headers, tile-part header"},
    {0xFF63, 0xFF63, "CRG", 0, "Component registration"},
    {0xFF64, 0xFF64, "COM", 0, "Comment"},
    {0xFF90, 0xFF90, "SOT", 0, "Start of tile-part"},
    {0xFF91, 0xFF91, "SOP", 0, "Start of packet"},
    {0xFF92, 0xFF92, "EPH", 0, "End of packet header"},
    {0xFF93, 0xFF93, "SOD", 0, "Start of data"},
    {0xFFD9, 0xFFD9, "EOC", 0, "End of codestream"},
};

constexpr UINT32 FourCharacters(const char (&theType)[5])
{
   UINT32 aType = 0;
   for (int i = 0; i < 4; ++i)
   {
      aType = aType << 8 | static_cast<unsigned char>(theType[i]);
   }
   return aType;
}

// ISO 15444-1 Table I.2; rreq: ISO 15444-2.
constexpr BoxRow kBoxes[] = {
    {FourCharacters("jP  "), false, "JPEG 2000 signature"},
    {FourCharacters("ftyp"), false, "File type"},
    {FourCharacters("rreq"), false, "Reader requirements"},
    {FourCharacters("jp2h"), true, "JP2 header"},
    {FourCharacters("ihdr"), false, "Image header"},
    {FourCharacters("bpcc"), false, "Bits per component"},
    {FourCharacters("colr"), false, "Colour space"},
    {FourCharacters("pclr"), false, "Palette"},
    {FourCharacters("cmap"), false, "Component mapping"},
    {FourCharacters("cdef"), false, "Channel definition"},
    {FourCharacters("res "), true, "Resolution"},
    {FourCharacters("resc"), false, "Capture resolution"},
    {FourCharacters("resd"), false, "Default display resolution"},
    {FourCharacters("jp2c"), false, "Contiguous codestream"},
    {FourCharacters("jp2i"), false, "Intellectual property"},
    {FourCharacters("xml "), false, "XML"},
    {FourCharacters("uuid"), false, "UUID"},
    {FourCharacters("uinf"), true, "UUID info"},
    {FourCharacters("ulst"), false, "UUID list"},
    {FourCharacters("url "), false, "URL"},
};

template <std::size_t N>
const Row* Find(const Row (&theTable)[N], UINT32 theCode)
{
   const Row* const aRow = std::find_if(std::begin(theTable), std::end(theTable),
                                        [theCode](const Row& theRow) { return theCode <= theRow.itsLast; });
   return aRow != std::end(theTable) && theCode >= aRow->itsFirst ? aRow : nullptr;
}

} // namespace

const Row* FindJPEGMarker(UINT32 theMarker)
{
   return Find(kJPEGMarkers, theMarker);
}

const Row* FindJPEG2000Marker(UINT32 theMarker)
{
   return Find(kJPEG2000Markers, theMarker);
}

const BoxRow* FindBox(UINT32 theType)
{
   const BoxRow* const aRow = std::find_if(std::begin(kBoxes), std::end(kBoxes),
                                           [theType](const BoxRow& theRow) { return theRow.itsType == theType; });
   return aRow != std::end(kBoxes) ? aRow : nullptr;
}

RWCString NameOf(const Row* theRow, UINT32 theCode)
{
   if (theRow == nullptr || *theRow->itsName == '\0')
   {
      return Hexadecimal(theCode);
   }
   if (theRow->itsFirst == theRow->itsLast)
   {
      return theRow->itsName;
   }
   return theRow->itsName + std::to_string(theRow->itsFirstNumber + (theCode - theRow->itsFirst));
}

RWCString DescriptionOf(const Row* theRow)
{
   return theRow != nullptr ? theRow->itsDescription : "";
}

RWCString BoxName(UINT32 theType)
{
   RWCString aName;
   for (int aShift = 24; aShift >= 0; aShift -= 8)
   {
      aName += static_cast<char>(theType >> aShift);
   }
   const bool isText =
       std::all_of(aName.begin(), aName.end(), [](char theChar) { return theChar >= ' ' && theChar <= '~'; });
   aName.erase(aName.find_last_not_of(' ') + 1);
   return isText && !aName.empty() ? aName : Hexadecimal(theType);
}

RWCString Hexadecimal(UINT32 theNumber)
{
   constexpr char kDigits[] = "0123456789ABCDEF";
   RWCString aText;
   do
   {
      aText = RWCString{kDigits[theNumber >> 4 & 15], kDigits[theNumber & 15]} + aText;
      theNumber >>= 8;
   } while (theNumber != 0);
   return "0x" + aText;
}

} // namespace CodestreamNames
