// A table of text for people: columns as wide as they have to be, on a terminal no wider than that.
//
// A table that would be wider has its headings and long texts cut, but never a UID; one that cannot be so narrow becomes a
// list of names and values. The widths are those of the first rows: however many there are, few are held. Text is UTF-8.
#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

class TextTable
{
public:
   using Cells = std::vector<std::string>;

   // theOutput is borrowed. theLimit is the number of characters of a line; 0 for none.
   TextTable(std::ostream& theOutput, std::size_t theLimit) : itsOutput(theOutput), itsLimit(theLimit) {}

   // The first row has the names of the columns, and says how many there are. A name that ends with UID is that of a
   // column of UIDs.
   void Add(const Cells& theCells);

   // Behind the last row: what is held back is written.
   void Finish();

private:
   using Row = std::vector<Cells>::const_iterator;

   void WriteHeld();
   void SetWidths();
   bool Shrink(const std::vector<std::size_t>& theLeast);
   void Grow(const std::vector<std::size_t>& theWanted);
   std::size_t Total() const;
   std::vector<std::size_t> Widest(Row theBegin, Row theEnd) const;
   void WriteLine(const Cells& theCells);
   void WriteList(const Cells& theCells);

   std::ostream& itsOutput;
   const std::size_t itsLimit;
   Cells itsNames;
   std::vector<Cells> itsHeld; // the names first
   std::vector<std::size_t> itsWidths;
   bool itsHasWidths = false;
   bool itsIsList = false; // as the table is too wide
   bool itsHasListed = false;
};
