// An item (FFFE,E000) whose elements are still in the stream: read them with NextVR, or skip them, before the sequence
// is asked for its next item.
#pragma once

#include <memory>

#include "talvenor/dataset/VR.h"
#include "talvenor/transfer/VRInputStream.h"

class InputTransferSyntax;

class TALVENOR_API VRInputStreamVR : public VR, public VRInputStream
{
public:
   // Takes the decoder of the item's content. theLength is in bytes, or undefined.
   VRInputStreamVR(UINT32 theLength, std::unique_ptr<InputTransferSyntax> theContent);
   ~VRInputStreamVR() override;

   // Null at the end of the item; its decoder is gone then.
   VR* NextVR() override;

   // Throws StreamIOException (TN_INTERNAL_ERROR) once the item has ended.
   void Pushback(VR* theVR) override;

   int HasMoreData() const { return itsContent != nullptr; }
   int IsUndefinedLength() const { return GetLength() == kUndefinedLength; }
   int IsEmpty() const override { return itsContent == nullptr; }
   int IsStreamBuffered() const override { return 1; }
   VRInputStreamVR* GetAsVRInputStreamVR() override { return this; }

private:
   std::unique_ptr<InputTransferSyntax> itsContent;
};
