#include "apps/tn/answers/WorklistRole.h"

#include "apps/tn/answers/IdentifierMatcher.h"
#include "apps/tn/answers/QueryAnswers.h"
#include "apps/tn/answers/Worklist.h"
#include "apps/tn/node/NodeLog.h"
#include "talvenor/dataset/DICOMDataObject.h"

namespace
{
constexpr UINT16 kIdentifierDoesNotMatch = 0xA900; // PS3.4 K.4.1.1.4
} // namespace

bool WorklistRole::Accepts(const RWCString& theSOPClass) const
{
   return theSOPClass == "1.2.840.10008.5.1.4.31";
}

int WorklistRole::Serve(PDU_Service& theService, DICOMCommandObject& theCommand)
{
   QueryAnswers anAnswers(theService, theCommand);
   DICOMDataObject anIdentifier;
   if (!anAnswers.ReadIdentifier(anIdentifier))
   {
      return 0;
   }
   ++itsQueries;
   try
   {
      const IdentifierMatcher aMatcher(anIdentifier);
      for (const Worklist::Item& anItem : itsWorklist.GetItems())
      {
         if (aMatcher.Matches(*anItem) && !anAnswers.SendMatch(*aMatcher.MakeAnswer(*anItem)))
         {
            break;
         }
      }
   }
   catch (const ValueMatcher::BadKey& aFault)
   {
      itsLog.Line(theService, std::string("worklist query refused: ") + aFault.what());
      return anAnswers.Refuse(kIdentifierDoesNotMatch, aFault.what());
   }
   itsMatches += anAnswers.GetCount();
   return anAnswers.Finish();
}

std::string WorklistRole::Describe() const
{
   return itsQueries == 0
              ? ""
              : std::to_string(itsQueries) + (itsQueries == 1 ? " worklist query with " : " worklist queries with ") +
                    std::to_string(itsMatches) + (itsMatches == 1 ? " match" : " matches");
}
