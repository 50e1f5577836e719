#include "talvenor/io/ByteBuffer.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>

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
