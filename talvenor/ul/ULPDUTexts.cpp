#include "talvenor/ul/ULPDUTexts.h"

#include <cassert>
#include <iterator>

#include "talvenor/ul/PDUTypes.h"

namespace
{
constexpr char kWithTypes[] = "::Read: incorrect PDU type (";
constexpr char kWithoutTypes[] = "::Read: incorrect PDU type";
constexpr char kWrongLength[] = "::ReadDynamic: invalid PDU length";

// PS3.8 9.3.1. In the order of the types; P-DATA-TF has streams of its own.
constexpr ULPDUTexts kPDUs[] = {
    {"AAssociateRQPDU", kWithTypes, "::ReadDynamic: invalid item length", TN_ITEM_LENGTH_MISMATCH,
     "::Write(): Sending Association Request: ", "::Write(): Association Request Sent OK", nullptr,
     "::ReadDynamic(): Association Request Received: "},
    {"AAssociateACPDU", kWithTypes, kWrongLength, TN_PDU_LENGTH_MISMATCH, nullptr, nullptr,
     "::ReadDynamic(): Reading PDU Body", "::ReadDynamic(): Association Accept Received: "},
    {"AAssociateRJPDU", kWithTypes, kWrongLength, TN_PDU_LENGTH_MISMATCH, nullptr,
     "::Write(): Association Reject Sent: ", nullptr, "::ReadDynamic(): Association Reject Received: "},
    {},
    {"AReleaseRQPDU", kWithoutTypes, kWrongLength, TN_PDU_LENGTH_MISMATCH, nullptr, nullptr, nullptr, nullptr},
    {"AReleaseRPPDU", kWithTypes, kWrongLength, TN_PDU_LENGTH_MISMATCH, nullptr, nullptr, nullptr, nullptr},
    {"AAbortRQPDU", kWithoutTypes, "::Read: invalid PDU length", TN_PDU_LENGTH_MISMATCH,
     "::Write(): sending AAbortRQPDU: ", nullptr, nullptr, "::Read(): read AAbortRQPDU: "},
};
static_assert(std::size(kPDUs) == PDUTypes::AAbortRQ);
} // namespace

const ULPDUTexts& TextsOfULPDU(unsigned char theType)
{
   assert(PDUTypes::IsPDUType(theType) && theType != PDUTypes::PDataTF);
   return kPDUs[theType - 1];
}
