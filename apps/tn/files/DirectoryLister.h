// Prints the records of a media directory as the tree that their offsets make of them, one line a record: for people,
// or as JSON objects with their depth.
//
// Directories come from anywhere: offsets may lead nowhere, in circles or to one record from two. Each record is
// printed once, in time and memory that grow with their number; files are named and not opened.
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/file/DICOMDirUtilities.h"
#include "talvenor/foundation/BasicTypes.h"

class DICOMDataObject;

class DirectoryLister
{
public:
   // Called with each thing that is wrong with the directory.
   using Fault = std::function<void(const std::string& theText)>;

   // Everything is borrowed. theDirectory and theOffsets are those of DICOMDirUtilities::LoadFromStream.
   DirectoryLister(const DICOMDataObject& theDirectory, const DICOMDirUtilities::Offsets& theOffsets,
                   std::ostream& theOutput, Fault theFault);

   enum class Form
   {
      Tree,
      TreeWithOffsets, // each line begins with that of its record
      Json
   };

   void List(Form theForm);

private:
   struct Step; // to a record

   void FollowLinks(UINT32 theFirstOffset);
   void ListRecord(std::size_t theRecord, std::size_t theDepth);
   std::string LineOf(std::size_t theRecord, std::size_t theDepth) const;
   void WriteJson(std::size_t theRecord, std::size_t theDepth) const;
   void ListTheRest();
   void CheckLastRoot();
   void CheckFile(std::size_t theRecord);
   bool Find(UINT32 theOffset, std::size_t& theRecord) const;
   UINT32 OffsetOf(std::size_t theRecord) const { return static_cast<UINT32>(itsOffsets[theRecord]); }
   const DICOMDataObject& RecordAt(std::size_t theRecord) const { return *itsRecords[theRecord]; }

   const DICOMDataObject& itsDirectory;
   const DICOMDirUtilities::Offsets& itsOffsets; // ascending
   std::vector<const DICOMDataObject*> itsRecords;
   std::vector<bool> itsIsListed;
   std::ostream& itsOutput;
   Fault itsFault;
   Form itsForm = Form::Tree;
   UINT32 itsLastRoot = 0; // the offset of the last record on the top level
};
