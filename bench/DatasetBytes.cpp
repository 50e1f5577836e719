#include "bench/DatasetBytes.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <vector>

#include "talvenor/foundation/TNXInitializer.h"

namespace
{
constexpr std::uint32_t kUndefined = 0xFFFFFFFF;

bool HasLongHeader(std::string_view theVR)
{
   return theVR == "OB" || theVR == "OW" || theVR == "OF" || theVR == "SQ" || theVR == "UT" || theVR == "UN";
}

// One content item of a report: relationship, value type, concept name, text, and the items below it.
std::string ContentItem(const DatasetBytes::Encoding& theEncoding, size_t& theItemsLeft, int theDepth,
                        DatasetBytes& theTotal)
{
   --theItemsLeft;
   DatasetBytes aCode(theEncoding);
   aCode.Text(0x00080100, "SH", "121071");
   aCode.Text(0x00080102, "SH", "DCM");
   aCode.Text(0x00080104, "LO", "Finding");
   DatasetBytes anItem(theEncoding);
   anItem.Text(0x0040A010, "CS", "CONTAINS");
   anItem.Text(0x0040A040, "CS", "TEXT");
   anItem.Sequence(0x0040A043, anItem.Item(aCode));
   anItem.Count(aCode);
   anItem.Text(0x0040A160, "UT", "No abnormality is seen in this region of the lung.");
   std::string aChildren;
   for (int aChild = 0; aChild < 6 && theDepth < 7 && theItemsLeft > 0; ++aChild)
   {
      aChildren += ContentItem(theEncoding, theItemsLeft, theDepth + 1, theTotal);
   }
   if (!aChildren.empty())
   {
      anItem.Sequence(0x0040A730, aChildren);
   }
   theTotal.Count(anItem);
   return anItem.Item(anItem);
}
} // namespace

void DatasetBytes::Number(std::string& theBytes, std::uint64_t theValue, int theSize) const
{
   for (int aByte = 0; aByte < theSize; ++aByte)
   {
      const int aPlace = itsEncoding.itsIsBigEndian ? theSize - 1 - aByte : aByte;
      theBytes += static_cast<char>(theValue >> (8 * aPlace));
   }
}

std::string DatasetBytes::Tag(std::uint32_t theTag) const
{
   std::string aTag;
   Number(aTag, theTag >> 16, 2);
   Number(aTag, theTag & 0xFFFF, 2);
   return aTag;
}

void DatasetBytes::Header(std::uint32_t theTag, const char* theVR, std::uint32_t theLength)
{
   itsBytes += Tag(theTag);
   if (!itsEncoding.itsIsExplicit)
   {
      Number(itsBytes, theLength, 4);
   }
   else if (HasLongHeader(theVR))
   {
      (itsBytes += theVR).append(2, '\0');
      Number(itsBytes, theLength, 4);
   }
   else
   {
      itsBytes += theVR;
      Number(itsBytes, theLength, 2);
   }
   ++itsElements;
}

void DatasetBytes::Text(std::uint32_t theTag, const char* theVR, std::string_view theText)
{
   std::string aValue(theText);
   if (aValue.size() & 1)
   {
      aValue += std::string_view(theVR) == "UI" ? '\0' : ' ';
   }
   Bytes(theTag, theVR, aValue);
}

void DatasetBytes::Short(std::uint32_t theTag, std::uint16_t theValue)
{
   std::string aValue;
   Number(aValue, theValue, 2);
   Bytes(theTag, "US", aValue);
}

void DatasetBytes::Bytes(std::uint32_t theTag, const char* theVR, std::string_view theBytes)
{
   Header(theTag, theVR, static_cast<std::uint32_t>(theBytes.size()));
   itsBytes += theBytes;
}

void DatasetBytes::Sequence(std::uint32_t theTag, const std::string& theItems)
{
   const auto aLength = static_cast<std::uint32_t>(theItems.size());
   Header(theTag, "SQ", itsEncoding.itsHasDefinedLengths ? aLength : kUndefined);
   itsBytes += theItems;
   if (!itsEncoding.itsHasDefinedLengths)
   {
      itsBytes += Tag(0xFFFEE0DD);
      Number(itsBytes, 0, 4);
   }
}

