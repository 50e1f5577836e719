// Puts a media directory together (Basic Directory IOD, PS3.3 F.3): a tree of records for patients, studies, series and
// instances, laid out in the order in which one walks it.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>

#include "apps/tn/files/FileID.h"
#include "talvenor/foundation/BasicTypes.h"

class DICOMDataObject;
class InstanceHeader;
struct DirectoryRecordType;

class DirectoryBuilder
{
public:
   // What a user should know of the values that were put into the directory.
   using Warn = std::function<void(const std::string& theText)>;

   DirectoryBuilder();
   ~DirectoryBuilder();

   // Adds the record of a file and those above it that are not there yet. Patients are told apart by ID and issuer of
   // ID; without an ID by name and birth date, without a name by study. Throws std::runtime_error, and adds nothing,
   // when the instance is there already.
   void Add(const InstanceHeader& theInstance, const FileID& theFileID, const Warn& theWarn);

   struct Counts
   {
      std::size_t itsPatients, itsStudies, itsSeries, itsInstances;
   };
   const Counts& GetCounts() const { return itsCounts; }

   // The directory with every offset in place, as it is to be written with GetSourceAETitle and this SOP instance UID
   // in little endian explicit VR (see DICOMDirUtilities). Series stand in the order of their numbers, and so do their
   // instances. To be called once; throws std::runtime_error.
   std::unique_ptr<DICOMDataObject> Build(const std::string& theFileSetID, const RWCString& theSOPInstanceUID);

   static const char* GetSourceAETitle();

private:
   struct Record;

   Record& FindOrAdd(Record& theParent, const DirectoryRecordType& theType, const std::string& theKey,
                     const InstanceHeader& theInstance, const Warn& theWarn, std::size_t& theCount);
   Record& Append(Record& theParent, const DirectoryRecordType& theType, const InstanceHeader& theInstance,
                  const Warn& theWarn);

   std::unique_ptr<Record> itsRoot;                           // stands for the directory itself
   std::unordered_map<std::string, std::string> itsInstances; // SOP instance UID, file
   Counts itsCounts = {};
};
