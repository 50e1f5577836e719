// One data element (PS3.5 7.1): tag, value representation, value bytes, and the byte order in which multi-byte values
// stand in them. Values are kept exactly as they came, padded to even length, and are converted only when a VRAccess
// reads them or an encoder writes them in another byte order.
//
// An element has no lock: the dataset that holds it guards it. Two elements are "equal" and ordered by tag alone;
// ValueEquals compares values.
#pragma once

#include <cstddef>
#include <exception>
#include <memory>
#include <new>

#include "talvenor/dataset/MemoryAllocater.h"
#include "talvenor/dictionary/MAttributeTag.h"
#include "talvenor/foundation/BasicTypes.h"
#include "talvenor/io/TNEndian.h"

class DICOMDataObjectInputStreamVR;
class EncapsulatedPixelVR;
class EndianHandlingReader;
class EndianHandlingWriter;
class PixelDataFragmentInputStreamVR;
class PixelInputStreamVR;
class SequenceVR;
class UID;
class VRInputStreamVR;

class TALVENOR_API VR
{
public:
   // A length that the stream does not state (PS3.5 7.5). Only decoders and encapsulated pixel data know it.
   static constexpr UINT32 kUndefinedLength = 0xFFFFFFFF;

   static MemoryAllocater& GetDefaultMemoryAllocater() { return MemoryAllocater::GetDefault(); }

   // Every constructor ends with the byte order of the value and the allocator, which is borrowed and must outlive the
   // element. Elements start untyped (type code 0) unless said otherwise.
   explicit VR(TNEndian::EndianType theEndian = TNEndian::LittleEndian,
               MemoryAllocater& theAllocator = GetDefaultMemoryAllocater())
       : itsDataEndian(theEndian), itsAllocator(theAllocator)
   {}
   explicit VR(const MAttributeTag& theTag, TNEndian::EndianType theEndian = TNEndian::LittleEndian,
               MemoryAllocater& theAllocator = GetDefaultMemoryAllocater())
       : itsTag(theTag.GetTag()), itsDataEndian(theEndian), itsAllocator(theAllocator)
   {}
   VR(UINT16 theGroup, UINT16 theElement, TNEndian::EndianType theEndian = TNEndian::LittleEndian,
      MemoryAllocater& theAllocator = GetDefaultMemoryAllocater())
       : itsTag(ToTag(theGroup, theElement)), itsDataEndian(theEndian), itsAllocator(theAllocator)
   {}

   // theLength is rounded up to even. With a non-zero theAllocate (and a length that is neither 0 nor undefined) a
   // buffer of unspecified content is made; the pad byte of an odd length is 0.
   VR(UINT16 theGroup, UINT16 theElement, UINT32 theLength, int theAllocate,
      TNEndian::EndianType theEndian = TNEndian::LittleEndian,
      MemoryAllocater& theAllocator = GetDefaultMemoryAllocater());

   // Takes theData, which came from theAllocator. An odd length is copied into an even buffer with a pad byte of 0 and
   // theData is freed at once.
   VR(UINT16 theGroup, UINT16 theElement, UINT32 theLength, void* theData,
      TNEndian::EndianType theEndian = TNEndian::LittleEndian,
      MemoryAllocater& theAllocator = GetDefaultMemoryAllocater());

   // The same; with theOwns 0 the caller keeps theData, which must outlive the element (or its next change of value).
   VR(UINT16 theGroup, UINT16 theElement, UINT32 theLength, void* theData, int theOwns,
      TNEndian::EndianType theEndian = TNEndian::LittleEndian,
      MemoryAllocater& theAllocator = GetDefaultMemoryAllocater());

   // Type code UI; padded with a NUL (PS3.5 9.1).
   VR(UINT16 theGroup, UINT16 theElement, const UID& theUID, TNEndian::EndianType theEndian = TNEndian::LittleEndian,
      MemoryAllocater& theAllocator = GetDefaultMemoryAllocater());

   // Text of theLength bytes, 0 meaning up to its NUL. Trailing NULs are dropped, then the value is padded with a
   // space. A null text gives theLength spaces, rounded up to even.
   VR(UINT16 theGroup, UINT16 theElement, const char* const& theText, UINT32 theLength,
      TNEndian::EndianType theEndian = TNEndian::LittleEndian,
      MemoryAllocater& theAllocator = GetDefaultMemoryAllocater());

   // The texts joined by "\"; an odd total is completed with thePad.
   VR(UINT16 theGroup, UINT16 theElement, const RWTValOrderedVector<RWCString>& theTexts, char thePad,
      TNEndian::EndianType theEndian = TNEndian::LittleEndian,
      MemoryAllocater& theAllocator = GetDefaultMemoryAllocater());

