// Finding the frames of encapsulated pixel data of 256 MiB: one after another, kept and read or only passed, and with
// an offset table in any order. From memory, and from a file that is in the cache of the system.
#include <memory>
#include <random>

#include <benchmark/benchmark.h>

#include "bench/DatasetBytes.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/file/Part10FileInputStream.h"
#include "talvenor/file/Part10MemoryInputStream.h"
#include "talvenor/pixel/ImageFrameInputStream.h"
#include "talvenor/pixel/PixelDataFragmentInputStreamVR.h"
#include "talvenor/transfer/InputTransferSyntax.h"

namespace
{
constexpr size_t kTotal = size_t{256} << 20;

struct Compression
{
   const char* itsName;
   DatasetBytes::Encoding itsEncoding;
   std::string (*itsMakeFrame)(size_t theLength, std::mt19937& theGenerator);
};

std::string Number(size_t theNumber)
{
   std::string aText;
   for (int aShift = 0; aShift < 32; aShift += 8)
   {
      aText += static_cast<char>(theNumber >> aShift);
   }
   return aText;
}

std::string Item(const std::string& theValue)
{
   return std::string("\xFE\xFF\x00\xE0", 4) + Number(theValue.size()) + theValue;
}

std::string RandomBytes(size_t theCount, std::mt19937& theGenerator)
{
   std::string aBytes(theCount, '\0');
   for (char& aByte : aBytes)
   {
      aByte = static_cast<char>(theGenerator());
   }
   return aBytes;
}

// One scan of entropy-coded data, in which every 256th byte or so is 0xFF, stuffed.
std::string JPEGFrame(size_t theLength, std::mt19937& theGenerator)
{
   std::string aData = RandomBytes(theLength - 14, theGenerator);
   for (size_t i = 0; i < aData.size(); ++i)
   {
      if (aData[i] == '\xFF')
      {
         ++i < aData.size() ? aData[i] = '\0' : aData[i - 1] = '\0';
      }
   }
   return std::string("\xFF\xD8\xFF\xDA\x00\x08\x01\x01\x00\x00\x3F\x00", 12) + aData + "\xFF\xD9";
}

// One tile-part of known length.
std::string JPEG2000Frame(size_t theLength, std::mt19937& theGenerator)
{
   const std::string aData = RandomBytes(theLength - 18, theGenerator);
   std::string aFrame("\xFF\x4F\xFF\x90\x00\x0A\x00\x00", 8);
   for (int aShift = 24; aShift >= 0; aShift -= 8)
   {
      aFrame += static_cast<char>((aData.size() + 14) >> aShift);
   }
   aFrame.append("\x00\x01\xFF\x93", 4);
   return aFrame + aData + "\xFF\xD9";
}

constexpr Compression kJPEG = {"JPEG", {"", "1.2.840.10008.1.2.4.50", true, false, false}, JPEGFrame};
constexpr Compression kJPEG2000 = {"JPEG 2000", {"", "1.2.840.10008.1.2.4.90", true, false, false}, JPEG2000Frame};

// A file of frames of theFrameSize in fragments of theFragmentSize bytes.
std::string FileOfFrames(const Compression& theCompression, size_t theFrameSize, size_t theFragmentSize,
                         bool theHasTable)
{
   std::mt19937 aGenerator(1); // not random: the same data every time
   const std::string aFrame = theCompression.itsMakeFrame(theFrameSize, aGenerator);
   std::string anItems;
   for (size_t i = 0; i < aFrame.size(); i += theFragmentSize)
   {
      anItems += Item(aFrame.substr(i, theFragmentSize));
   }
   DatasetBytes aDataset(theCompression.itsEncoding);
   aDataset.Text(0x00080060, "CS", "XA");
   std::string aFile = aDataset.File() + std::string("\xE0\x7F\x10\x00OB\x00\x00\xFF\xFF\xFF\xFF", 12);
   std::string aTable;
   for (size_t i = 0; theHasTable && i < kTotal / theFrameSize; ++i)
   {
      aTable += Number(i * anItems.size());
   }
   aFile += Item(aTable);
   for (size_t i = 0; i < kTotal / theFrameSize; ++i)
   {
      aFile += anItems;
   }
   return aFile + std::string("\xFE\xFF\xDD\xE0\x00\x00\x00\x00", 8);
}

// An open file at its pixel data.
class OpenFrames
{
public:
   OpenFrames(std::unique_ptr<Part10InputStream> theStream, INT32 theFrameCount)
       : itsStream(std::move(theStream)), itsDecoder(itsStream->CreateDecoder())
   {
      do
      {
         itsElement.reset(itsDecoder->NextVR());
      } while (itsElement->GetTag() != 0x7FE00010);
      itsFrames = std::make_unique<ImageFrameInputStream>(*itsElement->GetAsPixelDataFragmentInputStreamVR(),
                                                          itsStream->GetTransferSyntaxUID(), theFrameCount, 0);
   }

