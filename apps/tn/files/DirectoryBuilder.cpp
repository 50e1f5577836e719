#include "apps/tn/files/DirectoryBuilder.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <span>
#include <stdexcept>
#include <vector>

#include "apps/tn/base/Tags.h"
#include "apps/tn/files/DirectoryRecordTypes.h"
#include "apps/tn/files/DirectoryTags.h"
#include "apps/tn/files/InstanceHeader.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/MDDEntry.h"
#include "talvenor/dictionary/MDataDictionary.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/file/DICOMDirUtilities.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/transfer/ConcreteOutputTransferSyntaxes.h"

namespace
{
constexpr UINT32 kReferencedSyntax = 0x00041512;

constexpr UINT32 kPatientName = 0x00100010;
constexpr UINT32 kPatientID = 0x00100020;
constexpr UINT32 kPatientIDIssuer = 0x00100021;
constexpr UINT32 kBirthDate = 0x00100030;
constexpr UINT32 kStudyInstance = 0x0020000D;
constexpr UINT32 kSeriesInstance = 0x0020000E;
constexpr UINT32 kSeriesNumber = 0x00200011;
constexpr UINT32 kInstanceNumber = 0x00200013;
constexpr UINT32 kContentSequence = 0x0040A730;

constexpr DirectoryKey kCharacterSet = {0x00080005, VRCode::CS, DirectoryKey::kIfThere};

// As long as that of the calculation of offsets: they shift with it.
constexpr char kSourceAETitle[] = "TNDICOMDIR";
static_assert(sizeof kSourceAETitle == sizeof DICOMDirUtilities::kSourceAETitle);

// --- Elements --------------------------------------------------------------------------------------------------------

std::unique_ptr<VR> MakeText(UINT32 theTag, UINT16 theVR, const std::string& theText)
{
   auto aVR = std::make_unique<VR>(GroupOf(theTag), ElementOf(theTag));
   aVR->SetTypeCode(theVR);
   if (!theText.empty())
   {
      aVR->SetData(theText.data(), static_cast<UINT32>(theText.size()), theVR == VRCode::UI ? '\0' : ' ');
   }
   return aVR;
}

template <class Number>
std::unique_ptr<VR> MakeNumber(UINT32 theTag, UINT16 theVR, Number theNumber)
{
   auto aVR = std::make_unique<VR>(GroupOf(theTag), ElementOf(theTag));
   aVR->SetTypeCode(theVR);
   TNEndian::Store(&theNumber, theNumber, TNEndian::LittleEndian);
   aVR->SetData(&theNumber, sizeof theNumber, '\0');
   return aVR;
}

void SetOffset(DICOMObject& theObject, UINT32 theTag, int theOffset)
{
   theObject.ReplaceVR(MakeNumber(theTag, VRCode::UL, static_cast<UINT32>(theOffset)).release());
}

std::unique_ptr<VR> MakeEmpty(const DirectoryKey& theKey)
{
   return theKey.itsVR == VRCode::SQ ? std::make_unique<SequenceVR>(GroupOf(theKey.itsTag), ElementOf(theKey.itsTag))
                                     : MakeText(theKey.itsTag, theKey.itsVR, "");
}

// --- Keys ------------------------------------------------------------------------------------------------------------

// Of the content of a document a record repeats what modifies its title (PS3.3 F.5.25). Null when there is none.
std::unique_ptr<VR> CopyModifiers(const SequenceVR& theContent)
{
   auto aCopy = std::make_unique<SequenceVR>(theContent.GetGroup(), theContent.GetElement());
   for (const DICOMDataObject* const anItem : *theContent.GetSequenceArray())
   {
      if (anItem != nullptr && TextOf(*anItem, 0x0040A010) == "HAS CONCEPT MOD")
      {
         aCopy->AddSequenceItem(new DICOMDataObject(*anItem));
      }
   }
   return aCopy->IsEmpty() ? nullptr : std::move(aCopy);
}

// Some values that implicit VR holds, explicit VR does not: texts beyond its 16-bit lengths.
bool IsWritable(VR& theVR)
{
   try
   {
      LittleEndianExplicitOutputTransferSyntax(OutputTransferSyntax::NullOutputStream).SaveVR(theVR);
      return true;
   }
   catch (const StreamIOException&)
   {
      return false;
   }
}

// The key as the instance has it; null when it has none, or a value that cannot be one.
std::unique_ptr<VR> CopyKey(const DirectoryKey& theKey, const InstanceHeader& theInstance)
{
   const VR* const aVR = FindVR(theInstance.GetElements(), theKey.itsTag);
   if (aVR == nullptr || aVR->IsEmpty())
   {
      return nullptr;
   }
   const SequenceVR* const aSequence = aVR->GetAsSequenceVR();
   if ((aSequence != nullptr) != (theKey.itsVR == VRCode::SQ))
   {
      return nullptr;
   }
   if (aSequence != nullptr && theKey.itsTag == kContentSequence)
   {
      std::unique_ptr<VR> aModifiers = CopyModifiers(*aSequence);
      return aModifiers && IsWritable(*aModifiers) ? std::move(aModifiers) : nullptr;
   }
   const bool isText = aSequence == nullptr && theKey.itsVR != VRCode::US && theKey.itsVR != VRCode::UL;
   if (isText && theInstance.GetText(theKey.itsTag).empty())
   {
      return nullptr;
   }
   std::unique_ptr<VR> aCopy(aVR->Copy());
   aCopy->SetTypeCode(theKey.itsVR);
   return IsWritable(*aCopy) ? std::move(aCopy) : nullptr;
}

// The study's, the series', the acquisition's, the content's.
constexpr UINT32 kDates[] = {0x00080020, 0x00080021, 0x00080022, 0x00080023};
constexpr UINT32 kTimes[] = {0x00080030, 0x00080031, 0x00080032, 0x00080033};

// Without the separators of former times (1993.11.24, 09:53:00).
std::string FirstOf(std::span<const UINT32> theTags, const InstanceHeader& theInstance, char theSeparator,
                    const char* theDefault)
{
   for (const UINT32 aTag : theTags)
   {
      if (RWCString aText = theInstance.GetText(aTag); !aText.empty())
      {
         std::erase(aText, theSeparator);
         return aText;
      }
   }
   return theDefault;
}

std::string SubstituteFor(const DirectoryKey& theKey, const InstanceHeader& theInstance, std::size_t thePlace)
{
   const std::string aText = theKey.itsText != nullptr ? theKey.itsText : "";
   switch (theKey.itsSubstitute)
   {
   case DirectoryKey::kNothing: return "";
   case DirectoryKey::kText: return aText;
   case DirectoryKey::kDate: return FirstOf(kDates, theInstance, '.', "19000101");
   case DirectoryKey::kTime: return FirstOf(kTimes, theInstance, ':', "000000");
   case DirectoryKey::kNumber: return aText + std::to_string(thePlace + 1);
   }
   return "";
}

std::string NameOf(UINT32 theTag)
{
   const MAttributeTag aTag(GroupOf(theTag), ElementOf(theTag));
   const MDDEntry* const anEntry = MDataDictionary::GetDefaultDataDictionary().Find(aTag);
   return anEntry != nullptr ? anEntry->Description() : "(" + aTag.AsNumericString() + ")";
}

void AddKey(DICOMDataObject& theElements, const DirectoryKey& theKey, const InstanceHeader& theInstance,
            std::size_t thePlace, const DirectoryBuilder::Warn& theWarn)
{
   std::unique_ptr<VR> aVR = CopyKey(theKey, theInstance);
   if (!aVR && theKey.itsNeed == DirectoryKey::kIfThere)
   {
      return;
   }
   if (!aVR && theKey.itsNeed == DirectoryKey::kValue)
   {
      const std::string aValue = SubstituteFor(theKey, theInstance, thePlace);
      theWarn("it has no " + NameOf(theKey.itsTag) + "; the directory has " +
              (aValue.empty() ? "none either" : "\"" + aValue + "\""));
      aVR = aValue.empty() ? MakeEmpty(theKey) : MakeText(theKey.itsTag, theKey.itsVR, aValue);
   }
   theElements.Push((aVR ? std::move(aVR) : MakeEmpty(theKey)).release());
}

std::string PatientKeyOf(const InstanceHeader& theInstance)
{
   const RWCString anID = theInstance.GetText(kPatientID);
   if (!anID.empty())
   {
      return "ID " + anID + '\n' + theInstance.GetText(kPatientIDIssuer);
   }
   const RWCString aName = theInstance.GetText(kPatientName);
   return aName.empty() ? "study " + theInstance.GetText(kStudyInstance)
                        : "name " + aName + '\n' + theInstance.GetText(kBirthDate);
}
} // namespace

