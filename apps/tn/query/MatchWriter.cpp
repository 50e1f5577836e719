#include "apps/tn/query/MatchWriter.h"

#include <algorithm>

#include "apps/tn/base/CharacterSet.h"
#include "apps/tn/base/JsonWriter.h"
#include "apps/tn/base/Tags.h"
#include "apps/tn/base/ValueText.h"
#include "apps/tn/query/MatchValues.h"
#include "talvenor/dataset/DICOMObjectIterator.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/MDataDictionary.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/foundation/OneLine.h"

namespace
{
constexpr UINT32 kSpecificCharacterSet = 0x00080005; // of the answer on the wire; what is shown is UTF-8

std::string NameOf(UINT32 theTag)
{
   const MDDEntry* const anEntry =
       MDataDictionary::GetDefaultDataDictionary().Find(MAttributeTag(GroupOf(theTag), ElementOf(theTag)));
   return anEntry != nullptr && !anEntry->Name().empty() ? anEntry->Name() : TagText(theTag);
}

class JsonLines : public MatchWriter
{
public:
   explicit JsonLines(std::ostream& theOutput) : MatchWriter(theOutput) {}

   void Write(const DICOMDataObject& theMatch) override
   {
      JsonWriter aJson(itsOutput);
      aJson.BeginObject();
      WriteElements(aJson, theMatch, CharacterSetOf(theMatch));
      aJson.EndObject();
      itsOutput << "\n";
   }

private:
   static void WriteElements(JsonWriter& theJson, const DICOMDataObject& theObject, const CharacterSet& theCharacterSet)
   {
      DICOMObjectIterator aWalk(theObject, ExplicitNoGroupLength);
      while (const VR* const aVR = aWalk.Next())
      {
         if (aVR->GetTag() == kSpecificCharacterSet)
         {
            continue;
         }
         const std::string aName = NameOf(aVR->GetTag());
         if (aVR->GetAsSequenceVR() != nullptr)
         {
            WriteItems(theJson, aName, *aVR, theCharacterSet);
         }
         else
         {
            WriteValues(theJson, aName, ValuesOf(*aVR, theCharacterSet));
         }
      }
   }

   static void WriteItems(JsonWriter& theJson, const std::string& theName, const VR& theSequence,
                          const CharacterSet& theCharacterSet)
   {
      theJson.BeginArray(theName);
      for (const DICOMDataObject* const anItem : ItemsOf(&theSequence))
      {
         theJson.BeginObject();
         WriteElements(theJson, *anItem, theCharacterSet);
         theJson.EndObject();
      }
      theJson.EndArray();
   }

   static void WriteValues(JsonWriter& theJson, const std::string& theName, const std::vector<std::string>& theValues)
   {
      if (theValues.size() <= 1)
      {
         theJson.Text(theName, theValues.empty() ? "" : theValues.front());
         return;
      }
      theJson.BeginArray(theName);
      for (const std::string& aValue : theValues)
      {
         theJson.Text("", aValue);
      }
      theJson.EndArray();
   }
};

// What has columns.
class Rows : public MatchWriter
{
public:
   Rows(std::ostream& theOutput, const std::vector<QueryKeys::Column>& theColumns)
       : MatchWriter(theOutput), itsColumns(theColumns)
   {}

   void Write(const DICOMDataObject& theMatch) override
   {
      WriteHeadings();
      const CharacterSet aCharacterSet = CharacterSetOf(theMatch);
      std::vector<std::string> aCells;
      for (const QueryKeys::Column& aColumn : itsColumns)
      {
         std::string aCell;
         AddValues(theMatch, aColumn.itsPath, 0, aCharacterSet, aCell);
         aCells.push_back(aCell);
      }
      WriteRow(aCells);
   }

   void Finish() override { WriteHeadings(); }

protected:
   virtual void WriteRow(const std::vector<std::string>& theCells) = 0;

private:
   // Before the first row.
   void WriteHeadings()
   {
      if (!itsHasHeadings)
      {
         itsHasHeadings = true;
         std::vector<std::string> aCells;
         for (const QueryKeys::Column& aColumn : itsColumns)
         {
            aCells.push_back(aColumn.itsName.substr(aColumn.itsName.rfind('.') + 1));
         }
         WriteRow(aCells);
      }
   }

