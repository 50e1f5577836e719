#include "apps/tn/files/LaterVRs.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "talvenor/dictionary/VRType.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/io/TNEndian.h"

namespace
{
constexpr UINT32 kUndefined = 0xFFFFFFFF;
constexpr unsigned int kTagAndLength = 8; // bytes of a header with a length of 16 bits, or without a VR
constexpr unsigned int kLongHeader = 12;

constexpr UINT16 kDelimiterGroup = 0xFFFE;
constexpr UINT16 kItem = 0xE000;
constexpr UINT16 kSequenceEnd = 0xE0DD;

template <class Number>
Number Load(const unsigned char* theBytes, bool theIsLittleEndian)
{
   return theIsLittleEndian ? TNEndian::Load<Number, TNEndian::LittleEndian>(theBytes)
                            : TNEndian::Load<Number, TNEndian::BigEndian>(theBytes);
}
} // namespace

LaterVRStream::LaterVRStream(InputStream& theSource, const DatasetSyntax& theSyntax)
    : itsSource(theSource), itsIsLittleEndian(theSyntax.itsIsLittleEndian)
{
   if (!IsNeeded(theSyntax))
   {
      itsValue = std::numeric_limits<UINT64>::max();
   }
}

template <class Action>
unsigned int LaterVRStream::Pass(unsigned int theCount, Action theAction)
{
   unsigned int aDone = 0;
   while (aDone < theCount)
   {
      unsigned int aPart = std::min(theCount - aDone, itsHeaderSize - itsHeaderRead);
      if (aPart != 0)
      {
         theAction(aDone, itsHeader + itsHeaderRead, aPart);
         itsHeaderRead += aPart;
      }
      else if (itsValue != 0)
      {
         aPart = theAction(aDone, nullptr, static_cast<unsigned int>(std::min<UINT64>(theCount - aDone, itsValue)));
         if (aPart == 0)
         {
            break;
         }
         itsValue -= aPart;
      }
      else if (!NextHeader())
      {
         break;
      }
      aDone += aPart;
   }
   return aDone;
}

unsigned int LaterVRStream::Read(unsigned char* theBuffer, unsigned int theCount)
{
   return Pass(theCount, [&](unsigned int theDone, const unsigned char* theHeader, unsigned int thePart) {
      if (theHeader == nullptr)
      {
         return itsSource.Read(theBuffer + theDone, thePart);
      }
      std::memcpy(theBuffer + theDone, theHeader, thePart);
      return thePart;
   });
}

unsigned int LaterVRStream::Skip(unsigned int theCount)
{
   return Pass(theCount, [&](unsigned int, const unsigned char* theHeader, unsigned int thePart) {
      return theHeader == nullptr ? itsSource.Skip(thePart) : thePart;
   });
}

void LaterVRStream::Pushback(const unsigned char*, unsigned int theCount)
{
   if (theCount > itsHeaderRead)
   {
      throw StreamIOException("more bytes are put back than were read of a header", TN_INTERNAL_ERROR, 0);
   }
   itsHeaderRead -= theCount;
}

// False at the end of the source. What is left there of a header is delivered as it is.
bool LaterVRStream::NextHeader()
{
   itsHeaderSize = 0;
   itsHeaderRead = 0;
   if (!Complete(kTagAndLength))
   {
      return itsHeaderSize != 0;
   }
   if (itsUnknownDepth != 0)
   {
      TakeUnknownContent();
   }
   else if (Load<UINT16>(itsHeader, itsIsLittleEndian) == kDelimiterGroup)
   {
      TakeDelimiter();
   }
   else
   {
      TakeElement();
   }
   return true;
}

// False when the source ends before.
bool LaterVRStream::Complete(unsigned int theSize)
{
   itsHeaderSize += itsSource.ReadFully(itsHeader + itsHeaderSize, theSize - itsHeaderSize);
   return itsHeaderSize == theSize;
}

UINT32 LaterVRStream::Length32(unsigned int thePlace) const
{
   return Load<UINT32>(itsHeader + thePlace, itsIsLittleEndian);
}

void LaterVRStream::TakeDelimiter()
{
   const UINT16 anElement = Load<UINT16>(itsHeader + 2, itsIsLittleEndian);
   if (anElement == kItem && itsIsInFragments)
   {
      itsValue = Length32(4);
   }
   else if (anElement == kSequenceEnd)
   {
      itsIsInFragments = false;
   }
}

void LaterVRStream::TakeElement()
{
   const UINT16 aVR = MakeVRCode(static_cast<char>(itsHeader[4]), static_cast<char>(itsHeader[5]));
   const bool isLater = IsLaterVR(aVR) && itsHeader[6] == 0 && itsHeader[7] == 0;
   if (!isLater && !HasLongHeaderVRCode(aVR))
   {
      itsValue = Load<UINT16>(itsHeader + 6, itsIsLittleEndian);
      return;
   }
   if (!Complete(kLongHeader))
   {
      return;
   }
   if (isLater)
   {
      const bool isText = aVR == MakeVRCode('U', 'C') || aVR == MakeVRCode('U', 'R');
      if (!isText && !itsIsLittleEndian)
      {
         throw StreamIOException("numbers of VR OD, OL, OV, SV or UV are not served in big endian", TN_INVALID_ENCODING,
                                 0);
      }
      std::memcpy(itsHeader + 4, isText ? "UT" : "UN", 2);
   }
   const UINT32 aLength = Length32(8);
   if (isLater && aLength == kUndefined) // as UN it would become a sequence
   {
      throw StreamIOException("a value of VR OD, OL, OV, SV, UC, UR or UV has no length", TN_INVALID_ENCODING, 0);
   }
   if (aLength != kUndefined)
   {
      itsValue = aVR == VRCode::SQ ? 0 : aLength;
   }
   else if (aVR == VRCode::UN)
   {
      itsUnknownDepth = 1;
   }
   else
   {
      itsIsInFragments = aVR != VRCode::SQ;
   }
}

// A sequence of unknown VR is in implicit VR little endian, whatever is around it (PS3.5 6.2.2).
void LaterVRStream::TakeUnknownContent()
{
   const UINT16 aGroup = Load<UINT16>(itsHeader, true);
   const UINT16 anElement = Load<UINT16>(itsHeader + 2, true);
   const UINT32 aLength = Load<UINT32>(itsHeader + 4, true);
   if (aGroup == kDelimiterGroup && anElement != kItem)
   {
      --itsUnknownDepth;
   }
   else if (aLength == kUndefined)
   {
      ++itsUnknownDepth;
   }
   else
   {
      itsValue = aLength;
   }
}
