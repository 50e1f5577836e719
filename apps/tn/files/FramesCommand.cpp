#include "apps/tn/files/FramesCommand.h"

#include <algorithm>
#include <iostream>
#include <limits>
#include <stdexcept>
#include <system_error>
#include <vector>

#include <CLI/CLI.hpp>

#include "apps/tn/base/AtomicFile.h"
#include "apps/tn/base/Dictionaries.h"
#include "apps/tn/base/ErrorText.h"
#include "apps/tn/base/ExitCode.h"
#include "apps/tn/files/Codestreams.h"
#include "apps/tn/files/DatasetChecks.h"
#include "apps/tn/files/FragmentFrames.h"
#include "apps/tn/files/FrameLister.h"
#include "apps/tn/files/PixelData.h"
#include "talvenor/foundation/OneLine.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/io/LFStream.h"
#include "talvenor/pixel/BasicOffsetTable.h"
#include "talvenor/pixel/ImageFrameInputStream.h"
#include "talvenor/pixel/PixelDataFragmentInputStream.h"
#include "talvenor/pixel/PixelDataFragmentInputStreamVR.h"
#include "talvenor/pixel/PixelInputStreamVR.h"
#include "talvenor/transfer/InputTransferSyntax.h"
#include "talvenor/transfer/TransferSyntaxType.h"

namespace
{
constexpr unsigned int kBlock = 65536; // bytes
constexpr char kNoText[] = " ";        // instead of the lists of options that exclude and need each other
constexpr UINT32 kItemHeader = 8;

// A file to write to, or standard output for the name "-".
class FrameOutput
{
public:
   explicit FrameOutput(const std::string& theName)
   {
      if (theName != "-")
      {
         itsFile = std::make_unique<AtomicFile>(theName);
         itsStream.open(itsFile->GetTemporaryPath().c_str(), std::ios_base::out | std::ios_base::binary);
      }
   }

   // Copies up to theLength bytes and returns how many there were.
   UINT64 Copy(InputStream& theSource, UINT64 theLength)
   {
      UINT64 aCopied = 0;
      while (aCopied < theLength)
      {
         const auto aWanted = static_cast<unsigned int>(std::min<UINT64>(theLength - aCopied, kBlock));
         const unsigned int aCount = theSource.ReadFully(itsBlock.data(), aWanted);
         Target().write(reinterpret_cast<const char*>(itsBlock.data()), aCount);
         aCopied += aCount;
         if (aCount < aWanted)
         {
            break;
         }
      }
      return aCopied;
   }

   void Commit()
   {
      Target().flush();
      if (itsFile)
      {
         itsStream.close();
      }
      if (!Target())
      {
         const int anError = itsStream.rdbuf()->GetError();
         throw WriteFailure(anError == 0 ? "cannot be written"
                                         : "cannot be written: " + std::system_category().message(anError));
      }
      if (itsFile)
      {
         itsFile->Commit();
      }
   }

private:
   std::ostream& Target() { return itsFile ? static_cast<std::ostream&>(itsStream) : std::cout; }

   std::unique_ptr<AtomicFile> itsFile; // null for standard output
   LFStream itsStream;
   std::vector<unsigned char> itsBlock =
       std::vector<unsigned char>(kBlock); // made once: fragments may be of a byte each
};

ImageFrameInputStream FramesOf(PixelData& thePixels)
{
   return ImageFrameInputStream(*thePixels.GetFragments(), thePixels.GetStream().GetTransferSyntaxUID(),
                                thePixels.GetNumberOfFrames(), 0);
}

void ListFound(ImageFrameInputStream& theFrames, FrameLister& theLister)
{
   while (theFrames.PassNextFrame())
   {
      const ImageFrameInputStream::FramePlace aPlace = theFrames.GetCurrentFramePlace();
      theLister.Add(aPlace.itsItemOffset, static_cast<UINT64>(theFrames.GetCurrentFrameLength()),
                    static_cast<UINT32>(aPlace.itsFirstFragment),
                    static_cast<UINT32>(aPlace.itsFragmentLengths.size()));
   }
}

// A length may lie, and what it says would be listed as frames: sees whether the last byte is in the file.
void CheckIsThere(PixelData& thePixels, UINT64 theLength)
{
   DecodeWhole(thePixels.GetDecoder(), thePixels.GetStream(), [&] {
      const auto aBefore = static_cast<unsigned int>(theLength - 1);
      PixelInputStreamVR& aNative = *thePixels.GetNativePixels();
      unsigned char aLast;
      if (theLength != 0 && (aNative.Skip(aBefore) != aBefore || aNative.Read(&aLast, 1) != 1))
      {
         throw IncompleteDataset("the file ends inside its pixel data");
      }
   });
}

// Whether frames are found by looking at what is in the fragments. A frame of RLE is a fragment by the standard (PS3.5
// A.4.2); there are files that spread a single one over several all the same.
bool IsFindable(const ImageFrameInputStream& theFrames)
{
   switch (theFrames.GetCompressionType())
   {
   case ImageFrameInputStream::JPEG:
   case ImageFrameInputStream::JPEG2000: return true;
   case ImageFrameInputStream::RLE: return theFrames.GetNumberOfFrames() > 1;
   default: return false;
   }
}
} // namespace

