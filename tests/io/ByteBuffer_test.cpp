#include "talvenor/io/ByteBuffer.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>

#include "support/StreamErrors.h"
#include "talvenor/io/IOBuffer.h"

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

TEST(ByteBuffer, AnOddCapacityIsTheLimitAlthoughTheStorageIsEven)
{
   ByteBuffer aBuffer(5);
   EXPECT_EQ(aBuffer.GetAllocatedSize(), 5U);
   EXPECT_EQ(aBuffer.GetAvailableFreeSpace(), 5U);
   Put(aBuffer, "abcde");
   EXPECT_EQ(aBuffer.GetCopyInPointer(), nullptr);
   EXPECT_THROW(Put(aBuffer, "f"), ByteBuffer::ByteBufferException);
   EXPECT_EQ(Take(aBuffer, 5), "abcde");
}

TEST(ByteBuffer, EmptyingByAnyConsumerStartsAtTheFrontAgain)
{
   const std::function<void(ByteBuffer&)> kConsumers[] = {[](ByteBuffer& b) { Take(b, 3); },
                                                          [](ByteBuffer& b) { EXPECT_EQ(b.Skip(3), 1); },
                                                          [](ByteBuffer& b) { b.SetBytesCopiedOut(3); }};
   for (const auto& aConsumer : kConsumers)
   {
      ByteBuffer aBuffer(4);
      const unsigned char* aFront = aBuffer.GetCopyInPointer();
      Put(aBuffer, "abc");
      aConsumer(aBuffer);
      EXPECT_EQ(aBuffer.GetCopyInPointer(), aFront);
      EXPECT_EQ(aBuffer.GetAvailableFreeSpace(), 4U);
      EXPECT_EQ(aBuffer.GetCopyOutPointer(), nullptr);
   }
}

TEST(ByteBuffer, ConsumedSpaceIsFreeOnlyAfterItIsReclaimed)
{
   ByteBuffer aBuffer(4);
   Put(aBuffer, "abcd");
   Take(aBuffer, 3);
   EXPECT_EQ(aBuffer.GetAvailableFreeSpace(), 0U);
   aBuffer.ReclaimSpace();
   EXPECT_EQ(aBuffer.GetAvailableFreeSpace(), 3U);
   Put(aBuffer, "efg");
   EXPECT_EQ(Take(aBuffer, 4), "defg");
}

TEST(ByteBuffer, NothingIsCopiedWithoutBytesAndWithoutStorage)
{
   ByteBuffer aBuffer;
   EXPECT_EQ(aBuffer.GetAllocatedSize(), 0U);
   EXPECT_EQ(aBuffer.GetCopyInPointer(), nullptr);
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

TEST(ByteBuffer, ItsExceptionSaysItsTypeAlsoAsAClone)
{
   const ByteBuffer::ByteBufferException anException("text", TN_BYTEBUFFER_ERROR, 7);
   const std::unique_ptr<ExceptionBase> aClone(anException.Clone());
   EXPECT_STREQ(aClone->GetType(), "ByteBuffer::ByteBufferException");
   EXPECT_NE(dynamic_cast<ByteBuffer::ByteBufferException*>(aClone.get()), nullptr);
}

TEST(IOBuffer, ClearForgetsTheOutcomeAndKeepsTheRequest)
{
   IOBuffer aBuffer(4);
   Put(aBuffer, "ab");
   aBuffer.SetResultCode(TN_TIMED_OUT);
   aBuffer.SetSystemErrorCode(110);
   aBuffer.SetWriteRequested(1);
   aBuffer.SetRequestSize(99);
   IOBuffer aCopy(aBuffer);
   aBuffer.Clear();
   EXPECT_EQ(aBuffer.GetBytesAvailable(), 0U);
   EXPECT_EQ(aBuffer.GetResultCode(), TN_NO_ERROR);
   EXPECT_EQ(aBuffer.GetSystemErrorCode(), 0);
   EXPECT_EQ(aBuffer.IsWriteRequest(), 1);
   EXPECT_EQ(aBuffer.GetRequestSize(), 99U);
   EXPECT_EQ(aCopy.GetResultCode(), TN_TIMED_OUT);
   EXPECT_EQ(aCopy.GetSystemErrorCode(), 110);
   EXPECT_EQ(Take(aCopy, 2), "ab");
}
