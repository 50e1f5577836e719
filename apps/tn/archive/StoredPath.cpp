#include "apps/tn/archive/StoredPath.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

#include "apps/tn/archive/InstanceKeys.h"
#include "apps/tn/files/DirectoryRecordTypes.h"
#include "talvenor/dictionary/MUIDDictionary.h"

namespace
{
// Classes of instances that belong to no patient, besides those that stand at the root of a media directory: defined
// procedure protocols, protocol approvals, inventories.
constexpr const char* kClassesWithoutStudy[] = {
    "1.2.840.10008.5.1.4.1.1.200.1",
    "1.2.840.10008.5.1.4.1.1.200.3",
    "1.2.840.10008.5.1.4.1.1.200.7",
    "1.2.840.10008.5.1.4.1.1.201.1",
};

bool MayLackStudy(const std::string& theSOPClass)
{
   if (std::find(std::begin(kClassesWithoutStudy), std::end(kClassesWithoutStudy), theSOPClass) !=
       std::end(kClassesWithoutStudy))
   {
      return true;
   }
   const DirectoryRecordType* const aType = FindRecordType(theSOPClass);
   return aType != nullptr ? aType->itsStandsAtTheRoot
                           : MUIDDictionary::GetDefaultUIDDictionary().FindUID(theSOPClass) == nullptr;
}

constexpr std::size_t kLongestUID = 64;

const std::string& Checked(const std::string& theUID, const char* theName)
{
   if (!StoredPath::IsUID(theUID))
   {
      throw std::invalid_argument(std::string(theName) + (theUID.empty() ? " is missing" : " is not valid"));
   }
   return theUID;
}
} // namespace

bool StoredPath::IsUID(std::string_view theText)
{
   if (theText.empty() || theText.size() > kLongestUID)
   {
      return false;
   }
   std::size_t aStart = 0; // of a number
   for (std::size_t i = 0; i <= theText.size(); ++i)
   {
      if (i == theText.size() || theText[i] == '.')
      {
         const std::size_t aLength = i - aStart;
         if (aLength == 0 || (aLength > 1 && theText[aStart] == '0'))
         {
            return false;
         }
         aStart = i + 1;
      }
      else if (theText[i] < '0' || theText[i] > '9')
      {
         return false;
      }
   }
   return true;
}

StoredPath StoredPath::Of(const InstanceKeys& theKeys)
{
   return theKeys[Key::kStudy].empty() && theKeys[Key::kSeries].empty() && MayLackStudy(theKeys[Key::kSOPClass])
              ? WithoutStudy(theKeys[Key::kSOPClass], theKeys[Key::kSOPInstance])
              : OfStudy(theKeys[Key::kStudy], theKeys[Key::kSeries], theKeys[Key::kSOPInstance]);
}

StoredPath StoredPath::OfStudy(const std::string& theStudy, const std::string& theSeries,
                               const std::string& theInstance)
{
   return {Checked(theStudy, "Study Instance UID"), Checked(theSeries, "Series Instance UID"),
           Checked(theInstance, "SOP Instance UID")};
}

StoredPath StoredPath::WithoutStudy(const std::string& theSOPClass, const std::string& theInstance)
{
   return {"no-study", Checked(theSOPClass, "SOP Class UID"), Checked(theInstance, "SOP Instance UID")};
}
