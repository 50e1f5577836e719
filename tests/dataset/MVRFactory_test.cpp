#include "talvenor/dataset/MVRFactory.h"

#include <functional>
#include <memory>
#include <sstream>

#include <gtest/gtest.h>

#include "support/CountingAllocater.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/dictionary/MDDEntry.h"
#include "talvenor/dictionary/MDataDictionary.h"
#include "talvenor/dictionary/MPrivateDataDictionary.h"
#include "talvenor/dictionary/PrivateDataDictionaryCatalog.h"
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

struct Dictionaries
{
   Dictionaries()
   {
      std::istringstream aPublic(kPublicLines);
      itsPublic.Load(aPublic);
      std::istringstream aPrivate(kPrivateLines);
      itsCatalog.Add(new MPrivateDataDictionary(aPrivate));
   }

   MDataDictionary itsPublic;
   PrivateDataDictionaryCatalog itsCatalog;
   InstanceSpecificDataDictionary itsInstance{itsPublic, itsCatalog};
};

// One operation of the factory, with some value, on a given tag.
struct OperationCase
{
   const char* itsText;
   const char* itsKind;
   std::string itsTypes; // dictionary types it accepts, each between blanks
   std::function<VR*(const MVRFactory&, UINT16, UINT16, const MDDEntry*)> itsCall;
   std::string itsLittle, itsBig; // the value stored
};

const std::string kTextTypes = " AE AS CS DA DS DT IS LO LT PN SH ST TM UI UT UN NONE ";

const OperationCase kOperations[] = {
    {"MVRFactory<VRType>::InternalGetVR(UINT16, UINT16, UINT16)", "UINT16",
     " US UN US_US_or_SS_US US_or_SS US_or_SS_or_OW NONE ",
     [](const MVRFactory& theFactory, UINT16 theGroup, UINT16 theElement, const MDDEntry* theEntry) {
        return theFactory.InternalGetVR(theGroup, theElement, UINT16{0x0102}, theEntry);
     },
     "\2\1", "\1\2"},
    {"MVRFactory<VRType>::InternalGetVR(UINT16, UINT16, UINT32)", "UINT32", " UL UN NONE ",
     [](const MVRFactory& theFactory, UINT16 theGroup, UINT16 theElement, const MDDEntry* theEntry) {
        return theFactory.InternalGetVR(theGroup, theElement, UINT32{0x01020304}, theEntry);
     },
     "\4\3\2\1", "\1\2\3\4"},
    {"MVRFactory<VRType>::InternalGetVR(UINT16, UINT16, const RWCString&, char)", "string", kTextTypes,
     [](const MVRFactory& theFactory, UINT16 theGroup, UINT16 theElement, const MDDEntry* theEntry) {
        return theFactory.InternalGetVR(theGroup, theElement, RWCString("abcd"), '#', theEntry);
     },
     "abcd", "abcd"},
    {"MVRFactory<VRType>::InternalGetVR(UINT16, UINT16, const UID&)", "UID", " UI UN NONE ",
     [](const MVRFactory& theFactory, UINT16 theGroup, UINT16 theElement, const MDDEntry* theEntry) {
        return theFactory.InternalGetVR(theGroup, theElement, UID("1.2.3"), theEntry);
     },
     "1.2.3\0"s, "1.2.3\0"s},
    {"MVRFactory<VRType>::InternalGetVR(UINT16, UINT16, const RWTValOrderedVector<RWCString>&, char)",
     "multi-valued string", kTextTypes,
     [](const MVRFactory& theFactory, UINT16 theGroup, UINT16 theElement, const MDDEntry* theEntry) {
        const RWTValOrderedVector<RWCString> aTexts = {"ab", "c"};
        return theFactory.InternalGetVR(theGroup, theElement, aTexts, '#', theEntry);
     },
     "ab\\c", "ab\\c"},
    {"MVRFactory<VRType>::InternalGetVR(UINT16, UINT16, RWTValOrderedVector<MAttributeTag>&)",
     "RWTValOrderedVector<MAttributeTag>", " AT UN NONE ",
     [](const MVRFactory& theFactory, UINT16 theGroup, UINT16 theElement, const MDDEntry* theEntry) {
        RWTValOrderedVector<MAttributeTag> aTags = {{0x0010, 0x0120}, {0x7FE0, 0x0010}};
        return theFactory.InternalGetVR(theGroup, theElement, aTags, theEntry);
     },
     "\x10\x00\x20\x01\xE0\x7F\x10\x00"s, "\x00\x10\x01\x20\x7F\xE0\x00\x10"s},
    {"MVRFactory<VRType>::InternalGetVR(UINT16, UINT16, const unsigned char*, size_t, char)",
     "binary byte, float, or word", " OB OF OW UN OW_or_OB NONE ",
     [](const MVRFactory& theFactory, UINT16 theGroup, UINT16 theElement, const MDDEntry* theEntry) {
        const unsigned char aBytes[] = {1, 2, 3};
        return theFactory.InternalGetVR(theGroup, theElement, aBytes, sizeof aBytes, '\7', theEntry);
     },
     "\1\2\3\7", "\1\2\3\7"},
    {"MVRFactory<VRType>::InternalGetSequenceVR(UINT16, UINT16, UINT16)", "sequence", " SQ ",
     [](const MVRFactory& theFactory, UINT16 theGroup, UINT16 theElement, const MDDEntry* theEntry) -> VR* {
        return theFactory.InternalGetSequenceVR(theGroup, theElement, theEntry);
     },
     "", ""},
};

