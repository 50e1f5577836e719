// An encoder: writes datasets and single elements to a byte stream (PS3.5 section 7). Elements come from memory or,
// with the value still in a stream, straight from a decoder; the latter are copied block by block, never held, so that
// a dataset of any size passes from a file or a peer to another in constant memory. Byte orders and the forms of
// headers are converted on the way.
//
// Odd lengths are padded to even ones (PS3.5 6.2). Sequences and items in memory go out with undefined length. Those
// read from a stream keep undefined lengths, and defined ones as what their content turns out to have; very long ones,
// and those that change between explicit and implicit VR, become undefined.
//
// What no dataset may hold is not written: elements of the groups 0001, 0003, 0005, 0007 and FFFF, a private creator
// that was written before for the group, and private elements whose creator was not written (PS3.5 7.8.1). Each item
// counts for itself.
//
// Failures throw StreamIOException; bytes already written stay written and the output is to be abandoned. An encoder
// belongs to one thread at a time.
#pragma once

#include <memory>
#include <unordered_set>

#include "talvenor/dictionary/PrivateAllocation.h"
#include "talvenor/io/EndianHandlingWriter.h"
#include "talvenor/transfer/DICOMObjectOutputStream.h"
#include "talvenor/transfer/TransferSyntax.h"
#include "talvenor/transfer/VROutputStream.h"

class EncapsulatedPixelVR;
class EncapsulationFragmentWriter;
class LengthPatchingOutputStream;
class PixelDataFragmentInputStreamVR;
class PixelInputStreamVR;
struct HeaderBytes;

class TALVENOR_API OutputTransferSyntax : public TransferSyntax, public DICOMObjectOutputStream, public VROutputStream
{
public:
   // Accepts and discards everything; an encoder over it writes every element, odd groups too. Without state, shared by
   // all threads.
   static OutputStream& NullOutputStream;

   ~OutputTransferSyntax() override;

   // The encoder itself where it can write encapsulated pixel data fragment by fragment, null otherwise.
   virtual EncapsulationFragmentWriter* GetEncapsulationFragmentWriter();

   using VROutputStream::SaveVR;
   void SaveVR(VR* theVR) override;

   // Additions: the number of elements that this encoder and those of its items left out, and the stream.
   UINT32 GetLeftOutCount() const { return itsLeftOutCount; }
   OutputStream& GetStream() const { return itsStream; }

protected:
   virtual EndianHandlingWriter& GetEndianHandlingWriter() = 0;

   // A new encoder of the same class over another stream, owned by the caller, with a default dictionary and without
   // written private creators.
   virtual OutputTransferSyntax* Clone(OutputStream& theStream) const = 0;

   // That of the stream: the size of the blocks in which values are copied.
   virtual unsigned int GetMaximumOutputBlockSize() const;

   // theStream is borrowed and must outlive the encoder. A copy writes to the same stream, shares the dictionary and
   // knows the private creators that were written. It counts anew what is left out.
   explicit OutputTransferSyntax(OutputStream& theStream) : itsStream(theStream) {}
   OutputTransferSyntax(const OutputTransferSyntax& theOther);
   OutputTransferSyntax& operator=(const OutputTransferSyntax&) = delete;

   // An item or a delimiter (PS3.5 7.5). theTag is one of group FFFE.
   void WriteItemHeader(OutputStream& theStream, UINT32 theTag, UINT32 theLength);

private:
   template <class>
   friend class ElementEncoder;
   friend class DICOMDirUtilities; // writes a directory's records item by item

   struct HashAllocation
   {
      std::size_t operator()(const PrivateAllocation& theAllocation) const { return theAllocation.hash(); }
   };

   // Whether the element of an odd group is to be written; theTag becomes the tag under which. One that is not is
   // drained if its value is in a stream.
   bool PassesGroupFilter(VR& theVR, UINT32& theTag);
   bool IsWrittenOddGroup(const VR& theVR, UINT32& theTag);
   bool IsWrittenCreator(const VR& theVR, UINT32& theTag);
   OutputTransferSyntax& GetNullEncoder();

   // An encoder for the content of an item that goes to theStream.
   std::unique_ptr<OutputTransferSyntax> CloneForItem(OutputStream& theStream, LengthPatchingOutputStream* thePatcher);

   HeaderBytes MakeItemHeader(UINT32 theTag, UINT32 theLength);

   // The values of the stream elements and of encapsulated pixel data, behind their headers. Texts begin with
   // thePrefix.
   void CopyPixelData(PixelInputStreamVR& thePixels, const char* thePrefix);
   void CopyFragments(PixelDataFragmentInputStreamVR& thePixels, const char* thePrefix);
   void WriteFragments(const EncapsulatedPixelVR& thePixels);

   OutputStream& itsStream;
   std::unordered_set<PrivateAllocation, HashAllocation> itsWrittenAllocations;
   std::unique_ptr<OutputTransferSyntax> itsNullEncoder; // null until something is drained

   UINT32 itsLeftOutCount = 0;
   OutputTransferSyntax* itsRoot = this; // the encoder that counts, the outermost one

   // Where the defined lengths around this item are settled; null when none is.
   LengthPatchingOutputStream* itsPatcher = nullptr;
};
