#include "talvenor/dataset/ColorPalette.h"

#include <algorithm>
#include <string>

#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/DICOMObjectLock.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/foundation/ExceptionBase.h"

namespace
{
// PS3.3 C.7.6.3 and C.7.9. Elements of group 0028.
struct ComponentTags
{
   char itsComponent;
   UINT16 itsDescriptor;
   UINT16 itsData;
   UINT16 itsSegmentedData;
};

constexpr UINT16 kGroup = 0x0028;
constexpr UINT16 kPixelRepresentation = 0x0103;
constexpr UINT16 kTableUID = 0x1199;
constexpr ComponentTags kComponents[] = {
    {'R', 0x1101, 0x1201, 0x1221},
    {'G', 0x1102, 0x1202, 0x1222},
    {'B', 0x1103, 0x1203, 0x1223},
};

// For a component that is none of the three: tags that no dataset holds.
ComponentTags TagsOf(char theComponent)
{
   const ComponentTags* aRow = std::ranges::find(kComponents, theComponent, &ComponentTags::itsComponent);
   return aRow != std::end(kComponents) ? *aRow : ComponentTags{theComponent, 0, 0, 0};
}

[[noreturn]] void Fail(const std::string& theCause)
{
   throw TalvenorException(("PaletteColor::Init: " + theCause).c_str());
}

[[noreturn]] void Fail(const std::string& theCause, char theComponent)
{
   Fail(theCause + " for " + theComponent + " component");
}

UINT16 ReadPixelRepresentation(const DICOMDataObject& theObject)
{
   UINT16 aValue = 0;
   if (!theObject.GetUINT16(kGroup, kPixelRepresentation, aValue))
   {
      Fail("unable to retrieve PixelRepresentation");
   }
   return aValue;
}

struct Descriptor
{
   UINT16 itsNumberOfEntries; // 0 for 65536
   UINT16 itsFirstValueMapped;
   UINT16 itsBitsPerEntry;
};

Descriptor ReadDescriptor(const DICOMDataObject& theObject, const ComponentTags& theTags)
{
   UINT16 aWords[3] = {}; // a value that is too short leaves a 0, which is no number of bits
   if (!theObject.GetWords(kGroup, theTags.itsDescriptor, aWords, sizeof aWords))
   {
      Fail("unable to retrieve descriptor attribute", theTags.itsComponent);
   }
   return {aWords[0], aWords[1], aWords[2]};
}

UINT32 ReadDataLength(const DICOMDataObject& theObject, const ComponentTags& theTags)
{
   const VR* aData = theObject.GetVR(kGroup, theTags.itsData);
   if (aData == nullptr)
   {
      Fail("unable to retrieve descriptor data", theTags.itsComponent);
   }
   return aData->GetLength();
}

// Tables of 8 bits an entry that are stored in words have the value in the low byte, as the standard says, or in the
// high byte with a constant (or the value again) below it, as some makers write them.
void ReduceToBytes(std::vector<UINT16>& theWords)
{
   const UINT16 aLowByte = theWords.front() & 0xFF;
   const bool isLowConstant =
       std::ranges::all_of(theWords, [aLowByte](UINT16 theWord) { return (theWord & 0xFF) == aLowByte; });
   const bool isHighDifferent =
       std::ranges::any_of(theWords, [](UINT16 theWord) { return (theWord >> 8) != (theWord & 0xFF); });
   const int aShift = isLowConstant && isHighDifferent ? 8 : 0;
   for (UINT16& aWord : theWords)
   {
      aWord = static_cast<UINT16>(aWord >> aShift & 0xFF);
   }
}

// Entries in bytes or in words, as the length tells.
std::vector<UINT16> ReadEntries(const DICOMDataObject& theObject, const ComponentTags& theTags, UINT32 theLength,
                                UINT32 theCount, UINT16 theBitsPerEntry)
{
   if (theLength != theCount && theLength != 2 * theCount)
   {
      Fail("descriptor data length does not match number of entries", theTags.itsComponent);
   }
   std::vector<UINT16> anEntries(theCount);
   if (theLength == theCount)
   {
      std::vector<unsigned char> aBytes(theCount);
      if (!theObject.GetBytes(kGroup, theTags.itsData, aBytes.data(), theLength))
      {
         Fail("unable to retrieve LUT data", theTags.itsComponent);
      }
      std::ranges::copy(aBytes, anEntries.begin());
      return anEntries;
   }
   if (!theObject.GetWords(kGroup, theTags.itsData, anEntries.data(), theLength))
   {
      Fail("unable to retrieve LUT data", theTags.itsComponent);
   }
   if (theBitsPerEntry == 8)
   {
      ReduceToBytes(anEntries);
   }
   return anEntries;
}
} // namespace

ColorPalette::ColorPalette(char theComponent, int theNumberOfEntries, INT16 theFirstValueMapped, int theBitsPerEntry)
    : itsNumberOfEntries(theNumberOfEntries), itsFirstValueMapped(theFirstValueMapped),
      itsLastValueMapped(theFirstValueMapped + theNumberOfEntries - 1), itsBitsPerEntry(theBitsPerEntry),
      itsComponent(theComponent)
{}

void ColorPalette::Init(const DICOMDataObject& theObject)
{
   const DICOMObjectLock aLock(theObject);
   itsIsValid = false;

   const bool isSigned = ReadPixelRepresentation(theObject) != 0;
   const ComponentTags aTags = TagsOf(itsComponent);
   if (theObject.HasAttribute(kGroup, aTags.itsSegmentedData))
   {
      Fail("segmented palette not yet supported");
   }
   const Descriptor aDescriptor = ReadDescriptor(theObject, aTags);
   const UINT32 aLength = ReadDataLength(theObject, aTags);

   itsNumberOfEntries = aDescriptor.itsNumberOfEntries != 0 ? aDescriptor.itsNumberOfEntries : 65536;
   itsFirstValueIsSigned = isSigned;
   itsFirstValueMapped =
       isSigned ? static_cast<INT16>(aDescriptor.itsFirstValueMapped) : int{aDescriptor.itsFirstValueMapped};
   if (aDescriptor.itsBitsPerEntry != 8 && aDescriptor.itsBitsPerEntry != 16)
   {
      Fail("bits per entry is not 8 or 16", itsComponent);
   }

   itsEntries =
       ReadEntries(theObject, aTags, aLength, static_cast<UINT32>(itsNumberOfEntries), aDescriptor.itsBitsPerEntry);
   itsLastValueMapped = itsFirstValueMapped + itsNumberOfEntries - 1;
   theObject.GetString(kGroup, kTableUID, itsUID);
   itsIsValid = true;
}

UINT16 ColorPalette::MapSignedPixel(INT16 thePixel) const
{
   return Map(thePixel);
}

UINT16 ColorPalette::MapUnsignedPixel(UINT16 thePixel) const
{
   return Map(thePixel);
}

// The size of the table decides what is the last entry: after a failed Init it may differ from the number of entries.
UINT16 ColorPalette::Map(int thePixel) const
{
   if (itsEntries.empty())
   {
      return 0;
   }
   if (thePixel <= itsFirstValueMapped)
   {
      return itsEntries.front();
   }
   const std::size_t anIndex = static_cast<std::size_t>(thePixel - itsFirstValueMapped);
   return thePixel < itsLastValueMapped && anIndex < itsEntries.size() ? itsEntries[anIndex] : itsEntries.back();
}
