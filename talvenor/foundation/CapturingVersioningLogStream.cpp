#include "talvenor/foundation/CapturingVersioningLogStream.h"

#include <iostream>
#include <utility>

#include "talvenor/foundation/MutexWhileInScope.h"

namespace
{

// Sets a flag for a scope, whatever is thrown in it.
class FlagWhileInScope
{
public:
   explicit FlagWhileInScope(bool& theFlag) : itsFlag(theFlag) { itsFlag = true; }
   ~FlagWhileInScope() { itsFlag = false; }
   FlagWhileInScope(const FlagWhileInScope&) = delete;
   FlagWhileInScope& operator=(const FlagWhileInScope&) = delete;

private:
   bool& itsFlag;
};

} // namespace

CapturingVersioningLogStream::CapturingVersioningLogStream(unsigned int theThreshold) : itsRollover(theThreshold) {}

CapturingVersioningLogStream::CapturingVersioningLogStream(const char* theFilename, unsigned int theThreshold,
                                                           int theOpenMode, int theProtection)
    : itsRollover(theThreshold)
{
   CapturingVersioningLogStream::On(theFilename, theOpenMode, theProtection);
}

// Whoever is in an entry is waited for while all that the entry uses is still there.
CapturingVersioningLogStream::~CapturingVersioningLogStream()
{
   CapturingVersioningLogStream::Off();
}

// Every On of LogStream begins with Off, so this is where the file and the capture target are forgotten.
void CapturingVersioningLogStream::Off()
{
   MutexWhileInScope aLock(itsMutex);
   LogStream::Off();
   itsRollover.ForgetFile();
   itsCaptureTarget = nullptr;
}

void CapturingVersioningLogStream::On(const char* theFilename, int theOpenMode, int theProtection)
{
   MutexWhileInScope aLock(itsMutex);
   LogStream::On(theFilename, theOpenMode, theProtection);
   if (IsOn())
   {
      itsRollover.SetFile(theFilename, theOpenMode, theProtection);
   }
}

void CapturingVersioningLogStream::On(CapturingVersioningLogStream& theTarget)
{
   MutexWhileInScope aLock(itsMutex);
   LogStream::On(theTarget);
   if (IsRedirected())
   {
      itsCaptureTarget = &theTarget;
   }
}

void CapturingVersioningLogStream::On()
{
   On(std::cout);
}

void CapturingVersioningLogStream::PostEntryCallback()
{
   MutexWhileInScope aLock(itsMutex);
   if (itsRollover.IsDue(*this))
   {
      itsRollover.SwitchVersions(*this);
   }
}

// The capture starts before the start line, which belongs to the captured text.
void CapturingVersioningLogStream::StartEntry(SeverityLevel theSeverity)
{
   BeginEntry(theSeverity);
   CapturingVersioningLogStream* anOwner = CaptureOwner();
   if (anOwner && anOwner->itsMaxCaptureSize != 0)
   {
      anOwner->ActivateCapture();
   }
   WriteStartLine();
}

void CapturingVersioningLogStream::EndEntry()
{
   const EntryRelease aRelease(*this);
   CapturingVersioningLogStream* anOwner = CaptureOwner();
   if (anOwner)
   {
      anOwner->itsIsCaptureActive = false;
   }
   WriteEndLine();
   flush();
   if (anOwner && anOwner->itsMaxCaptureSize != 0)
   {
      anOwner->DeliverCapture(*this);
   }
   PostEntryCallback();
}

std::ostream* CapturingVersioningLogStream::GetCaptureStream()
{
   return itsIsCaptureActive && !IsRedirected() ? &itsCapture : nullptr;
}

std::string CapturingVersioningLogStream::GetCapture() const
{
   const CapturingVersioningLogStream* anOwner = CaptureOwner();
   if (!anOwner)
   {
      return std::string();
   }
   MutexWhileInScope aLock(anOwner->itsMutex);
   return anOwner->itsCapture.str();
}

unsigned int CapturingVersioningLogStream::GetCaptureLength() const
{
   return static_cast<unsigned int>(GetCapture().size());
}

