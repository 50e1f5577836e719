#include "apps/tn/files/DirectoryRecordTypes.h"

#include <algorithm>
#include <string_view>

#include "talvenor/dictionary/VRType.h"

namespace
{
using Key = DirectoryKey;

// --- Keys, PS3.3 F.5 -------------------------------------------------------------------------------------------------

constexpr Key kInstanceNumber = {0x00200013, VRCode::IS, Key::kValue, Key::kNumber};
constexpr Key kContentDate = {0x00080023, VRCode::DA, Key::kValue, Key::kDate};
constexpr Key kContentTime = {0x00080033, VRCode::TM, Key::kValue, Key::kTime};
constexpr Key kContentLabel = {0x00700080, VRCode::CS, Key::kValue, Key::kText, "UNLABELED"};
constexpr Key kContentDescription = {0x00700081, VRCode::LO, Key::kElement};
constexpr Key kContentCreator = {0x00700084, VRCode::PN, Key::kElement};
constexpr Key kConceptName = {0x0040A043, VRCode::SQ, Key::kValue};
constexpr Key kContent = {0x0040A730, VRCode::SQ, Key::kIfThere}; // only what modifies the concept

constexpr Key kPatientKeys[] = {
    {0x00100010, VRCode::PN, Key::kElement},
    {0x00100020, VRCode::LO, Key::kValue, Key::kNumber, "NOID-"},
    {0x00100030, VRCode::DA, Key::kIfThere},
    {0x00100040, VRCode::CS, Key::kIfThere},
};
constexpr Key kStudyKeys[] = {
    {0x00080020, VRCode::DA, Key::kValue, Key::kDate},
    {0x00080030, VRCode::TM, Key::kValue, Key::kTime},
    {0x00080050, VRCode::SH, Key::kElement},
    {0x00081030, VRCode::LO, Key::kElement},
    {0x0020000D, VRCode::UI, Key::kValue},
    {0x00200010, VRCode::SH, Key::kValue, Key::kNumber},
};
constexpr Key kSeriesKeys[] = {
    {0x00080060, VRCode::CS, Key::kValue, Key::kText, "OT"},
    {0x0008103E, VRCode::LO, Key::kIfThere},
    {0x0020000E, VRCode::UI, Key::kValue},
    {0x00200011, VRCode::IS, Key::kValue, Key::kNumber},
};
constexpr Key kImageKeys[] = {kInstanceNumber};
constexpr Key kAnnotationKeys[] = {
    kContentDate,  kContentTime,        kInstanceNumber,
    kContentLabel, kContentDescription, kContentCreator}; // also of registrations, fiducials, surfaces, tracts, maps
constexpr Key kAssessmentKeys[] = {
    {0x00080012, VRCode::DA, Key::kValue, Key::kDate},
    {0x00080013, VRCode::TM, Key::kValue, Key::kTime},
    kInstanceNumber,
};
constexpr Key kDocumentKeys[] = {
    {0x00080023, VRCode::DA, Key::kElement},
    {0x00080033, VRCode::TM, Key::kElement},
    kInstanceNumber,
    {0x0040A043, VRCode::SQ, Key::kElement},
    {0x0040E001, VRCode::ST, Key::kIfThere},
    {0x00420010, VRCode::ST, Key::kElement},
    {0x00420012, VRCode::LO, Key::kValue, Key::kText, "application/octet-stream"},
};
constexpr Key kDoseKeys[] = {
    kInstanceNumber,
    {0x3004000A, VRCode::CS, Key::kValue, Key::kText, "PLAN"},
};
constexpr Key kHangingProtocolKeys[] = {
    {0x00720002, VRCode::SH, Key::kValue, Key::kText, "UNNAMED"},
    {0x00720004, VRCode::LO, Key::kValue, Key::kText, "UNNAMED"},
    {0x00720006, VRCode::CS, Key::kValue, Key::kText, "SITE"},
    {0x00720008, VRCode::LO, Key::kValue, Key::kText, "UNKNOWN"},
    {0x0072000A, VRCode::DT, Key::kValue, Key::kText, "19000101000000"},
    {0x0072000C, VRCode::SQ, Key::kValue},
    {0x0072000E, VRCode::SQ, Key::kElement},
    {0x00720014, VRCode::US, Key::kValue},
};
constexpr Key kImplantKeys[] = {
    {0x00080070, VRCode::LO, Key::kValue, Key::kText, "UNKNOWN"},
    {0x00221095, VRCode::LO, Key::kValue, Key::kText, "UNKNOWN"},
    {0x00221097, VRCode::LO, Key::kValue, Key::kText, "UNKNOWN"},
    {0x00686210, VRCode::LO, Key::kElement},
};
constexpr Key kImplantAssemblyKeys[] = {
    {0x00760001, VRCode::LO, Key::kValue, Key::kText, "UNKNOWN"},
    {0x00760003, VRCode::LO, Key::kValue, Key::kText, "UNKNOWN"},
    {0x00760020, VRCode::SQ, Key::kValue},
};
constexpr Key kImplantGroupKeys[] = {
    {0x00780001, VRCode::LO, Key::kValue, Key::kText, "UNKNOWN"},
    {0x00780010, VRCode::LO, Key::kValue, Key::kText, "UNKNOWN"},
};
constexpr Key kKeyObjectKeys[] = {kContentDate, kContentTime, kInstanceNumber, kConceptName, kContent};
constexpr Key kMeasurementKeys[] = {kContentDate, kContentTime, kInstanceNumber};
constexpr Key kPaletteKeys[] = {kContentLabel, kContentDescription};
constexpr Key kPlanKeys[] = {
    kInstanceNumber,
    {0x300A0002, VRCode::SH, Key::kValue, Key::kText, "UNLABELED"},
    {0x300A0006, VRCode::DA, Key::kElement},
    {0x300A0007, VRCode::TM, Key::kElement},
};
constexpr Key kPresentationKeys[] = {
    {0x00081115, VRCode::SQ, Key::kIfThere},
    kInstanceNumber,
    kContentLabel,
    kContentDescription,
    {0x00700082, VRCode::DA, Key::kValue, Key::kDate},
    {0x00700083, VRCode::TM, Key::kValue, Key::kTime},
    kContentCreator,
    {0x00700402, VRCode::SQ, Key::kIfThere},
};
constexpr Key kRadiotherapyKeys[] = {
    {0x00200013, VRCode::IS, Key::kIfThere},
    kContentDescription,
    kContentCreator,
    {0x30100033, VRCode::SH, Key::kIfThere},
    {0x30100034, VRCode::LO, Key::kIfThere},
};
constexpr Key kRawDataKeys[] = {kContentDate, kContentTime, {0x00200013, VRCode::IS, Key::kElement}};
constexpr Key kReportKeys[] = {
    kContentDate,
    kContentTime,
    kInstanceNumber,
    {0x0040A030, VRCode::DT, Key::kIfThere},
    kConceptName,
    {0x0040A491, VRCode::CS, Key::kValue, Key::kText, "PARTIAL"},
    {0x0040A493, VRCode::CS, Key::kValue, Key::kText, "UNVERIFIED"},
    kContent,
};
constexpr Key kSpectroscopyKeys[] = {
    {0x00080008, VRCode::CS, Key::kValue, Key::kText, "ORIGINAL\\PRIMARY"},
    kContentDate,
    kContentTime,
    {0x00089092, VRCode::SQ, Key::kIfThere},
    kInstanceNumber,
    {0x00280008, VRCode::IS, Key::kValue, Key::kText, "1"},
    {0x00280010, VRCode::US, Key::kValue},
    {0x00280011, VRCode::US, Key::kValue},
    {0x00289001, VRCode::UL, Key::kValue},
    {0x00289002, VRCode::UL, Key::kValue},
};
constexpr Key kStructureSetKeys[] = {
    kInstanceNumber,
    {0x30060002, VRCode::SH, Key::kValue, Key::kText, "UNLABELED"},
    {0x30060008, VRCode::DA, Key::kElement},
    {0x30060009, VRCode::TM, Key::kElement},
};
constexpr Key kTreatmentKeys[] = {
    kInstanceNumber,
    {0x30080250, VRCode::DA, Key::kElement},
    {0x30080251, VRCode::TM, Key::kElement},
};

// --- SOP classes, PS3.3 F.4 and PS3.4 B.5, GG.3 ----------------------------------------------------------------------

constexpr bool kAtTheRoot = true;

constexpr DirectoryRecordType kAnnotation = {"ANNOTATION", kAnnotationKeys};
constexpr DirectoryRecordType kAssessment = {"ASSESSMENT", kAssessmentKeys};
constexpr DirectoryRecordType kDocument = {"ENCAP DOC", kDocumentKeys};
constexpr DirectoryRecordType kDose = {"RT DOSE", kDoseKeys};
constexpr DirectoryRecordType kFiducial = {"FIDUCIAL", kAnnotationKeys};
constexpr DirectoryRecordType kHangingProtocol = {"HANGING PROTOCOL", kHangingProtocolKeys, kAtTheRoot};
constexpr DirectoryRecordType kImplant = {"IMPLANT", kImplantKeys, kAtTheRoot};
constexpr DirectoryRecordType kImplantAssembly = {"IMPLANT ASSY", kImplantAssemblyKeys, kAtTheRoot};
constexpr DirectoryRecordType kImplantGroup = {"IMPLANT GROUP", kImplantGroupKeys, kAtTheRoot};
constexpr DirectoryRecordType kKeyObject = {"KEY OBJECT DOC", kKeyObjectKeys};
constexpr DirectoryRecordType kMeasurement = {"MEASUREMENT", kMeasurementKeys};
constexpr DirectoryRecordType kPalette = {"PALETTE", kPaletteKeys, kAtTheRoot};
constexpr DirectoryRecordType kPlan = {"RT PLAN", kPlanKeys};
constexpr DirectoryRecordType kPresentation = {"PRESENTATION", kPresentationKeys};
constexpr DirectoryRecordType kRadiotherapy = {"RADIOTHERAPY", kRadiotherapyKeys};
constexpr DirectoryRecordType kRawData = {"RAW DATA", kRawDataKeys};
constexpr DirectoryRecordType kRegistration = {"REGISTRATION", kAnnotationKeys};
constexpr DirectoryRecordType kReport = {"SR DOCUMENT", kReportKeys};
constexpr DirectoryRecordType kSpectroscopy = {"SPECTROSCOPY", kSpectroscopyKeys};
constexpr DirectoryRecordType kStereometric = {"STEREOMETRIC", kAnnotationKeys};
constexpr DirectoryRecordType kStructureSet = {"RT STRUCTURE SET", kStructureSetKeys};
constexpr DirectoryRecordType kSurface = {"SURFACE", kAnnotationKeys};
constexpr DirectoryRecordType kSurfaceScan = {"SURFACE SCAN", kMeasurementKeys};
constexpr DirectoryRecordType kTract = {"TRACT", kAnnotationKeys};
constexpr DirectoryRecordType kTreatment = {"RT TREAT RECORD", kTreatmentKeys};
constexpr DirectoryRecordType kValueMap = {"VALUE MAP", kAnnotationKeys};
constexpr DirectoryRecordType kWaveform = {"WAVEFORM", kMeasurementKeys};

struct ClassRow
{
   std::string_view itsUID;            // behind kServiceRoot; one that ends with a point stands for all that begin so
   const DirectoryRecordType* itsType; // null: images
};

constexpr std::string_view kServiceRoot = "1.2.840.10008.5.1.4.";

// The first row that fits is taken.
constexpr ClassRow kClasses[] = {
    {"1.1.4.2", &kSpectroscopy},
    {"1.1.9.", &kWaveform},
    {"1.1.11.", &kPresentation},
    {"1.1.66", &kRawData},
    {"1.1.66.1", &kRegistration},
    {"1.1.66.2", &kFiducial},
    {"1.1.66.3", &kRegistration},
    {"1.1.66.5", &kSurface},
    {"1.1.66.6", &kTract},
    {"1.1.67", &kValueMap},
    {"1.1.68.1", &kSurfaceScan},
    {"1.1.68.2", &kSurfaceScan},
    {"1.1.77.1.5.3", &kStereometric},
    {"1.1.78.6", &kReport},
    {"1.1.78.", &kMeasurement},
    {"1.1.79.1", &kReport},
    {"1.1.80.1", &kMeasurement},
    {"1.1.88.59", &kKeyObject},
    {"1.1.88.", &kReport},
    {"1.1.90.1", &kAssessment},
    {"1.1.91.1", &kAnnotation},
    {"1.1.104.", &kDocument},
    {"1.1.481.1", nullptr},
    {"1.1.481.2", &kDose},
    {"1.1.481.3", &kStructureSet},
    {"1.1.481.4", &kTreatment},
    {"1.1.481.5", &kPlan},
    {"1.1.481.6", &kTreatment},
    {"1.1.481.7", &kTreatment},
    {"1.1.481.8", &kPlan},
    {"1.1.481.9", &kTreatment},
    {"1.1.481.23", nullptr},
    {"1.1.481.", &kRadiotherapy},
    {"38.1", &kHangingProtocol},
    {"39.1", &kPalette},
    {"43.1", &kImplant},
    {"44.1", &kImplantAssembly},
    {"45.1", &kImplantGroup},
};
} // namespace

const DirectoryRecordType kPatientRecord = {"PATIENT", kPatientKeys};
const DirectoryRecordType kStudyRecord = {"STUDY", kStudyKeys};
const DirectoryRecordType kSeriesRecord = {"SERIES", kSeriesKeys};
const DirectoryRecordType kImageRecord = {"IMAGE", kImageKeys};

UINT32 DirectoryRecordType::GetLastTag() const
{
   UINT32 aTag = 0x00200011; // of a series record
   for (const DirectoryKey& aKey : itsKeys)
   {
      aTag = std::max(aTag, aKey.itsTag);
   }
   return aTag;
}

const DirectoryRecordType* FindRecordType(const RWCString& theSOPClassUID)
{
   std::string_view aUID = theSOPClassUID;
   if (!aUID.starts_with(kServiceRoot))
   {
      return nullptr;
   }
   aUID.remove_prefix(kServiceRoot.size());
   for (const ClassRow& aRow : kClasses)
   {
      if (aRow.itsUID.ends_with('.') ? aUID.starts_with(aRow.itsUID) : aUID == aRow.itsUID)
      {
         return aRow.itsType;
      }
   }
   return nullptr;
}
