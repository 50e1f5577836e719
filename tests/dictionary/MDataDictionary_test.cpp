#include "talvenor/dictionary/MDataDictionary.h"

#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "support/MessageOf.h"
#include "support/TemporaryDirectory.h"
#include "talvenor/foundation/Exceptions.h"

namespace
{
const char kName[] = "0010,0010,PN,\"Patient's Name\",PatientName,1,1\n";
const char kID[] = "0010,0020,LO,\"Patient ID\",PatientID,1,1\n";

bool LoadText(MDataDictionary& theDictionary, const std::string& theText)
{
   std::istringstream aStream(theText);
   return theDictionary.Load(aStream);
}

// The private parts, as a derived class sees them.
class OpenDictionary : public MDataDictionary
{
public:
   using MDataDictionary::GetPrivateBlockGroup;
   using MDataDictionary::GetPrivateCreatorID;
};

// Fails as a broken disk does: the standard file buffer throws.
class FailingBuffer : public std::streambuf
{
protected:
   std::streamsize xsgetn(char*, std::streamsize) override { throw std::runtime_error("read error"); }
};
} // namespace

// Lines that straddle the blocks in which the stream is read, and one that is longer than a block.
TEST(MDataDictionary, LinesMayBeOfAnyLengthAndNumber)
{
   std::string aText = "//" + std::string(200000, 'x') + "\r\n\r\n \t // indented\n\n\t" + kName + "   \n";
   for (unsigned int anElement = 0; anElement < 0x4000; ++anElement)
   {
      char aLine[64];
      std::snprintf(aLine, sizeof aLine, "0019,%04x,LO,\"Description of %u\",Name%u,1,1\r\n", anElement, anElement,
                    anElement);
      aText += aLine;
   }
   MDataDictionary aDictionary(0);
   ASSERT_TRUE(LoadText(aDictionary, aText + "0010,0020,LO,\"Patient ID\",PatientID,1,1")); // no line feed at the end
   ASSERT_EQ(aDictionary.Size(), 0x4002u);
   EXPECT_EQ(aDictionary.Find("PatientID"), aDictionary.Find(MAttributeTag(0x0010, 0x0020)));
   for (unsigned int anElement = 0; anElement < 0x4000; ++anElement)
   {
      const MDDEntry* anEntry = aDictionary.Find(MAttributeTag(0x0019, static_cast<UINT16>(anElement)));
      ASSERT_NE(anEntry, nullptr) << anElement;
      ASSERT_EQ(aDictionary.Find("Name" + std::to_string(anElement)), anEntry);
   }
}

TEST(MDataDictionary, FaultsNameTheLine)
{
   struct
   {
      const char* itsName;
      std::string itsText;
      const char* itsExpected;
   } const kCases[] = {
       {"six fields", std::string(kName) + "\n  0010,0020,LO,d,n,1\r\n",
        "Invalid data dictionary entry description at line 3: 0010,0020,LO,d,n,1"},
       {"second tag", std::string(kName) + "0010,0010,PN,d,Other,1,1",
        "Duplicate data dictionary entry description at line 2: 0010,0010,PN,d,Other,1,1"},
       {"second name", "//\n" + std::string(kName) + "0010,0020,PN,d,PatientName,1,1",
        "Duplicate data dictionary entry description at line 3: 0010,0020,PN,d,PatientName,1,1"},
       {"element beyond the block", "PrivateCreator = X\n0029,0010,LO,d,a,1,1\n0029,0110,LO,d,b,1,1\n",
        "Invalid private element code (> 255) at line 3: 0029,0110,LO,d,b,1,1"},
       {"group before element", "PrivateCreator = X\n0029,0010,LO,d,a,1,1\n0031,0110,LO,d,b,1,1\n",
        "Attempt to change private block group code at line 3: 0031,0110,LO,d,b,1,1"},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      MDataDictionary aDictionary;
      EXPECT_EQ(MessageOf<InvalidEntryDescriptionException>([&] { LoadText(aDictionary, aCase.itsText); }),
                aCase.itsExpected);
      EXPECT_EQ(aDictionary.Size(), 1u); // what stood before the fault stays
   }
   MDataDictionary aDictionary;
   EXPECT_THROW(LoadText(aDictionary, std::string(kName) + "0010,0020,OD,d,n,1,1\n"), InvalidValueTypeException);
}

TEST(MDataDictionary, ReadsThePrivateCreator)
{
   struct
   {
      const char *itsLine, *itsCreator;
   } const kCases[] = {
       {"PrivateCreator = EXAMPLE CREATOR  \r", "EXAMPLE CREATOR"},
       {"  PrivateCreator=A  B\t", "A  B\t"}, // only spaces go at the end
       {"PrivateCreator\t=\t \"A\"", "\"A\""},
   };
   for (const auto& aCase : kCases)
   {
      OpenDictionary aDictionary;
      ASSERT_TRUE(LoadText(aDictionary, aCase.itsLine + std::string("\n0029,0010,LO,d,a,1,1\n0029,00FF,LO,d,b,1,1\n")));
      EXPECT_EQ(aDictionary.GetPrivateCreatorID(), aCase.itsCreator);
      EXPECT_EQ(aDictionary.GetPrivateBlockGroup(), 0x0029);
      OpenDictionary anAssigned;
      anAssigned = aDictionary;
      EXPECT_EQ(anAssigned.GetPrivateCreatorID(), aCase.itsCreator);
      EXPECT_EQ(anAssigned.GetPrivateBlockGroup(), 0x0029);
      aDictionary.Unload();
      EXPECT_EQ(aDictionary.GetPrivateBlockGroup(), -1);
   }
}

