#include "talvenor/dictionary/BasicTransferSyntaxKind.h"

#include <iterator>

namespace
{
// By number. The texts stand in UID dictionary files.
constexpr std::string_view kTexts[] = {"", "TSLEI", "TSLEE", "TSBEE"};
static_assert(std::size(kTexts) == BasicTransferSyntaxKind::BigEndianExplicit + 1);
} // namespace

BasicTransferSyntaxKind::BasicTransferSyntaxType
BasicTransferSyntaxKind::StringToBasicTransferSyntaxType(std::string_view theText)
{
   for (std::size_t aKind = 1; aKind < std::size(kTexts); ++aKind)
   {
      if (kTexts[aKind] == theText)
      {
         return static_cast<BasicTransferSyntaxType>(aKind);
      }
   }
   return UnknownBasicType;
}

RWCString BasicTransferSyntaxKind::BasicTransferSyntaxTypeToString(BasicTransferSyntaxType theType)
{
   const auto aKind = static_cast<unsigned int>(theType);
   return aKind < std::size(kTexts) ? RWCString(kTexts[aKind]) : RWCString();
}
