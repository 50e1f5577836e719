// A sequence whose items are still in the stream. Either read them one by one with NextDICOMDataObject, or have the
// whole sequence built in memory by GetVR; a dataset does the latter when the element is pushed.
#pragma once

#include <memory>

#include "talvenor/dataset/VR.h"

class InputTransferSyntax;
class SequenceVR;
class VRInputStreamVR;

class TALVENOR_API DICOMDataObjectInputStreamVR : public VR
{
public:
   // Takes the decoder of the sequence's content. theLength is in bytes, or undefined. Typed SQ.
   DICOMDataObjectInputStreamVR(const MAttributeTag& theTag, UINT32 theLength,
                                std::unique_ptr<InputTransferSyntax> theContent, TNEndian::EndianType theEndian,
                                MemoryAllocater& theAllocator = GetDefaultMemoryAllocater());
   ~DICOMDataObjectInputStreamVR() override;

   // The next item, owned by the caller, who reads it to its end before the next call; null at the end of the sequence.
   // From the first call on GetVR returns null. Throws StreamIOException (TN_INVALID_DELIMITER) where an element that
   // is no item stands between the items.
   VRInputStreamVR* NextDICOMDataObject();

   // The whole sequence, owned by the caller; null when it was made before or an item has been asked for.
   SequenceVR* GetVR();

   // An addition: whether the items have explicit VR; false once the sequence has ended.
   bool IsExplicit() const;

   int IsEmpty() const override { return itsContent == nullptr; }
   int IsStreamBuffered() const override { return 1; }
   int IsUndefinedLength() const { return GetLength() == kUndefinedLength; }
   DICOMDataObjectInputStreamVR* GetAsDICOMDataObjectInputStreamVR() override { return this; }
   std::unique_ptr<VR> Materialise(std::exception_ptr& theFailure) override;

private:
   void ReadItems(SequenceVR& theSequence);

   std::unique_ptr<InputTransferSyntax> itsContent;
   bool itsMayMaterialise = true;
};
