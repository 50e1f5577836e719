// Fragments of encapsulated pixel data (PS3.5 A.4): a piece of a compressed codestream, or the basic offset table, in
// memory or still in a stream. Not locked.
#pragma once

#include <memory>

#include "talvenor/dataset/MemoryAllocater.h"
#include "talvenor/foundation/BasicTypes.h"

class EndianHandlingWriter;
class InputStream;

class TALVENOR_API PixelDataFragment
{
public:
   virtual ~PixelDataFragment();

   // Non-zero when the bytes come from a stream.
   virtual int IsStreamBuffered() const = 0;

   // Whether GetData can deliver the bytes now.
   virtual int CanGetData() const = 0;

   // The bytes, GetLength of them; they stay the fragment's. Null for an empty fragment.
   virtual const unsigned char* GetData() const = 0;
   virtual unsigned char* GetData() = 0;

   // Writes the bytes as they are.
   virtual void WriteData(EndianHandlingWriter& theWriter) = 0;

   UINT32 GetLength() const { return itsLength; }
   bool operator==(const PixelDataFragment& theOther) const { return itsLength == theOther.itsLength; }

protected:
   explicit PixelDataFragment(UINT32 theLength) : itsLength(theLength) {}
   PixelDataFragment(const PixelDataFragment&) = default;
   PixelDataFragment& operator=(const PixelDataFragment&) = default;

private:
   UINT32 itsLength;
};

// A fragment in memory.
class TALVENOR_API MemoryBufferedPixelDataFragment : public PixelDataFragment
{
public:
   // A buffer of unspecified content of its own.
   explicit MemoryBufferedPixelDataFragment(UINT32 theLength,
                                            MemoryAllocater& theAllocator = MemoryAllocater::GetDefault());

   // Takes theData, which came from theAllocator.
   MemoryBufferedPixelDataFragment(unsigned char* theData, UINT32 theLength,
                                   MemoryAllocater& theAllocator = MemoryAllocater::GetDefault());

   // Borrows theData, which must outlive the fragment.
   MemoryBufferedPixelDataFragment(UINT32 theLength, unsigned char* const& theData,
                                   MemoryAllocater& theAllocator = MemoryAllocater::GetDefault());

   // Deep; the copy owns its bytes.
   MemoryBufferedPixelDataFragment(const MemoryBufferedPixelDataFragment& theOther);
   MemoryBufferedPixelDataFragment& operator=(const MemoryBufferedPixelDataFragment&) = delete;
   ~MemoryBufferedPixelDataFragment() override;

   int IsStreamBuffered() const override { return 0; }
   int CanGetData() const override { return 1; }
   const unsigned char* GetData() const override { return itsData; }
   unsigned char* GetData() override { return itsData; }
   void WriteData(EndianHandlingWriter& theWriter) override;

private:
   unsigned char* itsData;
   MemoryAllocater& itsAllocator;
   bool itsOwnsData;
};

// A fragment whose bytes are read when they are asked for: once into memory, or straight through into a writer. After
// that passage they are gone, and asking for them throws StreamIOException.
class TALVENOR_API StreamBufferedPixelDataFragment : public PixelDataFragment
{
public:
   // theStream stands at the fragment's first byte. Borrowed in the reference form, owned in the pointer form.
   StreamBufferedPixelDataFragment(InputStream& theStream, UINT32 theLength,
                                   MemoryAllocater& theAllocator = MemoryAllocater::GetDefault());
   StreamBufferedPixelDataFragment(InputStream* theStream, UINT32 theLength,
                                   MemoryAllocater& theAllocator = MemoryAllocater::GetDefault());

   // Reads the bytes of theOther into memory, if they are not there, and copies them; throws when they are gone.
   StreamBufferedPixelDataFragment(const StreamBufferedPixelDataFragment& theOther);
   StreamBufferedPixelDataFragment& operator=(const StreamBufferedPixelDataFragment&) = delete;
   ~StreamBufferedPixelDataFragment() override;

   int IsStreamBuffered() const override { return 1; }
   int CanGetData() const override { return GetLength() == 0 || itsData != nullptr || !itsIsConsumed; }
   const unsigned char* GetData() const override;
   unsigned char* GetData() override;
   void WriteData(EndianHandlingWriter& theWriter) override;

private:
   void ReadIntoMemory() const;

   InputStream& itsStream;
   std::unique_ptr<InputStream> itsOwnedStream;
   MemoryAllocater& itsAllocator;
   mutable unsigned char* itsData = nullptr;
   mutable bool itsIsConsumed = false;
};
