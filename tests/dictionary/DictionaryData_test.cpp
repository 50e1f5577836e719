// The files of data/: every one loads, and they say what the standard says.
#include <filesystem>
#include <gtest/gtest.h>

#include "talvenor/dictionary/MDataDictionary.h"
#include "talvenor/dictionary/MUIDDictionary.h"
#include "talvenor/dictionary/PrivateDataDictionaryCatalog.h"

namespace
{
const std::string kData = TALVENOR_SOURCE_DIR "/data/";
constexpr UINT32 kAnyNumber = 4294967295; // as the head of dicom.dic has it
} // namespace

TEST(DictionaryData, HoldsTheAttributesOfTheStandard)
{
   MDataDictionary aDictionary;
   ASSERT_TRUE(aDictionary.Load(kData + "dicom.dic"));
   EXPECT_GT(aDictionary.Size(), 5300u);
   struct
   {
      UINT16 itsGroup, itsElement;
      const char* itsName;
      MDDEntry::ValueType itsType;
      UINT32 itsMinimum, itsMaximum;
   } const kCases[] = {
       // PS3.6 and PS3.7 annex E
       {0x0008, 0x0008, "ImageType", MDDEntry::CS, 2, kAnyNumber},
       {0x0028, 0x0106, "SmallestImagePixelValue", MDDEntry::US_or_SS, 1, 1},
       {0x0028, 0x1101, "RedPaletteColorLookupTableDescriptor", MDDEntry::US_US_or_SS_US, 3, 3},
       {0x0028, 0x3006, "LUTData", MDDEntry::US_or_SS_or_OW, 1, kAnyNumber},
       {0x0008, 0x0119, "LongCodeValue", MDDEntry::UN, 1, 1}, // UC, which has no name here
       {0x5400, 0x1010, "WaveformData", MDDEntry::OW_or_OB, 1, 1},
       {0x7FE0, 0x0010, "PixelData", MDDEntry::OW_or_OB, 1, 1},
       {0xFFFE, 0xE000, "Item", MDDEntry::NONE, 1, 1},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      const MDDEntry* anEntry = aDictionary.Find(MAttributeTag(aCase.itsGroup, aCase.itsElement));
      ASSERT_NE(anEntry, nullptr);
      EXPECT_EQ(anEntry->Name(), aCase.itsName);
      EXPECT_EQ(anEntry->GetType(), aCase.itsType);
      EXPECT_EQ(anEntry->VMMin(), aCase.itsMinimum);
      EXPECT_EQ(anEntry->VMMax(), aCase.itsMaximum);
   }
   aDictionary.ForEach([&](const MDDEntry& theEntry) {
      EXPECT_EQ(aDictionary.Find(theEntry), &theEntry) << theEntry.AsNumericString();
      EXPECT_EQ(aDictionary.Find(theEntry.Name()), &theEntry) << theEntry.Name();
      EXPECT_LE(theEntry.VMMin(), theEntry.VMMax()) << theEntry.Name();
      EXPECT_FALSE(theEntry.Description().empty()) << theEntry.Name();
   });
}

TEST(DictionaryData, HoldsTheRegisteredUIDs)
{
   MUIDDictionary aDictionary;
   ASSERT_TRUE(aDictionary.Load(kData + "uid.dic"));
   EXPECT_GT(aDictionary.Size(), 1800u);
   struct
   {
      const char* itsUID;
      MUIDDictionaryEntry::UIDType itsType;
      BasicTransferSyntaxKind::BasicTransferSyntaxType itsBasicType;
   } const kCases[] = {
       // PS3.6 annex A
       {"1.2.840.10008.1.2", MUIDDictionaryEntry::TS, BasicTransferSyntaxKind::LittleEndianImplicit},
       {"1.2.840.10008.1.2.2", MUIDDictionaryEntry::TS, BasicTransferSyntaxKind::BigEndianExplicit},
       {"1.2.840.10008.1.2.4.90", MUIDDictionaryEntry::TS, BasicTransferSyntaxKind::LittleEndianExplicit},
       {"1.2.840.10008.5.1.4.1.1.2", MUIDDictionaryEntry::SC, BasicTransferSyntaxKind::UnknownBasicType},
       {"1.2.840.10008.3.1.1.1", MUIDDictionaryEntry::AC, BasicTransferSyntaxKind::UnknownBasicType},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsUID);
      const MUIDDictionaryEntry* anEntry = aDictionary.FindUID(aCase.itsUID);
      ASSERT_NE(anEntry, nullptr);
      EXPECT_EQ(anEntry->GetType(), aCase.itsType);
      EXPECT_EQ(anEntry->GetBasicTransferSyntaxType(), aCase.itsBasicType);
      EXPECT_EQ(aDictionary.FindMnemonic(anEntry->GetMnemonic()), anEntry);
   }
}

TEST(DictionaryData, EveryPrivateFileLoadsUnderItsCreator)
{
   PrivateDataDictionaryCatalog aByIndex;
   ASSERT_EQ(aByIndex.AddDeferredIndex(kData + "private/index"), 1);
   std::size_t aFiles = 0;
   for (const auto& aFile : std::filesystem::directory_iterator(kData + "private"))
   {
      if (aFile.path().extension() == ".dic")
      {
         SCOPED_TRACE(aFile.path().filename());
         ++aFiles;
         const MPrivateDataDictionary aDictionary(aFile.path().string());
         EXPECT_GT(aDictionary.Size(), 0u);
         const MPrivateDataDictionary* anIndexed = aByIndex.Find(aDictionary.GetPrivateCreatorID());
         ASSERT_NE(anIndexed, nullptr);
         EXPECT_EQ(anIndexed->Size(), aDictionary.Size());
      }
   }
   EXPECT_GT(aFiles, 500u);
   EXPECT_EQ(aByIndex.Size(), aFiles);
   const MPrivateDataDictionary* aDictionary = aByIndex.Find("SIEMENS CSA HEADER");
   ASSERT_NE(aDictionary, nullptr);
   ASSERT_NE(aDictionary->Find(MAttributeTag(0x0029, 0x1010)), nullptr);
   EXPECT_EQ(aDictionary->Find(MAttributeTag(0x0029, 0x1010))->GetType(), MDDEntry::OB);
   EXPECT_TRUE(aByIndex.Contains("SIEMENS CM VA0  COAD")); // two blanks, as the scanner writes it
}
