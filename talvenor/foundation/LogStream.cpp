#include "talvenor/foundation/LogStream.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <locale>
#include <mutex>
#include <streambuf>
#include <utility>

#include "talvenor/foundation/MutexWhileInScope.h"
#include "talvenor/foundation/SystemClock.h"
#include "talvenor/platform/Threads.h"

namespace
{

// Redirections are changed one at a time, so that two streams cannot be turned on to each other at once.
constinit std::mutex theRedirectionMutex;

// A borrowed stream, in the form in which owned ones are kept.
std::shared_ptr<std::ostream> Borrowed(std::ostream* theOutput)
{
   return std::shared_ptr<std::ostream>(std::shared_ptr<void>(), theOutput);
}

struct LogFile
{
   std::array<char, 4096> itsBuffer; // before the stream, which uses it to the end
   std::ofstream itsStream;
};

// Null if the file cannot be opened.
std::shared_ptr<std::ostream> OpenLogFile(const char* theFilename, int theOpenMode)
{
   const auto aFile = std::make_shared<LogFile>();
   aFile->itsStream.rdbuf()->pubsetbuf(aFile->itsBuffer.data(), std::streamsize(aFile->itsBuffer.size()));
   aFile->itsStream.imbue(std::locale::classic()); // numbers without thousands separators
   aFile->itsStream.open(theFilename, OpenMode::ToStandard(theOpenMode));
   return aFile->itsStream.is_open() ? std::shared_ptr<std::ostream>(aFile, &aFile->itsStream) : nullptr;
}

// The caller's array: when it is full, writing fails.
class ArrayBuffer : public std::streambuf
{
public:
   ArrayBuffer(char* theBuffer, int theSize)
   {
      if (theBuffer && theSize > 0)
      {
         setp(theBuffer, theBuffer + theSize);
      }
   }
};

struct ArrayStream
{
   ArrayStream(char* theBuffer, int theSize) : itsBuffer(theBuffer, theSize), itsStream(&itsBuffer) {}

   ArrayBuffer itsBuffer;
   std::ostream itsStream;
};

// What follows the marker in the two lines of an entry. The date is computed here rather than by the C library, whose
// functions lock or depend on the locale.
std::string MarkerLineTail(unsigned int theCounter, std::time_t theTime, unsigned int theMilliseconds)
{
   using namespace std::chrono;
   const sys_seconds aTime{seconds(theTime)};
   const sys_days aDay = floor<days>(aTime);
   const year_month_day aDate(aDay);
   const hh_mm_ss aClock(aTime - aDay);

   std::array<char, 128> aText;
   std::snprintf(aText.data(), aText.size(), " %u %04d-%02u-%02u %02d:%02d:%02d.%u %u.%u\n", theCounter,
                 int(aDate.year()), unsigned(aDate.month()), unsigned(aDate.day()), int(aClock.hours().count()),
                 int(aClock.minutes().count()), int(aClock.seconds().count()), theMilliseconds,
                 TNPlatform::CurrentProcessId(), TNPlatform::CurrentThreadId());
   return aText.data();
}

LogStream& Start(LogStream& theLog, LogStream::SeverityLevel theSeverity)
{
   theLog.StartEntry(theSeverity);
   return theLog;
}

} // namespace

LogStream::LogStream() : itsStartMarker("------------------->"), itsEndMarker("<-------------------") {}

LogStream::LogStream(const char* theFilename, int theOpenMode, int theProtection) : LogStream()
{
   LogStream::On(theFilename, theOpenMode, theProtection);
}

LogStream::LogStream(std::ostream& theOutput) : LogStream(&theOutput) {}

LogStream::LogStream(std::ostream* theOutput) : LogStream()
{
   SetOutput(Borrowed(theOutput));
}

LogStream::LogStream(std::ofstream& theOutput) : LogStream(static_cast<std::ostream*>(&theOutput)) {}

LogStream::LogStream(std::ofstream* theOutput) : LogStream(static_cast<std::ostream*>(theOutput)) {}

LogStream::LogStream(std::filebuf& theBuffer) : LogStream()
{
   LogStream::On(theBuffer);
}

LogStream::LogStream(char* theBuffer, int theSize) : LogStream()
{
   const auto aStream = std::make_shared<ArrayStream>(theBuffer, theSize);
   SetOutput(std::shared_ptr<std::ostream>(aStream, &aStream->itsStream));
}

