#include "talvenor/dictionary/MUIDDictionary.h"

#include <gtest/gtest.h>
#include <memory>
#include <sstream>

#include "support/MessageOf.h"
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
} // namespace

TEST(MUIDDictionaryEntry, ReadsTheFieldsOfALine)
{
   struct
   {
      const char *itsLine, *itsExpected;
   } const kCases[] = {
       {"TS,1.2.840.10008.1.2,Implicit,\"Implicit VR, Little Endian\",TSLEI",
        "TS|1.2.840.10008.1.2|Implicit|Implicit VR, Little Endian|TSLEI"},
       {"TS, 1.2.840.10008.1.2.2 ,Big, Explicit Big Endian , TSBEE ",
        "TS|1.2.840.10008.1.2.2|Big|Explicit Big Endian|TSBEE"},
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
      const char *itsLine, *itsFault;
   } const kCases[] = {
       {"", ""},
       {"XX,1.2.3,m,d", ""},
       {"SC,,m,d", ""},
       {"SC,\"\",m,d", ": Empty item"},
       {"TS,1.2.3,m,d", ""},
       {"TS,1.2.3,m,d,", ": Empty item"},
       {"TS,1.2.3,m,d,tslei", ": Unknown transfer syntax type (tslei)"},
       {"TS,1.2.3,m,d,TSLEI,x", ": Unknown transfer syntax type (TSLEI,x)"},
   };
   for (const auto& aCase : kCases)
   {
      const RWCString aLine = aCase.itsLine;
      EXPECT_EQ(MessageOf<InvalidEntryDescriptionException>([&] { MUIDDictionaryEntry anEntry(aLine); }),
                aLine + aCase.itsFault);
   }
}

TEST(MUIDDictionary, FaultsNameTheLine)
{
   struct
   {
      const char *itsName, *itsLines, *itsExpected;
   } const kCases[] = {
       {"missing basic encoding", "\n  TS,1.2.1,m,d\n",
        "Invalid UID dictionary entry description at line3: TS,1.2.1,m,d"},
       {"mnemonic again", "SC,1.2.3,ImplicitVRLittleEndian,d",
        "Invalid UID dictionary entry (duplicate Mnemonic) at line2"},
       {"UID again", "SC,1.2.840.10008.1.2,m,d", "Invalid UID dictionary entry (duplicate UID) at line2"},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      MUIDDictionary aDictionary;
      std::istringstream aStream(std::string(kImplicit) + aCase.itsLines);
      EXPECT_EQ(MessageOf<InvalidEntryDescriptionException>([&] { aDictionary.Load(aStream); }), aCase.itsExpected);
      EXPECT_EQ(aDictionary.Size(), 1u);
      EXPECT_NE(aDictionary.FindMnemonic("ImplicitVRLittleEndian"), nullptr);
      EXPECT_EQ(aDictionary.FindMnemonic("m"), nullptr);
   }
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

TEST(MUIDDictionary, LoadingReplacesTheContentsAndAddRefusesWhatIsThere)
{
   TemporaryDirectory aDirectory;
   std::istringstream aStream(kImplicit);
   MUIDDictionary aDictionary(aStream);
   EXPECT_FALSE(aDictionary.Load(aDirectory.File("missing")));
   EXPECT_NE(aDictionary.FindUID("1.2.840.10008.1.2"), nullptr);
   WriteFile(aDirectory.File("uid.dic"), "// comment\r\n\n  SC,1.2.3,m,d");
   EXPECT_TRUE(aDictionary.Load(aDirectory.File("uid.dic")));
   EXPECT_EQ(aDictionary.FindUID("1.2.840.10008.1.2"), nullptr);
   EXPECT_EQ(aDictionary.FindUID("1.2.3"), aDictionary.FindMnemonic("m"));

   const MUIDDictionaryEntry anEntry(RWCString("SC,1.2.4,m,d"));
   EXPECT_EQ(MessageOf<InvalidEntryDescriptionException>([&] { aDictionary.Add(anEntry); }),
             "Invalid UID dictionary entry (duplicate Mnemonic)");
   EXPECT_EQ(MessageOf<InvalidEntryDescriptionException>(
                 [&] { aDictionary.Add(new MUIDDictionaryEntry(RWCString("SC,1.2.3,n,d"))); }),
             "Invalid UID dictionary entry (duplicate UID)");
   EXPECT_EQ(aDictionary.Size(), 1u);
}