// --- Records ---------------------------------------------------------------------------------------------------------

struct DirectoryBuilder::Record
{
   using Offsets = DICOMDirUtilities::Offsets;

   const DirectoryRecordType* itsType = nullptr; // null: the root
   std::unique_ptr<DICOMDataObject> itsElements = nullptr;
   std::vector<std::unique_ptr<Record>> itsBelow = {};
   std::unordered_map<std::string, Record*> itsByKey = {};
   std::size_t itsPlace = 0; // in the file

   long GetNumber(UINT32 theTag) const
   {
      const RWCString aText = TextOf(*itsElements, theTag);
      return aText.empty() ? LONG_MAX : std::strtol(aText.c_str(), nullptr, 10);
   }

   void SortBelow(UINT32 theTag)
   {
      std::stable_sort(itsBelow.begin(), itsBelow.end(), [=](const auto& theLeft, const auto& theRight) {
         return theLeft->GetNumber(theTag) < theRight->GetNumber(theTag);
      });
   }

   // Appends the records below, each followed by those below it.
   void List(std::vector<Record*>& theRecords)
   {
      if (itsType == &kStudyRecord || itsType == &kSeriesRecord)
      {
         SortBelow(itsType == &kStudyRecord ? kSeriesNumber : kInstanceNumber);
      }
      for (const std::unique_ptr<Record>& aRecord : itsBelow)
      {
         aRecord->itsPlace = theRecords.size();
         theRecords.push_back(aRecord.get());
         aRecord->List(theRecords);
      }
   }

