// The one body of encoding: what explicit and implicit VR share is written here, what differs is in the Policy:
//
//    kPrefix             how texts begin
//    kWalk               how a dataset is walked
//    kIsExplicit         whether elements state their type, and may hold encapsulated pixel data
//    ComposeHeader       the bytes of an element's header, the length in the last of them
//
// Not part of the library's interface.
#pragma once

#include <cstring>
#include <memory>
#include <string>

#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/DICOMNodeCursor.h"
#include "talvenor/dataset/DICOMObjectIterator.h"
#include "talvenor/dataset/DICOMObjectLock.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/dataset/SwitchUnits.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/transfer/DICOMDataObjectInputStreamVR.h"
#include "talvenor/transfer/ElementHeader.h"
#include "talvenor/transfer/LengthPatchingOutputStream.h"
#include "talvenor/transfer/OutputTransferSyntax.h"
#include "talvenor/transfer/VRInputStreamVR.h"

// The header of one element, ready to be written.
struct HeaderBytes
{
   static constexpr unsigned int kLongest = 12;

   unsigned char itsBytes[kLongest];
   unsigned int itsCount;
};

template <class Policy>
class ElementEncoder
{
public:
   using Encoder = typename Policy::Encoder;

   explicit ElementEncoder(Encoder& theEncoder)
       : itsEncoder(theEncoder), itsWriter(theEncoder.GetEndianHandlingWriter())
   {}

   void SaveDICOMObject(DICOMObject& theObject)
   {
      TypeCountedGroups(theObject);
      DICOMObjectIterator anIterator(theObject, Policy::kWalk);
      while (VR* const aVR = anIterator.Next())
      {
         Type(*aVR, theObject);
         itsEncoder.SaveVR(*aVR);
      }
   }

   void SaveVR(VR& theVR)
   {
      UINT32 aTag = theVR.GetTag();
      if ((theVR.GetGroup() & 1) != 0 && !Base().PassesGroupFilter(theVR, aTag))
      {
         return;
      }
      if (Policy::kIsExplicit && theVR.GetTypeCode() == VRCode::None)
      {
         Base().GetDataDictionary().TypeVR(theVR);
      }
      if (theVR.IsStreamBuffered())
      {
         SaveStreamBufferedVR(theVR, aTag);
      }
      else if (const EncapsulatedPixelVR* const aPixels = theVR.GetAsEncapsulatedPixelVR();
               Policy::kIsExplicit && aPixels != nullptr)
      {
         WriteHeader(aTag, VRCode::OB, VR::kUndefinedLength);
         Base().WriteFragments(*aPixels);
      }
      else if (const SequenceVR* const aSequence = std::as_const(theVR).GetAsSequenceVR())
      {
         SaveSequence(*aSequence, aTag);
      }
      else
      {
         SaveValue(theVR, aTag);
      }
   }

private:
   static constexpr UINT32 kShortValue = 116;         // bytes; goes out in one piece with its header
   static constexpr UINT32 kLongestSpacePad = 10240;  // a longer value of odd length is padded with NUL
   static constexpr UINT32 kLongestPatched = 4194304; // bytes; a longer sequence gets an undefined length

   // A group length counts the headers behind it, and these depend on the types: what has none gets it first.
   static void TypeCountedGroups(DICOMObject& theObject)
   {
      const DICOMObjectLock aLock(theObject);
      DICOMNodeCursor aCursor(theObject.GetNode());
      while (VR* const aVR = aCursor.Next())
      {
         if (!HasGroupLength(Policy::kWalk, aVR->GetGroup()))
         {
            return;
         }
         Type(*aVR, theObject);
      }
   }

   static void Type(VR& theVR, DICOMObject& theObject)
   {
      if (theVR.GetTypeCode() == VRCode::None)
      {
         theObject.GetDataDictionary().TypeVR(theVR);
      }
   }

