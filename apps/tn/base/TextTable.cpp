#include "apps/tn/base/TextTable.h"

#include <algorithm>
#include <numeric>

#include "talvenor/foundation/OneLine.h"

namespace
{
constexpr std::size_t kMostHeld = 100;
constexpr std::size_t kLeastWidth = 4; // of a column that is cut
constexpr std::size_t kGap = 2;

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
} // namespace

void TextTable::Add(const Cells& theCells)
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

void TextTable::Finish()
{
   if (!itsNames.empty())
   {
      WriteHeld();
   }
}

void TextTable::WriteHeld()
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
void TextTable::SetWidths()
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
bool TextTable::Shrink(const std::vector<std::size_t>& theLeast)
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
void TextTable::Grow(const std::vector<std::size_t>& theWanted)
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

std::size_t TextTable::Total() const
{
   return std::accumulate(itsWidths.begin(), itsWidths.end(), kGap * (itsWidths.size() - 1));
}

std::vector<std::size_t> TextTable::Widest(Row theBegin, Row theEnd) const
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

void TextTable::WriteLine(const Cells& theCells)
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
void TextTable::WriteList(const Cells& theCells)
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
