// A file to be sent: what has to be known of it before the peer is called.
#pragma once

#include <string>

#include "apps/tn/files/PlainFile.h"

struct SendFile
{
   std::string itsPath;
   PlainFile::Identity itsIdentity;
   RWCString itsSOPClassUID;
   RWCString itsSOPInstanceUID;
   RWCString itsTransferSyntaxUID;
   UINT64 itsDatasetStart = 0; // bytes from the start of the file
   UINT64 itsDatasetEnd = 0;

   // Its bytes may not go out as they are, even in their own syntax: see DatasetWalk::IsIrregular.
   bool itsIsIrregular = false;

   UINT64 GetDatasetSize() const { return itsDatasetEnd - itsDatasetStart; }
};

// Reads the meta information and walks the dataset. The SOP class and instance are those that the dataset names, as the
// peer will see them; meta information says the same, or is out of date.
//
// Throws NotDICOM for other files and for media directories, IncompleteDataset for a DICOM file that cannot be sent,
// and ExceptionBase when it cannot be read.
SendFile LookAtFile(const std::string& thePath);
