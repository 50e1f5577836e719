#include "apps/tn/files/DirectoryLister.h"

#include <algorithm>
#include <iomanip>
#include <string_view>
#include <utility>

#include "apps/tn/base/CharacterSet.h"
#include "apps/tn/base/JsonElements.h"
#include "apps/tn/base/JsonWriter.h"
#include "apps/tn/base/Tags.h"
#include "apps/tn/base/ValueText.h"
#include "apps/tn/files/DirectoryTags.h"
#include "apps/tn/files/FileID.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/foundation/OneLine.h"

namespace
{
constexpr std::size_t kDeepestIndentation = 16; // levels; chains of records can be as deep as they are many

// What is told of a record, and how: each text stands around the value of an attribute, if that is not empty.
struct Field
{
   UINT32 itsTag;
   const char* itsBefore;
   const char* itsAfter;
};

struct TypeRow
{
   std::string_view itsType;
   std::size_t itsDepth; // where it stands in an ordinary directory
   std::vector<Field> itsFields;
};

const TypeRow& RowOf(std::string_view theType)
{
   static const TypeRow theRows[] = {
       {"PATIENT", 0, {{0x00100010, "  ", ""}, {0x00100020, "  [", "]"}}},
       {"STUDY", 1, {{0x00080020, "  ", ""}, {0x00081030, "  \"", "\""}, {0x00200010, "  [", "]"}}},
       {"SERIES", 2, {{0x00080060, "  ", ""}, {0x00200011, "  ", ""}, {0x0008103E, "  \"", "\""}}},
   };
   static const TypeRow theOther = {"", 3, {{0x00200013, "  ", ""}}};
   for (const TypeRow& aRow : theRows)
   {
      if (aRow.itsType == theType)
      {
         return aRow;
      }
   }
   return theOther;
}

// The value without padding, but with the NULs inside it.
std::string WholeTextOf(const DICOMObject& theObject, UINT32 theTag)
{
   const VR* const aVR = FindVR(theObject, theTag);
   if (aVR == nullptr || aVR->GetAsSequenceVR() != nullptr || aVR->GetData() == nullptr)
   {
      return "";
   }
   std::string aText(reinterpret_cast<const char*>(aVR->GetData()), aVR->GetLength());
   aText.erase(aText.find_last_not_of(std::string_view(" \0", 2)) + 1);
   return aText;
}

UINT32 NumberOf(const DICOMObject& theObject, UINT32 theTag)
{
   UINT32 aNumber = 0;
   theObject.GetUINT32(GroupOf(theTag), ElementOf(theTag), aNumber);
   return aNumber;
}

bool IsInUse(const DICOMDataObject& theRecord)
{
   UINT16 aFlag = 0xFFFF;
   theRecord.GetUINT16(GroupOf(kInUse), ElementOf(kInUse), aFlag);
   return aFlag != 0;
}
} // namespace

struct DirectoryLister::Step
{
   UINT32 itsOffset;
   std::size_t itsDepth;
   const char* itsRole; // what the record is for the one that names it
   UINT32 itsFrom;      // the offset of that; 0 for the directory
};

DirectoryLister::DirectoryLister(const DICOMDataObject& theDirectory, const DICOMDirUtilities::Offsets& theOffsets,
                                 std::ostream& theOutput, Fault theFault)
    : itsDirectory(theDirectory), itsOffsets(theOffsets), itsOutput(theOutput), itsFault(std::move(theFault))
{
   const VR* const aVR = FindVR(theDirectory, kRecords);
   const SequenceVR* const aSequence = aVR != nullptr ? aVR->GetAsSequenceVR() : nullptr;
   if (aSequence != nullptr && !aSequence->IsEmpty())
   {
      itsRecords.assign(aSequence->GetSequenceArray()->begin(), aSequence->GetSequenceArray()->end());
   }
   itsRecords.resize(std::min(itsRecords.size(), theOffsets.size()));
   itsIsListed.resize(itsRecords.size());
}

void DirectoryLister::List(Form theForm)
{
   itsForm = theForm;
   FollowLinks(NumberOf(itsDirectory, kFirstRootOffset));
   CheckLastRoot();
   ListTheRest();
}

// Depth first. The steps that are still to be made are at most one for each record.
void DirectoryLister::FollowLinks(UINT32 theFirstOffset)
{
   std::vector<Step> aSteps = {{theFirstOffset, 0, "first record", 0}};
   while (!aSteps.empty())
   {
      const Step aStep = aSteps.back();
      aSteps.pop_back();
      std::size_t aRecord;
      if (aStep.itsOffset == 0)
      {
         continue;
      }
      const std::string aPlace = (aStep.itsFrom == 0 ? "the directory" : "record " + std::to_string(aStep.itsFrom)) +
                                 ": its " + aStep.itsRole + " is said to be at offset " +
                                 std::to_string(aStep.itsOffset);
      if (!Find(aStep.itsOffset, aRecord))
      {
         itsFault(aPlace + ", where none is");
      }
      else if (itsIsListed[aRecord])
      {
         itsFault(aPlace + ", which another record leads to already");
      }
      else
      {
         ListRecord(aRecord, aStep.itsDepth);
         itsLastRoot = aStep.itsDepth == 0 ? aStep.itsOffset : itsLastRoot;
         aSteps.push_back({NumberOf(RecordAt(aRecord), kNextOffset), aStep.itsDepth, "next record", aStep.itsOffset});
         aSteps.push_back(
             {NumberOf(RecordAt(aRecord), kLowerOffset), aStep.itsDepth + 1, "first record below", aStep.itsOffset});
      }
   }
}

