#include "talvenor/dataset/DICOMObjectDumper.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>
#include <string_view>

#include "support/DefaultDictionary.h"
#include "support/Dictionaries.h"
#include "support/Elements.h"
#include "support/Repeated.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/dictionary/MUIDDictionary.h"
#include "talvenor/foundation/TNTrace.h"

using namespace std::string_literals;
using namespace std::string_view_literals;

namespace
{
constexpr TNEndian::EndianType kLittle = TNEndian::LittleEndian;
constexpr TNEndian::EndianType kBig = TNEndian::BigEndian;

constexpr char kDictionaryText[] = "0000,0002,UI,Affected SOP Class UID,AffectedSOPClassUID,1,1\n"
                                   "0000,0100,US,Command Field,CommandField,1,1\n"
                                   "0000,0800,US,Data Set Type,DataSetType,1,1\n"
                                   "0000,0900,US,Status,Status,1,1\n"
                                   "0008,1115,SQ,Referenced Series Sequence,ReferencedSeriesSequence,1,1\n"
                                   "0008,1199,SQ,Referenced SOP Sequence,ReferencedSOPSequence,1,1\n"
                                   "0010,0010,PN,Patient's Name,PatientsName,1,1\n"
                                   "0028,0010,US,Rows,Rows,1,1\n"
                                   "0028,0106,US_or_SS,Smallest Image Pixel Value,SmallestImagePixelValue,1,1\n";

// Dictionaries of its own for every test; the default UID dictionary, which the dump asks, is put back afterwards.
class DICOMObjectDumperTest : public testing::Test, protected Dictionaries
{
protected:
   DICOMObjectDumperTest() : Dictionaries(kDictionaryText), itsUIDs(MUIDDictionary::GetDefaultUIDDictionary())
   {
      std::istringstream aUIDDictionary("SC, 1.2.840.10008.1.1, VerificationSOPClass, Verification SOP Class\n");
      MUIDDictionary::SetDefaultUIDDictionary(aUIDDictionary);
   }
   ~DICOMObjectDumperTest() override { MUIDDictionary::GetDefaultUIDDictionary() = itsUIDs; }

   template <class Object>
   std::string DumpOf(const Object& theObject)
   {
      Printed aPrinted;
      aPrinted.itsDumper.Dump(theObject);
      return aPrinted.Text();
   }

   std::string DumpOfElement(const VR& theVR)
   {
      Printed aPrinted;
      aPrinted.itsDumper.DumpVR(theVR, itsDictionary);
      return aPrinted.Text();
   }

   std::string RenderingOf(std::string_view theValue, UINT16 theTypeCode, TNEndian::EndianType theEndian)
   {
      Printed aPrinted;
      aPrinted.itsDumper.PrintData(static_cast<UINT32>(theValue.size()),
                                   reinterpret_cast<const unsigned char*>(theValue.data()), theTypeCode, theEndian);
      return aPrinted.Text();
   }

   struct Printed
   {
      std::ostringstream itsOutput;
      LogStream itsLog{itsOutput};
      DICOMObjectDumper itsDumper{itsLog};

      std::string Text() const { return itsOutput.str(); }
   };

