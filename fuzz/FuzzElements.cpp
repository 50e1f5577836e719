// Decodes a dataset piece by piece, as a host does that keeps nothing. What happens to an element whose value is a
// stream (it is read, skipped, half read, read into memory or dropped) is chosen by the last bytes of the input, the
// transfer syntax by the very last.
#include <memory>

#include <fuzzer/FuzzedDataProvider.h>

#include "fuzz/Fuzzing.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/foundation/ExceptionBase.h"
#include "talvenor/pixel/EncapsulatedPixelVR.h"
#include "talvenor/pixel/PixelDataFragmentInputStream.h"
#include "talvenor/pixel/PixelDataFragmentInputStreamVR.h"
#include "talvenor/pixel/PixelInputStreamVR.h"
#include "talvenor/transfer/DICOMDataObjectInputStreamVR.h"
#include "talvenor/transfer/InputTransferSyntax.h"
#include "talvenor/transfer/TransferSyntaxManager.h"
#include "talvenor/transfer/VRInputStreamVR.h"

namespace
{
enum class Decision
{
   ReadWhole,
   ReadHalf,
   Skip,
   Materialise,
   Drop,
   kMaxValue = Drop
};

class Consumer
{
public:
   explicit Consumer(FuzzedDataProvider& theDecisions) : itsDecisions(theDecisions) {}

   void ConsumeLevel(VRInputStream& theElements)
   {
      while (std::unique_ptr<VR> aVR{theElements.NextVR()})
      {
         if (itsDecisions.ConsumeProbability<float>() < 0.1f)
         {
            theElements.Pushback(aVR.release());
            aVR.reset(theElements.NextVR());
         }
         Consume(*aVR);
      }
   }

private:
   void Consume(VR& theVR)
   {
      const Decision aDecision = itsDecisions.ConsumeEnum<Decision>();
      if (aDecision == Decision::Drop)
      {
         return;
      }
      if (DICOMDataObjectInputStreamVR* const aSequence = theVR.GetAsDICOMDataObjectInputStreamVR())
      {
         Consume(*aSequence, aDecision);
      }
      else if (VRInputStreamVR* const anItem = theVR.GetAsVRInputStreamVR())
      {
         ConsumeLevel(*anItem);
      }
      else if (PixelDataFragmentInputStreamVR* const aFragments = theVR.GetAsPixelDataFragmentInputStreamVR())
      {
         Consume(*aFragments, aDecision);
      }
      else if (PixelInputStreamVR* const aPixels = theVR.GetAsPixelInputStreamVR())
      {
         Consume(*aPixels, aPixels->VR::GetLength(), aDecision);
      }
   }

   void Consume(DICOMDataObjectInputStreamVR& theSequence, Decision theDecision)
   {
      if (theDecision == Decision::Materialise)
      {
         const std::unique_ptr<SequenceVR> aSequence(theSequence.GetVR());
         Require(theSequence.GetVR() == nullptr, "a sequence read twice");
         return;
      }
      while (const std::unique_ptr<VRInputStreamVR> anItem{theSequence.NextDICOMDataObject()})
      {
         if (theDecision == Decision::ReadHalf && itsDecisions.ConsumeBool())
         {
            return;
         }
         ConsumeLevel(*anItem);
         Require(!anItem->HasMoreData(), "an item that never ends");
      }
   }

   void Consume(PixelDataFragmentInputStreamVR& theFragments, Decision theDecision)
   {
      if (theDecision == Decision::Skip)
      {
         theFragments.SkipToEOF();
         return;
      }
      if (theDecision == Decision::Materialise)
      {
         const std::unique_ptr<EncapsulatedPixelVR> aVR(theFragments.GetVR());
         return;
      }
      while (const std::unique_ptr<PixelDataFragmentInputStream> aFragment{theFragments.NextFragment()})
      {
         Consume(*aFragment, aFragment->GetLength(), itsDecisions.ConsumeEnum<Decision>());
      }
   }

   void Consume(InputStream& theValue, UINT32 theLength, Decision theDecision)
   {
      unsigned char aBlock[1000];
      UINT64 aTotal = 0;
      switch (theDecision)
      {
      case Decision::Skip: theValue.Skip(theLength); return;
      case Decision::ReadHalf:
         theValue.Read(aBlock, std::min<UINT32>(theLength / 2, sizeof aBlock));
         theValue.Seek(itsDecisions.ConsumeIntegral<UINT32>());
         return;
      default:
         while (const unsigned int aCount = theValue.Read(aBlock, sizeof aBlock))
         {
            aTotal += aCount;
         }
         Require(aTotal <= UINT64{theLength} + 1, "more bytes than the value has");
      }
   }

   FuzzedDataProvider& itsDecisions;
};
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* theData, std::size_t theSize)
{
   using Type = TransferSyntaxType;
   static const RWCString* const kSyntaxes[] = {&Type::TSLEImplicitUID, &Type::TSLEExplicitUID, &Type::TSBEExplicitUID,
                                                &Type::TSJPEG50UID, &Type::TSRLEUID};
   SetUpFuzzing();
   const std::size_t aDecisionSize = std::min<std::size_t>(theSize / 4, 64);
   FuzzedDataProvider aDecisions(theData + theSize - aDecisionSize, aDecisionSize);
   const FuzzBytes aDataset(theData, theData + theSize - aDecisionSize);
   const RWCString& aSyntax = *aDecisions.PickValueInArray(kSyntaxes);
   PieceStream aStream(aDataset, aDecisions.ConsumeIntegralInRange(1u, 1000u));
   const std::unique_ptr<InputTransferSyntax> aDecoder(
       TransferSyntaxManager::GetDefaultInstance().GetTransferSyntaxType(aSyntax)->CreateInputTransferSyntax(aStream));
   if (aDecisions.ConsumeBool())
   {
      aDecoder->SetStopAtGroup(aDecisions.ConsumeIntegral<UINT16>());
      aDecoder->SetStopAtElement(aDecisions.ConsumeIntegral<UINT16>());
   }
   try
   {
      Consumer(aDecisions).ConsumeLevel(*aDecoder);
   }
   catch (const ExceptionBase& anException)
   {
      Require(anException.why()[0] != '\0', "a failure without a text");
   }
   return 0;
}