   OutputTransferSyntax& Base() { return itsEncoder; }
   TNEndian::EndianType Endian() const { return itsWriter.GetEndian(); }

   // The length as it is written: odd ones become even (PS3.5 7.1.1).
   static UINT32 Even(UINT32 theLength)
   {
      return theLength == VR::kUndefinedLength ? theLength : theLength + (theLength & 1);
   }

   HeaderBytes MakeHeader(UINT32 theTag, UINT16 theTypeCode, UINT32 theLength) const
   {
      HeaderBytes aHeader;
      TNEndian::Store(aHeader.itsBytes, static_cast<UINT16>(theTag >> 16), Endian());
      TNEndian::Store(aHeader.itsBytes + 2, static_cast<UINT16>(theTag), Endian());
      Policy::ComposeHeader(aHeader, theTag, theTypeCode, theLength, Endian());
      return aHeader;
   }

   void WriteHeader(UINT32 theTag, UINT16 theTypeCode, UINT32 theLength)
   {
      const HeaderBytes aHeader = MakeHeader(theTag, theTypeCode, theLength);
      itsWriter.Write(aHeader.itsBytes, aHeader.itsCount);
   }

   void SaveValue(VR& theVR, UINT32 theTag)
   {
      const UINT32 aLength = theVR.GetLength();
      const HeaderBytes aHeader = MakeHeader(theTag, theVR.GetTypeCode(), Even(aLength));
      if (aLength <= kShortValue && (theVR.GetData() != nullptr || aLength == 0))
      {
         SaveShortValue(theVR, aHeader);
      }
      else
      {
         itsWriter.Write(aHeader.itsBytes, aHeader.itsCount);
         theVR.WriteData(itsWriter);
         if ((aLength & 1) != 0 && aLength != VR::kUndefinedLength)
         {
            itsWriter.Write(PadOf(theVR));
         }
      }
   }

   // Most values are a few bytes long: header, value and pad leave in one call.
   void SaveShortValue(const VR& theVR, const HeaderBytes& theHeader)
   {
      unsigned char anElement[HeaderBytes::kLongest + kShortValue + 1];
      std::memcpy(anElement, theHeader.itsBytes, HeaderBytes::kLongest); // a fixed size is one move
      unsigned int aCount = theHeader.itsCount;
      if (const UINT32 aLength = theVR.GetLength(); aLength != 0)
      {
         std::memcpy(anElement + aCount, theVR.GetData(), aLength);
         if (theVR.GetDataEndian() != Endian())
         {
            SwitchUnits(anElement + aCount, aLength, theVR.GetDataPrimitiveSize());
         }
         aCount += aLength;
         if ((aLength & 1) != 0)
         {
            if (!HasPad(theVR.GetTypeCode()))
            {
               itsWriter.Write(anElement, aCount);
            }
            anElement[aCount++] = PadOf(theVR);
         }
      }
      itsWriter.Write(anElement, aCount);
   }

   static bool HasPad(UINT16 theTypeCode) { return theTypeCode != VRCode::OF && theTypeCode != VRCode::OW; }

   // What completes a value of odd length (PS3.5 6.2). Words cannot be odd: their value has gone out when that is told.
   static unsigned char PadOf(const VR& theVR)
   {
      const UINT16 aCode = theVR.GetTypeCode();
      if (!HasPad(aCode))
      {
         Throw("SaveVR: Odd length for VR of type OF or OW", TN_INVALID_ELEMENT_HEADER);
      }
      const bool isBinary = aCode == VRCode::OB || aCode == VRCode::UI || aCode == VRCode::UN;
      return isBinary || theVR.GetLength() > kLongestSpacePad ? 0x00 : 0x20;
   }

