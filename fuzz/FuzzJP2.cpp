// Walks boxes and codestreams of JPEG 2000 and dumps them. The first byte says in which pieces the rest arrives; a
// stream that can seek must end where one that cannot does.
#include <functional>

#include "fuzz/Fuzzing.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/io/MemoryStreams.h"
#include "talvenor/pixel/JP2FileInputStream.h"

namespace
{
using Walk = std::function<INT64(JP2FileInputStream&)>;

// What comes out of a walk: an offset or the text of a failure.
RWCString ResultOf(InputStream& theSource, INT64 theLimit, const Walk& theWalk)
{
   JP2FileInputStream aStream(theSource, theLimit);
   try
   {
      return std::to_string(theWalk(aStream));
   }
   catch (const StreamIOException& anException)
   {
      Require(anException.why()[0] != '\0', "a failure without a text");
      return anException.why();
   }
}

void WalkBothWays(const FuzzBytes& theBytes, unsigned int thePiece, INT64 theLimit, const Walk& theWalk)
{
   PieceStream aSlow(theBytes, thePiece);
   MemoryInputStream aFast(theBytes.data(), static_cast<unsigned int>(theBytes.size()));
   const RWCString aResult = ResultOf(aSlow, theLimit, theWalk);
   Require(aResult == ResultOf(aFast, theLimit, theWalk), "another end in a stream that can seek");
}

INT64 FindEnd(JP2FileInputStream& theStream, const FuzzBytes& theBytes, INT64 theMaxLength)
{
   const INT64 aBegin = theStream.GetPosition();
   const INT64 anEnd = theStream.seekToEndOfCodestream(aBegin, theMaxLength);
   if (anEnd >= 0)
   {
      Require(anEnd == theStream.GetPosition(), "stands elsewhere");
      Require(anEnd >= aBegin + 4 && anEnd <= static_cast<INT64>(theBytes.size()), "an end outside of the data");
      Require(theBytes[anEnd - 2] == 0xFF && theBytes[anEnd - 1] == 0xD9, "an end without EOC");
      Require(theMaxLength == 0 || anEnd <= theMaxLength, "beyond the maximum");
   }
   return anEnd;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* theData, std::size_t theSize)
{
   SetUpFuzzing();
   if (theSize < 2)
   {
      return 0;
   }
   const FuzzBytes aBytes(theData + 1, theData + theSize);
   const unsigned int aPiece = theData[0] != 0 ? theData[0] : 0xFFFFFFFF;
   const auto aSize = static_cast<INT64>(aBytes.size());
   const auto dump = [](JP2FileInputStream& theStream) {
      theStream.dumpJP2Boxes(NullOutput());
      return INT64{0};
   };
   for (const INT64 aLimit : {INT64{0}, (aSize + 1) / 2})
   {
      WalkBothWays(aBytes, aPiece, aLimit, dump);
      WalkBothWays(aBytes, aPiece, aLimit, [&](auto& theStream) { return FindEnd(theStream, aBytes, 0); });
      WalkBothWays(aBytes, aPiece, aLimit, [&](auto& theStream) {
         const INT64 aBegin = theStream.seekToStartOfCodestream();
         return aBegin >= 0 ? FindEnd(theStream, aBytes, aSize / 4 * 3) : aBegin;
      });
   }
   return 0;
}