LogStream::LogStream(LogStream& theTarget) : LogStream()
{
   LogStream::On(theTarget);
}

// Threads that are still in an entry are waited for; the object answers as one that is off as long as it can be asked.
LogStream::~LogStream()
{
   MutexWhileInScope aLock(itsMutex);
   itsTarget.store(nullptr, std::memory_order_release);
   SetOutput(nullptr);
}

void LogStream::Off()
{
   MutexWhileInScope aLock(itsMutex);
   itsTarget.store(nullptr, std::memory_order_release);
   SetOutput(nullptr);
}

void LogStream::On(LogStream& theTarget)
{
   MutexWhileInScope aLock(itsMutex);
   Off();
   const std::lock_guard<std::mutex> aRedirection(theRedirectionMutex);
   if (!WouldCycle(theTarget))
   {
      itsTarget.store(&theTarget, std::memory_order_release);
   }
}

void LogStream::On(const char* theFilename, int theOpenMode, int /*theProtection*/)
{
   MutexWhileInScope aLock(itsMutex);
   Off();
   if (theFilename)
   {
      SetOutput(OpenLogFile(theFilename, theOpenMode));
   }
}

void LogStream::On(std::filebuf& theBuffer)
{
   MutexWhileInScope aLock(itsMutex);
   Off();
   SetOutput(std::make_shared<std::ostream>(&theBuffer));
}

void LogStream::On(std::ofstream& theOutput)
{
   On(static_cast<std::ostream&>(theOutput));
}

void LogStream::On(std::ostream& theOutput)
{
   MutexWhileInScope aLock(itsMutex);
   Off();
   SetOutput(Borrowed(&theOutput));
}

void LogStream::PostEntryCallback() {}

void LogStream::StartEntry(SeverityLevel theSeverity)
{
   BeginEntry(theSeverity);
   WriteStartLine();
}

void LogStream::EndEntry()
{
   const EntryRelease aRelease(*this);
   WriteEndLine();
   flush();
   PostEntryCallback();
}

std::ostream* LogStream::GetCaptureStream()
{
   return nullptr;
}

// Only one of the two streams is locked at a time: two streams may be assigned to each other at once.
LogStream& LogStream::operator=(const LogStream& theOther)
{
   if (this == &theOther)
   {
      return *this;
   }
   LogStream aCopy;
   {
      MutexWhileInScope aLock(theOther.itsMutex);
      aCopy.itsOutput = theOther.itsOutput;
      aCopy.itsTarget.store(theOther.itsTarget.load(std::memory_order_acquire), std::memory_order_release);
      aCopy.itsStartMarker = theOther.itsStartMarker;
      aCopy.itsEndMarker = theOther.itsEndMarker;
      aCopy.itsEntryCounter = theOther.itsEntryCounter;
      aCopy.itsEntryTime = theOther.itsEntryTime;
      aCopy.itsEntryMilliseconds = theOther.itsEntryMilliseconds;
      aCopy.itsIndent = theOther.itsIndent;
   }
   MutexWhileInScope aLock(itsMutex);
   Off();
   SetOutput(aCopy.itsOutput);
   if (LogStream* aTarget = aCopy.itsTarget.load(std::memory_order_acquire))
   {
      LogStream::On(*aTarget);
   }
   itsStartMarker.swap(aCopy.itsStartMarker);
   itsEndMarker.swap(aCopy.itsEndMarker);
   itsEntryCounter = aCopy.itsEntryCounter;
   itsEntryTime = aCopy.itsEntryTime;
   itsEntryMilliseconds = aCopy.itsEntryMilliseconds;
   itsIndent.swap(aCopy.itsIndent);
   return *this;
}

int LogStream::Lock()
{
   if (!itsMutex.Lock())
   {
      return 0;
   }
   LogStream* aTarget = itsTarget.load(std::memory_order_acquire);
   if (aTarget && !aTarget->Lock())
   {
      itsMutex.Unlock();
      return 0;
   }
   return 1;
}

int LogStream::Unlock()
{
   LogStream* aTarget = itsTarget.load(std::memory_order_acquire);
   const int isChainReleased = aTarget ? aTarget->Unlock() : 1;
   return itsMutex.Unlock() && isChainReleased;
}

