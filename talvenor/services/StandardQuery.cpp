#include "talvenor/services/StandardQuery.h"

#include <memory>
#include <utility>

#include "talvenor/foundation/TNTrace.h"
#include "talvenor/services/QueryAnswer.h"
#include "talvenor/services/QueryExchange.h"
#include "talvenor/services/ServiceRequest.h"

namespace
{
void LogError(PDU_Service& theService, const RWCString& theText)
{
   theService.SetResultCode(TN_INTERNAL_ERROR);
   theService.SetSystemErrorCode(0);
   LogEntry anEntry(gTNErrorLog);
   anEntry << "StandardQuery::Read: " << theText << "\n";
}
} // namespace

StandardQuery::~StandardQuery() = default;

int StandardQuery::GetUID(UID& theUID) const
{
   return uGetUID(theUID);
}

int StandardQuery::Write(PDU_Service& theService, DICOMDataObject& theIdentifier)
{
   const QueryExchange anExchange = {
       [&] { return CFindRQ::Write(theService, theIdentifier); },
       [&](const DICOMCommandObject& theResponse, DICOMDataObject& theMatch) {
          return CFindRSP::Read(theResponse, theService, theMatch);
       },
       [&](DICOMCommandObject& theResponse, DICOMDataObject& theMatch, int theProgress) {
          CFindProgressCallback(theService, theResponse, theMatch, theProgress);
       },
       true,
   };
   return anExchange.Run(theService, theIdentifier.GetEndian());
}

int StandardQuery::Read(PDU_Service& theService, const DICOMCommandObject& theCommand, UINT16& theStatus,
                        RWCString& theErrorComment, unsigned int& theMatchCount)
{
   theStatus = QueryStatus::kSuccess;
   theErrorComment.clear();
   theMatchCount = 0;
   UID aSOPClass;
   if (!IsForProvider(*this, theCommand, theService, aSOPClass))
   {
      return 0;
   }
   const InformationModel aModel = FindQueryModel(aSOPClass);
   if (aModel == NoInformationModel)
   {
      LogError(theService, " query model unknown for SOP class UID = " + aSOPClass.ToString());
      return 0;
   }
   DICOMDataObject anIdentifier(theCommand.GetEndian());
   if (!CFindRQ::Read(theCommand, theService, anIdentifier))
   {
      return 0;
   }

   QueryAnswer anAnswer;
   int isWhole = 1;
   if (anAnswer.Ask(*this, theService, aModel, anIdentifier))
   {
      theMatchCount = static_cast<unsigned int>(anAnswer.itsMatches.size());
      isWhole = SendMatches(theService, theCommand, anAnswer);
   }
   theStatus = anAnswer.itsStatus;
   theErrorComment = anAnswer.itsComment;
   return isWhole && CFindRSP::Write(theService, theCommand, theStatus, theErrorComment, anAnswer.itsOffending);
}

// Leaves in theAnswer what the final response has to tell; 0 when there is none to send any more.
int StandardQuery::SendMatches(PDU_Service& theService, const DICOMCommandObject& theCommand, QueryAnswer& theAnswer)
{
   if (theAnswer.itsStatus == QueryStatus::kSuccess)
   {
      theAnswer.ForgetExplanation();
   }
   const UINT16 aStatus =
       theAnswer.itsStatus == QueryStatus::kPendingWarning ? QueryStatus::kPendingWarning : QueryStatus::kPending;
   for (std::size_t i = 0; i < theAnswer.itsMatches.size(); ++i)
   {
      const std::unique_ptr<DICOMDataObject> aMatch(std::exchange(theAnswer.itsMatches[i], nullptr));
      if (aMatch == nullptr)
      {
         return AnswerNullMatch(theService, theCommand, theAnswer, i);
      }
      if (!CFindRSP::Write(theService, theCommand, aStatus, theAnswer.itsComment, theAnswer.itsOffending, *aMatch))
      {
         return 0;
      }
   }
   theAnswer.itsStatus = QueryStatus::kSuccess;
   theAnswer.ForgetExplanation();
   return 1;
}

// A fault of the host: the peer must not believe that it has all matches.
int StandardQuery::AnswerNullMatch(PDU_Service& theService, const DICOMCommandObject& theCommand,
                                   QueryAnswer& theAnswer, std::size_t theIndex)
{
   theAnswer.itsStatus = QueryStatus::kInternalError;
   theAnswer.itsComment = "Internal program error at CFind service provider.";
   CFindRSP::Write(theService, theCommand, theAnswer.itsStatus, theAnswer.itsComment, theAnswer.itsOffending);
   LogError(theService, " null pointer in response list at index " + std::to_string(theIndex));
   return 0;
}
