// A DICOM file, or standard input for the name "-", read up to its pixel data.
#pragma once

#include <memory>
#include <string>

#include "apps/tn/files/InputFile.h"
#include "talvenor/dataset/DICOMDataObject.h"

class InputTransferSyntax;
class PixelDataFragmentInputStreamVR;
class PixelInputStreamVR;
class VR;

class PixelData
{
public:
   // Throws as InputFile does, and IncompleteDataset when there is no pixel data or what stands before it cannot be
   // read.
   explicit PixelData(const std::string& theName);
   ~PixelData();

   Part10InputStream& GetStream() { return itsFile.GetStream(); }

   // The decoder that stands at the pixel data, and what stands before: everything but the pixels themselves.
   const InputTransferSyntax& GetDecoder() const { return *itsDecoder; }
   const DICOMDataObject& GetHeader() const { return itsHeader; }

   // One of the two, the other is null.
   PixelDataFragmentInputStreamVR* GetFragments();
   PixelInputStreamVR* GetNativePixels();

   // What (0028,0008) says; 1 where it says nothing, or nothing that makes sense.
   INT32 GetNumberOfFrames() const;

   // The size of a native frame in bytes, from rows, columns, samples and bits (PS3.3 C.7.6.3.1); 0 when the header
   // does not tell it, or tells more than 64 bits can hold.
   UINT64 GetNativeFrameSize() const;

private:
   bool IsSubsampled() const;

   InputFile itsFile;
   DICOMDataObject itsHeader;
   std::unique_ptr<InputTransferSyntax> itsDecoder;
   std::unique_ptr<VR> itsPixels;
};
