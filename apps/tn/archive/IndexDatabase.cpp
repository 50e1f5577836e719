#include "apps/tn/archive/IndexDatabase.h"

#include <vector>

namespace
{
constexpr int kVersion = 2; // of the tables: another one is made anew
constexpr std::size_t kMostKnownSeries = 4096;

struct Table
{
   KeyLevel itsLevel;
   const char* itsName;
   const char* itsFirst; // its own columns
   int itsFirstCount;    // without the row
   const char* itsRest;
};

constexpr Table kTables[] = {
    {KeyLevel::kPatient, "patient", "identity TEXT NOT NULL UNIQUE", 1, ""},
    {KeyLevel::kStudy, "study", "patient INTEGER NOT NULL REFERENCES patient", 1, ", UNIQUE (StudyInstanceUID)"},
    {KeyLevel::kSeries, "series", "study INTEGER NOT NULL REFERENCES study", 1, ", UNIQUE (study, SeriesInstanceUID)"},
    {KeyLevel::kInstance, "instance",
     "series INTEGER REFERENCES series, path TEXT NOT NULL, transfer_syntax TEXT NOT NULL, size INTEGER NOT NULL", 4,
     ", UNIQUE (SOPInstanceUID)"},
};

// The keys of a level, in the order of its columns: the character set first.
std::vector<std::size_t> KeysOf(KeyLevel theLevel)
{
   std::vector<std::size_t> aKeys = {Key::kCharacterSet};
   for (std::size_t i = Key::kCharacterSet + 1; i < InstanceKeys::kCount; ++i)
   {
      if (InstanceKeys::GetColumns()[i].itsLevel == theLevel)
      {
         aKeys.push_back(i);
      }
   }
   return aKeys;
}

std::string Schema()
{
   std::string aText = "CREATE TABLE state (agrees INTEGER NOT NULL); INSERT INTO state VALUES (0);\n"
                       "CREATE TABLE replacement (SOPInstanceUID TEXT PRIMARY KEY, path TEXT NOT NULL);\n";
   for (const Table& aTable : kTables)
   {
      aText += std::string("CREATE TABLE ") + aTable.itsName + " (row INTEGER PRIMARY KEY, " + aTable.itsFirst;
      std::string anIndices;
      for (const std::size_t aKey : KeysOf(aTable.itsLevel))
      {
         const KeyColumn& aColumn = InstanceKeys::GetColumns()[aKey];
         aText += std::string(", ") + aColumn.itsName + " TEXT NOT NULL";
         if (aColumn.itsIsIndexed)
         {
            anIndices += std::string("CREATE INDEX ") + aTable.itsName + "_" + aColumn.itsName + " ON " +
                         aTable.itsName + " (" + aColumn.itsName + ");\n";
         }
      }
      aText += std::string(aTable.itsRest) + ");\n" + anIndices;
   }
   return aText +
          "CREATE INDEX study_patient ON study (patient);\n"
          "CREATE INDEX instance_series ON instance (series);\n"
          "PRAGMA user_version = " +
          std::to_string(kVersion) + ";";
}

std::string InsertInto(const Table& theTable)
{
   const std::size_t aCount = static_cast<std::size_t>(theTable.itsFirstCount) + KeysOf(theTable.itsLevel).size();
   std::string aText = std::string("INSERT INTO ") + theTable.itsName + " VALUES (NULL";
   for (std::size_t i = 0; i < aCount; ++i)
   {
      aText += ", ?";
   }
   return aText + ")";
}

// A level's values, behind the columns of its own.
struct Insertion
{
   Insertion(const SQLiteDatabase& theDatabase, const Table& theTable)
       : itsStatement(theDatabase, InsertInto(theTable)), itsKeys(KeysOf(theTable.itsLevel)),
         itsFirst(theTable.itsFirstCount + 1)
   {}

   SQLiteStatement& Bind(const InstanceKeys& theKeys)
   {
      int aParameter = itsFirst;
      for (const std::size_t aKey : itsKeys)
      {
         itsStatement.Bind(aParameter++, theKeys[aKey]);
      }
      return itsStatement;
   }

