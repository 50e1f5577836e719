// The lines of tn frames: one for each frame, in columns or as JSON objects.
#pragma once

#include <ostream>
#include <string>

#include "talvenor/foundation/BasicTypes.h"

class BasicOffsetTable;

class FrameLister
{
public:
   // Lists offsets, lengths and fragments or, with theTable, the entries of the offset table in the data beside those
   // that the frames call for. theTable is borrowed; theIsTable says that tables are wanted though there is none.
   FrameLister(std::ostream& theOutput, bool theIsJson, bool theIsTable, const BasicOffsetTable* theTable)
       : itsOutput(theOutput), itsIsJson(theIsJson), itsIsTable(theIsTable), itsTable(theTable)
   {}

   // theFirst and theCount tell the fragments, from 0. For native pixel data theCount is 0.
   void Add(INT64 theOffset, UINT64 theLength, UINT32 theFirst, UINT32 theCount);

   INT32 GetCount() const { return itsCount; }

   // Entries of the table that differ from what the frames call for.
   INT32 GetDifferences() const { return itsDifferences; }

private:
   void AddEntry(INT64 theOffset);
   void AddJson(INT64 theOffset, UINT64 theLength, UINT32 theFirst, UINT32 theCount);
   void AddJsonEntry(INT64 theOffset);
   bool Differs(INT64 theOffset) const;

   std::ostream& itsOutput;
   bool itsIsJson;
   bool itsIsTable;
   const BasicOffsetTable* itsTable;
   INT32 itsCount = 0;
   INT32 itsDifferences = 0;
};
