// Keeps what is written to it and counts the writes.
#pragma once

#include <vector>

#include "talvenor/io/OutputStream.h"

class RecordingOutputStream : public OutputStream
{
public:
   using OutputStream::Write;
   void Write(const unsigned char* theBytes, unsigned int theCount) override
   {
      ++itsWrites;
      itsBytes.insert(itsBytes.end(), theBytes, theBytes + theCount);
   }
   void Flush() override {}

   const std::vector<unsigned char>& Bytes() const { return itsBytes; }
   unsigned int Writes() const { return itsWrites; }

private:
   std::vector<unsigned char> itsBytes;
   unsigned int itsWrites = 0;
};