std::string ValueOf(const VR& theVR)
{
   return {reinterpret_cast<const char*>(theVR.GetData()), theVR.GetLength()};
}
} // namespace

TEST(MVRFactory, StoresValuesInItsByteOrder)
{
   const Dictionaries aDictionaries;
   for (const auto anEndian : {TNEndian::LittleEndian, TNEndian::BigEndian})
   {
      const MVRFactory aFactory(anEndian, true, &aDictionaries.itsInstance);
      for (const OperationCase& anOperation : kOperations)
      {
         SCOPED_TRACE(anOperation.itsText);
         const std::unique_ptr<VR> aVR(anOperation.itsCall(aFactory, 0x1234, 0x5678, nullptr));
         EXPECT_EQ(ValueOf(*aVR), anEndian == TNEndian::LittleEndian ? anOperation.itsLittle : anOperation.itsBig);
         EXPECT_EQ(aVR->GetTag(), 0x12345678u);
         EXPECT_EQ(aVR->GetDataEndian(), anEndian);
         // No dictionary knows the tag.
         const std::string aKind = anOperation.itsKind;
         EXPECT_EQ(aVR->GetTypeCodeAsString(), aKind == "UID" ? "UI" : aKind == "sequence" ? "SQ" : "");
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
         SCOPED_TRACE(anOperation.itsText + (" with " + aTypeText));
         const std::string aCodeText = MDDEntry::UShortToTypeString(anEntry.GetTypeAsUshort());
         const bool anExpected = anOperation.itsTypes.find(' ' + aTypeText + ' ') != std::string::npos;
         try
         {
            const std::unique_ptr<VR> aVR(anOperation.itsCall(aFactory, 0x0011, 0x0022, &anEntry));
            EXPECT_TRUE(anExpected);
            EXPECT_EQ(aVR->GetTypeCodeAsString(), anOperation.itsKind == "UID"s ? "UI" : aCodeText);
         }
         catch (const VRTypingError& anException)
         {
            EXPECT_FALSE(anExpected);
            const std::string aText = anOperation.itsText + ": Data type passed ("s + anOperation.itsKind +
                                      " is incompatible with dictionary type " + aCodeText +
                                      " for element (0011, 0022)";
            EXPECT_EQ(anException.GetMessage(), aText);
         }
      }
   }
}

