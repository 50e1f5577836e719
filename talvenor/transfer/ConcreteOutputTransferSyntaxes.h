// The encoders that the transfer syntax types create. Each writes its stream, which it borrows, in one byte order.
#pragma once

#include "talvenor/transfer/EncapsulationFragmentWriter.h"
#include "talvenor/transfer/ExplicitOutputTransferSyntax.h"
#include "talvenor/transfer/ImplicitOutputTransferSyntax.h"

// Base encodes; Endian is the byte order of the stream.
template <class Base, TNEndian::EndianType Endian>
class ConcreteOutputTransferSyntax : public Base
{
public:
   explicit ConcreteOutputTransferSyntax(OutputStream& theStream) : Base(theStream), itsWriter(theStream, Endian) {}

protected:
   EndianHandlingWriter& GetEndianHandlingWriter() override { return itsWriter; }

private:
   EndianHandlingWriter itsWriter;
};

class TALVENOR_API LittleEndianImplicitOutputTransferSyntax
    : public ConcreteOutputTransferSyntax<ImplicitOutputTransferSyntax, TNEndian::LittleEndian>
{
public:
   using ConcreteOutputTransferSyntax::ConcreteOutputTransferSyntax;
   const TransferSyntaxType& GetTransferSyntaxType() const override;

protected:
   OutputTransferSyntax* Clone(OutputStream& theStream) const override;
};

class TALVENOR_API BigEndianExplicitOutputTransferSyntax
    : public ConcreteOutputTransferSyntax<ExplicitOutputTransferSyntax, TNEndian::BigEndian>
{
public:
   using ConcreteOutputTransferSyntax::ConcreteOutputTransferSyntax;
   const TransferSyntaxType& GetTransferSyntaxType() const override;

protected:
   OutputTransferSyntax* Clone(OutputStream& theStream) const override;
};

// Can also write encapsulated pixel data fragment by fragment; while it does, other elements are refused
// (StreamIOException, TN_INVALID_ENCODING).
class TALVENOR_API LittleEndianExplicitOutputTransferSyntax
    : public ConcreteOutputTransferSyntax<ExplicitOutputTransferSyntax, TNEndian::LittleEndian>,
      public EncapsulationFragmentWriter
{
public:
   using ConcreteOutputTransferSyntax::ConcreteOutputTransferSyntax;

   // A copy has no encapsulation in progress.
   LittleEndianExplicitOutputTransferSyntax(const LittleEndianExplicitOutputTransferSyntax& theOther);

   const TransferSyntaxType& GetTransferSyntaxType() const override;
   EncapsulationFragmentWriter* GetEncapsulationFragmentWriter() override { return this; }
   using ExplicitOutputTransferSyntax::SaveVR;
   void SaveVR(VR& theVR) override;

   // What completes a fragment of odd length.
   virtual unsigned char GetPixelDataEncapsulationPadByte() const { return 0x00; }

   void SavePixelDataFragment(PixelDataFragment* theFragment, int thePadOdd) override;
   void SavePixelDataFragment(PixelDataFragment& theFragment, int thePadOdd) override;
   void FinishEncapsulation() override;
   int GetEncapsulationInProgress() const override { return itsIsEncapsulating; }

protected:
   OutputTransferSyntax* Clone(OutputStream& theStream) const override;

private:
   int itsIsEncapsulating = 0;
};

// The compressed syntaxes: explicit VR little endian around encapsulated pixel data. They refer to the type object that
// made them, which must outlive them.
class TALVENOR_API JPEGOutputTransferSyntax : public LittleEndianExplicitOutputTransferSyntax
{
public:
   JPEGOutputTransferSyntax(OutputStream& theStream, const TransferSyntaxType& theType);
   const TransferSyntaxType& GetTransferSyntaxType() const override { return itsType; }
   unsigned char GetPixelDataEncapsulationPadByte() const override { return 0xFF; } // fill before a marker

protected:
   OutputTransferSyntax* Clone(OutputStream& theStream) const override;

private:
   const TransferSyntaxType& itsType;
};

class TALVENOR_API JPEG2KOutputTransferSyntax : public JPEGOutputTransferSyntax
{
public:
   using JPEGOutputTransferSyntax::JPEGOutputTransferSyntax;
   unsigned char GetPixelDataEncapsulationPadByte() const override { return 0x00; }

protected:
   OutputTransferSyntax* Clone(OutputStream& theStream) const override;
};

class TALVENOR_API RLEOutputTransferSyntax : public LittleEndianExplicitOutputTransferSyntax
{
public:
   RLEOutputTransferSyntax(OutputStream& theStream, const TransferSyntaxType& theType);
   const TransferSyntaxType& GetTransferSyntaxType() const override { return itsType; }

protected:
   OutputTransferSyntax* Clone(OutputStream& theStream) const override;

private:
   const TransferSyntaxType& itsType;
};
