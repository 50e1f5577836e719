// Media directories (PS3.10 8.6, PS3.3 annex F): the records of a directory refer to each other by their places in the
// file, which these operations tell.
//
// Offsets are in bytes from the first byte of the file (that of the preamble) to the tag of the record's item, one a
// record in their order. Returned are 1, or 0 with the cause in theResult and theSystemError and a line in the error
// log. Stateless; what they are given is borrowed.
#pragma once

#include "talvenor/foundation/BasicTypes.h"
#include "talvenor/foundation/TNResult.h"

class DICOMDataObject;
class DICOMDataObjectInputStreamVR;
class OutputTransferSyntax;
class Part10InputStream;
class SequenceVR;

class TALVENOR_API DICOMDirUtilities
{
public:
   using Offsets = RWTValOrderedVector<int>;

   // Replaces the contents of theDirectory by those of the stream, which is closed. The dataset reads its values as
   // little endian; a directory in another byte order (which the standard does not allow) needs SetEndian.
   static int LoadFromStream(DICOMDataObject& theDirectory, Part10InputStream& theStream, TNResultCode& theResult,
                             int& theSystemError, Offsets& theOffsets);

   // Where the records would be if theDirectory were written with its offsets filled in, which changes no lengths. The
   // offsets are true of a file that is written in little endian explicit VR with the header values of this library
   // (implementation class UID and version name), this SOP instance UID, and a source AE title as long as
   // kSourceAETitle: by a Part10FileOutputStream. DICOMObject::SaveToFile states another title.
   static int CalculateDirectoryRecordOffsets(DICOMDataObject& theDirectory, const RWCString& theSOPInstanceUID,
                                              TNResultCode& theResult, int& theSystemError, Offsets& theOffsets);

   // Additions: LoadFromStream that tells whether the stream ended inside the directory (what was there is loaded), and
   // what the offsets are calculated with.
   static int LoadFromStream(DICOMDataObject& theDirectory, Part10InputStream& theStream, TNResultCode& theResult,
                             int& theSystemError, Offsets& theOffsets, bool& theIsCut);
   static constexpr char kSOPClassUID[] = "1.2.840.10008.1.3.10"; // Media Storage Directory Storage
   static constexpr char kSourceAETitle[] = "OFFSETCALC";

private:
   static SequenceVR* GetDirectoryRecordSequenceVR(DICOMDataObjectInputStreamVR& theSequence,
                                                   Part10InputStream& theStream, Offsets& theOffsets);
   static void SaveDirectoryRecordSequenceVR(SequenceVR& theSequence, OutputTransferSyntax& theEncoder,
                                             Offsets& theOffsets);
};
