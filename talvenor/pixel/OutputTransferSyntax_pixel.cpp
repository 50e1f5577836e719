// Encoding of pixel data: copied from the stream of a decoder, or written from its fragments.
#include <algorithm>
#include <memory>
#include <string>

#include "talvenor/dataset/SwitchUnits.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/pixel/EncapsulatedPixelVR.h"
#include "talvenor/pixel/PixelDataFragmentInputStream.h"
#include "talvenor/pixel/PixelDataFragmentInputStreamVR.h"
#include "talvenor/pixel/PixelInputStreamVR.h"
#include "talvenor/transfer/ConcreteOutputTransferSyntaxes.h"
#include "talvenor/transfer/ElementHeader.h"

namespace
{
constexpr unsigned int kNoMaximum = 0xFFFFFFFF;
constexpr unsigned int kBlockSize = 65536; // bytes

// Copies values block by block, reversing units of theUnit bytes (1 for none).
class BlockCopier
{
public:
   // theLength is the longest value to come; theMaximum what the target passes on whole.
   BlockCopier(OutputStream& theTarget, UINT32 theLength, unsigned int theMaximum, unsigned int theUnit)
       : itsTarget(theTarget), itsUnit(theUnit), itsBlockSize(theMaximum == kNoMaximum ? kBlockSize : theMaximum)
   {
      itsBlockSize = std::min(itsBlockSize, std::max(theLength, kBlockSize)); // a small value needs no huge block
      itsBlockSize = std::max(itsBlockSize - itsBlockSize % itsUnit, itsUnit);
      itsBlock = std::make_unique_for_overwrite<unsigned char[]>(itsBlockSize);
   }

   // Copies theLength bytes, or fewer where the source ends first; returns how many are missing.
   UINT32 Copy(InputStream& theSource, UINT32 theLength)
   {
      while (theLength != 0)
      {
         const unsigned int aWanted = std::min(theLength, itsBlockSize);
         const unsigned int aCount = theSource.ReadFully(itsBlock.get(), aWanted);
         if (itsUnit > 1)
         {
            SwitchUnits(itsBlock.get(), aCount, itsUnit);
         }
         itsTarget.Write(itsBlock.get(), aCount);
         theLength -= aCount;
         if (aCount < aWanted)
         {
            break;
         }
      }
      return theLength;
   }

private:
   OutputStream& itsTarget;
   unsigned int itsUnit;
   unsigned int itsBlockSize;
   std::unique_ptr<unsigned char[]> itsBlock;
};

[[noreturn]] void Throw(const char* thePrefix, const std::string& theText, TNResultCode theCode)
{
   throw StreamIOException((thePrefix + theText).c_str(), theCode, 0);
}

void CheckAllCopied(UINT32 theMissing, const char* thePrefix, const char* theMethod)
{
   if (theMissing != 0)
   {
      Throw(thePrefix,
            theMethod + (": EOF before end of input stream (" + std::to_string(theMissing)) + " bytes remaining)",
            TN_END_OF_FILE);
   }
}

// The unit to reverse for another byte order. Only bytes, words and floats have one here.
unsigned int UnitOf(const VR& thePixels, TNEndian::EndianType theTarget, const char* thePrefix)
{
   const UINT16 aCode = thePixels.GetTypeCode();
   if (aCode == VRCode::OB || thePixels.GetDataEndian() == theTarget)
   {
      return 1;
   }
   if (aCode != VRCode::OW && aCode != VRCode::OF)
   {
      Throw(thePrefix, "SavePixelInputStreamVR: Unrecognized VR type code", TN_END_OF_FILE);
   }
   return PrimitiveSizeOfVRCode(aCode);
}
} // namespace

void OutputTransferSyntax::CopyPixelData(PixelInputStreamVR& thePixels, const char* thePrefix)
{
   const unsigned int aUnit = UnitOf(thePixels, GetEndianHandlingWriter().GetEndian(), thePrefix);
   const UINT32 aLength = thePixels.VR::GetLength();
   BlockCopier aCopier(itsStream, aLength, GetMaximumOutputBlockSize(), aUnit);
   CheckAllCopied(aCopier.Copy(thePixels, aLength), thePrefix, "SavePixelInputStreamVR");
}

void OutputTransferSyntax::CopyFragments(PixelDataFragmentInputStreamVR& thePixels, const char* thePrefix)
{
   BlockCopier aCopier(itsStream, kBlockSize, GetMaximumOutputBlockSize(), 1);
   while (const std::unique_ptr<PixelDataFragmentInputStream> aFragment{thePixels.NextFragment()})
   {
      WriteItemHeader(itsStream, ElementHeader::kItem, aFragment->GetLength());
      CheckAllCopied(aCopier.Copy(*aFragment, aFragment->GetLength()), thePrefix, "SavePixelDataFragmentInputStream");
   }
   WriteItemHeader(itsStream, ElementHeader::kSequenceDelimitation, 0);
}

void OutputTransferSyntax::WriteFragments(const EncapsulatedPixelVR& thePixels)
{
   EndianHandlingWriter& aWriter = GetEndianHandlingWriter();
   WriteItemHeader(itsStream, ElementHeader::kItem, thePixels.GetBasicItemOffsetTableLength());
   thePixels.WriteBasicItemOffsetTableData(aWriter);
   for (int aFragment = 1; aFragment <= thePixels.GetFragmentCount(); ++aFragment)
   {
      WriteItemHeader(itsStream, ElementHeader::kItem, thePixels.GetFragment(aFragment).GetLength());
      thePixels.WriteFragmentData(aWriter, aFragment);
   }
   WriteItemHeader(itsStream, ElementHeader::kSequenceDelimitation, 0);
}

void LittleEndianExplicitOutputTransferSyntax::SavePixelDataFragment(PixelDataFragment* theFragment, int thePadOdd)
{
   const std::unique_ptr<PixelDataFragment> aFragment(theFragment);
   SavePixelDataFragment(*aFragment, thePadOdd);
}

void LittleEndianExplicitOutputTransferSyntax::SavePixelDataFragment(PixelDataFragment& theFragment, int thePadOdd)
{
   const UINT32 aLength = theFragment.GetLength();
   if (aLength == VR::kUndefinedLength)
   {
      throw StreamIOException(
          "LittleEndianExplicitOutputTransferSyntax::SavePixelDataFragment: a fragment cannot have an "
          "undefined length",
          TN_INVALID_ENCODING, 0);
   }
   EndianHandlingWriter& aWriter = GetEndianHandlingWriter();
   if (!itsIsEncapsulating)
   {
      static constexpr unsigned char kHeader[] = {0xE0, 0x7F, 0x10, 0x00, 'O', 'B', 0, 0, 0xFF, 0xFF, 0xFF, 0xFF};
      aWriter.Write(kHeader, sizeof kHeader);
      itsIsEncapsulating = 1;
   }
   const bool isPadded = thePadOdd && (aLength & 1) != 0;
   WriteItemHeader(GetStream(), ElementHeader::kItem, aLength + (isPadded ? 1 : 0));
   if (aLength != 0)
   {
      theFragment.WriteData(aWriter);
   }
   if (isPadded)
   {
      aWriter.Write(GetPixelDataEncapsulationPadByte());
   }
}

void LittleEndianExplicitOutputTransferSyntax::FinishEncapsulation()
{
   if (itsIsEncapsulating)
   {
      WriteItemHeader(GetStream(), ElementHeader::kSequenceDelimitation, 0);
      itsIsEncapsulating = 0;
   }
}
