#include "talvenor/foundation/TNTrace.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace
{

// In the order of the flag numbers, which are the indices. Hosts and configuration files use these names.
constexpr std::string_view kFlagNames[] = {
    "TNTraceNone",
    "TNTraceSocket",
    "TNTraceSocketErrors",
    "TNTraceSocketOpenClose",
    "TNTraceSocketEOF",
    "TNTraceSocketBytesRead",
    "TNTracePDU",
    "TNTracePDUDicomObjects",
    "TNTracePDataTF",
    "TNTracePDUVerbose",
    "TNTraceDimsec",
    "TNTraceDimsecDicomObjects",
    "TNTraceDimsen",
    "TNTraceAssociation",
    "TNTraceFileIO",
    "TNTraceThreads",
    "TNTracePresentationContextManager",
    "TNTraceDULStream",
};
static_assert(std::size(kFlagNames) == TNTrace::itsFlagCount);
static_assert(kFlagNames[TNTrace::TNTraceDULStream] == "TNTraceDULStream");

// ASCII only: a host's locale must not change which names are known.
constexpr char Upper(char theCharacter)
{
   return theCharacter >= 'a' && theCharacter <= 'z' ? char(theCharacter - 'a' + 'A') : theCharacter;
}

// The number of a flag, or itsFlagCount, which every setter ignores, for an unknown name.
unsigned int FlagNumber(std::string_view theName)
{
   const auto aName = std::find_if(std::begin(kFlagNames), std::end(kFlagNames), [theName](std::string_view aKnown) {
      return std::equal(aKnown.begin(), aKnown.end(), theName.begin(), theName.end(),
                        [](char theLeft, char theRight) { return Upper(theLeft) == Upper(theRight); });
   });
   return static_cast<unsigned int>(aName - std::begin(kFlagNames));
}

} // namespace

TNTrace::TNTrace(unsigned int theThreshold) : CapturingVersioningLogStream(theThreshold) {}

TNTrace::TNTrace(const char* theFilename, unsigned int theThreshold, int theOpenMode, int theProtection)
    : CapturingVersioningLogStream(theFilename, theThreshold, theOpenMode, theProtection)
{}

TNTrace::~TNTrace()
{
   itsFlags.store(0, std::memory_order_relaxed);
}

void TNTrace::SetTrace(unsigned int theFlag)
{
   if (theFlag < itsFlagCount)
   {
      const LogLock aLock(*this);
      itsFlags.fetch_or(1u << theFlag, std::memory_order_relaxed);
   }
}

void TNTrace::ClearTrace(unsigned int theFlag)
{
   if (theFlag < itsFlagCount)
   {
      const LogLock aLock(*this);
      itsFlags.fetch_and(~(1u << theFlag), std::memory_order_relaxed);
   }
}

void TNTrace::SetTrace(const std::string& theName)
{
   SetTrace(FlagNumber(theName));
}

void TNTrace::ClearTrace(const std::string& theName)
{
   ClearTrace(FlagNumber(theName));
}

void TNTrace::Clear()
{
   const LogLock aLock(*this);
   itsFlags.store(0, std::memory_order_relaxed);
}

void TNTrace::SetList(const std::string& theNames)
{
   std::string_view aRest = theNames;
   while (!aRest.empty())
   {
      const std::size_t aLength = std::min(aRest.find(','), aRest.size());
      SetTrace(FlagNumber(aRest.substr(0, aLength)));
      aRest.remove_prefix(std::min(aLength + 1, aRest.size()));
   }
}
