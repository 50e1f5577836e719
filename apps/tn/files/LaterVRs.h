// The value representations that joined the standard after those that the library decodes: OD, OL, OV, SV, UC, UR and
// UV (PS3.5 6.2). In explicit VR they have a length of 32 bits, which the library takes for one of 16, and then reads
// the rest of the dataset as nonsense.
//
// Here such elements come out under the name of another representation whose header has the same form: texts as UT, the
// others as UN. Their bytes and lengths are those of the source.
#pragma once

#include <optional>

#include "apps/tn/files/DatasetSyntax.h"
#include "talvenor/file/Part10InputStream.h"

// The dataset that another stream delivers, from its first element on. What has a 16-bit length all the same, as the
// library writes it, stays as it is. Skips are those of the source, so that pixels are not read to be passed over.
//
// Throws StreamIOException for values of undefined length, and for numbers in big endian: as UN nobody would know how
// to turn them around.
class LaterVRStream : public InputStream
{
public:
   // Whether datasets in that syntax can have such elements.
   static bool IsNeeded(const DatasetSyntax& theSyntax)
   {
      return theSyntax.itsIsExplicit && theSyntax.itsPixels != DatasetSyntax::Pixels::Hidden;
   }

   // theSource is borrowed. What is in a syntax that does not need this passes as it is.
   LaterVRStream(InputStream& theSource, const DatasetSyntax& theSyntax);

   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override;
   unsigned int Skip(unsigned int theCount) override;

   // Of bytes that were just read and belong to one element's header.
   void Pushback(const unsigned char* theBytes, unsigned int theCount) override;
   unsigned int GetPushbackLimit() const override { return itsHeaderRead; }

   unsigned int GetStreamPosition() const override
   {
      return itsSource.GetStreamPosition() - (itsHeaderSize - itsHeaderRead);
   }
   void Close() override {}

private:
   // Does theAction, which returns how many bytes it took, on the parts of one kind among the next theCount bytes.
   template <class Action>
   unsigned int Pass(unsigned int theCount, Action theAction);

   bool NextHeader();
   bool Complete(unsigned int theSize);
   void TakeDelimiter();
   void TakeElement();
   void TakeUnknownContent();
   UINT32 Length32(unsigned int thePlace) const;

   InputStream& itsSource;
   bool itsIsLittleEndian;
   unsigned char itsHeader[12] = {}; // of the element that is being read
   unsigned int itsHeaderSize = 0;
   unsigned int itsHeaderRead = 0;   // how much of it has been delivered
   UINT64 itsValue = 0;              // bytes that follow it and are no elements
   bool itsIsInFragments = false;    // the items are pieces of pixel data
   unsigned int itsUnknownDepth = 0; // of sequences and items of undefined length in a UN, which are in implicit VR
};

// A source of DICOM files, made of one of the library's, whose datasets are read so.
template <class Source>
class WithLaterVRs : public Source
{
public:
   using Source::Source;

   // To be called once the header has been read, before anything is read of the dataset.
   void BeginDataset()
   {
      const DatasetSyntax aSyntax = SyntaxOf(this->GetTransferSyntaxUID());
      if (LaterVRStream::IsNeeded(aSyntax))
      {
         itsDataset.emplace(itsBytes, aSyntax);
      }
   }

   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override
   {
      return itsDataset ? itsDataset->Read(theBuffer, theCount) : Source::Read(theBuffer, theCount);
   }
   unsigned int Skip(unsigned int theCount) override
   {
      return itsDataset ? itsDataset->Skip(theCount) : Source::Skip(theCount);
   }
   void Pushback(const unsigned char* theBytes, unsigned int theCount) override
   {
      itsDataset ? itsDataset->Pushback(theBytes, theCount) : Source::Pushback(theBytes, theCount);
   }
   unsigned int GetStreamPosition() const override
   {
      return itsDataset ? itsDataset->GetStreamPosition() : Source::GetStreamPosition();
   }

private:
   class Bytes : public InputStream
   {
   public:
      explicit Bytes(WithLaterVRs& theFile) : itsFile(theFile) {}

      unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override
      {
         return itsFile.Source::Read(theBuffer, theCount);
      }
      unsigned int Skip(unsigned int theCount) override { return itsFile.Source::Skip(theCount); }
      unsigned int GetStreamPosition() const override { return itsFile.Source::GetStreamPosition(); }
      void Close() override {}

   private:
      WithLaterVRs& itsFile;
   };

   Bytes itsBytes{*this};
   std::optional<LaterVRStream> itsDataset;
};