   SQLiteStatement itsStatement;
   std::vector<std::size_t> itsKeys;
   int itsFirst;
};

// The length in front keeps an ID from running into the issuer.
std::string IdentityOf(const InstanceKeys& theKeys)
{
   const std::string& anID = theKeys[Key::kPatientID];
   return anID.empty() ? "study " + theKeys[Key::kStudy]
                       : std::to_string(anID.size()) + " " + anID + " " + theKeys[Key::kIssuer];
}

std::optional<std::int64_t> RowOf(SQLiteStatement& theStatement)
{
   std::optional<std::int64_t> aRow;
   if (theStatement.Step() && !theStatement.IsNull(0))
   {
      aRow = theStatement.GetNumber(0);
   }
   theStatement.Reset();
   return aRow;
}
} // namespace

struct IndexDatabase::Statements
{
   explicit Statements(const SQLiteDatabase& theDatabase) : itsDatabase(theDatabase) {}

   const SQLiteDatabase& itsDatabase;
   Insertion itsPatients{itsDatabase, kTables[0]};
   Insertion itsStudies{itsDatabase, kTables[1]};
   Insertion itsSeries{itsDatabase, kTables[2]};
   Insertion itsInstances{itsDatabase, kTables[3]};
   SQLiteStatement itsPatient{itsDatabase, "SELECT row FROM patient WHERE identity = ?"};
   SQLiteStatement itsStudy{itsDatabase, "SELECT row FROM study WHERE StudyInstanceUID = ?"};
   SQLiteStatement itsOneSeries{itsDatabase, "SELECT row FROM series WHERE study = ? AND SeriesInstanceUID = ?"};
   SQLiteStatement itsPath{itsDatabase, "SELECT path FROM instance WHERE SOPInstanceUID = ?"};
   SQLiteStatement itsInstance{itsDatabase, "SELECT row, series FROM instance WHERE SOPInstanceUID = ?"};
   SQLiteStatement itsMember{itsDatabase, "SELECT row FROM instance WHERE series = ? LIMIT 1"};
   SQLiteStatement itsRemoval{itsDatabase, "DELETE FROM instance WHERE row = ?"};
   SQLiteStatement itsUpper{itsDatabase,
                            "SELECT study.row, study.patient FROM series JOIN study ON series.study = study.row "
                            "WHERE series.row = ?"};
   SQLiteStatement itsSeriesRemoval{itsDatabase, "DELETE FROM series WHERE row = ?"};
   SQLiteStatement itsStudyRemoval{
       itsDatabase, "DELETE FROM study WHERE row = ? AND NOT EXISTS (SELECT 1 FROM series WHERE study = study.row)"};
   SQLiteStatement itsPatientRemoval{
       itsDatabase,
       "DELETE FROM patient WHERE row = ? AND NOT EXISTS (SELECT 1 FROM study WHERE patient = patient.row)"};
   SQLiteStatement itsReplacement{itsDatabase, "INSERT OR REPLACE INTO replacement VALUES (?, ?)"};
   SQLiteStatement itsReplacementRemoval{itsDatabase, "DELETE FROM replacement WHERE SOPInstanceUID = ?"};
   SQLiteStatement itsBegin{itsDatabase, "BEGIN IMMEDIATE"};
   SQLiteStatement itsReadingBegin{itsDatabase, "BEGIN DEFERRED"};
   SQLiteStatement itsCommit{itsDatabase, "COMMIT"};
};

IndexDatabase::IndexDatabase(const std::string& thePath) : itsDatabase(thePath, kBusySeconds)
{
   // NORMAL: after a power cut the last transactions may be missing, but the file is sound. See AgreesWithFiles.
   itsDatabase.Execute("PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL; PRAGMA temp_store = MEMORY");
   SQLiteStatement aVersion(itsDatabase, "PRAGMA user_version");
   aVersion.Step();
   const std::int64_t aNumber = aVersion.GetNumber(0);
   aVersion.Reset();
   if (aNumber == 0)
   {
      itsDatabase.Execute("BEGIN IMMEDIATE;" + Schema() + "COMMIT");
   }
   else if (aNumber != kVersion)
   {
      throw SQLiteFailure("it is of another version of this program", SQLiteFailure::kIsNoDatabase);
   }
   itsStatements = std::make_unique<Statements>(itsDatabase);
}

