#include "apps/tn/files/Codestreams.h"

#include <cerrno>
#include <cstring>
#include <iomanip>

#include "apps/tn/base/JsonWriter.h"
#include "apps/tn/files/InputFile.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/io/LFInputStream.h"
#include "talvenor/pixel/JP2FileInputStream.h"
#include "talvenor/pixel/JPEGFileInputStream.h"

namespace
{
struct Signature
{
   CodestreamKind itsKind;
   unsigned int itsCount;
   unsigned char itsBytes[12];
};

// ISO 10918-1 B.1.1.3, ISO 15444-1 A.2 and I.5.1.
constexpr Signature kSignatures[] = {
    {CodestreamKind::JPEG, 3, {0xFF, 0xD8, 0xFF}},
    {CodestreamKind::JPEG2000, 4, {0xFF, 0x4F, 0xFF, 0x51}},
    {CodestreamKind::JP2, 12, {0, 0, 0, 12, 'j', 'P', ' ', ' ', '\r', '\n', 0x87, '\n'}},
};
constexpr unsigned int kLongestSignature = 12;

CodestreamKind KindOf(const unsigned char* theBytes, unsigned int theCount)
{
   for (const Signature& aSignature : kSignatures)
   {
      if (theCount >= aSignature.itsCount && std::memcmp(theBytes, aSignature.itsBytes, aSignature.itsCount) == 0)
      {
         return aSignature.itsKind;
      }
   }
   return CodestreamKind::None;
}

// Writes a line for each image.
class ImageLister
{
public:
   ImageLister(std::ostream& theOutput, bool theIsJson) : itsOutput(theOutput), itsIsJson(theIsJson) {}

   void Add(INT64 theOffset, INT64 theLength)
   {
      ++itsCount;
      if (itsIsJson)
      {
         JsonWriter aJson(itsOutput);
         aJson.BeginObject();
         aJson.Number("image", itsCount);
         aJson.Number("offset", theOffset);
         aJson.Number("length", theLength);
         aJson.EndObject();
         itsOutput << "\n";
         return;
      }
      itsOutput << (itsCount == 1 ? "   image        offset        length\n" : "") << std::setw(8) << itsCount
                << std::setw(14) << theOffset << std::setw(14) << theLength << "\n";
   }

private:
   std::ostream& itsOutput;
   const bool itsIsJson;
   int itsCount = 0;
};

[[noreturn]] void ThrowNoEnd(INT64 theOffset)
{
   const std::string aText = "the image at byte " + std::to_string(theOffset) + " has no end";
   throw StreamIOException(aText.c_str(), TN_INVALID_ENCODING, 0);
}

void ListJPEG(InputStream& theStream, ImageLister& theLister)
{
   JPEGFileInputStream aScanner(theStream);
   INT64 anOffset = 0;
   INT64 aLength = 0;
   while (aScanner.FindCodestreamPosition(JPEGFileInputStream::M_SOI, anOffset))
   {
      const INT64 aStart = aScanner.GetPosition();
      if (!aScanner.FindCodestreamPosition(JPEGFileInputStream::M_EOI, aLength))
      {
         ThrowNoEnd(aStart);
      }
      theLister.Add(aStart, aLength);
   }
}

void ListJPEG2000(InputStream& theStream, CodestreamKind theKind, ImageLister& theLister)
{
   JP2FileInputStream aScanner(theStream);
   if (theKind == CodestreamKind::JP2 && aScanner.seekToStartOfCodestream() < 0)
   {
      throw StreamIOException("there is no codestream in its boxes", TN_INVALID_ENCODING, 0);
   }
   const INT64 aStart = aScanner.GetPosition();
   const INT64 anEnd = aScanner.seekToEndOfCodestream(aStart);
   if (anEnd < 0)
   {
      ThrowNoEnd(aStart);
   }
   theLister.Add(aStart, anEnd - aStart);
}

// Opens theName and hands it over.
template <class Action>
void WithFile(const std::string& theName, Action theAction)
{
   LFInputStream aFile(theName.c_str(), std::ios_base::in | std::ios_base::binary);
   if (!aFile.is_open())
   {
      throw StreamIOException("cannot be opened", TN_OPEN_FAILED, errno);
   }
   theAction(aFile);
}
} // namespace

CodestreamKind KindOfFile(const std::string& theName)
{
   CheckIsReadable(theName);
   LFInputStream aFile(theName.c_str(), std::ios_base::in | std::ios_base::binary);
   unsigned char aBytes[kLongestSignature];
   return aFile.is_open() ? KindOf(aBytes, aFile.Read(aBytes, sizeof aBytes)) : CodestreamKind::None;
}

void ListCodestreams(const std::string& theName, CodestreamKind theKind, bool theIsJson, std::ostream& theOutput)
{
   ImageLister aLister(theOutput, theIsJson);
   WithFile(theName, [&](InputStream& theStream) {
      theKind == CodestreamKind::JPEG ? ListJPEG(theStream, aLister) : ListJPEG2000(theStream, theKind, aLister);
   });
}

void PrintMarkers(InputStream& theStream, CodestreamKind theKind, std::ostream& theOutput)
{
   if (theKind == CodestreamKind::JPEG)
   {
      JPEGFileInputStream(theStream).dumpJPEGMarkers(theOutput);
   }
   else
   {
      JP2FileInputStream(theStream).dumpJP2Boxes(theOutput); // knows bare codestreams
   }
}

void PrintMarkersOfFile(const std::string& theName, CodestreamKind theKind, std::ostream& theOutput)
{
   WithFile(theName, [&](InputStream& theStream) { PrintMarkers(theStream, theKind, theOutput); });
}
