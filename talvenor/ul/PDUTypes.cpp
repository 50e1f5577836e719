#include "talvenor/ul/PDUTypes.h"

#include <iterator>

namespace
{
// PS3.8 9.3.1, from type 1 on.
constexpr const char* kNames[] = {
    "AAssociateRQ", "AAssociateAC", "AAssociateRJ", "PDataTF", "AReleaseRQ", "AReleaseRP", "AAbortRQ",
};
static_assert(std::size(kNames) == PDUTypes::AAbortRQ);
} // namespace

RWCString PDUTypes::PDUTypeToString(unsigned int theType)
{
   return IsPDUType(theType) ? kNames[theType - 1] : "Invalid PDU Type (" + std::to_string(theType) + ")";
}