IndexDatabase::~IndexDatabase() = default;

void IndexDatabase::BeginReplacement(const std::string& theSOPInstanceUID, const std::string& thePath)
{
   itsStatements->itsReplacement.Bind(1, theSOPInstanceUID).Bind(2, thePath).Run();
}

void IndexDatabase::ForEachReplacement(const std::function<void(const std::string&, const std::string&)>& theVisitor)
{
   SQLiteStatement aStatement(itsDatabase, "SELECT SOPInstanceUID, path FROM replacement");
   while (aStatement.Step())
   {
      theVisitor(aStatement.GetText(0), aStatement.GetText(1));
   }
}

void IndexDatabase::ForgetReplacements()
{
   itsDatabase.Execute("DELETE FROM replacement");
}

void IndexDatabase::Add(const IndexedInstance& theInstance)
{
   if (Remove(theInstance.itsKeys[Key::kSOPInstance]))
   {
      itsStatements->itsReplacementRemoval.Bind(1, theInstance.itsKeys[Key::kSOPInstance]).Run();
   }
   SQLiteStatement& aStatement = itsStatements->itsInstances.Bind(theInstance.itsKeys);
   if (theInstance.itsKeys[Key::kStudy].empty())
   {
      aStatement.BindNull(1);
   }
   else
   {
      aStatement.Bind(1, FindOrAddSeries(theInstance.itsKeys));
   }
   aStatement.Bind(2, theInstance.itsPath)
       .Bind(3, theInstance.itsTransferSyntax)
       .Bind(4, static_cast<std::int64_t>(theInstance.itsSize))
       .Run();
}

std::int64_t IndexDatabase::FindOrAddSeries(const InstanceKeys& theKeys)
{
   const std::string aName = theKeys[Key::kStudy] + "/" + theKeys[Key::kSeries];
   const auto aPlace = itsSeries.find(aName);
   if (aPlace != itsSeries.end())
   {
      return aPlace->second;
   }
   const std::int64_t aStudy = FindOrAddStudy(theKeys);
   std::optional<std::int64_t> aRow = RowOf(itsStatements->itsOneSeries.Bind(1, aStudy).Bind(2, theKeys[Key::kSeries]));
   if (!aRow)
   {
      itsStatements->itsSeries.Bind(theKeys).Bind(1, aStudy).Run();
      aRow = itsDatabase.GetLastRow();
   }
   if (itsSeries.size() == kMostKnownSeries)
   {
      itsSeries.clear();
   }
   return itsSeries[aName] = *aRow;
}

std::int64_t IndexDatabase::FindOrAddStudy(const InstanceKeys& theKeys)
{
   if (const auto aRow = RowOf(itsStatements->itsStudy.Bind(1, theKeys[Key::kStudy])))
   {
      return *aRow;
   }
   const std::int64_t aPatient = FindOrAddPatient(theKeys);
   itsStatements->itsStudies.Bind(theKeys).Bind(1, aPatient).Run();
   return itsDatabase.GetLastRow();
}

std::int64_t IndexDatabase::FindOrAddPatient(const InstanceKeys& theKeys)
{
   const std::string anIdentity = IdentityOf(theKeys);
   if (const auto aRow = RowOf(itsStatements->itsPatient.Bind(1, anIdentity)))
   {
      return *aRow;
   }
   itsStatements->itsPatients.Bind(theKeys).Bind(1, anIdentity).Run();
   return itsDatabase.GetLastRow();
}