   ImageFrameInputStream& operator*() const { return *itsFrames; }

private:
   std::unique_ptr<Part10InputStream> itsStream;
   std::unique_ptr<InputTransferSyntax> itsDecoder;
   std::unique_ptr<VR> itsElement;
   std::unique_ptr<ImageFrameInputStream> itsFrames;
};

struct Case
{
   const Compression& itsCompression;
   size_t itsFrameSize;
   size_t itsFragmentSize;
   bool itsIsFile;

   std::string GetName() const
   {
      return std::string(itsIsFile ? "file/" : "memory/") + itsCompression.itsName + "/" +
             std::to_string(itsFrameSize >> 10) + " KiB in " + std::to_string(itsFragmentSize >> 10) + " KiB";
   }
   INT32 GetFrameCount() const { return static_cast<INT32>(kTotal / itsFrameSize); }
};

// The file of a case, made once.
class Source
{
public:
   Source(const Case& theCase, bool theHasTable) : itsCase(theCase)
   {
      std::string aFile =
          FileOfFrames(theCase.itsCompression, theCase.itsFrameSize, theCase.itsFragmentSize, theHasTable);
      (theCase.itsIsFile ? itsName : itsBytes) = theCase.itsIsFile ? TemporaryFile(aFile) : std::move(aFile);
   }

   OpenFrames Open() const
   {
      const auto* const aBytes = reinterpret_cast<const unsigned char*>(itsBytes.data());
      std::unique_ptr<Part10InputStream> aStream;
      if (itsCase.itsIsFile)
      {
         aStream = std::make_unique<Part10FileInputStream>(itsName);
      }
      else
      {
         aStream = std::make_unique<Part10MemoryInputStream>(static_cast<UINT32>(itsBytes.size()), aBytes);
      }
      return {std::move(aStream), itsCase.GetFrameCount()};
   }

private:
   const Case& itsCase;
   std::string itsName;
   std::string itsBytes;
};

size_t ReadFrame(InputStream& theFrame)
{
   static unsigned char ourBlock[65536];
   size_t aTotal = 0;
   while (const unsigned int aCount = theFrame.Read(ourBlock, sizeof ourBlock))
   {
      aTotal += aCount;
   }
   return aTotal;
}

void ReadAll(benchmark::State& theState, const Case& theCase)
{
   const Source aSource(theCase, false);
   for (auto _ : theState)
   {
      const OpenFrames aFrames = aSource.Open();
      size_t aTotal = 0;
      while (const std::unique_ptr<InputStream> aFrame{(*aFrames).NextFrame()})
      {
         aTotal += ReadFrame(*aFrame);
      }
      if (aTotal != static_cast<size_t>(theCase.GetFrameCount()) * theCase.itsFrameSize)
      {
         theState.SkipWithError("frames are missing");
      }
   }
   theState.SetBytesProcessed(static_cast<int64_t>(theState.iterations() * kTotal));
}

void PassAll(benchmark::State& theState, const Case& theCase)
{
   const Source aSource(theCase, false);
   for (auto _ : theState)
   {
      const OpenFrames aFrames = aSource.Open();
      INT32 aCount = 0;
      while ((*aFrames).PassNextFrame())
      {
         ++aCount;
      }
      if (aCount != theCase.GetFrameCount())
      {
         theState.SkipWithError("frames are missing");
      }
   }
   theState.SetBytesProcessed(static_cast<int64_t>(theState.iterations() * kTotal));
}

// One frame a time, whichever: what is in front of it costs nothing.
void Jump(benchmark::State& theState, const Case& theCase)
{
   const Source aSource(theCase, true);
   const OpenFrames aFrames = aSource.Open();
   std::mt19937 aGenerator(1);
   std::uniform_int_distribution<INT32> anyFrame(0, theCase.GetFrameCount() - 1);
   size_t aTotal = 0;
   for (auto _ : theState)
   {
      const INT32 aFrame = anyFrame(aGenerator);
      aTotal += ReadFrame(*std::unique_ptr<InputStream>((*aFrames).GetFrame(aFrame)));
   }
   theState.SetBytesProcessed(static_cast<int64_t>(aTotal));
}

const Case kCases[] = {
    {kJPEG, 512 << 10, 512 << 10, false},    {kJPEG, 512 << 10, 512 << 10, true},
    {kJPEG, 64 << 10, 4 << 10, false},       {kJPEG, 4 << 10, 4 << 10, false},
    {kJPEG, 64 << 20, 1 << 20, true},        {kJPEG2000, 512 << 10, 512 << 10, false},
    {kJPEG2000, 512 << 10, 512 << 10, true}, {kJPEG2000, 4 << 10, 4 << 10, false},
};

void RegisterAll()
{
   for (const Case& aCase : kCases)
   {
      const auto aRegister = [&](const char* theName, auto theBenchmark) {
         return benchmark::RegisterBenchmark(
             (theName + aCase.GetName()).c_str(),
             [&aCase, theBenchmark](benchmark::State& theState) { theBenchmark(theState, aCase); });
      };
      aRegister("FramesRead/", ReadAll)->Unit(benchmark::kMillisecond);
      aRegister("FramesPassed/", PassAll)->Unit(benchmark::kMillisecond);
      aRegister("FrameByTable/", Jump)->Unit(benchmark::kMicrosecond);
   }
}

const bool kAreRegistered = (RegisterAll(), true);
} // namespace
