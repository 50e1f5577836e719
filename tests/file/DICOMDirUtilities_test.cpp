#include <gtest/gtest.h>

#include "support/CapturedErrorLog.h"
#include "support/DatasetBytes.h"
#include "support/Elements.h"
#include "support/FileBytes.h"
#include "support/StreamErrors.h"
#include "support/TemporaryFile.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/file/DICOMDirUtilities.h"
#include "talvenor/file/Part10FileOutputStream.h"
#include "talvenor/file/Part10Header.h"
#include "talvenor/foundation/LibraryIdentity.h"
#include "talvenor/transfer/ConcreteOutputTransferSyntaxes.h"

namespace
{
using Offsets = DICOMDirUtilities::Offsets;

// A directory with records of different lengths, one with a private element and one empty.
void FillDirectory(DICOMDataObject& theDirectory)
{
   theDirectory.Push(TextElement(0x00041130, "SET", VRCode::CS));
   theDirectory.Push(NumberElement(0x00041200, VRCode::UL, UINT32{0}));
   theDirectory.Push(new SequenceVR(0x0004, 0x1220));
   for (const char* aType : {"PATIENT", "STUDY", ""})
   {
      auto* const aRecord = new DICOMDataObject;
      if (*aType != '\0')
      {
         aRecord->Push(NumberElement(0x00041400, VRCode::UL, UINT32{0}));
         aRecord->Push(TextElement(0x00041430, aType, VRCode::CS));
         aRecord->Push(TextElement(0x00090010, "A CREATOR"));
         aRecord->Push(TextElement(0x00091001, "private"));
      }
      theDirectory.Push(aRecord);
   }
}

int Calculate(DICOMDataObject& theDirectory, Offsets& theOffsets)
{
   TNResultCode aResult = TN_INTERNAL_ERROR;
   int anError = -1;
   const int isDone =
       DICOMDirUtilities::CalculateDirectoryRecordOffsets(theDirectory, "1.22.3", aResult, anError, theOffsets);
   EXPECT_EQ(aResult, TN_NO_ERROR);
   EXPECT_EQ(anError, 0);
   return isDone;
}

TEST(DICOMDirUtilities, OffsetsPointAtTheItemsOfTheWrittenFile)
{
   DICOMDataObject aDirectory;
   FillDirectory(aDirectory);
   Offsets anOffsets{99};
   ASSERT_EQ(Calculate(aDirectory, anOffsets), 1);
   ASSERT_EQ(anOffsets.size(), 3u);

   const TemporaryFile aFile;
   {
      Part10FileOutputStream aStream(aFile.Name(), new Part10Header(DICOMDirUtilities::kSOPClassUID, "1.22.3",
                                                                    "1.2.840.10008.1.2.1", kImplementationClassUID,
                                                                    kImplementationVersionName, "TENLETTERS"));
      LittleEndianExplicitOutputTransferSyntax(aStream).SaveDICOMObject(aDirectory);
      aStream.Close();
   }
   const std::string aBytes = aFile.Contents();
   for (const int anOffset : anOffsets)
   {
      EXPECT_EQ(aBytes.substr(static_cast<std::size_t>(anOffset), 4), Bytes("\xFE\xFF\x00\xE0"));
   }
   EXPECT_LT(anOffsets[0], anOffsets[1]);
   EXPECT_LT(anOffsets[1], anOffsets[2]);

   DICOMDataObject aLoaded;
   Offsets aRead{99};
   TNResultCode aResult;
   int anError;
   const auto aSource = OpenBytes(aBytes);
   ASSERT_EQ(DICOMDirUtilities::LoadFromStream(aLoaded, *aSource, aResult, anError, aRead), 1);
   EXPECT_EQ(aRead, anOffsets);
   EXPECT_TRUE(aLoaded.ValueEquals(aDirectory));
}

// Offsets do not depend on how the items state their lengths.
TEST(DICOMDirUtilities, ReadsOffsetsOfItemsOfEveryForm)
{
   for (const Encoding anEncoding : {Encoding::Explicit, Encoding::Implicit, Encoding::BigEndian})
   {
      DatasetBytes aRecord(anEncoding);
      aRecord.Element(0x00041430, "CS", "IMAGE ");
      const auto aLength = static_cast<UINT32>(aRecord.Size());
      DatasetBytes aDirectory(anEncoding);
      const auto aHeader = static_cast<int>(aDirectory.File().size());
      const auto aHere = [&] { return aHeader + static_cast<int>(aDirectory.Size()); };
      Offsets anExpected;
      aDirectory.Element(0x00041130, "CS", "").Sequence(0x00041220);
      anExpected.push_back(aHere());
      aDirectory.Item(aLength, aRecord.Bytes());
      anExpected.push_back(aHere());
      aDirectory.Item().Raw(aRecord.Bytes()).ItemEnd();
      anExpected.push_back(aHere());
      aDirectory.Item(0).SequenceEnd();

      DICOMDataObject aLoaded;
      Offsets anOffsets;
      TNResultCode aResult;
      int anError;
      bool isCut = true;
      const auto aStream = OpenBytes(aDirectory.File(), 1, 1);
      EXPECT_EQ(DICOMDirUtilities::LoadFromStream(aLoaded, *aStream, aResult, anError, anOffsets, isCut), 1);
      EXPECT_EQ(anOffsets, anExpected) << static_cast<int>(anEncoding);
      EXPECT_FALSE(isCut);
   }
}

TEST(DICOMDirUtilities, TellsWhyADirectoryDoesNotLoad)
{
   DatasetBytes aWrong;
   aWrong.Element(0x00041130, "CS", "").Sequence(0x00041220).Element(0x00041430, "CS", "IMAGE ");
   const struct
   {
      const char* itsName;
      std::string itsFile;
      TNResultCode itsResult;
      const char* itsLog;
      UINT32 itsEntries; // loaded before it failed
   } kCases[] = {
       {"unknown syntax", FileHeader("1.2.3.4.5.6") + aWrong.Bytes(), TN_TRANSFER_SYNTAX_UNSUPPORTED,
        "DICOMDirUtilities::LoadFromStream: Unknown transfer syntax type: Specified transfer syntax not supported.", 0},
       {"no item", aWrong.File(), TN_INVALID_DELIMITER, "DICOMDirUtilities::LoadFromStream: ", 1},
   };
   for (const auto& aCase : kCases)
   {
      const CapturedErrorLog aLog;
      DICOMDataObject aDirectory;
      FillDirectory(aDirectory);
      Offsets anOffsets{1};
      TNResultCode aResult = TN_NO_ERROR;
      int anError = -1;
      const auto aStream = OpenBytes(aCase.itsFile, 1, 1);
      EXPECT_EQ(DICOMDirUtilities::LoadFromStream(aDirectory, *aStream, aResult, anError, anOffsets), 0);
      EXPECT_EQ(aResult, aCase.itsResult) << aCase.itsName;
      EXPECT_EQ(anError, 0);
      EXPECT_TRUE(anOffsets.empty());
      EXPECT_EQ(aDirectory.Entries(), aCase.itsEntries) << aCase.itsName;
      EXPECT_NE(aLog.Text().find(aCase.itsLog), std::string::npos) << aCase.itsName << ": " << aLog.Text();
      unsigned char aByte;
      EXPECT_EQ(StreamErrorOf([&] { aStream->Read(&aByte, 1); }).itsCode, TN_INVALID_FILE_HANDLE) << aCase.itsName;
   }
}

} // namespace
