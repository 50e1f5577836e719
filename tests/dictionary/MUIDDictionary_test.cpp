#include "talvenor/dictionary/MUIDDictionary.h"

#include <gtest/gtest.h>
#include <memory>
#include <sstream>

#include "support/TemporaryDirectory.h"
#include "talvenor/foundation/Exceptions.h"

namespace
{
const char kImplicit[] = "TS,1.2.840.10008.1.2,ImplicitVRLittleEndian,\"Implicit VR, Little Endian\",TSLEI\n";

RWCString Described(const MUIDDictionaryEntry& theEntry)
{
   return MUIDDictionaryEntry::UIDTypeToString(theEntry.GetType()) + "|" + theEntry.GetUID() + "|" +
          theEntry.GetMnemonic() + "|" + theEntry.GetDescription() + "|" +
          BasicTransferSyntaxKind::BasicTransferSyntaxTypeToString(theEntry.GetBasicTransferSyntaxType());
}

// What Load or the making of an entry throws.
template <class Action>
RWCString ErrorOf(Action theAction)
{
   try
   {
      theAction();
   }
   catch (const InvalidEntryDescriptionException& anException)
   {
      return anException.GetMessage();
   }
   return "nothing was thrown";
}

RWCString LoadError(MUIDDictionary& theDictionary, const std::string& theText)
{
   std::istringstream aStream(theText);
   return ErrorOf([&] { theDictionary.Load(aStream); });
}
} // namespace

TEST(MUIDDictionaryEntry, ReadsTheFieldsOfALine)
{
   struct
   {
      const char* itsLine;
      const char* itsExpected;
   } const kCases[] = {
       {"TS,1.2.840.10008.1.2,Implicit,\"Implicit VR, Little Endian\",TSLEI",
        "TS|1.2.840.10008.1.2|Implicit|Implicit VR, Little Endian|TSLEI"},
       {"TS, 1.2.840.10008.1.2.2 ,Big, Explicit Big Endian , TSBEE ",
        "TS|1.2.840.10008.1.2.2|Big|Explicit Big Endian|TSBEE"},
       {"TS,1.2.1,Little,d,\"TSLEE\"", "TS|1.2.1|Little|d|TSLEE"},
       {"SC,1.2.3,CT,CT Image, with, commas,TSLEI", "SC|1.2.3|CT|CT Image, with, commas,TSLEI|"},
       {"U2,1.2.3,m,\"quoted, description\"", "U2|1.2.3|m|quoted, description|"},
   };
   for (const auto& aCase : kCases)
   {
      EXPECT_EQ(Described(MUIDDictionaryEntry(RWCString(aCase.itsLine))), aCase.itsExpected);
   }
}

TEST(MUIDDictionaryEntry, FaultsBeginWithTheLine)
{
   struct
   {
      const char* itsLine;
      const char* itsFault;
   } const kCases[] = {
       {"", ""},
       {"SC,1.2.3,m", ""},
       {"XX,1.2.3,m,d", ""},
       {"sc,1.2.3,m,d", ""},
       {"SC,,m,d", ""},
       {"SC,\"\",m,d", ": Empty item"},
       {"SC,1.2.3,m,", ": Empty item"},
       {"SC,1.2.3,m,\"\"", ": Empty item"},
       {"TS,1.2.3,m,d", ""},
       {"TS,1.2.3,m,d,", ": Empty item"},
       {"TS,1.2.3,m,d,tslei", ": Unknown transfer syntax type (tslei)"},
       {"TS,1.2.3,m,d,TSLEI,x", ": Unknown transfer syntax type (TSLEI,x)"},
   };
   for (const auto& aCase : kCases)
   {
      const RWCString aLine = aCase.itsLine;
      EXPECT_EQ(ErrorOf([&] { MUIDDictionaryEntry anEntry(aLine); }), aLine + aCase.itsFault);
   }
   EXPECT_THROW(MUIDDictionaryEntry(MUIDDictionaryEntry::InvalidUIDType, BasicTransferSyntaxKind::UnknownBasicType,
                                    "1.2", "m", "d"),
                InvalidUIDTypeException);
}

