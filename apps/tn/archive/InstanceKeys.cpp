#include "apps/tn/archive/InstanceKeys.h"

#include <algorithm>
#include <memory>

#include "apps/tn/base/ValueText.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/pixel/PixelDataFragmentInputStreamVR.h"
#include "talvenor/pixel/PixelInputStreamVR.h"
#include "talvenor/transfer/DICOMDataObjectInputStreamVR.h"
#include "talvenor/transfer/InputTransferSyntax.h"
#include "talvenor/transfer/VRInputStreamVR.h"

namespace
{
constexpr UINT32 kLongestKey = 16384; // bytes: what is longer is no key (text has 10240 characters, PS3.5 6.2)

constexpr bool kIndexed = true;

constexpr KeyColumn kColumns[] = {
    // those of namespace Key
    {0x00080005, KeyLevel::kInstance, "SpecificCharacterSet"},
    {0x00080016, KeyLevel::kInstance, "SOPClassUID"},
    {0x00080018, KeyLevel::kInstance, "SOPInstanceUID"},
    {0x00100020, KeyLevel::kPatient, "PatientID", 0, kIndexed},
    {0x00100021, KeyLevel::kPatient, "IssuerOfPatientID"},
    {0x0020000D, KeyLevel::kStudy, "StudyInstanceUID"},
    {0x0020000E, KeyLevel::kSeries, "SeriesInstanceUID"},
    {0x00100010, KeyLevel::kPatient, "PatientName", 0, kIndexed},
    {0x00100030, KeyLevel::kPatient, "PatientBirthDate", 0, kIndexed},
    {0x00100032, KeyLevel::kPatient, "PatientBirthTime"},
    {0x00100040, KeyLevel::kPatient, "PatientSex"},
    {0x00101000, KeyLevel::kPatient, "OtherPatientIDs"},
    {0x00101001, KeyLevel::kPatient, "OtherPatientNames"},
    {0x00102160, KeyLevel::kPatient, "EthnicGroup"},
    {0x00104000, KeyLevel::kPatient, "PatientComments"},
    {0x00080020, KeyLevel::kStudy, "StudyDate", 0, kIndexed},
    {0x00080030, KeyLevel::kStudy, "StudyTime"},
    {0x00080050, KeyLevel::kStudy, "AccessionNumber", 0, kIndexed},
    {0x00080080, KeyLevel::kSeries, "InstitutionName"},
    {0x00080090, KeyLevel::kStudy, "ReferringPhysicianName"},
    {0x00081030, KeyLevel::kStudy, "StudyDescription"},
    {0x00081060, KeyLevel::kStudy, "NameOfPhysiciansReadingStudy"},
    {0x00081080, KeyLevel::kStudy, "AdmittingDiagnosesDescription"},
    {0x00101010, KeyLevel::kStudy, "PatientAge"},
    {0x00101020, KeyLevel::kStudy, "PatientSize"},
    {0x00101030, KeyLevel::kStudy, "PatientWeight"},
    {0x00102180, KeyLevel::kStudy, "Occupation"},
    {0x001021B0, KeyLevel::kStudy, "AdditionalPatientHistory"},
    {0x00200010, KeyLevel::kStudy, "StudyID", 0, kIndexed},
    {0x00080060, KeyLevel::kSeries, "Modality"},
    {0x00080021, KeyLevel::kSeries, "SeriesDate"},
    {0x00080031, KeyLevel::kSeries, "SeriesTime"},
    {0x00080070, KeyLevel::kSeries, "Manufacturer"},
    {0x00081010, KeyLevel::kSeries, "StationName"},
    {0x0008103E, KeyLevel::kSeries, "SeriesDescription"},
    {0x00081040, KeyLevel::kSeries, "InstitutionalDepartmentName"},
    {0x00081050, KeyLevel::kSeries, "PerformingPhysicianName"},
    {0x00081070, KeyLevel::kSeries, "OperatorsName"},
    {0x00081090, KeyLevel::kSeries, "ManufacturerModelName"},
    {0x00180015, KeyLevel::kSeries, "BodyPartExamined"},
    {0x00181030, KeyLevel::kSeries, "ProtocolName"},
    {0x00185100, KeyLevel::kSeries, "PatientPosition"},
    {0x00200011, KeyLevel::kSeries, "SeriesNumber"},
    {0x00200052, KeyLevel::kSeries, "FrameOfReferenceUID"},
    {0x00200060, KeyLevel::kSeries, "Laterality"},
    {0x00400244, KeyLevel::kSeries, "PerformedProcedureStepStartDate"},
    {0x00400245, KeyLevel::kSeries, "PerformedProcedureStepStartTime"},
    {0x00400253, KeyLevel::kSeries, "PerformedProcedureStepID"},
    {0x00400254, KeyLevel::kSeries, "PerformedProcedureStepDescription"},
    {0x00400009, KeyLevel::kSeries, "ScheduledProcedureStepID", 0x00400275},
    {0x00401001, KeyLevel::kSeries, "RequestedProcedureID", 0x00400275},
    {0x00080008, KeyLevel::kInstance, "ImageType"},
    {0x00080012, KeyLevel::kInstance, "InstanceCreationDate"},
    {0x00080013, KeyLevel::kInstance, "InstanceCreationTime"},
    {0x00080022, KeyLevel::kInstance, "AcquisitionDate"},
    {0x00080032, KeyLevel::kInstance, "AcquisitionTime"},
    {0x00080023, KeyLevel::kInstance, "ContentDate"},
    {0x00080033, KeyLevel::kInstance, "ContentTime"},
    {0x00200012, KeyLevel::kInstance, "AcquisitionNumber"},
    {0x00200013, KeyLevel::kInstance, "InstanceNumber"},
    {0x00280008, KeyLevel::kInstance, "NumberOfFrames"},
    {0x00280010, KeyLevel::kInstance, "Rows"},
    {0x00280011, KeyLevel::kInstance, "Columns"},
    {0x00280100, KeyLevel::kInstance, "BitsAllocated"},
    {0x00700080, KeyLevel::kInstance, "ContentLabel"},
    {0x00700081, KeyLevel::kInstance, "ContentDescription"},
    {0x0040A491, KeyLevel::kInstance, "CompletionFlag"},
    {0x0040A493, KeyLevel::kInstance, "VerificationFlag"},
};
static_assert(std::size(kColumns) == InstanceKeys::kCount);

// Whose the tag's place is looked up by.
struct Place
{
   UINT32 itsTag;
   std::size_t itsKey;
};

constexpr auto kPlaces = [] {
   std::array<Place, InstanceKeys::kCount> aPlaces{};
   for (std::size_t i = 0; i < aPlaces.size(); ++i)
   {
      aPlaces[i] = {kColumns[i].itsTag, i};
   }
   std::sort(aPlaces.begin(), aPlaces.end(),
             [](const Place& theFirst, const Place& theSecond) { return theFirst.itsTag < theSecond.itsTag; });
   return aPlaces;
}();

// The text as peers' keys are compared with it: blanks in front mean nothing (PS3.5 6.2), and the dates of ACR-NEMA,
// yyyy.mm.dd, become those of today.
std::string KeyText(const VR& theVR)
{
   constexpr std::size_t kOldDate = 10;
   std::string aText = ValueText(theVR);
   aText.erase(0, std::min(aText.find_first_not_of(' '), aText.size()));
   if (theVR.GetTypeCode() == VRCode::DA && aText.size() == kOldDate && aText[4] == '.' && aText[7] == '.')
   {
      aText.erase(7, 1).erase(4, 1);
   }
   return aText;
}

// Reads past a value that is still in the stream.
void PassOver(PixelInputStreamVR& thePixels)
{
   const INT64 aLength = thePixels.Length();
   if (thePixels.Skip(0xFFFFFFFF) < static_cast<UINT64>(aLength))
   {
      throw BrokenDataset("it ends inside the pixel data");
   }
}

void CheckIsWhole(InputTransferSyntax& theDecoder, std::size_t theCount)
{
   if (theDecoder.IsCut())
   {
      throw BrokenDataset("it ends inside " + theDecoder.GetFaultPath());
   }
   if (theDecoder.GetLevelEnd() == InputTransferSyntax::AtDelimiter)
   {
      throw BrokenDataset("a delimiter stands outside any sequence");
   }
   if (theCount == 0)
   {
      throw BrokenDataset("it is empty");
   }
}
} // namespace

