// The data dictionary of decoders and encoders: who owns it. Leaks and double deletions are for the sanitizer to see.
#include "talvenor/transfer/TransferSyntax.h"

#include <gtest/gtest.h>
#include <memory>

#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/dictionary/MDataDictionary.h"
#include "talvenor/dictionary/PrivateDataDictionaryCatalog.h"
#include "talvenor/transfer/TransferSyntaxTypes.h"

namespace
{
class PlainSyntax : public TransferSyntax
{
public:
   PlainSyntax() = default;
   explicit PlainSyntax(InstanceSpecificDataDictionary& theDictionary) : TransferSyntax(theDictionary) {}
   explicit PlainSyntax(const InstanceSpecificDataDictionary& theDictionary) : TransferSyntax(theDictionary) {}
   explicit PlainSyntax(InstanceSpecificDataDictionary* theDictionary) : TransferSyntax(theDictionary) {}
   const TransferSyntaxType& GetTransferSyntaxType() const override { return itsType; }

private:
   LittleEndianExplicitTransferSyntaxType itsType;
};

class TransferSyntaxDictionary : public ::testing::Test
{
protected:
   TransferSyntaxDictionary() { itsDictionary.RegisterPrivateCreator("ACME", kBlock); }

   static bool KnowsTheBlock(const TransferSyntax& theSyntax)
   {
      return theSyntax.GetDataDictionary().ContainsCreatorAllocation("ACME", 0x0029);
   }
   InstanceSpecificDataDictionary* New() const { return new InstanceSpecificDataDictionary(itsDictionary); }

   const MAttributeTag kBlock{0x0029, 0x0010};
   MDataDictionary itsPublic;
   PrivateDataDictionaryCatalog itsCatalog;
   InstanceSpecificDataDictionary itsDictionary{itsPublic, itsCatalog};
};

TEST_F(TransferSyntaxDictionary, IsBorrowedCopiedOrAdoptedByTheFormOfTheParameter)
{
   const InstanceSpecificDataDictionary& aConst = itsDictionary;
   InstanceSpecificDataDictionary* const anAdopted = New();
   const PlainSyntax aBorrower(itsDictionary);
   const PlainSyntax aCopier(aConst);
   const PlainSyntax anOwner(anAdopted);
   EXPECT_EQ(&aBorrower.GetDataDictionary(), &itsDictionary);
   EXPECT_NE(&aCopier.GetDataDictionary(), &itsDictionary);
   EXPECT_TRUE(KnowsTheBlock(aCopier)) << "the allocations are copied with it";
   EXPECT_EQ(&anOwner.GetDataDictionary(), anAdopted);
}

TEST_F(TransferSyntaxDictionary, StaysWhenItIsSetAgain)
{
   PlainSyntax aSyntax;
   InstanceSpecificDataDictionary* const aDictionary = New();
   aSyntax.SetDataDictionary(*aDictionary); // borrowed,
   aSyntax.SetDataDictionary(aDictionary);  // then adopted
   aSyntax.SetDataDictionary(aDictionary);
   EXPECT_TRUE(KnowsTheBlock(aSyntax));
   aSyntax.SetDataDictionary(aSyntax.GetDataDictionary());
   EXPECT_TRUE(KnowsTheBlock(aSyntax));
   aSyntax.SetDataDictionary(static_cast<const InstanceSpecificDataDictionary&>(aSyntax.GetDataDictionary()));
   EXPECT_TRUE(KnowsTheBlock(aSyntax)) << "copied before the old one goes";
}

TEST_F(TransferSyntaxDictionary, IsSharedByCopies)
{
   auto anOriginal = std::make_unique<PlainSyntax>(New());
   const PlainSyntax aCopy(*anOriginal);
   EXPECT_EQ(&aCopy.GetDataDictionary(), &anOriginal->GetDataDictionary());
   anOriginal.reset();
   EXPECT_TRUE(KnowsTheBlock(aCopy));
}
} // namespace
