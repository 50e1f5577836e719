#include "apps/tn/query/MatchWriter.h"

#include "apps/tn/base/CharacterSet.h"
#include "apps/tn/base/ElementValues.h"
#include "apps/tn/base/JsonElements.h"
#include "apps/tn/base/JsonWriter.h"
#include "apps/tn/base/Tags.h"
#include "apps/tn/base/TextTable.h"
#include "apps/tn/base/ValueText.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/VR.h"

namespace
{
class JsonLines : public MatchWriter
{
public:
   explicit JsonLines(std::ostream& theOutput) : MatchWriter(theOutput) {}

   void Write(const DICOMDataObject& theMatch) override
   {
      JsonWriter aJson(itsOutput);
      aJson.BeginObject();
      WriteJsonElements(aJson, theMatch, CharacterSetOf(theMatch));
      aJson.EndObject();
      itsOutput << "\n";
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

class Table : public Rows
{
public:
   Table(std::ostream& theOutput, const std::vector<QueryKeys::Column>& theColumns, std::size_t theWidth)
       : Rows(theOutput, theColumns), itsTable(theOutput, theWidth)
   {}

   void Finish() override
   {
      Rows::Finish();
      itsTable.Finish();
   }

private:
   void WriteRow(const std::vector<std::string>& theCells) override { itsTable.Add(theCells); }

   TextTable itsTable;
};
} // namespace

std::unique_ptr<MatchWriter> MatchWriter::Make(Form theForm, std::ostream& theOutput,
                                               const std::vector<QueryKeys::Column>& theColumns, std::size_t theWidth)
{
   switch (theForm)
   {
   case Form::Json: return std::make_unique<JsonLines>(theOutput);
   case Form::CommaSeparated: return std::make_unique<CommaSeparated>(theOutput, theColumns);
   default: return std::make_unique<Table>(theOutput, theColumns, theWidth);
   }
}
