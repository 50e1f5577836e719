// Typed reading of an element's value. An accessor is a transient view: it borrows the element, which must outlive its
// use, and can be pointed at one element after another. VRAccessLE and VRAccessBE (VRAccessEndian.h) fix the byte order
// in which the value is read; results are in the host's order.
//
// Every getter returns 1 on success and 0 on failure, also when memory runs out; without an element all of them fail.
// None of them throws. What they deliver into is unchanged when they fail, but for vectors.
#pragma once

#include "talvenor/foundation/BasicTypes.h"
#include "talvenor/io/TNEndian.h"

class MAttributeTag;
class VR;

class TALVENOR_API VRAccess
{
public:
   VRAccess() = default;
   explicit VRAccess(const VR* theVR) : itsVR(theVR) {}
   explicit VRAccess(const VR& theVR) : itsVR(&theVR) {}
   VRAccess& operator=(const VR* theVR)
   {
      itsVR = theVR;
      return *this;
   }
   VRAccess& operator=(const VR& theVR)
   {
      itsVR = &theVR;
      return *this;
   }

   virtual ~VRAccess();

   virtual UINT16 GetType() const;   // the type code, 0 without an element
   virtual UINT32 GetLength() const; // in bytes, 0 without an element

   // Text without trailing spaces and NULs. The buffer form needs room for the text and a NUL.
   virtual int GetString(RWCString& theText) const;
   virtual int GetString(char* theBuffer, unsigned int theCapacity) const;

   // A new NUL-terminated array that the caller frees with delete[].
   virtual int GetStringCopy(char*& theText) const;

   // The value as it is stored. The copying form returns a new array that the caller frees with delete[].
   virtual int GetBytes(unsigned char* theBuffer, unsigned int theCapacity) const;
   virtual int GetBytesCopy(unsigned char*& theBytes) const;

   // Array forms: every whole value, as long as the element's length fits into theCapacity, which is in bytes.
   // Single forms: the element must hold exactly one value.
   virtual int GetINT16(INT16* theBuffer, unsigned int theCapacity) const = 0;
   virtual int GetINT16(INT16& theValue) const = 0;
   virtual int GetUINT16(UINT16* theBuffer, unsigned int theCapacity) const = 0;
   virtual int GetUINT16(UINT16& theValue) const = 0;
   virtual int GetINT32(INT32* theBuffer, unsigned int theCapacity) const = 0;
   virtual int GetINT32(INT32& theValue) const = 0;
   virtual int GetUINT32(UINT32* theBuffer, unsigned int theCapacity) const = 0;
   virtual int GetUINT32(UINT32& theValue) const = 0;
   virtual int GetINT64(INT64* theBuffer, unsigned int theCapacity) const = 0;
   virtual int GetINT64(INT64& theValue) const = 0;
   virtual int GetUINT64(UINT64* theBuffer, unsigned int theCapacity) const = 0;
   virtual int GetUINT64(UINT64& theValue) const = 0;
   virtual int GetFLOAT(FLOAT* theBuffer, unsigned int theCapacity) const = 0;
   virtual int GetFLOAT(FLOAT& theValue) const = 0;
   virtual int GetDOUBLE(DOUBLE* theBuffer, unsigned int theCapacity) const = 0;
   virtual int GetDOUBLE(DOUBLE& theValue) const = 0;

   // The value as 16-bit words; a last odd byte is copied as it is. theCapacity is in bytes.
   virtual int GetWords(UINT16* theBuffer, unsigned int theCapacity) const = 0;
   virtual int GetWordsCopy(UINT16*& theWords) const = 0;

   // Attribute tags (AT): replaces theTags.
   virtual int GetAttributeList(RWTValOrderedVector<MAttributeTag>& theTags) const = 0;

   virtual TNEndian::EndianType GetEndian() const = 0;

protected:
   const VR* itsVR = nullptr;
};
