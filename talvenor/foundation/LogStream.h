// LogStream: a text output for diagnostics that several threads share. It is written to like an output stream, but
// what is written between a start function and endentry is one numbered, time-stamped entry:
//
//    startentry(aLog) << "Socket::Read(): 12 bytes\n" << endentry;
//
//    -------------------> 7 2026-11-22 21:40:05.81 4711.4712
//    Socket::Read(): 12 bytes
//    <------------------- 7 2026-11-22 21:40:05.81 4711.4712
//
// The numbers of a marker line are: entry counter, date and time in UTC, milliseconds (not padded), process, thread.
// The end line repeats the time of the start line. The severity is recorded, not written.
//
// A log stream is off, writes to an output, or is redirected: then everything goes to another log stream, which may be
// redirected itself. While off, insertions and entries are accepted and dropped.
//
// Threads: an entry holds the recursive mutex of its stream, and of every stream it is redirected to, from its start to
// its end. On, Off and the members that change or ask for settings, number, time and severity take the mutex too. On
// and Off may be called at any time outside an entry of the same thread. What is inserted outside an entry is not
// protected. Entries may nest; the members that describe the current entry are single, so the outer end line then shows
// the number and time of the inner entry.
//
// Ownership: a stream opened by name is owned; streams and buffers passed in are borrowed and must outlive their use,
// as must a redirect target. Failure: a file that cannot be opened leaves the stream off; write errors show in the
// state of the output (fail, bad) and nowhere else. errno survives StartEntry and EndEntry.
//
// Text from a peer or a file must be escaped by whoever inserts it: nothing here keeps it from forging marker lines.
#pragma once

#include <atomic>
#include <ctime>
#include <fstream>
#include <memory>
#include <ostream>
#include <string>

#include "talvenor/Export.h"
#include "talvenor/foundation/Mutex.h"
#include "talvenor/foundation/OpenMode.h"

class TALVENOR_API LogStream
{
public:
   enum SeverityLevel
   {
      InfoSeverity = 0,
      WarningSeverity = 1,
      ErrorSeverity = 2,
      FatalSeverity = 3
   };

   LogStream();
   LogStream(const char* theFilename, int theOpenMode, int theProtection);
   explicit LogStream(std::ostream& theOutput);
   explicit LogStream(std::ostream* theOutput); // null: off
   explicit LogStream(std::ofstream& theOutput);
   explicit LogStream(std::ofstream* theOutput);
   explicit LogStream(std::filebuf& theBuffer);
   // Writes to theBuffer, which is borrowed; when theSize characters are there, writing fails. No NUL is appended.
   LogStream(char* theBuffer, int theSize);
   // Redirects this stream to theTarget; nothing is copied.
   explicit LogStream(LogStream& theTarget);
   LogStream(const LogStream&) = delete;
   virtual ~LogStream();

   // Releases the output or the redirection.
   virtual void Off();

   // Each releases the previous output first.
   // A redirection that would lead back to this stream is refused: the stream is then off.
   virtual void On(LogStream& theTarget);
   virtual void On(const char* theFilename, int theOpenMode = OpenMode::Append, int theProtection = OpenMode::Shared);
   virtual void On(std::filebuf& theBuffer);
   virtual void On(std::ofstream& theOutput);
   virtual void On(std::ostream& theOutput);

   // Called at the end of every entry, after its end line has been flushed, with the mutex held.
   virtual void PostEntryCallback();

   virtual void StartEntry(SeverityLevel theSeverity = ErrorSeverity);
   virtual void EndEntry();

   // The stream that keeps a copy of what is written now, or null.
   virtual std::ostream* GetCaptureStream();

   // Takes over the output (shared from then on, never owned), the redirection, the markers, the counter and time and
   // the indent. Two streams on one output do not exclude each other: redirect instead, where threads matter.
   LogStream& operator=(const LogStream& theOther);

   // Whether what is inserted now is written somewhere.
   bool IsOn() const { return ChainEnd().itsOutput != nullptr; }
   bool IsRedirected() const { return itsTarget.load(std::memory_order_acquire) != nullptr; }

   // Take and release the mutex, then those of the redirect chain. Lock returns 0, holding nothing, if one cannot be
   // taken; Unlock returns 0 if one was not held.
   int Lock();
   int Unlock();

   // Numbers of a redirected stream are those of the last stream of its chain.
   unsigned int GetEntryCounter() const;
   SeverityLevel GetSeverity() const;

