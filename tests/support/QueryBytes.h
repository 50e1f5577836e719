// Composes the messages of C-FIND and C-MOVE as they stand on the wire (PS3.7 9.3.2, 9.3.4).
#pragma once

#include <string>

#include "support/CommandBytes.h"
#include "support/PDUBytes.h"

namespace QueryBytes
{
using CommandBytes::Element;
using CommandBytes::US;

inline std::string Even(std::string theText, char thePad)
{
   return theText.size() % 2 == 0 ? theText : theText + thePad;
}

inline std::string Command(const std::string& theElements, unsigned char theContextID = 1)
{
   return PDUBytes::PDV(theContextID, 3, CommandBytes::CommandSet(theElements));
}

// One with a data set; theDestination only where there is one.
inline std::string Request(unsigned int theField, const std::string& theSOPClass, const std::string& theIdentifier,
                           const std::string& theDestination = "")
{
   const std::string aDestination = theDestination.empty() ? "" : Element(0x0600, Even(theDestination, ' '));
   return PDUBytes::PData(Command(Element(0x0002, Even(theSOPClass, '\0')) + US(0x0100, theField) + US(0x0110, 5) +
                                  aDestination + US(0x0800, 0x0102)) +
                          PDUBytes::PDV(1, 2, theIdentifier));
}

// The elements of a response, behind which theMore stands.
inline std::string Response(unsigned int theField, const std::string& theSOPClass, unsigned int theStatus,
                            bool hasIdentifier, const std::string& theMore)
{
   return Command(Element(0x0002, Even(theSOPClass, '\0')) + US(0x0100, theField) + US(0x0120, 5) +
                  US(0x0800, hasIdentifier ? 0x0102 : 0x0101) + US(0x0900, theStatus) + theMore);
}

inline std::string Comment(const std::string& theText)
{
   return theText.empty() ? "" : Element(0x0902, Even(theText, ' '));
}
} // namespace QueryBytes
