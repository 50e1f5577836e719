#include "talvenor/dictionary/MAttributeTag.h"
#include "talvenor/dictionary/MDDEntry.h"
#include "talvenor/foundation/Exceptions.h"

namespace
{
// The last parenthesis closes the one around the tag; the first stays open. Hosts compare with this text.
RWCString TypingMessage(const char* theWhere, const MAttributeTag& theTag, const RWCString& thePassedType,
                        UINT16 theDictionaryType)
{
   return RWCString(theWhere != nullptr ? theWhere : "") + ": Data type passed (" + thePassedType +
          " is incompatible with dictionary type " + MDDEntry::UShortToTypeString(theDictionaryType) +
          " for element (" + theTag.AsNumericString() + ")";
}
} // namespace

VRTypingError::VRTypingError(const char* theWhere, UINT16 theGroup, UINT16 theElement, const RWCString& thePassedType,
                             UINT16 theDictionaryType)
    : ConcreteException(
          TypingMessage(theWhere, MAttributeTag(theGroup, theElement), thePassedType, theDictionaryType).c_str())
{}
