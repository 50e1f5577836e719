#include "apps/tn/answers/QueryRole.h"

#include <algorithm>
#include <chrono>
#include <iterator>

#include "apps/tn/answers/IndexQuery.h"
#include "apps/tn/answers/QueryAnswers.h"
#include "apps/tn/archive/Archive.h"
#include "apps/tn/base/Tags.h"
#include "apps/tn/node/NodeLog.h"
#include "talvenor/association/PDU_Service.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dataset/DICOMDataObject.h"

namespace
{
// PS3.4 C.4.1.1.4
constexpr UINT16 kSOPClassNotSupported = 0x0122;
constexpr UINT16 kOutOfResources = 0xA700;
constexpr UINT16 kIdentifierDoesNotMatch = 0xA900;

struct Service
{
   const char* itsSOPClass;
   IndexModel itsModel;
};

constexpr Service kServices[] = {
    {"1.2.840.10008.5.1.4.1.2.1.1", IndexModel::kPatientRoot},
    {"1.2.840.10008.5.1.4.1.2.2.1", IndexModel::kStudyRoot},
    {"1.2.840.10008.5.1.4.1.2.3.1", IndexModel::kPatientStudyOnly},
};

const Service* FindService(const RWCString& theSOPClass)
{
   const auto* const aService =
       std::find_if(std::begin(kServices), std::end(kServices),
                    [&](const Service& theService) { return theSOPClass == theService.itsSOPClass; });
   return aService == std::end(kServices) ? nullptr : aService;
}
} // namespace

bool QueryRole::Accepts(const RWCString& theAbstractSyntax) const
{
   return FindService(theAbstractSyntax) != nullptr;
}

int QueryRole::Serve(PDU_Service& theService, DICOMCommandObject& theCommand)
{
   QueryAnswers anAnswers(theService, theCommand);
   DICOMDataObject anIdentifier;
   if (!anAnswers.ReadIdentifier(anIdentifier))
   {
      return 0;
   }
   ++itsQueries;
   const RWCString aClass = TextOf(theCommand, CommandTag::kAffectedSOPClassUID);
   const Service* const aRequested = FindService(aClass); // whatever the context is for
   if (aRequested == nullptr || aClass != theService.GetCurrentPresentationContext()->GetAbstractSyntaxUID().ToString())
   {
      itsLog.Line(theService, "query refused: the SOP class is not that of the context");
      return anAnswers.Refuse(kSOPClassNotSupported, "the SOP class is not that of the context");
   }
   try
   {
      return Answer(anAnswers, aRequested->itsModel, anIdentifier);
   }
   catch (const BadIdentifier& aFault)
   {
      itsLog.Line(theService, std::string("query refused: ") + aFault.what());
      return anAnswers.Refuse(kIdentifierDoesNotMatch, aFault.what());
   }
   catch (const SQLiteFailure& aFault)
   {
      itsIndex.reset();
      itsLog.Line(theService, std::string("query refused: the index: ") + aFault.what());
      return anAnswers.Refuse(kOutOfResources, std::string("the index: ") + aFault.what());
   }
}

int QueryRole::Answer(QueryAnswers& theAnswers, IndexModel theModel, const DICOMDataObject& theIdentifier)
{
   const QueryPlan aPlan(theModel, theIdentifier, itsRules);
   itsArchive.GetIndex().Flush(); // what cannot be added now is not found: the rest is
   if (!itsIndex)
   {
      itsIndex.emplace(itsArchive.GetIndexPath(), IndexDatabase::kBusySeconds);
   }
   Search(*itsIndex, aPlan, theAnswers);
   itsMatches += theAnswers.GetCount();
   return theAnswers.Finish();
}

// Neither a peer that has cancelled nor one that has stored what is endlessly compared keeps a processor busy for long.
void QueryRole::Search(SQLiteDatabase& theIndex, const QueryPlan& thePlan, QueryAnswers& theAnswers)
{
   using Clock = std::chrono::steady_clock;
   constexpr std::chrono::seconds kLongestWait{60}; // for a match
   Clock::time_point aLast = Clock::now();
   theIndex.SetWatch([&] { return !theAnswers.IsOver() && Clock::now() - aLast < kLongestWait; });
   try
   {
      IndexQuery aQuery(theIndex, thePlan);
      while (const auto aMatch = aQuery.Next())
      {
         if (!theAnswers.SendMatch(*aMatch, thePlan.KnowsAllKeys()))
         {
            break;
         }
         aLast = Clock::now();
      }
      theIndex.SetWatch({});
   }
   catch (const SQLiteFailure& aFault)
   {
      if (!aFault.IsInterrupted())
      {
         throw;
      }
      if (!theAnswers.IsOver())
      {
         throw SQLiteFailure("the search takes too long", 0);
      }
      theIndex.SetWatch({});
   }
}

std::string QueryRole::Describe() const
{
   return itsQueries == 0 ? ""
                          : std::to_string(itsQueries) + (itsQueries == 1 ? " query with " : " queries with ") +
                                std::to_string(itsMatches) + (itsMatches == 1 ? " match" : " matches");
}
