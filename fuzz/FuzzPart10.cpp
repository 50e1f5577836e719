// Opens the input as a DICOM file and loads all of it; then prints, copies, compares and measures what there is.
//
// Bytes 0 and 1 choose: the transfer syntax (0 for a whole file, 1 for a whole file read strictly, else a dataset in
// one of the served syntaxes), known tags only, the size of the pieces that arrive, a stop limit, which the next four
// bytes then give.
#include <memory>

#include "fuzz/Fuzzing.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/DICOMObjectDumper.h"
#include "talvenor/dataset/DICOMObjectIterator.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/file/DICOMObjectLoader.h"
#include "talvenor/file/Part10InputStreamInputStream.h"
#include "talvenor/file/Part10MemoryInputStream.h"
#include "talvenor/foundation/ExceptionBase.h"
#include "talvenor/foundation/LogStream.h"
#include "talvenor/pixel/EncapsulatedPixelVR.h"
#include "talvenor/transfer/TransferSyntaxType.h"

namespace
{
struct Choice
{
   explicit Choice(const unsigned char*& theData, std::size_t& theSize)
   {
      const unsigned char aFirst = Take(theData, theSize);
      const unsigned char aSecond = Take(theData, theSize);
      itsSyntax = aFirst & 0x0F;
      itsKnownTagsOnly = (aFirst & 0x10) != 0;
      itsPiece = aFirst >> 5;
      if (aSecond & 1)
      {
         itsStopGroup = static_cast<UINT16>(Take(theData, theSize) << 8 | Take(theData, theSize));
         itsStopElement = static_cast<UINT16>(Take(theData, theSize) << 8 | Take(theData, theSize));
      }
   }

   static unsigned char Take(const unsigned char*& theData, std::size_t& theSize)
   {
      if (theSize == 0)
      {
         return 0;
      }
      --theSize;
      return *theData++;
   }

   unsigned int itsSyntax;
   bool itsKnownTagsOnly;
   unsigned int itsPiece; // 0 for all at once, from memory
   UINT16 itsStopGroup = 0;
   UINT16 itsStopElement = 0;
};

const RWCString* SyntaxOf(unsigned int theNumber)
{
   using Type = TransferSyntaxType;
   static const RWCString* const kSyntaxes[] = {
       &Type::TSLEImplicitUID,     &Type::TSLEExplicitUID, &Type::TSBEExplicitUID, &Type::TSJPEG50UID,
       &Type::TSJPEG2KLosslessUID, &Type::TSRLEUID,        &Type::TSDeflatedUID,
   };
   return theNumber >= 2 && theNumber - 2 < std::size(kSyntaxes) ? kSyntaxes[theNumber - 2] : nullptr;
}

std::unique_ptr<Part10InputStream> Open(const Choice& theChoice, const FuzzBytes& theFile, PieceStream& thePieces)
{
   const int isTolerant = theChoice.itsSyntax != 1;
   if (theChoice.itsPiece == 0)
   {
      const unsigned char* const aBytes = theFile.data();
      return std::make_unique<Part10MemoryInputStream>(static_cast<UINT32>(theFile.size()), aBytes, isTolerant,
                                                       isTolerant);
   }
   auto aStream = std::make_unique<Part10InputStreamInputStream>();
   aStream->Open(thePieces, isTolerant, isTolerant);
   return aStream;
}

void AskPixelData(const EncapsulatedPixelVR& thePixels)
{
   thePixels.GetFrameCount();
   thePixels.GetBasicItemOffsetTableLength();
   try
   {
      const int aFrames = static_cast<int>(thePixels.GetFrameStartIndices().size());
      int aFragments = 0;
      for (int aFrame = 0; aFrame < aFrames; ++aFrame)
      {
         const int aCount = thePixels.GetFragmentCount(aFrame);
         Require(aCount > 0 || thePixels.GetFragmentCount() == 0, "a frame without fragments");
         aFragments += aCount;
      }
      Require(aFrames == 0 || aFragments == thePixels.GetFragmentCount(), "fragments of no frame, or of two");
   }
   catch (const ExceptionBase&)
   {}
}

void Ask(DICOMDataObject& theObject)
{
   LogStream aLog(NullOutput());
   DICOMObjectDumper(aLog).Dump(theObject);
   for (const GroupLengthEncodingType aType :
        {ImplicitNoGroupLength, ExplicitNoGroupLength, ImplicitWithGroupLength, ExplicitWithGroupLength})
   {
      theObject.GetEncodedLength(aType);
      UINT32 aLastTag = 0;
      DICOMObjectIterator anIterator(theObject, aType);
      while (VR* const aVR = anIterator.Next())
      {
         Require(aVR->GetTag() > aLastTag || aLastTag == 0, "elements out of order");
         aLastTag = aVR->GetTag();
         if (const EncapsulatedPixelVR* const aPixels = aVR->GetAsEncapsulatedPixelVR())
         {
            AskPixelData(*aPixels);
         }
         RWCString aText;
         theObject.GetString(aVR->GetGroup(), aVR->GetElement(), aText);
         UINT32 aNumber;
         theObject.GetUINT32(aVR->GetGroup(), aVR->GetElement(), aNumber);
      }
   }
   DICOMDataObject aCopy;
   aCopy = theObject;
   Require(aCopy.ValueEquals(theObject) && theObject.ValueEquals(aCopy), "a copy differs");
   Require(aCopy.GetEncodedLength(ExplicitWithGroupLength) == theObject.GetEncodedLength(ExplicitWithGroupLength),
           "a copy has another length");
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* theData, std::size_t theSize)
{
   SetUpFuzzing();
   const Choice aChoice(theData, theSize);
   const RWCString* const aSyntax = SyntaxOf(aChoice.itsSyntax);
   const FuzzBytes aFile =
       aSyntax != nullptr ? AsFile(*aSyntax, theData, theSize) : FuzzBytes(theData, theData + theSize);
   PieceStream aPieces(aFile, aChoice.itsPiece);
   DICOMDataObject anObject;
   try
   {
      const std::unique_ptr<Part10InputStream> aStream = Open(aChoice, aFile, aPieces);
      DICOMObjectLoader aLoader(anObject, *aStream);
      aLoader.SetStopAt(aChoice.itsStopGroup, aChoice.itsStopElement);
      aLoader.SetKnownTagsOnly(aChoice.itsKnownTagsOnly);
      aLoader.Load();
   }
   catch (const ExceptionBase& anException)
   {
      Require(anException.why()[0] != '\0', "a failure without a text");
   }
   Ask(anObject);
   return 0;
}
