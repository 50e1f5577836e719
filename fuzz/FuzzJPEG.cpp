// Searches JPEG data for its images and dumps it. The first byte says in which pieces the rest arrives. What is found
// must be what a search byte by byte finds.
#include "fuzz/Fuzzing.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/io/BufferingInputStream.h"
#include "talvenor/pixel/JPEGFileInputStream.h"

namespace
{
struct Result
{
   bool operator==(const Result&) const = default;

   bool itsIsFound = false;
   bool itsFails = false;
   INT64 itsOffset = -1; // behind what was found
};

// ISO 10918-1 B.1.1, one byte at a time.
Result SearchSlowly(const FuzzBytes& theBytes, std::size_t theBegin, int theMarker)
{
   std::size_t i = theBegin;
   while (true)
   {
      while (i + 1 < theBytes.size() && !(theBytes[i] == 0xFF && theBytes[i + 1] != 0 && theBytes[i + 1] != 0xFF))
      {
         ++i;
      }
      if (i + 1 >= theBytes.size())
      {
         return {};
      }
      const int aMarker = theBytes[i + 1];
      i += 2;
      const bool isBare = aMarker == 0x01 || (aMarker >= 0xD0 && aMarker <= 0xD9);
      if (!isBare)
      {
         if (theBytes.size() - i < 2)
         {
            return {};
         }
         const std::size_t aLength = theBytes[i] * 256u + theBytes[i + 1];
         if (aLength < 2)
         {
            return {false, true};
         }
         i += aLength;
      }
      if (i > theBytes.size())
      {
         return {};
      }
      if (aMarker == theMarker)
      {
         return {true, false, static_cast<INT64>(i - theBegin)};
      }
   }
}

Result Search(JPEGFileInputStream& theStream, int theMarker)
{
   Result aResult;
   try
   {
      INT64 anOffset = 0;
      aResult.itsIsFound = theStream.FindCodestreamPosition(theMarker, anOffset);
      if (aResult.itsIsFound)
      {
         aResult.itsOffset = anOffset + (theMarker == JPEGFileInputStream::M_SOI ? 2 : 0);
      }
   }
   catch (const StreamIOException& anException)
   {
      Require(anException.GetResultCode() == TN_INVALID_ENCODING, "a failure of another kind");
      aResult.itsFails = true;
   }
   return aResult;
}

void SearchAll(const FuzzBytes& theBytes, unsigned int thePiece)
{
   PieceStream aSource(theBytes, thePiece);
   BufferingInputStream aRecorder(aSource);
   JPEGFileInputStream aStream(aRecorder);
   Result aResult;
   int aMarker = JPEGFileInputStream::M_SOI;
   do
   {
      const auto aBegin = static_cast<std::size_t>(aStream.GetPosition());
      aResult = Search(aStream, aMarker);
      Require(aResult == SearchSlowly(theBytes, aBegin, aMarker), "another end than byte by byte");
      Require(static_cast<UINT64>(aStream.GetPosition()) + aStream.GetLookAheadCount() ==
                  aRecorder.GetBufferedBytesAvailable(),
              "the count of what was read ahead");
      aMarker = aMarker == JPEGFileInputStream::M_SOI ? JPEGFileInputStream::M_EOI : JPEGFileInputStream::M_SOI;
   } while (aResult.itsIsFound);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* theData, std::size_t theSize)
{
   SetUpFuzzing();
   if (theSize == 0)
   {
      return 0;
   }
   const FuzzBytes aBytes(theData + 1, theData + theSize);
   const unsigned int aPiece = theData[0] != 0 ? theData[0] : 0xFFFFFFFF;
   SearchAll(aBytes, aPiece);
   PieceStream aSource(aBytes, aPiece);
   try
   {
      JPEGFileInputStream(aSource, static_cast<unsigned int>(aBytes.size() / 8 * 7)).dumpJPEGMarkers(NullOutput());
   }
   catch (const ExceptionBase& anException)
   {
      Require(anException.why()[0] != '\0', "a failure without a text");
   }
   return 0;
}
