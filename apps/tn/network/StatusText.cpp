#include "apps/tn/network/StatusText.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <iterator>

#include "talvenor/dataset/CommandSetTexts.h"

namespace
{
struct StatusRow
{
   StatusService itsService;
   UINT16 itsFirst;
   UINT16 itsLast;
   const char* itsText;
};

// What the services add to the general statuses of PS3.7 annex C, which the library has texts for but for a few. Single
// numbers stand before the range that they are in.
constexpr StatusRow kRows[] = {
    {StatusService::Storage, 0x0000, 0x0000, "stored"},
    {StatusService::Storage, 0xA700, 0xA7FF, "refused: out of resources"},
    {StatusService::Storage, 0xA900, 0xA9FF, "refused: the data set does not match its SOP class"},
    {StatusService::Storage, 0xB000, 0xB000, "stored with a warning: data elements were coerced"},
    {StatusService::Storage, 0xB006, 0xB006, "stored with a warning: elements were discarded"},
    {StatusService::Storage, 0xB007, 0xB007, "stored with a warning: the data set does not match its SOP class"},
    {StatusService::Storage, 0xC000, 0xCFFF, "refused: the peer cannot understand it"},
    {StatusService::Find, 0x0000, 0x0000, "complete"},
    {StatusService::Find, 0xA700, 0xA700, "refused: out of resources"},
    {StatusService::Find, 0xA900, 0xA900, "failed: the identifier does not match its SOP class"},
    {StatusService::Find, 0xC000, 0xCFFF, "failed: unable to process"},
    {StatusService::Find, 0xFE00, 0xFE00, "cancelled"},
    {StatusService::Find, 0xFF00, 0xFF00, "pending"},
    {StatusService::Find, 0xFF01, 0xFF01, "pending: some optional keys are not supported"},
    {StatusService::Move, 0x0000, 0x0000, "complete"},
    {StatusService::Move, 0xA701, 0xA701, "refused: out of resources, the number of matches is not known"},
    {StatusService::Move, 0xA702, 0xA702, "refused: out of resources, the sub-operations cannot be performed"},
    {StatusService::Move, 0xA801, 0xA801, "refused: the move destination is not known"},
    {StatusService::Move, 0xA900, 0xA900, "failed: the identifier does not match its SOP class"},
    {StatusService::Move, 0xB000, 0xB000, "complete with a warning: one or more sub-operations failed"},
    {StatusService::Move, 0xC000, 0xCFFF, "failed: unable to process"},
    {StatusService::Move, 0xFE00, 0xFE00, "cancelled"},
    {StatusService::Move, 0xFF00, 0xFF00, "pending"},
    {StatusService::Any, 0x0001, 0x0001, "warning: optional attributes that were asked for are not supported"},
    {StatusService::Any, 0x0123, 0x0123, "no such action"},
    {StatusService::Any, 0x0124, 0x0124, "refused: not authorized"},
};

// PS3.7 C.1.1 to C.3: the classes of status by their numbers; what is none of these is a failure.
struct KindRow
{
   UINT16 itsFirst;
   UINT16 itsLast;
   StatusKind itsKind;
};
constexpr KindRow kKinds[] = {
    {0x0000, 0x0000, StatusKind::Success}, {0x0001, 0x0001, StatusKind::Warning},
    {0x0107, 0x0107, StatusKind::Warning}, {0x0116, 0x0116, StatusKind::Warning},
    {0xB000, 0xBFFF, StatusKind::Warning}, {0xFE00, 0xFE00, StatusKind::Cancelled},
    {0xFF00, 0xFF01, StatusKind::Pending},
};

const StatusRow* FindRow(StatusService theService, UINT16 theStatus)
{
   const auto aRow = std::find_if(std::begin(kRows), std::end(kRows), [&](const StatusRow& theRow) {
      return theRow.itsService == theService && theStatus >= theRow.itsFirst && theStatus <= theRow.itsLast;
   });
   return aRow != std::end(kRows) ? aRow : nullptr;
}

// Whether the library has a text for it. 7FFF is the status of nothing.
bool HasGeneralText(UINT16 theStatus)
{
   return StatusText(theStatus) != StatusText(0x7FFF);
}

// "Refused: Out of resources." as part of a sentence; "SOP class" stays.
std::string GeneralText(UINT16 theStatus)
{
   if (!HasGeneralText(theStatus))
   {
      return "a status that the standard does not list";
   }
   std::string aText(StatusText(theStatus));
   const std::size_t aColon = aText.find(": ");
   for (const std::size_t aBegin : {std::size_t{0}, aColon == std::string::npos ? 0 : aColon + 2})
   {
      if (std::islower(static_cast<unsigned char>(aText[aBegin + 1])))
      {
         aText[aBegin] = static_cast<char>(std::tolower(static_cast<unsigned char>(aText[aBegin])));
      }
   }
   aText.resize(aText.find_last_not_of('.') + 1);
   return aText;
}
} // namespace

StatusKind KindOfStatus(UINT16 theStatus)
{
   const auto aRow = std::find_if(std::begin(kKinds), std::end(kKinds), [theStatus](const KindRow& theRow) {
      return theStatus >= theRow.itsFirst && theStatus <= theRow.itsLast;
   });
   return aRow != std::end(kKinds) ? aRow->itsKind : StatusKind::Failure;
}

std::string DescribeStatus(StatusService theService, UINT16 theStatus)
{
   const StatusRow* aRow = FindRow(theService, theStatus);
   aRow = aRow != nullptr ? aRow : FindRow(StatusService::Any, theStatus);
   char aNumber[16];
   std::snprintf(aNumber, sizeof aNumber, " (%04XH)", unsigned{theStatus});
   return (aRow != nullptr ? aRow->itsText : GeneralText(theStatus)) + aNumber;
}

bool IsListedStatus(UINT16 theStatus)
{
   return HasGeneralText(theStatus) || std::any_of(std::begin(kRows), std::end(kRows), [=](const StatusRow& theRow) {
             return theStatus >= theRow.itsFirst && theStatus <= theRow.itsLast;
          });
}

bool IsOutOfResources(UINT16 theStatus)
{
   return (theStatus & 0xFF00) == 0xA700 || theStatus == 0x0213; // PS3.7 C.5.25: resource limitation
}