   // Several values are separated by backslashes, those of several items too.
   static void AddValues(const DICOMDataObject& theObject, const std::vector<UINT32>& thePath, std::size_t theDepth,
                         const CharacterSet& theCharacterSet, std::string& theCell)
   {
      const VR* const aVR = FindVR(theObject, thePath[theDepth]);
      if (aVR == nullptr)
      {
         return;
      }
      const std::vector<DICOMDataObject*> anItems = ItemsOf(aVR);
      if (theDepth + 1 == thePath.size() && aVR->GetAsSequenceVR() != nullptr)
      {
         theCell += std::to_string(anItems.size()) + (anItems.size() == 1 ? " item" : " items");
      }
      else if (theDepth + 1 < thePath.size())
      {
         for (const DICOMDataObject* const anItem : anItems)
         {
            AddValues(*anItem, thePath, theDepth + 1, theCharacterSet, theCell);
         }
      }
      else
      {
         for (const std::string& aValue : ValuesOf(*aVR, theCharacterSet))
         {
            theCell += (theCell.empty() ? "" : "\\") + aValue;
         }
      }
   }

   const std::vector<QueryKeys::Column> itsColumns;
   bool itsHasHeadings = false;
};

class CommaSeparated : public Rows
{
public:
   using Rows::Rows;

private:
   void WriteRow(const std::vector<std::string>& theCells) override
   {
      for (std::size_t i = 0; i < theCells.size(); ++i)
      {
         itsOutput << (i == 0 ? "" : ",") << Quoted(theCells[i]);
      }
      itsOutput << "\r\n";
   }

   static std::string Quoted(const std::string& theText)
   {
      if (theText.find_first_of(",\"\r\n") == std::string::npos)
      {
         return theText;
      }
      std::string aQuoted = "\"";
      for (const char aCharacter : theText)
      {
         aQuoted.append(aCharacter == '"' ? 2 : 1, aCharacter);
      }
      return aQuoted + "\"";
   }
};

// The widths are those of the first matches: however many there are, few are held.
class Table : public Rows
{
public:
   using Rows::Rows;

   void Finish() override
   {
      Rows::Finish();
      WriteHeld();
   }

private:
   static constexpr std::size_t kMostHeld = 100;

   void WriteRow(const std::vector<std::string>& theCells) override
   {
      if (itsHasWidths)
      {
         WriteLine(theCells);
         return;
      }
      itsHeld.push_back(theCells);
      if (itsHeld.size() >= kMostHeld)
      {
         WriteHeld();
      }
   }

   void WriteHeld()
   {
      for (const std::vector<std::string>& aRow : itsHeld)
      {
         itsWidths.resize(std::max(itsWidths.size(), aRow.size()));
         for (std::size_t i = 0; i < aRow.size() && !itsHasWidths; ++i)
         {
            itsWidths[i] = std::max(itsWidths[i], WidthOf(aRow[i]));
         }
      }
      itsHasWidths = true;
      for (const std::vector<std::string>& aRow : itsHeld)
      {
         WriteLine(aRow);
      }
      itsHeld.clear();
   }

   void WriteLine(const std::vector<std::string>& theCells)
   {
      std::string aLine;
      for (std::size_t i = 0; i < theCells.size(); ++i)
      {
         const std::size_t aWidth = WidthOf(theCells[i]);
         aLine += OnOneLine(theCells[i]) + std::string(itsWidths[i] > aWidth ? itsWidths[i] - aWidth : 0, ' ') + "  ";
      }
      aLine.erase(aLine.find_last_not_of(' ') + 1);
      itsOutput << aLine << "\n";
   }

   // In characters, of which those of East Asia are wider in fact.
   static std::size_t WidthOf(const std::string& theText)
   {
      return static_cast<std::size_t>(
          std::count_if(theText.begin(), theText.end(), [](char theByte) { return (theByte & 0xC0) != 0x80; }));
   }

   std::vector<std::vector<std::string>> itsHeld;
   std::vector<std::size_t> itsWidths;
   bool itsHasWidths = false;
};
} // namespace

std::unique_ptr<MatchWriter> MatchWriter::Make(Form theForm, std::ostream& theOutput,
                                               const std::vector<QueryKeys::Column>& theColumns)
{
   switch (theForm)
   {
   case Form::Json: return std::make_unique<JsonLines>(theOutput);
   case Form::CommaSeparated: return std::make_unique<CommaSeparated>(theOutput, theColumns);
   default: return std::make_unique<Table>(theOutput, theColumns);
   }
}
