#include <algorithm>

#include "talvenor/dictionary/UID.h"
#include "talvenor/ul/PDUInputStream.h"
#include "talvenor/ul/PDUOutputStream.h"
#include "talvenor/ul/ULUID.h"

UID::UID(const ULUID& theUID)
{
   Set(theUID, -1);
}

bool UID::operator==(const ULUID& theUID) const
{
   return *this == static_cast<const char*>(theUID);
}

int UID::Read(PDUInputStream& theStream, unsigned int theLength)
{
   Clear();
   char aText[kMaximumLength];
   if (theLength > kMaximumLength || theStream.DULRead(reinterpret_cast<unsigned char*>(aText), theLength) != theLength)
   {
      return 0;
   }
   std::copy(aText, aText + theLength, itsText);
   itsSize = theLength + (theLength & 1);
   return 1;
}

int UID::Write(PDUOutputStream& theStream, unsigned int theLength) const
{
   if (theLength > kMaximumLength || theLength % 2 != 0)
   {
      return 0;
   }
   theStream.Write(reinterpret_cast<const unsigned char*>(itsText), theLength);
   return 1;
}
