// Makes typed elements from native values: stores them in one byte order, types them by the dictionary and refuses a
// kind of value that does not fit the attribute. Used by iterators, datasets and message builders, one instance each;
// not locked.
//
// Each operation returns a new element that the caller owns. theEntry, when given, is the dictionary entry to type by;
// otherwise the factory's dictionary is asked, and a tag that it does not know stays untyped. A kind of value that does
// not fit the type throws VRTypingError. Without the typing check nothing is typed and nothing refused; UIDs and
// sequences have their type always.
#pragma once

#include <cstddef>
#include <memory>

#include "talvenor/dataset/MemoryAllocater.h"
#include "talvenor/foundation/BasicTypes.h"
#include "talvenor/io/TNEndian.h"

class InstanceSpecificDataDictionary;
class MAttributeTag;
class MDDEntry;
class SequenceVR;
class UID;
class VR;
struct MVRFactoryOperation; // a row of the table of operations

class TALVENOR_API MVRFactory
{
public:
   // The dictionary and the allocators are borrowed and must outlive the factory. thePixelAllocator serves (7FE0,0010).
   explicit MVRFactory(TNEndian::EndianType theEndian, bool theTypingCheck = true,
                       const InstanceSpecificDataDictionary* theDictionary = nullptr,
                       MemoryAllocater& theAllocator = MemoryAllocater::GetDefault(),
                       MemoryAllocater& thePixelAllocator = MemoryAllocater::GetDefault());

   VR* InternalGetVR(UINT16 theGroup, UINT16 theElement, UINT16 theValue, const MDDEntry* theEntry = nullptr) const;
   VR* InternalGetVR(UINT16 theGroup, UINT16 theElement, UINT32 theValue, const MDDEntry* theEntry = nullptr) const;

   // Texts: an odd length is completed with thePad, with NUL when the type is UI.
   VR* InternalGetVR(UINT16 theGroup, UINT16 theElement, const RWCString& theText, char thePad,
                     const MDDEntry* theEntry = nullptr) const;
   VR* InternalGetVR(UINT16 theGroup, UINT16 theElement, const UID& theUID, const MDDEntry* theEntry = nullptr) const;
   VR* InternalGetVR(UINT16 theGroup, UINT16 theElement, const RWTValOrderedVector<RWCString>& theTexts, char thePad,
                     const MDDEntry* theEntry = nullptr) const;
   VR* InternalGetVR(UINT16 theGroup, UINT16 theElement, RWTValOrderedVector<MAttributeTag>& theTags,
                     const MDDEntry* theEntry = nullptr) const;

   // Bytes, words or floats that already stand in the factory's byte order; copied.
   VR* InternalGetVR(UINT16 theGroup, UINT16 theElement, const unsigned char* theBytes, std::size_t theLength,
                     char thePad, const MDDEntry* theEntry = nullptr) const;

   // An empty sequence.
   SequenceVR* InternalGetSequenceVR(UINT16 theGroup, UINT16 theElement, const MDDEntry* theEntry = nullptr) const;

   // A private attribute by creator and name; VRAttributeNotFoundException when no private dictionary has it. The
   // element number is the entry's: placing it into a block is the dataset's work.
   VR* GetPrivateVR(const RWCString& theCreator, const RWCString& theName, UINT16 theValue) const;

   TNEndian::EndianType GetEndian() const { return itsEndian; }

private:
   std::unique_ptr<VR> MakeTyped(const MVRFactoryOperation& theOperation, UINT16 theGroup, UINT16 theElement,
                                 const MDDEntry* theEntry) const;
   VR* MakeText(const MVRFactoryOperation& theOperation, UINT16 theGroup, UINT16 theElement, const RWCString& theText,
                char thePad, const MDDEntry* theEntry) const;
   void Type(const MVRFactoryOperation& theOperation, VR& theVR, const MDDEntry* theEntry) const;
   const InstanceSpecificDataDictionary& GetDictionary() const;
   MemoryAllocater& AllocaterFor(UINT16 theGroup, UINT16 theElement) const;

   TNEndian::EndianType itsEndian;
   bool itsTypingCheck;
   const InstanceSpecificDataDictionary* itsDictionary; // null: the process-wide default one
   MemoryAllocater& itsAllocator;
   MemoryAllocater& itsPixelAllocator;
};
