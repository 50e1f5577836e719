// Bytes that a stream holds back until it sends them in one system call: buffers that were handed over, sent from where
// they are, and between them buffers in which small writes are collected. Not part of the library's interface.
#pragma once

#include <cstddef>
#include <deque>
#include <memory>

#include "talvenor/io/IOBuffer.h"
#include "talvenor/platform/Sockets.h"

class HeldOutput
{
public:
   static constexpr std::size_t kMaxBytes = 65536;
   static constexpr std::size_t kMaxBuffers = TNPlatform::kMaxBlocks;

   std::size_t GetByteCount() const { return itsByteCount; }
   bool IsEmpty() const { return itsByteCount == 0; }
   bool IsFull() const { return itsByteCount >= kMaxBytes || itsBuffers.size() >= kMaxBuffers; }

   void Add(std::unique_ptr<IOBuffer> theBuffer);
   void Add(const unsigned char* theBytes, std::size_t theCount);

   // Describes what is held, in order, in at most kMaxBuffers blocks. Returns their number.
   unsigned int Describe(TNPlatform::ConstBlock* theBlocks) const;

   // The first theCount bytes have been sent.
   void Drop(std::size_t theCount);
   void Clear();

private:
   std::deque<std::unique_ptr<IOBuffer>> itsBuffers;
   std::size_t itsByteCount = 0;
   bool itsLastIsOurs = false; // made here: more bytes may be collected in it
};
