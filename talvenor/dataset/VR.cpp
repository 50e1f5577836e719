#include "talvenor/dataset/VR.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "talvenor/dataset/SwitchUnits.h"
#include "talvenor/dictionary/UID.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/foundation/Exceptions.h"

namespace
{
// Value lengths are even (PS3.5 7.1.1).
constexpr UINT32 EvenLength(UINT32 theLength)
{
   return theLength == VR::kUndefinedLength ? theLength : theLength + (theLength & 1);
}

constexpr bool NeedsPad(UINT32 theLength)
{
   return EvenLength(theLength) != theLength;
}

// Room for theLength bytes and the pad byte of an odd length, which is set here so that memory of unknown content never
// becomes part of a value. Null for a length of 0.
unsigned char* MakeBuffer(MemoryAllocater& theAllocator, UINT32 theLength)
{
   if (theLength == 0)
   {
      return nullptr;
   }
   auto* aBuffer = static_cast<unsigned char*>(theAllocator.Allocate(EvenLength(theLength)));
   if (NeedsPad(theLength))
   {
      aBuffer[theLength] = 0;
   }
   return aBuffer;
}

template <class T>
UINT32 LengthWithoutTrailing(const char* theText, std::size_t theLength, T theIsDropped)
{
   while (theLength != 0 && theIsDropped(theText[theLength - 1]))
   {
      --theLength;
   }
   return static_cast<UINT32>(theLength);
}
} // namespace

// The constructors with a value delegate to one without: should memory run out, the destructor frees what the element
// had taken by then.

VR::VR(UINT16 theGroup, UINT16 theElement, UINT32 theLength, int theAllocate, TNEndian::EndianType theEndian,
       MemoryAllocater& theAllocator)
    : VR(theGroup, theElement, theEndian, theAllocator)
{
   itsLength = EvenLength(theLength);
   itsOwnsData = 1;
   if (theAllocate && theLength != kUndefinedLength)
   {
      itsData = MakeBuffer(itsAllocator, theLength);
   }
}

VR::VR(UINT16 theGroup, UINT16 theElement, UINT32 theLength, void* theData, TNEndian::EndianType theEndian,
       MemoryAllocater& theAllocator)
    : VR(theGroup, theElement, theLength, theData, 1, theEndian, theAllocator)
{}

VR::VR(UINT16 theGroup, UINT16 theElement, UINT32 theLength, void* theData, int theOwns, TNEndian::EndianType theEndian,
       MemoryAllocater& theAllocator)
    : VR(theGroup, theElement, theEndian, theAllocator)
{
   itsData = static_cast<unsigned char*>(theData);
   itsOwnsData = theOwns;
   if (itsData != nullptr && NeedsPad(theLength))
   {
      unsigned char* aCopy = MakeBuffer(itsAllocator, theLength);
      std::memcpy(aCopy, itsData, theLength);
      Adopt(aCopy, theLength + 1);
   }
   itsLength = EvenLength(theLength);
}

VR::VR(UINT16 theGroup, UINT16 theElement, const UID& theUID, TNEndian::EndianType theEndian,
       MemoryAllocater& theAllocator)
    : VR(theGroup, theElement, theEndian, theAllocator)
{
   const char* aText = theUID;
   const auto aLength = static_cast<UINT32>(std::strlen(aText));
   const UINT32 aUsed = LengthWithoutTrailing(aText, aLength, [](char theCharacter) { return theCharacter == ' '; });
   itsTypeCode = VRCode::UI;
   VR::SetData(aText, aLength, '\0');
   std::fill(itsData + aUsed, itsData + itsLength, static_cast<unsigned char>(0));
}

VR::VR(UINT16 theGroup, UINT16 theElement, const char* const& theText, UINT32 theLength, TNEndian::EndianType theEndian,
       MemoryAllocater& theAllocator)
    : VR(theGroup, theElement, theEndian, theAllocator)
{
   if (theText == nullptr)
   {
      const UINT32 aLength = EvenLength(ToLength(theLength));
      Adopt(MakeBuffer(itsAllocator, aLength), aLength);
      std::fill_n(itsData, aLength, static_cast<unsigned char>(' '));
      return;
   }
   const std::size_t aGiven = theLength != 0 ? theLength : std::strlen(theText);
   VR::SetData(theText,
               LengthWithoutTrailing(theText, ToLength(aGiven), [](char theCharacter) { return theCharacter == '\0'; }),
               ' ');
}

VR::VR(UINT16 theGroup, UINT16 theElement, const RWTValOrderedVector<RWCString>& theTexts, char thePad,
       TNEndian::EndianType theEndian, MemoryAllocater& theAllocator)
    : VR(theGroup, theElement, theEndian, theAllocator)
{
   const RWCString aText = JoinValues(theTexts);
   VR::SetData(aText.data(), ToLength(aText.size()), thePad);
}

std::unique_ptr<VR> VR::MakeWithRoom(UINT16 theGroup, UINT16 theElement, UINT32 theLength,
                                     TNEndian::EndianType theEndian)
{
   static_assert(sizeof(VR) % alignof(DOUBLE) == 0, "the value begins as aligned as one of the default allocator");
   void* const aPlace = ::operator new(sizeof(VR) + EvenLength(theLength));
   std::unique_ptr<VR> aVR(new (aPlace) VR(theGroup, theElement, theEndian));
   if (theLength != 0)
   {
      aVR->itsData = static_cast<unsigned char*>(aPlace) + sizeof(VR); // not owned apart from the element
      aVR->itsLength = theLength;
   }
   if (NeedsPad(theLength))
   {
      aVR->itsData[theLength] = 0;
   }
   return aVR;
}

