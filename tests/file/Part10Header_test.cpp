#include "talvenor/file/Part10Header.h"

#include <cstring>
#include <gtest/gtest.h>
#include <memory>

#include "support/Elements.h"
#include "talvenor/foundation/AETitle.h"
#include "talvenor/foundation/Exceptions.h"

namespace
{
std::unique_ptr<DICOMDataObject> WholeMeta()
{
   auto aMeta = std::make_unique<DICOMDataObject>();
   aMeta->Push(BytesElement(0x00020001, VRCode::OB, std::string("\x02\x03", 2)));
   aMeta->Push(BytesElement(0x00020002, VRCode::UI, "1.2.3"));
   aMeta->Push(BytesElement(0x00020003, VRCode::UI, "1.2.4"));
   aMeta->Push(BytesElement(0x00020010, VRCode::UI, "1.2.840.10008.1.2"));
   aMeta->Push(BytesElement(0x00020012, VRCode::UI, "1.2.5"));
   aMeta->Push(TextElement(0x00020013, "NAME", VRCode::SH));
   aMeta->Push(TextElement(0x00020016, "TITLE", VRCode::AE));
   aMeta->Push(BytesElement(0x00020100, VRCode::UI, "1.2.6"));
   aMeta->Push(BytesElement(0x00020102, VRCode::OB, std::string("\x00\x01\x02\x03", 4)));
   return aMeta;
}

std::string WhyNot(const DICOMDataObject& theMeta, int theForceVersion, int theTolerant)
{
   try
   {
      Part10Header aHeader(nullptr, theMeta, theForceVersion, theTolerant);
   }
   catch (const ConstructorError& anError)
   {
      return anError.why();
   }
   return "";
}

TEST(Part10Header, TakesEveryElementOfTheMetaInformationAndGivesItAgain)
{
   unsigned char aPreamble[128];
   std::memset(aPreamble, 'p', sizeof aPreamble);
   const Part10Header aHeader(aPreamble, *WholeMeta(), 0, 0);
   aPreamble[0] = 'q'; // copied by then
   EXPECT_EQ(std::string(reinterpret_cast<const char*>(aHeader.GetPreamble()), 128), std::string(128, 'p'));
   EXPECT_EQ(aHeader.GetSOPClassUID(), "1.2.3");
   EXPECT_EQ(aHeader.GetSOPInstanceUID(), "1.2.4");
   EXPECT_EQ(aHeader.GetTransferSyntaxUID(), "1.2.840.10008.1.2"); // odd: without its NUL
   EXPECT_EQ(aHeader.GetImplementationClassUID(), "1.2.5");
   EXPECT_EQ(aHeader.GetPrivateCreatorUID(), "1.2.6");
   const std::unique_ptr<DICOMDataObject> aMeta(aHeader.AsDICOMDataObject(0));
   ASSERT_NE(aMeta, nullptr);
   EXPECT_EQ(aMeta->GetEndian(), TNEndian::LittleEndian);
   EXPECT_TRUE(aMeta->ValueEquals(*WholeMeta()));
}

TEST(Part10Header, SaysWhichElementIsMissing)
{
   const char* const kNoSyntax = "Missing TransferSyntaxUID";
   const struct
   {
      UINT16 itsElement;
      const char* itsText;
      const char* itsTolerantText = "";
   } kCases[] = {
       {0x0001, "Missing/bad FileMetaInformationVersion"},
       {0x0002, "Missing MediaStorageSOPClassUID"},
       {0x0003, "Missing MediaStorageSOPInstanceUID"},
       {0x0010, kNoSyntax, kNoSyntax},
       {0x0012, "Missing ImplementationClassUID"},
       {0x0013, ""},
       {0x0016, ""},
       {0x0100, ""},
       {0x0102, "PrivateInformationCreatorUID present but missing PrivateInformation"},
   };
   for (const auto& aCase : kCases)
   {
      const auto aMeta = WholeMeta();
      delete aMeta->RemoveVR(0x0002, aCase.itsElement);
      EXPECT_EQ(WhyNot(*aMeta, 0, 0), aCase.itsText) << aCase.itsElement;
      EXPECT_EQ(WhyNot(*aMeta, 0, 1), aCase.itsTolerantText) << aCase.itsElement;
   }

   // The first one that is missing, in the order of the checks.
   EXPECT_EQ(WhyNot(DICOMDataObject(), 1, 0), kNoSyntax);

   const auto anEmpty = WholeMeta();
   anEmpty->Push(BytesElement(0x00020102, VRCode::OB, ""));
   EXPECT_EQ(WhyNot(*anEmpty, 0, 0), "PrivateInformationCreatorUID present but problem copying PrivateInformation");
   EXPECT_EQ(WhyNot(*anEmpty, 0, 1), "");
}

TEST(Part10Header, VersionIsReadForcedOrDefault)
{
   const auto aMeta = WholeMeta();
   EXPECT_EQ(Part10Header(nullptr, *aMeta, 1, 0).GetVersion(), 0x0001);
   EXPECT_EQ(Part10Header(nullptr, *aMeta, 0, 1).GetVersion(), 0x0203);
   aMeta->Push(BytesElement(0x00020001, VRCode::OB, ""));
   EXPECT_EQ(WhyNot(*aMeta, 0, 0), "Missing/bad FileMetaInformationVersion");
   EXPECT_EQ(Part10Header(nullptr, *aMeta, 0, 1).GetVersion(), 0x0001);
   for (const UINT16 aVersion : {0, 1})
   {
      EXPECT_TRUE(Part10Header::IsSupported(aVersion)) << aVersion;
   }
   for (const UINT16 aVersion : {2, 3, 0x0100, 0x8001})
   {
      EXPECT_FALSE(Part10Header::IsSupported(aVersion)) << aVersion;
   }
}

TEST(Part10Header, CopiesAreDeep)
{
   auto* const aPreamble = new unsigned char[128]();
   auto* const anInformation = new unsigned char[2]{7, 8};
   Part10Header aHeader("1", "2", "3", "4", "5", "6", "7", anInformation, 2);
   aHeader.SetPreamble(aPreamble);
   Part10Header anAssigned("a", "b", "c", "d", "e");
   anAssigned = aHeader;
   anAssigned = *&anAssigned;
   const Part10Header aCopy(aHeader);
   aPreamble[0] = 'x';
   anInformation[0] = 'x';
   for (const Part10Header* aResult : {static_cast<const Part10Header*>(&anAssigned), &aCopy})
   {
      EXPECT_EQ(aResult->GetPreamble()[0], 0);
      ASSERT_EQ(aResult->GetPrivateInformationLength(), 2u);
      EXPECT_EQ(aResult->GetPrivateInformation()[0], 7);
      EXPECT_EQ(aResult->GetPrivateCreatorUID(), "7");
      EXPECT_EQ(aResult->GetSourceAETitle(), "6");
   }
}

TEST(Part10Header, DatasetHasDefaultsAndLimits)
{
   const std::vector<UINT32> kPublic = {0x00020001, 0x00020002, 0x00020003, 0x00020010,
                                        0x00020012, 0x00020013, 0x00020016};
   std::vector<UINT32> aPrivate = kPublic;
   aPrivate.insert(aPrivate.end(), {0x00020100, 0x00020102});
   const RWCString aDefault = AETitle::GetDefaultAETitle();
   const auto aBytes = [] { return new unsigned char[2](); };
   const struct
   {
      const char* itsName;
      Part10Header itsHeader;
      std::vector<UINT32> itsTags;
      const char* itsVersionName;
      std::string itsTitle;
   } kCases[] = {
       {"17 characters", {"1", "2", "3", "4", "ABCDEFGHIJKLMNOPQ", "T"}, kPublic, "ABCDEFGHIJKLMNOP", "T"},
       {"no name, no title", {"1", "2", "3", "4", ""}, kPublic, "", aDefault},
       {"private", {"1", "2", "3", "4", "", "T", "7", aBytes(), 2}, aPrivate, "", "T"},
       {"private without creator", {"1", "2", "3", "4", "", "T", "", aBytes(), 2}, kPublic, "", "T"},
       {"private without length", {"1", "2", "3", "4", "", "T", "7", aBytes(), 0}, kPublic, "", "T"},
       {"private without bytes", {"1", "2", "3", "4", "", "T", "7", nullptr, 2}, kPublic, "", "T"},
   };
   for (const auto& aCase : kCases)
   {
      const std::unique_ptr<DICOMDataObject> aMeta(aCase.itsHeader.AsDICOMDataObject(0));
      ASSERT_NE(aMeta, nullptr) << aCase.itsName;
      std::vector<UINT32> aTags = TagsOf(*aMeta);
      std::erase(aTags, 0x00020000u); // the iterator's
      EXPECT_EQ(aTags, aCase.itsTags) << aCase.itsName;
      EXPECT_EQ(TextOf(*aMeta, 0x00020013), aCase.itsVersionName) << aCase.itsName;
      EXPECT_EQ(TextOf(*aMeta, 0x00020016), aCase.itsTitle) << aCase.itsName;
   }
}

TEST(Part10Header, NeedsItsUIDsToBecomeADataset)
{
   for (int i = 0; i < 4; ++i)
   {
      const auto aUID = [i](int thePlace) { return thePlace == i ? "" : "1.2"; };
      const Part10Header aHeader(aUID(0), aUID(1), aUID(2), aUID(3), "NAME");
      EXPECT_EQ(aHeader.AsDICOMDataObject(0), nullptr) << i;
      const std::unique_ptr<DICOMDataObject> aMeta(aHeader.AsDICOMDataObject(1));
      EXPECT_EQ(aMeta != nullptr, i != 2) << i << ": only the transfer syntax is never forgone";
   }
}
} // namespace
