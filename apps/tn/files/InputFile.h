// A DICOM file, or standard input for the name "-", open at its dataset.
#pragma once

#include <memory>
#include <string>

#include "apps/tn/base/StandardInput.h"
#include "talvenor/file/Part10InputStream.h"
#include "talvenor/foundation/StreamIOException.h"

// What is read is no DICOM file, or none for what is asked.
class NotDICOM : public StreamIOException
{
public:
   explicit NotDICOM(const std::string& theText = "not a DICOM file")
       : StreamIOException(theText.c_str(), TN_PARSE_TO_OBJECT_FAILED, 0)
   {}
};

// Throws StreamIOException when theName is there but no regular file, whose size reading needs, and
// NotDICOM when it is too short.
void CheckIsReadable(const std::string& theName);

class InputFile
{
public:
   // Throws ExceptionBase (NotDICOM, or StreamIOException for a file that cannot be read). What the meta information
   // lacks is tolerated. A dataset that does not look like the transfer syntax that the file states is refused.
   explicit InputFile(const std::string& theName);

   // The same for a file that theSource, which is borrowed, delivers from its start.
   explicit InputFile(InputStream& theSource) { Open(theSource); }

   Part10InputStream& GetStream() { return *itsStream; }

private:
   void Open(InputStream& theSource);
   void Check();
   void CheckIsDataset();
   void CheckTransferSyntax();

   StandardInput itsStandardInput;
   std::unique_ptr<Part10InputStream> itsStream;
};