unsigned int LogStream::GetMilliseconds() const
{
   std::time_t aTime;
   unsigned int aMilliseconds;
   GetTimeNow(aTime, aMilliseconds);
   return aMilliseconds;
}

void LogStream::GetTimeNow(std::time_t& theTime, unsigned int& theMilliseconds) const
{
   const INT64 aNow = std::max<INT64>(SystemClock::Get().WallMilliseconds(), 0); // no log is older than 1970
   theTime = std::time_t(aNow / 1000);
   theMilliseconds = static_cast<unsigned int>(aNow % 1000);
}

unsigned int LogStream::GetEntryCounter() const
{
   const LogStream& aLog = ChainEnd();
   MutexWhileInScope aLock(aLog.itsMutex);
   return aLog.itsEntryCounter;
}

LogStream::SeverityLevel LogStream::GetSeverity() const
{
   MutexWhileInScope aLock(itsMutex);
   return itsSeverity;
}

void LogStream::CaptureTimestamp()
{
   MutexWhileInScope aLock(itsMutex);
   GetTimeNow(itsEntryTime, itsEntryMilliseconds);
}

// Diagnostics must not change what they report on: errno stays as the caller left it.
void LogStream::BeginEntry(SeverityLevel theSeverity)
{
   const int anErrno = errno;
   Lock();
   CaptureTimestamp();
   ++ChainEnd().itsEntryCounter;
   itsSeverity = theSeverity;
   errno = anErrno;
}

void LogStream::WriteStartLine()
{
   try
   {
      WriteMarkerLine(itsStartMarker);
   }
   catch (...)
   {
      Unlock();
      throw;
   }
}

LogStream::EntryRelease::EntryRelease(LogStream& theLog) : itsLog(theLog), itsErrno(errno) {}

LogStream::EntryRelease::~EntryRelease()
{
   itsLog.Unlock();
   errno = itsErrno;
}

bool LogStream::WouldCycle(const LogStream& theTarget) const
{
   const LogStream* aLog = &theTarget;
   while (aLog && aLog != this)
   {
      aLog = aLog->itsTarget.load(std::memory_order_acquire);
   }
   return aLog == this;
}

void LogStream::SetOutput(std::shared_ptr<std::ostream> theOutput)
{
   itsOutput = std::move(theOutput);
}

void LogStream::SetText(std::string& theMember, const std::string& theText)
{
   MutexWhileInScope aLock(itsMutex);
   theMember = theText;
}

std::string LogStream::GetText(const std::string& theMember) const
{
   MutexWhileInScope aLock(itsMutex);
   return theMember;
}

// The line is composed here and written unformatted: a base or width that the host left in the output must not show.
void LogStream::WriteMarkerLine(const std::string& theMarker)
{
   const LogStream& aLog = ChainEnd();
   if (aLog.itsOutput)
   {
      const std::string aLine = theMarker + MarkerLineTail(aLog.itsEntryCounter, itsEntryTime, itsEntryMilliseconds);
      write(aLine.data(), std::streamsize(aLine.size()));
   }
}

LogStream& startentry(LogStream& theLog)
{
   return Start(theLog, LogStream::ErrorSeverity);
}

LogStream& starterrorentry(LogStream& theLog)
{
   return Start(theLog, LogStream::ErrorSeverity);
}

LogStream& startwarningentry(LogStream& theLog)
{
   return Start(theLog, LogStream::WarningSeverity);
}

LogStream& startinfoentry(LogStream& theLog)
{
   return Start(theLog, LogStream::InfoSeverity);
}

LogStream& startfatalentry(LogStream& theLog)
{
   return Start(theLog, LogStream::FatalSeverity);
}

LogStream& endentry(LogStream& theLog)
{
   theLog.EndEntry();
   return theLog;
}

LogStream& indent(LogStream& theLog)
{
   const std::string anIndent = theLog.GetIndent();
   return theLog.write(anIndent.data(), std::streamsize(anIndent.size()));
}

LogEntry::LogEntry(LogStream& theLog, LogStream::SeverityLevel theSeverity) : itsLog(theLog)
{
   theLog.StartEntry(theSeverity);
}

LogEntry::~LogEntry()
{
   try
   {
      itsLog.EndEntry();
   }
   catch (...)
   {
      // Told in the header: the stream is unlocked, and there is nobody to report to.
   }
}
