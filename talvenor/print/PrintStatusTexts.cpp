#include "talvenor/print/PrintStatusTexts.h"

#include <algorithm>
#include <iterator>

namespace
{
struct Row
{
   UINT16 itsStatus;
   const char* itsTexts[4]; // by PrintStatusColumn; null where the operation does not know the status
};

constexpr char kNotRecognized[] = "Attribute(s) Not Recognized in Context of this SOP Class";
constexpr char kCannotDecode[] = "Cannot decode DIMSE Attribute";
constexpr char kInvalidSyntax[] = "Invalid SOP Instance UID syntax";
constexpr char kMissing[] = "Mandatory Attribute Missing";
constexpr char kNoValue[] = "Mandatory Attribute was given, but had no value";
constexpr char kNoMemoryAllocation[] = "Memory Allocation Not Supported";
constexpr char kInvalidOrUnavailable[] = "Invalid Attribute Value or Memory Requested Unavailable";
constexpr char kEmptyPage[] = "Film Session Contains No Images(Empty Page)";

// PS3.4 H.4.1.2, H.4.2.2 and H.4.3.1.2, PS3.7 C.
constexpr Row kRows[] = {
    {0x0106,
     {kInvalidOrUnavailable, kInvalidOrUnavailable, "Invalid Attribute",
      "Invalid Attribute or Memory Requested Unavailable"}},
    {0x0107, {kNotRecognized, kNotRecognized}},
    {0x0110, {kCannotDecode, kCannotDecode}},
    {0x0111, {"Specified SOP Instance UID already in use"}},
    {0x0112, {nullptr, "Specified SOP Instance does not exist"}},
    {0x0117, {kInvalidSyntax, kInvalidSyntax}},
    {0x0120, {kMissing, kMissing}},
    {0x0121, {kNoValue, kNoValue}},
    {0x0213,
     {"Resource Limitation: Can't Create Session or Film", nullptr, "Requested Resource Temporarily Unavailable",
      "Requested Memory Allocation Temporarily Unavailable"}},
    {0xB600, {kNoMemoryAllocation, kNoMemoryAllocation, kNoMemoryAllocation}},
    {0xB601, {nullptr, nullptr, "Film Session Printing(Collation) Not Supported"}},
    {0xB602, {nullptr, nullptr, kEmptyPage}},
    {0xB603, {nullptr, nullptr, kEmptyPage}},
    {0xC600, {nullptr, nullptr, "Film Session Contains No Film Instances"}},
    {0xC601, {nullptr, nullptr, "Print Queue Full"}},
    {0xC603, {nullptr, nullptr, "Specified Magnification Produces Image Size Larger Than Image Box Size"}},
    {0xC604, {nullptr, nullptr, "Multiple Images Assigned to Image Position(Image Collision)"}},
    {0xC605, {nullptr, nullptr, nullptr, "Insufficient memory in printer to store image"}},
    {0xC606, {nullptr, nullptr, nullptr, "More than one VOI LUT Box contained in the image"}},
};

constexpr bool IsWarning(UINT16 theStatus)
{
   return theStatus == 0x0107 || (theStatus >= 0xB600 && theStatus <= 0xB603);
}
} // namespace

PrintStatusDescription DescribePrintStatus(PrintStatusColumn theColumn, UINT16 theStatus)
{
   const auto aRow = std::find_if(std::begin(kRows), std::end(kRows),
                                  [theStatus](const Row& theRow) { return theRow.itsStatus == theStatus; });
   const char* const aText = aRow != std::end(kRows) ? aRow->itsTexts[static_cast<int>(theColumn)] : nullptr;
   if (aText == nullptr)
   {
      return {"Unknown Status Returned", ErrorDescription::UnknownStatus};
   }
   return {aText, IsWarning(theStatus) ? ErrorDescription::Warning : ErrorDescription::Failure};
}
