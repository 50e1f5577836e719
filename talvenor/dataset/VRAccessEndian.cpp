#include "talvenor/dataset/VRAccessEndian.h"

#include <cstring>
#include <new>

#include "talvenor/dataset/VR.h"

namespace
{
// A single value: the element holds exactly that.
template <TNEndian::EndianType Endian, class T>
int GetOne(const VR* theVR, T& theValue)
{
   if (theVR == nullptr || theVR->GetData() == nullptr || theVR->GetLength() != sizeof(T))
   {
      return 0;
   }
   theValue = TNEndian::Load<T, Endian>(theVR->GetData());
   return 1;
}

// Copies theCount values and turns them in their new place, which need not be aligned.
template <TNEndian::EndianType Endian, class T>
void CopyValues(void* theBuffer, const VR& theVR, UINT32 theCount)
{
   std::memcpy(theBuffer, theVR.GetData(), theCount * sizeof(T));
   if constexpr (!TNEndian::IsNative(Endian))
   {
      TNEndian::SwitchArray<T>(theBuffer, theCount);
   }
}

// Every whole value, if the whole element fits.
template <TNEndian::EndianType Endian, class T>
int GetAll(const VR* theVR, T* theBuffer, unsigned int theCapacity)
{
   if (theVR == nullptr || theVR->GetData() == nullptr || theVR->GetLength() > theCapacity)
   {
      return 0;
   }
   CopyValues<Endian, T>(theBuffer, *theVR, theVR->GetLength() / sizeof(T));
   return 1;
}
} // namespace

template <TNEndian::EndianType Endian>
int VRAccessEndian<Endian>::GetINT16(INT16* theBuffer, unsigned int theCapacity) const
{
   return GetAll<Endian>(itsVR, theBuffer, theCapacity);
}

template <TNEndian::EndianType Endian>
int VRAccessEndian<Endian>::GetINT16(INT16& theValue) const
{
   return GetOne<Endian>(itsVR, theValue);
}

template <TNEndian::EndianType Endian>
int VRAccessEndian<Endian>::GetUINT16(UINT16* theBuffer, unsigned int theCapacity) const
{
   return GetAll<Endian>(itsVR, theBuffer, theCapacity);
}

template <TNEndian::EndianType Endian>
int VRAccessEndian<Endian>::GetUINT16(UINT16& theValue) const
{
   return GetOne<Endian>(itsVR, theValue);
}

template <TNEndian::EndianType Endian>
int VRAccessEndian<Endian>::GetINT32(INT32* theBuffer, unsigned int theCapacity) const
{
   return GetAll<Endian>(itsVR, theBuffer, theCapacity);
}

template <TNEndian::EndianType Endian>
int VRAccessEndian<Endian>::GetINT32(INT32& theValue) const
{
   return GetOne<Endian>(itsVR, theValue);
}

template <TNEndian::EndianType Endian>
int VRAccessEndian<Endian>::GetUINT32(UINT32* theBuffer, unsigned int theCapacity) const
{
   return GetAll<Endian>(itsVR, theBuffer, theCapacity);
}

template <TNEndian::EndianType Endian>
int VRAccessEndian<Endian>::GetUINT32(UINT32& theValue) const
{
   return GetOne<Endian>(itsVR, theValue);
}

template <TNEndian::EndianType Endian>
int VRAccessEndian<Endian>::GetINT64(INT64* theBuffer, unsigned int theCapacity) const
{
   return GetAll<Endian>(itsVR, theBuffer, theCapacity);
}

template <TNEndian::EndianType Endian>
int VRAccessEndian<Endian>::GetINT64(INT64& theValue) const
{
   return GetOne<Endian>(itsVR, theValue);
}

template <TNEndian::EndianType Endian>
int VRAccessEndian<Endian>::GetUINT64(UINT64* theBuffer, unsigned int theCapacity) const
{
   return GetAll<Endian>(itsVR, theBuffer, theCapacity);
}

template <TNEndian::EndianType Endian>
int VRAccessEndian<Endian>::GetUINT64(UINT64& theValue) const
{
   return GetOne<Endian>(itsVR, theValue);
}

template <TNEndian::EndianType Endian>
int VRAccessEndian<Endian>::GetFLOAT(FLOAT* theBuffer, unsigned int theCapacity) const
{
   return GetAll<Endian>(itsVR, theBuffer, theCapacity);
}

template <TNEndian::EndianType Endian>
int VRAccessEndian<Endian>::GetFLOAT(FLOAT& theValue) const
{
   return GetOne<Endian>(itsVR, theValue);
}

template <TNEndian::EndianType Endian>
int VRAccessEndian<Endian>::GetDOUBLE(DOUBLE* theBuffer, unsigned int theCapacity) const
{
   return GetAll<Endian>(itsVR, theBuffer, theCapacity);
}

template <TNEndian::EndianType Endian>
int VRAccessEndian<Endian>::GetDOUBLE(DOUBLE& theValue) const
{
   return GetOne<Endian>(itsVR, theValue);
}

template <TNEndian::EndianType Endian>
int VRAccessEndian<Endian>::GetWords(UINT16* theBuffer, unsigned int theCapacity) const
{
   if (!GetAll<Endian>(itsVR, theBuffer, theCapacity))
   {
      return 0;
   }
   const UINT32 aLength = itsVR->GetLength();
   if (aLength & 1)
   {
      reinterpret_cast<unsigned char*>(theBuffer)[aLength - 1] = itsVR->GetData()[aLength - 1];
   }
   return 1;
}

template <TNEndian::EndianType Endian>
int VRAccessEndian<Endian>::GetWordsCopy(UINT16*& theWords) const
{
   if (itsVR == nullptr || itsVR->GetData() == nullptr)
   {
      return 0;
   }
   const UINT32 aLength = itsVR->GetLength();
   auto* aCopy = new (std::nothrow) UINT16[static_cast<std::size_t>(aLength) / 2 + (aLength & 1)];
   if (aCopy == nullptr)
   {
      return 0;
   }
   GetWords(aCopy, aLength);
   theWords = aCopy;
   return 1;
}

template <TNEndian::EndianType Endian>
int VRAccessEndian<Endian>::GetAttributeList(RWTValOrderedVector<MAttributeTag>& theTags) const
try
{
   if (itsVR == nullptr || itsVR->GetData() == nullptr)
   {
      return 0;
   }
   const unsigned char* aPlace = itsVR->GetData();
   const UINT32 aCount = itsVR->GetLength() / 4;
   theTags.clear();
   theTags.reserve(aCount);
   for (UINT32 i = 0; i < aCount; ++i, aPlace += 4)
   {
      theTags.emplace_back(TNEndian::Load<UINT16, Endian>(aPlace), TNEndian::Load<UINT16, Endian>(aPlace + 2));
   }
   return 1;
}
catch (const std::bad_alloc&)
{
   return 0;
}

template class VRAccessEndian<TNEndian::LittleEndian>;
template class VRAccessEndian<TNEndian::BigEndian>;
