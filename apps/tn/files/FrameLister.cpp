#include "apps/tn/files/FrameLister.h"

#include <iomanip>

#include "apps/tn/base/JsonWriter.h"
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
      itsDifferences += Differs(theOffset);
      itsIsJson ? AddJsonEntry(theOffset) : AddEntry(theOffset);
      return;
   }
   if (itsIsJson)
   {
      AddJson(theOffset, theLength, theFirst, theCount);
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
   const char* const aRemark = Differs(theOffset) ? "  differs\n" : "\n";
   itsOutput << std::setw(8) << ++itsCount << std::setw(14) << anEntry << std::setw(14) << theOffset << aRemark;
}

bool FrameLister::Differs(INT64 theOffset) const
{
   return itsTable != nullptr && itsTable->GetOffset(itsCount) != theOffset;
}

void FrameLister::AddJson(INT64 theOffset, UINT64 theLength, UINT32 theFirst, UINT32 theCount)
{
   JsonWriter aJson(itsOutput);
   aJson.BeginObject();
   aJson.Number("frame", ++itsCount);
   aJson.Number("offset", theOffset);
   aJson.Number("length", theLength);
   if (theCount != 0)
   {
      aJson.Number("firstFragment", theFirst + 1);
      aJson.Number("fragments", theCount);
   }
   aJson.EndObject();
   itsOutput << "\n";
}

void FrameLister::AddJsonEntry(INT64 theOffset)
{
   JsonWriter aJson(itsOutput);
   aJson.BeginObject();
   aJson.Number("frame", itsCount + 1);
   if (itsTable != nullptr)
   {
      aJson.Number("inTheData", itsTable->GetOffset(itsCount));
   }
   aJson.Number("built", theOffset);
   aJson.EndObject();
   itsOutput << "\n";
   ++itsCount;
}