FramesCommand::FramesCommand(CLI::App& theProgram)
    : Command(theProgram, "frames", "List the frames of pixel data, or take one out")
{
   itsOptions.add_option("FILE", itsFile, "DICOM file (- is standard input), JPEG file or JPEG 2000 file")->required();
   CLI::Option* const aTable = itsOptions
                                   .add_flag("--offset-table", itsShowsTable,
                                             "The basic offset table in the data, beside one built from the frames")
                                   ->option_text(kNoText);
   CLI::Option* const aMarkers =
       itsOptions.add_flag("--markers", itsShowsMarkers, "The markers or boxes of the codestreams")
           ->option_text(kNoText)
           ->excludes(aTable);
   CLI::Option* const anOutput =
       itsOptions.add_option("-o,--output", itsOutput, "Where to write the frame; - is standard output")
           ->option_text("OUT");
   CLI::Option* const anExtract =
       itsOptions.add_option("--extract", itsExtracted, "Write the bytes of frame N to OUT; frames count from 1")
           ->option_text("N")
           ->check(CLI::Range(1, std::numeric_limits<INT32>::max()))
           ->needs(anOutput)
           ->excludes(aTable)
           ->excludes(aMarkers);
   anOutput->needs(anExtract);
   itsOptions.add_flag("--json", itsIsJson, "One JSON object a line for each frame")
       ->option_text(kNoText)
       ->excludes(aMarkers)
       ->excludes(anExtract);
   itsOptions.add_flag("--scan", itsScans, "Find frames by their codestreams, whatever the offset table says");
   itsOptions.add_option("--data", itsData, "Folder of the dictionaries")->type_name("DIR");
   itsOptions.footer(
       "Offsets and lengths are in bytes. The offsets of compressed frames count as in a basic offset table,\n"
       "those of native frames from the first byte of the pixel data. With an offset table a length is that\n"
       "of the fragments, without one that of the codestream.\n\n"
       "Examples:\n  tn frames ultrasound.dcm\n  tn frames --extract 3 -o frame.jpg ultrasound.dcm");
}

int FramesCommand::Run()
{
   try
   {
      LoadDictionaries(itsData);
      ShowFile();
      std::cout.flush();
      if (!std::cout)
      {
         throw WriteFailure("cannot be written");
      }
      return itsHasWarned ? ExitCode::kSomeFailed : ExitCode::kDone;
   }
   catch (const WriteFailure& anError)
   {
      const bool isFile = !itsOutput.empty() && itsOutput != "-";
      std::cerr << OnOneLine("tn frames: " + (isFile ? itsOutput : "standard output") + ": " + anError.what()) << "\n";
      return ExitCode::kCouldNotWrite;
   }
   catch (const ExceptionBase& anException)
   {
      std::cout.flush();
      std::cerr << OnOneLine("tn frames: " + itsFile + ": " + ErrorText(anException)) << "\n";
   }
   catch (const std::exception& anError)
   {
      std::cout.flush();
      std::cerr << OnOneLine("tn frames: " + itsFile + ": " + anError.what()) << "\n";
   }
   return ExitCode::kCouldNotRead;
}

void FramesCommand::ShowFile()
{
   const CodestreamKind aKind = itsFile == "-" ? CodestreamKind::None : KindOfFile(itsFile);
   if (aKind != CodestreamKind::None)
   {
      if (itsExtracted != 0 || itsShowsTable)
      {
         throw std::runtime_error(
             "not a DICOM file: a codestream on its own has no offset table, and nothing to take out");
      }
      itsShowsMarkers ? PrintMarkersOfFile(itsFile, aKind, std::cout)
                      : ListCodestreams(itsFile, aKind, itsIsJson, std::cout);
      return;
   }
   PixelData aPixels(itsFile);
   if (aPixels.GetNativePixels() == nullptr)
   {
      ShowEncapsulated(aPixels);
   }
   else if (itsShowsTable || itsShowsMarkers)
   {
      throw std::runtime_error("its pixel data is not encapsulated");
   }
   else
   {
      itsExtracted != 0 ? ExtractNative(aPixels) : ShowNative(aPixels);
   }
}

