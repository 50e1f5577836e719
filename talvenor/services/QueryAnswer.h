// What a host answers to a query or a retrieve: the matches, which are destroyed with this, and how it went. Not part
// of the library's interface.
#pragma once

#include <cstddef>

#include "talvenor/association/PDU_Service.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/services/InformationModel.h"
#include "talvenor/services/QueryStatus.h"

struct QueryAnswer
{
   QueryAnswer() { itsMatches.reserve(kUsualCount); }
   ~QueryAnswer()
   {
      for (DICOMDataObject* const aMatch : itsMatches)
      {
         delete aMatch;
      }
   }
   QueryAnswer(const QueryAnswer&) = delete;
   QueryAnswer& operator=(const QueryAnswer&) = delete;

   // Asks theHost in its hook. When it fails, false, and status and comment are those to answer with.
   template <class Host>
   bool Ask(Host& theHost, const PDU_Service& theService, InformationModel theModel, DICOMDataObject& theIdentifier)
   {
      try
      {
         if (theHost.DoQuery(theIdentifier, theModel, theService.GetRemoteAddress(), itsMatches, itsStatus, itsComment,
                             itsOffending))
         {
            return true;
         }
      }
      catch (...) // whatever the host's code throws: the peer gets an answer
      {
         itsStatus = QueryStatus::kSuccess;
         ForgetExplanation();
      }
      FailWithStatus();
      return false;
   }

   void ForgetExplanation()
   {
      itsComment.clear();
      itsOffending.clear();
   }

   RWTValOrderedVector<DICOMDataObject*> itsMatches;
   UINT16 itsStatus = QueryStatus::kSuccess;
   RWCString itsComment;
   RWTValOrderedVector<MAttributeTag> itsOffending;

private:
   static constexpr std::size_t kUsualCount = 64;

   // A failure must be told as one: with success or pending the peer would believe it, or wait for ever.
   void FailWithStatus()
   {
      if (itsStatus != QueryStatus::kSuccess && itsStatus != QueryStatus::kPending &&
          itsStatus != QueryStatus::kPendingWarning)
      {
         return;
      }
      itsStatus = QueryStatus::kQueryError;
      if (itsComment.empty())
      {
         itsComment = "Query error.";
      }
   }
};
