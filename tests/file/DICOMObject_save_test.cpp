// DICOMObject::SaveToFile.
#include <cerrno>
#include <gtest/gtest.h>

#include "support/CapturedErrorLog.h"
#include "support/DatasetBytes.h"
#include "support/Elements.h"
#include "support/FileBytes.h"
#include "support/TemporaryFile.h"
#include "talvenor/dictionary/UID.h"
#include "talvenor/file/Part10FileInputStream.h"
#include "talvenor/file/Part10Header.h"
#include "talvenor/foundation/LibraryIdentity.h"
#include "talvenor/transfer/TransferSyntaxType.h"

namespace
{
const UID kJPEG("1.2.840.10008.1.2.4.50");
const UID kUnknown("1.2.3.4");

void FillObject(DICOMDataObject& theObject)
{
   theObject.Push(BytesElement(0x00080016, VRCode::UI, "1.2.3"));
   theObject.Push(BytesElement(0x00080018, VRCode::UI, "1.22.3"));
   theObject.Push(NumberElement(0x00280010, VRCode::US, UINT16{0x0102}));
}

struct Saved
{
   int itsReturn;
   TNResultCode itsResult = TN_INTERNAL_ERROR;
   int itsSystemError = -1;
};

Saved Save(DICOMObject& theObject, const RWCString& thePath, int theType, const UID* theSyntax = nullptr,
           const RWCString& theClass = "", const RWCString& theInstance = "")
{
   Saved aSaved{};
   aSaved.itsReturn = theObject.SaveToFile(thePath, static_cast<DICOMFileType>(theType), "ignored", aSaved.itsResult,
                                           aSaved.itsSystemError, theClass, theInstance, theSyntax);
   return aSaved;
}

TEST(SaveToFile, WritesMetaInformationAndDatasetInTheSyntaxOfTheType)
{
   const struct
   {
      const char* itsName;
      int itsType;
      const UID* itsSyntax;
      const char* itsClass;
      const char* itsInstance;
      const char* itsWrittenSyntax;
      Encoding itsEncoding;
   } kCases[] = {
       {"1", 1, &kJPEG, "", "", "1.2.840.10008.1.2", Encoding::Implicit},
       {"2", 2, nullptr, "", "", "1.2.840.10008.1.2.1", Encoding::Explicit},
       {"2, given", 2, &kJPEG, "1.7", "1.77", "1.2.840.10008.1.2.4.50", Encoding::Explicit},
       {"3", 3, nullptr, "", "1.77", "1.2.840.10008.1.2.2", Encoding::BigEndian},
   };
   for (const auto& aCase : kCases)
   {
      const TemporaryFile aPath;
      DICOMDataObject anObject;
      FillObject(anObject);
      const Saved aSaved =
          Save(anObject, aPath.Name(), aCase.itsType, aCase.itsSyntax, aCase.itsClass, aCase.itsInstance);
      ASSERT_EQ(aSaved.itsReturn, 1) << aCase.itsName;
      EXPECT_EQ(aSaved.itsResult, TN_NO_ERROR);
      EXPECT_EQ(aSaved.itsSystemError, 0);

      const Part10FileInputStream aStream(aPath.Name());
      const Part10Header& aHeader = *aStream.GetPart10Header();
      EXPECT_EQ(aHeader.GetTransferSyntaxUID(), aCase.itsWrittenSyntax) << aCase.itsName;
      EXPECT_EQ(aHeader.GetSOPClassUID(), *aCase.itsClass ? aCase.itsClass : "1.2.3") << aCase.itsName;
      EXPECT_EQ(aHeader.GetSOPInstanceUID(), *aCase.itsInstance ? aCase.itsInstance : "1.22.3") << aCase.itsName;
      EXPECT_EQ(aHeader.GetImplementationClassUID(), kImplementationClassUID);
      EXPECT_EQ(aHeader.GetImplementationVersionName(), kImplementationVersionName);

      DatasetBytes anExpected(aCase.itsEncoding);
      anExpected.Element(0x00080016, "UI", Bytes("1.2.3\0"))
          .Element(0x00080018, "UI", "1.22.3")
          .Stated(0x00280010, "US", 2)
          .Number(0x0102, 2);
      EXPECT_EQ(aPath.Contents().substr(aStream.GetHeaderSize()), anExpected.Bytes()) << aCase.itsName;
   }
}

TEST(SaveToFile, TellsWhatIsWrongAndLeavesTheFile)
{
   const struct
   {
      const char* itsName;
      UINT32 itsRemoved; // an element
      int itsType;
      const UID* itsSyntax;
      const char* itsPath; // null: a file that is there
      TNResultCode itsResult;
      int itsSystemError;
      const char* itsText;
      const char* itsDescription;
   } kCases[] = {
       {"type", 0, 4, nullptr, nullptr, TN_INVALID_ARGUMENT, 0,
        "DICOMObject::SaveToFile(): Error: Invalid file type specifier argument", "Invalid argument in function call."},
       {"class", 0x00080016, 2, nullptr, nullptr, TN_NO_SOP_CLASS_UID, 0, "Input file has no SOP Class UID!",
        "Object does not contain required SOP class UID attribute."},
       {"instance", 0x00080018, 2, nullptr, nullptr, TN_NO_SOP_INSTANCE_UID, 0, "Input file has no SOP Instance UID!",
        "Object does not contain required SOP instance UID attribute."},
       {"syntax", 0, 2, &kUnknown, nullptr, TN_TRANSFER_SYNTAX_UNSUPPORTED, 0,
        "Unable to create output transfer syntax type!", "Specified transfer syntax not supported."},
       {"folder", 0, 2, nullptr, "/nowhere/x", TN_SYSTEM_CALL_FAILED, ENOENT, "Unable to open output file!",
        "Failed system call."},
       {"full disk", 0, 2, nullptr, "/dev/full", TN_SYSTEM_CALL_FAILED, ENOSPC,
        "Part10OutputFileStream::Flush(): itsLockStream->flush() failed", "Failed system call."},
   };
   for (const auto& aCase : kCases)
   {
      const CapturedErrorLog aLog;
      const TemporaryFile aFile("what was there");
      const std::string aPath = aCase.itsPath != nullptr ? aCase.itsPath : aFile.Name();
      DICOMDataObject anObject;
      FillObject(anObject);
      delete anObject.RemoveVR(static_cast<UINT16>(aCase.itsRemoved >> 16), static_cast<UINT16>(aCase.itsRemoved));
      const Saved aSaved = Save(anObject, aPath, aCase.itsType, aCase.itsSyntax);
      EXPECT_EQ(aSaved.itsReturn, 0) << aCase.itsName;
      EXPECT_EQ(aSaved.itsResult, aCase.itsResult) << aCase.itsName;
      EXPECT_EQ(aSaved.itsSystemError, aCase.itsSystemError) << aCase.itsName;
      EXPECT_EQ(aFile.Contents(), "what was there") << aCase.itsName;
      const std::string aLine = "DICOMObject::SaveToFile(\"" + aPath + "\"):Error:" + aCase.itsText +
                                " Result:" + aCase.itsDescription + "\n";
      EXPECT_NE(aLog.Text().find(aLine), std::string::npos) << aCase.itsName << ": " << aLog.Text();
   }
}
} // namespace
