#include "talvenor/transfer/TransferSyntaxManager.h"

#include <gtest/gtest.h>
#include <memory>
#include <sstream>

#include "talvenor/dictionary/MUIDDictionary.h"
#include "talvenor/transfer/TransferSyntaxTypes.h"

namespace
{
const char* const kServed[] = {"1.2.840.10008.1.2",      "1.2.840.10008.1.2.1",    "1.2.840.10008.1.2.2",
                               "1.2.840.10008.1.2.4.90", "1.2.840.10008.1.2.4.91", "1.2.840.10008.1.2.4.50",
                               "1.2.840.10008.1.2.4.51", "1.2.840.10008.1.2.4.57", "1.2.840.10008.1.2.4.70",
                               "1.2.840.10008.1.2.4.80", "1.2.840.10008.1.2.4.81", "1.2.840.10008.1.2.5"};

// A syntax with a UID of its own that counts its objects.
class CountedType : public LittleEndianExplicitTransferSyntaxType
{
public:
   CountedType(RWCString theUID, int& theCount) : itsUID(std::move(theUID)), itsCount(theCount) { ++itsCount; }
   CountedType(const CountedType& theOther) : CountedType(theOther.itsUID, theOther.itsCount) {}
   CountedType& operator=(const CountedType&) = delete;
   ~CountedType() override { --itsCount; }
   TransferSyntaxType* Copy() const override { return new CountedType(*this); }
   const RWCString& GetUID() const override { return itsUID; }

private:
   RWCString itsUID;
   int& itsCount;
};

TEST(TransferSyntaxManager, FindsAUIDOnlyWhenEveryCharacterIsTheSame)
{
   const TransferSyntaxManager& aRegistry = TransferSyntaxManager::GetDefaultInstance();
   const RWCString kUnknown[] = {"",
                                 "1.2.840.10008.1.2 ",
                                 RWCString("1.2.840.10008.1.2\0", 18),
                                 "1.2.840.10008.1",
                                 TransferSyntaxType::TSJPEG52UID,
                                 TransferSyntaxType::TSDeflatedUID};
   EXPECT_NE(aRegistry.GetTransferSyntaxType("1.2.840.10008.1.2"), nullptr);
   for (const RWCString& aUID : kUnknown)
   {
      EXPECT_EQ(aRegistry.GetTransferSyntaxType(aUID), nullptr) << aUID;
   }
}

TEST(TransferSyntaxManager, KeepsTheFirstRegistrationOfAUID)
{
   int aCount = 0;
   {
      TransferSyntaxManager aRegistry;
      auto* const aFirst = new CountedType("1.2.3", aCount);
      aRegistry.RegisterTransferSyntaxType(aFirst);
      aRegistry.RegisterTransferSyntaxType(new CountedType("1.2.3", aCount));
      EXPECT_EQ(aCount, 1) << "the second is destroyed at once";
      aRegistry.RegisterTransferSyntaxType(aFirst);
      EXPECT_EQ(aCount, 1) << "the registered object itself stays";
      EXPECT_EQ(aRegistry.GetTransferSyntaxType("1.2.3"), aFirst);
   }
   EXPECT_EQ(aCount, 0);
}

TEST(TransferSyntaxManager, ForgetsWhatIsUnregistered)
{
   int aCount = 0;
   TransferSyntaxManager aRegistry;
   aRegistry.RegisterTransferSyntaxType(new CountedType("1.2.3", aCount));
   aRegistry.RegisterTransferSyntaxType(new CountedType("1.2.4", aCount));
   aRegistry.UnegisterTransferSyntaxType("1.2.5");
   EXPECT_EQ(aCount, 2);
   aRegistry.UnegisterTransferSyntaxType(aRegistry.GetTransferSyntaxType("1.2.3")->GetUID());
   EXPECT_EQ(aCount, 1);
   EXPECT_EQ(aRegistry.GetTransferSyntaxType("1.2.3"), nullptr);
   EXPECT_NE(aRegistry.GetTransferSyntaxType("1.2.4"), nullptr);
}

TEST(TransferSyntaxManager, IsEmptyUntilFilledAndAfterClear)
{
   TransferSyntaxManager aRegistry;
   for (const bool isFilled : {false, true, false, true})
   {
      isFilled ? aRegistry.AddWellKnownSyntaxes() : aRegistry.Clear();
      for (const char* aUID : kServed)
      {
         EXPECT_EQ(aRegistry.GetTransferSyntaxType(aUID) != nullptr, isFilled) << aUID;
      }
   }
}

TEST(TransferSyntaxManager, CopiesTheTypeObjectsOfAnother)
{
   int aCount = 0;
   TransferSyntaxManager aSource;
   aSource.RegisterTransferSyntaxType(new CountedType("1.2.3", aCount));
   TransferSyntaxManager aCopy(aSource);
   EXPECT_EQ(aCount, 2);
   TransferSyntaxManager aTarget;
   aTarget.RegisterTransferSyntaxType(new CountedType("1.2.4", aCount));
   aTarget = aSource;
   EXPECT_EQ(aCount, 3) << "the target is cleared first";
   EXPECT_EQ(aTarget.GetTransferSyntaxType("1.2.4"), nullptr);
   const TransferSyntaxType* const anObject = aTarget.GetTransferSyntaxType("1.2.3");
   ASSERT_NE(anObject, nullptr);
   const TransferSyntaxManager& itself = aTarget;
   aTarget = itself;
   EXPECT_EQ(aTarget.GetTransferSyntaxType("1.2.3"), anObject);
}

TEST(TransferSyntaxManager, AsksTheUIDDictionaryForTheBasicKind)
{
   MUIDDictionary& aDictionary = MUIDDictionary::GetDefaultUIDDictionary();
   const MUIDDictionary aPrevious(aDictionary);
   std::istringstream aText("TS,1.2.840.10008.1.2.4.52,JPEGExtended35,\"JPEG Extended (3 & 5)\",TSLEE\n");
   ASSERT_TRUE(aDictionary.Load(aText));
   EXPECT_EQ(TransferSyntaxManager::GetBasicTransferSyntaxType("1.2.840.10008.1.2.4.52"),
             TransferSyntaxType::LittleEndianExplicit)
       << "not registered, but listed";
   EXPECT_EQ(TransferSyntaxManager::GetBasicTransferSyntaxType("1.2.840.10008.1.2"),
             TransferSyntaxType::UnknownBasicType)
       << "registered, but not listed";
   aDictionary = aPrevious;
}
} // namespace
