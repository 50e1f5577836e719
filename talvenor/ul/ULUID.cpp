#include "talvenor/ul/ULUID.h"

#include <cstring>

#include "talvenor/dictionary/MUIDDictionary.h"
#include "talvenor/foundation/OneLine.h"
#include "talvenor/ul/PDUInputStream.h"
#include "talvenor/ul/PDUOutputStream.h"

unsigned int ULUID::GetSize() const
{
   return static_cast<unsigned int>(std::strlen(itsUID));
}

int ULUID::Read(PDUInputStream& theStream, unsigned int theLength)
{
   const int isRead = itsUID.Read(theStream, theLength);
   itsUID.SetLength(GetSize()); // nothing of what stood behind a NUL goes out again
   return isRead;
}

int ULUID::Write(PDUOutputStream& theStream, unsigned int theLength) const
{
   if (theLength > kMaximumLength)
   {
      return 0;
   }
   const char* const aText = itsUID;
   theStream.Write(reinterpret_cast<const unsigned char*>(aText), theLength);
   return 1;
}

RWCString ULUID::Describe() const
{
   RWCString aText = OnOneLine(ToString()) + " (" + std::to_string(GetSize()) + " bytes)";
   const MUIDDictionary* const aDictionary = itsUID.GetUIDDictionary();
   if (const auto* const anEntry = aDictionary ? aDictionary->FindUID(ToString()) : nullptr)
   {
      aText += " " + anEntry->GetDescription();
   }
   return aText;
}