   int GetOffsetBelow(std::size_t theNumber, const Offsets& theOffsets) const
   {
      return theNumber < itsBelow.size() ? theOffsets[itsBelow[theNumber]->itsPlace] : 0;
   }

   // Tells each record of theItems, which are in the order of the file, what stands behind and below it.
   void Link(const SequenceVR::Items& theItems, const Offsets& theOffsets) const
   {
      for (std::size_t i = 0; i < itsBelow.size(); ++i)
      {
         const Record& aRecord = *itsBelow[i];
         DICOMDataObject& anItem = *theItems[aRecord.itsPlace];
         SetOffset(anItem, kNextOffset, GetOffsetBelow(i + 1, theOffsets));
         SetOffset(anItem, kLowerOffset, aRecord.GetOffsetBelow(0, theOffsets));
         aRecord.Link(theItems, theOffsets);
      }
   }
};

DirectoryBuilder::DirectoryBuilder() : itsRoot(std::make_unique<Record>()) {}

DirectoryBuilder::~DirectoryBuilder() = default;

const char* DirectoryBuilder::GetSourceAETitle()
{
   return kSourceAETitle;
}

void DirectoryBuilder::Add(const InstanceHeader& theInstance, const FileID& theFileID, const Warn& theWarn)
{
   const auto [aRow, isNew] = itsInstances.emplace(theInstance.GetSOPInstanceUID(), JoinFileID(theFileID, '/'));
   if (!isNew)
   {
      throw std::runtime_error("its instance is in the directory already, as " + aRow->second);
   }
   Record* aParent = itsRoot.get();
   if (!theInstance.GetRecordType().itsStandsAtTheRoot)
   {
      Record& aPatient =
          FindOrAdd(*aParent, kPatientRecord, PatientKeyOf(theInstance), theInstance, theWarn, itsCounts.itsPatients);
      const std::size_t aStudies = aPatient.itsBelow.size();
      Record& aStudy = FindOrAdd(aPatient, kStudyRecord, theInstance.GetText(kStudyInstance), theInstance, theWarn,
                                 itsCounts.itsStudies);
      const RWCString aName = TextOf(*aPatient.itsElements, kPatientName);
      if (aPatient.itsBelow.size() != aStudies && aName != theInstance.GetText(kPatientName))
      {
         theWarn("its patient ID is in the directory with another name, " + aName);
      }
      aParent = &FindOrAdd(aStudy, kSeriesRecord, theInstance.GetText(kSeriesInstance), theInstance, theWarn,
                           itsCounts.itsSeries);
   }
   DICOMDataObject& aRecord = *Append(*aParent, theInstance.GetRecordType(), theInstance, theWarn).itsElements;
   aRecord.Push(MakeText(kReferencedFileID, VRCode::CS, JoinFileID(theFileID, '\\')).release());
   aRecord.Push(MakeText(kReferencedClass, VRCode::UI, theInstance.GetSOPClassUID()).release());
   aRecord.Push(MakeText(kReferencedInstance, VRCode::UI, theInstance.GetSOPInstanceUID()).release());
   aRecord.Push(MakeText(kReferencedSyntax, VRCode::UI, theInstance.GetTransferSyntaxUID()).release());
   ++itsCounts.itsInstances;
}

