// The one body of decoding: what explicit and implicit VR share is written here, what differs is in the Policy:
//
//    kPrefix               how texts begin
//    kNativePixelType      the type of native pixel data, 0 where the stream states it
//    ReadHeader            the header phase
//    SetType               the typing phase: the header's type code, from the dictionary where needed
//    ContentType           the syntax of a sequence's content
//    NoteValue             looks at a value that has been read
//    LogHeaderFailure      what goes to the error log when the header fails
//    EncapsulatedFault     why encapsulated pixel data is refused, null where it is not
//
// Not part of the library's interface.
#pragma once

#include <cstdio>
#include <memory>
#include <new>
#include <string>

#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/foundation/Exceptions.h"
#include "talvenor/foundation/OneLine.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/foundation/TNTrace.h"
#include "talvenor/transfer/DICOMDataObjectInputStreamVR.h"
#include "talvenor/transfer/ElementHeaderReader.h"
#include "talvenor/transfer/InputTransferSyntax.h"
#include "talvenor/transfer/VRInputStreamVR.h"

template <class Policy>
class ElementDecoder
{
public:
   using Decoder = typename Policy::Decoder;

   explicit ElementDecoder(Decoder& theDecoder)
       : itsDecoder(theDecoder), itsReader(theDecoder.GetEndianHandlingReader())
   {}

   VR* Next()
   {
      if (Base().itsPushback)
      {
         return Base().itsPushback.release();
      }
      try
      {
         return Decode();
      }
      catch (...)
      {
         Base().NoteFault();
         throw;
      }
   }

   static void Pushback(InputTransferSyntax& theDecoder, VR* theVR)
   {
      std::unique_ptr<VR> aVR(theVR);
      if (theDecoder.itsPushback)
      {
         Throw("Pushback(VR*): unable to do pushback", TN_INTERNAL_ERROR);
      }
      theDecoder.itsPushback = std::move(aVR);
   }

private:
   static constexpr UINT32 kLongestShortValue = 1024; // bytes

   InputTransferSyntax& Base() { return itsDecoder; }

   VR* Decode()
   {
      Base().itsLevelEnd = InputTransferSyntax::NotEnded;
      ElementHeader aHeader;
      switch (ReadHeader(aHeader))
      {
      case HeaderEnd::EndOfStream: return End(InputTransferSyntax::AtEndOfStream);
      case HeaderEnd::AtStopLimit: return End(InputTransferSyntax::AtStopLimit);
      case HeaderEnd::Whole: break;
      }
      Base().CountElement();
      if (aHeader.itsGroup == ElementHeader::kDelimiterGroup)
      {
         return NextItem(aHeader);
      }
      if (aHeader.GetTag() == ElementHeader::kPixelData)
      {
         return NextPixelData(aHeader);
      }
      Policy::SetType(itsDecoder, aHeader);
      if (aHeader.itsLength == VR::kUndefinedLength && aHeader.itsTypeCode != VRCode::SQ)
      {
         ResolveUndefinedLength(aHeader);
      }
      return aHeader.itsTypeCode == VRCode::SQ ? NextSequence(aHeader) : NextValue(aHeader);
   }

   VR* End(InputTransferSyntax::LevelEnd theEnd)
   {
      Base().EndLevel(theEnd);
      return nullptr;
   }

   HeaderEnd ReadHeader(ElementHeader& theHeader)
   {
      try
      {
         const StopLimit aLimit{Base().itsStopAtGroup, Base().itsStopAtElement};
         return Policy::ReadHeader(Base().itsStream, itsReader.GetEndian(), aLimit, theHeader);
      }
      catch (const StreamIOException& anException)
      {
         Policy::LogHeaderFailure(anException);
         throw;
      }
   }

   // An item, or the delimiter that ends this level (PS3.5 7.5).
   VR* NextItem(const ElementHeader& theHeader)
   {
      const UINT32 aTag = theHeader.GetTag();
      if (aTag == ElementHeader::kItemDelimitation || aTag == ElementHeader::kSequenceDelimitation)
      {
         return End(InputTransferSyntax::AtDelimiter);
      }
      if (aTag != ElementHeader::kItem)
      {
         char aText[100];
         std::snprintf(aText, sizeof aText, "Expected seq. item start tag but got (%x, %x) with length %x",
                       unsigned{theHeader.itsGroup}, unsigned{theHeader.itsElement}, theHeader.itsLength);
         ThrowNext(aText, TN_INVALID_DELIMITER);
      }
      return new VRInputStreamVR(theHeader.itsLength, Base().MakeContentDecoder(itsDecoder.GetTransferSyntaxType(),
                                                                                aTag, theHeader.itsLength));
   }

