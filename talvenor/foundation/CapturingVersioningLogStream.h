// CapturingVersioningLogStream: a log stream with a file that rolls over (see VersioningLogStream), which also hands
// the text of each entry to a callback of the host.
//
// A stream that writes a file it opened by name owns a capture: while one of its entries is open, what is written is
// kept in memory too. At the end of the entry the callback receives the start line and the body, without the end line.
// A stream switched on to another CapturingVersioningLogStream shares the capture of that one. On any other output
// there is no capture.
//
// Settings are kept by the stream they are made on, or passed to the capture target; so they can be made before the
// file is opened. Queries of a stream with neither capture nor target answer empty, 0 and false.
//
// The callback runs in the thread that ends the entry, with the mutex held. It may write entries to the same stream,
// for which it is not called again; it must not switch the stream on or off. An exception that it throws reaches
// whoever ended the entry, after the stream has been unlocked.
#pragma once

#include <sstream>
#include <string>

#include "talvenor/foundation/LogRollover.h"
#include "talvenor/foundation/LogStream.h"

class TALVENOR_API CapturingVersioningLogStream : public LogStream
{
public:
   // Receives the stream whose entry ended and the text, which lives for the call only.
   using CaptureCallback = void (*)(CapturingVersioningLogStream& theLog, const std::string& theText);

   // theThreshold is in bytes; 0 means never.
   explicit CapturingVersioningLogStream(unsigned int theThreshold = 0);
   // Opens the file at once.
   CapturingVersioningLogStream(const char* theFilename, unsigned int theThreshold, int theOpenMode = OpenMode::Append,
                                int theProtection = OpenMode::Shared);
   ~CapturingVersioningLogStream() override;
   CapturingVersioningLogStream(const CapturingVersioningLogStream&) = delete;
   // Two streams must not roll over one file.
   CapturingVersioningLogStream& operator=(const CapturingVersioningLogStream&) = delete;

   void Off() override;
   using LogStream::On;
   void On(const char* theFilename, int theOpenMode = OpenMode::Append, int theProtection = OpenMode::Shared) override;
   void PostEntryCallback() override;
   void StartEntry(SeverityLevel theSeverity = ErrorSeverity) override;
   void EndEntry() override;
   std::ostream* GetCaptureStream() override;

   // Redirects to theTarget and shares its capture.
   virtual void On(CapturingVersioningLogStream& theTarget);
   // Writes to standard output.
   virtual void On();

   // What has been captured of the entry that is open now.
   std::string GetCapture() const;
   unsigned int GetCaptureLength() const;

   // Capturing happens while the maximum is not 0 (default 4096). The text of an entry is not cut at it.
   bool IsCaptureEnabled() const;
   unsigned int GetMaxCaptureSize() const;
   void SetMaxCaptureSize(unsigned int theSize);

   void SetCaptureCallback(CaptureCallback theCallback);
   CaptureCallback GetCallback() const;

   // Kept for the host; nothing here uses it.
   void SetApplicationName(const std::string& theName);
   std::string GetApplicationName() const;

   // Empty when no named file is written.
   std::string GetFilename() const;
   unsigned int GetThreshold() const;
   void SetThreshold(unsigned int theThreshold);

   // Puts the file aside now. Returns its new name, empty if there is no file or it cannot be renamed.
   std::string SwitchVersions();

private:
   bool OwnsCapture() const { return !itsRollover.GetFilename().empty(); }
   // The stream whose capture this one uses, null if none.
   const CapturingVersioningLogStream* CaptureOwner() const;
   CapturingVersioningLogStream* CaptureOwner();
   // Where a setting is kept: the capture owner, or the last stream of the chain of targets.
   CapturingVersioningLogStream& SettingsOwner();

   void ActivateCapture();
   void DeliverCapture(CapturingVersioningLogStream& theSource);

   LogRollover itsRollover;
   CapturingVersioningLogStream* itsCaptureTarget = nullptr;
   CaptureCallback itsCallback = nullptr;
   std::string itsApplicationName;
   bool itsIsCaptureActive = false;
   bool itsIsInCallback = false; // entries written by the callback must not call it again
   unsigned int itsMaxCaptureSize = 4096;
   std::ostringstream itsCapture;
};
