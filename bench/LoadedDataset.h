// Datasets in memory to measure with, and how their figures are reported.
#pragma once

#include <memory>
#include <string>

#include <benchmark/benchmark.h>

#include "bench/DatasetBytes.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/file/DICOMObjectLoader.h"
#include "talvenor/file/Part10MemoryInputStream.h"

// The dataset in memory, typed by the dictionaries of the source tree.
inline std::unique_ptr<DICOMDataObject> Load(const DatasetBytes& theDataset)
{
   LoadDictionaries();
   const std::string aFile = theDataset.File();
   const auto* const aBytes = reinterpret_cast<const unsigned char*>(aFile.data());
   Part10MemoryInputStream aStream(static_cast<UINT32>(aFile.size()), aBytes);
   auto anObject = std::make_unique<DICOMDataObject>();
   DICOMObjectLoader(*anObject, aStream).Load();
   return anObject;
}

// Reports the time for each of theElements that an iteration goes through.
inline void PerElement(benchmark::State& theState, size_t theElements)
{
   theState.counters["element"] = benchmark::Counter(
       static_cast<double>(theElements), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
