// Loading files: all values, and only up to the pixel data. Times an element stand in the column "element".
#include <memory>

#include <benchmark/benchmark.h>

#include "bench/DatasetBytes.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/file/DICOMObjectLoader.h"
#include "talvenor/file/Part10MemoryInputStream.h"

namespace
{
void Report(benchmark::State& theState, size_t theElements, size_t theBytes)
{
   const auto anElements = static_cast<double>(theElements);
   theState.counters["element"] =
       benchmark::Counter(anElements, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
   theState.SetBytesProcessed(static_cast<int64_t>(theState.iterations() * theBytes));
}

// Whether taking the dataset down is counted. For a large one it is a third of the whole, or more where the allocator
// has been in use for long and hands out memory in no order.
enum class WithEnd
{
   No,
   Yes
};

void TakeDown(benchmark::State& theState, std::unique_ptr<DICOMDataObject>& theObject, WithEnd theIsWithEnd)
{
   if (theIsWithEnd == WithEnd::Yes)
   {
      theObject.reset();
      return;
   }
   theState.PauseTiming();
   theObject.reset();
   theState.ResumeTiming();
}

void LoadFromMemory(benchmark::State& theState, const DatasetBytes& theDataset, WithEnd theIsWithEnd)
{
   LoadDictionaries();
   const std::string aFile = theDataset.File();
   const auto* const aBytes = reinterpret_cast<const unsigned char*>(aFile.data());
   for (auto _ : theState)
   {
      Part10MemoryInputStream aStream(static_cast<UINT32>(aFile.size()), aBytes);
      auto anObject = std::make_unique<DICOMDataObject>();
      DICOMObjectLoader(*anObject, aStream).Load();
      benchmark::DoNotOptimize(anObject->Entries());
      TakeDown(theState, anObject, theIsWithEnd);
   }
   Report(theState, theDataset.GetElementCount(), aFile.size());
}

void LoadFromFile(benchmark::State& theState, const DatasetBytes& theDataset, UINT16 theStopGroup, WithEnd theIsWithEnd)
{
   LoadDictionaries();
   const std::string aName = TemporaryFile(theDataset.File());
   for (auto _ : theState)
   {
      auto anObject = std::make_unique<DICOMDataObject>();
      UINT32 aSize;
      TNResultCode aResult;
      int anError;
      if (!anObject->LoadFromFile(aName, aSize, aResult, anError, theStopGroup))
      {
         theState.SkipWithError("cannot load");
      }
      TakeDown(theState, anObject, theIsWithEnd);
   }
   Report(theState, theDataset.GetElementCount(), theDataset.GetBytes().size());
}

constexpr size_t kReportItems = 20000;
constexpr size_t kPixelBytes = 512 * 512 * 2;
constexpr UINT16 kPixelGroup = 0x7FE0;

void RegisterAll()
{
   for (const auto* anEncoding : {&kExplicit, &kImplicit, &kBigEndian})
   {
      const std::string aName = anEncoding->itsName;
      benchmark::RegisterBenchmark(("CTHeader/memory/" + aName).c_str(), [=](benchmark::State& theState) {
         LoadFromMemory(theState, CTImage(*anEncoding, 0), WithEnd::Yes);
      });
      benchmark::RegisterBenchmark(("CTHeader/file/" + aName).c_str(), [=](benchmark::State& theState) {
         LoadFromFile(theState, CTImage(*anEncoding, 0), 0, WithEnd::Yes);
      });
   }
   for (const auto* anEncoding : {&kExplicit, &kExplicitDefined, &kImplicit, &kImplicitDefined})
   {
      for (const auto anEnd : {WithEnd::No, WithEnd::Yes})
      {
         const std::string aName = anEncoding->itsName + std::string(anEnd == WithEnd::Yes ? "/and its end" : "");
         benchmark::RegisterBenchmark(("Report/memory/" + aName).c_str(), [=](benchmark::State& theState) {
            LoadFromMemory(theState, Report(*anEncoding, kReportItems), anEnd);
         })->Unit(benchmark::kMillisecond);
         benchmark::RegisterBenchmark(("Report/file/" + aName).c_str(), [=](benchmark::State& theState) {
            LoadFromFile(theState, Report(*anEncoding, kReportItems), 0, anEnd);
         })->Unit(benchmark::kMillisecond);
      }
   }
   benchmark::RegisterBenchmark("CTImage/file/up to pixel data", [](benchmark::State& theState) {
      LoadFromFile(theState, CTImage(kExplicit, kPixelBytes), kPixelGroup, WithEnd::Yes);
   })->Unit(benchmark::kMicrosecond);
   benchmark::RegisterBenchmark("CTImage/file/whole", [](benchmark::State& theState) {
      LoadFromFile(theState, CTImage(kExplicit, kPixelBytes), 0, WithEnd::Yes);
   })->Unit(benchmark::kMicrosecond);
}

const bool kAreRegistered = (RegisterAll(), true);
} // namespace
