#include "talvenor/ul/ULFailure.h"

RWCString WrongTypeText(unsigned int theReceived, unsigned int theExpected)
{
   const auto asHex = [](unsigned int theNumber) {
      constexpr char kDigits[] = "0123456789abcdef";
      RWCString aText;
      do
      {
         aText.insert(aText.begin(), kDigits[theNumber % 16]);
         theNumber /= 16;
      } while (theNumber != 0);
      return "0x" + aText;
   };
   return asHex(theReceived) + ") should be " + asHex(theExpected);
}
