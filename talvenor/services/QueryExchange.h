// The requester's side of C-FIND and C-MOVE: a request, and responses until one is final (PS3.7 9.1.2, 9.1.4). Not part
// of the library's interface.
#pragma once

#include <functional>

#include "talvenor/foundation/BasicTypes.h"
#include "talvenor/io/TNEndian.h"

class DICOMCommandObject;
class DICOMDataObject;
class PDU_Service;

struct QueryExchange
{
   std::function<int()> itsSend;
   std::function<int(const DICOMCommandObject&, DICOMDataObject&)> itsReadIdentifier; // checks the message, too
   std::function<void(DICOMCommandObject&, DICOMDataObject&, int)> itsTell;           // how far it is
   bool itsHasPendingWarnings;                                                        // whether 0xFF01 is pending

   // 1 when the final response tells success. Identifiers are read in theEndian.
   int Run(PDU_Service& theService, TNEndian::EndianType theEndian) const;

private:
   int ReadResponses(PDU_Service& theService, DICOMCommandObject& theResponse, DICOMDataObject& theIdentifier) const;
   int ProgressOf(UINT16 theStatus) const;
};
