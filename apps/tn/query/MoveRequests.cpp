#include "apps/tn/query/MoveRequests.h"

#include <algorithm>
#include <stdexcept>

#include "apps/tn/base/JsonLine.h"

namespace
{
// How many are asked for at once: their list stays well below the 32 KB that a value has.
constexpr std::size_t kMostTogether = 200;

constexpr const char* kPlurals[] = {"patients", "studies", "series", "instances"};

void CheckUID(const std::string& theUID)
{
   constexpr std::size_t kLongest = 64;
   const bool isUID = theUID.size() <= kLongest && theUID.find_first_not_of(".0123456789") == std::string::npos;
   if (!isUID)
   {
      throw std::invalid_argument(theUID + " is no UID: digits and full stops, 64 at most");
   }
}

// Whether a patient ID names one patient: in an identifier a wild card would move what was never named.
bool IsPatient(const std::string& thePatient)
{
   return thePatient.find_first_of("*?\\") == std::string::npos;
}

MoveRequest MakeRequest(const std::string& thePatient, const std::string& theStudy, const std::string& theSeries,
                        const std::string& theInstance)
{
   if (!theInstance.empty())
   {
      return {QueryLevel::Image, thePatient, theStudy, theSeries, {theInstance}};
   }
   if (!theSeries.empty())
   {
      return {QueryLevel::Series, thePatient, theStudy, "", {theSeries}};
   }
   if (!theStudy.empty())
   {
      return {QueryLevel::Study, thePatient, "", "", {theStudy}};
   }
   if (!IsPatient(thePatient))
   {
      throw std::invalid_argument(thePatient + " is no patient ID: it has a wild card or a backslash in it");
   }
   if (!thePatient.empty())
   {
      return {QueryLevel::Patient, "", "", "", {thePatient}};
   }
   throw std::invalid_argument("there is no StudyInstanceUID, SeriesInstanceUID, SOPInstanceUID or PatientID in it");
}

// Series and images go together with their neighbours, studies and patients each on their own.
bool BelongTogether(const MoveRequest& theOne, const MoveRequest& theOther)
{
   return theOne.itsLevel == theOther.itsLevel && theOne.itsLevel >= QueryLevel::Series &&
          theOne.itsPatient == theOther.itsPatient && theOne.itsStudy == theOther.itsStudy &&
          theOne.itsSeries == theOther.itsSeries;
}

bool Has(const MoveRequest& theRequest, const MoveRequest& theOther)
{
   return theRequest.itsLevel == theOther.itsLevel && std::find(theRequest.itsUIDs.begin(), theRequest.itsUIDs.end(),
                                                                theOther.itsUIDs.front()) != theRequest.itsUIDs.end();
}

std::string MemberOf(const std::map<std::string, std::string>& theMembers, const char* theName)
{
   const auto aMember = theMembers.find(theName);
   return aMember != theMembers.end() ? aMember->second : "";
}
} // namespace

std::string MoveRequest::Text() const
{
   const auto aLevel = static_cast<std::size_t>(itsLevel);
   if (itsUIDs.size() == 1)
   {
      return (itsLevel == QueryLevel::Image ? "instance" : QueryLevelNames()[aLevel]) + " " + itsUIDs.front();
   }
   const std::string& aWhole = itsLevel == QueryLevel::Image ? itsSeries : itsStudy;
   const auto anUpper = static_cast<std::size_t>(itsLevel) - 1;
   return std::to_string(itsUIDs.size()) + " " + kPlurals[aLevel] +
          (aWhole.empty() ? "" : " of " + QueryLevelNames()[anUpper] + " " + aWhole);
}

std::vector<std::string> MoveRequest::Keys(QueryLevel theFirst) const
{
   std::string aList;
   for (const std::string& aUID : itsUIDs)
   {
      aList += (aList.empty() ? "" : "\\") + aUID;
   }
   const std::pair<QueryLevel, std::string> kKeys[] = {
       {QueryLevel::Patient, "PatientID=" + (itsLevel == QueryLevel::Patient ? aList : itsPatient)},
       {QueryLevel::Study, "StudyInstanceUID=" + (itsLevel == QueryLevel::Study ? aList : itsStudy)},
       {QueryLevel::Series, "SeriesInstanceUID=" + (itsLevel == QueryLevel::Series ? aList : itsSeries)},
       {QueryLevel::Image, "SOPInstanceUID=" + aList},
   };
   std::vector<std::string> aKeys;
   for (const auto& [aLevel, aKey] : kKeys)
   {
      if (aLevel >= theFirst && aLevel <= itsLevel && aKey.back() != '=')
      {
         aKeys.push_back(aKey);
      }
   }
   return aKeys;
}

void MoveRequests::Add(const std::string& thePatient, const std::string& theStudy, const std::string& theSeries,
                       const std::string& theInstance)
{
   CheckUID(theStudy);
   CheckUID(theSeries);
   CheckUID(theInstance);
   const bool isNamed = !theStudy.empty() || !theSeries.empty() || !theInstance.empty();
   const MoveRequest aRequest =
       MakeRequest(isNamed && !IsPatient(thePatient) ? "" : thePatient, theStudy, theSeries, theInstance);
   if (!itsRequests.empty() && BelongTogether(itsRequests.back(), aRequest) &&
       itsRequests.back().itsUIDs.size() < kMostTogether)
   {
      if (!Has(itsRequests.back(), aRequest))
      {
         itsRequests.back().itsUIDs.push_back(aRequest.itsUIDs.front());
      }
   }
   else if (itsRequests.empty() || !Has(itsRequests.back(), aRequest))
   {
      itsRequests.push_back(aRequest);
   }
}

void MoveRequests::AddJsonLines(std::istream& theInput)
{
   std::size_t aNumber = 0;
   for (std::string aLine; std::getline(theInput, aLine);)
   {
      ++aNumber;
      if (aLine.find_first_not_of(" \t\r") == std::string::npos)
      {
         continue;
      }
      try
      {
         const auto aMembers = ReadJsonLine(aLine);
         Add(MemberOf(aMembers, "PatientID"), MemberOf(aMembers, "StudyInstanceUID"),
             MemberOf(aMembers, "SeriesInstanceUID"), MemberOf(aMembers, "SOPInstanceUID"));
      }
      catch (const std::invalid_argument& anError)
      {
         throw std::invalid_argument("standard input, line " + std::to_string(aNumber) + ": " + anError.what() +
                                     "; tn find --json writes what is wanted");
      }
   }
}