   const DefaultDictionary itsDefault{kDictionaryText};
   MUIDDictionary itsUIDs;
};

// An element of any type with a copy of theBytes as its value.
VR* NewVR(UINT16 theGroup, UINT16 theElement, UINT16 theTypeCode, std::string_view theBytes)
{
   VR* aVR = BytesElement(UINT32{theGroup} << 16 | theElement, theTypeCode, std::string(theBytes));
   aVR->SetLength(static_cast<UINT32>(theBytes.size()));
   return aVR;
}

TEST_F(DICOMObjectDumperTest, RendersValuesByType)
{
   struct Case
   {
      const char* itsName;
      UINT16 itsTypeCode;
      TNEndian::EndianType itsEndian;
      std::string itsValue;
      std::string itsExpected;
   };
   const std::string anEAcute = "\xC3\xA9"; // one character of UTF-8
   const Case kCases[] = {
       {"text", VRCode::PN, kLittle, "Doe^Jane", "\"Doe^Jane\""},
       {"text of 100 characters", VRCode::LO, kLittle, std::string(100, 'x'), '"' + std::string(64, 'x') + '"'},
       {"text cut within a character", VRCode::LT, kLittle, std::string(63, 'x') + Repeated(anEAcute, 5),
        '"' + std::string(63, 'x') + '"'},
       {"text cut behind a character", VRCode::LT, kLittle, std::string(62, 'x') + Repeated(anEAcute, 5),
        '"' + std::string(62, 'x') + anEAcute + '"'},
       {"text in Latin-1", VRCode::LT, kLittle, std::string(70, '\xE9'), '"' + std::string(64, '\xE9') + '"'},
       {"text with control characters", VRCode::LT, kLittle, "a\r\nb\x1B\x7Fz", "\"a..b..z\""},
       {"known UID", VRCode::UI, kLittle, "1.2.840.10008.1.1\0"s, "\"1.2.840.10008.1.1\" (Verification SOP Class)"},
       {"unknown UID", VRCode::UI, kLittle, "1.2.3\0"s, "\"1.2.3\""},
       {"US, big-endian", VRCode::US, kBig, "\x01\x02\xFF\xFF"s, "258 65535"},
       {"SS", VRCode::SS, kLittle, "\xFF\xFF\x00\x80"s, "-1 -32768"},
       {"US of 21 values", VRCode::US, kLittle, Repeated("\x07\0"sv, 21), Repeated("7 ", 19) + "7..."},
       {"US of one byte", VRCode::US, kLittle, "\x07", "0x07"},
       {"OW, big-endian", VRCode::OW, kBig, "\x01\x00\xFF\xFF"s, "[sum = 100ff] 256 65535"},
       {"OW sums what it does not show", VRCode::OW, kLittle, Repeated("\x10\0"sv, 30),
        "[sum = 1e0] " + Repeated("16 ", 19) + "16..."},
       {"OB, long", VRCode::OB, kLittle, std::string(10001, '\xFF'),
        "[sum = 26e9ef] " + Repeated("0xff ", 19) + "0xff..."}, // 10001 * 255
       {"OW, long", VRCode::OW, kBig, Repeated("\xFF\xFE", 5000),
        "[sum = 1387d8f0] " + Repeated("65534 ", 19) + "65534..."}, // 5000 * 65534
       {"UL", VRCode::UL, kBig, "\xFF\xFF\xFF\xFE"s, "4294967294"},
       {"FL", VRCode::FL, kLittle, "\x00\x00\xC0\x3F\xCD\xCC\xCC\x3D"s, "1.5 0.1"},
       {"OF sums the bits", VRCode::OF, kBig, Repeated("\x3F\x80\0\0"sv, 2), "[sum = 7f000000] 1 1"},
       {"FD", VRCode::FD, kBig, "\xBF\xD0\0\0\0\0\0\0"s, "-0.25"},
       {"AT of one known tag", VRCode::AT, kBig, "\x00\x10\x00\x10"s, "(0010, 0010) \"Patient's Name\""},
       {"AT of one unknown tag", VRCode::AT, kBig, "\x00\x10\x00\x11"s, "(0010, 0011)"},
       {"untyped, 4 bytes", VRCode::None, kBig, "\0\0\1\0"s, "256"},
       {"untyped, printable", VRCode::None, kLittle, "ABC~ !", "\"ABC~ !\""},
       {"untyped, 18 bytes", VRCode::None, kLittle, std::string(18, '\x80'), Repeated("0x80 ", 15) + "0x80..."},
       {"letters of no known type", MakeVRCode('Z', 'Z'), kLittle, "ABCDEF", "\"ABCDEF\""},
       {"no bytes", VRCode::LO, kLittle, "", "(null)"},
   };
   for (const Case& aCase : kCases)
   {
      EXPECT_EQ(RenderingOf(aCase.itsValue, aCase.itsTypeCode, aCase.itsEndian), aCase.itsExpected) << aCase.itsName;
   }
   const unsigned char aTag[] = {0x10, 0x00, 0x10, 0x00};
   Printed aPrinted;
   aPrinted.itsDumper.PrintData(sizeof aTag, aTag, VRCode::AT, kLittle, 0);
   EXPECT_EQ(aPrinted.Text(), "(0010, 0010)") << "a tag without its description";
}

TEST_F(DICOMObjectDumperTest, AnElementLineTellsTagLengthTypeAndDescription)
{
   struct Case
   {
      const char* itsName;
      UINT16 itsGroup, itsElement, itsTypeCode;
      std::string_view itsValue;
      std::string itsExpected;
   };
   const Case kCases[] = {
       {"the element's type wins", 0x0010, 0x0010, VRCode::US, "\x01\0"sv, "(0010, 0010) 2/US \"Patient's Name\": 1\n"},
       {"UN, known tag", 0x0010, 0x0010, VRCode::UN, "Do", "(0010, 0010) 2/PN \"Patient's Name\": \"Do\"\n"},
       {"ambiguous type", 0x0028, 0x0106, VRCode::None, "\xFF\xFF"sv,
        "(0028, 0106) 2/US \"Smallest Image Pixel Value\": 65535\n"},
       {"UN, unknown tag", 0x0011, 0x10AB, VRCode::UN, "\1\0"sv, "(0011, 10ab) 2/UN \"\": 1\n"},
       {"untyped, unknown tag", 0x0011, 0x10AB, VRCode::None, "\1\2"sv, "(0011, 10ab) 2/?? \"\": 513\n"},
       {"untyped private creator", 0x0011, 0x0010, VRCode::None, "ACME",
        "(0011, 0010) 4/LO \"Private Creator Allocation\": \"ACME\"\n"},
       {"type of control characters", 0x0011, 0x10AB, MakeVRCode('\n', '\r'), "\1\0"sv, "(0011, 10ab) 2/.. \"\": 1\n"},
   };
   for (const Case& aCase : kCases)
   {
      const std::unique_ptr<VR> aVR(NewVR(aCase.itsGroup, aCase.itsElement, aCase.itsTypeCode, aCase.itsValue));
      EXPECT_EQ(DumpOfElement(*aVR), aCase.itsExpected) << aCase.itsName;
   }
}

TEST_F(DICOMObjectDumperTest, AnElementIsReadInItsOwnByteOrderUnlessToldOtherwise)
{
   unsigned char aValue[] = {0x01, 0x02};
   const VR aVR(0x0028, 0x0010, 2, aValue, 0, kBig);
   Printed aPrinted;
   aPrinted.itsDumper.Dump(aVR, itsDictionary);
   aPrinted.itsDumper.Dump(aVR, kLittle, itsDictionary);
   EXPECT_EQ(aPrinted.Text(), "(0028, 0010) 2/US \"Rows\": 258\n(0028, 0010) 2/US \"Rows\": 513\n");
}

TEST_F(DICOMObjectDumperTest, AValueInAStreamIsLeftThere)
{
   struct PendingVR : VR
   {
      using VR::VR;
      int IsStreamBuffered() const override { return 1; }
   };
   PendingVR aVR(0x0010, 0x0010);
   aVR.SetLength(12);
   EXPECT_EQ(DumpOfElement(aVR), "(0010, 0010) 12/PN \"Patient's Name\": [Data pending on input stream]\n");
}

TEST_F(DICOMObjectDumperTest, SequencesAreFramedAndIndented)
{
   auto anInner = std::make_unique<SequenceVR>(0x0009, 0x1001);
   auto aLeaf = std::make_unique<DICOMDataObject>();
   aLeaf->SetDataDictionary(itsDictionary);
   aLeaf->Push(NewVR(0x0028, 0x0010, VRCode::US, "\1\0"sv));
   anInner->AddSequenceItem(aLeaf.release());

   auto anOuter = std::make_unique<SequenceVR>(0x0008, 0x1115);
   auto aFirst = std::make_unique<DICOMDataObject>();
   aFirst->SetDataDictionary(itsDictionary);
   aFirst->Push(anInner.release());
   anOuter->AddSequenceItem(aFirst.release());
   anOuter->AddSequenceItem(new DICOMDataObject);
   anOuter->GetSequenceArray()->push_back(nullptr);

   DICOMDataObject aSet;
   aSet.SetDataDictionary(itsDictionary);
   aSet.Push(NewVR(0x0028, 0x0010, VRCode::US, "\0\2"sv));
   aSet.Push(anOuter.release());
   aSet.Push(new SequenceVR(0x0008, 0x1199));

   EXPECT_EQ(DumpOf(aSet), "--------- Start of DICOM Data Object ---------\n"
                           "Start of Sequence (Referenced Series Sequence)\n"
                           "    > --------- Start of Item 0 of 3 ---------\n"
                           "    > Start of Sequence (UNKNOWN Sequence)\n"
                           "        >> --------- Start of Item 0 of 1 ---------\n"
                           "        >> (0028, 0010) 2/US \"Rows\": 1\n"
                           "        >> --------- End of Item 0 of 1 ---------\n"
                           "    > End of Sequence (UNKNOWN Sequence)\n"
                           "    > --------- End of Item 0 of 3 ---------\n"
                           "    > --------- Start of Item 1 of 3 ---------\n"
                           "    > --------- End of Item 1 of 3 ---------\n"
                           "    > NULL pointer to Embedded DICOM Object (Item 2 of 3) in sequence array\n"
                           "End of Sequence (Referenced Series Sequence)\n"
                           "Start of Sequence (Referenced SOP Sequence)\n"
                           "End of Sequence (Referenced SOP Sequence)\n"
                           "(0028, 0010) 2/US \"Rows\": 512\n"
                           "--------- End of DICOM Data Object ---------\n");
}

TEST_F(DICOMObjectDumperTest, CommandAnnotations)
{
   struct Case
   {
      UINT16 itsElement;
      std::string_view itsValue; // little-endian
      std::string_view itsAnnotation;
   };
   const Case kCases[] = {
       {0x0003, "1.2.840.10008.1.1 ", " (Verification SOP Class)"}, // padded as text is
       {0x0003, "1.2.3", ""},
       {0x0100, "\x01\x80"sv, " (C-Store Response)"},
       {0x0100, "\xFF\x0F"sv, " (C-Cancel Request)"},
       {0x0100, "\xFF\x8F"sv, " (Unrecognized command)"},
       {0x0100, "\x01\x00\x00\x00"sv, ""}, // not of two bytes
       {0x0800, "\x01\x01"sv, " (no dataset included)"},
       {0x0800, "\x02\x01"sv, " (dataset included)"},
       {0x0900, "\x00\x00"sv, " (Success)"},
       {0x0900, "\x22\x01"sv, " (Refused: SOP class not supported)"},
       {0x0900, "\x45\xC0"sv, " (Failed: Unable to process)"},
       {0x0900, "\x00\xA8"sv, " (Unrecognized status code (check SOP-class specific values in part 4))"},
       {0x0900, "\x01\xFF"sv, " (Pending (Warning: one or more keys not supported))"},
       {0x0900, ""sv, ""},
       {0x0110, "\x01\x00"sv, ""}, // Message ID: a number that says all
   };
   for (const Case& aCase : kCases)
   {
      const std::unique_ptr<VR> aVR(NewVR(0x0000, aCase.itsElement, VRCode::OB, aCase.itsValue));
      const std::string aLine = DumpOfElement(*aVR);
      aVR->SetGroup(0x0009); // the same bytes where they mean nothing
      std::string anExpected = DumpOfElement(*aVR);
      anExpected.insert(anExpected.size() - 1, aCase.itsAnnotation);
      EXPECT_EQ(aLine.substr(aLine.find("\": ")), anExpected.substr(anExpected.find("\": "))) << aLine;
   }
   const std::unique_ptr<VR> aUID(NewVR(0x0000, 0x0002, VRCode::UI, "1.2.840.10008.1.1\0"sv));
   EXPECT_EQ(DumpOfElement(*aUID), "(0000, 0002) 18/UI \"Affected SOP Class UID\": \"1.2.840.10008.1.1\""
                                   " (Verification SOP Class) (Verification SOP Class)\n");
}

// Long dumps leave in pieces: none may be lost, doubled or out of order.
TEST_F(DICOMObjectDumperTest, ALongDumpIsWhole)
{
   DICOMDataObject aSet;
   std::string anExpected = "--------- Start of DICOM Data Object ---------\n";
   for (unsigned int anElement = 1; anElement <= 5000; ++anElement)
   {
      aSet.Push(NewVR(0x0012, static_cast<UINT16>(anElement), VRCode::LO, "0123456789"));
      char aLine[64];
      std::snprintf(aLine, sizeof aLine, "(0012, %04x) 10/LO \"\": \"0123456789\"\n", anElement);
      anExpected += aLine;
   }
   EXPECT_EQ(DumpOf(aSet), anExpected + "--------- End of DICOM Data Object ---------\n");
}

TEST_F(DICOMObjectDumperTest, ADumperWithoutAStreamUsesTheDefaultOne)
{
   const std::unique_ptr<VR> aVR(NewVR(0x0028, 0x0010, VRCode::US, "\1\0"sv));
   std::ostringstream aDefault;
   std::ostringstream anOwn;
   DICOMObjectDumper aDumper;
   aDumper.DumpVR(*aVR, itsDictionary);           // nowhere
   DICOMObjectDumper::SetDefaultStream(aDefault); // through a log stream that the class owns
   DICOMObjectDumper::SetDefaultStream(*DICOMObjectDumper::itsDefaultStream); // itself
   aDumper.DumpVR(*aVR, itsDictionary);
   aDumper.SetStream(anOwn);
   aDumper.DumpVR(*aVR, itsDictionary);
   aDumper.DumpVR(*aVR, itsDictionary);
   aDumper.UnsetStream();
   DICOMObjectDumper::UnsetDefaultStream();
   aDumper.DumpVR(*aVR, itsDictionary);
   const std::string aLine = "(0028, 0010) 2/US \"Rows\": 1\n";
   EXPECT_EQ(aDefault.str(), aLine);
   EXPECT_EQ(anOwn.str(), aLine + aLine);
}

TEST_F(DICOMObjectDumperTest, ATraceDumpsIntoItselfWhileItIsOn)
{
   std::ostringstream aDefault;
   std::ostringstream anOutput;
   DICOMObjectDumper::SetDefaultStream(aDefault);
   TNTrace aTrace;
   DICOMDataObject aSet;
   aTrace.Dump(aSet);
   aTrace.On(anOutput);
   aTrace.Dump(aSet);
   const std::unique_ptr<VR> aVR(NewVR(0x0028, 0x0010, VRCode::US, "\1\2"sv));
   aTrace.Dump(*aVR, kBig, itsDictionary);
   aTrace.Off();
   aTrace.Dump(aSet);
   DICOMObjectDumper::UnsetDefaultStream();
   EXPECT_EQ(anOutput.str(), "--------- Start of DICOM Data Object ---------\n"
                             "--------- End of DICOM Data Object ---------\n"
                             "(0028, 0010) 2/US \"Rows\": 258\n");
   EXPECT_EQ(aDefault.str(), "");
}
} // namespace
