// The tables of the index of an archive: what is where, and what peers ask for. The files are the truth: all that is
// here can be read from them again.
//
//    patient   row, identity, CharacterSet and the columns of KeyLevel::kPatient
//    study     row, patient, CharacterSet, ...
//    series    row, study, CharacterSet, ...
//    instance  row, series, path, transfer_syntax, size, CharacterSet, ...
//
// Columns are called by the keywords of their attributes (InstanceKeys::GetColumns) and hold the texts of the keys, in
// the character set (0008,0005) that stands beside them. An instance without study has no series.
//
//    replacement  SOPInstanceUID, path: instances whose files are being replaced, see BeginReplacement
//
// The first instance of a patient, of a study and of a series gives the values of the level; those of later instances
// that differ change nothing here. A patient is known by ID and issuer; one without ID is another one in each study.
//
// Failures throw SQLiteFailure. One thread at a time; several objects and processes may use one file.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <unordered_map>

#include "apps/tn/archive/InstanceKeys.h"
#include "apps/tn/archive/SQLite.h"

struct IndexedInstance
{
   InstanceKeys itsKeys;
   std::string itsPath; // from the folder of the archive on
   std::string itsTransferSyntax;
   std::uint64_t itsSize = 0; // of the file, in bytes
};

class IndexDatabase
{
public:
   // How long a lock of another process is waited for.
   static constexpr int kBusySeconds = 5;

   // Opens or creates it.
   explicit IndexDatabase(const std::string& thePath);
   ~IndexDatabase();

   // The file of an instance is going to be replaced by one at thePath. To be committed before that happens: what there
   // is of the instance then can only be learnt from its files, until Add has made a row for the new one.
   void BeginReplacement(const std::string& theSOPInstanceUID, const std::string& thePath);

   // Calls theVisitor with SOP instance UID and path of those that have not come to their end. ForgetReplacements: the
   // rows agree with the files again.
   void
   ForEachReplacement(const std::function<void(const std::string& theUID, const std::string& thePath)>& theVisitor);
   void ForgetReplacements();

   // A row for the instance, in place of one with its SOP Instance UID.
   void Add(const IndexedInstance& theInstance);

   // Takes the instance out, and its series, study and patient if it was their last. False when there is none.
   bool Remove(const std::string& theSOPInstanceUID);

   // The path of the instance.
   std::optional<std::string> Find(const std::string& theSOPInstanceUID);

   // Calls theVisitor with SOP instance UID and path of every instance.
   void ForEach(const std::function<void(const std::string& theUID, const std::string& thePath)>& theVisitor);
   std::int64_t Count();

   // What is changed until Commit is kept whole or not at all. theIsSafe: it is on the disk when Commit returns.
   void Begin(bool theIsSafe = false);
   void Commit();
   void RollBack(); // of what has begun; harmless otherwise

   // Until EndReading everything is read as it is at the first reading, and none takes a lock of its own, which costs
   // as much as finding an instance. Not to be left so: while a reader reads, what others write makes the file longer.
   void BeginReading(); // harmless when it has begun
   void EndReading() noexcept;

   // Whether the index is known to agree with the files: said at an orderly end, and unsaid (on the disk) at a start.
   // Never while there are replacements.
   bool AgreesWithFiles();
   void SetAgreesWithFiles(bool theAnswer);

   // For filling a new file: nothing is safe before the end.
   void HurryUp();

private:
   struct Statements;

   std::int64_t FindOrAddSeries(const InstanceKeys& theKeys);
   std::int64_t FindOrAddStudy(const InstanceKeys& theKeys);
   std::int64_t FindOrAddPatient(const InstanceKeys& theKeys);
   void RemoveSeries(std::int64_t theSeries);

   SQLiteDatabase itsDatabase;
   bool itsIsSafe = false; // what is committed, see Begin
   std::unique_ptr<Statements> itsStatements;
   std::unordered_map<std::string, std::int64_t>
       itsSeries; // rows of those that were used of late, by study and series UID
};
