// The part of LogStream that looks like an output stream: each member acts on the output at the end of the redirect
// chain and, while an entry is captured, on the capture stream too, so that both show the same text.
#include "talvenor/foundation/LogStream.h"

namespace
{

// What theMember of theOutput answers, or theNeutral without output.
template <class Result, class Question>
Result Ask(std::ostream* theOutput, Result theNeutral, const Question& theQuestion)
{
   return theOutput ? theQuestion(*theOutput) : theNeutral;
}

} // namespace

LogStream& LogStream::operator<<(const char* theText)
{
   const char* aText = theText ? theText : "(null)";
   return Insert([aText](std::ostream& theStream) { theStream << aText; });
}

LogStream& LogStream::operator<<(std::ostream& (*theManipulator)(std::ostream&))
{
   return Insert([theManipulator](std::ostream& theStream) { theManipulator(theStream); });
}

LogStream& LogStream::operator<<(std::ios& (*theManipulator)(std::ios&))
{
   return Insert([theManipulator](std::ostream& theStream) { theManipulator(theStream); });
}

LogStream& LogStream::operator<<(std::ios_base& (*theManipulator)(std::ios_base&))
{
   return Insert([theManipulator](std::ostream& theStream) { theManipulator(theStream); });
}

LogStream& LogStream::put(char theCharacter)
{
   return Insert([theCharacter](std::ostream& theStream) { theStream.put(theCharacter); });
}

LogStream& LogStream::write(const char* theText, std::streamsize theCount)
{
   return Insert([theText, theCount](std::ostream& theStream) { theStream.write(theText, theCount); });
}

LogStream& LogStream::flush()
{
   if (std::ostream* anOutput = Output())
   {
      anOutput->flush();
   }
   return *this;
}

LogStream& LogStream::seekp(std::streampos thePosition)
{
   if (std::ostream* anOutput = Output())
   {
      anOutput->seekp(thePosition);
   }
   return *this;
}

LogStream& LogStream::seekp(std::streamoff theOffset, std::ios_base::seekdir theOrigin)
{
   if (std::ostream* anOutput = Output())
   {
      anOutput->seekp(theOffset, theOrigin);
   }
   return *this;
}

std::streampos LogStream::tellp()
{
   return Ask(Output(), std::streampos(-1), [](std::ostream& theStream) { return theStream.tellp(); });
}

std::ios_base::fmtflags LogStream::flags() const
{
   return Ask(Output(), std::ios_base::fmtflags{}, [](std::ostream& theStream) { return theStream.flags(); });
}

std::ios_base::fmtflags LogStream::flags(std::ios_base::fmtflags theFlags)
{
   const std::ios_base::fmtflags aPrevious = flags();
   Insert([theFlags](std::ostream& theStream) { theStream.flags(theFlags); });
   return aPrevious;
}

std::ios_base::fmtflags LogStream::setf(std::ios_base::fmtflags theFlags)
{
   const std::ios_base::fmtflags aPrevious = flags();
   Insert([theFlags](std::ostream& theStream) { theStream.setf(theFlags); });
   return aPrevious;
}

std::ios_base::fmtflags LogStream::setf(std::ios_base::fmtflags theFlags, std::ios_base::fmtflags theMask)
{
   const std::ios_base::fmtflags aPrevious = flags();
   Insert([theFlags, theMask](std::ostream& theStream) { theStream.setf(theFlags, theMask); });
   return aPrevious;
}

void LogStream::unsetf(std::ios_base::fmtflags theFlags)
{
   Insert([theFlags](std::ostream& theStream) { theStream.unsetf(theFlags); });
}

std::streamsize LogStream::width() const
{
   return Ask(Output(), std::streamsize(0), [](std::ostream& theStream) { return theStream.width(); });
}

std::streamsize LogStream::width(std::streamsize theWidth)
{
   const std::streamsize aPrevious = width();
   Insert([theWidth](std::ostream& theStream) { theStream.width(theWidth); });
   return aPrevious;
}

char LogStream::fill() const
{
   return Ask(Output(), '\0', [](std::ostream& theStream) { return theStream.fill(); });
}

char LogStream::fill(char theFill)
{
   const char aPrevious = fill();
   Insert([theFill](std::ostream& theStream) { theStream.fill(theFill); });
   return aPrevious;
}

std::streamsize LogStream::precision() const
{
   return Ask(Output(), std::streamsize(0), [](std::ostream& theStream) { return theStream.precision(); });
}

std::streamsize LogStream::precision(std::streamsize thePrecision)
{
   const std::streamsize aPrevious = precision();
   Insert([thePrecision](std::ostream& theStream) { theStream.precision(thePrecision); });
   return aPrevious;
}

std::ostream* LogStream::tie() const
{
   std::ostream* anOutput = Output();
   return anOutput ? anOutput->tie() : nullptr;
}

std::ostream* LogStream::tie(std::ostream* theStream)
{
   std::ostream* anOutput = Output();
   return anOutput ? anOutput->tie(theStream) : nullptr;
}

std::ios_base::iostate LogStream::rdstate() const
{
   return Ask(Output(), std::ios_base::goodbit, [](std::ostream& theStream) { return theStream.rdstate(); });
}

bool LogStream::eof() const
{
   return (rdstate() & std::ios_base::eofbit) != 0;
}

bool LogStream::fail() const
{
   return (rdstate() & (std::ios_base::failbit | std::ios_base::badbit)) != 0;
}

bool LogStream::bad() const
{
   return (rdstate() & std::ios_base::badbit) != 0;
}

bool LogStream::good() const
{
   return Output() && rdstate() == std::ios_base::goodbit;
}

void LogStream::clear(std::ios_base::iostate theState)
{
   if (std::ostream* anOutput = Output())
   {
      anOutput->clear(theState);
   }
}

LogStream::operator void*() const
{
   return operator!() ? nullptr : Output();
}

bool LogStream::operator!() const
{
   return !Output() || fail();
}

std::streambuf* LogStream::rdbuf() const
{
   std::ostream* anOutput = Output();
   return anOutput ? anOutput->rdbuf() : nullptr;
}

int LogStream::xalloc()
{
   return std::ios_base::xalloc();
}

long& LogStream::iword(int theIndex)
{
   if (std::ostream* anOutput = Output())
   {
      return anOutput->iword(theIndex);
   }
   return itsNoWord = 0;
}

void*& LogStream::pword(int theIndex)
{
   if (std::ostream* anOutput = Output())
   {
      return anOutput->pword(theIndex);
   }
   return itsNoPointer = nullptr;
}

bool LogStream::sync_with_stdio(bool theSwitch)
{
   return std::ios_base::sync_with_stdio(theSwitch);
}

int LogStream::opfx()
{
   if (good() && tie())
   {
      tie()->flush();
   }
   return good();
}

void LogStream::osfx()
{
   if (flags() & std::ios_base::unitbuf)
   {
      flush();
   }
}
