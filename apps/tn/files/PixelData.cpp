#include "apps/tn/files/PixelData.h"

#include <algorithm>
#include <charconv>

#include "apps/tn/files/DatasetChecks.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/pixel/PixelDataFragmentInputStreamVR.h"
#include "talvenor/pixel/PixelInputStreamVR.h"
#include "talvenor/transfer/InputTransferSyntax.h"
#include "talvenor/transfer/TransferSyntaxType.h"

PixelData::PixelData(const std::string& theName) : itsFile(theName)
{
   CheckIsServed(GetStream());
   itsDecoder = GetStream().CreateDecoder();
   itsDecoder->SetDataDictionary(itsHeader.GetDataDictionary());
   itsHeader.SetEndian(itsDecoder->GetTransferSyntaxType().GetEndian());
   DecodeWhole(*itsDecoder, GetStream(), [&] {
      while (std::unique_ptr<VR> aVR{itsDecoder->NextVR()})
      {
         if (aVR->GetAsPixelDataFragmentInputStreamVR() != nullptr || aVR->GetAsPixelInputStreamVR() != nullptr)
         {
            itsPixels = std::move(aVR);
            return;
         }
         itsHeader.Push(aVR.release());
      }
   });
   if (!itsPixels)
   {
      CheckIsWhole(*itsDecoder, GetStream(), itsHeader.Entries());
      throw IncompleteDataset("it has no pixel data");
   }
}

PixelData::~PixelData() = default;

PixelDataFragmentInputStreamVR* PixelData::GetFragments()
{
   return itsPixels->GetAsPixelDataFragmentInputStreamVR();
}

PixelInputStreamVR* PixelData::GetNativePixels()
{
   return itsPixels->GetAsPixelInputStreamVR();
}

INT32 PixelData::GetNumberOfFrames() const
{
   RWCString aText; // VR IS: digits, perhaps with blanks in front
   itsHeader.GetString(0x0028, 0x0008, aText);
   const char* const aFirst = aText.data() + std::min(aText.find_first_not_of(" +"), aText.size());
   INT32 aNumber = 0;
   std::from_chars(aFirst, aText.data() + aText.size(), aNumber);
   return aNumber > 0 ? aNumber : 1;
}

UINT64 PixelData::GetNativeFrameSize() const
{
   constexpr UINT16 kFactors[] = {0x0002, 0x0010, 0x0011, 0x0100}; // samples, rows, columns, bits allocated
   UINT64 aBits = 1;
   for (const UINT16 anElement : kFactors)
   {
      UINT16 aFactor = 0;
      if (!itsHeader.GetUINT16(0x0028, anElement, aFactor))
      {
         return 0;
      }
      if (anElement == kFactors[0] && aFactor == 3 && IsSubsampled())
      {
         aFactor = 2;
      }
      if (__builtin_mul_overflow(aBits, aFactor, &aBits))
      {
         return 0;
      }
   }
   const bool isWholeBytes = aBits % 8 == 0;
   return isWholeBytes || GetNumberOfFrames() == 1 ? aBits / 8 + !isWholeBytes
                                                   : 0; // frames of bits run into each other
}

// Two pixels share their colour differences (PS3.3 C.7.6.3.1.2).
bool PixelData::IsSubsampled() const
{
   RWCString aText;
   itsHeader.GetString(0x0028, 0x0004, aText);
   return aText == "YBR_FULL_422" || aText == "YBR_PARTIAL_422";
}
