// The records of a media directory: which type of record stands for which class of instances, and what it says of them
// (PS3.3 annex F).
#pragma once

#include <span>

#include "talvenor/foundation/BasicTypes.h"

// An attribute of instances that their record repeats.
struct DirectoryKey
{
   enum Need
   {
      kValue,   // type 1: made up when the instance has none
      kElement, // type 2: may be empty
      kIfThere  // types 1C and 3
   };

   // What a missing value is made up from.
   enum Substitute
   {
      kNothing, // the key is left out
      kText,    // itsText
      kDate,    // another date of the instance
      kTime,    // another time of the instance
      kNumber   // the place among the records of the same level, behind itsText
   };

   UINT32 itsTag;
   UINT16 itsVR;
   Need itsNeed;
   Substitute itsSubstitute = kNothing;
   const char* itsText = nullptr;
};

struct DirectoryRecordType
{
   const char* itsName; // (0004,1430)
   std::span<const DirectoryKey> itsKeys;
   bool itsStandsAtTheRoot = false; // it belongs to no patient

   // The highest tag that the record, or those above it, take a key from.
   UINT32 GetLastTag() const;
};

extern const DirectoryRecordType kPatientRecord;
extern const DirectoryRecordType kStudyRecord;
extern const DirectoryRecordType kSeriesRecord;
extern const DirectoryRecordType kImageRecord;

// The type for a SOP class other than those of images; null for these, and for classes that are not known.
const DirectoryRecordType* FindRecordType(const RWCString& theSOPClassUID);
