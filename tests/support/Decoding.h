// Decodes bytes and writes down the dataset that comes out as one line, values in hexadecimal, "u" for an undefined
// length:
//
//    00080005 CS 4953; 00081140 SQ(u) { item(4) { } }; 7FE00010 OW pixels 01020304; 7FE00010 OB fragments [] [FFD8]
//
// Stream-valued elements are read through their own interfaces, as a host that keeps nothing in memory does.
#pragma once

#include <cstdio>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/PiecewiseInputStream.h"
#include "support/StreamErrors.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/pixel/PixelDataFragmentInputStream.h"
#include "talvenor/pixel/PixelDataFragmentInputStreamVR.h"
#include "talvenor/pixel/PixelInputStreamVR.h"
#include "talvenor/transfer/DICOMDataObjectInputStreamVR.h"
#include "talvenor/transfer/InputTransferSyntax.h"
#include "talvenor/transfer/TransferSyntaxManager.h"
#include "talvenor/transfer/VRInputStreamVR.h"

using Bytes = std::vector<unsigned char>;

// One after the other.
inline Bytes operator+(Bytes theBytes, const Bytes& theMore)
{
   theBytes.insert(theBytes.end(), theMore.begin(), theMore.end());
   return theBytes;
}

inline Bytes First(const Bytes& theBytes, std::size_t theCount)
{
   return {theBytes.begin(), theBytes.begin() + static_cast<std::ptrdiff_t>(theCount)};
}

// PS3.5 7.5.2 in little endian: delimiters, and items that state a length or none.
inline const Bytes kItemDelimiter = {0xFE, 0xFF, 0x0D, 0xE0, 0x00, 0x00, 0x00, 0x00};
inline const Bytes kSequenceDelimiter = {0xFE, 0xFF, 0xDD, 0xE0, 0x00, 0x00, 0x00, 0x00};
inline const Bytes kItemOfUndefinedLength = {0xFE, 0xFF, 0x00, 0xE0, 0xFF, 0xFF, 0xFF, 0xFF};

inline Bytes ItemOf(unsigned char theLength, const Bytes& theContent)
{
   return Bytes{0xFE, 0xFF, 0x00, 0xE0, theLength, 0x00, 0x00, 0x00} + theContent;
}

inline std::string Hex(const unsigned char* theBytes, std::size_t theCount)
{
   std::string aText;
   for (std::size_t i = 0; i < theCount; ++i)
   {
      char aByte[3];
      std::snprintf(aByte, sizeof aByte, "%02X", unsigned{theBytes[i]});
      aText += aByte;
   }
   return aText;
}

inline std::unique_ptr<InputTransferSyntax> MakeDecoder(const RWCString& theUID, InputStream& theStream)
{
   const TransferSyntaxType* aType = TransferSyntaxManager::GetDefaultInstance().GetTransferSyntaxType(theUID);
   return std::unique_ptr<InputTransferSyntax>(aType->CreateInputTransferSyntax(theStream));
}

class DatasetText
{
public:
   void AddLevel(VRInputStream& theLevel)
   {
      const char* aSeparator = "";
      while (const std::unique_ptr<VR> aVR{theLevel.NextVR()})
      {
         itsText += aSeparator;
         AddElement(*aVR);
         aSeparator = "; ";
      }
   }

   void AddElement(VR& theVR)
   {
      if (auto* const anItem = theVR.GetAsVRInputStreamVR())
      {
         AddItem(*anItem);
         return;
      }
      char aTag[9];
      std::snprintf(aTag, sizeof aTag, "%08X", theVR.GetTag());
      itsText += aTag + (" " + theVR.GetTypeCodeAsString());
      if (auto* const aSequence = theVR.GetAsDICOMDataObjectInputStreamVR())
      {
         AddSequence(*aSequence);
      }
      else if (auto* const aPixels = theVR.GetAsPixelInputStreamVR())
      {
         AddPixels(*aPixels);
      }
      else if (auto* const aFragments = theVR.GetAsPixelDataFragmentInputStreamVR())
      {
         AddFragments(*aFragments);
      }
      else if (theVR.GetLength() != 0)
      {
         itsText += " " + Hex(theVR.GetData(), theVR.GetLength());
      }
   }

   const std::string& Text() const { return itsText; }

private:
   static std::string LengthText(const VR& theVR)
   {
      return theVR.GetLength() == VR::kUndefinedLength ? "(u)" : "(" + std::to_string(theVR.GetLength()) + ")";
   }

   void AddItem(VRInputStreamVR& theItem)
   {
      itsText += "item" + LengthText(theItem) + " { ";
      AddLevel(theItem);
      itsText += " }";
   }