DirectoryBuilder::Record& DirectoryBuilder::FindOrAdd(Record& theParent, const DirectoryRecordType& theType,
                                                      const std::string& theKey, const InstanceHeader& theInstance,
                                                      const Warn& theWarn, std::size_t& theCount)
{
   Record*& aRecord = theParent.itsByKey[theKey];
   if (aRecord == nullptr)
   {
      aRecord = &Append(theParent, theType, theInstance, theWarn);
      ++theCount;
   }
   return *aRecord;
}

DirectoryBuilder::Record& DirectoryBuilder::Append(Record& theParent, const DirectoryRecordType& theType,
                                                   const InstanceHeader& theInstance, const Warn& theWarn)
{
   auto anElements = std::make_unique<DICOMDataObject>();
   SetOffset(*anElements, kNextOffset, 0);
   anElements->Push(MakeNumber(kInUse, VRCode::US, UINT16{0xFFFF}).release());
   SetOffset(*anElements, kLowerOffset, 0);
   anElements->Push(MakeText(kRecordType, VRCode::CS, theType.itsName).release());
   AddKey(*anElements, kCharacterSet, theInstance, 0, theWarn);
   for (const DirectoryKey& aKey : theType.itsKeys)
   {
      AddKey(*anElements, aKey, theInstance, theParent.itsBelow.size(), theWarn);
   }
   theParent.itsBelow.push_back(std::make_unique<Record>(Record{&theType, std::move(anElements)}));
   return *theParent.itsBelow.back();
}

std::unique_ptr<DICOMDataObject> DirectoryBuilder::Build(const std::string& theFileSetID,
                                                         const RWCString& theSOPInstanceUID)
{
   auto aDirectory = std::make_unique<DICOMDataObject>();
   aDirectory->Push(MakeText(kFileSetID, VRCode::CS, theFileSetID).release());
   SetOffset(*aDirectory, kFirstRootOffset, 0);
   SetOffset(*aDirectory, kLastRootOffset, 0);
   aDirectory->Push(MakeNumber(kConsistency, VRCode::US, UINT16{0}).release());

   std::vector<Record*> aRecords;
   itsRoot->List(aRecords);
   auto aSequence = std::make_unique<SequenceVR>(GroupOf(kRecords), ElementOf(kRecords));
   SequenceVR& anItems = *aSequence;
   aDirectory->Push(aSequence.release());
   for (Record* const aRecord : aRecords)
   {
      anItems.AddSequenceItem(aRecord->itsElements.release());
   }

   DICOMDirUtilities::Offsets anOffsets;
   TNResultCode aResult;
   int anError;
   if (!DICOMDirUtilities::CalculateDirectoryRecordOffsets(*aDirectory, theSOPInstanceUID, aResult, anError, anOffsets))
   {
      throw std::runtime_error(TNResult::Describe(aResult));
   }
   if (!aRecords.empty())
   {
      SetOffset(*aDirectory, kFirstRootOffset, itsRoot->GetOffsetBelow(0, anOffsets));
      SetOffset(*aDirectory, kLastRootOffset, itsRoot->GetOffsetBelow(itsRoot->itsBelow.size() - 1, anOffsets));
      itsRoot->Link(*anItems.GetSequenceArray(), anOffsets);
   }
   return aDirectory;
}
