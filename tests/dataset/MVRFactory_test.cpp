#include "talvenor/dataset/MVRFactory.h"

#include <functional>
#include <memory>

#include <gtest/gtest.h>

#include "support/CountingAllocater.h"
#include "support/Dictionaries.h"
#include "support/MessageOf.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/MDDEntry.h"
#include "talvenor/dictionary/UID.h"
#include "talvenor/foundation/Exceptions.h"

namespace
{
using namespace std::string_literals;

constexpr const char* kPublicLines = "0028, 0010, US, Rows, Rows, 1, 1\n"
                                     "0028, 0009, UL, A Long, ALong, 1, 1\n"
                                     "0008, 0018, UI, SOP Instance UID, SOPInstanceUID, 1, 1\n"
                                     "0008, 1140, SQ, Referenced Image Sequence, ReferencedImageSequence, 1, 1\n"
                                     "7fe0, 0010, OW_or_OB, Pixel Data, PixelData, 1, 1\n";
constexpr const char* kPrivateLines = "PrivateCreator = ACME 1.0\n"
                                      "0029, 0001, US, A Number, ANumber, 1, 1\n"
                                      "0029, 0002, LO, A Text, AText, 1, 1\n";

// What an operation of the factory makes an element for.
struct Target
{
   template <class... Value>
   VR* Make(Value&&... theValue) const
   {
      return itsFactory.InternalGetVR(itsGroup, itsElement, std::forward<Value>(theValue)..., itsEntry);
   }

   const MVRFactory& itsFactory;
   UINT16 itsGroup, itsElement;
   const MDDEntry* itsEntry;
};

// One operation of the factory, with some value.
struct OperationCase
{
   const char* itsSignature; // without the two numbers of the tag
   const char* itsKind;
   std::string itsTypes; // dictionary types it accepts, each between blanks
   std::function<VR*(const Target&)> itsCall;
   std::string itsLittle, itsBig; // the value stored
};

const std::string kTextTypes = " AE AS CS DA DS DT IS LO LT PN SH ST TM UI UT UN NONE ";

const OperationCase kOperations[] = {
    {"UINT16)", "UINT16", " US UN US_US_or_SS_US US_or_SS US_or_SS_or_OW NONE ",
     [](const Target& theTarget) { return theTarget.Make(UINT16{0x0102}); }, "\2\1", "\1\2"},
    {"UINT32)", "UINT32", " UL UN NONE ", [](const Target& theTarget) { return theTarget.Make(UINT32{0x01020304}); },
     "\4\3\2\1", "\1\2\3\4"},
    {"const RWCString&, char)", "string", kTextTypes,
     [](const Target& theTarget) { return theTarget.Make(RWCString("abcd"), '#'); }, "abcd", "abcd"},
    {"const UID&)", "UID", " UI UN NONE ", [](const Target& theTarget) { return theTarget.Make(UID("1.2.3")); },
     "1.2.3\0"s, "1.2.3\0"s},
    {"const RWTValOrderedVector<RWCString>&, char)", "multi-valued string", kTextTypes,
     [](const Target& theTarget) {
        return theTarget.Make(RWTValOrderedVector<RWCString>{"ab", "c"}, '#');
     },
     "ab\\c", "ab\\c"},
    {"RWTValOrderedVector<MAttributeTag>&)", "RWTValOrderedVector<MAttributeTag>", " AT UN NONE ",
     [](const Target& theTarget) {
        RWTValOrderedVector<MAttributeTag> aTags = {{0x0010, 0x0120}, {0x7FE0, 0x0010}};
        return theTarget.Make(aTags);
     },
     "\x10\x00\x20\x01\xE0\x7F\x10\x00"s, "\x00\x10\x01\x20\x7F\xE0\x00\x10"s},
    {"const unsigned char*, size_t, char)", "binary byte, float, or word", " OB OF OW UN OW_or_OB NONE ",
     [](const Target& theTarget) {
        const unsigned char aBytes[] = {1, 2, 3};
        return theTarget.Make(aBytes, sizeof aBytes, '\7');
     },
     "\1\2\3\7", "\1\2\3\7"},
};

std::string ValueOf(const VR& theVR)
{
   return {reinterpret_cast<const char*>(theVR.GetData()), theVR.GetLength()};
}
} // namespace