   void SaveSequence(const SequenceVR& theSequence, UINT32 theTag)
   {
      const bool isPixelData = theTag == ElementHeader::kPixelData;
      if (isPixelData && !Policy::kIsExplicit)
      {
         Throw("SaveVR(VR&) called to save encapsulated pixel data which is invalid for implicit transfer syntax",
               TN_INTERNAL_ERROR);
      }
      WriteHeader(theTag, isPixelData ? theSequence.GetTypeCode() : VRCode::SQ, VR::kUndefinedLength);
      if (isPixelData)
      {
         SaveFragmentItems(theSequence);
      }
      else
      {
         SaveItems(theSequence);
      }
      Base().WriteItemHeader(Base().itsStream, ElementHeader::kSequenceDelimitation, 0);
   }

   void SaveItems(const SequenceVR& theSequence)
   {
      OutputStream& aStream = Base().itsStream;
      if (theSequence.IsEmpty())
      {
         return;
      }
      for (DICOMDataObject* const anItem : *theSequence.GetSequenceArray())
      {
         Base().WriteItemHeader(aStream, ElementHeader::kItem, VR::kUndefinedLength);
         if (anItem != nullptr)
         {
            Base().CloneForItem(aStream, Base().itsPatcher)->SaveDICOMObject(*anItem);
         }
         Base().WriteItemHeader(aStream, ElementHeader::kItemDelimitation, 0);
      }
   }

   // Pixel fragments that are held as items of a sequence, each in an element (FFFE,E000) of its own.
   void SaveFragmentItems(const SequenceVR& theSequence)
   {
      if (theSequence.IsEmpty())
      {
         Base().WriteItemHeader(Base().itsStream, ElementHeader::kItem, 0);
         return;
      }
      for (const DICOMDataObject* const anItem : *theSequence.GetSequenceArray())
      {
         const VR& aFragment = FindFragment(anItem);
         Base().WriteItemHeader(Base().itsStream, ElementHeader::kItem, Even(aFragment.GetLength()));
         aFragment.WriteData(itsWriter);
         if ((aFragment.GetLength() & 1) != 0)
         {
            itsWriter.Write(static_cast<unsigned char>(0x00));
         }
      }
   }

   static const VR& FindFragment(const DICOMDataObject* theItem)
   {
      if (theItem != nullptr)
      {
         DICOMObjectIterator anIterator(*theItem, ImplicitNoGroupLength);
         while (const VR* const aVR = anIterator.Next())
         {
            if (aVR->GetTag() == ElementHeader::kItem)
            {
               return *aVR;
            }
         }
      }
      Throw("SaveVR: EOF without finding a sequence item (fragment) while encoding encapsulated pixel data",
            TN_INVALID_ELEMENT_HEADER);
   }

   void SaveStreamBufferedVR(VR& theVR, UINT32 theTag)
   {
      if (DICOMDataObjectInputStreamVR* const aSequence = theVR.GetAsDICOMDataObjectInputStreamVR())
      {
         SaveStreamedSequence(*aSequence, theTag);
      }
      else if (PixelDataFragmentInputStreamVR* const aFragments = theVR.GetAsPixelDataFragmentInputStreamVR())
      {
         CheckEncapsulated(theVR);
         WriteHeader(theTag, VRCode::OB, VR::kUndefinedLength);
         Base().CopyFragments(*aFragments, Policy::kPrefix);
      }
      else if (PixelInputStreamVR* const aPixels = theVR.GetAsPixelInputStreamVR())
      {
         WriteHeader(theTag, theVR.GetTypeCode(), theVR.GetLength());
         Base().CopyPixelData(*aPixels, Policy::kPrefix);
      }
      else
      {
         Throw("SaveStreamBufferedVR called to save unknown type of stream-buffered VR", TN_INTERNAL_ERROR);
      }
   }

   static void CheckEncapsulated(const VR& theVR)
   {
      if (!Policy::kIsExplicit)
      {
         Throw(
             "SavePixelDataFragmentInputStreamVR: Encapsulated pixel format with implicit transfer syntax not allowed",
             TN_INVALID_ELEMENT_HEADER);
      }
      if (theVR.GetTypeCode() != VRCode::OB)
      {
         Throw("SavePixelDataFragmentInputStreamVR: Encapsulated pixel format with type code != OB",
               TN_INVALID_ELEMENT_HEADER);
      }
   }

