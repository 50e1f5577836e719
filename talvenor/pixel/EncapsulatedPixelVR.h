// Encapsulated pixel data in memory (PS3.5 A.4): (7FE0,0010) as a list of items, the basic offset table first, then the
// fragments of the compressed frames. It has no value bytes of its own; its fragments hold them, little endian.
//
// Indices: fragments count from 1, entry 0 of the list being the offset table; frames count from 0.
// Failures throw EncapsulationException unless said otherwise. Not locked: the dataset that holds it guards it.
#pragma once

#include <memory>
#include <vector>

#include "talvenor/dataset/VR.h"
#include "talvenor/foundation/ExceptionBase.h"
#include "talvenor/pixel/PixelDataFragment.h"

class EndianHandlingWriter;

class TALVENOR_API EncapsulatedPixelVR : public VR
{
public:
   class TALVENOR_API EncapsulationException : public ConcreteException<EncapsulationException, TalvenorException>
   {
   public:
      static constexpr char kTypeName[] = "EncapsulatedPixelVR::EncapsulationException";

      explicit EncapsulationException(const char* theMessage) : ConcreteException(theMessage) {}
   };

   using FragmentList = RWTValOrderedVector<PixelDataFragment*>;
   using FrameStarts = RWTValOrderedVector<INT32>;

   // Takes the list and its fragments; null for none yet.
   explicit EncapsulatedPixelVR(FragmentList* theFragments,
                                MemoryAllocater& theAllocator = GetDefaultMemoryAllocater());

   // Deep: fragments that are still in a stream are read first.
   EncapsulatedPixelVR(const EncapsulatedPixelVR& theOther);
   EncapsulatedPixelVR& operator=(const EncapsulatedPixelVR&) = delete;
   VR* Copy() const override;
   ~EncapsulatedPixelVR() override;

   int ValueEquals(const VR& theOther) const override; // the same fragments, byte for byte
   void Reset() override;
   int IsEmpty() const override; // no fragment
   EncapsulatedPixelVR* GetAsEncapsulatedPixelVR() override { return this; }
   using VR::GetAsEncapsulatedPixelVR;
   TNEndian::EndianType GetDataEndian() const override { return TNEndian::LittleEndian; }

   // Appends an item: the offset table first, then the fragments.
   void AddItem(std::unique_ptr<PixelDataFragment> theItem);

   // The number of items, the offset table included.
   UINT32 GetItemCount() const;

   // The number of fragments, the offset table not included.
   int GetFragmentCount() const;
   PixelDataFragment& GetFragment(int theIndex) const;

   // The item of the offset table, null without a list.
   const PixelDataFragment* GetBasicOffsetTableItem() const;

   // Whether there is an offset table with entries, and fragments for them: at least two.
   bool HasBasicOffsetTable() const;

   // In bytes, as it is written: 4 for each frame, 0 when the number of frames is not known.
   UINT32 GetBasicItemOffsetTableLength() const;
   static UINT32 GetEncodedBasicItemOffsetTableSize(UINT32 theFrames) { return 4 * theFrames + 8; }

   // 1 for a single fragment, else as the offset table says; -1 when that is empty.
   int GetFrameCount() const;

   // The index of the first fragment of each frame. Throws StreamIOException when the number of frames is not known,
   // and EncapsulationException when the offset table does not fit the fragments. Computed once.
   const FrameStarts& GetFrameStartIndices() const;

   // The number of fragments of a frame, -1 while it is not known.
   int GetFragmentCount(int theFrame) const;

   // Takes theTable and destroys the one there was.
   void ReplaceBasicOffsetTable(PixelDataFragment* theTable);

   // Writes the entries of an offset table that fits the fragments (not its item header), and the bytes of a fragment.
   // The static form takes both: the list with the item of the table in front, the starts in ascending order. Throws
   // also for a start that is no index of the list, and StreamIOException when theWriter is big endian.
   void WriteBasicItemOffsetTableData(EndianHandlingWriter& theWriter) const;
   static void WriteBasicItemOffsetTableData(EndianHandlingWriter& theWriter, const FragmentList& theFragments,
                                             const FrameStarts& theStarts);
   void WriteFragmentData(EndianHandlingWriter& theWriter, int theIndex) const;

private:
   FrameStarts ReadFrameStartIndices(int theFrames) const;

   std::unique_ptr<FragmentList> itsFragments;
   mutable FrameStarts itsFrameStarts;
   mutable bool itsHasFrameStarts = false;
};