bool DirectoryLister::Find(UINT32 theOffset, std::size_t& theRecord) const
{
   const auto anEnd = itsOffsets.begin() + static_cast<std::ptrdiff_t>(itsRecords.size());
   const auto aPlace = std::lower_bound(itsOffsets.begin(), anEnd, theOffset, [](int theLeft, UINT32 theRight) {
      return static_cast<UINT32>(theLeft) < theRight;
   });
   theRecord = static_cast<std::size_t>(aPlace - itsOffsets.begin());
   return aPlace != anEnd && static_cast<UINT32>(*aPlace) == theOffset;
}

void DirectoryLister::ListRecord(std::size_t theRecord, std::size_t theDepth)
{
   itsIsListed[theRecord] = true;
   CheckFile(theRecord);
   switch (itsForm)
   {
   case Form::Json: WriteJson(theRecord, theDepth); return;
   case Form::TreeWithOffsets: itsOutput << std::setw(10) << OffsetOf(theRecord) << "  "; break;
   case Form::Tree: break;
   }
   itsOutput << OnOneLine(LineOf(theRecord, theDepth)) << '\n';
}

std::string DirectoryLister::LineOf(std::size_t theRecord, std::size_t theDepth) const
{
   const DICOMDataObject& aRecord = RecordAt(theRecord);
   const std::string aType = WholeTextOf(aRecord, kRecordType);
   std::string aLine(2 * std::min(theDepth, kDeepestIndentation), ' ');
   aLine += aType.empty() ? "(no type)" : aType;
   for (const Field& aField : RowOf(aType).itsFields)
   {
      if (const std::string aText = WholeTextOf(aRecord, aField.itsTag); !aText.empty())
      {
         aLine += aField.itsBefore + aText + aField.itsAfter;
      }
   }
   if (const std::string aFileID = WholeTextOf(aRecord, kReferencedFileID); !aFileID.empty())
   {
      aLine += "  " + JoinFileID(SplitFileID(aFileID, '\\'), '/');
   }
   return aLine + (IsInUse(aRecord) ? "" : "  (not in use)");
}

void DirectoryLister::WriteJson(std::size_t theRecord, std::size_t theDepth) const
{
   const DICOMDataObject& aRecord = RecordAt(theRecord);
   JsonWriter aJson(itsOutput);
   aJson.BeginObject();
   aJson.Number("offset", OffsetOf(theRecord));
   aJson.Number("depth", theDepth);
   WriteJsonElements(aJson, aRecord, CharacterSetOf(aRecord));
   aJson.EndObject();
   itsOutput << '\n';
}

void DirectoryLister::CheckFile(std::size_t theRecord)
{
   const std::string aValue = WholeTextOf(RecordAt(theRecord), kReferencedFileID);
   const FileID aFileID = SplitFileID(aValue, '\\');
   if (!aValue.empty() && LeavesTheMedium(aFileID))
   {
      itsFault("record " + std::to_string(OffsetOf(theRecord)) + ": " + JoinFileID(aFileID, '/') +
               " is no file of the medium and not to be opened");
   }
}

void DirectoryLister::CheckLastRoot()
{
   const UINT32 aStated = NumberOf(itsDirectory, kLastRootOffset);
   if (aStated != itsLastRoot && itsLastRoot != 0)
   {
      itsFault("the directory: its last record is said to be at offset " + std::to_string(aStated) +
               ", but the chain ends at " + std::to_string(itsLastRoot));
   }
}

// What was taken out of the tree without being marked, or lost with a link.
void DirectoryLister::ListTheRest()
{
   std::size_t aCount = 0;
   for (std::size_t aRecord = 0; aRecord < itsRecords.size(); ++aRecord)
   {
      if (!itsIsListed[aRecord] && IsInUse(RecordAt(aRecord)))
      {
         itsOutput << (aCount++ == 0 && itsForm != Form::Json ? "# No offset leads to:\n" : "");
         ListRecord(aRecord, RowOf(WholeTextOf(RecordAt(aRecord), kRecordType)).itsDepth);
      }
   }
   if (aCount != 0)
   {
      itsFault("no offset leads to " + std::to_string(aCount) + " of its " + std::to_string(itsRecords.size()) +
               " records");
   }
}
