#include "apps/tn/archive/SQLite.h"

#include <sqlite3.h>

namespace
{
constexpr int kPrimaryCode = 0xFF; // what an extended code begins with
static_assert(SQLiteFailure::kIsNoDatabase == SQLITE_NOTADB);

void Check(sqlite3* theDatabase, int theCode)
{
   if (theCode != SQLITE_OK)
   {
      throw SQLiteFailure(theDatabase != nullptr ? sqlite3_errmsg(theDatabase) : sqlite3_errstr(theCode), theCode);
   }
}
std::string_view TextOf(sqlite3_value* theValue)
{
   const auto* const aText = reinterpret_cast<const char*>(sqlite3_value_text(theValue));
   return aText == nullptr ? std::string_view()
                           : std::string_view(aText, static_cast<std::size_t>(sqlite3_value_bytes(theValue)));
}

void CallPredicate(sqlite3_context* theContext, int, sqlite3_value** theArguments)
{
   const auto* const aPredicate = static_cast<const SQLiteDatabase::Predicate*>(sqlite3_user_data(theContext));
   try
   {
      const bool isTrue =
          (*aPredicate)(sqlite3_value_int64(theArguments[0]), TextOf(theArguments[1]), TextOf(theArguments[2]));
      sqlite3_result_int(theContext, isTrue);
   }
   catch (const std::exception& anError) // nothing may be thrown through SQLite
   {
      sqlite3_result_error(theContext, anError.what(), -1);
   }
}

void DestroyPredicate(void* thePredicate)
{
   delete static_cast<SQLiteDatabase::Predicate*>(thePredicate);
}
} // namespace

bool SQLiteFailure::IsBusy() const
{
   return (itsCode & kPrimaryCode) == SQLITE_BUSY || (itsCode & kPrimaryCode) == SQLITE_LOCKED;
}

bool SQLiteFailure::IsInterrupted() const
{
   return (itsCode & kPrimaryCode) == SQLITE_INTERRUPT;
}

bool SQLiteFailure::IsDamaged() const
{
   return (itsCode & kPrimaryCode) == SQLITE_CORRUPT || (itsCode & kPrimaryCode) == kIsNoDatabase;
}

SQLiteDatabase::SQLiteDatabase(const std::string& thePath, int theBusySeconds)
{
   constexpr int kFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
   const int aCode = sqlite3_open_v2(thePath.c_str(), &itsDatabase, kFlags, nullptr);
   if (aCode != SQLITE_OK)
   {
      const SQLiteFailure aFailure(itsDatabase != nullptr ? sqlite3_errmsg(itsDatabase) : "no memory", aCode);
      sqlite3_close(itsDatabase);
      throw aFailure;
   }
   sqlite3_busy_timeout(itsDatabase, theBusySeconds * 1000);
}

SQLiteDatabase::~SQLiteDatabase()
{
   sqlite3_close(itsDatabase);
}

void SQLiteDatabase::Execute(const std::string& theText)
{
   Check(itsDatabase, sqlite3_exec(itsDatabase, theText.c_str(), nullptr, nullptr, nullptr));
}

void SQLiteDatabase::Define(const std::string& theName, Predicate thePredicate)
{
   constexpr int kArguments = 3;
   constexpr int kFlags = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_DIRECTONLY;
   auto* const aPredicate = new Predicate(std::move(thePredicate)); // SQLite's, also when it fails
   Check(itsDatabase, sqlite3_create_function_v2(itsDatabase, theName.c_str(), kArguments, kFlags, aPredicate,
                                                 CallPredicate, nullptr, nullptr, DestroyPredicate));
}

void SQLiteDatabase::SetWatch(std::function<bool()> theGoesOn)
{
   constexpr int kInterval = 1000; // instructions of a statement: some ten rows
   itsGoesOn = std::move(theGoesOn);
   sqlite3_progress_handler(itsDatabase, kInterval, itsGoesOn ? Watch : nullptr, this);
}

int SQLiteDatabase::Watch(void* theDatabase)
{
   try
   {
      return !static_cast<SQLiteDatabase*>(theDatabase)->itsGoesOn();
   }
   catch (...) // nothing may be thrown through SQLite
   {
      return 1;
   }
}

std::int64_t SQLiteDatabase::GetLastRow() const
{
   return sqlite3_last_insert_rowid(itsDatabase);
}

bool SQLiteDatabase::IsInTransaction() const
{
   return sqlite3_get_autocommit(itsDatabase) == 0;
}

SQLiteStatement::SQLiteStatement(const SQLiteDatabase& theDatabase, const std::string& theText)
    : itsDatabase(theDatabase)
{
   sqlite3_stmt* aStatement = nullptr;
   Check(theDatabase.Get(),
         sqlite3_prepare_v3(theDatabase.Get(), theText.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &aStatement, nullptr));
   itsStatement.reset(aStatement);
}

void SQLiteStatement::Finalizer::operator()(sqlite3_stmt* theStatement) const
{
   sqlite3_finalize(theStatement);
}

// One that was left in the middle, by an exception for example, takes no parameters.
void SQLiteStatement::BeginAnew()
{
   if (itsHasBegun)
   {
      Reset();
   }
}

SQLiteStatement& SQLiteStatement::Bind(int theParameter, std::string_view theText)
{
   BeginAnew();
   Check(itsDatabase.Get(), sqlite3_bind_text64(itsStatement.get(), theParameter, theText.data(), theText.size(),
                                                SQLITE_STATIC, SQLITE_UTF8));
   return *this;
}

SQLiteStatement& SQLiteStatement::Bind(int theParameter, std::int64_t theNumber)
{
   BeginAnew();
   Check(itsDatabase.Get(), sqlite3_bind_int64(itsStatement.get(), theParameter, theNumber));
   return *this;
}

SQLiteStatement& SQLiteStatement::BindNull(int theParameter)
{
   BeginAnew();
   Check(itsDatabase.Get(), sqlite3_bind_null(itsStatement.get(), theParameter));
   return *this;
}

bool SQLiteStatement::Step()
{
   itsHasBegun = true;
   const int aCode = sqlite3_step(itsStatement.get());
   if (aCode != SQLITE_ROW && aCode != SQLITE_DONE)
   {
      Fail(aCode);
   }
   return aCode == SQLITE_ROW;
}

void SQLiteStatement::Run()
{
   while (Step())
   {}
   Reset();
}

void SQLiteStatement::Reset()
{
   sqlite3_reset(itsStatement.get()); // a failure has been told by Step
   itsHasBegun = false;
}

void SQLiteStatement::Fail(int theCode) const
{
   const SQLiteFailure aFailure(sqlite3_errmsg(itsDatabase.Get()), theCode);
   sqlite3_reset(itsStatement.get());
   throw aFailure;
}

std::string SQLiteStatement::GetText(int theColumn) const
{
   const auto* const aText = reinterpret_cast<const char*>(sqlite3_column_text(itsStatement.get(), theColumn));
   const int aLength = sqlite3_column_bytes(itsStatement.get(), theColumn);
   return aText != nullptr ? std::string(aText, static_cast<std::size_t>(aLength)) : std::string();
}

std::int64_t SQLiteStatement::GetNumber(int theColumn) const
{
   return sqlite3_column_int64(itsStatement.get(), theColumn);
}

bool SQLiteStatement::IsNull(int theColumn) const
{
   return sqlite3_column_type(itsStatement.get(), theColumn) == SQLITE_NULL;
}
