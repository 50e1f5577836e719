// Reading and writing the fields of an element (PS3.5 7.1).
#include "talvenor/dataset/VR.h"

#include <algorithm>
#include <cstring>

#include "talvenor/dataset/AllocatedBytes.h"
#include "talvenor/dataset/SwitchUnits.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/io/EndianHandlingReader.h"
#include "talvenor/io/EndianHandlingWriter.h"

namespace
{
// A block that fits into the first-level cache, a multiple of every unit.
constexpr UINT32 kSwapBlock = 8192;

// The bytes are counted, and a reader's own single-value forms are no use here: they tell a field cut short from the
// end of the stream just as little as nothing from something.
template <class T>
int ReadField(EndianHandlingReader& theReader, T& theField, const char* theMethod, const char* theFieldName)
{
   unsigned char aField[sizeof(T)];
   const unsigned int aCount = theReader.ReadFully(aField, sizeof aField);
   if (aCount == sizeof aField)
   {
      theField = TNEndian::Load<T>(aField, theReader.GetEndian());
      return 1;
   }
   if (aCount == 0)
   {
      return 0;
   }
   const RWCString aText = RWCString("VR::") + theMethod + "(EndianHandlingReader): Short read " +
                           std::to_string(aCount) + " bytes != sizeof(" + theFieldName + ")";
   throw StreamIOException(aText.c_str(), TN_END_OF_FILE, 0);
}

// Not every stream knows its position: failing to tell it must not hide the failure that is being told.
RWCString PositionOf(const EndianHandlingReader& theReader)
{
   try
   {
      return std::to_string(theReader.GetStreamPosition());
   }
   catch (const StreamIOException&)
   {
      return "unknown";
   }
}

[[noreturn]] void ThrowShortValue(const VR& theVR, UINT32 theCount, const EndianHandlingReader& theReader)
{
   const RWCString aText = "VR::ReadData(EndianHandlingReader): Short read " + std::to_string(theCount) +
                           " bytes read != " + std::to_string(theVR.GetLength()) +
                           " bytes requested while reading attribute (" +
                           MAttributeTag(theVR.GetGroup(), theVR.GetElement()).AsNumericString() + ") with type code " +
                           theVR.GetTypeCodeAsString() + " at stream offset " + PositionOf(theReader);
   throw StreamIOException(aText.c_str(), TN_END_OF_FILE, 0);
}
} // namespace

int VR::ReadGroup(EndianHandlingReader& theReader)
{
   UINT16 aGroup;
   if (!ReadField(theReader, aGroup, "ReadGroup", "itsGroup"))
   {
      return 0;
   }
   SetGroup(aGroup);
   return 1;
}

int VR::ReadElement(EndianHandlingReader& theReader)
{
   UINT16 anElement;
   if (!ReadField(theReader, anElement, "ReadElement", "itsElement"))
   {
      return 0;
   }
   SetElement(anElement);
   return 1;
}

int VR::ReadLength16(EndianHandlingReader& theReader)
{
   UINT16 aLength;
   if (!ReadField(theReader, aLength, "ReadLength16", "UINT16"))
   {
      return 0;
   }
   itsLength = aLength;
   return 1;
}

int VR::ReadLength32(EndianHandlingReader& theReader)
{
   return ReadField(theReader, itsLength, "ReadLength32", "UINT32");
}

int VR::ReadFiller16(EndianHandlingReader& theReader)
{
   UINT16 aFiller;
   return ReadField(theReader, aFiller, "ReadFiller16", "UINT16");
}

// Two letters in reading order, whatever the byte order of the stream.
int VR::ReadTypeCode(EndianHandlingReader& theReader)
{
   EndianHandlingReader aReader(theReader, TNEndian::BigEndian);
   return ReadField(aReader, itsTypeCode, "ReadTypeCode", "itsTypeCode");
}

int VR::ReadData(EndianHandlingReader& theReader)
{
   if (IsEmpty())
   {
      return 1;
   }
   if (itsLength == kUndefinedLength)
   {
      throw StreamIOException("VR::ReadData(EndianHandlingReader): read data of undefined length requested",
                              TN_INTERNAL_ERROR, 0);
   }
   const UINT32 aCount = itsData != nullptr ? theReader.ReadFully(itsData, itsLength) : ReadIntoNewBuffer(theReader);
   if (aCount == itsLength)
   {
      return 1;
   }
   if (aCount == 0)
   {
      return 0;
   }
   ThrowShortValue(*this, aCount, theReader);
}

UINT32 VR::ReadIntoNewBuffer(EndianHandlingReader& theReader)
{
   AllocatedBytes aBytes(nullptr, FreeThrough{&itsAllocator});
   const UINT32 aCount = ReadAllocatedBytes(theReader, itsLength, itsAllocator, aBytes);
   if (aCount == itsLength)
   {
      Adopt(aBytes.release(), itsLength);
   }
   return aCount;
}

void VR::WriteGroup(EndianHandlingWriter& theWriter) const
{
   theWriter.Write(GetGroup());
}

void VR::WriteElement(EndianHandlingWriter& theWriter) const
{
   theWriter.Write(GetElement());
}

void VR::WriteLength16(EndianHandlingWriter& theWriter) const
{
   theWriter.Write(static_cast<UINT16>(itsLength));
}

void VR::WriteLength16Plus1(EndianHandlingWriter& theWriter) const
{
   theWriter.Write(static_cast<UINT16>(itsLength + 1));
}

void VR::WriteLength32(EndianHandlingWriter& theWriter) const
{
   theWriter.Write(itsLength);
}

void VR::WriteLength32Plus1(EndianHandlingWriter& theWriter) const
{
   theWriter.Write(itsLength + 1);
}

void VR::WriteFiller16(EndianHandlingWriter& theWriter) const
{
   theWriter.Write(static_cast<UINT16>(0));
}

void VR::WriteTypeCode(EndianHandlingWriter& theWriter) const
{
   const unsigned char aLetters[] = {static_cast<unsigned char>(itsTypeCode >> 8),
                                     static_cast<unsigned char>(itsTypeCode & 0xFF)};
   theWriter.Write(aLetters, sizeof aLetters);
}

void VR::WriteData(EndianHandlingWriter& theWriter) const
{
   if (IsEmpty())
   {
      return;
   }
   if (itsLength == kUndefinedLength)
   {
      throw StreamIOException("VR::WriteData(EndianHandlingWriter): Write data of undefined length requested",
                              TN_INTERNAL_ERROR, 0);
   }
   if (itsData == nullptr)
   {
      throw StreamIOException("VR::WriteData(EndianHandlingWriter): Write of a value that has no data requested",
                              TN_INTERNAL_ERROR, 0);
   }
   WriteTypedData(theWriter);
}

void VR::WriteTypedData(EndianHandlingWriter& theWriter) const
{
   if (!HasBytes())
   {
      return;
   }
   const unsigned int aUnit = GetDataEndian() == theWriter.GetEndian() ? 1 : GetDataPrimitiveSize();
   if (aUnit == 1)
   {
      theWriter.Write(itsData, itsLength);
      return;
   }
   unsigned char aBlock[kSwapBlock];
   for (UINT32 aStart = 0; aStart < itsLength;)
   {
      const UINT32 aCount = std::min(itsLength - aStart, kSwapBlock);
      std::memcpy(aBlock, itsData + aStart, aCount);
      SwitchUnits(aBlock, aCount, aUnit);
      theWriter.Write(aBlock, aCount);
      aStart += aCount;
   }
}
