// Holds encoded bytes until the lengths in them are known: a sequence that was read with a defined length is written
// with the one that its content turns out to have, whatever was converted or left out in it. Only the outermost of
// nested lengths needs a buffer; the others are settled in it. Not part of the library's interface.
#pragma once

#include <vector>

#include "talvenor/foundation/BasicTypes.h"
#include "talvenor/io/OutputStream.h"
#include "talvenor/io/TNEndian.h"

class LengthPatchingOutputStream : public OutputStream
{
public:
   using OutputStream::Write;
   void Write(const unsigned char* theBytes, unsigned int theCount) override
   {
      itsBytes.insert(itsBytes.end(), theBytes, theBytes + theCount);
   }
   void Flush() override {}

   // To be called when the four bytes of a length have just been written; GetContent is what to hand to SetLength,
   // which replaces them by the number of bytes written since. Throws StreamIOException when that number does not fit.
   std::size_t GetContent() const { return itsBytes.size(); }
   void SetLength(std::size_t theContent, TNEndian::EndianType theEndian);

   void WriteTo(OutputStream& theStream) const;

private:
   std::vector<unsigned char> itsBytes;
};
