// The two kinds of message that presentation data values carry (PS3.8 E.2): the vocabulary of the PDV streams.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

class TALVENOR_API PDVMessageType
{
public:
   enum MessageType
   {
      NoMessage = 0, // not set, nothing read
      CommandMessage = 1,
      DataMessage = 2
   };

   // "COMMAND", "DATA" or "Invalid Message Type (" with the number and ")".
   static RWCString MessageTypeToString(int theType);

   static constexpr UINT32 kItemLengthSize = 4;
   static constexpr UINT32 kHeaderSize = 6; // item length, presentation context ID, message control header

   // Bits of the message control header.
   static constexpr unsigned char kCommandBit = 0x01;
   static constexpr unsigned char kLastFragmentBit = 0x02;
};