VR::VR(const VR& theOther)
    : itsTag(theOther.itsTag), itsDataEndian(theOther.itsDataEndian), itsAllocator(theOther.itsAllocator),
      itsTypeCode(theOther.itsTypeCode)
{
   CopyValue(theOther);
}

VR& VR::operator=(const VR& theOther)
{
   if (this != &theOther)
   {
      CopyValue(theOther);
      itsTag = theOther.itsTag;
      itsDataEndian = theOther.itsDataEndian;
      itsTypeCode = theOther.itsTypeCode;
   }
   return *this;
}

VR* VR::Copy() const
{
   return new VR(*this);
}

// The length is copied as it is: an element that was decoded with an odd length is encoded again with that length.
void VR::CopyValue(const VR& theOther)
{
   if (theOther.IsStreamBuffered())
   {
      throw ConstructorError("VR::Copy(): Can't copy a stream-buffered VR");
   }
   unsigned char* aCopy = nullptr;
   if (theOther.HasBytes())
   {
      aCopy = MakeBuffer(itsAllocator, theOther.itsLength);
      std::memcpy(aCopy, theOther.itsData, theOther.itsLength);
   }
   Adopt(aCopy, theOther.itsLength);
}

// Replaces the value by one that the element owns.
void VR::Adopt(unsigned char* theData, UINT32 theLength)
{
   if (itsOwnsData)
   {
      DeleteData();
   }
   itsData = theData;
   itsLength = theLength;
   itsOwnsData = 1;
}

void VR::Reset()
{
   if (itsOwnsData)
   {
      DeleteData();
   }
   itsOwnsData = 0;
   itsData = nullptr;
   itsLength = 0;
}

void VR::SetData(const void* theData, UINT32 theLength, char thePad)
{
   unsigned char* aCopy = MakeBuffer(itsAllocator, theLength);
   if (theLength != 0)
   {
      std::memcpy(aCopy, theData, theLength);
   }
   Adopt(aCopy, EvenLength(theLength));
   if (NeedsPad(theLength))
   {
      SetPadByte(thePad);
   }
}

void VR::SetPadByte(char thePad)
{
   if (HasBytes())
   {
      itsData[itsLength - 1] = static_cast<unsigned char>(thePad);
   }
}

void* VR::AllocateData()
{
   return AllocateData(itsLength);
}

// The old buffer goes first: a large element never holds two.
void* VR::AllocateData(UINT32 theSize)
{
   const UINT32 aLength = itsLength;
   VR::Reset();
   Adopt(MakeBuffer(itsAllocator, theSize), aLength);
   return itsData;
}

int VR::IsEmpty() const
{
   return itsLength == 0;
}

const SequenceVR* VR::GetAsSequenceVR() const
{
   return nullptr;
}

SequenceVR* VR::GetAsSequenceVR()
{
   return nullptr;
}

PixelDataFragmentInputStreamVR* VR::GetAsPixelDataFragmentInputStreamVR()
{
   return nullptr;
}

EncapsulatedPixelVR* VR::GetAsEncapsulatedPixelVR()
{
   return nullptr;
}

PixelInputStreamVR* VR::GetAsPixelInputStreamVR()
{
   return nullptr;
}

DICOMDataObjectInputStreamVR* VR::GetAsDICOMDataObjectInputStreamVR()
{
   return nullptr;
}

VRInputStreamVR* VR::GetAsVRInputStreamVR()
{
   return nullptr;
}

MemoryAllocater& VR::GetMemoryAllocater() const
{
   return itsAllocator;
}

int VR::IsStreamBuffered() const
{
   return 0;
}

TNEndian::EndianType VR::GetDataEndian() const
{
   return itsDataEndian;
}

TNEndian::EndianType VR::GetEndian() const
{
   return itsDataEndian;
}

RWCString VR::GetTypeCodeAsString() const
{
   if (itsTypeCode == VRCode::None)
   {
      return {};
   }
   return {static_cast<char>(itsTypeCode >> 8), static_cast<char>(itsTypeCode & 0xFF)};
}

void VR::DeleteData()
{
   DeleteData(std::exchange(itsData, nullptr));
}

void VR::DeleteData(void* theData)
{
   itsAllocator.Free(theData);
}

std::unique_ptr<VR> VR::Materialise(std::exception_ptr&)
{
   return nullptr;
}

unsigned int VR::GetDataPrimitiveSize() const
{
   return PrimitiveSizeOfVRCode(itsTypeCode);
}

void VR::SwapDataEndian()
{
   if (HasBytes())
   {
      SwitchUnits(itsData, itsLength, GetDataPrimitiveSize());
   }
   itsDataEndian = itsDataEndian == TNEndian::BigEndian ? TNEndian::LittleEndian : TNEndian::BigEndian;
}

RWCString VR::JoinValues(const RWTValOrderedVector<RWCString>& theTexts)
{
   std::size_t aSize = theTexts.size();
   for (const RWCString& aText : theTexts)
   {
      aSize += aText.size();
   }
   RWCString aResult;
   aResult.reserve(aSize);
   for (const RWCString& aText : theTexts)
   {
      if (&aText != &theTexts.front())
      {
         aResult += '\\';
      }
      aResult += aText;
   }
   return aResult;
}

UINT32 VR::ToLength(std::size_t theSize)
{
   if (theSize >= kUndefinedLength)
   {
      throw BadAllocException(theSize);
   }
   return static_cast<UINT32>(theSize);
}
