#include "apps/tn/query/MatchWriter.h"

#include <algorithm>
#include <numeric>

#include "apps/tn/base/CharacterSet.h"
#include "apps/tn/base/ElementValues.h"
#include "apps/tn/base/JsonElements.h"
#include "apps/tn/base/JsonWriter.h"
#include "apps/tn/base/Tags.h"
#include "apps/tn/base/ValueText.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/foundation/OneLine.h"

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

// In characters, of which those of East Asia are wider in fact.
std::size_t WidthOf(const std::string& theText)
{
   return static_cast<std::size_t>(
       std::count_if(theText.begin(), theText.end(), [](char theByte) { return (theByte & 0xC0) != 0x80; }));
}

// Just as wide as that: with blanks behind, or cut and marked.
std::string Fitted(const std::string& theText, std::size_t theWidth)
{
   const std::size_t aWidth = WidthOf(theText);
   if (aWidth <= theWidth)
   {
      return theText + std::string(theWidth - aWidth, ' ');
   }
   std::size_t aCount = 0;
   const auto anEnd = std::find_if(theText.begin(), theText.end(), [&](char theByte) {
      aCount += (theByte & 0xC0) != 0x80;
      return aCount == theWidth; // the character that gives way to the mark
   });
   return std::string(theText.begin(), anEnd) + "\xE2\x80\xA6";
}

// The widths are those of the first matches: however many there are, few are held.
class Table : public Rows
{
public:
   Table(std::ostream& theOutput, const std::vector<QueryKeys::Column>& theColumns, std::size_t theWidth)
       : Rows(theOutput, theColumns), itsLimit(theWidth)
   {}

   void Finish() override
   {
      Rows::Finish();
      WriteHeld();
   }

private:
   using Cells = std::vector<std::string>;

   static constexpr std::size_t kMostHeld = 100;
   static constexpr std::size_t kLeastWidth = 4; // of a column that is cut
   static constexpr std::size_t kGap = 2;

   void WriteRow(const Cells& theCells) override
   {
      if (itsNames.empty())
      {
         itsNames = theCells;
      }
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
      if (!itsHasWidths)
      {
         SetWidths();
         itsHasWidths = true;
      }
      std::for_each(itsHeld.begin() + (itsIsList && !itsHeld.empty() ? 1 : 0), itsHeld.end(),
                    [&](const Cells& theRow) { WriteLine(theRow); });
      itsHeld.clear();
   }

   // As wide as headings and values want to be, or else as the line is.
   void SetWidths()
   {
      itsWidths = Widest(itsHeld.begin(), itsHeld.end());
      if (itsLimit == 0 || Total() <= itsLimit)
      {
         return;
      }
      const std::vector<std::size_t> aWanted = itsWidths;
      const std::vector<std::size_t> aValues = Widest(itsHeld.begin() + 1, itsHeld.end());
      std::vector<std::size_t> aLeast;
      for (std::size_t i = 0; i < itsWidths.size(); ++i)
      {
         const std::size_t aHeading = std::min(itsWidths[i], kLeastWidth);
         itsWidths[i] = std::max(aValues[i], aHeading);
         aLeast.push_back(itsNames[i].ends_with("UID") ? itsWidths[i] : aHeading);
      }
      itsIsList = !Shrink(aLeast);
      Grow(aWanted);
   }

   // The widest column gives way first. False when it is not enough.
   bool Shrink(const std::vector<std::size_t>& theLeast)
   {
      while (Total() > itsLimit)
      {
         std::size_t aWidest = itsWidths.size();
         for (std::size_t i = 0; i < itsWidths.size(); ++i)
         {
            const bool isFree = itsWidths[i] > theLeast[i];
            aWidest = isFree && (aWidest == itsWidths.size() || itsWidths[i] > itsWidths[aWidest]) ? i : aWidest;
         }
         if (aWidest == itsWidths.size())
         {
            return false;
         }
         --itsWidths[aWidest];
      }
      return true;
   }

   // What room is left goes to the headings, a character each in turn.
   void Grow(const std::vector<std::size_t>& theWanted)
   {
      for (bool hasGrown = true; hasGrown;)
      {
         hasGrown = false;
         for (std::size_t i = 0; i < itsWidths.size() && Total() < itsLimit; ++i)
         {
            const bool isCut = itsWidths[i] < theWanted[i];
            itsWidths[i] += isCut;
            hasGrown = hasGrown || isCut;
         }
      }
   }

   std::size_t Total() const
   {
      return std::accumulate(itsWidths.begin(), itsWidths.end(), kGap * (itsWidths.size() - 1));
   }

   using Row = std::vector<Cells>::const_iterator;
   std::vector<std::size_t> Widest(Row theBegin, Row theEnd) const
   {
      std::vector<std::size_t> aWidths(itsNames.size());
      for (Row aRow = theBegin; aRow != theEnd; ++aRow)
      {
         std::transform(
             aRow->begin(), aRow->end(), aWidths.begin(), aWidths.begin(),
             [](const std::string& theCell, std::size_t theWidth) { return std::max(theWidth, WidthOf(theCell)); });
      }
      return aWidths;
   }

   void WriteLine(const Cells& theCells)
   {
      if (itsIsList)
      {
         WriteList(theCells);
         return;
      }
      std::string aLine;
      for (std::size_t i = 0; i < theCells.size(); ++i)
      {
         const std::string aCell = OnOneLine(theCells[i]);
         const bool isUID = itsNames[i].ends_with("UID") && theCells[i] != itsNames[i];
         const bool isCut = itsLimit != 0 && !isUID;
         aLine += isCut || WidthOf(aCell) <= itsWidths[i] ? Fitted(aCell, itsWidths[i]) : aCell;
         aLine += std::string(kGap, ' ');
      }
      aLine.erase(aLine.find_last_not_of(' ') + 1);
      itsOutput << aLine << "\n";
   }

   // Values that are empty are left out.
   void WriteList(const Cells& theCells)
   {
      std::size_t aWidth = 0;
      for (const std::string& aName : itsNames)
      {
         aWidth = std::max(aWidth, WidthOf(aName));
      }
      itsOutput << (itsHasListed ? "\n" : "");
      itsHasListed = true;
      for (std::size_t i = 0; i < theCells.size(); ++i)
      {
         if (!theCells[i].empty())
         {
            itsOutput << Fitted(itsNames[i], aWidth + kGap) << OnOneLine(theCells[i]) << "\n";
         }
      }
   }

   const std::size_t itsLimit; // characters of a line; 0 for none
   Cells itsNames;
   std::vector<Cells> itsHeld; // the names first
   std::vector<std::size_t> itsWidths;
   bool itsHasWidths = false;
   bool itsIsList = false; // as the table is too wide
   bool itsHasListed = false;
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
