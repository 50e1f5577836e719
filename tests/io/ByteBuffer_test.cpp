#include "talvenor/io/ByteBuffer.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "support/StreamErrors.h"

namespace
{

void Put(ByteBuffer& theBuffer, const std::string& theText)
{
   theBuffer.CopyIn(reinterpret_cast<const unsigned char*>(theText.data()), static_cast<unsigned int>(theText.size()));
}

std::string Take(ByteBuffer& theBuffer, unsigned int theLength)
{
   std::string aText(theLength, '?');
   EXPECT_EQ(theBuffer.CopyOut(reinterpret_cast<unsigned char*>(aText.data()), theLength), 1);
   return aText;
}

} // namespace

TEST(ByteBuffer, ConsumedSpaceIsFreeOnlyAfterItIsReclaimed)
{
   ByteBuffer aBuffer(4);
   Put(aBuffer, "abcd");
   Take(aBuffer, 3);
   EXPECT_EQ(aBuffer.GetAvailableFreeSpace(), 0U);
   aBuffer.ReclaimSpace();
   EXPECT_EQ(aBuffer.GetAvailableFreeSpace(), 3U);
   Put(aBuffer, "efg");
   EXPECT_EQ(aBuffer.GetCopyInPointer(), nullptr); // full
   EXPECT_EQ(Take(aBuffer, 4), "defg");
   EXPECT_EQ(aBuffer.GetAvailableFreeSpace(), 4U); // emptied, it starts at the front again
}

TEST(ByteBuffer, NothingIsCopiedWithoutBytesAndWithoutStorage)
{
   ByteBuffer aBuffer;
   aBuffer.CopyIn(nullptr, 0);
   EXPECT_EQ(aBuffer.CopyOut(nullptr, 0), 1);
   ByteBuffer aCopy(aBuffer);
   aCopy.ReclaimSpace();
   EXPECT_EQ(aCopy.GetBytesAvailable(), 0U);
}

TEST(ByteBuffer, CopiesKeepUnreadBytesAtTheirPositions)
{
   ByteBuffer aBuffer(6);
   Put(aBuffer, "abcde");
   Take(aBuffer, 2);
   ByteBuffer aCopy(aBuffer);
   ByteBuffer anAssigned(1);
   anAssigned = aBuffer;
   Put(aBuffer, "X");
   for (ByteBuffer* aTwin : {&aCopy, &anAssigned})
   {
      EXPECT_EQ(aTwin->GetAvailableFreeSpace(), 1U);
      EXPECT_FALSE(*aTwin == aBuffer);
      EXPECT_EQ(Take(*aTwin, 3), "cde");
   }
   EXPECT_TRUE(aBuffer == aBuffer);
}

TEST(ByteBuffer, RefusesWhatDoesNotFitAndStaysAsItWas)
{
   struct Refusal
   {
      const char* itsMessage;
      std::function<void(ByteBuffer&)> itsOperation;
   };
   unsigned char aTarget[8];
   const Refusal kRefusals[] = {
       {"ByteBuffer::CopyIn(): theLength > GetAvailableFreeSpace()", [&](ByteBuffer& b) { b.CopyIn(aTarget, 3); }},
       {"ByteBuffer::SetBytesCopiedIn(): theLength > GetAvailableFreeSpace()",
        [](ByteBuffer& b) { b.SetBytesCopiedIn(0xFFFFFFFF); }},
       {"ByteBuffer::CopyOut(): theLength > GetBytesAvailable()", [&](ByteBuffer& b) { b.CopyOut(aTarget, 3); }},
       {"ByteBuffer::SetBytesCopiedOut(): theLength > GetBytesAvailable()",
        [](ByteBuffer& b) { b.SetBytesCopiedOut(0xFFFFFFFF); }},
       {"ByteBuffer::Skip(): theLength > GetBytesAvailable()", [](ByteBuffer& b) { b.Skip(3); }},
   };
   for (const Refusal& aRefusal : kRefusals)
   {
      ByteBuffer aBuffer(5);
      Put(aBuffer, "abc");
      Take(aBuffer, 1);
      EXPECT_EQ(StreamErrorOf([&] { aRefusal.itsOperation(aBuffer); }),
                (StreamError{aRefusal.itsMessage, TN_BYTEBUFFER_ERROR, 0}));
      EXPECT_EQ(aBuffer.GetAvailableFreeSpace(), 2U) << aRefusal.itsMessage;
      EXPECT_EQ(Take(aBuffer, 2), "bc") << aRefusal.itsMessage;
   }
}

// The storage of large buffers goes from one to the next: it must be large enough for each, belong to one at a time,
// and be given back by whatever thread drops it.
TEST(ByteBuffer, LargeOnesDoNotShareTheStorageThatTheyPassOn)
{
   constexpr unsigned int kSizes[] = {131072, 40000, 262144, 32768, 32769, 131072, 300000, 65536};
   std::vector<std::unique_ptr<ByteBuffer>> aBuffers;
   const auto aRound = [&] {
      for (unsigned int i = 0; i < 24; ++i)
      {
         const unsigned int aSize = kSizes[i % 8];
         auto aBuffer = std::make_unique<ByteBuffer>(aSize);
         EXPECT_EQ(aBuffer->GetAvailableFreeSpace(), aSize);
         Put(*aBuffer, std::string(aSize, static_cast<char>('a' + i)));
         aBuffers.push_back(std::move(aBuffer));
         if (aBuffers.size() > 3)
         {
            aBuffers.erase(aBuffers.begin());
         }
         for (const std::unique_ptr<ByteBuffer>& anOther : aBuffers)
         {
            const unsigned int aCount = anOther->GetBytesAvailable();
            const unsigned char* const aBytes = anOther->GetCopyOutPointer();
            EXPECT_EQ(std::string(aBytes, aBytes + aCount), std::string(aCount, static_cast<char>(*aBytes))) << i;
         }
         EXPECT_EQ(*aBuffers.back()->GetCopyOutPointer(), 'a' + i);
      }
   };
   aRound();
   std::thread(aRound).join(); // drops what this thread has made, and leaves its own to this one
   aRound();
}
