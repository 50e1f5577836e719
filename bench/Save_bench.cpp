// Encoding: datasets in memory, and streams that pass from one syntax to another.
#include <memory>
#include <string>

#include <benchmark/benchmark.h>

#include "bench/DatasetBytes.h"
#include "bench/LoadedDataset.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/file/Part10MemoryInputStream.h"
#include "talvenor/io/NullStreams.h"
#include "talvenor/transfer/InputTransferSyntax.h"
#include "talvenor/transfer/OutputTransferSyntax.h"
#include "talvenor/transfer/TransferSyntaxManager.h"

namespace
{
using Encoding = DatasetBytes::Encoding;

std::unique_ptr<OutputTransferSyntax> MakeEncoder(const Encoding& theEncoding, OutputStream& theStream)
{
   const TransferSyntaxType* const aType =
       TransferSyntaxManager::GetDefaultInstance().GetTransferSyntaxType(theEncoding.itsTransferSyntaxUID);
   return std::unique_ptr<OutputTransferSyntax>(aType->CreateOutputTransferSyntax(theStream));
}

void Encode(benchmark::State& theState, const DatasetBytes& theDataset, const Encoding& theEncoding)
{
   const std::unique_ptr<DICOMDataObject> anObject = Load(theDataset);
   NullOutputStream aStream; // not the encoders' own one, over which they filter nothing
   for (auto _ : theState)
   {
      MakeEncoder(theEncoding, aStream)->SaveDICOMObject(*anObject);
   }
   PerElement(theState, theDataset.GetElementCount());
}

void EncodeCTHeader(benchmark::State& theState, const Encoding& theEncoding)
{
   Encode(theState, CTImage(kExplicit, 0), theEncoding);
}
BENCHMARK_CAPTURE(EncodeCTHeader, explicit, kExplicit)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(EncodeCTHeader, implicit, kImplicit)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(EncodeCTHeader, big endian, kBigEndian)->Unit(benchmark::kMicrosecond);

void EncodeReport(benchmark::State& theState, const Encoding& theEncoding)
{
   Encode(theState, Report(kExplicit, 20000), theEncoding);
}
BENCHMARK_CAPTURE(EncodeReport, explicit, kExplicit)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(EncodeReport, implicit, kImplicit)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(EncodeReport, big endian, kBigEndian)->Unit(benchmark::kMillisecond);

// From a file in memory to a stream, element by element: nothing is held.
void Transcode(benchmark::State& theState, const DatasetBytes& theDataset, const Encoding& theTarget)
{
   LoadDictionaries();
   const std::string aFile = theDataset.File();
   const auto* const aBytes = reinterpret_cast<const unsigned char*>(aFile.data());
   NullOutputStream aTarget;
   for (auto _ : theState)
   {
      Part10MemoryInputStream aStream(static_cast<UINT32>(aFile.size()), aBytes);
      const std::unique_ptr<InputTransferSyntax> aDecoder = aStream.CreateDecoder();
      const std::unique_ptr<OutputTransferSyntax> anEncoder = MakeEncoder(theTarget, aTarget);
      while (VR* const aVR = aDecoder->NextVR())
      {
         anEncoder->SaveVR(aVR);
      }
   }
   PerElement(theState, theDataset.GetElementCount());
   theState.SetBytesProcessed(static_cast<int64_t>(theState.iterations() * aFile.size()));
}

void TranscodeReport(benchmark::State& theState, const Encoding& theSource, const Encoding& theTarget)
{
   Transcode(theState, Report(theSource, 20000), theTarget);
}
BENCHMARK_CAPTURE(TranscodeReport, explicit to implicit, kExplicit, kImplicit)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(TranscodeReport, explicit / defined to implicit, kExplicitDefined, kImplicit)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(TranscodeReport, implicit to explicit, kImplicit, kExplicit)->Unit(benchmark::kMillisecond);

void TranscodePixels(benchmark::State& theState, const Encoding& theTarget)
{
   Transcode(theState, CTImage(kExplicit, 64 << 20), theTarget);
}
BENCHMARK_CAPTURE(TranscodePixels, explicit to implicit, kImplicit)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(TranscodePixels, explicit to big endian, kBigEndian)->Unit(benchmark::kMillisecond);
} // namespace
