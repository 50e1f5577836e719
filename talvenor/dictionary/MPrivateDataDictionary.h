// The attributes of one private creator (PS3.5 7.8.1). All have one odd group; the element of an entry is its offset
// within the block, 00 to FF, because the block number differs from dataset to dataset. Its file is that of
// MDataDictionary with a `PrivateCreator = text` line before the entries.
#pragma once

#include "talvenor/dictionary/MDataDictionary.h"

class TALVENOR_API MPrivateDataDictionary : public MDataDictionary
{
public:
   static constexpr std::size_t kPrivateBuckets = 256;

   // Throw as the constructors of MDataDictionary do.
   MPrivateDataDictionary();
   explicit MPrivateDataDictionary(std::istream& theStream, std::size_t theBuckets = kPrivateBuckets);
   explicit MPrivateDataDictionary(const RWCString& theFileName, std::size_t theBuckets = kPrivateBuckets);
   MPrivateDataDictionary(const MPrivateDataDictionary&) = default;
   MPrivateDataDictionary& operator=(const MPrivateDataDictionary&) = default;
   ~MPrivateDataDictionary() override;

   // By the tag of an element in a dataset: its group and the low byte of its element. No group stands for another.
   const MDDEntry* Find(const MAttributeTag& theTag) const override;
   // By the offset within the block.
   virtual const MDDEntry* Find(UINT16 theElementOffset) const;
   // By name.
   using MDataDictionary::Find;

   using MDataDictionary::GetPrivateBlockGroup;
   using MDataDictionary::GetPrivateCreatorID;

   static unsigned int PrivateHashEntry(const MAttributeTag& theTag) { return theTag.Element() & 0xFFu; }
};
