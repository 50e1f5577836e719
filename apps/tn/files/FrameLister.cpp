#include "apps/tn/files/FrameLister.h"

#include <iomanip>

#include "talvenor/pixel/BasicOffsetTable.h"

namespace
{
std::string FragmentText(UINT32 theFirst, UINT32 theCount)
{
   if (theCount == 0)
   {
      return "-";
   }
   const std::string aFirst = std::to_string(theFirst + 1);
   return theCount == 1 ? aFirst : aFirst + "-" + std::to_string(theFirst + theCount);
}
} // namespace

void FrameLister::Add(INT64 theOffset, UINT64 theLength, UINT32 theFirst, UINT32 theCount)
{
   if (itsIsTable)
   {
      AddEntry(theOffset);
      return;
   }
   if (itsCount == 0)
   {
      itsOutput << "   frame        offset        length  fragments\n";
   }
   itsOutput << std::setw(8) << ++itsCount << std::setw(14) << theOffset << std::setw(14) << theLength << "  "
             << FragmentText(theFirst, theCount) << "\n";
}

void FrameLister::AddEntry(INT64 theOffset)
{
   if (itsCount == 0)
   {
      itsOutput << "   frame   in the data         built\n";
   }
   const std::string anEntry = itsTable != nullptr ? std::to_string(itsTable->GetOffset(itsCount)) : "-";
   const std::string aBuilt = std::to_string(theOffset);
   const bool isDifferent = itsTable != nullptr && anEntry != aBuilt;
   itsDifferences += isDifferent;
   itsOutput << std::setw(8) << ++itsCount << std::setw(14) << anEntry << std::setw(14) << aBuilt
             << (isDifferent ? "  differs\n" : "\n");
}
