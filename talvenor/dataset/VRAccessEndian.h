// The two accessors. Which one reads an element rightly is decided by the byte order in which its value is stored
// (VR::GetDataEndian); a dataset uses the one of its own byte order.
#pragma once

#include "talvenor/dataset/VRAccess.h"

template <TNEndian::EndianType Endian>
class TALVENOR_API VRAccessEndian : public VRAccess
{
public:
   using VRAccess::VRAccess;
   using VRAccess::operator=;

   int GetINT16(INT16* theBuffer, unsigned int theCapacity) const override;
   int GetINT16(INT16& theValue) const override;
   int GetUINT16(UINT16* theBuffer, unsigned int theCapacity) const override;
   int GetUINT16(UINT16& theValue) const override;
   int GetINT32(INT32* theBuffer, unsigned int theCapacity) const override;
   int GetINT32(INT32& theValue) const override;
   int GetUINT32(UINT32* theBuffer, unsigned int theCapacity) const override;
   int GetUINT32(UINT32& theValue) const override;
   int GetINT64(INT64* theBuffer, unsigned int theCapacity) const override;
   int GetINT64(INT64& theValue) const override;
   int GetUINT64(UINT64* theBuffer, unsigned int theCapacity) const override;
   int GetUINT64(UINT64& theValue) const override;
   int GetFLOAT(FLOAT* theBuffer, unsigned int theCapacity) const override;
   int GetFLOAT(FLOAT& theValue) const override;
   int GetDOUBLE(DOUBLE* theBuffer, unsigned int theCapacity) const override;
   int GetDOUBLE(DOUBLE& theValue) const override;
   int GetWords(UINT16* theBuffer, unsigned int theCapacity) const override;
   int GetWordsCopy(UINT16*& theWords) const override;
   int GetAttributeList(RWTValOrderedVector<MAttributeTag>& theTags) const override;
   TNEndian::EndianType GetEndian() const override { return Endian; }
};

extern template class VRAccessEndian<TNEndian::LittleEndian>;
extern template class VRAccessEndian<TNEndian::BigEndian>;

class TALVENOR_API VRAccessLE : public VRAccessEndian<TNEndian::LittleEndian>
{
public:
   using VRAccessEndian::VRAccessEndian;
   using VRAccessEndian::operator=;
};

class TALVENOR_API VRAccessBE : public VRAccessEndian<TNEndian::BigEndian>
{
public:
   using VRAccessEndian::VRAccessEndian;
   using VRAccessEndian::operator=;
};
