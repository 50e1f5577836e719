#include "talvenor/dictionary/MPrivateDataDictionary.h"

MPrivateDataDictionary::MPrivateDataDictionary() : MDataDictionary(PrivateHashEntry, kPrivateBuckets) {}

MPrivateDataDictionary::MPrivateDataDictionary(std::istream& theStream, std::size_t theBuckets)
    : MDataDictionary(PrivateHashEntry, theStream, theBuckets)
{}

MPrivateDataDictionary::MPrivateDataDictionary(const RWCString& theFileName, std::size_t theBuckets)
    : MDataDictionary(PrivateHashEntry, theFileName, theBuckets)
{}

MPrivateDataDictionary::~MPrivateDataDictionary() = default;

const MDDEntry* MPrivateDataDictionary::Find(const MAttributeTag& theTag) const
{
   return FindListed(theTag.GetTag() & 0xFFFF00FF);
}

const MDDEntry* MPrivateDataDictionary::Find(UINT16 theElementOffset) const
{
   const int aGroup = GetPrivateBlockGroup();
   return aGroup < 0 ? nullptr : FindListed(static_cast<UINT32>(aGroup) << 16 | theElementOffset);
}
