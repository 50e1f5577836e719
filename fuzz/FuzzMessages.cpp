// Reads what a peer sends as a series of messages, by the decisions of the first bytes of the input; what was read is
// sent again, cut into other PDUs, and read a second time.
//
//    byte 0     how large pieces are read
//    byte 1     what is done with a message: read, skipped in part, given up by Flush
//    the rest   PDUs
#include <algorithm>
#include <memory>

#include "fuzz/Fuzzing.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/io/IOBuffer.h"
#include "talvenor/ul/DICOMMessageInputStream.h"
#include "talvenor/ul/DICOMMessageOutputStream.h"
#include "talvenor/ul/DULStream.h"
#include "talvenor/ul/PDUInputStream.h"
#include "talvenor/ul/PDUOutputStream.h"

namespace
{
// What is written goes to the end, what is read comes from the beginning.
class Pipe final : public DULStream
{
public:
   Pipe() : DULStream(64, 64) {}
   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override
   {
      const auto aCount = static_cast<unsigned int>(std::min<std::size_t>(theCount, itsBytes.size() - itsPlace));
      std::copy_n(itsBytes.begin() + static_cast<std::ptrdiff_t>(itsPlace), aCount, theBuffer);
      itsPlace += aCount;
      return aCount;
   }
   void Write(IOBuffer* theBuffer) override
   {
      const std::unique_ptr<IOBuffer> aBuffer(theBuffer);
      Write(aBuffer->GetCopyOutPointer(), aBuffer->GetBytesAvailable());
   }
   void Write(const unsigned char* theBytes, unsigned int theCount) override
   {
      itsBytes.insert(itsBytes.end(), theBytes, theBytes + theCount);
   }
   void Close() override {}

private:
   FuzzBytes itsBytes;
   std::size_t itsPlace = 0;
};

struct Message
{
   bool operator==(const Message&) const = default;
   PDVInputStream::MessageType itsType;
   unsigned char itsContextID;
   FuzzBytes itsData;
};

FuzzBytes ReadAll(DICOMMessageInputStream& theMessage, unsigned int thePiece)
{
   FuzzBytes aData;
   FuzzBytes aBuffer(thePiece);
   while (const unsigned int aCount = theMessage.Read(aBuffer.data(), thePiece))
   {
      Require(aCount <= thePiece, "more was read than asked for");
      aData.insert(aData.end(), aBuffer.begin(), aBuffer.begin() + aCount);
   }
   return aData;
}

// The messages up to the first failure.
std::vector<Message> ReadMessages(DULStream& theStream, unsigned int thePiece, unsigned int theDecision)
{
   PDUInputStream aPDUs(theStream);
   DICOMMessageInputStream aStream(aPDUs);
   std::vector<Message> aMessages;
   try
   {
      while (aStream.Start())
      {
         Message aMessage{aStream.GetMessageType(), aStream.GetCurrentPresentationContextID(), {}};
         if (theDecision & 1)
         {
            aStream.Skip(theDecision >> 2);
         }
         if (theDecision & 2)
         {
            aStream.Flush();
         }
         aMessage.itsData = ReadAll(aStream, thePiece);
         Require(!aStream.HasUnfinishedMessage(), "a message that was read is not finished");
         Require(aStream.GetLength() >= aMessage.itsData.size(), "a message is longer than its length");
         aMessages.push_back(std::move(aMessage));
      }
      Require(!aStream.HasUnfinishedMessage(), "the connection ended cleanly inside a message");
   }
   catch (const StreamIOException& anException)
   {
      Require(anException.GetResultCode() != TN_NO_ERROR, "a failure without a code");
   }
   return aMessages;
}

void WriteMessages(DULStream& theStream, const std::vector<Message>& theMessages, unsigned int theDecision)
{
   PDUOutputStream aPDUs(theStream, 14 + theDecision);
   DICOMMessageOutputStream aStream(aPDUs);
   for (const Message& aMessage : theMessages)
   {
      aStream.SetMessageType(aMessage.itsType);
      aStream.SetPresentationContextID(aMessage.itsContextID);
      const auto aLength = static_cast<unsigned int>(aMessage.itsData.size());
      const unsigned int anEnd = std::min(aLength, theDecision);
      aStream.Write(aMessage.itsData.data(), anEnd);
      if (theDecision & 4)
      {
         aStream.Flush();
      }
      aStream.Write(aMessage.itsData.data() + anEnd, aLength - anEnd);
      aStream.FinishMessageEvenIfEmpty();
   }
   aPDUs.FinishPDU();
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* theData, std::size_t theSize)
{
   SetUpFuzzing();
   if (theSize < 2)
   {
      return 0;
   }
   Pipe anInput;
   anInput.Write(theData + 2, static_cast<unsigned int>(theSize - 2));
   const std::vector<Message> aMessages = ReadMessages(anInput, theData[0] + 1u, theData[1]);
   Pipe aCopy;
   WriteMessages(aCopy, aMessages, theData[1]);
   Require(ReadMessages(aCopy, 4096, 0) == aMessages, "what was sent is not what is received");
   return 0;
}
