#include "apps/tn/files/DatasetCopy.h"

#include "apps/tn/files/DatasetChecks.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/transfer/OutputTransferSyntax.h"
#include "talvenor/transfer/TransferSyntaxType.h"

void SaveElement(OutputTransferSyntax& theEncoder, std::unique_ptr<VR> theVR)
{
   if (theVR->GetAsVRInputStreamVR() != nullptr)
   {
      throw IncompleteDataset("an item stands outside any sequence");
   }
   if (theVR->GetAsPixelDataFragmentInputStreamVR() != nullptr)
   {
      if (!theEncoder.GetTransferSyntaxType().IsEncapsulated())
      {
         throw IncompleteDataset("its pixel data is encapsulated, which its transfer syntax is not");
      }
      theVR->SetTypeCode(VRCode::OB); // whatever the source calls it (PS3.5 A.4)
   }
   const bool isMetaInformation = theVR->GetGroup() == 0x0002;
   const bool isGroupLength = theVR->GetElement() == 0;
   if (!isMetaInformation && !isGroupLength)
   {
      theEncoder.SaveVR(theVR.release());
   }
}
