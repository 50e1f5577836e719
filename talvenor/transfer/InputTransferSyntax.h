// A decoder: turns a byte stream into data elements, one a call, without ever holding the dataset (PS3.5 section 7).
// Sequences, items and pixel data come as elements whose value is still in the stream: VRInputStreamVR,
// DICOMDataObjectInputStreamVR, PixelInputStreamVR, PixelDataFragmentInputStreamVR. A dataset reads them when they are
// pushed; a host may read them piece by piece instead, and must have done with one before it asks for the next element.
//
// The decoder takes exactly the bytes of the elements that it returned from the stream, no more. It, the elements that
// it returned and the decoders inside them share the stream and belong to one thread at a time. They must not outlive
// the decoder that they come from.
//
// Failures throw StreamIOException; the position in the stream is then undefined and the dataset is to be abandoned.
// Sequences nested deeper than kMaximumDepth are refused, which bounds the recursion of everything that walks a
// dataset.
#pragma once

#include <memory>
#include <string>

#include "talvenor/io/EndianHandlingReader.h"
#include "talvenor/io/InputStream.h"
#include "talvenor/transfer/TransferSyntax.h"
#include "talvenor/transfer/VRInputStream.h"

class BoundedInputStream;
class VR;

class TALVENOR_API InputTransferSyntax : public TransferSyntax, public VRInputStream
{
public:
   static constexpr unsigned int kMaximumDepth = 256;

   // Why NextVR returned null.
   enum LevelEnd
   {
      NotEnded,
      AtEndOfStream, // nothing left in the stream, or in the defined length of the level
      AtDelimiter,   // an item or sequence delimiter (PS3.5 7.5)
      AtPadding,     // data set trailing padding (FFFC,FFFC), PS3.10 7.2
      AtStopLimit
   };

   ~InputTransferSyntax() override;
   InputTransferSyntax(const InputTransferSyntax&) = delete;
   InputTransferSyntax& operator=(const InputTransferSyntax&) = delete;

   InputStream& GetStream() const { return itsStream; }

   // The element at which to stop: one whose group is at least theGroup (0 for no limit) and whose element number is at
   // least theElement, whatever its group. Its tag has been taken from the stream then (in implicit VR its length too).
   // Decoders of sequences and items have no limit.
   void SetStopAtGroup(UINT16 theGroup) { itsStopAtGroup = theGroup; }
   UINT16 GetStopAtGroup() const { return itsStopAtGroup; }
   void SetStopAtElement(UINT16 theElement) { itsStopAtElement = theElement; }
   UINT16 GetStopAtElement() const { return itsStopAtElement; }
   int IsAtStopAtLimit() const { return itsLevelEnd == AtStopLimit; }

   LevelEnd GetLevelEnd() const { return itsLevelEnd; }

   // An addition for a host that walks a dataset without keeping it, in constant memory: values longer than theBytes
   // are passed over, in the sequences of this dataset, too. Their elements come with their length, but without data.
   void SetLongestValue(UINT32 theBytes) { itsRoot->itsLongestValue = theBytes; }

   // An addition for a host that keeps the dataset of somebody whom it does not trust: an element or item takes eight
   // bytes in the stream, and up to 200 in memory. More of them, at all levels together, are a failure. Without limit
   // at first.
   void SetMostElements(UINT64 theCount) { itsRoot->itsElementsLeft = theCount; }

   // Whether a sequence or an item of this dataset ended only because the stream did: a delimiter or a part of the
   // stated length is missing. Decoding goes on quietly then, as the data that is there is good; a host that must know
   // whether it has the whole asks the outermost decoder.
   bool IsCut() const { return itsRoot->itsIsCut; }

   // Where the first such cut or, if there was one, the failure is: the chain of sequences with item numbers from 0, as
   // "/0008,1115[0]/0008,1199[2]". Empty at the top level of the dataset.
   const RWCString& GetFaultPath() const { return itsRoot->itsFaultPath; }

   // The items that NextVR has returned at this level. At the top level of a dataset there should be none: their
   // contents were meant for a sequence whose header is missing.
   UINT32 GetItemCount() const { return itsItemCount; }

protected:
   // theStream is borrowed in the reference form and owned in the pointer form.
   explicit InputTransferSyntax(InputStream& theStream);
   explicit InputTransferSyntax(InputStream* theStream);

   virtual EndianHandlingReader& GetEndianHandlingReader() = 0;

   void SetAtStopAtLimit(int theFlag) { itsLevelEnd = theFlag ? AtStopLimit : NotEnded; }

private:
   template <class>
   friend class ElementDecoder;
   friend class DICOMDataObjectInputStreamVR; // notes what it finds between the items

   // A decoder for the content of a sequence or, with theTag kItem, of an item: on this stream, or on a window of
   // theLength bytes of it.
   std::unique_ptr<InputTransferSyntax> MakeContentDecoder(const TransferSyntaxType& theType, UINT32 theTag,
                                                           UINT32 theLength);

   // The stream-valued element for (7FE0,0010), of undefined length (encapsulated) or defined.
   VR* MakePixelElement(UINT32 theLength, UINT16 theTypeCode);

   // Takes one of the elements that may come.
   void CountElement()
   {
      if (itsRoot->itsElementsLeft-- == 0)
      {
         FailForElements();
      }
   }
   [[noreturn]] void FailForElements();

   // Notes why this level ends. The rest of a level that ends before its stated length is skipped.
   void EndLevel(LevelEnd theEnd);
   bool IsEndedShort() const;
   void NoteFault();
   RWCString GetPath() const;

   InputStream& itsStream;
   std::unique_ptr<InputStream> itsOwnedStream;
   std::unique_ptr<VR> itsPushback;
   UINT16 itsStopAtGroup = 0;
   UINT16 itsStopAtElement = 0;
   LevelEnd itsLevelEnd = NotEnded;

   // The place of this level in the dataset.
   InputTransferSyntax* itsRoot = this;           // the outermost decoder
   const InputTransferSyntax* itsOuter = nullptr; // the one around this level
   BoundedInputStream* itsWindow = nullptr;       // the nearest window at or around this level
   UINT32 itsTag = 0;                             // of the sequence or item whose content this is
   UINT32 itsItemNumber = 0;                      // of this item in its sequence
   UINT32 itsItemCount = 0;                       // items met at this level
   UINT16 itsDepth = 0;                           // content decoders around this one
   bool itsHasOwnWindow = false;                  // a level of defined length
   bool itsIsShortened = false;                   // its defined length is longer than what is around it

   // Of the outermost decoder only.
   UINT32 itsLongestValue = 0xFFFFFFFF; // bytes
   UINT64 itsElementsLeft = ~UINT64{0}; // that may come
   bool itsIsCut = false;
   RWCString itsFaultPath;
};