   // Content of the same form keeps its form: undefined lengths, or the ones that it turns out to have. What changes
   // between explicit and implicit VR gets undefined ones: of a private sequence, that is how implicit VR tells that it
   // is one (PS3.5 6.2.2, note 2).
   void SaveStreamedSequence(DICOMDataObjectInputStreamVR& theSequence, UINT32 theTag)
   {
      const bool isSameForm = theSequence.IsExplicit() == Policy::kIsExplicit;
      const HeaderBytes aHeader = MakeHeader(theTag, VRCode::SQ, VR::kUndefinedLength);
      SaveNested(aHeader, isSameForm ? theSequence.GetLength() : VR::kUndefinedLength,
                 ElementHeader::kSequenceDelimitation, Base().itsStream, Base().itsPatcher,
                 [&](OutputStream& theStream, LengthPatchingOutputStream* thePatcher) {
                    while (std::unique_ptr<VRInputStreamVR> anItem{theSequence.NextDICOMDataObject()})
                    {
                       SaveStreamedItem(*anItem, isSameForm, theStream, thePatcher);
                    }
                 });
   }

   // Where the form changes, group lengths would no longer be true, and are left out.
   void SaveStreamedItem(VRInputStreamVR& theItem, bool theIsSameForm, OutputStream& theStream,
                         LengthPatchingOutputStream* thePatcher)
   {
      SaveNested(Base().MakeItemHeader(ElementHeader::kItem, VR::kUndefinedLength),
                 theIsSameForm ? theItem.GetLength() : VR::kUndefinedLength, ElementHeader::kItemDelimitation,
                 theStream, thePatcher, [&](OutputStream& theInnerStream, LengthPatchingOutputStream* theInnerPatcher) {
                    const auto anEncoder = Base().CloneForItem(theInnerStream, theInnerPatcher);
                    while (std::unique_ptr<VR> aVR{theItem.NextVR()})
                    {
                       if (theIsSameForm || aVR->GetElement() != 0)
                       {
                          anEncoder->SaveVR(aVR.release());
                       }
                    }
                 });
   }

   // A sequence or an item: its header, whose last four bytes are the length, then the content, which theSave writes. A
   // length that was defined is what the content turns out to have; that needs a buffer, so that very long ones, and
   // those that nobody will read, become undefined. theLength is as it was read; undefined is the longest of all.
   template <class Save>
   void SaveNested(const HeaderBytes& theHeader, UINT32 theLength, UINT32 theDelimiter, OutputStream& theStream,
                   LengthPatchingOutputStream* thePatcher, const Save& theSave)
   {
      static_assert(VR::kUndefinedLength > kLongestPatched);
      if (theLength > kLongestPatched || &theStream == &OutputTransferSyntax::NullOutputStream)
      {
         theStream.Write(theHeader.itsBytes, theHeader.itsCount);
         theSave(theStream, thePatcher);
         Base().WriteItemHeader(theStream, theDelimiter, 0);
         return;
      }
      LengthPatchingOutputStream aBuffer;
      LengthPatchingOutputStream& aPatcher = thePatcher != nullptr ? *thePatcher : aBuffer;
      aPatcher.Write(theHeader.itsBytes, theHeader.itsCount);
      const std::size_t aContent = aPatcher.GetContent();
      theSave(aPatcher, &aPatcher);
      aPatcher.SetLength(aContent, Endian());
      if (thePatcher == nullptr)
      {
         aBuffer.WriteTo(theStream);
      }
   }

   [[noreturn]] static void Throw(const char* theText, TNResultCode theCode)
   {
      throw StreamIOException((std::string(Policy::kPrefix) + theText).c_str(), theCode, 0);
   }

   Encoder& itsEncoder;
   EndianHandlingWriter& itsWriter;
};
