// tn frames: shows where the frames of pixel data are, and takes them out.
#pragma once

#include <string>

#include "apps/tn/base/Command.h"
#include "talvenor/foundation/BasicTypes.h"

class ExceptionBase;
class FrameLister;
class ImageFrameInputStream;
class PixelData;

class FramesCommand : public Command
{
public:
   explicit FramesCommand(CLI::App& theProgram);
   int Run() override;

private:
   // A JPEG or JPEG 2000 file, or a DICOM file.
   void ShowFile();
   void ShowNative(PixelData& thePixels);
   void ShowEncapsulated(PixelData& thePixels);

   // Reads the offset table and warns of one that is at fault. False when there is none with entries for every frame.
   bool ReadTable(PixelData& thePixels, ImageFrameInputStream& theFrames);

   // The frames as their codestreams tell, or as the table and the fragments do.
   void ListByCodestream(PixelData& thePixels, ImageFrameInputStream& theFrames, FrameLister& theLister);
   void ListByFragments(PixelData& thePixels, const ImageFrameInputStream& theFrames, FrameLister& theLister);

   void ShowMarkers(ImageFrameInputStream& theFrames);
   void ExtractNative(PixelData& thePixels);
   void ExtractFrame(PixelData& thePixels, ImageFrameInputStream& theFrames);
   void ExtractFragments(PixelData& thePixels, const ImageFrameInputStream& theFrames);
   void WarnOfCodestreams(const ExceptionBase& theException);
   void Warn(const std::string& theText);

   std::string itsFile;
   std::string itsData;
   std::string itsOutput;
   INT32 itsExtracted = 0; // from 1, 0 for none
   bool itsShowsTable = false;
   bool itsShowsMarkers = false;
   bool itsScans = false;
   bool itsIsJson = false;
   bool itsHasWarned = false;
};
