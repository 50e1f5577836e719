#include "talvenor/pixel/ImageFrameInputStream.h"

#include <algorithm>
#include <string>

#include "talvenor/dataset/VR.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/pixel/BasicOffsetTable.h"
#include "talvenor/pixel/FrameWalk.h"
#include "talvenor/pixel/PixelDataFragmentInputStream.h"
#include "talvenor/pixel/PixelDataFragmentInputStreamVR.h"

namespace
{
constexpr UINT32 kItemHeaderSize = 8;

struct CompressionOfSyntax
{
   const char* itsUID;
   ImageFrameInputStream::CompressionType itsType;
};

// PS3.5 A.4. Other syntaxes, JPEG-LS and the retired ones of JPEG among them, are not split into frames.
constexpr CompressionOfSyntax kCompressions[] = {
    {"1.2.840.10008.1.2.4.50", ImageFrameInputStream::JPEG},     // baseline
    {"1.2.840.10008.1.2.4.51", ImageFrameInputStream::JPEG},     // extended
    {"1.2.840.10008.1.2.4.57", ImageFrameInputStream::JPEG},     // lossless
    {"1.2.840.10008.1.2.4.70", ImageFrameInputStream::JPEG},     // lossless, first-order prediction
    {"1.2.840.10008.1.2.4.90", ImageFrameInputStream::JPEG2000}, // lossless
    {"1.2.840.10008.1.2.4.91", ImageFrameInputStream::JPEG2000}, {"1.2.840.10008.1.2.5", ImageFrameInputStream::RLE},
};

ImageFrameInputStream::CompressionType CompressionOf(const RWCString& theUID, const VR& thePixels)
{
   if (thePixels.GetLength() != VR::kUndefinedLength)
   {
      return ImageFrameInputStream::NotEncapsulated;
   }
   for (const CompressionOfSyntax& aRow : kCompressions)
   {
      if (theUID == aRow.itsUID)
      {
         return aRow.itsType;
      }
   }
   return ImageFrameInputStream::Undetermined;
}

[[noreturn]] void Throw(const std::string& theText, TNResultCode theCode = TN_INTERNAL_ERROR)
{
   throw StreamIOException(("ImageFrameInputStream::" + theText).c_str(), theCode, 0);
}
} // namespace

ImageFrameInputStream::ImageFrameInputStream(PixelDataFragmentInputStreamVR* thePixels,
                                             const RWCString& theTransferSyntaxUID, INT32 theNumberOfFrames,
                                             int theFlag)
    : ImageFrameInputStream(std::unique_ptr<PixelDataFragmentInputStreamVR>(thePixels), *thePixels,
                            theTransferSyntaxUID, theNumberOfFrames, theFlag)
{}

ImageFrameInputStream::ImageFrameInputStream(PixelDataFragmentInputStreamVR& thePixels,
                                             const RWCString& theTransferSyntaxUID, INT32 theNumberOfFrames,
                                             int theFlag)
    : ImageFrameInputStream(nullptr, thePixels, theTransferSyntaxUID, theNumberOfFrames, theFlag)
{}

ImageFrameInputStream::ImageFrameInputStream(std::unique_ptr<PixelDataFragmentInputStreamVR> theOwnedPixels,
                                             PixelDataFragmentInputStreamVR& thePixels,
                                             const RWCString& theTransferSyntaxUID, INT32 theNumberOfFrames,
                                             int theFlag)
    : itsOwnedPixels(std::move(theOwnedPixels)), itsPixels(thePixels), itsTransferSyntaxUID(theTransferSyntaxUID),
      itsCompressionType(CompressionOf(theTransferSyntaxUID, thePixels)), itsNumberOfFrames(theNumberOfFrames),
      itsFlag(theFlag)
{}

ImageFrameInputStream::~ImageFrameInputStream() = default;

void ImageFrameInputStream::ReadBasicOffsetTable()
{
   if (itsHasReadTable || itsCompressionType == NotEncapsulated)
   {
      return;
   }
   itsHasReadTable = true;
   std::exception_ptr aFailure;
   if (const std::unique_ptr<PixelDataFragmentInputStream> anItem{itsPixels.NextFragment()})
   {
      try
      {
         if (anItem->GetLength() > 0 || itsNumberOfFrames == 1)
         {
            auto aTable = std::make_unique<BasicOffsetTable>(itsNumberOfFrames);
            aTable->Init(*anItem, anItem->GetLength());
            itsReadTable = std::move(aTable);
            itsTable = itsReadTable.get();
         }
      }
      catch (const StreamIOException&)
      {
         aFailure = std::current_exception();
      }
      anItem->Skip(anItem->GetRemaining());
   }
   if (itsPixels.CanSeekToItem())
   {
      itsOrigin = itsPixels.GetItemPosition();
   }
   if (aFailure)
   {
      std::rethrow_exception(aFailure);
   }
}

