#include "talvenor/transfer/ConcreteInputTransferSyntaxes.h"

#include "talvenor/transfer/NativeTransferSyntaxTypes.h"

const TransferSyntaxType& LittleEndianImplicitInputTransferSyntax::GetTransferSyntaxType() const
{
   return kLittleEndianImplicitType;
}

const TransferSyntaxType& LittleEndianExplicitInputTransferSyntax::GetTransferSyntaxType() const
{
   return kLittleEndianExplicitType;
}

const TransferSyntaxType& BigEndianExplicitInputTransferSyntax::GetTransferSyntaxType() const
{
   return kBigEndianExplicitType;
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
