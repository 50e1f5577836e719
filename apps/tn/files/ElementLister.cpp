#include "apps/tn/files/ElementLister.h"

#include <memory>

#include <zlib.h>

#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/pixel/PixelDataFragmentInputStream.h"
#include "talvenor/pixel/PixelDataFragmentInputStreamVR.h"
#include "talvenor/pixel/PixelInputStreamVR.h"
#include "talvenor/transfer/DICOMDataObjectInputStreamVR.h"
#include "talvenor/transfer/InputTransferSyntax.h"
#include "talvenor/transfer/VRInputStreamVR.h"

namespace
{
constexpr unsigned int kBlock = 16384;

// The lowest theDigits hexadecimal digits of a number: a file of a few megabytes can have a million elements.
void AppendHex(std::string& theText, std::uint32_t theNumber, unsigned int theDigits)
{
   while (theDigits-- != 0)
   {
      theText += "0123456789abcdef"[theNumber >> 4 * theDigits & 0xF];
   }
}

void AppendTag(std::string& theText, const VR& theVR)
{
   AppendHex(theText, theVR.GetGroup(), 4);
   theText += ',';
   AppendHex(theText, theVR.GetElement(), 4);
}

// Goes on with theChecksum over what is left in the stream; returns the number of bytes.
UINT64 Checksum(InputStream& theStream, std::uint32_t& theChecksum)
{
   unsigned char aBlock[kBlock];
   UINT64 aTotal = 0;
   while (const unsigned int aCount = theStream.Read(aBlock, kBlock))
   {
      theChecksum = static_cast<std::uint32_t>(crc32(theChecksum, aBlock, aCount));
      aTotal += aCount;
   }
   return aTotal;
}

[[noreturn]] void ThrowCut(UINT64 theCount, UINT64 theLength)
{
   const std::string aText = "the file ends inside the pixel data: " + std::to_string(theCount) + " of " +
                             std::to_string(theLength) + " bytes are there";
   throw StreamIOException(aText.c_str(), TN_END_OF_FILE, 0);
}
} // namespace

void ElementLister::List(InputTransferSyntax& theDecoder, std::optional<UINT32> theEnd)
{
   size_t anItem = 0;
   while (const std::unique_ptr<VR> aVR{theDecoder.NextVR()})
   {
      if (theEnd && aVR->GetTag() >= *theEnd)
      {
         return;
      }
      // An implicit dataset needs its private creators for what follows them.
      if (InstanceSpecificDataDictionary::IsValidPrivateCreatorAllocation(aVR->GetGroup(), aVR->GetElement()))
      {
         theDecoder.GetDataDictionary().RegisterPrivateCreator(*aVR);
      }
      if (VRInputStreamVR* const anAstray = aVR->GetAsVRInputStreamVR())
      {
         ListItem(*anAstray, anItem++);
      }
      else
      {
         ListElement(*aVR);
      }
   }
}

void ElementLister::ListElement(VR& theVR)
{
   ++itsCount;
   if (DICOMDataObjectInputStreamVR* const aSequence = theVR.GetAsDICOMDataObjectInputStreamVR())
   {
      ListSequence(*aSequence);
   }
   else if (PixelDataFragmentInputStreamVR* const aFragments = theVR.GetAsPixelDataFragmentInputStreamVR())
   {
      ListFragments(*aFragments);
   }
   else if (PixelInputStreamVR* const aPixels = theVR.GetAsPixelInputStreamVR())
   {
      ListStream(theVR, *aPixels);
   }
   else
   {
      Start(theVR);
      itsLine += std::to_string(theVR.GetLength()) + '\t';
      AddChecksum(static_cast<std::uint32_t>(crc32(0, theVR.GetData(), theVR.GetLength())));
   }
}

void ElementLister::ListSequence(DICOMDataObjectInputStreamVR& theSequence)
{
   Start(theSequence);
   itsOutput << itsLine << "undefined\t-\n";
   const size_t aPathLength = itsPath.size();
   itsPath += '/';
   AppendTag(itsPath, theSequence);
   for (size_t aNumber = 0; const std::unique_ptr<VRInputStreamVR> anItem{theSequence.NextDICOMDataObject()}; ++aNumber)
   {
      ListItem(*anItem, aNumber);
   }
   itsPath.resize(aPathLength);
}

void ElementLister::ListItem(VRInputStreamVR& theItem, size_t theNumber)
{
   const size_t aPathLength = itsPath.size();
   itsPath += '[' + std::to_string(theNumber) + ']';
   while (const std::unique_ptr<VR> aVR{theItem.NextVR()})
   {
      ListElement(*aVR);
   }
   itsPath.resize(aPathLength);
}

void ElementLister::ListFragments(PixelDataFragmentInputStreamVR& theFragments)
{
   std::uint32_t aChecksum = 0;
   std::string aLengths;
   UINT64 anOffsetTableLength = 0;
   size_t aCount = 0;
   bool isOffsetTable = true;
   while (const std::unique_ptr<PixelDataFragmentInputStream> aFragment{theFragments.NextFragment()})
   {
      std::uint32_t anUnused = 0;
      const UINT64 aLength = Checksum(*aFragment, isOffsetTable ? anUnused : aChecksum);
      if (aLength != aFragment->GetLength())
      {
         ThrowCut(aLength, aFragment->GetLength());
      }
      if (isOffsetTable)
      {
         anOffsetTableLength = aLength;
         isOffsetTable = false;
         continue;
      }
      aLengths += (aCount++ != 0 ? "," : "") + std::to_string(aLength);
   }
   Start(theFragments);
   itsLine += "undefined\tbot=" + std::to_string(anOffsetTableLength) + ";frags=" + std::to_string(aCount) +
              ";lens=" + aLengths + ";crc=";
   AddChecksum(aChecksum);
}

void ElementLister::ListStream(VR& theVR, InputStream& theValue)
{
   std::uint32_t aChecksum = 0;
   const UINT64 aLength = Checksum(theValue, aChecksum);
   if (aLength != theVR.GetLength())
   {
      ThrowCut(aLength, theVR.GetLength());
   }
   Start(theVR);
   itsLine += std::to_string(aLength) + '\t';
   AddChecksum(aChecksum);
}

void ElementLister::Start(const VR& theVR)
{
   itsLine = itsPath.empty() ? "/" : itsPath;
   itsLine += '\t';
   AppendTag(itsLine, theVR);
   itsLine += '\t';
   itsLine += theVR.GetTypeCodeAsString();
   itsLine += '\t';
}

void ElementLister::AddChecksum(std::uint32_t theChecksum)
{
   AppendHex(itsLine, theChecksum, 8);
   itsLine += '\n';
   itsOutput << itsLine;
}
