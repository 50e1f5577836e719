#include "talvenor/services/QueryExchange.h"

#include "talvenor/association/PDU_Service.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dimse/CommandElement.h"
#include "talvenor/services/QueryProgress.h"
#include "talvenor/services/QueryStatus.h"

int QueryExchange::Run(PDU_Service& theService, TNEndian::EndianType theEndian) const
{
   DICOMCommandObject aResponse;
   DICOMDataObject anIdentifier(theEndian);
   itsTell(aResponse, anIdentifier, QueryBegins);
   int aResult = 0;
   if (itsSend())
   {
      aResult = ReadResponses(theService, aResponse, anIdentifier);
   }
   else
   {
      itsTell(aResponse, anIdentifier, QueryNotSent);
   }
   itsTell(aResponse, anIdentifier, QueryEnds);
   return aResult;
}

int QueryExchange::ReadResponses(PDU_Service& theService, DICOMCommandObject& theResponse,
                                 DICOMDataObject& theIdentifier) const
{
   for (;;)
   {
      theResponse.Reset();
      theIdentifier.Reset();
      if (!theService.Read(theResponse) || !itsReadIdentifier(theResponse, theIdentifier))
      {
         itsTell(theResponse, theIdentifier, QueryNoResponse);
         return 0;
      }
      UINT16 aStatus = 0;
      if (!theResponse.GetUINT16(0, CommandElement::Status, aStatus))
      {
         itsTell(theResponse, theIdentifier, QueryNoStatus);
         return 0;
      }
      const int aProgress = ProgressOf(aStatus);
      itsTell(theResponse, theIdentifier, aProgress);
      if (aProgress == QuerySucceeded || aProgress == QueryFailed)
      {
         return aProgress == QuerySucceeded;
      }
   }
}

int QueryExchange::ProgressOf(UINT16 theStatus) const
{
   switch (theStatus)
   {
   case QueryStatus::kSuccess: return QuerySucceeded;
   case QueryStatus::kPending: return QueryPending;
   case QueryStatus::kPendingWarning: return itsHasPendingWarnings ? QueryPendingWarning : QueryFailed;
   default: return QueryFailed;
   }
}
