#include "talvenor/ul/ULUID.h"

#include <string>

#include <gtest/gtest.h>

#include "talvenor/dictionary/MUIDDictionary.h"
#include "talvenor/foundation/AETitle.h"
#include "talvenor/ul/ImplementationVersionName.h"
#include "talvenor/ul/PDUOutputStream.h"
#include "tests/support/ULBytes.h"

namespace
{
using namespace std::string_literals;

TEST(ULUID, SetMakesATextFit)
{
   const std::string aLongest(64, '1');
   struct Case
   {
      const char* itsName;
      std::string itsText;
      int itsLength;
      std::string itsExpected;
   };
   const Case kCases[] = {
       {"padded with NUL", std::string("1.2.840.10008.1.1\0", 18), 18, "1.2.840.10008.1.1"},
       {"space behind", "1.2 ", 4, "1.2"},
       {"spaces behind", "1.2  ", -1, "1.2"},
       {"letter first", "a1.2", -1, ""},
       {"letter last", "1.2b", 4, "1.2"},
       {"65 with length", aLongest + "1", 65, ""},
       {"65 without length", aLongest + "1", -1, aLongest},
       {"length 0", "1.2", 0, ""},
   };
   for (const Case& aCase : kCases)
   {
      const ULUID aUID(aCase.itsText.c_str(), aCase.itsLength);
      EXPECT_EQ(aUID.ToString(), aCase.itsExpected) << aCase.itsName;
      EXPECT_EQ(aUID.GetSize(), aCase.itsExpected.size()) << aCase.itsName;
   }
}

TEST(ULUID, ComparesExactly)
{
   const ULUID aUID("1.2");
   EXPECT_TRUE(aUID == ULUID("1.2") && aUID == UID("1.2") && UID("1.2") == aUID && aUID == "1.2");
   EXPECT_TRUE(aUID == RWCString("1.2") && aUID != "1.2.3" && aUID != UID("1.20"));
   EXPECT_FALSE(ULUID() == static_cast<const char*>(nullptr));
   EXPECT_EQ(UID(aUID).GetSize(), 4u);
}

TEST(ULUID, IsReadAsSentAndWrittenWithoutWhatStoodBehindIt)
{
   PeerBytes aPeer(PDUOf(1, AsBytes(std::string("x.y\0secret", 10)) + Bytes(65, '1')));
   ASSERT_EQ(aPeer.Stream().Start(), 1);
   ULUID aUID;
   EXPECT_NE(aUID.Read(aPeer.Stream(), 10), 0);
   EXPECT_EQ(aUID.ToString(), "x.y");
   MemoryDULStream aTransport(ScriptedChannel({}));
   PDUOutputStream anOutput(aTransport, 1000);
   EXPECT_NE(aUID.Write(anOutput, 6), 0);
   EXPECT_EQ(aUID.Write(anOutput, 65), 0);
   anOutput.FinishPDU();
   EXPECT_EQ(aTransport.Written(), PDUOf(4, {'x', '.', 'y', 0, 0, 0}));

   EXPECT_EQ(aUID.Read(aPeer.Stream(), 65), 0);
   EXPECT_TRUE(aUID.IsNull());
   EXPECT_EQ(aPeer.Stream().GetRemainingLength(), 65u) << "nothing is read of what is too long";
   EXPECT_EQ(aUID.Read(aPeer.Stream(), 64) + aUID.Read(aPeer.Stream(), 2), 1) << "the second is short";
   EXPECT_TRUE(aUID.IsNull());
}

TEST(ULUID, TheDictionaryNamesIt)
{
   MUIDDictionary aDictionary;
   aDictionary.Add(MUIDDictionaryEntry(R"(SC,"1.2.840.10008.1.1",Verification,"Verification SOP Class")"));
   ULUID aUID("1.2.840.10008.1.1");
   aUID.SetUIDDictionary(aDictionary);
   EXPECT_EQ(aUID.Describe(), "1.2.840.10008.1.1 (17 bytes) Verification SOP Class");
   EXPECT_EQ(ULUID(aUID).Describe(), "1.2.840.10008.1.1 (17 bytes)") << "a copy borrows nothing";
   EXPECT_EQ(aUID.SetUIDDictionary("/no/such/file"), 0);
   EXPECT_EQ(aUID.Describe(), "1.2.840.10008.1.1 (17 bytes)");
}

TEST(ULUID, TitlesAndNamesAreReadAsSent)
{
   PeerBytes aPeer(PDUOf(1, AsBytes("  LEADING SPACE AB\0D"s)));
   ASSERT_EQ(aPeer.Stream().Start(), 1);
   AETitle aTitle("OLD");
   EXPECT_NE(aTitle.Read(aPeer.Stream()), 0);
   EXPECT_STREQ(aTitle, "  LEADING SPACE ");
   EXPECT_EQ(aTitle.Read(aPeer.Stream()), 0);
   EXPECT_TRUE(aTitle.IsNull());

   EXPECT_EQ(ImplementationVersionName().GetSize(), 0u);
   EXPECT_STREQ(ImplementationVersionName(""), " ");
   EXPECT_STREQ(ImplementationVersionName("12345678901234567"), "1234567890123456");
   PeerBytes aNames(PDUOf(1, {'A', 0, 'C'}));
   ASSERT_EQ(aNames.Stream().Start(), 1);
   ImplementationVersionName aName("OLD");
   EXPECT_NE(aName.Read(aNames.Stream(), 3), 0);
   EXPECT_EQ(aName, ImplementationVersionName("A"));
}
} // namespace
