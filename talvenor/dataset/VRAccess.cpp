#include "talvenor/dataset/VRAccess.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <optional>
#include <string_view>

#include "talvenor/dataset/VR.h"

namespace
{
// The text of the element without its padding (PS3.5 6.2): empty for an empty element, none when the value is absent.
std::optional<std::string_view> TextOf(const VR* theVR)
{
   if (theVR == nullptr || (theVR->GetData() == nullptr && theVR->GetLength() != 0))
   {
      return std::nullopt;
   }
   const std::string_view aText(reinterpret_cast<const char*>(theVR->GetData()), theVR->GetLength());
   return aText.substr(0, aText.find_last_not_of(std::string_view(" \0", 2)) + 1);
}

void CopyTerminated(std::string_view theText, char* theBuffer)
{
   *std::copy(theText.begin(), theText.end(), theBuffer) = '\0';
}
} // namespace

VRAccess::~VRAccess() = default;

UINT16 VRAccess::GetType() const
{
   return itsVR != nullptr ? itsVR->GetTypeCode() : 0;
}

UINT32 VRAccess::GetLength() const
{
   return itsVR != nullptr ? itsVR->GetLength() : 0;
}

int VRAccess::GetString(RWCString& theText) const
try
{
   const auto aText = TextOf(itsVR);
   if (!aText)
   {
      return 0;
   }
   theText.assign(*aText);
   return 1;
}
catch (const std::bad_alloc&)
{
   return 0;
}

int VRAccess::GetString(char* theBuffer, unsigned int theCapacity) const
{
   const auto aText = TextOf(itsVR);
   if (!aText || aText->size() >= theCapacity)
   {
      return 0;
   }
   CopyTerminated(*aText, theBuffer);
   return 1;
}

int VRAccess::GetStringCopy(char*& theText) const
{
   const auto aText = TextOf(itsVR);
   char* aCopy = aText ? new (std::nothrow) char[aText->size() + 1] : nullptr;
   if (aCopy == nullptr)
   {
      return 0;
   }
   CopyTerminated(*aText, aCopy);
   theText = aCopy;
   return 1;
}

int VRAccess::GetBytes(unsigned char* theBuffer, unsigned int theCapacity) const
{
   if (itsVR == nullptr || itsVR->GetData() == nullptr || itsVR->GetLength() > theCapacity)
   {
      return 0;
   }
   std::memcpy(theBuffer, itsVR->GetData(), itsVR->GetLength());
   return 1;
}

int VRAccess::GetBytesCopy(unsigned char*& theBytes) const
{
   if (itsVR == nullptr || itsVR->GetData() == nullptr)
   {
      return 0;
   }
   auto* aCopy = new (std::nothrow) unsigned char[itsVR->GetLength()];
   if (aCopy == nullptr)
   {
      return 0;
   }
   std::memcpy(aCopy, itsVR->GetData(), itsVR->GetLength());
   theBytes = aCopy;
   return 1;
}
