// What a dump shows of encapsulated pixel data. Frames and fragments bear the numbers that EncapsulatedPixelVR uses:
// frames count from 0, fragments from 1 over all frames.
#include "talvenor/dataset/DumpValue.h"
#include "talvenor/pixel/EncapsulatedPixelVR.h"

namespace
{
// Bytes that sit in a stream stay there: a dump must not change what it shows.
void PrintRawData(DumpText& theText, const PixelDataFragment& theFragment)
{
   theText << "] Raw Data: ";
   if (theFragment.IsStreamBuffered())
   {
      theText << "[Data pending on input stream]";
      return;
   }
   const unsigned char* aData = theFragment.GetData();
   PrintBytes(theText, {aData, aData != nullptr ? theFragment.GetLength() : 0, TNEndian::LittleEndian, nullptr},
              kRawByteLimit);
}

void StartNextLine(DumpText& theText)
{
   theText.EndLine();
   theText.StartLine();
}

// The fragments from theFirst up to, but not including, theEnd.
void PrintFrame(DumpText& theText, const EncapsulatedPixelVR& theVR, std::size_t theFrame, int theFirst, int theEnd)
{
   UINT64 aSize = 0;
   for (int i = theFirst; i < theEnd; ++i)
   {
      aSize += theVR.GetFragment(i).GetLength();
   }
   StartNextLine(theText);
   theText << "  [Frame # ";
   theText.Number(theFrame) << "] First Fragment Index: ";
   theText.Number(theFirst) << ", Fragments in Frame: ";
   theText.Number(theEnd - theFirst) << ", Data Bytes in Frame: ";
   theText.Number(aSize);
   for (int i = theFirst; i < theEnd; ++i)
   {
      StartNextLine(theText);
      theText << "    [Frame.Fragment: ";
      theText.Number(theFrame) << '.';
      theText.Number(i);
      PrintRawData(theText, theVR.GetFragment(i));
   }
}

void PrintFrames(DumpText& theText, const EncapsulatedPixelVR& theVR, const EncapsulatedPixelVR::FrameStarts& theStarts)
{
   theText << "[Encapsulated Pixel VR Containing ";
   theText.Number(theStarts.size()) << " Frame(s)]";
   for (std::size_t i = 0; i < theStarts.size(); ++i)
   {
      const int anEnd = i + 1 < theStarts.size() ? theStarts[i + 1] : theVR.GetFragmentCount() + 1;
      PrintFrame(theText, theVR, i, theStarts[i], anEnd);
   }
}

void PrintUnknownFrames(DumpText& theText, const EncapsulatedPixelVR& theVR, std::string_view theReason)
{
   const int aCount = theVR.GetFragmentCount();
   theText << "[Encapsulated Pixel VR containing unknown number of frames (";
   theText.Escaped(theReason) << ") (";
   theText.Number(aCount) << " fragment(s))]";
   for (int i = 1; i <= aCount; ++i)
   {
      StartNextLine(theText);
      theText << "    [Fragment: ";
      theText.Number(i);
      PrintRawData(theText, theVR.GetFragment(i));
   }
}

// Null, and the reason, when the offset table does not fit the fragments.
const EncapsulatedPixelVR::FrameStarts* FindFrames(const EncapsulatedPixelVR& theVR, RWCString& theReason)
{
   try
   {
      return &theVR.GetFrameStartIndices();
   }
   catch (const ExceptionBase& anException)
   {
      theReason = anException.GetMessage();
      return nullptr;
   }
}
} // namespace

void PrintEncapsulatedPixels(DumpText& theText, const EncapsulatedPixelVR& theVR)
{
   if (theVR.GetFrameCount() < 0)
   {
      PrintUnknownFrames(theText, theVR, "empty basic offset table");
      return;
   }
   RWCString aReason;
   if (const EncapsulatedPixelVR::FrameStarts* aStarts = FindFrames(theVR, aReason))
   {
      PrintFrames(theText, theVR, *aStarts);
   }
   else
   {
      PrintUnknownFrames(theText, theVR, aReason);
   }
}
