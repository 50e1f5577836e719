// A DICOM file, or standard input for the name "-", open at its dataset.
#pragma once

#include <memory>
#include <string>

#include "apps/tn/StandardInput.h"
#include "talvenor/file/Part10InputStream.h"

class InputFile
{
public:
   // Throws ExceptionBase (StreamIOException for a file that cannot be read or is not DICOM). What the meta information
   // lacks is tolerated. A dataset that does not look like the transfer syntax that the file states is refused.
   explicit InputFile(const std::string& theName);

   Part10InputStream& GetStream() { return *itsStream; }

private:
   void CheckIsDataset();
   void CheckTransferSyntax();

   StandardInput itsStandardInput;
   std::unique_ptr<Part10InputStream> itsStream;
};
