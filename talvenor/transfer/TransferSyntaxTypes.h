// The classes of the served transfer syntaxes. What each answers stands in one table, TransferSyntaxTypes.cpp.
#pragma once

#include "talvenor/transfer/TransferSyntaxType.h"

class TALVENOR_API ExplicitTransferSyntaxType : public TransferSyntaxType
{};

class TALVENOR_API ImplicitTransferSyntaxType : public TransferSyntaxType
{};

// One syntax: Copy for the class Leaf, which derives from Parent and supplies its row of the table.
template <class Leaf, class Parent>
class TransferSyntaxTypeLeaf : public Parent
{
public:
   TransferSyntaxType* Copy() const override { return new Leaf(static_cast<const Leaf&>(*this)); }
};

class TALVENOR_API LittleEndianImplicitTransferSyntaxType
    : public TransferSyntaxTypeLeaf<LittleEndianImplicitTransferSyntaxType, ImplicitTransferSyntaxType>
{
protected:
   const TransferSyntaxRow& GetRow() const override;
};

class TALVENOR_API BigEndianExplicitTransferSyntaxType
    : public TransferSyntaxTypeLeaf<BigEndianExplicitTransferSyntaxType, ExplicitTransferSyntaxType>
{
protected:
   const TransferSyntaxRow& GetRow() const override;
};

class TALVENOR_API LittleEndianExplicitTransferSyntaxType
    : public TransferSyntaxTypeLeaf<LittleEndianExplicitTransferSyntaxType, ExplicitTransferSyntaxType>
{
protected:
   const TransferSyntaxRow& GetRow() const override;
};

// The encapsulated syntaxes (PS3.5 A.4): explicit VR little endian around compressed fragments.
class TALVENOR_API JPEGTransferSyntaxType : public LittleEndianExplicitTransferSyntaxType
{
public:
   TransferSyntaxType* Copy() const override = 0;

protected:
   const TransferSyntaxRow& GetRow() const override = 0;
};

class TALVENOR_API JPEG50TransferSyntaxType
    : public TransferSyntaxTypeLeaf<JPEG50TransferSyntaxType, JPEGTransferSyntaxType>
{
protected:
   const TransferSyntaxRow& GetRow() const override;
};

class TALVENOR_API JPEG51TransferSyntaxType
    : public TransferSyntaxTypeLeaf<JPEG51TransferSyntaxType, JPEGTransferSyntaxType>
{
protected:
   const TransferSyntaxRow& GetRow() const override;
};

class TALVENOR_API JPEG57TransferSyntaxType
    : public TransferSyntaxTypeLeaf<JPEG57TransferSyntaxType, JPEGTransferSyntaxType>
{
protected:
   const TransferSyntaxRow& GetRow() const override;
};

class TALVENOR_API JPEG70TransferSyntaxType
    : public TransferSyntaxTypeLeaf<JPEG70TransferSyntaxType, JPEGTransferSyntaxType>
{
protected:
   const TransferSyntaxRow& GetRow() const override;
};

class TALVENOR_API JPEGLSTransferSyntaxType
    : public TransferSyntaxTypeLeaf<JPEGLSTransferSyntaxType, JPEGTransferSyntaxType>
{
protected:
   const TransferSyntaxRow& GetRow() const override;
};

class TALVENOR_API JPEGNLSTransferSyntaxType
    : public TransferSyntaxTypeLeaf<JPEGNLSTransferSyntaxType, JPEGTransferSyntaxType>
{
protected:
   const TransferSyntaxRow& GetRow() const override;
};

class TALVENOR_API JPEG2KLosslessTransferSyntaxType
    : public TransferSyntaxTypeLeaf<JPEG2KLosslessTransferSyntaxType, JPEGTransferSyntaxType>
{
protected:
   const TransferSyntaxRow& GetRow() const override;
};

class TALVENOR_API JPEG2KTransferSyntaxType
    : public TransferSyntaxTypeLeaf<JPEG2KTransferSyntaxType, JPEGTransferSyntaxType>
{
protected:
   const TransferSyntaxRow& GetRow() const override;
};

class TALVENOR_API RLETransferSyntaxType
    : public TransferSyntaxTypeLeaf<RLETransferSyntaxType, LittleEndianExplicitTransferSyntaxType>
{
protected:
   const TransferSyntaxRow& GetRow() const override;
};
