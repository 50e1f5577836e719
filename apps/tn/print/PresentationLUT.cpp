#include "apps/tn/print/PresentationLUT.h"

#include <algorithm>
#include <cmath>

#include "apps/tn/base/Tags.h"
#include "apps/tn/base/ValueText.h"
#include "apps/tn/print/PrintTags.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/print/AbstractPrintManagementMeta.h"

namespace
{
constexpr UINT32 kReferencedInstance = 0x00081155;
constexpr UINT32 kLUTDescriptor = 0x00283002;
constexpr UINT32 kLUTData = 0x00283006;

UINT16 WordAt(const VR& theVR, std::size_t theIndex)
{
   return TNEndian::Load<UINT16>(theVR.GetData() + 2 * theIndex, theVR.GetDataEndian());
}

// How many just noticeable differences the luminance is above that of the darkest that the eye sees (PS3.14 7.1).
double JNDIndexOf(double theLuminance)
{
   constexpr double kCoefficients[] = {71.498068,  94.593053,   41.912053,  9.8247004,   0.28175407,
                                       -1.1878455, -0.18014349, 0.14710899, -0.017046845};
   const double aLogarithm = std::log10(std::clamp(theLuminance, 0.05, 4000.0)); // where the function is defined
   double anIndex = 0;
   for (std::size_t i = std::size(kCoefficients); i-- > 0;)
   {
      anIndex = anIndex * aLogarithm + kCoefficients[i];
   }
   return anIndex;
}
} // namespace

const PrintObject* PresentationLUT::Find(const PrintObject& theObject)
{
   const std::vector<DICOMDataObject*> anItems = ItemsOf(FindVR(theObject, PrintTags::kReferencedPresentationLUTs));
   const PrintObject* const aLUT =
       anItems.empty() ? nullptr
                       : theObject.GetMeta().FindStandaloneBox(UID(TextOf(*anItems.front(), kReferencedInstance)));
   return aLUT != nullptr && aLUT->GetSOPClassUID() == PrintSOPClass::kPresentationLUT ? aLUT : nullptr;
}

PresentationLUT::PresentationLUT(const AbstractFilmBox& theFilmBox, const AbstractImageBox& theBox)
{
   const PrintObject* aLUT = Find(theBox);
   aLUT = aLUT != nullptr ? aLUT : Find(theFilmBox);
   if (aLUT == nullptr)
   {
      return;
   }
   const std::vector<DICOMDataObject*> aTables = ItemsOf(FindVR(*aLUT, PrintTags::kPresentationLUTSequence));
   const RWCString aShape = TextOf(*aLUT, PrintTags::kPresentationLUTShape);
   if (!aTables.empty())
   {
      TakeTable(*aTables.front());
   }
   else if (aShape == "LIN OD")
   {
      TakeDensities(theFilmBox);
   }
   else
   {
      itsShape = aShape == "INVERSE" ? Shape::Inverse : Shape::Identity;
   }
}

// The descriptor has been checked when the client sent it: as many entries as it says, of 8 to 16 bits.
void PresentationLUT::TakeTable(const DICOMDataObject& theTable)
{
   const VR* const aDescriptor = FindVR(theTable, kLUTDescriptor);
   const VR* const aData = FindVR(theTable, kLUTData);
   const double aMost = (1 << WordAt(*aDescriptor, 2)) - 1;
   for (std::size_t i = 0; i < aData->GetLength() / 2; ++i)
   {
      itsTable.push_back(std::min(WordAt(*aData, i) / aMost, 1.0));
   }
   itsShape = Shape::Table;
}

// In hundredths; the defaults are those of a transparent film (PS3.3 C.13.3).
void PresentationLUT::TakeDensities(const AbstractFilmBox& theFilmBox)
{
   const auto aNumber = [&](UINT32 theTag, UINT16 theDefault) {
      UINT16 aValue = theDefault;
      theFilmBox.GetUINT16(GroupOf(theTag), ElementOf(theTag), aValue);
      return aValue;
   };
   constexpr UINT16 kMostDensity = 500; // black beyond that is black
   itsLeastDensity = std::min(aNumber(PrintTags::kMinDensity, 20), kMostDensity) / 100.0;
   itsMostDensity = std::min(aNumber(PrintTags::kMaxDensity, 300), kMostDensity) / 100.0;
   itsIllumination = std::max<UINT16>(aNumber(PrintTags::kIllumination, 2000), 1);
   itsAmbient = aNumber(PrintTags::kReflectedAmbientLight, 10);
   itsShape = itsMostDensity > itsLeastDensity ? Shape::LinearDensity : Shape::Identity;
}

double PresentationLUT::DensityLevelOf(double theLevel) const
{
   const auto anIndex = [this](double theDensity) {
      return JNDIndexOf(itsAmbient + itsIllumination * std::pow(10, -theDensity));
   };
   const double aBlack = anIndex(itsMostDensity);
   const double aWhite = anIndex(itsLeastDensity);
   const double aDensity = itsLeastDensity + theLevel * (itsMostDensity - itsLeastDensity);
   return aWhite > aBlack ? (anIndex(aDensity) - aBlack) / (aWhite - aBlack) : 1 - theLevel;
}

double PresentationLUT::At(double theLevel) const
{
   switch (itsShape)
   {
   case Shape::LinearDensity: return DensityLevelOf(theLevel);
   case Shape::Inverse: return 1 - theLevel;
   case Shape::Table:
      return itsTable[static_cast<std::size_t>(std::lround(theLevel * static_cast<double>(itsTable.size() - 1)))];
   case Shape::Identity: break;
   }
   return theLevel;
}
