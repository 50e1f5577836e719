#include "apps/tn/files/FragmentFrames.h"

#include <memory>
#include <string>

#include "apps/tn/files/DatasetChecks.h"
#include "talvenor/pixel/BasicOffsetTable.h"
#include "talvenor/pixel/PixelDataFragmentInputStream.h"
#include "talvenor/pixel/PixelDataFragmentInputStreamVR.h"

namespace
{
constexpr UINT32 kItemHeader = 8; // bytes

// Walks the fragments frame by frame.
class Walk
{
public:
   explicit Walk(const std::vector<UINT32>& theLengths) : itsLengths(theLengths) {}

   bool IsAtEnd() const { return itsFragment == itsLengths.size(); }

   // The frame that begins here and ends where isInside(offset) is no longer true; at least one fragment if there is
   // one.
   template <class Condition>
   FragmentFrame Next(Condition isInside)
   {
      FragmentFrame aFrame{itsOffset, 0, itsFragment, 0};
      do
      {
         aFrame.itsLength += itsLengths[itsFragment];
         itsOffset += kItemHeader + UINT64{itsLengths[itsFragment++]};
      } while (!IsAtEnd() && isInside(itsOffset));
      aFrame.itsCount = itsFragment - aFrame.itsFragment;
      return aFrame;
   }

   UINT64 GetOffset() const { return itsOffset; }

private:
   const std::vector<UINT32>& itsLengths;
   std::size_t itsFragment = 0;
   UINT64 itsOffset = 0;
};
} // namespace

std::vector<UINT32> ReadFragmentLengths(PixelDataFragmentInputStreamVR& thePixels)
{
   std::vector<UINT32> aLengths;
   while (const std::unique_ptr<PixelDataFragmentInputStream> aFragment{thePixels.NextFragment()})
   {
      aLengths.push_back(aFragment->GetLength());
      if (aFragment->Skip(aFragment->GetLength()) != aFragment->GetLength())
      {
         throw IncompleteDataset("the file ends inside fragment " + std::to_string(aLengths.size()));
      }
   }
   return aLengths;
}

void ForEachFragmentFrame(const std::vector<UINT32>& theLengths, INT32 theNumberOfFrames,
                          const BasicOffsetTable* theTable, const std::function<void(const FragmentFrame&)>& theAction)
{
   if (theTable == nullptr && theNumberOfFrames != 1 &&
       theLengths.size() != static_cast<std::size_t>(theNumberOfFrames))
   {
      throw IncompleteDataset("without an offset table the frames of this transfer syntax cannot be told apart: " +
                              std::to_string(theLengths.size()) + " fragments hold " +
                              std::to_string(theNumberOfFrames) + " frames");
   }
   Walk aWalk(theLengths);
   for (INT32 aFrame = 0; aFrame < theNumberOfFrames; ++aFrame)
   {
      const bool isLast = aFrame == theNumberOfFrames - 1;
      const UINT64 anEnd = theTable != nullptr && !isLast ? theTable->GetOffset(aFrame + 1) : 0;
      const bool isThere = !aWalk.IsAtEnd();
      if (isThere)
      {
         const FragmentFrame aFound = aWalk.Next([&](UINT64 theOffset) { return isLast || theOffset < anEnd; });
         if (anEnd == 0 || aWalk.GetOffset() == anEnd)
         {
            theAction(aFound);
            continue;
         }
      }
      throw IncompleteDataset("its offset table does not fit its fragments at frame " + std::to_string(aFrame + 1) +
                              (isThere ? ": an offset leads into a fragment or backwards" : ": there are no more"));
   }
}