   void AddSequence(DICOMDataObjectInputStreamVR& theSequence)
   {
      itsText += LengthText(theSequence) + " { ";
      while (const std::unique_ptr<VRInputStreamVR> anItem{theSequence.NextDICOMDataObject()})
      {
         AddItem(*anItem);
         itsText += " ";
      }
      itsText += "}";
   }

   void AddBytes(InputStream& theStream)
   {
      unsigned char aBuffer[3];
      while (const unsigned int aCount = theStream.Read(aBuffer, sizeof aBuffer))
      {
         itsText += Hex(aBuffer, aCount);
      }
   }

   void AddPixels(PixelInputStreamVR& thePixels)
   {
      itsText += " pixels ";
      AddBytes(thePixels);
   }

   void AddFragments(PixelDataFragmentInputStreamVR& theFragments)
   {
      itsText += " fragments";
      while (const std::unique_ptr<PixelDataFragmentInputStream> aFragment{theFragments.NextFragment()})
      {
         itsText += " [";
         AddBytes(*aFragment);
         itsText += "]";
      }
   }

   std::string itsText;
};

// What decoding came to. The text holds what had been decoded when an exception ended it.
struct Decoded
{
   bool operator==(const Decoded&) const = default;

   std::string itsText;
   StreamError itsError;
   InputTransferSyntax::LevelEnd itsEnd;
   bool itsIsCut;
   std::string itsFaultPath;
   std::size_t itsConsumed; // bytes of the stream
};

inline std::ostream& operator<<(std::ostream& theText, const Decoded& theResult)
{
   return theText << theResult.itsText << " | error " << theResult.itsError << " | end " << theResult.itsEnd
                  << " | cut " << theResult.itsIsCut << " at \"" << theResult.itsFaultPath << "\" | consumed "
                  << theResult.itsConsumed;
}

using PrepareDecoder = std::function<void(InputTransferSyntax&)>;

// theBytes arrive in pieces of thePieceSize.
inline Decoded DecodeInPieces(const RWCString& theUID, const Bytes& theBytes, unsigned int thePieceSize,
                              const PrepareDecoder& thePrepare = {})
{
   PiecewiseInputStream aStream(theBytes, thePieceSize);
   const std::unique_ptr<InputTransferSyntax> aDecoder = MakeDecoder(theUID, aStream);
   if (thePrepare)
   {
      thePrepare(*aDecoder);
   }
   DatasetText aText;
   const StreamError anError = StreamErrorOf([&] { aText.AddLevel(*aDecoder); });
   return {aText.Text(),      anError, aDecoder->GetLevelEnd(), aDecoder->IsCut(), aDecoder->GetFaultPath(),
           aStream.Consumed()};
}

inline Decoded Decode(const RWCString& theUID, const Bytes& theBytes, const PrepareDecoder& thePrepare = {})
{
   return DecodeInPieces(theUID, theBytes, 0xFFFFFFFF, thePrepare);
}

// How a field of a header and a value that the stream cuts are told.
inline std::string ShortRead(const std::string& theMethod, int theCount, const std::string& theField)
{
   return "VR::" + theMethod + "(EndianHandlingReader): Short read " + std::to_string(theCount) + " bytes != sizeof(" +
          theField + ")";
}

inline std::string ShortValue(int theCount, UINT32 theLength, const std::string& theTag, const std::string& theType)
{
   return "VR::ReadData(EndianHandlingReader): Short read " + std::to_string(theCount) +
          " bytes read != " + std::to_string(theLength) + " bytes requested while reading attribute (" + theTag +
          ") with type code " + theType + " at stream offset unknown"; // the stream cannot tell it
}

// How an error of which nothing came compares.
inline const StreamError kNoStreamError = {"(nothing was thrown)", TN_NO_ERROR, 0};

// What whole bytes decode to, however they arrive.
struct DecodeCase
{
   const char* itsName;
   RWCString itsSyntax;
   Bytes itsBytes;
   const char* itsText;
};

inline void ExpectDecoded(const std::vector<DecodeCase>& theCases)
{
   for (const DecodeCase& aCase : theCases)
   {
      const Decoded anExpected = {aCase.itsText,        kNoStreamError, InputTransferSyntax::AtEndOfStream, false, "",
                                  aCase.itsBytes.size()};
      EXPECT_EQ(Decode(aCase.itsSyntax, aCase.itsBytes), anExpected) << aCase.itsName;
      EXPECT_EQ(DecodeInPieces(aCase.itsSyntax, aCase.itsBytes, 1), anExpected) << aCase.itsName << ", in pieces";
   }
}
