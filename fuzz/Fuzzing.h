// What the fuzz targets share.
#pragma once

#include <cstddef>
#include <ostream>
#include <vector>

#include "talvenor/foundation/BasicTypes.h"
#include "talvenor/io/InputStream.h"

using FuzzBytes = std::vector<unsigned char>;

// Loads the dictionaries of the source tree, once, and keeps the error log quiet.
void SetUpFuzzing();

// Swallows what is printed.
std::ostream& NullOutput();

// A finding: what must always hold did not.
[[noreturn]] void Report(const char* theText);
inline void Require(bool theFact, const char* theText)
{
   if (!theFact)
   {
      Report(theText);
   }
}

// A DICOM file with that transfer syntax around the bytes of a dataset.
FuzzBytes AsFile(const RWCString& theTransferSyntax, const unsigned char* theDataset, std::size_t theSize);

// A source that cannot seek and delivers a few bytes a read, as a network does.
class PieceStream : public InputStream
{
public:
   PieceStream(const FuzzBytes& theBytes, unsigned int thePiece) : itsBytes(theBytes), itsPiece(thePiece) {}

   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override;
   void Close() override {}

private:
   const FuzzBytes& itsBytes;
   unsigned int itsPiece;
   std::size_t itsPosition = 0;
};
