#include "talvenor/transfer/LengthPatchingOutputStream.h"

#include "talvenor/dataset/VR.h"
#include "talvenor/foundation/StreamIOException.h"

void LengthPatchingOutputStream::SetLength(std::size_t theContent, TNEndian::EndianType theEndian)
{
   const std::size_t aLength = itsBytes.size() - theContent;
   if (aLength >= VR::kUndefinedLength)
   {
      throw StreamIOException("OutputTransferSyntax::SaveStreamBufferedVR: content does not fit a 32 bit length",
                              TN_INVALID_ELEMENT_HEADER, 0);
   }
   TNEndian::Store(&itsBytes[theContent - sizeof(UINT32)], static_cast<UINT32>(aLength), theEndian);
}

void LengthPatchingOutputStream::WriteTo(OutputStream& theStream) const
{
   theStream.Write(itsBytes.data(), static_cast<unsigned int>(itsBytes.size()));
}