   // Deep; the copy owns its bytes, which come from the allocator of theOther, those of an assigned element from the
   // element's own. Throws ConstructorError when the value of theOther still sits in a stream.
   VR(const VR& theOther);
   VR& operator=(const VR& theOther);

   // A new element equal to this one, owned by the caller. Throws as the copy constructor does.
   virtual VR* Copy() const;
   virtual ~VR()
   {
      if (itsOwnsData)
      {
         itsAllocator.Free(itsData);
      }
   }

   // Whether the values are the same, whatever the tags. Person names (both elements typed PN) are compared without
   // trailing empty components.
   virtual int ValueEquals(const VR& theOther) const;

   // Forgets the value; tag and type code stay.
   virtual void Reset();

   // Copies theLength bytes, which may be the element's own, into a fresh buffer; an odd length is completed with
   // thePad. The element is unchanged when there is no memory.
   virtual void SetData(const void* theData, UINT32 theLength, char thePad);

   // Overwrites the last byte of a value that is not empty.
   virtual void SetPadByte(char thePad);

   // A fresh buffer of unspecified content, of the size (in the first form the current length) rounded up to even; the
   // pad byte of an odd size is 0. The length field stays as it is; when there is no memory the element has lost its
   // value and is empty.
   virtual void* AllocateData();
   virtual void* AllocateData(UINT32 theSize);

   virtual int IsEmpty() const;

   // Down-casts: null where the element is of another class.
   virtual const SequenceVR* GetAsSequenceVR() const;
   virtual SequenceVR* GetAsSequenceVR();
   virtual PixelDataFragmentInputStreamVR* GetAsPixelDataFragmentInputStreamVR();
   virtual EncapsulatedPixelVR* GetAsEncapsulatedPixelVR();
   virtual PixelInputStreamVR* GetAsPixelInputStreamVR();
   virtual DICOMDataObjectInputStreamVR* GetAsDICOMDataObjectInputStreamVR();
   virtual VRInputStreamVR* GetAsVRInputStreamVR();

   virtual MemoryAllocater& GetMemoryAllocater() const;

   // Non-zero while the value is still in the stream that a decoder reads (see InputTransferSyntax).
   virtual int IsStreamBuffered() const;

   virtual TNEndian::EndianType GetDataEndian() const;
   virtual TNEndian::EndianType GetEndian() const;

   // The two letters of the value representation, empty while untyped.
   virtual RWCString GetTypeCodeAsString() const;

protected:
   virtual void DeleteData();
   virtual void DeleteData(void* theData);

public:
   // For an element whose value still sits in a stream: reads it and returns an ordinary element with the same tag,
   // null when there is none to be had (the value is partly consumed, or an item outside a sequence). When reading
   // fails midway, what was read is returned all the same and theFailure holds the exception, so that a dataset loses
   // nothing that had arrived. Null for every other element.
   virtual std::unique_ptr<VR> Materialise(std::exception_ptr& theFailure);

   const EncapsulatedPixelVR* GetAsEncapsulatedPixelVR() const
   {
      return const_cast<VR*>(this)->GetAsEncapsulatedPixelVR();
   }

   UINT16 GetGroup() const { return static_cast<UINT16>(itsTag >> 16); }
   UINT16 GetElement() const { return static_cast<UINT16>(itsTag); }
   UINT32 GetTag() const { return itsTag; } // group in the high half
   void SetGroup(UINT16 theGroup) { itsTag = ToTag(theGroup, GetElement()); }
   void SetElement(UINT16 theElement) { itsTag = ToTag(GetGroup(), theElement); }

   // First letter in the high byte ("UI" is 0x5549), 0 while untyped.
   UINT16 GetTypeCode() const { return itsTypeCode; }
   void SetTypeCode(UINT16 theCode) { itsTypeCode = theCode; }

   // The value bytes, in the order of GetDataEndian; null when there are none. Borrowed: see the virtual operations for
   // what replaces them.
   unsigned char* GetData() const { return itsData; }

   // In bytes. Odd only for elements that were decoded with an odd length.
   UINT32 GetLength() const { return itsLength; }

   // Sets the field only: never above the size of the buffer.
   void SetLength(UINT32 theLength) { itsLength = theLength; }

   bool operator<(const VR& theOther) const { return itsTag < theOther.itsTag; }
   bool operator>(const VR& theOther) const { return itsTag > theOther.itsTag; }
   bool operator==(const VR& theOther) const { return itsTag == theOther.itsTag; }
   bool operator<(const MAttributeTag& theTag) const { return itsTag < theTag.GetTag(); }
   bool operator>(const MAttributeTag& theTag) const { return itsTag > theTag.GetTag(); }
   bool operator==(const MAttributeTag& theTag) const { return itsTag == theTag.GetTag(); }