std::string DatasetBytes::Item(const DatasetBytes& theContent) const
{
   std::string anItem = Tag(0xFFFEE000);
   const auto aLength = static_cast<std::uint32_t>(theContent.itsBytes.size());
   Number(anItem, itsEncoding.itsHasDefinedLengths ? aLength : kUndefined, 4);
   anItem += theContent.itsBytes;
   if (!itsEncoding.itsHasDefinedLengths)
   {
      anItem += Tag(0xFFFEE00D);
      Number(anItem, 0, 4);
   }
   return anItem;
}

std::string DatasetBytes::File() const
{
   DatasetBytes aMeta(kExplicit);
   aMeta.Bytes(0x00020001, "OB", std::string_view("\0\1", 2));
   aMeta.Text(0x00020002, "UI", "1.2.840.10008.5.1.4.1.1.2");
   aMeta.Text(0x00020003, "UI", "2.25.339282991848464000405290.7.1");
   aMeta.Text(0x00020010, "UI", itsEncoding.itsTransferSyntaxUID);
   aMeta.Text(0x00020012, "UI", "2.25.339282991848464000405290.1");
   DatasetBytes aGroupLength(kExplicit);
   std::string aLength;
   aMeta.Number(aLength, aMeta.itsBytes.size(), 4);
   aGroupLength.Bytes(0x00020000, "UL", aLength);
   return std::string(128, '\0') + "DICM" + aGroupLength.itsBytes + aMeta.itsBytes + itsBytes;
}

DatasetBytes CTImage(const DatasetBytes::Encoding& theEncoding, size_t thePixelBytes)
{
   struct TextElement
   {
      std::uint32_t itsTag;
      const char* itsVR;
      const char* itsText;
   };
   static constexpr TextElement kTexts[] = {
       {0x00080005, "CS", "ISO_IR 100"},
       {0x00080008, "CS", "ORIGINAL\\PRIMARY\\AXIAL"},
       {0x00080012, "DA", "20260518"},
       {0x00080013, "TM", "101502.123"},
       {0x00080016, "UI", "1.2.840.10008.5.1.4.1.1.2"},
       {0x00080018, "UI", "2.25.339282991848464000405290.7.1"},
       {0x00080020, "DA", "20260518"},
       {0x00080021, "DA", "20260518"},
       {0x00080022, "DA", "20260518"},
       {0x00080023, "DA", "20260518"},
       {0x00080030, "TM", "100000"},
       {0x00080031, "TM", "100130"},
       {0x00080032, "TM", "100200"},
       {0x00080033, "TM", "100201"},
       {0x00080050, "SH", "A-4711"},
       {0x00080060, "CS", "CT"},
       {0x00080070, "LO", "Scanner Works"},
       {0x00080080, "LO", "County Hospital"},
       {0x00080090, "PN", "Ray^Rose"},
       {0x00081010, "SH", "CT2"},
       {0x00081030, "LO", "Thorax routine"},
       {0x0008103E, "LO", "Lung 1.5 B70f"},
       {0x00081090, "LO", "Model 64"},
       {0x00100010, "PN", "Doe^Jane^^Dr"},
       {0x00100020, "LO", "4711-0815"},
       {0x00100030, "DA", "19700101"},
       {0x00100040, "CS", "F"},
       {0x00101010, "AS", "056Y"},
       {0x00180015, "CS", "CHEST"},
       {0x00180050, "DS", "1.5"},
       {0x00180060, "DS", "120"},
       {0x00181020, "LO", "syngo-free 1.0"},
       {0x00181100, "DS", "350"},
       {0x00181110, "DS", "1085.6"},
       {0x00181150, "IS", "500"},
       {0x00181151, "IS", "221"},
       {0x00181210, "SH", "B70f"},
       {0x0020000D, "UI", "2.25.339282991848464000405290.7"},
       {0x0020000E, "UI", "2.25.339282991848464000405290.7.2"},
       {0x00200010, "SH", "1"},
       {0x00200011, "IS", "3"},
       {0x00200012, "IS", "4"},
       {0x00200013, "IS", "77"},
       {0x00200032, "DS", "-174.658\\-347.658\\-212.5"},
       {0x00200037, "DS", "1\\0\\0\\0\\1\\0"},
       {0x00200052, "UI", "2.25.339282991848464000405290.7.9"},
       {0x00201041, "DS", "-212.5"},
   };
   DatasetBytes anImage(theEncoding);
   for (const TextElement& aText : kTexts)
   {
      anImage.Text(aText.itsTag, aText.itsVR, aText.itsText);
   }
   anImage.Short(0x00280002, 1);
   anImage.Text(0x00280004, "CS", "MONOCHROME2");
   anImage.Short(0x00280010, 512);
   anImage.Short(0x00280011, 512);
   anImage.Text(0x00280030, "DS", "0.683594\\0.683594");
   anImage.Short(0x00280100, 16);
   anImage.Short(0x00280101, 12);
   anImage.Short(0x00280102, 11);
   anImage.Short(0x00280103, 0);
   anImage.Text(0x00281050, "DS", "-600");
   anImage.Text(0x00281051, "DS", "1600");
   anImage.Text(0x00281052, "DS", "-1024");
   anImage.Text(0x00281053, "DS", "1");
   // What a vendor adds.
   anImage.Text(0x00290010, "LO", "SCANNER WORKS CT");
   for (std::uint32_t anElement = 0; anImage.GetElementCount() < 120; ++anElement)
   {
      anImage.Text(0x00291000 + anElement, "LO", "value " + std::to_string(anElement));
   }
   if (thePixelBytes != 0)
   {
      anImage.Bytes(0x7FE00010, "OW", std::string(thePixelBytes, '\1'));
   }
   return anImage;
}

