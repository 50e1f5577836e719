// An instance is not stored. Carries what its sender is told (PS3.4 B.2.3, PS3.7 annex C).
#pragma once

#include <stdexcept>
#include <string>

#include "talvenor/dictionary/MAttributeTag.h"
#include "talvenor/foundation/BasicTypes.h"

namespace StoreStatus
{
constexpr UINT16 kDuplicateInstance = 0x0111;
constexpr UINT16 kInvalidInstance = 0x0117;
constexpr UINT16 kSOPClassNotSupported = 0x0122;
constexpr UINT16 kOutOfResources = 0xA700;
constexpr UINT16 kDoesNotMatchSOPClass = 0xA900;
constexpr UINT16 kCannotUnderstand = 0xC000;
} // namespace StoreStatus

class StoreRefusal : public std::runtime_error
{
public:
   StoreRefusal(UINT16 theStatus, const std::string& theText, RWTValOrderedVector<MAttributeTag> theOffending = {})
       : std::runtime_error(theText), itsStatus(theStatus), itsOffending(std::move(theOffending))
   {}

   UINT16 GetStatus() const { return itsStatus; }
   const RWTValOrderedVector<MAttributeTag>& GetOffending() const { return itsOffending; }

private:
   UINT16 itsStatus;
   RWTValOrderedVector<MAttributeTag> itsOffending;
};
