#include "apps/tn/network/AssociationAnswers.h"

#include <algorithm>
#include <iterator>

#include "talvenor/association/PDU_Service.h"
#include "talvenor/dictionary/MUIDDictionary.h"
#include "talvenor/dictionary/MUIDDictionaryEntry.h"

namespace
{
// PS3.8 table 9-21, and what helps.
struct RejectionText
{
   unsigned char itsSource;
   unsigned char itsReason;
   const char* itsText;
   const char* itsHelp;
};

constexpr char kSeeItsLog[] = "the log of the peer should say why";
constexpr RejectionText kRejections[] = {
    {1, 1, "no reason given", kSeeItsLog},
    {1, 2, "application context name not supported", "what listens there does not take DICOM's own context name"},
    {1, 3, "calling AE title not recognized",
     "the peer has to know the calling title, or --aet has to give one that it knows"},
    {1, 7, "called AE title not recognized", "the peer goes by another title, which has to stand before the @"},
    {2, 1, "no reason given", kSeeItsLog},
    {2, 2, "protocol version not supported", "the peer does not speak version 1 of the upper layer protocol"},
    {3, 1, "temporary congestion", "the same may work later"},
    {3, 2, "local limit exceeded", "the peer has as many associations as it allows; the same may work later"},
};

// PS3.8 table 9-18.
constexpr const char* kContextResults[] = {
    "accepted",
    "rejected by the peer's application",
    "rejected without a reason",
    "abstract syntax not supported: the peer does not offer this service under this title and port",
    "transfer syntaxes not supported: the peer takes none of those offered",
};

// PS3.8 table 9-26, source 2.
constexpr const char* kAbortReasons[] = {
    "reason not specified",       "unrecognized PDU",         "unexpected PDU",        "reserved",
    "unrecognized PDU parameter", "unexpected PDU parameter", "invalid PDU parameter",
};

template <std::size_t Count>
std::string TextAt(const char* const (&theTexts)[Count], unsigned char theIndex)
{
   return theIndex < Count ? theTexts[theIndex] : "a number without a meaning";
}

std::string SourceText(unsigned char theSource)
{
   return theSource == 1 ? "the peer's application" : theSource <= 3 ? "the peer's protocol machine" : "nobody known";
}

std::string OfferText(const PresentationContextItem& theContext)
{
   std::string aText = NameOfUID(theContext.GetAbstractSyntax().GetName().ToString());
   const char* aSeparator = " in ";
   for (const auto& aSyntax : theContext.GetTransferSyntaxList())
   {
      aText += aSeparator + NameOfUID(aSyntax->GetUID().ToString());
      aSeparator = " or ";
   }
   return aText;
}

std::string AnswerText(const PDU_Service& theService, const PresentationContextItem& theContext)
{
   const unsigned char anID = theContext.GetPresentationContextID();
   const auto& anAnswers = theService.AAssociateACPDU::GetAcceptedContextList();
   const auto anAnswer = std::find_if(anAnswers.begin(), anAnswers.end(), [anID](const auto& theAnswer) {
      return theAnswer.PresentationContextID() == anID;
   });
   if (anAnswer == anAnswers.end())
   {
      return "not answered";
   }
   if (anAnswer->GetResult() == 0)
   {
      return "accepted in " + NameOfUID(anAnswer->GetTransferSyntax().GetUID().ToString()) +
             ", which was not offered or not with these roles";
   }
   return TextAt(kContextResults, anAnswer->GetResult()) + " (result " + std::to_string(anAnswer->GetResult()) + ")";
}
} // namespace

std::string ExplainRejection(const PDU_Service& theService)
{
   const AAssociateRJPDU& anAnswer = theService;
   const AAssociateRQPDU& aRequest = theService;
   const auto aRow = std::find_if(std::begin(kRejections), std::end(kRejections), [&](const RejectionText& theRow) {
      return theRow.itsSource == anAnswer.GetSource() && theRow.itsReason == anAnswer.GetReason();
   });
   const bool isKnown = aRow != std::end(kRejections);
   return std::string("association rejected ") + (anAnswer.GetResult() == 2 ? "for now" : "for good") + " by " +
          SourceText(anAnswer.GetSource()) + ": " + (isKnown ? aRow->itsText : "a reason without a meaning") +
          " (result " + std::to_string(anAnswer.GetResult()) + ", source " + std::to_string(anAnswer.GetSource()) +
          ", reason " + std::to_string(anAnswer.GetReason()) + ")\nit was asked as " + aRequest.GetCalledAppTitle() +
          " by " + aRequest.GetCallingAppTitle() + "; " + (isKnown ? aRow->itsHelp : kSeeItsLog);
}

std::string ExplainContexts(const PDU_Service& theService)
{
   std::string aText;
   for (const auto& aContext : theService.PresentationContextList())
   {
      aText += (aText.empty() ? "context " : "\ncontext ") + std::to_string(aContext->GetPresentationContextID()) +
               ", " + OfferText(*aContext) + ": " + AnswerText(theService, *aContext);
   }
   return aText;
}

std::string ExplainClass(const PDU_Service& theService, const std::string& theSOPClass,
                         const std::string& theTransferSyntax)
{
   std::string aText;
   for (const auto& aContext : theService.PresentationContextList())
   {
      const auto& aSyntaxes = aContext->GetTransferSyntaxList();
      const bool isMeant =
          aContext->GetAbstractSyntax().GetName().ToString() == theSOPClass &&
          (theTransferSyntax.empty() || std::any_of(aSyntaxes.begin(), aSyntaxes.end(), [&](const auto& theSyntax) {
              return theSyntax->GetUID().ToString() == theTransferSyntax;
           }));
      if (isMeant)
      {
         aText += (aText.empty() ? "" : "; ") + OfferText(*aContext) + ": " + AnswerText(theService, *aContext);
      }
   }
   return aText;
}

std::string ExplainAbort(const AAbortRQPDU& theAbort)
{
   return theAbort.GetSource() == AAbortRQPDU::AbortSourceServiceProvider
              ? "the peer aborted: " + TextAt(kAbortReasons, theAbort.GetReason()) + " (source 2, reason " +
                    std::to_string(theAbort.GetReason()) + ")"
              : "the peer's application aborted (source " + std::to_string(theAbort.GetSource()) + ", reason " +
                    std::to_string(theAbort.GetReason()) + ")";
}

std::string NameOfUID(const std::string& theUID)
{
   const MUIDDictionaryEntry* const anEntry = MUIDDictionary::GetDefaultUIDDictionary().FindUID(theUID);
   return anEntry != nullptr ? anEntry->GetDescription() + " (" + theUID + ")" : theUID;
}
