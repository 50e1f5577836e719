// Messages of 64 MiB through PDVs and PDUs, without a network: what the transport takes is thrown away, what it gives
// is copied from memory that holds one PDU. As one large value, as an encoder and a decoder do with pixel data, and in
// pieces of 8 bytes, as they do with headers; for the sizes of PDUs that peers announce.
#include <cstring>
#include <memory>
#include <vector>

#include <benchmark/benchmark.h>

#include "talvenor/io/IOBuffer.h"
#include "talvenor/io/TNEndian.h"
#include "talvenor/ul/DICOMMessageInputStream.h"
#include "talvenor/ul/DICOMMessageOutputStream.h"
#include "talvenor/ul/DULStream.h"
#include "talvenor/ul/PDUInputStream.h"
#include "talvenor/ul/PDUOutputStream.h"

namespace
{
constexpr unsigned int kBlock = 1 << 20; // the message is this, again and again: memory that is in the cache
constexpr unsigned int kBlocks = 64;

class Drain final : public DULStream
{
public:
   explicit Drain(UINT32 theBlockSize) : DULStream(theBlockSize, theBlockSize) {}
   unsigned int Read(unsigned char*, unsigned int) override { return 0; }
   void Write(IOBuffer* theBuffer) override
   {
      const std::unique_ptr<IOBuffer> aBuffer(theBuffer);
      itsCount += aBuffer->GetBytesAvailable();
   }
   void Write(const unsigned char*, unsigned int theCount) override { itsCount += theCount; }
   void Close() override {}

   UINT64 itsCount = 0;
};

// The same PDU, which is one PDV of a data set and not its last one, without end.
class Spring final : public DULStream
{
public:
   explicit Spring(UINT32 thePDULength) : DULStream(thePDULength, thePDULength), itsPDU(thePDULength)
   {
      itsPDU[0] = PDUInputStream::PDataTF;
      TNEndian::Store<TNEndian::BigEndian>(&itsPDU[2], thePDULength - 6);
      TNEndian::Store<TNEndian::BigEndian>(&itsPDU[6], thePDULength - 10);
      itsPDU[10] = 1;
   }
   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override
   {
      const unsigned int aCount = std::min<unsigned int>(theCount, static_cast<unsigned int>(itsPDU.size()) - itsPlace);
      std::memcpy(theBuffer, &itsPDU[itsPlace], aCount);
      itsPlace = itsPlace + aCount == itsPDU.size() ? 0 : itsPlace + aCount;
      return aCount;
   }
   void Write(IOBuffer* theBuffer) override { delete theBuffer; }
   void Write(const unsigned char*, unsigned int) override {}
   void Close() override {}

private:
   std::vector<unsigned char> itsPDU;
   unsigned int itsPlace = 0;
};

void Send(benchmark::State& theState)
{
   const auto aMaximum = static_cast<UINT32>(theState.range(0));
   const auto aPiece = static_cast<unsigned int>(theState.range(1));
   const std::vector<unsigned char> aData(kBlock, 0x5A);
   Drain aTransport(aMaximum);
   PDUOutputStream aPDUs(aTransport, aMaximum);
   for (auto _ : theState)
   {
      DICOMMessageOutputStream aMessage(aPDUs);
      aMessage.SetMessageType(PDVOutputStream::DataMessage);
      OutputStream& aStream = aMessage; // as an encoder sees it
      for (unsigned int i = 0; i < kBlocks; ++i)
      {
         for (unsigned int aPlace = 0; aPlace < kBlock; aPlace += aPiece)
         {
            aStream.Write(&aData[aPlace], aPiece);
         }
      }
      aMessage.FinishMessage();
      aMessage.FinishPDU();
   }
   benchmark::DoNotOptimize(aTransport.itsCount);
   theState.SetBytesProcessed(static_cast<INT64>(theState.iterations()) * kBlock * kBlocks);
}

void Receive(benchmark::State& theState)
{
   const auto aMaximum = static_cast<UINT32>(theState.range(0));
   const auto aPiece = static_cast<unsigned int>(theState.range(1));
   std::vector<unsigned char> aData(kBlock);
   Spring aTransport(aMaximum);
   PDUInputStream aPDUs(aTransport);
   aPDUs.SetMaxPDUReceiveLength(0);
   DICOMMessageInputStream aMessage(aPDUs);
   aMessage.Start();
   InputStream& aStream = aMessage; // as a decoder sees it
   for (auto _ : theState)
   {
      for (unsigned int i = 0; i < kBlocks; ++i)
      {
         for (unsigned int aPlace = 0; aPlace < kBlock; aPlace += aPiece)
         {
            aStream.Read(&aData[aPlace], aPiece);
         }
      }
   }
   benchmark::DoNotOptimize(aData.data());
   theState.SetBytesProcessed(static_cast<INT64>(theState.iterations()) * kBlock * kBlocks);
}

void Sizes(benchmark::internal::Benchmark* theBenchmark)
{
   theBenchmark->ArgNames({"PDU", "piece"})->ArgsProduct({{16384, 32768, 131072}, {8, kBlock}});
}

BENCHMARK(Send)->Apply(Sizes)->Unit(benchmark::kMillisecond);
BENCHMARK(Receive)->Apply(Sizes)->Unit(benchmark::kMillisecond);
} // namespace
