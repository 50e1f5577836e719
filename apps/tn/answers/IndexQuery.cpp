#include "apps/tn/answers/IndexQuery.h"

#include "apps/tn/base/Tags.h"
#include "apps/tn/base/ValueText.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/VRType.h"

namespace
{
constexpr UINT32 kSpecificCharacterSet = 0x00080005;
} // namespace

IndexQuery::IndexQuery(SQLiteDatabase& theIndex, const QueryPlan& thePlan) : itsPlan(thePlan)
{
   theIndex.Define("matches", [this](std::int64_t theMatcher, std::string_view theText, std::string_view theTerms) {
      return Matches(theMatcher, theText, theTerms);
   });
   itsStatement.emplace(theIndex, thePlan.MakeStatement());
   int aNumber = 0;
   for (const std::string& aParameter : thePlan.GetParameters())
   {
      itsStatement->Bind(++aNumber, aParameter);
   }
}

std::unique_ptr<DICOMDataObject> IndexQuery::Next()
{
   return itsStatement->Step() ? MakeMatch() : nullptr;
}

bool IndexQuery::Matches(std::int64_t theMatcher, std::string_view theText, std::string_view theTerms)
{
   const QueryPlan::Matcher& aMatcher = itsPlan.GetMatchers()[static_cast<std::size_t>(theMatcher)];
   return aMatcher.itsMatcher.Matches(IsEncodedType(aMatcher.itsType)
                                          ? FindCharacterSet(theTerms).ToUTF8(theText, aMatcher.itsType == VRCode::PN)
                                          : std::string(theText));
}

const CharacterSet& IndexQuery::FindCharacterSet(std::string_view theTerms)
{
   const auto aPlace = itsCharacterSets.find(theTerms);
   return aPlace != itsCharacterSets.end()
              ? aPlace->second
              : itsCharacterSets.try_emplace(std::string(theTerms), theTerms).first->second;
}

// The levels may be in different sets, as they come from different instances: then all is answered in UTF-8.
std::unique_ptr<DICOMDataObject> IndexQuery::MakeMatch()
{
   auto aMatch = std::make_unique<DICOMDataObject>();
   const bool isUTF8 = !HasOneCharacterSet();
   const std::string aSet = isUTF8 ? "ISO_IR 192" : itsStatement->GetText(0);
   if (!aSet.empty())
   {
      aMatch->Push(MakeElement(kSpecificCharacterSet, VRCode::CS, aSet).release());
   }
   Fill(*aMatch, itsPlan.GetAnswers(), isUTF8);
   return aMatch;
}

void IndexQuery::Fill(DICOMDataObject& theMatch, const std::vector<Answer>& theAnswers, bool theIsUTF8)
{
   for (const Answer& anAnswer : theAnswers)
   {
      if (anAnswer.itsType == VRCode::SQ)
      {
         auto aSequence = std::make_unique<SequenceVR>(GroupOf(anAnswer.itsTag), ElementOf(anAnswer.itsTag));
         if (!anAnswer.itsItem.empty())
         {
            auto anItem = std::make_unique<DICOMDataObject>();
            Fill(*anItem, anAnswer.itsItem, theIsUTF8);
            aSequence->AddSequenceItem(anItem.release());
         }
         theMatch.Push(aSequence.release());
         continue;
      }
      const std::string aText = theIsUTF8 && IsEncodedType(anAnswer.itsType) ? UTF8Of(anAnswer) : TextOf(anAnswer);
      theMatch.Push(MakeElement(anAnswer.itsTag, anAnswer.itsType, aText).release());
   }
}

std::string IndexQuery::TextOf(const Answer& theAnswer) const
{
   return theAnswer.itsColumn < 0 ? theAnswer.itsText : itsStatement->GetText(theAnswer.itsColumn);
}

std::string IndexQuery::UTF8Of(const Answer& theAnswer)
{
   return FindCharacterSet(itsStatement->GetText(static_cast<int>(theAnswer.itsLevel)))
       .ToUTF8(TextOf(theAnswer), theAnswer.itsType == VRCode::PN);
}

bool IndexQuery::HasOneCharacterSet() const
{
   const std::string aFirst = itsStatement->GetText(0);
   for (int aLevel = 1; aLevel <= static_cast<int>(itsPlan.GetLevel().itsLevel); ++aLevel)
   {
      if (itsStatement->GetText(aLevel) != aFirst)
      {
         return false;
      }
   }
   return true;
}
