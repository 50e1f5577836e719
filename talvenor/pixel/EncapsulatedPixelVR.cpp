#include "talvenor/pixel/EncapsulatedPixelVR.h"

#include <cstring>
#include <limits>
#include <string>

#include "talvenor/dictionary/VRType.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/io/EndianHandlingWriter.h"

namespace
{
constexpr UINT32 kItemHeaderSize = 8;
constexpr UINT32 kOffsetSize = 4;

[[noreturn]] void Throw(const std::string& theText)
{
   throw EncapsulatedPixelVR::EncapsulationException(theText.c_str());
}

PixelDataFragment* CopyOf(PixelDataFragment& theFragment)
{
   auto aCopy = std::make_unique<MemoryBufferedPixelDataFragment>(theFragment.GetLength());
   if (theFragment.GetLength() != 0)
   {
      std::memcpy(aCopy->GetData(), theFragment.GetData(), theFragment.GetLength());
   }
   return aCopy.release();
}

// The entries are read all at once: where that fails, the first one has failed already.
const unsigned char* ReadOffsetTable(PixelDataFragment& theTable)
{
   try
   {
      return theTable.GetData();
   }
   catch (const StreamIOException& aCause)
   {
      EncapsulatedPixelVR::EncapsulationException anException(
          "EncapsulatedPixelVR::GetFrameStartIndices: Error while reading basic item offset entry 0");
      anException.SetException(aCause);
      throw anException;
   }
}

bool HasSameBytes(PixelDataFragment& theOne, PixelDataFragment& theOther)
{
   return theOne == theOther &&
          (theOne.GetLength() == 0 || std::memcmp(theOne.GetData(), theOther.GetData(), theOne.GetLength()) == 0);
}
} // namespace

EncapsulatedPixelVR::EncapsulatedPixelVR(FragmentList* theFragments, MemoryAllocater& theAllocator)
    : VR(0x7FE0, 0x0010, TNEndian::LittleEndian, theAllocator), itsFragments(theFragments)
{
   SetLength(kUndefinedLength);
   SetTypeCode(VRCode::OB);
}

EncapsulatedPixelVR::EncapsulatedPixelVR(const EncapsulatedPixelVR& theOther)
    : EncapsulatedPixelVR(nullptr, theOther.GetMemoryAllocater())
{
   SetGroup(theOther.GetGroup());
   SetElement(theOther.GetElement());
   SetLength(theOther.GetLength());
   SetTypeCode(theOther.GetTypeCode());
   for (UINT32 anItem = 0; anItem < theOther.GetItemCount(); ++anItem)
   {
      AddItem(std::unique_ptr<PixelDataFragment>(CopyOf(*(*theOther.itsFragments)[anItem])));
   }
}

VR* EncapsulatedPixelVR::Copy() const
{
   return new EncapsulatedPixelVR(*this);
}

EncapsulatedPixelVR::~EncapsulatedPixelVR()
{
   EncapsulatedPixelVR::Reset();
}

int EncapsulatedPixelVR::ValueEquals(const VR& theOther) const
{
   const EncapsulatedPixelVR* const anOther = theOther.GetAsEncapsulatedPixelVR();
   if (anOther == nullptr || GetItemCount() != anOther->GetItemCount())
   {
      return 0;
   }
   for (UINT32 anItem = 0; anItem < GetItemCount(); ++anItem)
   {
      if (!HasSameBytes(*(*itsFragments)[anItem], *(*anOther->itsFragments)[anItem]))
      {
         return 0;
      }
   }
   return 1;
}

void EncapsulatedPixelVR::Reset()
{
   VR::Reset();
   if (itsFragments)
   {
      for (PixelDataFragment* aFragment : *itsFragments)
      {
         delete aFragment;
      }
      itsFragments.reset();
   }
   itsFrameStarts.clear();
   itsHasFrameStarts = false;
}

int EncapsulatedPixelVR::IsEmpty() const
{
   return GetFragmentCount() == 0;
}