bool IndexDatabase::Remove(const std::string& theSOPInstanceUID)
{
   SQLiteStatement& anInstance = itsStatements->itsInstance.Bind(1, theSOPInstanceUID);
   if (!anInstance.Step())
   {
      anInstance.Reset();
      return false;
   }
   const std::int64_t aRow = anInstance.GetNumber(0);
   const std::int64_t aSeries = anInstance.GetNumber(1); // 0 for none
   anInstance.Reset();
   itsStatements->itsRemoval.Bind(1, aRow).Run();
   if (aSeries != 0 && !RowOf(itsStatements->itsMember.Bind(1, aSeries)))
   {
      RemoveSeries(aSeries); // it was the last of one
   }
   return true;
}

// With its study and its patient, if it was their last.
void IndexDatabase::RemoveSeries(std::int64_t theSeries)
{
   itsSeries.clear();
   SQLiteStatement& anUpper = itsStatements->itsUpper.Bind(1, theSeries);
   const bool isThere = anUpper.Step();
   const std::int64_t aStudy = isThere ? anUpper.GetNumber(0) : 0;
   const std::int64_t aPatient = isThere ? anUpper.GetNumber(1) : 0;
   anUpper.Reset();
   itsStatements->itsSeriesRemoval.Bind(1, theSeries).Run();
   itsStatements->itsStudyRemoval.Bind(1, aStudy).Run();
   itsStatements->itsPatientRemoval.Bind(1, aPatient).Run();
}

std::optional<std::string> IndexDatabase::Find(const std::string& theSOPInstanceUID)
{
   SQLiteStatement& aStatement = itsStatements->itsPath.Bind(1, theSOPInstanceUID);
   std::optional<std::string> aPath;
   if (aStatement.Step())
   {
      aPath = aStatement.GetText(0);
   }
   aStatement.Reset();
   return aPath;
}

void IndexDatabase::ForEach(const std::function<void(const std::string&, const std::string&)>& theVisitor)
{
   SQLiteStatement aStatement(itsDatabase, "SELECT SOPInstanceUID, path FROM instance");
   while (aStatement.Step())
   {
      theVisitor(aStatement.GetText(0), aStatement.GetText(1));
   }
}

std::int64_t IndexDatabase::Count()
{
   SQLiteStatement aStatement(itsDatabase, "SELECT count(*) FROM instance");
   aStatement.Step();
   return aStatement.GetNumber(0);
}

void IndexDatabase::Begin(bool theIsSafe)
{
   if (itsDatabase.IsInTransaction())
   {
      RollBack(); // which failed the last time, for want of memory
   }
   if (theIsSafe != itsIsSafe)
   {
      itsDatabase.Execute(theIsSafe ? "PRAGMA synchronous = FULL" : "PRAGMA synchronous = NORMAL");
      itsIsSafe = theIsSafe;
   }
   itsStatements->itsBegin.Run();
}

void IndexDatabase::Commit()
{
   itsStatements->itsCommit.Run();
}

void IndexDatabase::RollBack()
{
   itsSeries.clear();
   try
   {
      itsDatabase.Execute("ROLLBACK");
   }
   catch (...)
   {} // nothing had begun, or SQLite has rolled back itself
}

void IndexDatabase::BeginReading()
{
   if (!itsDatabase.IsInTransaction())
   {
      itsStatements->itsReadingBegin.Run();
   }
}

void IndexDatabase::EndReading() noexcept
{
   if (itsDatabase.IsInTransaction())
   {
      RollBack(); // there is nothing to keep
   }
}

bool IndexDatabase::AgreesWithFiles()
{
   SQLiteStatement aStatement(itsDatabase, "SELECT agrees AND NOT EXISTS (SELECT 1 FROM replacement) FROM state");
   return aStatement.Step() && aStatement.GetNumber(0) != 0;
}

void IndexDatabase::SetAgreesWithFiles(bool theAnswer)
{
   itsDatabase.Execute("UPDATE state SET agrees = " + std::to_string(theAnswer));
   SQLiteStatement(itsDatabase, "PRAGMA wal_checkpoint(TRUNCATE)").Run(); // onto the disk
}

void IndexDatabase::HurryUp()
{
   itsDatabase.Execute("PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF");
}