TEST(MVRFactory, StoresValuesInItsByteOrder)
{
   const Dictionaries aDictionaries(kPublicLines, kPrivateLines);
   for (const auto anEndian : {TNEndian::LittleEndian, TNEndian::BigEndian})
   {
      const MVRFactory aFactory(anEndian, true, &aDictionaries.itsDictionary);
      for (const OperationCase& anOperation : kOperations)
      {
         SCOPED_TRACE(anOperation.itsKind);
         const std::unique_ptr<VR> aVR(anOperation.itsCall({aFactory, 0x1234, 0x5678, nullptr}));
         EXPECT_EQ(ValueOf(*aVR), anEndian == TNEndian::LittleEndian ? anOperation.itsLittle : anOperation.itsBig);
         EXPECT_EQ(aVR->GetDataEndian(), anEndian);
         // No dictionary knows the tag.
         EXPECT_EQ(aVR->GetTypeCodeAsString(), anOperation.itsKind == "UID"s ? "UI" : "");
      }
   }
}

TEST(MVRFactory, RefusesAKindThatDoesNotFitTheEntry)
{
   const MVRFactory aFactory(TNEndian::LittleEndian);
   for (const OperationCase& anOperation : kOperations)
   {
      for (int aType = MDDEntry::AE; aType <= MDDEntry::NONE; ++aType)
      {
         const MDDEntry anEntry(0x0011, 0x0022, static_cast<MDDEntry::ValueType>(aType), 1, 1, "Name", "Text");
         const std::string aTypeText = MDDEntry::ValueTypeToString(anEntry.GetType());
         SCOPED_TRACE(anOperation.itsKind + (" with " + aTypeText));
         const std::string aCodeText = MDDEntry::UShortToTypeString(anEntry.GetTypeAsUshort());
         std::unique_ptr<VR> aVR;
         const RWCString aMessage = MessageOf<VRTypingError>([&] {
            aVR.reset(anOperation.itsCall({aFactory, 0x0011, 0x0022, &anEntry}));
         });
         if (anOperation.itsTypes.find(' ' + aTypeText + ' ') != std::string::npos)
         {
            ASSERT_NE(aVR, nullptr) << aMessage;
            EXPECT_EQ(aVR->GetTypeCodeAsString(), anOperation.itsKind == "UID"s ? "UI" : aCodeText);
            continue;
         }
         EXPECT_EQ(aMessage, "MVRFactory<VRType>::InternalGetVR(UINT16, UINT16, "s + anOperation.itsSignature +
                                 ": Data type passed (" + anOperation.itsKind +
                                 " is incompatible with dictionary type " + aCodeText + " for element (0011, 0022)");
      }
   }
}

TEST(MVRFactory, AsksItsDictionaryWhenThereIsNoEntry)
{
   const Dictionaries aDictionaries(kPublicLines, kPrivateLines);
   const MVRFactory aFactory(TNEndian::LittleEndian, true, &aDictionaries.itsDictionary);
   const std::unique_ptr<VR> aRows(aFactory.InternalGetVR(0x0028, 0x0010, UINT16{512}));
   EXPECT_EQ(aRows->GetTypeCodeAsString(), "US");
   EXPECT_THROW(aFactory.InternalGetVR(0x0028, 0x0009, UINT16{1}), VRTypingError);
   EXPECT_THROW(aFactory.InternalGetVR(0x0029, 0x0010, UINT16{1}), VRTypingError) << "a private creator is LO";

   const std::unique_ptr<SequenceVR> aSequence(aFactory.InternalGetSequenceVR(0x0008, 0x1140));
   EXPECT_EQ(aSequence->GetTypeCodeAsString(), "SQ");
   EXPECT_EQ(MessageOf<VRTypingError>([&] { aFactory.InternalGetSequenceVR(0x0028, 0x0010); }),
             "MVRFactory<VRType>::InternalGetSequenceVR(UINT16, UINT16, UINT16): Data type passed (sequence is "
             "incompatible with dictionary type US for element (0028, 0010)");
   const MVRFactory anUnchecked(TNEndian::LittleEndian, false, &aDictionaries.itsDictionary);
   const std::unique_ptr<VR> aLong(anUnchecked.InternalGetVR(0x0028, 0x0009, UINT16{1}));
   EXPECT_EQ(aLong->GetTypeCode(), 0);
}

