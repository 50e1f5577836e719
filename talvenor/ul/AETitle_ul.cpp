#include <algorithm>

#include "talvenor/foundation/AETitle.h"
#include "talvenor/ul/PDUInputStream.h"
#include "talvenor/ul/PDUOutputStream.h"

int AETitle::Read(PDUInputStream& theStream)
{
   *this = AETitle();
   unsigned char aTitle[itsLength];
   if (theStream.DULRead(aTitle, itsLength) != itsLength)
   {
      return 0;
   }
   std::copy(std::begin(aTitle), std::end(aTitle), itsCharacters.begin());
   return 1;
}

int AETitle::Write(PDUOutputStream& theStream) const
{
   theStream.Write(reinterpret_cast<const unsigned char*>(itsCharacters.data()), itsLength);
   return 1;
}