bool CapturingVersioningLogStream::IsCaptureEnabled() const
{
   return GetMaxCaptureSize() != 0;
}

unsigned int CapturingVersioningLogStream::GetMaxCaptureSize() const
{
   const CapturingVersioningLogStream* anOwner = CaptureOwner();
   if (!anOwner)
   {
      return 0;
   }
   MutexWhileInScope aLock(anOwner->itsMutex);
   return anOwner->itsMaxCaptureSize;
}

void CapturingVersioningLogStream::SetMaxCaptureSize(unsigned int theSize)
{
   CapturingVersioningLogStream& anOwner = SettingsOwner();
   MutexWhileInScope aLock(anOwner.itsMutex);
   anOwner.itsMaxCaptureSize = theSize;
}

void CapturingVersioningLogStream::SetCaptureCallback(CaptureCallback theCallback)
{
   CapturingVersioningLogStream& anOwner = SettingsOwner();
   MutexWhileInScope aLock(anOwner.itsMutex);
   anOwner.itsCallback = theCallback;
}

CapturingVersioningLogStream::CaptureCallback CapturingVersioningLogStream::GetCallback() const
{
   const CapturingVersioningLogStream* anOwner = CaptureOwner();
   if (!anOwner)
   {
      return nullptr;
   }
   MutexWhileInScope aLock(anOwner->itsMutex);
   return anOwner->itsCallback;
}

void CapturingVersioningLogStream::SetApplicationName(const std::string& theName)
{
   MutexWhileInScope aLock(itsMutex);
   itsApplicationName = theName;
}

std::string CapturingVersioningLogStream::GetApplicationName() const
{
   MutexWhileInScope aLock(itsMutex);
   return itsApplicationName;
}

std::string CapturingVersioningLogStream::GetFilename() const
{
   MutexWhileInScope aLock(itsMutex);
   return itsRollover.GetFilename();
}

unsigned int CapturingVersioningLogStream::GetThreshold() const
{
   MutexWhileInScope aLock(itsMutex);
   return itsRollover.GetThreshold();
}

void CapturingVersioningLogStream::SetThreshold(unsigned int theThreshold)
{
   MutexWhileInScope aLock(itsMutex);
   itsRollover.SetThreshold(theThreshold);
}

std::string CapturingVersioningLogStream::SwitchVersions()
{
   MutexWhileInScope aLock(itsMutex);
   return itsRollover.SwitchVersions(*this);
}

const CapturingVersioningLogStream* CapturingVersioningLogStream::CaptureOwner() const
{
   MutexWhileInScope aLock(itsMutex);
   if (OwnsCapture())
   {
      return this;
   }
   return itsCaptureTarget ? std::as_const(*itsCaptureTarget).CaptureOwner() : nullptr;
}

CapturingVersioningLogStream* CapturingVersioningLogStream::CaptureOwner()
{
   return const_cast<CapturingVersioningLogStream*>(std::as_const(*this).CaptureOwner());
}

CapturingVersioningLogStream& CapturingVersioningLogStream::SettingsOwner()
{
   MutexWhileInScope aLock(itsMutex);
   return itsCaptureTarget ? itsCaptureTarget->SettingsOwner() : *this;
}

// The capture formats as the output does at this moment; manipulators reach both from here on. It never throws on
// behalf of the output.
void CapturingVersioningLogStream::ActivateCapture()
{
   if (std::ostream* anOutput = Output())
   {
      itsCapture.clear();
      itsCapture.copyfmt(*anOutput); // takes over the exceptions of the output, too
      itsCapture.exceptions(std::ios_base::goodbit);
   }
   itsIsCaptureActive = true;
}

void CapturingVersioningLogStream::DeliverCapture(CapturingVersioningLogStream& theSource)
{
   const std::string aText = std::move(itsCapture).str();
   if (!aText.empty() && itsCallback && !itsIsInCallback)
   {
      const FlagWhileInScope aFlag(itsIsInCallback);
      itsCallback(theSource, aText);
   }
}