   VR* NextPixelData(const ElementHeader& theHeader)
   {
      if (theHeader.itsLength == VR::kUndefinedLength)
      {
         if (const char* aFault = Policy::EncapsulatedFault(itsReader.GetEndian()))
         {
            ThrowNext(aFault, TN_INVALID_ENCODING);
         }
      }
      const UINT16 aType = Policy::kNativePixelType != VRCode::None ? Policy::kNativePixelType : theHeader.itsTypeCode;
      return Base().MakePixelElement(theHeader.itsLength, aType);
   }

   // Only a sequence may have an undefined length; what nobody could type is one (PS3.5 6.2.2, note 2).
   void ResolveUndefinedLength(ElementHeader& theHeader)
   {
      if (theHeader.itsTypeCode == VRCode::UN || theHeader.itsTypeCode == VRCode::None)
      {
         theHeader.itsTypeCode = VRCode::SQ;
         return;
      }
      const std::string aText = std::string(Policy::kPrefix) +
                                "NextVR(): Undefined length (0xffffffff) invalid for VR type " +
                                TypeText(theHeader.itsTypeCode) + " (type from data dictionary)";
      startentry(gTNErrorLog) << OnOneLine(aText) << "\n" << endentry;
      throw StreamIOException(aText.c_str(), TN_INVALID_ELEMENT_HEADER, 0);
   }

   VR* NextSequence(const ElementHeader& theHeader)
   {
      return new DICOMDataObjectInputStreamVR(MAttributeTag(theHeader.itsGroup, theHeader.itsElement),
                                              theHeader.itsLength,
                                              Base().MakeContentDecoder(Policy::ContentType(itsDecoder, theHeader),
                                                                        theHeader.GetTag(), theHeader.itsLength),
                                              itsReader.GetEndian());
   }

   VR* NextValue(const ElementHeader& theHeader)
   {
      std::unique_ptr<VR> aVR = MakeVR(theHeader);
      const bool isPassedOver = theHeader.itsLength > Base().itsRoot->itsLongestValue;
      if (isPassedOver)
      {
         PassOverValue(*aVR);
      }
      else if (theHeader.itsLength != 0)
      {
         ReadValue(*aVR);
      }
      if (theHeader.GetTag() == ElementHeader::kTrailingPadding)
      {
         return End(InputTransferSyntax::AtPadding);
      }
      if (!isPassedOver)
      {
         Policy::NoteValue(itsDecoder, *aVR);
      }
      return aVR.release();
   }

   std::unique_ptr<VR> MakeVR(const ElementHeader& theHeader)
   {
      try
      {
         // A long value comes apart from its element, so that it can be dropped, and grows with what arrives.
         const bool isShort = theHeader.itsLength <= kLongestShortValue;
         auto aVR = VR::MakeWithRoom(theHeader.itsGroup, theHeader.itsElement, isShort ? theHeader.itsLength : 0,
                                     itsReader.GetEndian());
         aVR->SetLength(theHeader.itsLength);
         aVR->SetTypeCode(theHeader.itsTypeCode);
         return aVR;
      }
      catch (const std::bad_alloc&)
      {
         const BadAllocException anException(sizeof(VR));
         Log("new VR failed:", anException);
         throw anException;
      }
   }

   void ReadValue(VR& theVR)
   {
      int isRead = 0;
      try
      {
         isRead = theVR.ReadData(itsReader);
      }
      catch (const BadAllocException& anException)
      {
         Log("VR Data buffer allocation failed: ", anException);
         throw;
      }
      catch (const StreamIOException& anException)
      {
         Log("I/O Exception while reading VR data: ", anException);
         throw;
      }
      if (!isRead)
      {
         startentry(gTNErrorLog) << Policy::kPrefix << "NextVR(): EOF before all " << theVR.GetLength()
                                 << " bytes of data read\n"
                                 << endentry;
         ThrowNext("EOF before all of data read", TN_END_OF_FILE);
      }
   }

   void PassOverValue(const VR& theVR)
   {
      if (itsReader.Skip(theVR.GetLength()) != theVR.GetLength())
      {
         ThrowNext("EOF before all of data skipped", TN_END_OF_FILE);
      }
   }

   static void Log(const char* theText, const ExceptionBase& theException)
   {
      const RWCString aDescription = OnOneLine(theException.ToString()); // may throw, which an open entry must not see
      startentry(gTNErrorLog) << Policy::kPrefix << "NextVR(): " << theText << aDescription << "\n" << endentry;
   }

   [[noreturn]] static void ThrowNext(const char* theText, TNResultCode theCode)
   {
      Throw((std::string("NextVR(): ") + theText).c_str(), theCode);
   }

   [[noreturn]] static void Throw(const char* theText, TNResultCode theCode)
   {
      throw StreamIOException((std::string(Policy::kPrefix) + theText).c_str(), theCode, 0);
   }

   static std::string TypeText(UINT16 theCode) { return {static_cast<char>(theCode >> 8), static_cast<char>(theCode)}; }

   Decoder& itsDecoder;
   EndianHandlingReader& itsReader;
};