void FramesCommand::ShowNative(PixelData& thePixels)
{
   const UINT64 aSize = thePixels.GetNativeFrameSize();
   const UINT64 aTotal = thePixels.GetNativePixels()->VR::GetLength();
   if (aSize == 0)
   {
      throw IncompleteDataset("the size of a frame is not computable from its header");
   }
   CheckIsThere(thePixels, aTotal);
   FrameLister aLister(std::cout, itsIsJson, false, nullptr);
   const INT32 aFrames = thePixels.GetNumberOfFrames();
   for (UINT64 anOffset = 0; aLister.GetCount() < aFrames && anOffset + aSize <= aTotal; anOffset += aSize)
   {
      aLister.Add(static_cast<INT64>(anOffset), aSize, 0, 0);
   }
   if (aLister.GetCount() < aFrames)
   {
      Warn("its pixel data has room for " + std::to_string(aLister.GetCount()) + " frames, not for the " +
           std::to_string(aFrames) + " that (0028,0008) tells");
   }
}

void FramesCommand::ExtractNative(PixelData& thePixels)
{
   const UINT64 aSize = thePixels.GetNativeFrameSize();
   PixelInputStreamVR& aNative = *thePixels.GetNativePixels();
   const UINT64 aTotal = aNative.VR::GetLength();
   const auto anIndex = static_cast<UINT64>(itsExtracted) - 1;
   if (itsExtracted > thePixels.GetNumberOfFrames() || aSize == 0 || aSize > aTotal ||
       anIndex > (aTotal - aSize) / aSize)
   {
      throw std::runtime_error("there is no frame " + std::to_string(itsExtracted));
   }
   FrameOutput anOutput(itsOutput);
   DecodeWhole(thePixels.GetDecoder(), thePixels.GetStream(), [&] {
      aNative.Skip(static_cast<unsigned int>(anIndex * aSize));
      if (anOutput.Copy(aNative, aSize) != aSize)
      {
         throw IncompleteDataset("the file ends inside frame " + std::to_string(itsExtracted));
      }
   });
   anOutput.Commit();
}

void FramesCommand::ShowEncapsulated(PixelData& thePixels)
{
   ImageFrameInputStream aFrames = FramesOf(thePixels);
   DecodeWhole(thePixels.GetDecoder(), thePixels.GetStream(), [&] {
      const bool hasTable = ReadTable(thePixels, aFrames);
      const bool isByFragments = !IsFindable(aFrames) || (hasTable && !itsScans);
      if (itsShowsMarkers)
      {
         ShowMarkers(aFrames);
      }
      else if (itsExtracted != 0)
      {
         ExtractFrame(thePixels, aFrames);
      }
      else
      {
         FrameLister aLister(std::cout, itsIsJson, itsShowsTable, hasTable ? aFrames.GetBasicOffsetTable() : nullptr);
         isByFragments && !(itsShowsTable && IsFindable(aFrames)) ? ListByFragments(thePixels, aFrames, aLister)
                                                                  : ListByCodestream(thePixels, aFrames, aLister);
      }
   });
}

bool FramesCommand::ReadTable(PixelData& thePixels, ImageFrameInputStream& theFrames)
{
   const unsigned int aStart = thePixels.GetStream().GetStreamPosition();
   try
   {
      theFrames.ReadBasicOffsetTable();
   }
   catch (const StreamIOException& anException)
   {
      if (anException.GetResultCode() != TN_INVALID_ENCODING)
      {
         throw;
      }
      Warn("its offset table is of no use: " + ErrorText(anException));
      return false;
   }
   const unsigned int aLength = thePixels.GetStream().GetStreamPosition() - aStart - kItemHeader;
   if (itsScans)
   {
      theFrames.SetBasicOffsetTable(itsShowsTable ? theFrames.GetBasicOffsetTable() : nullptr);
   }
   return aLength != 0;
}

void FramesCommand::ListByCodestream(PixelData& thePixels, ImageFrameInputStream& theFrames, FrameLister& theLister)
{
   try
   {
      ListFound(theFrames, theLister);
   }
   catch (const StreamIOException& anException)
   {
      if (theLister.GetCount() != 0 || anException.GetResultCode() != TN_INVALID_ENCODING || itsFile == "-")
      {
         throw;
      }
      WarnOfCodestreams(anException);
      PixelData aSecond(itsFile);
      ImageFrameInputStream aFrames = FramesOf(aSecond);
      aFrames.ReadBasicOffsetTable();
      ListByFragments(aSecond, aFrames, theLister);
   }
   if (theLister.GetCount() != thePixels.GetNumberOfFrames())
   {
      Warn("it has " + std::to_string(theLister.GetCount()) + " frames, not the " +
           std::to_string(thePixels.GetNumberOfFrames()) + " that (0028,0008) tells");
   }
   if (theLister.GetDifferences() != 0)
   {
      Warn("its offset table is wrong for " + std::to_string(theLister.GetDifferences()) + " frames");
   }
}

