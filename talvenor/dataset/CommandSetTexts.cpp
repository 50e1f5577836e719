#include "talvenor/dataset/CommandSetTexts.h"

#include <algorithm>
#include <iterator>

namespace
{
struct NumberText
{
   UINT16 itsNumber;
   std::string_view itsText;
};

// PS3.7 E.1-1. A response is its request with the high bit set. Rows in ascending order.
constexpr NumberText kCommandFields[] = {
    {0x0001, "C-Store Request"},   {0x0010, "C-Get Request"},     {0x0020, "C-Find Request"},
    {0x0021, "C-Move Request"},    {0x0030, "C-Echo Request"},    {0x0100, "N-EventReport Request"},
    {0x0110, "N-Get Request"},     {0x0120, "N-Set Request"},     {0x0130, "N-Action Request"},
    {0x0140, "N-Create Request"},  {0x0150, "N-Delete Request"},  {0x0FFF, "C-Cancel Request"},
    {0x8001, "C-Store Response"},  {0x8010, "C-Get Response"},    {0x8020, "C-Find Response"},
    {0x8021, "C-Move Response"},   {0x8030, "C-Echo Response"},   {0x8100, "N-EventReport Response"},
    {0x8110, "N-Get Response"},    {0x8120, "N-Set Response"},    {0x8130, "N-Action Response"},
    {0x8140, "N-Create Response"}, {0x8150, "N-Delete Response"},
};

// PS3.7 annex C, and the status codes that the storage and the query/retrieve service share (PS3.4 annexes B and C).
// Rows in ascending order.
constexpr NumberText kStatuses[] = {
    {0x0000, "Success"},
    {0x0105, "No such attribute"},
    {0x0106, "Invalid attribute value"},
    {0x0107, "Attribute list error"},
    {0x0110, "Processing failure"},
    {0x0111, "Duplicate SOP Instance"},
    {0x0112, "No such object instance"},
    {0x0113, "No such event type"},
    {0x0114, "No such argument"},
    {0x0115, "Invalid argument value"},
    {0x0116, "Attribute value out-of-range"},
    {0x0117, "Invalid UID (encoding rule violation)"},
    {0x0118, "No such SOP class"},
    {0x0119, "SOP class - SOP instance mismatch"},
    {0x0120, "Missing attribute"},
    {0x0121, "Missing attribute value"},
    {0x0122, "Refused: SOP class not supported"},
    {0x0210, "Duplicate invocation"},
    {0x0211, "Unrecognized operation"},
    {0x0212, "Mistyped argument"},
    {0x0213, "Resource limitation"},
    {0xA700, "Refused: Out of resources."},
    {0xA701, "Refused: Unable to calculate number of matches"},
    {0xA702, "Refused: Unable to perform sub-operations"},
    {0xA801, "Refused: Move destination unknown"},
    {0xA900, "Failed: Identifier does not match SOP class."},
    {0xB000, "Warning: Sub-operations complete - one or more failures (or warnings)"},
    {0xC000, "Failed: Unable to process"},
    {0xFE00, "Cancelled"},
    {0xFF00, "Pending"},
    {0xFF01, "Pending (Warning: one or more keys not supported)"},
};

static_assert(std::ranges::is_sorted(kCommandFields, {}, &NumberText::itsNumber));
static_assert(std::ranges::is_sorted(kStatuses, {}, &NumberText::itsNumber));

template <std::size_t Count>
std::string_view Find(const NumberText (&theTable)[Count], UINT16 theNumber, std::string_view theDefault)
{
   const NumberText* aRow = std::ranges::lower_bound(theTable, theNumber, {}, &NumberText::itsNumber);
   return aRow != std::end(theTable) && aRow->itsNumber == theNumber ? aRow->itsText : theDefault;
}
} // namespace

std::string_view CommandFieldText(UINT16 theCommandField)
{
   return Find(kCommandFields, theCommandField, "Unrecognized command");
}

std::string_view DataSetTypeText(UINT16 theDataSetType)
{
   return theDataSetType == 0x0101 ? "no dataset included" : "dataset included";
}

std::string_view StatusText(UINT16 theStatus)
{
   const UINT16 aStatus = (theStatus & 0xF000) == 0xC000 ? UINT16{0xC000} : theStatus;
   return Find(kStatuses, aStatus, "Unrecognized status code (check SOP-class specific values in part 4)");
}
