// Takes the frames of encapsulated pixel data: one after another, from memory and in pieces, which must make no
// difference; by the offset table that was built on the way, which must give the same frames; and in any order, with
// whatever offset table the data has. What is done is chosen by the last bytes of the input, the compression by the
// very last.
#include <memory>

#include <fuzzer/FuzzedDataProvider.h>

#include "fuzz/Fuzzing.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/foundation/ExceptionBase.h"
#include "talvenor/io/EndianHandlingReader.h"
#include "talvenor/io/MemoryStreams.h"
#include "talvenor/pixel/BasicOffsetTable.h"
#include "talvenor/pixel/ImageFrameInputStream.h"
#include "talvenor/pixel/PixelDataFragmentInputStreamVR.h"

namespace
{
constexpr const char* kSyntaxes[] = {"1.2.840.10008.1.2.4.50", "1.2.840.10008.1.2.4.90", "1.2.840.10008.1.2.5",
                                     "1.2.840.10008.1.2.4.80"};

// The frames of items that a stream delivers.
struct FrameSource
{
   FrameSource(InputStream& theItems, const char* theSyntax, INT32 theFrameCount)
       : itsReader(theItems, TNEndian::LittleEndian), itsPixels(itsReader),
         itsFrames(itsPixels, theSyntax, theFrameCount, 0)
   {}

   EndianHandlingReader itsReader;
   PixelDataFragmentInputStreamVR itsPixels;
   ImageFrameInputStream itsFrames;
};

template <class Operation>
void Try(Operation theOperation)
{
   try
   {
      theOperation();
   }
   catch (const ExceptionBase& anException)
   {
      Require(anException.why()[0] != '\0', "a failure without a text");
   }
}

FuzzBytes ReadFrame(InputStream& theFrame, INT64 theLength)
{
   FuzzBytes aBytes;
   unsigned char aBlock[777];
   while (const unsigned int aCount = theFrame.Read(aBlock, sizeof aBlock))
   {
      aBytes.insert(aBytes.end(), aBlock, aBlock + aCount);
   }
   Require(static_cast<INT64>(aBytes.size()) == theLength, "a frame has not its length");
   return aBytes;
}

void CheckPlace(const ImageFrameInputStream& theFrames)
{
   const auto aPlace = theFrames.GetCurrentFramePlace();
   INT64 aRoom = -aPlace.itsBytesBefore;
   for (const UINT32 aLength : aPlace.itsFragmentLengths)
   {
      aRoom += aLength;
   }
   Require(aPlace.itsBytesBefore >= 0 && aRoom >= theFrames.GetCurrentFrameLength(), "a frame without its fragments");
   Require(aPlace.itsItemOffset >= aPlace.itsFirstFragment * INT64{8}, "an offset without its items");
}

std::vector<FuzzBytes> ReadAll(ImageFrameInputStream& theFrames)
{
   std::vector<FuzzBytes> aFrames;
   Try([&] {
      while (const std::unique_ptr<InputStream> aFrame{theFrames.NextFrame()})
      {
         CheckPlace(theFrames);
         aFrames.push_back(ReadFrame(*aFrame, theFrames.GetCurrentFrameLength()));
      }
   });
   return aFrames;
}

// Passes the frames, of which there are as many as told, and takes them again by the table that this has built.
void TakeAgain(MemoryInputStream& theItems, const char* theSyntax, const std::vector<FuzzBytes>& theFrames,
               FuzzedDataProvider& theDecisions)
{
   FrameSource aSource(theItems, theSyntax, static_cast<INT32>(theFrames.size()));
   ImageFrameInputStream& aFrames = aSource.itsFrames;
   aFrames.ReadBasicOffsetTable();
   if (aFrames.GetBasicOffsetTable() != nullptr)
   {
      return; // what the data says may be wrong
   }
   for (const FuzzBytes& aFrame : theFrames)
   {
      Require(aFrames.PassNextFrame(), "a frame is lost when it is passed");
      Require(aFrames.GetCurrentFrameLength() == static_cast<INT64>(aFrame.size()), "another length when it is passed");
   }
   Require(aFrames.IsRandomFrameAccessAvailable(), "no table is built");
   for (size_t i = 0; i < std::min<size_t>(2 * theFrames.size(), 100); ++i)
   {
      const auto aFrame = theDecisions.ConsumeIntegralInRange<size_t>(0, theFrames.size() - 1);
      const std::unique_ptr<InputStream> aStream(aFrames.GetFrame(static_cast<INT32>(aFrame)));
      Require(ReadFrame(*aStream, aFrames.GetCurrentFrameLength()) == theFrames[aFrame], "another frame by the table");
   }
}

void TakeInAnyOrder(ImageFrameInputStream& theFrames, FuzzedDataProvider& theDecisions)
{
   std::unique_ptr<InputStream> aHeld;
   for (int i = 0; i < 40; ++i)
   {
      Try([&] {
         std::unique_ptr<InputStream> aFrame;
         switch (theDecisions.ConsumeIntegralInRange(0, 5))
         {
         case 0: theFrames.SkipNextFrame(); break;
         case 1: theFrames.PassNextFrame(); break;
         case 2: aFrame.reset(theFrames.NextFrame()); break;
         case 3: aFrame.reset(theFrames.GetFrame(theFrames.GetCurrentFrameIndex() + 1)); break;
         default: aFrame.reset(theFrames.GetFrame(theDecisions.ConsumeIntegralInRange(-1, 20)));
         }
         if (aFrame)
         {
            unsigned char aByte;
            Require(!aHeld || aHeld->Read(&aByte, 1) == 0, "a frame that goes on");
            aFrame->Skip(theDecisions.ConsumeIntegral<UINT16>());
            CheckPlace(theFrames);
            aHeld = std::move(aFrame);
         }
      });
   }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* theData, std::size_t theSize)
{
   SetUpFuzzing();
   const std::size_t aDecisionSize = std::min<std::size_t>(theSize / 4, 64);
   FuzzedDataProvider aDecisions(theData + theSize - aDecisionSize, aDecisionSize);
   const FuzzBytes anItems(theData, theData + theSize - aDecisionSize);
   const char* const aSyntax = aDecisions.PickValueInArray(kSyntaxes);
   const INT32 aFrameCount =
       aDecisions.ConsumeBool() ? aDecisions.ConsumeIntegral<INT32>() : aDecisions.ConsumeIntegralInRange(0, 20);
   const auto aSize = static_cast<unsigned int>(anItems.size());

   MemoryInputStream aMemory(anItems.data(), aSize);
   FrameSource aWhole(aMemory, aSyntax, aFrameCount);
   const std::vector<FuzzBytes> aFrames = ReadAll(aWhole.itsFrames);
   PieceStream aPieces(anItems, aDecisions.ConsumeIntegralInRange(1u, 1000u));
   FrameSource aSlow(aPieces, aSyntax, aFrameCount);
   Require(ReadAll(aSlow.itsFrames) == aFrames, "other frames in pieces");
   if (!aFrames.empty())
   {
      Try([&] {
         MemoryInputStream anOther(anItems.data(), aSize);
         TakeAgain(anOther, aSyntax, aFrames, aDecisions);
      });
   }
   MemoryInputStream aLast(anItems.data(), aSize);
   FrameSource anUnordered(aLast, aSyntax, aFrameCount);
   TakeInAnyOrder(anUnordered.itsFrames, aDecisions);
   return 0;
}