std::span<const KeyColumn, InstanceKeys::kCount> InstanceKeys::GetColumns()
{
   return kColumns;
}

void InstanceKeys::ReadWhole(InputTransferSyntax& theDecoder)
{
   theDecoder.SetLongestValue(kLongestKey);
   std::size_t aCount = 0;
   for (; const std::unique_ptr<VR> aVR{theDecoder.NextVR()}; ++aCount)
   {
      TakeElement(*aVR, 0);
   }
   CheckIsWhole(theDecoder, aCount);
}

void InstanceKeys::ReadFront(InputTransferSyntax& theDecoder)
{
   theDecoder.SetLongestValue(kLongestKey);
   while (const std::unique_ptr<VR> aVR{theDecoder.NextVR()})
   {
      if (aVR->GetTag() > kPlaces.back().itsTag)
      {
         return;
      }
      TakeElement(*aVR, 0);
   }
}

// theSequence is that whose first item the element is of; 0 for the dataset's own, and ~0 for no element of interest.
void InstanceKeys::TakeElement(VR& theVR, UINT32 theSequence)
{
   constexpr UINT32 kNoInterest = 0xFFFFFFFF;
   if (!theVR.IsStreamBuffered())
   {
      TakeValue(theVR, theSequence);
   }
   else if (auto* const aSequence = theVR.GetAsDICOMDataObjectInputStreamVR())
   {
      UINT32 anItemOf = theSequence == 0 ? theVR.GetTag() : kNoInterest;
      while (const std::unique_ptr<VRInputStreamVR> anItem{aSequence->NextDICOMDataObject()})
      {
         TakeItems(*anItem, anItemOf);
         anItemOf = kNoInterest;
      }
   }
   else if (auto* const aPixels = theVR.GetAsPixelInputStreamVR())
   {
      PassOver(*aPixels);
   }
   else if (auto* const aFragments = theVR.GetAsPixelDataFragmentInputStreamVR())
   {
      aFragments->SkipToEOF();
   }
   else
   {
      throw BrokenDataset("an item stands outside any sequence");
   }
}

void InstanceKeys::TakeItems(VRInputStream& theItem, UINT32 theSequence)
{
   while (const std::unique_ptr<VR> aVR{theItem.NextVR()})
   {
      TakeElement(*aVR, theSequence);
   }
}

// The first of several with one tag counts.
void InstanceKeys::TakeValue(const VR& theVR, UINT32 theSequence)
{
   const auto* aPlace = std::lower_bound(kPlaces.begin(), kPlaces.end(), theVR.GetTag(),
                                         [](const Place& theRow, UINT32 theTag) { return theRow.itsTag < theTag; });
   if (aPlace != kPlaces.end() && aPlace->itsTag == theVR.GetTag() &&
       kColumns[aPlace->itsKey].itsSequence == theSequence && itsTexts[aPlace->itsKey].empty())
   {
      itsTexts[aPlace->itsKey] = KeyText(theVR);
   }
}