   int ValueAndTagEquals(const VR& theOther) const;

   // The size in bytes of the units that SwapDataEndian reverses: 1, 2, 4 or 8.
   unsigned int GetDataPrimitiveSize() const;

   // Reverses every whole unit of the value in place and flips GetDataEndian; bytes that fill no unit stay.
   void SwapDataEndian();

   // Reading single fields of an element in the reader's byte order. 1 when the field was read, 0 when the stream had
   // ended before its first byte (nothing changes then); StreamIOException (TN_END_OF_FILE, "Short read") when it ends
   // inside the field.
   int ReadGroup(EndianHandlingReader& theReader);
   int ReadElement(EndianHandlingReader& theReader);
   int ReadLength16(EndianHandlingReader& theReader);
   int ReadLength32(EndianHandlingReader& theReader);
   int ReadFiller16(EndianHandlingReader& theReader);
   int ReadTypeCode(EndianHandlingReader& theReader);

   // Reads GetLength() bytes into the buffer, which must be that large, or into a new one when there is none. 1 when
   // all arrived (and for an empty element), 0 when the stream had ended, StreamIOException (TN_END_OF_FILE) when it
   // ends inside the value; a new buffer is kept only when all arrived. The buffer of a long value is made as the bytes
   // arrive, so that a length that lies costs little memory. The text of the exception ends with the position in the
   // stream, "unknown" where the stream does not tell it.
   int ReadData(EndianHandlingReader& theReader);

   // Writing single fields in the writer's byte order; the "Plus1" forms write the length plus one. They throw what the
   // writer's stream throws.
   void WriteGroup(EndianHandlingWriter& theWriter) const;
   void WriteElement(EndianHandlingWriter& theWriter) const;
   void WriteLength16(EndianHandlingWriter& theWriter) const;
   void WriteLength16Plus1(EndianHandlingWriter& theWriter) const;
   void WriteLength32(EndianHandlingWriter& theWriter) const;
   void WriteLength32Plus1(EndianHandlingWriter& theWriter) const;
   void WriteFiller16(EndianHandlingWriter& theWriter) const;
   void WriteTypeCode(EndianHandlingWriter& theWriter) const;

   // Writes the value, swapped by its type when the writer's byte order differs from the value's. Always GetLength()
   // bytes: a rest that fills no whole unit goes out as it is. For a length that is undefined, or that has no bytes
   // behind it, WriteData throws StreamIOException (TN_INTERNAL_ERROR), WriteTypedData writes nothing.
   void WriteData(EndianHandlingWriter& theWriter) const;
   void WriteTypedData(EndianHandlingWriter& theWriter) const;

   // An addition for decoders: a new element of theLength bytes (not undefined; an odd length stays odd), of
   // unspecified content but for the pad byte of an odd length, which stand in the same piece of memory as the element.
   // Half the work of making the two apart. The bytes do not come from an allocator and are freed with the element, not
   // with its value; whatever replaces the value is made and freed as in any other element. Throws std::bad_alloc.
   static std::unique_ptr<VR> MakeWithRoom(UINT16 theGroup, UINT16 theElement, UINT32 theLength,
                                           TNEndian::EndianType theEndian);

   // The room behind an element makes the size of what is freed unknown to the compiler. Left as a call, which it is in
   // a host's build without optimisation, g++ takes it for the counterpart of another new and warns.
   [[gnu::always_inline]] static void operator delete(void* theMemory) { ::operator delete(theMemory); }

   // Additions for those who build values. Several texts are one value with "\" between them (PS3.5 6.4). A size that
   // no length field can hold throws BadAllocException.
   static RWCString JoinValues(const RWTValOrderedVector<RWCString>& theTexts);
   static UINT32 ToLength(std::size_t theSize);

protected:
   void SetTag(UINT32 theTag) { itsTag = theTag; }
   void SetDataEndian(TNEndian::EndianType theEndian) { itsDataEndian = theEndian; }

private:
   static constexpr UINT32 ToTag(UINT16 theGroup, UINT16 theElement)
   {
      return static_cast<UINT32>(theGroup) << 16 | theElement;
   }

   bool HasBytes() const { return itsData != nullptr && itsLength != 0 && itsLength != kUndefinedLength; }
   void Adopt(unsigned char* theData, UINT32 theLength);
   void CopyValue(const VR& theOther);
   UINT32 ReadIntoNewBuffer(EndianHandlingReader& theReader);

   UINT32 itsTag = 0;
   UINT32 itsLength = 0;
   unsigned char* itsData = nullptr;
   TNEndian::EndianType itsDataEndian;
   MemoryAllocater& itsAllocator;
   int itsOwnsData = 0;
   UINT16 itsTypeCode = 0;
};