TEST(MUIDDictionary, FindsByMnemonicAndUID)
{
   std::istringstream aStream("// comment\r\n\n  " + std::string(kImplicit) + "SC,1.2.3,Example,An example");
   const MUIDDictionary aDictionary(aStream);
   ASSERT_EQ(aDictionary.Size(), 2u);
   const MUIDDictionaryEntry* anEntry = aDictionary.FindUID("1.2.840.10008.1.2");
   ASSERT_NE(anEntry, nullptr);
   EXPECT_EQ(aDictionary.FindMnemonic("ImplicitVRLittleEndian"), anEntry);
   EXPECT_EQ(anEntry->GetBasicTransferSyntaxType(), BasicTransferSyntaxKind::LittleEndianImplicit);
   EXPECT_EQ(aDictionary.FindUID("1.2"), nullptr);
   EXPECT_EQ(aDictionary.FindMnemonic("example"), nullptr);
}

TEST(MUIDDictionary, FaultsNameTheLine)
{
   struct
   {
      const char* itsName;
      const char* itsLines;
      const char* itsExpected;
   } const kCases[] = {
       {"missing basic encoding", "\n  TS,1.2.1,m,d\n",
        "Invalid UID dictionary entry description at line3: TS,1.2.1,m,d"},
       {"mnemonic again", "SC,1.2.3,ImplicitVRLittleEndian,d",
        "Invalid UID dictionary entry (duplicate Mnemonic) at line2"},
       {"UID again", "SC,1.2.840.10008.1.2,m,d", "Invalid UID dictionary entry (duplicate UID) at line2"},
       {"both again", kImplicit, "Invalid UID dictionary entry (duplicate Mnemonic) at line2"},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      MUIDDictionary aDictionary;
      EXPECT_EQ(LoadError(aDictionary, std::string(kImplicit) + aCase.itsLines), aCase.itsExpected);
      EXPECT_EQ(aDictionary.Size(), 1u);
      ASSERT_NE(aDictionary.FindMnemonic("ImplicitVRLittleEndian"), nullptr);
      EXPECT_EQ(aDictionary.FindMnemonic("ImplicitVRLittleEndian")->GetType(), MUIDDictionaryEntry::TS);
      EXPECT_EQ(aDictionary.FindMnemonic("m"), nullptr);
   }
}

TEST(MUIDDictionary, AddRefusesWhatIsThere)
{
   MUIDDictionary aDictionary;
   const MUIDDictionaryEntry anEntry(RWCString("SC,1.2.3,m,d"));
   aDictionary.Add(anEntry);
   aDictionary.Add(static_cast<MUIDDictionaryEntry*>(nullptr));
   EXPECT_EQ(ErrorOf([&] { aDictionary.Add(anEntry); }), "Invalid UID dictionary entry (duplicate Mnemonic)");
   EXPECT_EQ(ErrorOf([&] { aDictionary.Add(new MUIDDictionaryEntry(RWCString("SC,1.2.3,n,d"))); }),
             "Invalid UID dictionary entry (duplicate UID)");
   ASSERT_EQ(aDictionary.Size(), 1u);
   EXPECT_EQ(*aDictionary.FindUID("1.2.3"), anEntry);
}

TEST(MUIDDictionary, CopiesShareNoEntry)
{
   std::istringstream aStream(kImplicit);
   auto aSource = std::make_unique<MUIDDictionary>(aStream);
   const MUIDDictionary aCopy(*aSource);
   MUIDDictionary anAssigned;
   anAssigned = aCopy;
   anAssigned = *&anAssigned;
   aSource.reset();
   EXPECT_NE(aCopy.FindUID("1.2.840.10008.1.2"), nullptr);
   EXPECT_NE(anAssigned.FindMnemonic("ImplicitVRLittleEndian"), aCopy.FindMnemonic("ImplicitVRLittleEndian"));
}

TEST(MUIDDictionary, FilesThatCannotBeOpenedLeaveTheContents)
{
   TemporaryDirectory aDirectory;
   std::istringstream aStream(kImplicit);
   MUIDDictionary aDictionary(aStream);
   EXPECT_FALSE(aDictionary.Load(""));
   EXPECT_FALSE(aDictionary.Load(aDirectory.File("missing")));
   EXPECT_EQ(aDictionary.Size(), 1u);
   WriteFile(aDirectory.File("uid.dic"), "SC,1.2.3,m,d\n");
   EXPECT_TRUE(aDictionary.Load(aDirectory.File("uid.dic")));
   EXPECT_EQ(aDictionary.FindUID("1.2.840.10008.1.2"), nullptr);
   EXPECT_NE(aDictionary.FindUID("1.2.3"), nullptr);
}
