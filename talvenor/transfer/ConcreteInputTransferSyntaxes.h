// The decoders that the transfer syntax types create. Each reads its stream in one byte order; the reference form
// borrows the stream, the pointer form owns it.
#pragma once

#include "talvenor/transfer/ExplicitInputTransferSyntax.h"
#include "talvenor/transfer/ImplicitInputTransferSyntax.h"

// Base decodes; Endian is the byte order of the stream.
template <class Base, TNEndian::EndianType Endian>
class ConcreteInputTransferSyntax : public Base
{
public:
   explicit ConcreteInputTransferSyntax(InputStream& theStream) : Base(theStream), itsReader(theStream, Endian) {}
   explicit ConcreteInputTransferSyntax(InputStream* theStream) : Base(theStream), itsReader(*theStream, Endian) {}

protected:
   EndianHandlingReader& GetEndianHandlingReader() override { return itsReader; }

private:
   EndianHandlingReader itsReader;
};

class TALVENOR_API LittleEndianImplicitInputTransferSyntax
    : public ConcreteInputTransferSyntax<ImplicitInputTransferSyntax, TNEndian::LittleEndian>
{
public:
   using ConcreteInputTransferSyntax::ConcreteInputTransferSyntax;
   const TransferSyntaxType& GetTransferSyntaxType() const override;
};

class TALVENOR_API LittleEndianExplicitInputTransferSyntax
    : public ConcreteInputTransferSyntax<ExplicitInputTransferSyntax, TNEndian::LittleEndian>
{
public:
   using ConcreteInputTransferSyntax::ConcreteInputTransferSyntax;
   const TransferSyntaxType& GetTransferSyntaxType() const override;
};

class TALVENOR_API BigEndianExplicitInputTransferSyntax
    : public ConcreteInputTransferSyntax<ExplicitInputTransferSyntax, TNEndian::BigEndian>
{
public:
   using ConcreteInputTransferSyntax::ConcreteInputTransferSyntax;
   const TransferSyntaxType& GetTransferSyntaxType() const override;
};

// The compressed syntaxes: explicit VR little endian around encapsulated pixel data. They refer to the type object that
// made them, which must outlive them.
class TALVENOR_API JPEGInputTransferSyntax : public LittleEndianExplicitInputTransferSyntax
{
public:
   JPEGInputTransferSyntax(InputStream& theStream, const TransferSyntaxType& theType);
   JPEGInputTransferSyntax(InputStream* theStream, const TransferSyntaxType& theType);
   const TransferSyntaxType& GetTransferSyntaxType() const override { return itsType; }

private:
   const TransferSyntaxType& itsType;
};

class TALVENOR_API RLEInputTransferSyntax : public LittleEndianExplicitInputTransferSyntax
{
public:
   RLEInputTransferSyntax(InputStream& theStream, const TransferSyntaxType& theType);
   RLEInputTransferSyntax(InputStream* theStream, const TransferSyntaxType& theType);
   const TransferSyntaxType& GetTransferSyntaxType() const override { return itsType; }

private:
   const TransferSyntaxType& itsType;
};
