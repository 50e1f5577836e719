#include "talvenor/pixel/FrameWalk.h"

#include <algorithm>
#include <cassert>
#include <string>

#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/io/TNEndian.h"
#include "talvenor/pixel/JP2FileInputStream.h"
#include "talvenor/pixel/JPEGFileInputStream.h"

namespace
{
// Lengths and offsets of 32 bits.
constexpr INT64 kLengthLimit = INT64{1} << 32;

// More than a scanner reads ahead (64 KiB) and puts back in front of that (a marker).
constexpr unsigned int kMaximumLookAhead = 65536 + 4096;

void CheckLength(INT64 theLength, const char* theSubject)
{
   if (theLength >= kLengthLimit)
   {
      const std::string aText = std::string("ImageFrameInputStream::NextFrame(): ") + theSubject + " too large (" +
                                std::to_string(theLength) + " bytes)";
      throw StreamIOException(aText.c_str(), TN_INVALID_ENCODING, 0);
   }
}

// Frames that are found by their markers. The scanner reads through the recording, and ahead: between two searches the
// recording holds just what the scanner will deliver first. While it searches for the start of a frame, or the end of
// one that is not kept, no more is recorded than it can have read ahead.
template <class Scanner>
class ScanningWalk : public FrameWalk
{
public:
   void SkipData(UINT32 theCount) override
   {
      itsScanner.Skip(theCount);
      DropScanned();
   }

protected:
   explicit ScanningWalk(PixelDataFragmentInputStreamVR& thePixels) : FrameWalk(thePixels), itsScanner(itsRecording)
   {
      RecordFrame(false);
   }

   void DropScanned()
   {
      assert(itsRecording.GetBufferedBytesAvailable() >= itsScanner.GetLookAheadCount());
      while (itsRecording.GetBufferedBytesAvailable() > itsScanner.GetLookAheadCount())
      {
         const UINT64 aCount = itsRecording.GetBufferedBytesAvailable() - itsScanner.GetLookAheadCount();
         itsRecording.SkipBufferedData(static_cast<unsigned int>(std::min<UINT64>(aCount, 0xFFFFFFFF)));
      }
   }

   void RecordFrame(bool theIsKept)
   {
      itsRecording.SetRecordingLimit(theIsKept ? BufferingInputStream::kNoLimit : kMaximumLookAhead);
   }

   Scanner itsScanner;
};

class JPEGWalk : public ScanningWalk<JPEGFileInputStream>
{
public:
   explicit JPEGWalk(PixelDataFragmentInputStreamVR& thePixels) : ScanningWalk(thePixels) {}

protected:
   bool Find(bool theIsKept, Frame& theFrame) override
   {
      INT64 aHeaderLength = 0;
      RecordFrame(false);
      if (!itsScanner.FindCodestreamPosition(JPEGFileInputStream::M_SOI, aHeaderLength))
      {
         return false;
      }
      CheckLength(aHeaderLength, "JPEG header");
      DropScanned();
      theFrame.itsOffset = static_cast<UINT64>(itsScanner.GetPosition());
      theFrame.itsFragment = itsData.FindFragment(theFrame.itsOffset);

      INT64 aLength = 0;
      RecordFrame(theIsKept);
      if (!itsScanner.FindCodestreamPosition(JPEGFileInputStream::M_EOI, aLength))
      {
         throw StreamIOException("ImageFrameInputStream::NextFrame(): Hit EOF while searching for end of JPEG "
                                 "codestream",
                                 TN_INVALID_ENCODING, 0);
      }
      CheckLength(aLength, "JPEG codestream");
      theFrame.itsLength = static_cast<UINT64>(aLength);
      return true;
   }
};

class JPEG2000Walk : public ScanningWalk<JP2FileInputStream>
{
public:
   explicit JPEG2000Walk(PixelDataFragmentInputStreamVR& thePixels) : ScanningWalk(thePixels) {}

protected:
   bool Find(bool theIsKept, Frame& theFrame) override
   {
      RecordFrame(false);
      if (IsAtEndOfFragment())
      {
         SkipPadByte();
      }
      DropScanned();
      theFrame.itsOffset = static_cast<UINT64>(itsScanner.GetPosition());
      RecordFrame(theIsKept);
      const INT64 aLength = itsScanner.seekToEndOfCodestream();
      if (aLength < 0)
      {
         return false;
      }
      CheckLength(aLength, "JPEG 2000 codestream");
      theFrame.itsFragment = itsData.FindFragment(theFrame.itsOffset);
      theFrame.itsLength = static_cast<UINT64>(aLength);
      return true;
   }

private:
   // Whether one byte is left in a fragment that had bytes of the last frame.
   bool IsAtEndOfFragment() const
   {
      const auto anOffset = static_cast<UINT64>(itsScanner.GetPosition());
      const INT32 aFragment = itsData.FindFragment(anOffset);
      return GetFrameCount() > 0 && aFragment >= 0 && anOffset + 1 == itsData.GetFragmentEnd(aFragment) &&
             anOffset > itsData.GetFragmentEnd(aFragment - 1);
   }

   // A fragment has a byte more than a codestream of odd length, PS3.5 A.4. It is no pad byte when a codestream begins
   // with it, which the standard does not allow either.
   void SkipPadByte()
   {
      unsigned char aMarker[2];
      const unsigned int aCount = itsScanner.ReadFully(aMarker, sizeof aMarker);
      const bool isSOC = aCount == 2 && LoadUINT16<TNEndian::BigEndian>(aMarker) == JP2FileInputStream::M_SOC;
      const unsigned int aSkipped = isSOC ? 0 : 1;
      itsScanner.Pushback(aMarker + aSkipped, aCount - aSkipped);
   }
};

// A frame is a fragment, PS3.5 A.4.2; it is read where it stands.
class RLEWalk : public FrameWalk
{
public:
   explicit RLEWalk(PixelDataFragmentInputStreamVR& thePixels) : FrameWalk(thePixels) {}

   void SkipData(UINT32 theCount) override { itsData.Skip(theCount); }

protected:
   bool Find(bool, Frame& theFrame) override
   {
      if (!itsData.OpenNextFragment())
      {
         return false;
      }
      theFrame.itsFragment = itsData.GetCurrentFragmentIndex();
      theFrame.itsOffset = itsData.GetPosition();
      theFrame.itsLength = itsData.GetFragmentLengthTable().back();
      return true;
   }
};
} // namespace

std::unique_ptr<FrameWalk> FrameWalk::New(ImageFrameInputStream::CompressionType theType,
                                          PixelDataFragmentInputStreamVR& thePixels)
{
   switch (theType)
   {
   case ImageFrameInputStream::JPEG: return std::make_unique<JPEGWalk>(thePixels);
   case ImageFrameInputStream::JPEG2000: return std::make_unique<JPEG2000Walk>(thePixels);
   default: return std::make_unique<RLEWalk>(thePixels);
   }
}

FrameWalk::FrameWalk(PixelDataFragmentInputStreamVR& thePixels)
    : itsData(thePixels), itsRecording(itsData), itsView(itsRecording, 0)
{}

FrameWalk::~FrameWalk()
{
   itsView.End();
}

bool FrameWalk::Next(bool theIsKept)
{
   itsView.End();
   if (itsIsAtEnd || !Find(theIsKept, itsFrame))
   {
      return false;
   }
   itsView = ImageFramePixelInputStream(itsRecording, theIsKept ? itsFrame.itsLength : 0);
   ++itsFrameCount;
   return true;
}

void FrameWalk::SkipRest()
{
   itsIsAtEnd = true;
   itsData.SkipToEnd();
}
