#include "apps/tn/print/GreyPipeline.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>

#include "apps/tn/base/Tags.h"
#include "apps/tn/base/ValueText.h"
#include "apps/tn/print/FrameSource.h"
#include "talvenor/dataset/VR.h"

namespace
{
constexpr UINT32 kWindowCenter = 0x00281050;
constexpr UINT32 kWindowWidth = 0x00281051;
constexpr UINT32 kRescaleIntercept = 0x00281052;
constexpr UINT32 kRescaleSlope = 0x00281053;
constexpr UINT32 kVOILUTFunction = 0x00281056;
constexpr UINT32 kModalityLUTSequence = 0x00283000;
constexpr UINT32 kLUTDescriptor = 0x00283002;
constexpr UINT32 kLUTData = 0x00283006;
constexpr UINT32 kVOILUTSequence = 0x00283010;
constexpr UINT32 kPresentationLUTShape = 0x20500020;

// The first value of a decimal string, if it is one.
std::optional<double> NumberOf(const DICOMObject& theHeader, UINT32 theTag)
{
   const RWCString aText = TextOf(theHeader, theTag);
   const std::size_t aFirst = std::min(aText.find_first_not_of(" +"), aText.size());
   double aNumber = 0;
   const auto aResult = std::from_chars(aText.data() + aFirst, aText.data() + aText.size(), aNumber);
   return aResult.ec == std::errc() && std::isfinite(aNumber) ? std::optional(aNumber) : std::nullopt;
}

UINT16 WordAt(const VR& theVR, std::size_t theIndex)
{
   return TNEndian::Load<UINT16>(theVR.GetData() + 2 * theIndex, theVR.GetDataEndian());
}
} // namespace

GreyPipeline::GreyPipeline(const FrameSource& theFrame)
{
   const DICOMDataObject& aHeader = theFrame.GetHeader();
   if (!TakeTable(theFrame, kModalityLUTSequence, itsModality))
   {
      itsSlope = NumberOf(aHeader, kRescaleSlope).value_or(1);
      itsIntercept = NumberOf(aHeader, kRescaleIntercept).value_or(0);
   }
   TakeWindow(theFrame);
   itsIsInverse =
       theFrame.GetImage().itsPhotometric == "MONOCHROME1" || TextOf(aHeader, kPresentationLUTShape) == "INVERSE";
}

// PS3.3 C.11.1.1: the number of entries (0 stands for 65536), the value of the first one, and their bits.
bool GreyPipeline::TakeTable(const FrameSource& theFrame, UINT32 theSequence, Table& theTable)
{
   const std::vector<DICOMDataObject*> anItems = ItemsOf(FindVR(theFrame.GetHeader(), theSequence));
   const VR* const aDescriptor = anItems.empty() ? nullptr : FindVR(*anItems.front(), kLUTDescriptor);
   const VR* const aData = anItems.empty() ? nullptr : FindVR(*anItems.front(), kLUTData);
   if (aDescriptor == nullptr || aData == nullptr || aDescriptor->GetLength() < 6 || aData->GetLength() < 2)
   {
      return false;
   }
   const std::size_t aCount = WordAt(*aDescriptor, 0) == 0 ? 65536 : WordAt(*aDescriptor, 0);
   const UINT16 aFirst = WordAt(*aDescriptor, 1);
   const UINT16 aBits = std::clamp<UINT16>(WordAt(*aDescriptor, 2), 8, 16);
   theTable.itsFirst = theFrame.GetImage().itsIsSigned ? static_cast<INT16>(aFirst) : aFirst;
   theTable.itsMost = (1 << aBits) - 1;
   for (std::size_t i = 0; i < std::min<std::size_t>(aCount, aData->GetLength() / 2); ++i)
   {
      theTable.itsEntries.push_back(WordAt(*aData, i));
   }
   return true;
}

double GreyPipeline::Table::At(double theValue) const
{
   const double aPlace = std::clamp(theValue - itsFirst, 0.0, static_cast<double>(itsEntries.size() - 1));
   return itsEntries[static_cast<std::size_t>(aPlace)];
}

void GreyPipeline::TakeWindow(const FrameSource& theFrame)
{
   const DICOMDataObject& aHeader = theFrame.GetHeader();
   const std::optional<double> aCentre = NumberOf(aHeader, kWindowCenter);
   const std::optional<double> aWidth = NumberOf(aHeader, kWindowWidth);
   const RWCString aFunction = TextOf(aHeader, kVOILUTFunction);
   itsFunction = aFunction == "SIGMOID"        ? Function::Sigmoid
                 : aFunction == "LINEAR_EXACT" ? Function::LinearExact
                                               : Function::Linear;
   if (aCentre && aWidth && *aWidth >= (itsFunction == Function::Linear ? 1 : std::numeric_limits<double>::min()))
   {
      itsCentre = *aCentre;
      itsWidth = *aWidth;
   }
   else if (!TakeTable(theFrame, kVOILUTSequence, itsVOI))
   {
      Spread(theFrame);
   }
}

void GreyPipeline::Spread(const FrameSource& theFrame)
{
   double aLeast = std::numeric_limits<double>::max();
   double aMost = std::numeric_limits<double>::lowest();
   for (std::size_t aPixel = 0; aPixel < theFrame.GetImage().GetSampleCount(); ++aPixel)
   {
      const double aValue = ModalityOf(theFrame.At(aPixel, 0));
      aLeast = std::min(aLeast, aValue);
      aMost = std::max(aMost, aValue);
   }
   itsFunction = Function::LinearExact;
   itsCentre = (aLeast + aMost) / 2;
   itsWidth = std::max(aMost - aLeast, std::numeric_limits<double>::min());
}

double GreyPipeline::ModalityOf(INT32 theStored) const
{
   return itsModality.itsEntries.empty() ? theStored * itsSlope + itsIntercept : itsModality.At(theStored);
}

// PS3.3 C.11.2.1.2 and C.11.2.1.3
double GreyPipeline::WindowLevelOf(double theValue) const
{
   switch (itsFunction)
   {
   case Function::Sigmoid: return 1 / (1 + std::exp(-4 * (theValue - itsCentre) / itsWidth));
   case Function::LinearExact: return (theValue - itsCentre) / itsWidth + 0.5;
   case Function::Linear: break;
   }
   const double aCentre = itsCentre - 0.5;
   if (itsWidth <= 1)
   {
      return theValue <= aCentre ? 0 : 1;
   }
   return (theValue - aCentre) / (itsWidth - 1) + 0.5;
}

double GreyPipeline::LevelOf(INT32 theStored) const
{
   const double aValue = ModalityOf(theStored);
   const double aLevel = itsVOI.itsEntries.empty() ? WindowLevelOf(aValue) : itsVOI.At(aValue) / itsVOI.itsMost;
   const double aShown = std::clamp(aLevel, 0.0, 1.0);
   return itsIsInverse ? 1 - aShown : aShown;
}
