// What the tests of the DIMSE messages share: services of a given SOP class, and command sets that were received.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "support/CommandBytes.h"
#include "support/Elements.h"
#include "support/PDUBytes.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dictionary/UID.h"

// A service of that SOP class, or of none.
template <class Message>
struct ServiceOf final : Message
{
   explicit ServiceOf(const std::string& theClass) : itsClass(theClass) {}
   int GetUID(UID& theUID) const override
   {
      theUID.Set(itsClass);
      return !itsClass.empty();
   }
   std::string itsClass;
};

// Of numbers by element, and a SOP class in the element theClassTag.
inline DICOMCommandObject Command(const std::vector<std::pair<UINT32, UINT16>>& theNumbers,
                                  const std::string& theClass = "", UINT32 theClassTag = 0x0002)
{
   DICOMCommandObject aCommand;
   for (const auto& [aTag, aValue] : theNumbers)
   {
      aCommand.Push(NumberElement(aTag, VRCode::US, aValue));
   }
   if (!theClass.empty())
   {
      aCommand.Push(BytesElement(theClassTag, VRCode::UI, theClass));
   }
   return aCommand;
}

// The command set alone in its PDU, and with the data set behind it.
inline std::string CommandPDV(const std::string& theElements)
{
   return PDUBytes::PDV(1, 3, CommandBytes::CommandSet(theElements));
}
inline std::string Alone(const std::string& theElements)
{
   return PDUBytes::PData(CommandPDV(theElements));
}
inline std::string With(const std::string& theDataset, const std::string& theElements)
{
   return PDUBytes::PData(CommandPDV(theElements) + PDUBytes::PDV(1, 2, theDataset));
}
