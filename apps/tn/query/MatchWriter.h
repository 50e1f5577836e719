// Shows the matches of a query on standard output as they come: as a table, as comma-separated values (RFC 4180) or as
// JSON, an object a line. Text is UTF-8; nothing in it can move the cursor of a terminal.
#pragma once

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "apps/tn/query/QueryKeys.h"

class MatchWriter
{
public:
   enum class Form
   {
      Table,
      CommaSeparated,
      Json
   };

   // theOutput is borrowed. theWidth is that of the terminal which it leads to, 0 for none: a table that is wider has
   // its headings and long texts cut, but never a UID; one that cannot be so narrow becomes a list of names and values.
   static std::unique_ptr<MatchWriter> Make(Form theForm, std::ostream& theOutput,
                                            const std::vector<QueryKeys::Column>& theColumns, std::size_t theWidth = 0);
   virtual ~MatchWriter() = default;

   virtual void Write(const DICOMDataObject& theMatch) = 0;

   // Behind the last match: what is held back is written.
   virtual void Finish() {}

protected:
   explicit MatchWriter(std::ostream& theOutput) : itsOutput(theOutput) {}

   std::ostream& itsOutput;
};
