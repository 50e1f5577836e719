#include "apps/tn/files/DatasetSyntax.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "talvenor/dictionary/VRType.h"
#include "talvenor/transfer/TransferSyntaxManager.h"

namespace
{
// Deflated explicit VR little endian, and the JPIP syntaxes that are deflated too (PS3.5 A.5, A.7 and A.9).
constexpr std::string_view kDeflated[] = {"1.2.840.10008.1.2.1.99", "1.2.840.10008.1.2.4.95",
                                          "1.2.840.10008.1.2.4.205"};
// Every other one below this root is explicit VR little endian outside the pixel data.
constexpr std::string_view kStandardRoot = "1.2.840.10008.1.2.";

constexpr UINT16 kLaterVRs[] = {MakeVRCode('O', 'D'), MakeVRCode('O', 'L'), MakeVRCode('O', 'V'), MakeVRCode('S', 'V'),
                                MakeVRCode('U', 'C'), MakeVRCode('U', 'R'), MakeVRCode('U', 'V')};
} // namespace

DatasetSyntax SyntaxOf(const RWCString& theUID)
{
   using enum DatasetSyntax::Pixels;
   const TransferSyntaxType* const aType = TransferSyntaxManager::GetDefaultInstance().GetTransferSyntaxType(theUID);
   if (aType != nullptr)
   {
      return {aType->IsEncapsulated() ? Encapsulated : Native, aType->IsExplicit() != 0, aType->IsLittleEndian() != 0};
   }
   const bool isSeen = theUID.starts_with(kStandardRoot) &&
                       std::find(std::begin(kDeflated), std::end(kDeflated), theUID) == std::end(kDeflated);
   return {isSeen ? Encapsulated : Hidden, true, true};
}

std::span<const RWCString* const> NativeSyntaxes()
{
   static const RWCString* const kSyntaxes[] = {&TransferSyntaxType::TSLEExplicitUID,
                                                &TransferSyntaxType::TSLEImplicitUID,
                                                &TransferSyntaxType::TSBEExplicitUID};
   return kSyntaxes;
}

bool IsLaterVR(UINT16 theVR)
{
   return std::find(std::begin(kLaterVRs), std::end(kLaterVRs), theVR) != std::end(kLaterVRs);
}