TEST(MVRFactory, AsksItsDictionaryWhenThereIsNoEntry)
{
   const Dictionaries aDictionaries;
   const MVRFactory aFactory(TNEndian::LittleEndian, true, &aDictionaries.itsInstance);
   const std::unique_ptr<VR> aRows(aFactory.InternalGetVR(0x0028, 0x0010, UINT16{512}));
   EXPECT_EQ(aRows->GetTypeCodeAsString(), "US");
   EXPECT_THROW(aFactory.InternalGetVR(0x0028, 0x0009, UINT16{1}), VRTypingError);
   EXPECT_THROW(aFactory.InternalGetSequenceVR(0x0028, 0x0010), VRTypingError);

   const std::unique_ptr<SequenceVR> aSequence(aFactory.InternalGetSequenceVR(0x0008, 0x1140));
   EXPECT_EQ(aSequence->GetTypeCodeAsString(), "SQ");
   EXPECT_TRUE(aSequence->IsEmpty());

   const std::unique_ptr<VR> aCreator(aFactory.InternalGetVR(0x0029, 0x0010, RWCString("ACME 1.0"), ' '));
   EXPECT_EQ(aCreator->GetTypeCodeAsString(), "LO") << "a private creator element is known";
   EXPECT_THROW(aFactory.InternalGetVR(0x0029, 0x0010, UINT16{1}), VRTypingError);
}

TEST(MVRFactory, WithoutTheTypingCheckNothingIsTypedOrRefused)
{
   const Dictionaries aDictionaries;
   const MVRFactory aFactory(TNEndian::LittleEndian, false, &aDictionaries.itsInstance);
   const std::unique_ptr<VR> aLong(aFactory.InternalGetVR(0x0028, 0x0009, UINT16{1}));
   EXPECT_EQ(aLong->GetTypeCode(), 0);
   const std::unique_ptr<VR> aUID(aFactory.InternalGetVR(0x0028, 0x0009, UID("1.2.3")));
   EXPECT_EQ(aUID->GetTypeCodeAsString(), "UI");
}

TEST(MVRFactory, PadsTextsAsAskedButUIDsWithNUL)
{
   const Dictionaries aDictionaries;
   const MVRFactory aFactory(TNEndian::LittleEndian, true, &aDictionaries.itsInstance);
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
   const Dictionaries aDictionaries;
   CountingAllocater anOrdinary;
   CountingAllocater aPixels;
   const MVRFactory aFactory(TNEndian::LittleEndian, true, &aDictionaries.itsInstance, anOrdinary, aPixels);
   const unsigned char aBytes[4] = {};
   const struct
   {
      UINT16 itsGroup, itsElement;
      std::size_t itsOrdinary, itsPixels;
   } aCases[] = {{0x7FE0, 0x0010, 0, 1}, {0x7FE0, 0x0011, 1, 0}, {0x0010, 0x0010, 1, 0}};
   for (const auto& aCase : aCases)
   {
      const std::unique_ptr<VR> aVR(aFactory.InternalGetVR(aCase.itsGroup, aCase.itsElement, aBytes, 4, '\0'));
      EXPECT_EQ(anOrdinary.Live(), aCase.itsOrdinary);
      EXPECT_EQ(aPixels.Live(), aCase.itsPixels);
   }
   EXPECT_EQ(anOrdinary.Live() + aPixels.Live(), 0u);
}

TEST(MVRFactory, FindsPrivateAttributesByCreatorAndName)
{
   const Dictionaries aDictionaries;
   const MVRFactory aFactory(TNEndian::LittleEndian, true, &aDictionaries.itsInstance);
   const std::unique_ptr<VR> aVR(aFactory.GetPrivateVR("ACME 1.0", "ANumber", 0x0102));
   EXPECT_EQ(aVR->GetTag(), 0x00290001u);
   EXPECT_EQ(aVR->GetTypeCodeAsString(), "US");
   EXPECT_EQ(ValueOf(*aVR), "\2\1");
   EXPECT_THROW(aFactory.GetPrivateVR("ACME 1.0", "AText", 1), VRTypingError);
   try
   {
      aFactory.GetPrivateVR("ACME 1.0", "Nothing", 1);
      FAIL();
   }
   catch (const VRAttributeNotFoundException& anException)
   {
      EXPECT_EQ(anException.GetMessage(), "MVRFactory<VRType>::GetPrivateVR(ACME 1.0, Nothing, UINT16)");
   }
}