void EncapsulatedPixelVR::AddItem(std::unique_ptr<PixelDataFragment> theItem)
{
   if (!itsFragments)
   {
      itsFragments = std::make_unique<FragmentList>();
      SetLength(kUndefinedLength); // Reset has forgotten it
   }
   itsFragments->push_back(theItem.get());
   theItem.release();
   itsHasFrameStarts = false;
}

UINT32 EncapsulatedPixelVR::GetItemCount() const
{
   return itsFragments ? static_cast<UINT32>(itsFragments->size()) : 0;
}

int EncapsulatedPixelVR::GetFragmentCount() const
{
   const UINT32 anItems = GetItemCount();
   return anItems != 0 ? static_cast<int>(anItems - 1) : 0;
}

PixelDataFragment& EncapsulatedPixelVR::GetFragment(int theIndex) const
{
   if (theIndex < 1 || theIndex > GetFragmentCount())
   {
      Throw("EncapsulatedPixelVR::GetFragment: Invalid fragment index passed to GetFragment " +
            std::to_string(theIndex));
   }
   return *(*itsFragments)[static_cast<size_t>(theIndex)];
}

const PixelDataFragment* EncapsulatedPixelVR::GetBasicOffsetTableItem() const
{
   return GetItemCount() != 0 ? itsFragments->front() : nullptr;
}

bool EncapsulatedPixelVR::HasBasicOffsetTable() const
{
   return GetItemCount() >= 3 && itsFragments->front()->GetLength() != 0;
}

UINT32 EncapsulatedPixelVR::GetBasicItemOffsetTableLength() const
{
   const int aFrames = GetFrameCount();
   return aFrames > 0 ? kOffsetSize * static_cast<UINT32>(aFrames) : 0;
}

int EncapsulatedPixelVR::GetFrameCount() const
{
   const UINT32 anItems = GetItemCount();
   if (anItems < 3)
   {
      return anItems == 2 ? 1 : 0;
   }
   const UINT32 aTableLength = itsFragments->front()->GetLength();
   return aTableLength != 0 ? static_cast<int>(aTableLength / kOffsetSize) : -1;
}

const EncapsulatedPixelVR::FrameStarts& EncapsulatedPixelVR::GetFrameStartIndices() const
{
   if (itsHasFrameStarts)
   {
      return itsFrameStarts;
   }
   const int aFrames = GetFrameCount();
   if (aFrames < 0)
   {
      throw StreamIOException("EncapsulatedPixelVR::GetFrameStartIndices(): frame count is unknown threrefor frame "
                              "indices are unknown",
                              TN_INTERNAL_ERROR, 0);
   }
   itsFrameStarts = aFrames == 1 ? FrameStarts{1} : ReadFrameStartIndices(aFrames);
   itsHasFrameStarts = true;
   return itsFrameStarts;
}

EncapsulatedPixelVR::FrameStarts EncapsulatedPixelVR::ReadFrameStartIndices(int theFrames) const
{
   FrameStarts aStarts;
   if (theFrames == 0)
   {
      return aStarts;
   }
   const unsigned char* const anOffsets = ReadOffsetTable(*itsFragments->front());
   INT32 aFragment = 1;
   UINT64 aSum = 0; // where the fragment starts
   UINT32 aPrevious = 0;
   for (int aFrame = 0; aFrame < theFrames; ++aFrame)
   {
      const UINT32 anOffset = LoadUINT32<TNEndian::LittleEndian>(anOffsets + static_cast<size_t>(aFrame) * kOffsetSize);
      if (aFrame == 0 && anOffset != 0)
      {
         Throw("Invalid non-zero offset (" + std::to_string(anOffset) + ") for entry 0");
      }
      if (aFrame > 0 && anOffset <= aPrevious)
      {
         Throw("EncapsulatedPixelVR::GetFrameStartIndices: Offset decreased while reading basic item offset entry " +
               std::to_string(aFrame));
      }
      while (aSum < anOffset && aFragment <= GetFragmentCount())
      {
         aSum += UINT64{kItemHeaderSize} + GetFragment(aFragment++).GetLength();
      }
      if (aSum != anOffset || aFragment > GetFragmentCount())
      {
         Throw("EncapsulatedPixelVR::GetFrameStartIndices: Offset doesn't match fragment lengths for basic item offset "
               "entry " +
               std::to_string(aFrame));
      }
      aStarts.push_back(aFragment);
      aPrevious = anOffset;
   }
   return aStarts;
}

