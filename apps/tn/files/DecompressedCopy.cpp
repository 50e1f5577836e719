#include "apps/tn/files/DecompressedCopy.h"

#include "apps/tn/codec/Decompression.h"
#include "apps/tn/files/DatasetChecks.h"
#include "apps/tn/files/DatasetCopy.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/pixel/PixelDataFragmentInputStreamVR.h"
#include "talvenor/transfer/InputTransferSyntax.h"
#include "talvenor/transfer/OutputTransferSyntax.h"
#include "talvenor/transfer/TransferSyntaxType.h"

namespace
{
void PushElement(DICOMDataObject& theHeader, std::unique_ptr<VR> theVR)
{
   if (theVR->GetAsVRInputStreamVR() != nullptr)
   {
      throw IncompleteDataset("an item stands outside any sequence");
   }
   if (theVR->GetGroup() != 0x0002)
   {
      theHeader.Push(theVR.release());
   }
}
} // namespace

std::size_t CopyDecompressed(InputTransferSyntax& theDecoder, OutputTransferSyntax& theEncoder,
                             InstanceSpecificDataDictionary& theDictionary, std::vector<std::unique_ptr<VR>> theLeading)
{
   DICOMDataObject aHeader;
   aHeader.SetDataDictionary(theDictionary);
   std::size_t aCount = theLeading.size();
   for (std::unique_ptr<VR>& aVR : theLeading)
   {
      PushElement(aHeader, std::move(aVR));
   }
   std::unique_ptr<VR> aVR(theDecoder.NextVR());
   for (; aVR && aVR->GetAsPixelDataFragmentInputStreamVR() == nullptr; aVR.reset(theDecoder.NextVR()), ++aCount)
   {
      PushElement(aHeader, std::move(aVR));
   }
   std::unique_ptr<Decompression> aDecompression;
   if (aVR)
   {
      aDecompression = std::make_unique<Decompression>(aHeader, theDecoder.GetTransferSyntaxType(),
                                                       *aVR->GetAsPixelDataFragmentInputStreamVR());
   }
   theEncoder.SaveDICOMObject(aHeader);
   if (aDecompression)
   {
      theEncoder.SaveVR(Decompression::MakePixels(std::move(aDecompression)).release());
      aVR->GetAsPixelDataFragmentInputStreamVR()->SkipToEOF();
      ++aCount;
   }
   for (aVR.reset(aVR ? theDecoder.NextVR() : nullptr); aVR; aVR.reset(theDecoder.NextVR()), ++aCount)
   {
      SaveElement(theEncoder, std::move(aVR));
   }
   return aCount;
}
