#include "talvenor/transfer/ConcreteInputTransferSyntaxes.h"

#include "talvenor/transfer/TransferSyntaxTypes.h"

namespace
{
// The native types have no state, so that one object of each serves every decoder.
const LittleEndianImplicitTransferSyntaxType kLittleEndianImplicit;
const LittleEndianExplicitTransferSyntaxType kLittleEndianExplicit;
const BigEndianExplicitTransferSyntaxType kBigEndianExplicit;
} // namespace

const TransferSyntaxType& LittleEndianImplicitInputTransferSyntax::GetTransferSyntaxType() const
{
   return kLittleEndianImplicit;
}

const TransferSyntaxType& LittleEndianExplicitInputTransferSyntax::GetTransferSyntaxType() const
{
   return kLittleEndianExplicit;
}

const TransferSyntaxType& BigEndianExplicitInputTransferSyntax::GetTransferSyntaxType() const
{
   return kBigEndianExplicit;
}

JPEGInputTransferSyntax::JPEGInputTransferSyntax(InputStream& theStream, const TransferSyntaxType& theType)
    : LittleEndianExplicitInputTransferSyntax(theStream), itsType(theType)
{}

JPEGInputTransferSyntax::JPEGInputTransferSyntax(InputStream* theStream, const TransferSyntaxType& theType)
    : LittleEndianExplicitInputTransferSyntax(theStream), itsType(theType)
{}

RLEInputTransferSyntax::RLEInputTransferSyntax(InputStream& theStream, const TransferSyntaxType& theType)
    : LittleEndianExplicitInputTransferSyntax(theStream), itsType(theType)
{}

RLEInputTransferSyntax::RLEInputTransferSyntax(InputStream* theStream, const TransferSyntaxType& theType)
    : LittleEndianExplicitInputTransferSyntax(theStream), itsType(theType)
{}