TEST(MVRFactory, PadsTextsAsAskedButUIDsWithNUL)
{
   const Dictionaries aDictionaries(kPublicLines, kPrivateLines);
   const MVRFactory aFactory(TNEndian::LittleEndian, true, &aDictionaries.itsDictionary);
   const std::unique_ptr<VR> aText(aFactory.InternalGetVR(0x1234, 0x0000, RWCString("abc"), '#'));
   EXPECT_EQ(ValueOf(*aText), "abc#");
   const std::unique_ptr<VR> aUID(aFactory.InternalGetVR(0x0008, 0x0018, RWCString("1.2.3"), '#'));
   EXPECT_EQ(ValueOf(*aUID), "1.2.3\0"s);
   const RWTValOrderedVector<RWCString> aTexts = {"1.2", "3"};
   const std::unique_ptr<VR> aUIDs(aFactory.InternalGetVR(0x0008, 0x0018, aTexts, '#'));
   EXPECT_EQ(ValueOf(*aUIDs), "1.2\\3\0"s);
}

TEST(MVRFactory, PixelDataHasAnAllocatorOfItsOwn)
{
   const Dictionaries aDictionaries(kPublicLines, kPrivateLines);
   CountingAllocater anOrdinary;
   CountingAllocater aPixels;
   const MVRFactory aFactory(TNEndian::LittleEndian, true, &aDictionaries.itsDictionary, anOrdinary, aPixels);
   const unsigned char aBytes[4] = {};
   const struct
   {
      UINT16 itsGroup, itsElement;
      std::size_t itsOrdinary, itsPixels;
   } aCases[] = {{0x7FE0, 0x0010, 0, 1}, {0x7FE0, 0x0011, 1, 0}};
   for (const auto& aCase : aCases)
   {
      const std::unique_ptr<VR> aVR(aFactory.InternalGetVR(aCase.itsGroup, aCase.itsElement, aBytes, 4, '\0'));
      EXPECT_EQ(anOrdinary.Live(), aCase.itsOrdinary);
      EXPECT_EQ(aPixels.Live(), aCase.itsPixels);
   }
}

TEST(MVRFactory, FindsPrivateAttributesByCreatorAndName)
{
   const Dictionaries aDictionaries(kPublicLines, kPrivateLines);
   const MVRFactory aFactory(TNEndian::LittleEndian, true, &aDictionaries.itsDictionary);
   const std::unique_ptr<VR> aVR(aFactory.GetPrivateVR("ACME 1.0", "ANumber", 0x0102));
   EXPECT_EQ(aVR->GetTag(), 0x00290001u);
   EXPECT_EQ(aVR->GetTypeCodeAsString(), "US");
   EXPECT_EQ(ValueOf(*aVR), "\2\1");
   EXPECT_THROW(aFactory.GetPrivateVR("ACME 1.0", "AText", 1), VRTypingError);
   EXPECT_EQ(MessageOf<VRAttributeNotFoundException>([&] { aFactory.GetPrivateVR("ACME 1.0", "Nothing", 1); }),
             "MVRFactory<VRType>::GetPrivateVR(ACME 1.0, Nothing, UINT16)");
}