void FramesCommand::ListByFragments(PixelData& thePixels, const ImageFrameInputStream& theFrames,
                                    FrameLister& theLister)
{
   const std::vector<UINT32> aLengths = ReadFragmentLengths(*thePixels.GetFragments());
   ForEachFragmentFrame(
       aLengths, thePixels.GetNumberOfFrames(), theFrames.GetBasicOffsetTable(), [&](const FragmentFrame& theFrame) {
          theLister.Add(static_cast<INT64>(theFrame.itsOffset), theFrame.itsLength,
                        static_cast<UINT32>(theFrame.itsFragment), static_cast<UINT32>(theFrame.itsCount));
       });
}

void FramesCommand::ShowMarkers(ImageFrameInputStream& theFrames)
{
   if (theFrames.GetCompressionType() != ImageFrameInputStream::JPEG &&
       theFrames.GetCompressionType() != ImageFrameInputStream::JPEG2000)
   {
      throw std::runtime_error("markers are shown of JPEG and JPEG 2000 frames only");
   }
   const CodestreamKind aKind = theFrames.GetCompressionType() == ImageFrameInputStream::JPEG2000
                                    ? CodestreamKind::JPEG2000
                                    : CodestreamKind::JPEG;
   while (const std::unique_ptr<InputStream> aFrame{theFrames.NextFrame()})
   {
      std::cout << "# frame " << theFrames.GetCurrentFrameIndex() + 1 << "\n";
      PrintMarkers(*aFrame, aKind, std::cout);
   }
   if (theFrames.GetCurrentFrameIndex() < 0)
   {
      throw IncompleteDataset("there is no codestream in its pixel data");
   }
}

void FramesCommand::ExtractFrame(PixelData& thePixels, ImageFrameInputStream& theFrames)
{
   if (itsExtracted > thePixels.GetNumberOfFrames())
   {
      throw std::runtime_error("there is no frame " + std::to_string(itsExtracted) + ": (0028,0008) tells " +
                               std::to_string(thePixels.GetNumberOfFrames()));
   }
   if (!IsFindable(theFrames))
   {
      ExtractFragments(thePixels, theFrames);
      return;
   }
   std::unique_ptr<InputStream> aFrame;
   try
   {
      aFrame.reset(theFrames.GetFrame(itsExtracted - 1));
   }
   catch (const StreamIOException& anException)
   {
      if (anException.GetResultCode() != TN_INVALID_ENCODING || itsFile == "-")
      {
         throw;
      }
      WarnOfCodestreams(anException);
      PixelData aSecond(itsFile);
      ImageFrameInputStream aFrames = FramesOf(aSecond);
      aFrames.ReadBasicOffsetTable();
      ExtractFragments(aSecond, aFrames);
      return;
   }
   FrameOutput anOutput(itsOutput);
   anOutput.Copy(*aFrame, static_cast<UINT64>(theFrames.GetCurrentFrameLength()));
   anOutput.Commit();
}

// Finds the fragments of the frame in one pass and copies them in a second one.
void FramesCommand::ExtractFragments(PixelData& thePixels, const ImageFrameInputStream& theFrames)
{
   if (itsFile == "-")
   {
      throw std::runtime_error("a frame of this transfer syntax can be taken out of a file only");
   }
   FragmentFrame aFrame{};
   INT32 aNumber = 0;
   ForEachFragmentFrame(ReadFragmentLengths(*thePixels.GetFragments()), thePixels.GetNumberOfFrames(),
                        theFrames.GetBasicOffsetTable(), [&](const FragmentFrame& theFrame) {
                           if (++aNumber == itsExtracted)
                           {
                              aFrame = theFrame;
                           }
                        });
   PixelData aSecond(itsFile);
   FrameOutput anOutput(itsOutput);
   std::size_t anItem = 0; // the offset table is the first
   while (const std::unique_ptr<PixelDataFragmentInputStream> aFragment{aSecond.GetFragments()->NextFragment()})
   {
      const bool isWanted = anItem > aFrame.itsFragment && anItem <= aFrame.itsFragment + aFrame.itsCount;
      const UINT32 aLength = aFragment->GetLength();
      if ((isWanted ? anOutput.Copy(*aFragment, aLength) : aFragment->Skip(aLength)) != aLength)
      {
         throw IncompleteDataset("the file ends inside fragment " + std::to_string(anItem));
      }
      ++anItem;
   }
   anOutput.Commit();
}

// They are not what the transfer syntax promises: a whole JP2 file, for example.
void FramesCommand::WarnOfCodestreams(const ExceptionBase& theException)
{
   Warn("its frames cannot be found by their codestreams, and are told by fragments: " + ErrorText(theException));
}

void FramesCommand::Warn(const std::string& theText)
{
   std::cout.flush();
   std::cerr << OnOneLine("tn frames: " + itsFile + ": " + theText) << "\n";
   itsHasWarned = true;
}
