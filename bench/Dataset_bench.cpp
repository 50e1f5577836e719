// Datasets in memory: typed getters, building, dumping.
#include <algorithm>
#include <memory>
#include <ostream>
#include <random>
#include <streambuf>

#include <benchmark/benchmark.h>

#include "bench/DatasetBytes.h"
#include "bench/LoadedDataset.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/DICOMObjectDumper.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/foundation/LogStream.h"

namespace
{
void TypedGetter(benchmark::State& theState)
{
   const std::unique_ptr<DICOMDataObject> anObject = Load(CTImage(kExplicit, 0));
   static constexpr UINT16 kElements[] = {0x0002, 0x0010, 0x0011, 0x0100, 0x0101, 0x0102, 0x0103};
   size_t aNext = 0;
   for (auto _ : theState)
   {
      UINT16 aValue = 0;
      benchmark::DoNotOptimize(anObject->GetUINT16(0x0028, kElements[aNext], aValue));
      benchmark::DoNotOptimize(aValue);
      aNext = aNext + 1 < std::size(kElements) ? aNext + 1 : 0;
   }
}
BENCHMARK(TypedGetter);

constexpr size_t kBuiltElements = 10000;

// Makes the elements and pushes them; what the dataset's end costs is not counted.
void Build(benchmark::State& theState, bool isShuffled)
{
   std::vector<UINT32> aTags(kBuiltElements);
   for (size_t i = 0; i < aTags.size(); ++i)
   {
      aTags[i] = 0x00080000 + static_cast<UINT32>((i / 100) << 17 | (i % 100 + 1));
   }
   if (isShuffled)
   {
      std::shuffle(aTags.begin(), aTags.end(), std::mt19937(4711));
   }
   static constexpr char kValue[] = "VALUE 01";
   for (auto _ : theState)
   {
      auto anObject = std::make_unique<DICOMDataObject>();
      for (const UINT32 aTag : aTags)
      {
         auto* const aVR = new VR(static_cast<UINT16>(aTag >> 16), static_cast<UINT16>(aTag));
         aVR->SetData(kValue, sizeof kValue - 1, ' ');
         anObject->Push(aVR);
      }
      theState.PauseTiming();
      anObject.reset();
      theState.ResumeTiming();
   }
   PerElement(theState, aTags.size());
}
BENCHMARK_CAPTURE(Build, in order, false)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Build, shuffled, true)->Unit(benchmark::kMicrosecond);

class NullBuffer : public std::streambuf
{
protected:
   int_type overflow(int_type theCharacter) override { return traits_type::not_eof(theCharacter); }
   std::streamsize xsputn(const char*, std::streamsize theCount) override { return theCount; }
};

void Dump(benchmark::State& theState, const DatasetBytes& theDataset)
{
   const std::unique_ptr<DICOMDataObject> anObject = Load(theDataset);
   NullBuffer aBuffer;
   std::ostream aStream(&aBuffer);
   LogStream aLog(aStream);
   DICOMObjectDumper aDumper(aLog);
   for (auto _ : theState)
   {
      aDumper.Dump(*anObject);
   }
   PerElement(theState, theDataset.GetElementCount());
}

void DumpCTHeader(benchmark::State& theState)
{
   Dump(theState, CTImage(kExplicit, 0));
}
BENCHMARK(DumpCTHeader)->Unit(benchmark::kMicrosecond);

void DumpReport(benchmark::State& theState)
{
   Dump(theState, Report(kExplicit, 20000));
}
BENCHMARK(DumpReport)->Unit(benchmark::kMillisecond);
} // namespace
