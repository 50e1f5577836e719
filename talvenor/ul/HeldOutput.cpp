#include "talvenor/ul/HeldOutput.h"

#include <algorithm>
#include <utility>

namespace
{

constexpr std::size_t kCollectingSize = 4096;

} // namespace

void HeldOutput::Add(std::unique_ptr<IOBuffer> theBuffer)
{
   const std::size_t aCount = theBuffer->GetBytesAvailable();
   itsBuffers.push_back(std::move(theBuffer));
   itsByteCount += aCount;
   itsLastIsOurs = false;
}

void HeldOutput::Add(const unsigned char* theBytes, std::size_t theCount)
{
   while (theCount != 0)
   {
      if (!itsLastIsOurs || itsBuffers.back()->GetAvailableFreeSpace() == 0)
      {
         Add(std::make_unique<IOBuffer>(static_cast<unsigned int>(std::max(theCount, kCollectingSize))));
         itsLastIsOurs = true;
      }
      IOBuffer& aBuffer = *itsBuffers.back();
      const auto aPart = static_cast<unsigned int>(std::min<std::size_t>(theCount, aBuffer.GetAvailableFreeSpace()));
      aBuffer.CopyIn(theBytes, aPart);
      itsByteCount += aPart;
      theBytes += aPart;
      theCount -= aPart;
   }
}

unsigned int HeldOutput::Describe(TNPlatform::ConstBlock* theBlocks) const
{
   const std::size_t aCount = std::min(itsBuffers.size(), kMaxBuffers);
   std::transform(
       itsBuffers.begin(), itsBuffers.begin() + static_cast<std::ptrdiff_t>(aCount), theBlocks,
       [](const std::unique_ptr<IOBuffer>& theBuffer) {
          return TNPlatform::ConstBlock{std::as_const(*theBuffer).GetCopyOutPointer(), theBuffer->GetBytesAvailable()};
       });
   return static_cast<unsigned int>(aCount);
}

void HeldOutput::Drop(std::size_t theCount)
{
   itsByteCount -= theCount;
   while (!itsBuffers.empty())
   {
      IOBuffer& aBuffer = *itsBuffers.front();
      const auto aPart = static_cast<unsigned int>(std::min<std::size_t>(theCount, aBuffer.GetBytesAvailable()));
      aBuffer.SetBytesCopiedOut(aPart);
      theCount -= aPart;
      if (aBuffer.GetBytesAvailable() != 0)
      {
         break;
      }
      itsBuffers.pop_front();
   }
   itsLastIsOurs = itsLastIsOurs && !itsBuffers.empty();
}

void HeldOutput::Clear()
{
   itsBuffers.clear();
   itsByteCount = 0;
   itsLastIsOurs = false;
}