void ImageFrameInputStream::Prepare()
{
   ReadBasicOffsetTable();
   if (itsCompressionType == Undetermined)
   {
      Throw("NextFrame(): unknown compression type: TransferSyntax is " + itsTransferSyntaxUID,
            TN_TRANSFER_SYNTAX_UNSUPPORTED);
   }
   if (!itsWalk && itsCompressionType != NotEncapsulated)
   {
      itsWalk = FrameWalk::New(itsCompressionType, itsPixels);
   }
}

InputStream* ImageFrameInputStream::NextFrame()
{
   return TakeNextFrame(true) ? NewView() : nullptr;
}

int ImageFrameInputStream::PassNextFrame()
{
   return TakeNextFrame(false);
}

int ImageFrameInputStream::SkipNextFrame()
{
   Prepare();
   if (!IsRandomFrameAccessAvailable())
   {
      return PassNextFrame();
   }
   if (itsFrameIndex + 1 >= itsNumberOfFrames)
   {
      return 0;
   }
   ++itsFrameIndex;
   itsHasFrame = false;
   return 1;
}

bool ImageFrameInputStream::TakeNextFrame(bool theIsKept)
{
   Prepare();
   itsHasFrame = false;
   if (itsFailure)
   {
      std::rethrow_exception(std::exchange(itsFailure, nullptr));
   }
   if (!itsWalk || !itsWalk->Next(theIsKept))
   {
      return false;
   }
   itsHasFrame = true;
   NoteFrame();
   return true;
}

// The number of frames is not trusted: there may be more of them than INT32 can count, or none.
void ImageFrameInputStream::NoteFrame()
{
   ++itsFrameIndex;
   RecordStart();
   if (itsFrameIndex + 1 != itsNumberOfFrames)
   {
      return;
   }
   BuildTable();
   if (itsCompressionType != RLE)
   {
      try
      {
         itsWalk->SkipRest();
      }
      catch (const StreamIOException&)
      {
         itsFailure = std::current_exception();
      }
   }
}

void ImageFrameInputStream::RecordStart()
{
   const INT64 aFrame = INT64{itsWalkFrame} + itsWalk->GetFrameCount() - 1;
   if (itsWalkFrame >= 0 && itsWalkFragment >= 0 && aFrame == static_cast<INT64>(itsStarts.size()))
   {
      itsStarts.push_back(GetFrameStart());
   }
}

// For data that had none. Offsets beyond 32 bits are no offsets: there is no table then. A table begins with 0:
// fragments in front of the first frame, empty ones or padding, count as the frame's.
void ImageFrameInputStream::BuildTable()
{
   const bool isNeeded = itsTable == nullptr || itsTable->IsEmpty();
   if (!isNeeded || itsWalkOffset != 0 || itsStarts.size() != static_cast<size_t>(itsNumberOfFrames) ||
       itsStarts.back().itsItemOffset >= BasicOffsetTable::kUnknownOffset)
   {
      return;
   }
   if (!itsBuiltTable)
   {
      RWTValOrderedVector<INT32> anIndices;
      for (const FrameStart& aStart : itsStarts)
      {
         anIndices.push_back(aStart.itsFragment);
      }
      anIndices.front() = 0;
      auto aTable = std::make_unique<BasicOffsetTable>(itsNumberOfFrames);
      aTable->Init(itsWalk->GetData().GetFragmentLengthTable(), anIndices);
      itsBuiltTable = std::move(aTable);
   }
   itsTable = itsBuiltTable.get();
}

int ImageFrameInputStream::IsRandomFrameAccessAvailable() const
{
   return itsTable != nullptr && !itsTable->IsEmpty() && itsPixels.CanSeekToItem();
}

InputStream* ImageFrameInputStream::GetFrame(INT32 theFrame)
{
   if (theFrame < 0 || theFrame >= itsNumberOfFrames)
   {
      Throw("GetFrame: frame number out of range");
   }
   Prepare();
   return IsRandomFrameAccessAvailable() ? GetFrameRandom(theFrame) : GetFrameSequential(theFrame);
}

InputStream* ImageFrameInputStream::GetFrameSequential(INT32 theFrame)
{
   if (theFrame <= itsFrameIndex)
   {
      Throw("GetFrameSequential: can only access frames in forward direction - random access unavilable with current "
            "input stream");
   }
   while (TakeNextFrame(theFrame == itsFrameIndex + 1))
   {
      if (itsFrameIndex == theFrame)
      {
         return NewView();
      }
   }
   Throw("GetFrameSequential: unexpected EOF");
}

