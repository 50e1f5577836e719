#include "apps/tn/files/Codestreams.h"

#include <cerrno>
#include <cstring>
#include <iomanip>

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

void PrintImage(std::ostream& theOutput, int theNumber, INT64 theOffset, INT64 theLength)
{
   if (theNumber == 1)
   {
      theOutput << "   image        offset        length\n";
   }
   theOutput << std::setw(8) << theNumber << std::setw(14) << theOffset << std::setw(14) << theLength << "\n";
}

[[noreturn]] void ThrowNoEnd(INT64 theOffset)
{
   const std::string aText = "the image at byte " + std::to_string(theOffset) + " has no end";
   throw StreamIOException(aText.c_str(), TN_INVALID_ENCODING, 0);
}

void ListJPEG(InputStream& theStream, std::ostream& theOutput)
{
   JPEGFileInputStream aScanner(theStream);
   INT64 anOffset = 0;
   INT64 aLength = 0;
   for (int aNumber = 1; aScanner.FindCodestreamPosition(JPEGFileInputStream::M_SOI, anOffset); ++aNumber)
   {
      const INT64 aStart = aScanner.GetPosition();
      if (!aScanner.FindCodestreamPosition(JPEGFileInputStream::M_EOI, aLength))
      {
         ThrowNoEnd(aStart);
      }
      PrintImage(theOutput, aNumber, aStart, aLength);
   }
}

void ListJPEG2000(InputStream& theStream, CodestreamKind theKind, std::ostream& theOutput)
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
   PrintImage(theOutput, 1, aStart, anEnd - aStart);
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

void ListCodestreams(const std::string& theName, CodestreamKind theKind, std::ostream& theOutput)
{
   WithFile(theName, [&](InputStream& theStream) {
      theKind == CodestreamKind::JPEG ? ListJPEG(theStream, theOutput) : ListJPEG2000(theStream, theKind, theOutput);
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
