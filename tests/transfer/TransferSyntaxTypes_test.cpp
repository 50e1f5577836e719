#include "talvenor/transfer/TransferSyntaxTypes.h"

#include <gtest/gtest.h>
#include <memory>
#include <typeinfo>

#include "support/PiecewiseInputStream.h"
#include "support/StreamErrors.h"
#include "talvenor/transfer/ConcreteInputTransferSyntaxes.h"

namespace
{
using Type = TransferSyntaxType;

struct SyntaxCase
{
   const char* itsName;
   std::unique_ptr<Type> (*itsMake)();
   const char* itsUID;
   bool itsIsExplicit, itsIsLittleEndian, itsIsCompressed, itsIsLossless;
   const char* itsLossyMethod;
   Type::BasicTransferSyntaxType itsKind;
   const std::type_info& itsDecoder;
};

template <class Leaf>
std::unique_ptr<Type> Make()
{
   return std::make_unique<Leaf>();
}

constexpr Type::BasicTransferSyntaxType kLEE = Type::LittleEndianExplicit;

// PS3.5 annex A, PS3.6 A-1; the lossy methods are those of PS3.3 C.7.6.1.1.5.1.
const SyntaxCase kSyntaxes[] = {
    {"implicit", Make<LittleEndianImplicitTransferSyntaxType>, "1.2.840.10008.1.2", false, true, false, false, "",
     Type::LittleEndianImplicit, typeid(LittleEndianImplicitInputTransferSyntax)},
    {"explicit", Make<LittleEndianExplicitTransferSyntaxType>, "1.2.840.10008.1.2.1", true, true, false, false, "",
     kLEE, typeid(LittleEndianExplicitInputTransferSyntax)},
    {"big endian", Make<BigEndianExplicitTransferSyntaxType>, "1.2.840.10008.1.2.2", true, false, false, false, "",
     Type::BigEndianExplicit, typeid(BigEndianExplicitInputTransferSyntax)},
    {"JPEG baseline", Make<JPEG50TransferSyntaxType>, "1.2.840.10008.1.2.4.50", true, true, true, false, "ISO_10918_1",
     kLEE, typeid(JPEGInputTransferSyntax)},
    {"JPEG extended", Make<JPEG51TransferSyntaxType>, "1.2.840.10008.1.2.4.51", true, true, true, false, "ISO_10918_1",
     kLEE, typeid(JPEGInputTransferSyntax)},
    {"JPEG lossless", Make<JPEG57TransferSyntaxType>, "1.2.840.10008.1.2.4.57", true, true, true, true, "", kLEE,
     typeid(JPEGInputTransferSyntax)},
    {"JPEG lossless SV1", Make<JPEG70TransferSyntaxType>, "1.2.840.10008.1.2.4.70", true, true, true, true, "", kLEE,
     typeid(JPEGInputTransferSyntax)},
    {"JPEG-LS", Make<JPEGLSTransferSyntaxType>, "1.2.840.10008.1.2.4.80", true, true, true, true, "", kLEE,
     typeid(JPEGInputTransferSyntax)},
    {"JPEG-LS near-lossless", Make<JPEGNLSTransferSyntaxType>, "1.2.840.10008.1.2.4.81", true, true, true, false,
     "ISO_14495_1", kLEE, typeid(JPEGInputTransferSyntax)},
    {"JPEG 2000 lossless", Make<JPEG2KLosslessTransferSyntaxType>, "1.2.840.10008.1.2.4.90", true, true, true, true, "",
     kLEE, typeid(JPEGInputTransferSyntax)},
    {"JPEG 2000", Make<JPEG2KTransferSyntaxType>, "1.2.840.10008.1.2.4.91", true, true, true, false, "ISO_15444_1",
     kLEE, typeid(JPEGInputTransferSyntax)},
    {"RLE", Make<RLETransferSyntaxType>, "1.2.840.10008.1.2.5", true, true, true, true, "", kLEE,
     typeid(RLEInputTransferSyntax)},
};

// A host's syntax that says only what it must.
class HostType : public TransferSyntaxType
{
public:
   TransferSyntaxType* Copy() const override { return new HostType(*this); }
};

TEST(TransferSyntaxTypes, AnswerAsTheStandardTabulatesThemAndCopyToTheirOwnClass)
{
   for (const SyntaxCase& aCase : kSyntaxes)
   {
      SCOPED_TRACE(aCase.itsName);
      const std::unique_ptr<Type> aType = aCase.itsMake();
      EXPECT_EQ(aType->GetUID(), aCase.itsUID);
      EXPECT_EQ(aType->IsExplicit() != 0, aCase.itsIsExplicit);
      EXPECT_EQ(aType->IsLittleEndian() != 0, aCase.itsIsLittleEndian);
      EXPECT_EQ(aType->GetEndian(), aCase.itsIsLittleEndian ? TNEndian::LittleEndian : TNEndian::BigEndian);
      EXPECT_EQ(aType->IsEncapsulated() != 0, aCase.itsIsCompressed);
      EXPECT_EQ(aType->IsCompressed() != 0, aCase.itsIsCompressed);
      EXPECT_EQ(aType->IsLosslessCompressed() != 0, aCase.itsIsLossless);
      EXPECT_EQ(aType->GetLossyImageCompressionMethod(), aCase.itsLossyMethod);
      EXPECT_EQ(aType->GetBasicTransferSyntaxType(), aCase.itsKind);
      EXPECT_EQ(Type::IsUncompressed(aType->GetUID()), !aCase.itsIsCompressed);

      const std::unique_ptr<Type> aCopy(aType->Copy());
      const Type& anOriginal = *aType;
      const Type& aCopied = *aCopy;
      EXPECT_TRUE(typeid(aCopied) == typeid(anOriginal) && aCopied == anOriginal);
      EXPECT_EQ(aCopied == LittleEndianExplicitTransferSyntaxType(), &aCase == &kSyntaxes[1]);
   }
   EXPECT_FALSE(Type::IsUncompressed(Type::TSDeflatedUID));
}

TEST(TransferSyntaxTypes, MakeDecodersThatKnowTheirType)
{
   for (const SyntaxCase& aCase : kSyntaxes)
   {
      SCOPED_TRACE(aCase.itsName);
      const std::unique_ptr<Type> aType = aCase.itsMake();
      const Type& aMaker = *aType;
      PiecewiseInputStream aBorrowed({});
      std::unique_ptr<InputTransferSyntax> aBorrower(aMaker.CreateInputTransferSyntax(aBorrowed));
      std::unique_ptr<InputTransferSyntax> anOwner(aMaker.CreateInputTransferSyntax(new PiecewiseInputStream({})));
      for (const InputTransferSyntax* aDecoder : {aBorrower.get(), anOwner.get()})
      {
         const TransferSyntaxType& aTold = aDecoder->GetTransferSyntaxType();
         EXPECT_TRUE(typeid(*aDecoder) == aCase.itsDecoder);
         EXPECT_TRUE(typeid(aTold) == typeid(aMaker));
         if (aCase.itsIsCompressed)
         {
            EXPECT_EQ(&aTold, &aMaker) << "the object itself, not one like it";
         }
      }
      EXPECT_EQ(&aBorrower->GetStream(), &aBorrowed);
   }
}

TEST(TransferSyntaxType, OfAHostNeedsToSayNoMoreThanItKnows)
{
   const HostType aType;
   PiecewiseInputStream aStream({});
   const StreamError anExpected = {
       "TransferSyntaxType::CreateInputTransferSyntax(): this transfer syntax has no decoder",
       TN_TRANSFER_SYNTAX_UNSUPPORTED, 0};
   EXPECT_EQ(StreamErrorOf([&] { aType.CreateInputTransferSyntax(aStream); }), anExpected);
}
} // namespace
