// A sequence of items (VR SQ, PS3.5 7.5): an element whose value is a list of datasets, which it owns. It has no value
// bytes; its length field is 0. Not locked: the dataset that holds it guards it.
#pragma once

#include "talvenor/dataset/VR.h"

class DICOMDataObject;

class TALVENOR_API SequenceVR : public VR
{
public:
   using Items = RWTValOrderedVector<DICOMDataObject*>;

   // Typed SQ from construction.
   explicit SequenceVR(TNEndian::EndianType theEndian = TNEndian::LittleEndian,
                       MemoryAllocater& theAllocator = GetDefaultMemoryAllocater());
   explicit SequenceVR(const MAttributeTag& theTag, TNEndian::EndianType theEndian = TNEndian::LittleEndian,
                       MemoryAllocater& theAllocator = GetDefaultMemoryAllocater());
   SequenceVR(UINT16 theGroup, UINT16 theElement, TNEndian::EndianType theEndian = TNEndian::LittleEndian,
              MemoryAllocater& theAllocator = GetDefaultMemoryAllocater());

   // Deep: every item is copied. An assignment that runs out of memory leaves the sequence as it was; the source may
   // stand in one of the items that it replaces.
   SequenceVR(const SequenceVR& theOther);
   SequenceVR& operator=(const SequenceVR& theOther);

   VR* Copy() const override;
   ~SequenceVR() override;
   int ValueEquals(const VR& theOther) const override; // a sequence without a list differs from one with an empty list
   void Reset() override;
   int IsEmpty() const override; // no list or no items
   const SequenceVR* GetAsSequenceVR() const override { return this; }
   SequenceVR* GetAsSequenceVR() override { return this; }

   // Appends theItem, which the sequence then owns, and returns 1. Returns 0, and the caller keeps the item, when the
   // type code is no longer SQ.
   int AddSequenceItem(DICOMDataObject* theItem);

   // The list itself, null until there is an item; callers may read, change or build it (with new). A null item may
   // stand in it. The sequence owns the list and the items.
   Items*& GetSequenceArray() { return itsItems; }
   const Items* GetSequenceArray() const { return itsItems; }

private:
   Items* itsItems = nullptr;
};