DatasetBytes Report(const DatasetBytes::Encoding& theEncoding, size_t theItems)
{
   DatasetBytes aReport(theEncoding);
   aReport.Text(0x00080016, "UI", "1.2.840.10008.5.1.4.1.1.88.33");
   aReport.Text(0x00080018, "UI", "2.25.339282991848464000405290.8.1");
   aReport.Text(0x00080060, "CS", "SR");
   aReport.Text(0x00100010, "PN", "Doe^Jane");
   aReport.Text(0x0040A040, "CS", "CONTAINER");
   std::string anItems;
   for (size_t aLeft = theItems; aLeft > 0;)
   {
      anItems += ContentItem(theEncoding, aLeft, 1, aReport);
   }
   aReport.Sequence(0x0040A730, anItems);
   return aReport;
}

std::string TemporaryFile(const std::string& theBytes)
{
   struct Files
   {
      ~Files()
      {
         for (const auto& aName : itsNames)
         {
            std::error_code anError;
            std::filesystem::remove(aName, anError);
         }
      }
      std::vector<std::string> itsNames;
   };
   static Files ourFiles;
   std::string aName = (std::filesystem::temp_directory_path() / "talvenor-bench-XXXXXX").string();
   const int aDescriptor = ::mkstemp(aName.data());
   if (aDescriptor < 0)
   {
      throw std::runtime_error("cannot make a temporary file");
   }
   std::ofstream(aName, std::ios::binary) << theBytes;
   ourFiles.itsNames.push_back(aName);
   return aName;
}

void LoadDictionaries()
{
   static const bool isLoaded = [] {
      const std::string aFolder = TALVENOR_SOURCE_DIR "/data/";
      return TNXInitializer::SetDataDictionary(aFolder + "dicom.dic") &&
             TNXInitializer::SetUIDDictionary(aFolder + "uid.dic");
   }();
   if (!isLoaded)
   {
      throw std::runtime_error("cannot read the dictionaries");
   }
}