   // The milliseconds (0 to 999) of the system clock now.
   unsigned int GetMilliseconds() const;
   // Seconds since 1970 in UTC and the milliseconds, of the same instant.
   void GetTimeNow(std::time_t& theTime, unsigned int& theMilliseconds) const;
   // Makes now the time of the current entry.
   void CaptureTimestamp();

   void SetIndent(const std::string& theIndent) { SetText(itsIndent, theIndent); }
   std::string GetIndent() const { return GetText(itsIndent); }
   void SetEntryStartMarker(const std::string& theMarker) { SetText(itsStartMarker, theMarker); }
   std::string GetEntryStartMarker() const { return GetText(itsStartMarker); }
   void SetEntryEndMarker(const std::string& theMarker) { SetText(itsEndMarker, theMarker); }
   std::string GetEntryEndMarker() const { return GetText(itsEndMarker); }

   // Whatever can be written to an output stream can be written here.
   template <class T>
   requires requires(std::ostream& theStream, const T& theValue) { theStream << theValue; }
   LogStream& operator<<(const T& theValue)
   {
      return Insert([&](std::ostream& theStream) { theStream << theValue; });
   }
   // A null text is written as "(null)": it must not put the output into an error state.
   LogStream& operator<<(const char* theText);
   LogStream& operator<<(std::ostream& (*theManipulator)(std::ostream&));
   LogStream& operator<<(std::ios& (*theManipulator)(std::ios&));
   LogStream& operator<<(std::ios_base& (*theManipulator)(std::ios_base&));
   LogStream& operator<<(LogStream& (*theManipulator)(LogStream&)) { return theManipulator(*this); }

   // Unformatted output, state and format of the output stream (the last one of a redirect chain). With no output they
   // do nothing and return 0, null, -1 as a position; operator! is then true.
   LogStream& put(char theCharacter);
   LogStream& write(const char* theText, std::streamsize theCount);
   LogStream& flush();
   LogStream& seekp(std::streampos thePosition);
   LogStream& seekp(std::streamoff theOffset, std::ios_base::seekdir theOrigin);
   std::streampos tellp();

   std::ios_base::fmtflags flags() const;
   std::ios_base::fmtflags flags(std::ios_base::fmtflags theFlags);
   std::ios_base::fmtflags setf(std::ios_base::fmtflags theFlags);
   std::ios_base::fmtflags setf(std::ios_base::fmtflags theFlags, std::ios_base::fmtflags theMask);
   void unsetf(std::ios_base::fmtflags theFlags);
   std::streamsize width() const;
   std::streamsize width(std::streamsize theWidth);
   char fill() const;
   char fill(char theFill);
   std::streamsize precision() const;
   std::streamsize precision(std::streamsize thePrecision);
   std::ostream* tie() const;
   std::ostream* tie(std::ostream* theStream);
   std::ios_base::iostate rdstate() const;
   bool eof() const;
   bool fail() const;
   bool bad() const;
   bool good() const;
   void clear(std::ios_base::iostate theState = std::ios_base::goodbit);
   operator void*() const; // null when there is no output or it has failed
   bool operator!() const;
   std::streambuf* rdbuf() const;
   static int xalloc();
   // With no output these refer to a cell of this stream, reset to 0 at every call.
   long& iword(int theIndex);
   void*& pword(int theIndex);
   static bool sync_with_stdio(bool theSwitch = true);
   int opfx();  // prepares for output, as formatted inserters do; 0 if the output has failed
   void osfx(); // flushes a unit-buffered output

protected:
   // The parts of which StartEntry and EndEntry consist, for classes that do more between them.
   void BeginEntry(SeverityLevel theSeverity); // locks, then records time, number and severity
   void WriteStartLine();                      // if that throws, the entry has not started and nothing is held
   void WriteEndLine() { WriteMarkerLine(itsEndMarker); }

   // Ends the hold of an entry on its mutexes, whatever the work before that throws, and keeps errno.
   class EntryRelease
   {
   public:
      explicit EntryRelease(LogStream& theLog);
      ~EntryRelease();
      EntryRelease(const EntryRelease&) = delete;
      EntryRelease& operator=(const EntryRelease&) = delete;

   private:
      LogStream& itsLog;
      int itsErrno;
   };

