// Reads a dataset out of a Part 10 stream, as DICOMObject::LoadFromFile does, for hosts that open the stream
// themselves or must know whether the dataset was whole.
#pragma once

#include <memory>
#include <vector>

#include "talvenor/foundation/BasicTypes.h"
#include "talvenor/transfer/InputTransferSyntax.h"

class DICOMObject;
class Part10InputStream;
class VR;

class TALVENOR_API DICOMObjectLoader
{
public:
   // Both are borrowed for the time of the load. Elements are read with the decoder of the stream's transfer syntax;
   // StreamIOException (TN_TRANSFER_SYNTAX_UNSUPPORTED) when it is not served.
   DICOMObjectLoader(DICOMObject& theObject, Part10InputStream& theStream);
   ~DICOMObjectLoader();

   // Stops before the first element that InputTransferSyntax::SetStopAtGroup and SetStopAtElement describe.
   void SetStopAt(UINT16 theGroup, UINT16 theElement);

   // Keeps private elements only where a private dictionary of the default catalog knows their creator.
   void SetKnownTagsOnly(bool theFlag) { itsKnownTagsOnly = theFlag; }

   // Pushes the elements into the dataset until the stream, or the limit, ends it. Throws what decoding throws; what
   // had been read by then is in the dataset.
   void Load();

   // How the dataset ended, whether something in it was cut short, and where.
   const InputTransferSyntax& GetDecoder() const { return *itsDecoder; }

private:
   bool IsKnown(const VR& theVR);

   DICOMObject& itsObject;
   std::unique_ptr<InputTransferSyntax> itsDecoder;
   bool itsKnownTagsOnly = false;

   // The blocks (group and block number, low byte 0) whose creators are known; when all places are taken it starts over
   // at the first.
   std::vector<UINT32> itsKnownBlocks;
   size_t itsNextBlock = 0;
};
