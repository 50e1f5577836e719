// SQLite with C++ lifetimes: a database and its prepared statements. Failures throw SQLiteFailure. One thread at a
// time.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

class SQLiteFailure : public std::runtime_error
{
public:
   static constexpr int kIsNoDatabase = 26; // SQLITE_NOTADB

   SQLiteFailure(const std::string& theText, int theCode) : std::runtime_error(theText), itsCode(theCode) {}

   // That another process has locked the database for longer than it was waited for.
   bool IsBusy() const;

   // That SetWatch's function has ended the statement.
   bool IsInterrupted() const;

   // That the file is damaged, or no database of ours.
   bool IsDamaged() const;

private:
   int itsCode;
};

class SQLiteDatabase
{
public:
   // Opens or creates the file. Waits theBusySeconds for locks.
   SQLiteDatabase(const std::string& thePath, int theBusySeconds);
   SQLiteDatabase(const SQLiteDatabase&) = delete;
   SQLiteDatabase& operator=(const SQLiteDatabase&) = delete;
   ~SQLiteDatabase();

   // One statement or several, without results.
   void Execute(const std::string& theText);

   // Makes statements know the function theName(number, text, text), which is true or false; a later one of this name
   // takes its place. What it throws is the failure of the statement.
   using Predicate = std::function<bool(std::int64_t, std::string_view, std::string_view)>;
   void Define(const std::string& theName, Predicate thePredicate);

   // theGoesOn is asked now and then while a statement runs, and ends it with false. None for an empty one.
   void SetWatch(std::function<bool()> theGoesOn);

   std::int64_t GetLastRow() const;
   bool IsInTransaction() const;
   sqlite3* Get() const { return itsDatabase; }

private:
   static int Watch(void* theDatabase);

   sqlite3* itsDatabase = nullptr;
   std::function<bool()> itsGoesOn;
};

class SQLiteStatement
{
public:
   // theDatabase is borrowed.
   SQLiteStatement(const SQLiteDatabase& theDatabase, const std::string& theText);

   // Parameters count from 1. The text is borrowed until Reset.
   SQLiteStatement& Bind(int theParameter, std::string_view theText);
   SQLiteStatement& Bind(int theParameter, std::int64_t theNumber);
   SQLiteStatement& BindNull(int theParameter);

   // Whether there is a (further) row.
   bool Step();

   // Runs to the end, and is ready for other parameters.
   void Run();
   void Reset();

   // Columns of the row, from 0.
   std::string GetText(int theColumn) const;
   std::int64_t GetNumber(int theColumn) const;
   bool IsNull(int theColumn) const;

private:
   struct Finalizer
   {
      void operator()(sqlite3_stmt* theStatement) const;
   };

   void BeginAnew();
   [[noreturn]] void Fail(int theCode) const;

   const SQLiteDatabase& itsDatabase;
   std::unique_ptr<sqlite3_stmt, Finalizer> itsStatement;
   bool itsHasBegun = false; // since it was made ready
};