   // The output at the end of the redirect chain, null if there is none.
   std::ostream* Output() const { return ChainEnd().itsOutput.get(); }

   mutable Mutex itsMutex;

private:
   const LogStream& ChainEnd() const
   {
      const LogStream* aLog = this;
      while (const LogStream* aTarget = aLog->itsTarget.load(std::memory_order_acquire))
      {
         aLog = aTarget;
      }
      return *aLog;
   }
   LogStream& ChainEnd() { return const_cast<LogStream&>(static_cast<const LogStream*>(this)->ChainEnd()); }
   bool WouldCycle(const LogStream& theTarget) const;

   // Has theWriter write to the capture stream, if there is one, and then to the output.
   template <class Writer>
   LogStream& Insert(const Writer& theWriter)
   {
      LogStream& aLog = ChainEnd();
      if (aLog.itsOutput)
      {
         if (std::ostream* aCapture = aLog.GetCaptureStream())
         {
            theWriter(*aCapture);
         }
         theWriter(*aLog.itsOutput);
      }
      return *this;
   }

   void SetOutput(std::shared_ptr<std::ostream> theOutput);
   void SetText(std::string& theMember, const std::string& theText);
   std::string GetText(const std::string& theMember) const;
   void WriteMarkerLine(const std::string& theMarker);

   std::shared_ptr<std::ostream> itsOutput; // no deleter behind a borrowed one; null while redirected
   std::atomic<LogStream*> itsTarget{nullptr};
   std::string itsStartMarker;
   std::string itsEndMarker;
   unsigned int itsEntryCounter = 0;
   std::time_t itsEntryTime = 0; // UTC
   unsigned int itsEntryMilliseconds = 0;
   SeverityLevel itsSeverity = ErrorSeverity;
   std::string itsIndent;
   long itsNoWord = 0; // what iword and pword refer to while there is no output
   void* itsNoPointer = nullptr;
};

// The entry functions. Each returns theLog, so that text can follow; each can be inserted like a manipulator.
TALVENOR_API LogStream& startentry(LogStream& theLog); // an error entry
TALVENOR_API LogStream& starterrorentry(LogStream& theLog);
TALVENOR_API LogStream& startwarningentry(LogStream& theLog);
TALVENOR_API LogStream& startinfoentry(LogStream& theLog);
TALVENOR_API LogStream& startfatalentry(LogStream& theLog);
TALVENOR_API LogStream& endentry(LogStream& theLog);

// Writes the indent string of theLog.
TALVENOR_API LogStream& indent(LogStream& theLog);

// An entry for a scope. Use it wherever what is inserted may throw (a dump, a text that is composed): an entry that is
// started and never ended holds the mutex for good. The scope must be as short as the entry.
//
//    LogEntry anEntry(gTNTracer);
//    anEntry << "PDU_Service::Read(): " << aSize << " bytes\n";
class TALVENOR_API LogEntry
{
public:
   explicit LogEntry(LogStream& theLog, LogStream::SeverityLevel theSeverity = LogStream::ErrorSeverity);
   // What ending the entry throws (the host's capture callback) stops here: tracing must not fail what is traced.
   ~LogEntry();
   LogEntry(const LogEntry&) = delete;
   LogEntry& operator=(const LogEntry&) = delete;

   LogStream& Log() { return itsLog; }

   template <class T>
   LogStream& operator<<(const T& theValue)
   {
      return itsLog << theValue;
   }
   LogStream& operator<<(LogStream& (*theManipulator)(LogStream&)) { return itsLog << theManipulator; }
   LogStream& operator<<(std::ostream& (*theManipulator)(std::ostream&)) { return itsLog << theManipulator; }
   LogStream& operator<<(std::ios_base& (*theManipulator)(std::ios_base&)) { return itsLog << theManipulator; }

private:
   LogStream& itsLog;
};

// Holds a log stream and its redirect chain for a scope, so that several entries or lines stay together. A lock that
// cannot be taken lets the work proceed without it.
class TALVENOR_API LogLock
{
public:
   explicit LogLock(LogStream& theLog) : itsLog(theLog), itsIsHeld(theLog.Lock() != 0) {}
   ~LogLock()
   {
      if (itsIsHeld)
      {
         itsLog.Unlock();
      }
   }
   LogLock(const LogLock&) = delete;
   LogLock& operator=(const LogLock&) = delete;

private:
   LogStream& itsLog;
   const bool itsIsHeld;
};