int EncapsulatedPixelVR::GetFragmentCount(int theFrame) const
{
   if (!itsHasFrameStarts && !HasBasicOffsetTable())
   {
      return -1;
   }
   const FrameStarts& aStarts = GetFrameStartIndices();
   if (theFrame < 0 || static_cast<size_t>(theFrame) >= aStarts.size())
   {
      Throw("EncapsulatedPixelVR::GetFragmentCount: Invalid frame index passed to GetFragmentCount");
   }
   const auto aFrame = static_cast<size_t>(theFrame);
   const INT32 aNext = aFrame + 1 < aStarts.size() ? aStarts[aFrame + 1] : static_cast<INT32>(GetItemCount());
   return aNext - aStarts[aFrame];
}

void EncapsulatedPixelVR::ReplaceBasicOffsetTable(PixelDataFragment* theTable)
{
   std::unique_ptr<PixelDataFragment> aTable(theTable);
   itsHasFrameStarts = false;
   if (GetItemCount() == 0)
   {
      AddItem(std::move(aTable));
      return;
   }
   delete std::exchange(itsFragments->front(), aTable.release());
}

void EncapsulatedPixelVR::WriteBasicItemOffsetTableData(EndianHandlingWriter& theWriter) const
{
   if (!itsFragments)
   {
      Throw("EncapsulatedPixelVR::WriteBasicItemOffsetTableData:itsFragments == null");
   }
   const int aFrames = GetFrameCount();
   if (aFrames > 1)
   {
      WriteBasicItemOffsetTableData(theWriter, *itsFragments, GetFrameStartIndices());
   }
   else if (aFrames == 1)
   {
      theWriter.Write(UINT32{0});
   }
}

void EncapsulatedPixelVR::WriteBasicItemOffsetTableData(EndianHandlingWriter& theWriter,
                                                        const FragmentList& theFragments, const FrameStarts& theStarts)
{
   if (theWriter.GetEndian() != TNEndian::LittleEndian)
   {
      throw StreamIOException("EncapsulatedPixelVR::WriteBasicItemOffsetTableData(): Basic item offset table must be "
                              "encoded as little-endian but you supplied a big-endian writer",
                              TN_INVALID_ENCODING, 0);
   }
   UINT64 anOffset = 0;
   INT32 aFragment = theStarts.empty() ? 0 : theStarts.front();
   for (const INT32 aStart : theStarts)
   {
      if (aFragment < 0 || aStart < aFragment || static_cast<size_t>(aStart) >= theFragments.size())
      {
         Throw("EncapsulatedPixelVR::WriteBasicItemOffsetTableData: no fragment " + std::to_string(aStart));
      }
      for (; aFragment < aStart; ++aFragment)
      {
         anOffset += UINT64{kItemHeaderSize} + theFragments[static_cast<size_t>(aFragment)]->GetLength();
      }
      if (anOffset > std::numeric_limits<UINT32>::max())
      {
         Throw("EncapsulatedPixelVR::WriteBasicItemOffsetTableData: offset beyond 32 bits");
      }
      theWriter.Write(static_cast<UINT32>(anOffset));
   }
}

void EncapsulatedPixelVR::WriteFragmentData(EndianHandlingWriter& theWriter, int theIndex) const
{
   GetFragment(theIndex).WriteData(theWriter);
}
