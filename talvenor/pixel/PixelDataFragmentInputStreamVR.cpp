#include "talvenor/pixel/PixelDataFragmentInputStreamVR.h"

#include <string>

#include "talvenor/dataset/AllocatedBytes.h"
#include "talvenor/foundation/Exceptions.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/io/EndianHandlingReader.h"
#include "talvenor/io/SeekTo.h"
#include "talvenor/pixel/EncapsulatedPixelVR.h"
#include "talvenor/pixel/PixelDataFragmentInputStream.h"
#include "talvenor/transfer/ElementHeader.h"

namespace
{
[[noreturn]] void ThrowDelimiter(const std::string& theText)
{
   throw StreamIOException(theText.c_str(), TN_INVALID_DELIMITER, 0);
}

// Item header: tag and length, PS3.5 A.4.
ElementHeader ReadItemHeader(EndianHandlingReader& theReader)
{
   unsigned char aBytes[8];
   unsigned int aCount = 0;
   try
   {
      aCount = theReader.ReadFully(aBytes, sizeof aBytes);
   }
   catch (const StreamIOException& aCause)
   {
      StreamIOException anException("Error or EOF while reading encapsulation delimiter", TN_INVALID_DELIMITER,
                                    aCause.GetSystemErrorCode());
      anException.SetException(aCause);
      throw anException;
   }
   if (aCount != sizeof aBytes)
   {
      ThrowDelimiter("Error or EOF while reading encapsulation delimiter");
   }
   ElementHeader aHeader;
   aHeader.itsGroup = LoadUINT16<TNEndian::LittleEndian>(aBytes);
   aHeader.itsElement = LoadUINT16<TNEndian::LittleEndian>(aBytes + 2);
   aHeader.itsLength = LoadUINT32<TNEndian::LittleEndian>(aBytes + 4);
   return aHeader;
}

std::string TagText(const ElementHeader& theHeader)
{
   return MAttributeTag(theHeader.itsGroup, theHeader.itsElement).AsNumericString();
}
} // namespace

PixelDataFragmentInputStreamVR::PixelDataFragmentInputStreamVR(EndianHandlingReader& theReader, UINT32 theLength,
                                                               UINT16 theTypeCode, MemoryAllocater& theAllocator)
    : VR(0x7FE0, 0x0010, theReader.GetEndian(), theAllocator), itsReader(theReader)
{
   if (theReader.GetEndian() != TNEndian::LittleEndian)
   {
      throw ConstructorError("Attempt to construct encapsulated PixelDataFragmentInputStreamVR with syntax other than "
                             "Little endian");
   }
   SetLength(theLength);
   SetTypeCode(theTypeCode);
}

PixelDataFragmentInputStream* PixelDataFragmentInputStreamVR::NextFragment()
{
   if (itsHasEnded)
   {
      return nullptr;
   }
   itsHasBegun = true;
   const ElementHeader aHeader = ReadItemHeader(itsReader);
   if (aHeader.itsGroup != ElementHeader::kDelimiterGroup)
   {
      ThrowDelimiter("Unexpected attribute - expected encapsulation delimiter (fffe, e000) or (fffe, e0dd) but got " +
                     TagText(aHeader) + ")");
   }
   if (aHeader.GetTag() == ElementHeader::kSequenceDelimitation)
   {
      itsHasEnded = true;
      if (aHeader.itsLength != 0)
      {
         ThrowDelimiter("Encapsulation end delimiter (fffe, e0dd) has non-zero length (length should be 0)");
      }
      return nullptr;
   }
   if (aHeader.GetTag() != ElementHeader::kItem)
   {
      ThrowDelimiter("Unexpected attribute - expected encapsulation start-of-fragment delimiter (fffe, e000) but got " +
                     TagText(aHeader) + ")");
   }
   return new PixelDataFragmentInputStream(itsReader, aHeader.itsLength);
}

void PixelDataFragmentInputStreamVR::SkipToEOF()
{
   while (const std::unique_ptr<PixelDataFragmentInputStream> aFragment{NextFragment()})
   {
      aFragment->Skip(aFragment->GetLength()); // a stream that ends here has no delimiter either
   }
}

EncapsulatedPixelVR* PixelDataFragmentInputStreamVR::GetVR()
{
   std::exception_ptr aFailure;
   std::unique_ptr<VR> aVR = Materialise(aFailure);
   if (aFailure)
   {
      std::rethrow_exception(aFailure);
   }
   return aVR ? aVR.release()->GetAsEncapsulatedPixelVR() : nullptr;
}

std::unique_ptr<VR> PixelDataFragmentInputStreamVR::Materialise(std::exception_ptr& theFailure)
{
   if (itsHasBegun)
   {
      return nullptr; // the first of the remaining items would pass for the offset table
   }
   auto aVR = std::make_unique<EncapsulatedPixelVR>(nullptr, GetMemoryAllocater());
   try
   {
      while (const std::unique_ptr<PixelDataFragmentInputStream> anItem{NextFragment()})
      {
         AllocatedBytes aBytes(nullptr, FreeThrough{&GetMemoryAllocater()});
         if (ReadAllocatedBytes(*anItem, anItem->GetLength(), GetMemoryAllocater(), aBytes) != anItem->GetLength())
         {
            const std::string aText =
                "EOF encountered while reading data in encapsulation fragment " + std::to_string(aVR->GetItemCount());
            throw StreamIOException(aText.c_str(), TN_END_OF_FILE, 0);
         }
         auto aFragment =
             std::make_unique<MemoryBufferedPixelDataFragment>(aBytes.get(), anItem->GetLength(), GetMemoryAllocater());
         aBytes.release();
         aVR->AddItem(std::move(aFragment));
      }
   }
   catch (...)
   {
      theFailure = std::current_exception();
   }
   return aVR;
}

void PixelDataFragmentInputStreamVR::Seek(unsigned int)
{
   throw StreamIOException("PixelDataFragmentInputStreamVR does not support Seek(size_t)", TN_UNSUPPORTED, 0);
}

int PixelDataFragmentInputStreamVR::CanSeekToItem() const
{
   return itsReader.CanSeek();
}

unsigned int PixelDataFragmentInputStreamVR::GetItemPosition() const
{
   return itsReader.GetStreamPosition();
}

void PixelDataFragmentInputStreamVR::SeekToItem(unsigned int thePosition, UINT32 theDistance)
{
   SeekTo(itsReader, UINT64{thePosition} + theDistance);
   itsHasBegun = true;
   itsHasEnded = false;
}
