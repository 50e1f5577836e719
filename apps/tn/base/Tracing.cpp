#include "apps/tn/base/Tracing.h"

#include <sstream>
#include <stdexcept>

#include <CLI/CLI.hpp>

#include "talvenor/foundation/TNTrace.h"
#include "talvenor/foundation/TNXInitializer.h"

namespace
{
constexpr char kPrefix[] = "TNTrace"; // may be left out

// What is of interest when an association fails.
constexpr char kVerboseFlags[] = "TNTraceAssociation,TNTracePDU,TNTraceDimsec,TNTraceDimsecDicomObjects";

bool IsFlag(const std::string& theName)
{
   TNTrace aTrial;
   aTrial.SetTrace(theName);
   for (unsigned int aFlag = 1; aFlag < TNTrace::itsFlagCount; ++aFlag)
   {
      if (aTrial(aFlag))
      {
         return true;
      }
   }
   return false;
}

// The full names of the flags in a list. Throws CLI::ValidationError for one that does not exist.
std::string FullNames(const std::string& theList)
{
   std::string aNames;
   std::istringstream aStream(theList);
   for (std::string aName; std::getline(aStream, aName, ',');)
   {
      const std::string aFullName = IsFlag(aName) ? aName : kPrefix + aName;
      if (!IsFlag(aFullName))
      {
         throw CLI::ValidationError("--trace", "there is no \"" + aName +
                                                   "\"; useful ones are PDU, Association, Dimsec, DimsecDicomObjects, "
                                                   "PDataTF, Socket and PresentationContextManager");
      }
      aNames += (aNames.empty() ? "" : ",") + aFullName;
   }
   return aNames;
}
} // namespace

Tracing::Tracing(CLI::App& theOptions)
{
   theOptions.add_flag("-v,--verbose", itsIsVerbose, "Show the association and its messages on standard error");
   theOptions
       .add_option_function<std::string>(
           "--trace", [this](const std::string& theList) { itsFlags = FullNames(theList); },
           "What to show: trace flags separated by commas, such as PDU,Dimsec")
       ->type_name("FLAGS");
   theOptions.add_option("--log", itsLog, "Show it in this file, which is appended to")->type_name("FILE");
}

void Tracing::Begin() const
{
   if (!IsWanted())
   {
      return;
   }
   TNXInitializer::SetTraceOn(itsLog.empty() ? "cerr" : itsLog);
   if (!gTNTracer.IsOn())
   {
      throw std::runtime_error(itsLog + ": cannot be written");
   }
   TNXInitializer::SetTraceFlags(itsFlags.empty() || itsIsVerbose ? kVerboseFlags : "");
   TNXInitializer::SetTraceFlags(itsFlags);
}
