#include "talvenor/file/Part10OutputStream.h"

#include <utility>

#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/file/Part10Header.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/transfer/ConcreteOutputTransferSyntaxes.h"

Part10OutputStream::Part10OutputStream(Part10Header* theHeader) : itsOwnedHeader(theHeader), itsHeader(*theHeader) {}

Part10OutputStream::Part10OutputStream(const Part10Header& theHeader) : itsHeader(theHeader) {}

Part10OutputStream::~Part10OutputStream() = default;

void Part10OutputStream::Write(const unsigned char* theBytes, unsigned int theCount)
{
   if (theCount != 0)
   {
      WriteImpl(theBytes, theCount);
      itsBytesWritten += theCount;
   }
}

void Part10OutputStream::Seek(unsigned int)
{
   throw StreamIOException("Part10OutputStream does not support Seek(size_t)", TN_UNSUPPORTED, 0);
}

void Part10OutputStream::SeekImpl(unsigned int)
{
   throw StreamIOException("OutputStream does not support Seek(size_t)", TN_UNSUPPORTED, 0);
}

int Part10OutputStream::CanSeek() const
{
   return 0;
}

const RWCString& Part10OutputStream::GetTransferSyntaxUID() const
{
   return itsHeader.GetTransferSyntaxUID();
}

void Part10OutputStream::WriteHeader()
{
   itsBytesWritten = 0;
   const std::unique_ptr<DICOMDataObject> aMetaInformation(itsHeader.AsDICOMDataObject(0));
   if (!aMetaInformation)
   {
      throw StreamIOException("Invalid Part 10 header, missing either SOP Class UID, SOP Instance UID, Transfer Syntax "
                              "UID, or Implementation Class UID",
                              TN_INVALID_FILE_HANDLE, 0);
   }
   constexpr unsigned char kZeros[Part10Header::kPreambleLength] = {};
   constexpr unsigned char kMagic[] = {'D', 'I', 'C', 'M'};
   const unsigned char* const aPreamble = itsHeader.GetPreamble();
   Write(aPreamble != nullptr ? aPreamble : kZeros, Part10Header::kPreambleLength);
   Write(kMagic, sizeof kMagic);
   LittleEndianExplicitOutputTransferSyntax anEncoder(*this);
   anEncoder.SetDataDictionary(std::as_const(*aMetaInformation).GetDataDictionary()); // const: a copy
   anEncoder.SaveDICOMObject(*aMetaInformation);
}
