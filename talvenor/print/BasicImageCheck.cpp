#include "talvenor/print/BasicImageCheck.h"

#include <algorithm>
#include <iterator>

#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/print/PrintMessages.h"
#include "talvenor/print/PrintStatus.h"

namespace
{
// Of the image pixel module (PS3.3 C.7.6.3).
constexpr UINT16 kPixelGroup = 0x0028;
constexpr UINT16 kSamples = 0x0002;
constexpr UINT16 kPhotometric = 0x0004;
constexpr UINT16 kPlanar = 0x0006;
constexpr UINT16 kRows = 0x0010;
constexpr UINT16 kColumns = 0x0011;
constexpr UINT16 kAllocated = 0x0100;
constexpr UINT16 kStored = 0x0101;
constexpr UINT16 kHighBit = 0x0102;
constexpr UINT16 kRepresentation = 0x0103;
constexpr UINT16 kNumbers[] = {kSamples, kRows, kColumns, kAllocated, kStored, kHighBit, kRepresentation};

struct ImageKind
{
   const char* itsSOPClass;
   UINT16 itsSequence; // of group 2020
   UINT16 itsSamples;
   const char* itsPhotometrics[2];
};

constexpr ImageKind kKinds[] = {
    {PrintSOPClass::kGrayscaleImageBox, 0x0110, 1, {"MONOCHROME1", "MONOCHROME2"}},
    {PrintSOPClass::kColorImageBox, 0x0111, 3, {"RGB", "RGB"}},
    {PrintSOPClass::kStandardColorImageBox, 0x0111, 3, {"RGB", "RGB"}},
};

PrintAnswer Invalid(UINT16 theGroup, UINT16 theElement, const char* theComment)
{
   return {PrintStatus::kInvalidValue, theComment, {{theGroup, theElement}}};
}

PrintAnswer CheckNumbers(const DICOMDataObject& theImage, const ImageKind& theKind)
{
   for (const UINT16 anElement : kNumbers)
   {
      UINT16 anIgnored = 0;
      if (!theImage.HasAttribute(kPixelGroup, anElement))
      {
         return {
             PrintStatus::kMissingAttribute, "The image lacks a description of its pixels", {{kPixelGroup, anElement}}};
      }
      if (!theImage.GetUINT16(kPixelGroup, anElement, anIgnored))
      {
         return Invalid(kPixelGroup, anElement, "Not a number");
      }
   }
   RWCString aPhotometric;
   theImage.GetString(kPixelGroup, kPhotometric, aPhotometric);
   if (std::find(std::begin(theKind.itsPhotometrics), std::end(theKind.itsPhotometrics), aPhotometric) ==
       std::end(theKind.itsPhotometrics))
   {
      return Invalid(kPixelGroup, kPhotometric, "Not a photometric interpretation for this kind of box");
   }
   if (theImage.GetUINT16(kPixelGroup, kSamples) != theKind.itsSamples)
   {
      return Invalid(kPixelGroup, kSamples, "Not the samples per pixel of this kind of box");
   }
   if (theKind.itsSamples > 1 && theImage.GetUINT16(kPixelGroup, kPlanar) > 1)
   {
      return Invalid(kPixelGroup, kPlanar, "Neither by pixel nor by plane");
   }
   return {};
}

PrintAnswer CheckBits(const DICOMDataObject& theImage)
{
   const UINT16 anAllocated = theImage.GetUINT16(kPixelGroup, kAllocated);
   const UINT16 aStored = theImage.GetUINT16(kPixelGroup, kStored);
   if (anAllocated != 8 && anAllocated != 16)
   {
      return Invalid(kPixelGroup, kAllocated, "Neither 8 nor 16 bits allocated");
   }
   if (aStored == 0 || aStored > anAllocated)
   {
      return Invalid(kPixelGroup, kStored, "More bits stored than allocated, or none");
   }
   if (theImage.GetUINT16(kPixelGroup, kHighBit) != aStored - 1)
   {
      return Invalid(kPixelGroup, kHighBit, "The high bit is not the last of the bits stored");
   }
   if (theImage.GetUINT16(kPixelGroup, kRepresentation) != 0)
   {
      return Invalid(kPixelGroup, kRepresentation, "Signed pixels");
   }
   return {};
}

PrintAnswer CheckPixels(const DICOMDataObject& theImage, const ImageKind& theKind)
{
   const VR* const aPixels = theImage.GetVR(0x7FE0, 0x0010);
   if (aPixels == nullptr)
   {
      return {PrintStatus::kMissingAttribute, "The image has no pixels", {{0x7FE0, 0x0010}}};
   }
   const UINT64 aRows = theImage.GetUINT16(kPixelGroup, kRows);
   const UINT64 aColumns = theImage.GetUINT16(kPixelGroup, kColumns);
   if (aRows == 0 || aColumns == 0)
   {
      return Invalid(kPixelGroup, aRows == 0 ? kRows : kColumns, "An image without extent");
   }
   const UINT64 aSize = aRows * aColumns * theKind.itsSamples * (theImage.GetUINT16(kPixelGroup, kAllocated) / 8u);
   if (aPixels->GetLength() != aSize && aPixels->GetLength() != aSize + aSize % 2) // padded to an even length
   {
      return Invalid(0x7FE0, 0x0010, "The pixels do not fill the image, or more than that");
   }
   return {};
}

PrintAnswer CheckImage(const DICOMDataObject& theImage, const ImageKind& theKind)
{
   for (const PrintAnswer& anAnswer :
        {CheckNumbers(theImage, theKind), CheckBits(theImage), CheckPixels(theImage, theKind)})
   {
      if (!anAnswer.IsDone())
      {
         return anAnswer;
      }
   }
   return {};
}
} // namespace

PrintAnswer CheckBasicImageBox(const DICOMDataObject& theBox, const UID& theSOPClass, unsigned int theBoxCount)
{
   UINT16 aPosition = 0;
   if (theBox.HasAttribute(0x2020, 0x0010) &&
       (!theBox.GetUINT16(0x2020, 0x0010, aPosition) || aPosition == 0 || aPosition > theBoxCount))
   {
      return Invalid(0x2020, 0x0010, "No position on this film");
   }
   for (const ImageKind& aKind : kKinds)
   {
      VR* const aVR = theSOPClass == aKind.itsSOPClass ? theBox.GetVR(0x2020, aKind.itsSequence) : nullptr;
      if (aVR == nullptr)
      {
         continue;
      }
      const SequenceVR* const aSequence = aVR->GetAsSequenceVR();
      if (aSequence == nullptr)
      {
         return Invalid(0x2020, aKind.itsSequence, "Not a sequence");
      }
      if (aSequence->IsEmpty())
      {
         continue; // erases the image
      }
      const SequenceVR::Items& anItems = *aSequence->GetSequenceArray();
      if (anItems.size() != 1 || anItems.front() == nullptr)
      {
         return Invalid(0x2020, aKind.itsSequence, "More than one image for one box");
      }
      return CheckImage(*anItems.front(), aKind);
   }
   return {};
}
