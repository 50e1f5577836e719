#include "talvenor/ul/PDVMessageType.h"

RWCString PDVMessageType::MessageTypeToString(int theType)
{
   switch (theType)
   {
   case CommandMessage: return "COMMAND";
   case DataMessage: return "DATA";
   default: return "Invalid Message Type (" + std::to_string(theType) + ")";
   }
}
