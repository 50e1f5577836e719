#include "talvenor/transfer/ConcreteOutputTransferSyntaxes.h"

#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/transfer/NativeTransferSyntaxTypes.h"

const TransferSyntaxType& LittleEndianImplicitOutputTransferSyntax::GetTransferSyntaxType() const
{
   return kLittleEndianImplicitType;
}

OutputTransferSyntax* LittleEndianImplicitOutputTransferSyntax::Clone(OutputStream& theStream) const
{
   return new LittleEndianImplicitOutputTransferSyntax(theStream);
}

const TransferSyntaxType& BigEndianExplicitOutputTransferSyntax::GetTransferSyntaxType() const
{
   return kBigEndianExplicitType;
}

OutputTransferSyntax* BigEndianExplicitOutputTransferSyntax::Clone(OutputStream& theStream) const
{
   return new BigEndianExplicitOutputTransferSyntax(theStream);
}

LittleEndianExplicitOutputTransferSyntax::LittleEndianExplicitOutputTransferSyntax(
    const LittleEndianExplicitOutputTransferSyntax& theOther)
    : ConcreteOutputTransferSyntax(theOther), EncapsulationFragmentWriter(theOther)
{}

const TransferSyntaxType& LittleEndianExplicitOutputTransferSyntax::GetTransferSyntaxType() const
{
   return kLittleEndianExplicitType;
}

void LittleEndianExplicitOutputTransferSyntax::SaveVR(VR& theVR)
{
   if (itsIsEncapsulating)
   {
      throw StreamIOException("LittleEndianExplicitOutputTransferSyntax::SaveVR(VR&): an encapsulation is in progress. "
                              "The encapsulation must be completed before SaveVR can be called.",
                              TN_INVALID_ENCODING, 0);
   }
   ExplicitOutputTransferSyntax::SaveVR(theVR);
}

OutputTransferSyntax* LittleEndianExplicitOutputTransferSyntax::Clone(OutputStream& theStream) const
{
   return new LittleEndianExplicitOutputTransferSyntax(theStream);
}

JPEGOutputTransferSyntax::JPEGOutputTransferSyntax(OutputStream& theStream, const TransferSyntaxType& theType)
    : LittleEndianExplicitOutputTransferSyntax(theStream), itsType(theType)
{}

OutputTransferSyntax* JPEGOutputTransferSyntax::Clone(OutputStream& theStream) const
{
   return new JPEGOutputTransferSyntax(theStream, itsType);
}

OutputTransferSyntax* JPEG2KOutputTransferSyntax::Clone(OutputStream& theStream) const
{
   return new JPEG2KOutputTransferSyntax(theStream, GetTransferSyntaxType());
}

RLEOutputTransferSyntax::RLEOutputTransferSyntax(OutputStream& theStream, const TransferSyntaxType& theType)
    : LittleEndianExplicitOutputTransferSyntax(theStream), itsType(theType)
{}

OutputTransferSyntax* RLEOutputTransferSyntax::Clone(OutputStream& theStream) const
{
   return new RLEOutputTransferSyntax(theStream, itsType);
}