InputStream* ImageFrameInputStream::GetFrameRandom(INT32 theFrame)
{
   const UINT32 anOffset = itsTable->GetOffset(theFrame);
   if (anOffset == BasicOffsetTable::kUnknownOffset)
   {
      Throw("GetFrame: the offset table has no entry for frame " + std::to_string(theFrame));
   }
   JumpToFrame(theFrame, anOffset);
   if (!TakeNextFrame(true))
   {
      Throw("GetFrame: unexpected EOF at frame " + std::to_string(theFrame));
   }
   return NewView();
}

bool ImageFrameInputStream::IsKnownAt(INT32 theFrame, UINT32 theOffset) const
{
   const auto aFrame = static_cast<size_t>(theFrame);
   return aFrame < itsStarts.size() && itsStarts[aFrame].itsItemOffset == theOffset;
}

// Frames that start in one fragment have the same offset. Where such a frame starts in it is known when it has gone by;
// otherwise those before it are passed, from the last one that is known or the first one of that offset. A table of
// zeros is thus as good as none.
void ImageFrameInputStream::JumpToFrame(INT32 theFrame, UINT32 theOffset)
{
   INT32 aFirst = theFrame;
   while (aFirst > 0 && !IsKnownAt(aFirst, theOffset) && itsTable->GetOffset(aFirst - 1) == theOffset)
   {
      --aFirst;
   }
   itsHasFrame = false;
   itsFailure = nullptr;
   itsWalk.reset();
   itsPixels.SeekToItem(itsOrigin, theOffset);
   itsWalk = FrameWalk::New(itsCompressionType, itsPixels);
   itsWalkOffset = theOffset;
   itsFrameIndex = theFrame - 1;
   if (IsKnownAt(aFirst, theOffset))
   {
      const FrameStart& aStart = itsStarts[static_cast<size_t>(aFirst)];
      itsWalk->SkipData(aStart.itsBytesBefore);
      itsWalkFragment = aStart.itsFragment;
      itsWalkFrame = aFirst;
   }
   else
   {
      itsWalkFragment = itsWalkFrame = theOffset == 0 ? 0 : -1;
   }
   for (; aFirst < theFrame && itsWalk->Next(false); ++aFirst)
   {
      RecordStart();
   }
}

INT64 ImageFrameInputStream::GetCurrentFrameLength() const
{
   return itsHasFrame ? static_cast<INT64>(itsWalk->GetFrame().itsLength) : -1;
}

InputStream* ImageFrameInputStream::NewView() const
{
   return new ImageFramePixelInputStream(itsWalk->GetView());
}

ImageFrameInputStream::FrameStart ImageFrameInputStream::GetFrameStart() const
{
   const FrameWalk::Frame& aFrame = itsWalk->GetFrame();
   const UINT64 aFragmentBegin = itsWalk->GetData().GetFragmentEnd(aFrame.itsFragment - 1);
   const UINT64 aHeaders = UINT64{kItemHeaderSize} * static_cast<UINT64>(aFrame.itsFragment);
   return {aFrame.itsFragment + std::max(itsWalkFragment, 0), itsWalkOffset + aFragmentBegin + aHeaders,
           static_cast<UINT32>(aFrame.itsOffset - aFragmentBegin)};
}

ImageFrameInputStream::FramePlace ImageFrameInputStream::GetCurrentFramePlace() const
{
   FramePlace aPlace;
   if (!itsHasFrame)
   {
      return aPlace;
   }
   const FrameStart aStart = GetFrameStart();
   aPlace.itsItemOffset = static_cast<INT64>(aStart.itsItemOffset);
   aPlace.itsBytesBefore = aStart.itsBytesBefore;
   if (itsWalkFragment >= 0)
   {
      aPlace.itsFirstFragment = aStart.itsFragment;
      aPlace.itsDataOffset = aPlace.itsItemOffset - INT64{kItemHeaderSize} * aStart.itsFragment + aStart.itsBytesBefore;
   }
   const FrameWalk::Frame& aFrame = itsWalk->GetFrame();
   const EncapsulatedDataInputStream& aData = itsWalk->GetData();
   INT32 aFragment = aFrame.itsFragment;
   do
   {
      aPlace.itsFragmentLengths.push_back(aData.GetFragmentLengthTable()[static_cast<size_t>(aFragment)]);
   } while (aData.GetFragmentEnd(aFragment++) < aFrame.itsOffset + aFrame.itsLength);
   return aPlace;
}

RWTValOrderedVector<UINT32> ImageFrameInputStream::GetFragmentLengthTable() const
{
   return itsWalk ? itsWalk->GetData().GetFragmentLengthTable() : RWTValOrderedVector<UINT32>();
}