TEST(MDataDictionary, RepeatingGroupsAreFoundUnderTheFirst)
{
   MDataDictionary aDictionary;
   ASSERT_TRUE(LoadText(aDictionary, "6000,3000,OW,Overlay,OverlayData,1,1\n5000,3000,OW,Curve,CurveData,1,1\n"
                                     "6002,0010,US,d,Unreachable,1,1\n"));
   EXPECT_EQ(aDictionary.Find(MAttributeTag(0x6002, 0x3000)), aDictionary.Find("OverlayData"));
   EXPECT_EQ(aDictionary.Find(MAttributeTag(0x501E, 0x3000)), aDictionary.Find("CurveData"));
   EXPECT_EQ(aDictionary.Find(MAttributeTag(0x6100, 0x3000)), nullptr);
   EXPECT_EQ(aDictionary.Find(MAttributeTag(0x6002, 0x0010)), nullptr);
}

TEST(MDataDictionary, FilesThatCannotBeOpenedLeaveTheContents)
{
   TemporaryDirectory aDirectory;
   MDataDictionary aDictionary;
   ASSERT_TRUE(LoadText(aDictionary, kName));
   EXPECT_FALSE(aDictionary.Load(aDirectory.File("missing")));
   EXPECT_FALSE(aDictionary.Load(aDirectory.Path().string())); // a folder
   EXPECT_EQ(aDictionary.Size(), 1u);

   WriteFile(aDirectory.File("good"), kID);
   EXPECT_TRUE(aDictionary.Load(aDirectory.File("good")));
   EXPECT_NE(aDictionary.Find("PatientID"), nullptr);
   EXPECT_EQ(aDictionary.Find("PatientName"), nullptr); // replaced
   EXPECT_EQ(MessageOf<InvalidEntryDescriptionException>([&] { MDataDictionary aMissing(aDirectory.File("missing")); }),
             "MDataDictionary(\"" + aDirectory.File("missing") + "\")::Load(): stream read failed");
}

TEST(MDataDictionary, AStreamThatBreaksIsAFailedLoad)
{
   FailingBuffer aBuffer;
   std::istream aStream(&aBuffer);
   EXPECT_EQ(MessageOf<InvalidEntryDescriptionException>([&] { MDataDictionary aBroken(aStream); }),
             "MDataDictionary(istream&)::Load(): stream read failed");
}

TEST(MDataDictionary, AddTakesTheEntryUnlessItIsThere)
{
   MDataDictionary aDictionary;
   aDictionary.Add(new MDDEntry(0x0010, 0x0010, MDDEntry::PN, 1, 1, "PatientName", "d"));
   const auto aSameTag = std::make_unique<MDDEntry>(0x0010, 0x0010, MDDEntry::PN, 1, 1, "Other", "d");
   const auto aSameName = std::make_unique<MDDEntry>(0x0010, 0x0020, MDDEntry::PN, 1, 1, "PatientName", "d");
   aDictionary.Add(aSameTag.get()); // refused: stays ours
   aDictionary.Add(aSameName.get());
   aDictionary.Add(*aSameTag);
   EXPECT_EQ(aDictionary.Size(), 1u);
   EXPECT_NE(aDictionary.Find("PatientName"), nullptr);
}

TEST(MDataDictionary, CopiesShareNoEntry)
{
   auto aSource = std::make_unique<MDataDictionary>();
   ASSERT_TRUE(LoadText(*aSource, std::string(kName) + kID));
   const MDataDictionary aCopy(*aSource);
   MDataDictionary anAssigned;
   ASSERT_TRUE(LoadText(anAssigned, "0008,0008,CS,d,ImageType,2,9\n"));
   anAssigned = *aSource;
   anAssigned = *&anAssigned;
   aSource.reset();
   for (const MDataDictionary* aDictionary : {&aCopy, &std::as_const(anAssigned)})
   {
      EXPECT_EQ(aDictionary->Size(), 2u);
      ASSERT_NE(aDictionary->Find("PatientID"), nullptr);
      EXPECT_EQ(aDictionary->Find(MAttributeTag(0x0010, 0x0020))->Name(), "PatientID");
   }
}

TEST(MDataDictionary, DescriptionIsCutToTheBuffer)
{
   MDataDictionary aDictionary;
   ASSERT_TRUE(LoadText(aDictionary, kName));
   char aBuffer[32] = "#";
   EXPECT_EQ(aDictionary.RunTimeClass(0x0010, 0x0010, aBuffer, 0), VRCode::PN);
   EXPECT_STREQ(aBuffer, "#");
   aDictionary.RunTimeClass(0x0010, 0x0010, aBuffer, 1);
   EXPECT_STREQ(aBuffer, "");
   aDictionary.RunTimeClass(0x0010, 0x0010, aBuffer, 8);
   EXPECT_STREQ(aBuffer, "Patient");
   EXPECT_EQ(aDictionary.RunTimeClass(0x0010, 0x0099, aBuffer, sizeof aBuffer), VRCode::UN);
   EXPECT_STREQ(aBuffer, "Unknown");
}
