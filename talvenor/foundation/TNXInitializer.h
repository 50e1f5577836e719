// TNXInitializer: the one place where a host configures the library. Each setter stores the class-wide default of the
// class that uses it; objects made afterwards copy it. Nothing is locked: call these once at start-up, before other
// threads use the library. No dictionary file is loaded unless the host asks for it here.
//
// Each setter is defined in the folder of the class it sets (TNXInitializer_dictionary.cpp and so on).
#pragma once

#include <istream>
#include <string>

#include "talvenor/Export.h"
#include "talvenor/foundation/BasicTypes.h"

class TALVENOR_API TNXInitializer
{
public:
   TNXInitializer() = delete;

   // Load a text dictionary into the default one. False if the file cannot be read or holds no entry; a faulty line
   // throws what the load throws. A stream is borrowed.
   static bool SetDataDictionary(const RWCString& theFilename);
   static bool SetDataDictionary(std::istream& theStream);
   static bool SetUIDDictionary(const RWCString& theFilename);
   static bool SetUIDDictionary(std::istream& theStream);

   // Adds the files to the default catalog of private dictionaries. Stops with 0 at the first one that is refused;
   // those before it stay.
   static int SetDefaultPrivateDataDictionaryList(const RWTValOrderedVector<RWCString>& theFilenames);

   static void SetDefaultAETitle(const RWCString& theTitle);

   static void SetDefaultFileLockWaitTime(unsigned int theSeconds); // of a locked file stream
   static void SetDefaultFileBufferSize(unsigned int theSize);      // in bytes; 0: unbuffered

   // Of sockets: seconds that a read may wait (0: no limit) and after which an abort request is noticed (0: never),
   // sizes in bytes asked of the operating system (0: its own), and whether the names of peers are looked up.
   static void SetDefaultSocketTimeout(int theSeconds);
   static void SetDefaultSocketAbortPollInterval(int theSeconds);
   static void SetDefaultTCPReceiveBufferSize(int theSize);
   static void SetDefaultTCPSendBufferSize(int theSize);
   static void SetEnableReverseDNSLookup(int theFlag);

   // In bytes, of the P-DATA-TF PDUs of an association (PS3.8 D.1). What is announced for receiving: 0 is without
   // limit, 1 to 7 become 8. What is sent at most, whatever the peer allows: values below 14 become 14.
   static void SetDefaultMaxPDUReceiveLength(unsigned int theLength);
   static void SetDefaultMaxPDUSendLength(unsigned int theLength);

   // How long to wait, after an abort or a rejection, until the peer closes the connection; 0 or less: without limit.
   static void SetDefaultPDUARRTimer(int theSeconds);

   // Whether datasets may go out in compressed contexts.
   static void SetEnableCompressedTransferSyntax(int theFlag);

   // Where gTNTracer writes: "cerr", "cout" (exactly so) or the name of a file, which is appended to. A file that
   // cannot be opened leaves the tracer off.
   static void SetTraceOn(const RWCString& theWhere);
   // Names of TNTrace flags separated by commas; flags already set stay set.
   static void SetTraceFlags(const RWCString& theFlags);
};
