// Decodes a dataset in one transfer syntax and encodes it in another, first element by element, as a host does that
// keeps nothing, then by way of a dataset in memory. What was written must be readable, be the same when it is written
// once more, and not have grown beyond what headers of another form take.
//
// Byte 0 chooses the two syntaxes and the size of the pieces that arrive.
#include <algorithm>
#include <memory>
#include <optional>
#include <span>
#include <utility>

#include "fuzz/Fuzzing.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/DICOMObjectIterator.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/foundation/ExceptionBase.h"
#include "talvenor/transfer/InputTransferSyntax.h"
#include "talvenor/transfer/OutputTransferSyntax.h"
#include "talvenor/transfer/TransferSyntaxManager.h"
#include "talvenor/transfer/TransferSyntaxType.h"

namespace
{
struct Sink : OutputStream
{
   using OutputStream::Write;
   void Write(const unsigned char* theBytes, unsigned int theCount) override
   {
      itsBytes.insert(itsBytes.end(), theBytes, theBytes + theCount);
   }
   void Flush() override {}

   FuzzBytes itsBytes;
};

const TransferSyntaxType& SyntaxOf(unsigned int theNumber)
{
   using Type = TransferSyntaxType;
   static const RWCString* const kSyntaxes[] = {&Type::TSLEImplicitUID, &Type::TSLEExplicitUID, &Type::TSBEExplicitUID,
                                                &Type::TSJPEG50UID};
   return *TransferSyntaxManager::GetDefaultInstance().GetTransferSyntaxType(*kSyntaxes[theNumber % 4]);
}

// Calls theOperation; false when it failed, as hostile data makes it.
template <class Operation>
bool Succeeds(Operation theOperation)
{
   try
   {
      theOperation();
      return true;
   }
   catch (const ExceptionBase& anException)
   {
      Require(anException.why()[0] != '\0', "a failure without a text");
      return false;
   }
}

// A piece of 0 bytes is as many as are asked for.
template <class Consumer>
bool Decode(const FuzzBytes& theBytes, const TransferSyntaxType& theSyntax, unsigned int thePiece, Consumer theConsumer)
{
   PieceStream aStream(theBytes, thePiece != 0 ? thePiece : 0xFFFFFFFF);
   const std::unique_ptr<InputTransferSyntax> aDecoder(theSyntax.CreateInputTransferSyntax(aStream));
   return Succeeds([&] {
      while (VR* const aVR = aDecoder->NextVR())
      {
         theConsumer(aVR);
      }
   });
}

std::optional<FuzzBytes> Transcode(const FuzzBytes& theBytes, const TransferSyntaxType& theFrom,
                                   const TransferSyntaxType& theTo, unsigned int thePiece)
{
   Sink aSink;
   const std::unique_ptr<OutputTransferSyntax> anEncoder(theTo.CreateOutputTransferSyntax(aSink));
   const bool isDone = Decode(theBytes, theFrom, thePiece, [&](VR* theVR) { anEncoder->SaveVR(theVR); });
   return isDone ? std::optional(std::move(aSink.itsBytes)) : std::nullopt;
}

std::optional<FuzzBytes> Save(DICOMDataObject& theObject, const TransferSyntaxType& theSyntax)
{
   Sink aSink;
   const std::unique_ptr<OutputTransferSyntax> anEncoder(theSyntax.CreateOutputTransferSyntax(aSink));
   const bool isDone = Succeeds([&] { anEncoder->SaveDICOMObject(theObject); });
   return isDone ? std::optional(std::move(aSink.itsBytes)) : std::nullopt;
}

// Not all that hostile data makes an encoder write can be read: fragments in big-endian form, which no decoder takes,
// and in implicit VR a value of a type that is not the dictionary's.
bool IsReadable(const TransferSyntaxType& theSyntax)
{
   return theSyntax.IsExplicit() && theSyntax.IsLittleEndian();
}

void CheckStreamed(const FuzzBytes& theBytes, const TransferSyntaxType& theFrom, const TransferSyntaxType& theTo,
                   unsigned int thePiece)
{
   std::optional<FuzzBytes> aFirst = Transcode(theBytes, theFrom, theTo, thePiece);
   if (!aFirst)
   {
      return;
   }
   Require(aFirst->size() <= 3 * theBytes.size(), "more was written than there is");
   std::optional<FuzzBytes> aSecond = Transcode(*aFirst, theTo, theTo, 0);
   if (aSecond && !theTo.IsExplicit())
   {
      aFirst = std::exchange(aSecond, Transcode(*aSecond, theTo, theTo, 0)); // now of the dictionary's types
   }
   Require(aSecond || !IsReadable(theTo), "what was written cannot be read");
   Require(!aSecond || aSecond == aFirst, "what was written comes out differently");
}

void CheckContains(const DICOMDataObject& theOne, const DICOMDataObject& theOther);

std::span<DICOMDataObject* const> ItemsOf(const SequenceVR& theSequence)
{
   return theSequence.IsEmpty() ? std::span<DICOMDataObject* const>() : *theSequence.GetSequenceArray();
}

// Implicit VR forgets a type that is not the dictionary's. Values of odd length have become even, and those in another
// byte order have other bytes: of these only the length is told.
void CheckEqual(const VR& theOne, const VR& theOther)
{
   if (theOne.GetTypeCode() != theOther.GetTypeCode())
   {
      return;
   }
   const SequenceVR* const aSequence = theOne.GetAsSequenceVR();
   const SequenceVR* const anOther = theOther.GetAsSequenceVR();
   Require((aSequence != nullptr) == (anOther != nullptr), "a sequence that is none");
   if (aSequence != nullptr)
   {
      const auto anItems = ItemsOf(*aSequence);
      const auto anOtherItems = ItemsOf(*anOther);
      Require(anItems.size() == anOtherItems.size(), "items got lost");
      for (std::size_t anItem = 0; anItem < anItems.size(); ++anItem)
      {
         CheckContains(*anItems[anItem], *anOtherItems[anItem]);
      }
   }
   else if (theOne.GetAsEncapsulatedPixelVR() == nullptr)
   {
      const UINT32 aLength = theOne.GetLength();
      const bool isSame = aLength % 2 == 0 && aLength != 0 && theOne.GetDataEndian() == theOther.GetDataEndian();
      Require(aLength + aLength % 2 == theOther.GetLength(), "a value of another length");
      Require(!isSame || theOne.ValueEquals(theOther), "another value");
   }
}

// The elements of theOne are in theOther, private ones and group lengths excepted, which need not be written.
void CheckContains(const DICOMDataObject& theOne, const DICOMDataObject& theOther)
{
   DICOMObjectIterator anIterator(theOne, ImplicitNoGroupLength);
   while (const VR* const aVR = anIterator.Next())
   {
      if (aVR->GetGroup() % 2 == 0 && aVR->GetElement() != 0)
      {
         const VR* const anOther = theOther.GetVR(aVR->GetGroup(), aVR->GetElement());
         if (anOther == nullptr)
         {
            Report("an element got lost");
         }
         CheckEqual(*aVR, *anOther);
      }
   }
}

// The dataset that theBytes are; null when they cannot be read.
std::unique_ptr<DICOMDataObject> ReadBack(const FuzzBytes& theBytes, const TransferSyntaxType& theSyntax)
{
   auto anObject = std::make_unique<DICOMDataObject>();
   const bool isRead = Decode(theBytes, theSyntax, 0, [&](VR* theVR) { anObject->Push(theVR); });
   Require(isRead || !IsReadable(theSyntax), "a dataset that was written cannot be read");
   return isRead ? std::move(anObject) : nullptr;
}

void CheckInMemory(DICOMDataObject& theObject, const TransferSyntaxType& theTo)
{
   std::optional<FuzzBytes> aFirst = Save(theObject, theTo);
   std::unique_ptr<DICOMDataObject> aReadBack = aFirst ? ReadBack(*aFirst, theTo) : nullptr;
   if (!aReadBack)
   {
      return;
   }
   CheckContains(theObject, *aReadBack);
   if (!theTo.IsExplicit())
   {
      aFirst = Save(*aReadBack, theTo); // now of the dictionary's types
      Require(aFirst.has_value(), "a dataset that was read back cannot be written");
      aReadBack = ReadBack(*aFirst, theTo);
      Require(aReadBack != nullptr, "a dataset that was written once more cannot be read");
   }
   Require(Save(*aReadBack, theTo) == aFirst, "a dataset that was written comes out differently");
}

bool HasStrangeElement(const DICOMDataObject& theObject);

// What is written of three kinds of elements is not true, and need not be: of values that state no type, not even a
// wrong one, where the dictionary says that they are sequences; of private creators that are no texts, whose pad byte
// is not a space; and of sequences in commands and meta information, whose group lengths count what is left out in
// their items.
bool IsStrange(const VR& theVR)
{
   const SequenceVR* const aSequence = theVR.GetAsSequenceVR();
   if (aSequence == nullptr)
   {
      const UINT16 aType = theVR.GetTypeCode();
      return aType == VRCode::None ||
             (aType != VRCode::LO && InstanceSpecificDataDictionary::IsValidPrivateCreatorAllocation(theVR));
   }
   return HasGroupLength(ImplicitNoGroupLength, theVR.GetGroup()) ||
          std::ranges::any_of(ItemsOf(*aSequence),
                              [](const DICOMDataObject* theItem) { return HasStrangeElement(*theItem); });
}

bool HasStrangeElement(const DICOMDataObject& theObject)
{
   DICOMObjectIterator anIterator(theObject, ImplicitNoGroupLength);
   while (const VR* const aVR = anIterator.Next())
   {
      if (IsStrange(*aVR))
      {
         return true;
      }
   }
   return false;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* theData, std::size_t theSize)
{
   SetUpFuzzing();
   if (theSize == 0)
   {
      return 0;
   }
   const FuzzBytes aDataset(theData + 1, theData + theSize);
   const TransferSyntaxType& aFrom = SyntaxOf(theData[0]);
   const TransferSyntaxType& aTo = SyntaxOf(theData[0] >> 2u);
   const unsigned int aPiece = theData[0] >> 4u;
   DICOMDataObject anObject;
   Decode(aDataset, aFrom, aPiece, [&](VR* theVR) { anObject.Push(theVR); });
   if (HasStrangeElement(anObject))
   {
      Transcode(aDataset, aFrom, aTo, aPiece);
      Save(anObject, aTo);
      return 0;
   }
   CheckStreamed(aDataset, aFrom, aTo, aPiece);
   CheckInMemory(anObject, aTo);
   return 0;
}
