#include "talvenor/dataset/VR.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>

#include <gtest/gtest.h>

#include "support/CountingAllocater.h"
#include "support/MessageOf.h"
#include "talvenor/dictionary/UID.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/foundation/Exceptions.h"
#include "talvenor/io/EndianHandlingReader.h"
#include "talvenor/io/MemoryStreams.h"

namespace
{
using namespace std::string_literals;

std::string ValueOf(const VR& theVR)
{
   return {reinterpret_cast<const char*>(theVR.GetData()), theVR.GetLength()};
}

void* BufferWith(MemoryAllocater& theAllocator, const std::string& theBytes)
{
   void* aBuffer = theAllocator.Allocate(static_cast<unsigned int>(theBytes.size()));
   std::memcpy(aBuffer, theBytes.data(), theBytes.size());
   return aBuffer;
}

// An element with its value in one piece of memory, as decoders make them.
std::unique_ptr<VR> VRWithRoom(const std::string& theValue)
{
   std::unique_ptr<VR> aVR =
       VR::MakeWithRoom(0x0028, 0x0010, static_cast<UINT32>(theValue.size()), TNEndian::LittleEndian);
   std::copy(theValue.begin(), theValue.end(), aVR->GetData());
   aVR->SetTypeCode(VRCode::US);
   return aVR;
}

bool StandsInItsRoom(const VR& theVR)
{
   return theVR.GetData() == reinterpret_cast<const unsigned char*>(&theVR) + sizeof(VR);
}
} // namespace

TEST(VR, ConstructorsPadTheirValueToEvenLength)
{
   MemoryAllocater& anAllocator = MemoryAllocater::GetDefault();
   const auto aText = [](const char* theText, UINT32 theLength) {
      return std::make_unique<VR>(0x0010, 0x0020, theText, theLength);
   };
   const char aNULsBehind[] = {'a', 'b', 'c', 0, 0};
   const char aNULInside[] = {'a', 0, 'b', 'c'};
   const auto aTexts = [](std::vector<std::string> theTexts, char thePad) {
      return std::make_unique<VR>(0x0010, 0x0020, theTexts, thePad);
   };
   const auto aUID = [](const char* theText) { return std::make_unique<VR>(0x0008, 0x0018, UID(theText)); };
   const struct
   {
      const char* itsName;
      std::unique_ptr<VR> itsVR;
      std::string itsValue;
      UINT16 itsCode;
   } aCases[] = {
       {"nothing", std::make_unique<VR>(), "", 0},
       {"seven raw bytes", std::make_unique<VR>(0x0010, 0x0020, 7, BufferWith(anAllocator, "1234567")), "1234567\0"s,
        0},
       {"raw bytes that are absent", std::make_unique<VR>(0x0010, 0x0020, 0, static_cast<void*>(nullptr)), "", 0},
       {"text of seven characters", aText("1234567", 7), "1234567 ", 0},
       {"text up to its NUL", aText("abc", 0), "abc ", 0},
       {"text with NULs in its length", aText(aNULsBehind, 5), "abc ", 0},
       {"text with a NUL inside", aText(aNULInside, 4), "a\0bc"s, 0},
       {"no text, length 3", aText(nullptr, 3), "    ", 0},
       {"texts of odd total", aTexts({"A", "", "B"}, '#'), "A\\\\B", 0},
       {"one text of odd length", aTexts({"ABC"}, '#'), "ABC#", 0},
       {"UID of five characters", aUID("1.2.3"), "1.2.3\0"s, VRCode::UI},
   };
   for (const auto& aCase : aCases)
   {
      SCOPED_TRACE(aCase.itsName);
      EXPECT_EQ(ValueOf(*aCase.itsVR), aCase.itsValue);
      EXPECT_EQ(aCase.itsVR->GetTypeCode(), aCase.itsCode);
      EXPECT_EQ(aCase.itsVR->GetData() == nullptr, aCase.itsValue.empty());
   }
}

TEST(VR, AllocatesByLengthOnlyWhenAskedAndWhenTheLengthIsDefined)
{
   const struct
   {
      const char* itsName;
      UINT32 itsLength;
      int itsAllocate;
      UINT32 itsStored;
      std::vector<unsigned int> itsRequests;
   } aCases[] = {
       {"odd", 5, 1, 6, {6}},
       {"not asked for", 5, 0, 6, {}},
       {"empty", 0, 1, 0, {}},
       {"undefined", VR::kUndefinedLength, 1, VR::kUndefinedLength, {}},
   };
   for (const auto& aCase : aCases)
   {
      SCOPED_TRACE(aCase.itsName);
      CountingAllocater anAllocator;
      {
         VR aVR(0x0010, 0x0020, aCase.itsLength, aCase.itsAllocate, TNEndian::BigEndian, anAllocator);
         EXPECT_EQ(aVR.GetLength(), aCase.itsStored);
         EXPECT_EQ(anAllocator.Sizes(), aCase.itsRequests);
         aVR.SetPadByte('#'); // needs a value
         EXPECT_EQ(aVR.GetData() == nullptr, aCase.itsRequests.empty());
      }
      EXPECT_EQ(anAllocator.Live(), 0u);
   }
   CountingAllocater anAllocator;
   VR aVR(0x0010, 0x0020, TNEndian::LittleEndian, anAllocator);
   aVR.SetLength(5);
   EXPECT_EQ(static_cast<unsigned char*>(aVR.AllocateData())[5], 0);
   aVR.AllocateData(10);
   EXPECT_EQ(aVR.GetLength(), 5u);
   EXPECT_EQ(anAllocator.Sizes(), (std::vector<unsigned int>{6, 10}));
   EXPECT_EQ(anAllocator.Live(), 1u);
}

TEST(VR, TakesBorrowsOrCopiesTheCallersBuffer)
{
   const struct
   {
      const char* itsName;
      std::string itsBytes;
      int itsOwns;
      bool itsAdopts;
      std::size_t itsLiveWhileItLives; // buffers: the caller's, the copy
      std::size_t itsLiveAfterwards;
   } aCases[] = {
       {"even, owned", "1234", 1, true, 1, 0},
       {"even, borrowed", "1234", 0, true, 1, 1},
       {"odd, owned", "123", 1, false, 1, 0},
       {"odd, borrowed", "123", 0, false, 2, 1},
   };
   for (const auto& aCase : aCases)
   {
      SCOPED_TRACE(aCase.itsName);
      CountingAllocater anAllocator;
      void* aBuffer = BufferWith(anAllocator, aCase.itsBytes);
      {
         const VR aVR(0x0010, 0x0020, static_cast<UINT32>(aCase.itsBytes.size()), aBuffer, aCase.itsOwns,
                      TNEndian::LittleEndian, anAllocator);
         EXPECT_EQ(aVR.GetData() == aBuffer, aCase.itsAdopts);
         EXPECT_EQ(ValueOf(aVR).substr(0, aCase.itsBytes.size()), aCase.itsBytes);
         EXPECT_EQ(anAllocator.Live(), aCase.itsLiveWhileItLives);
      }
      EXPECT_EQ(anAllocator.Live(), aCase.itsLiveAfterwards);
      if (aCase.itsLiveAfterwards != 0)
      {
         anAllocator.Free(aBuffer);
      }
      EXPECT_FALSE(anAllocator.HasSeenStrangers());
   }
}

TEST(VR, ABorrowedBufferIsLeftAloneByEveryChangeOfValue)
{
   const std::function<void(VR&)> aChanges[] = {
       [](VR& theVR) { theVR.Reset(); },
       [](VR& theVR) { theVR.SetData("xy", 2, ' '); },
       [](VR& theVR) { theVR.AllocateData(8); },
       [](VR& theVR) { theVR = VR(0x0010, 0x0020, "xy", 2); },
   };
   for (const auto& aChange : aChanges)
   {
      char aBuffer[] = "1234";
      VR aVR(0x0010, 0x0020, 4, aBuffer, 0);
      aChange(aVR);
      EXPECT_STREQ(aBuffer, "1234");
      EXPECT_NE(aVR.GetData(), reinterpret_cast<unsigned char*>(aBuffer));
   }
}

TEST(VR, AValueMayStandInTheMemoryOfItsElement)
{
   for (const std::string& aValue : {""s, "ab"s, "abc"s, std::string(1001, 'x')})
   {
      SCOPED_TRACE(aValue.size());
      const std::unique_ptr<VR> aVR = VRWithRoom(aValue);
      EXPECT_EQ(ValueOf(*aVR), aValue) << "an odd length stays odd";
      EXPECT_EQ(StandsInItsRoom(*aVR), !aValue.empty());
      EXPECT_EQ(aVR->GetData() == nullptr, aValue.empty());
      if (aValue.size() % 2 != 0)
      {
         EXPECT_EQ(aVR->GetData()[aValue.size()], 0);
      }
   }
}

// Nothing but the element itself may free the room: freeing it alone ends the process, with or without a sanitizer.
TEST(VR, EveryChangeOfAValueInTheMemoryOfItsElementLeavesThatMemoryAlone)
{
   const VR anOther(0x0028, 0x0010, "wxyz12", 6);
   const VR anEmpty(0x0028, 0x0010);
   const auto aRead = [](VR& theVR, const char* theText) {
      MemoryInputStream aStream(reinterpret_cast<const unsigned char*>(theText), theVR.GetLength());
      EndianHandlingReader aReader(aStream, TNEndian::LittleEndian);
      EXPECT_EQ(theVR.ReadData(aReader), 1);
   };
   const struct
   {
      const char* itsName;
      std::function<void(VR&)> itsChange;
      std::string itsValue; // "ABCD" before
      bool itsStaysInItsRoom;
   } aCases[] = {
       {"Reset", [](VR& theVR) { theVR.Reset(); }, "", false},
       {"SetData", [](VR& theVR) { theVR.SetData("123", 3, ' '); }, "123 ", false},
       {"SetData from its own value", [](VR& theVR) { theVR.SetData(theVR.GetData() + 1, 3, '#'); }, "BCD#", false},
       {"AllocateData of more", [](VR& theVR) { std::memcpy(theVR.AllocateData(99), "1234", 4); }, "1234", false},
       {"AllocateData of nothing and Reset",
        [](VR& theVR) {
           theVR.AllocateData(0);
           theVR.Reset();
        },
        "", false},
       {"assignment", [&](VR& theVR) { theVR = anOther; }, "wxyz12", false},
       {"assignment of an empty element", [&](VR& theVR) { theVR = anEmpty; }, "", false},
       {"assignment of itself", [](VR& theVR) { theVR = *&theVR; }, "ABCD", true},
       {"SetPadByte", [](VR& theVR) { theVR.SetPadByte('#'); }, "ABC#", true},
       {"SwapDataEndian", [](VR& theVR) { theVR.SwapDataEndian(); }, "BADC", true},
       {"SetLength", [](VR& theVR) { theVR.SetLength(2); }, "AB", true},
       {"ReadData", [&](VR& theVR) { aRead(theVR, "1234"); }, "1234", true},
       {"ReadData after Reset",
        [&](VR& theVR) {
           theVR.Reset();
           theVR.SetLength(3);
           aRead(theVR, "123");
        },
        "123", false},
   };
   for (const auto& aCase : aCases)
   {
      SCOPED_TRACE(aCase.itsName);
      const std::unique_ptr<VR> aVR = VRWithRoom("ABCD");
      aCase.itsChange(*aVR);
      EXPECT_EQ(ValueOf(*aVR), aCase.itsValue);
      EXPECT_EQ(StandsInItsRoom(*aVR), aCase.itsStaysInItsRoom);
      // What has replaced the value is the element's own: it goes with the next change, the room with the element.
      aVR->SetData("last", 4, ' ');
      aVR->SetData(aVR->GetData() + 1, 3, '#');
      EXPECT_EQ(ValueOf(*aVR), "ast#");
   }
}

TEST(VR, CopiesOutliveAnElementWithItsValueInItsMemory)
{
   std::unique_ptr<VR> anOriginal = VRWithRoom("abc");
   const std::unique_ptr<VR> aCopy(anOriginal->Copy());
   VR anAssigned(0x0010, 0x0020, "old value", 9);
   anAssigned = *anOriginal;
   EXPECT_TRUE(anOriginal->ValueAndTagEquals(*aCopy));
   anOriginal.reset();
   for (const VR* aVR : {aCopy.get(), &anAssigned})
   {
      EXPECT_EQ(aVR->GetTag(), 0x00280010u);
      EXPECT_EQ(aVR->GetTypeCode(), VRCode::US);
      EXPECT_EQ(ValueOf(*aVR), "abc");
      EXPECT_FALSE(StandsInItsRoom(*aVR));
   }
}

TEST(VR, FailedAllocationsLeakNothingAndLeaveNoHalfBuiltValue)
{
   CountingAllocater anAllocator;
   void* aBuffer = BufferWith(anAllocator, "123");
   VR aVR(0x0010, 0x0020, TNEndian::LittleEndian, anAllocator);
   aVR.SetData("1234", 4, ' ');
   anAllocator.SetLimit(0);

   EXPECT_THROW(VR(0x0010, 0x0020, 3, aBuffer, TNEndian::LittleEndian, anAllocator), BadAllocException);
   EXPECT_EQ(anAllocator.Live(), 1u) << "the buffer that was handed over is freed";
   EXPECT_THROW(aVR.Copy(), BadAllocException);

   EXPECT_THROW(aVR.SetData("56789", 5, ' '), BadAllocException);
   EXPECT_EQ(ValueOf(aVR), "1234") << "unchanged";
   EXPECT_THROW(aVR.AllocateData(7), BadAllocException);
   EXPECT_TRUE(aVR.IsEmpty());
   EXPECT_EQ(aVR.GetData(), nullptr);
   EXPECT_EQ(anAllocator.Live(), 0u);
}

TEST(VR, AssignmentReplacesEverythingButTheAllocator)
{
   CountingAllocater anAllocator;
   VR aVR(0x0010, 0x0020, TNEndian::LittleEndian, anAllocator);
   aVR.SetData("old value", 9, ' ');
   VR anOther(0x0028, 0x0010, "ab", 2, TNEndian::BigEndian);
   anOther.SetTypeCode(VRCode::OB);

   aVR = anOther;
   aVR = *&aVR; // self-assignment
   EXPECT_EQ(aVR.GetTag(), 0x00280010u);
   EXPECT_EQ(aVR.GetTypeCode(), VRCode::OB);
   EXPECT_EQ(aVR.GetEndian(), TNEndian::BigEndian);
   EXPECT_EQ(ValueOf(aVR), "ab");
   EXPECT_EQ(anAllocator.Live(), 1u);

   aVR = VR(0x0010, 0x0030);
   EXPECT_TRUE(aVR.IsEmpty());
   EXPECT_EQ(anAllocator.Live(), 0u);
}

TEST(VR, AStreamBufferedElementCannotBeCopied)
{
   struct StreamBufferedVR : VR
   {
      using VR::VR;
      int IsStreamBuffered() const override { return 1; }
   };
   const StreamBufferedVR aVR(0x7FE0, 0x0010);
   VR aTarget(0x0010, 0x0020, "ab", 2);
   const std::function<void()> aWays[] = {[&] { delete aVR.Copy(); }, [&] { aTarget = aVR; }};
   for (const auto& aWay : aWays)
   {
      EXPECT_EQ(MessageOf<ConstructorError>(aWay), "VR::Copy(): Can't copy a stream-buffered VR");
   }
   EXPECT_EQ(ValueOf(aTarget), "ab");
}

TEST(VR, SwapsTheUnitsOfItsType)
{
   const struct
   {
      const char* itsName;
      UINT16 itsCode;
      std::string itsBefore, itsAfter;
   } aCases[] = {
       {"US", VRCode::US, "\2\1"s, "\1\2"s},
       {"AT, words swapped one by one", VRCode::AT, "\x10\x00\x20\x01"s, "\x00\x10\x01\x20"s},
       {"OW with a byte left over", VRCode::OW, "\1\2\3"s, "\2\1\3"s},
       {"UL with two bytes left over", VRCode::UL, "\1\2\3\4\5\6"s, "\4\3\2\1\5\6"s},
       {"FD", VRCode::FD, "\1\2\3\4\5\6\7\10"s, "\10\7\6\5\4\3\2\1"s},
       {"a code that is none", 0xFFFF, "\1\2"s, "\1\2"s},
   };
   for (const auto& aCase : aCases)
   {
      SCOPED_TRACE(aCase.itsName);
      VR aVR(0x0028, 0x0010);
      aVR.SetTypeCode(aCase.itsCode);
      aVR.SetData(aCase.itsBefore.data(), static_cast<UINT32>(aCase.itsBefore.size()), '\0');
      aVR.SetLength(static_cast<UINT32>(aCase.itsBefore.size()));
      aVR.SwapDataEndian();
      EXPECT_EQ(ValueOf(aVR), aCase.itsAfter);
      EXPECT_EQ(aVR.GetDataEndian(), TNEndian::BigEndian);
      aVR.SwapDataEndian();
      EXPECT_EQ(ValueOf(aVR), aCase.itsBefore);
      EXPECT_EQ(aVR.GetDataEndian(), TNEndian::LittleEndian);
   }
}

TEST(VR, ComparesValuesPersonNamesWithoutTheirEmptyTail)
{
   const struct
   {
      const char* itsName;
      UINT16 itsFirstCode, itsSecondCode;
      std::string itsFirst, itsSecond;
      int itsResult;
   } aCases[] = {
       {"same bytes, other type", VRCode::OB, VRCode::UN, "abcd", "abcd", 1},
       {"other length", VRCode::OB, VRCode::OB, "abcd", "ab", 0},
       {"no values at all", VRCode::OB, VRCode::US, "", "", 1},
       {"empty components", VRCode::PN, VRCode::PN, "Doe^John^^\\Roe", "Doe^John\\Roe", 1},
       {"empty group of carets", VRCode::PN, VRCode::PN, "Doe=^^=X", "Doe==X", 0}, // "Doe==X" is "Doe", "X"
       {"missing group is skipped", VRCode::PN, VRCode::PN, "Doe==X", "Doe=X^", 1},
       {"missing value is skipped", VRCode::PN, VRCode::PN, "A\\\\B", "A\\B^", 1},
       {"pad byte counts", VRCode::PN, VRCode::PN, "Doe^John^ ", "Doe^John", 0},
       {"leading carets count", VRCode::PN, VRCode::PN, "^Doe", "Doe^", 0},
       {"only one is a name", VRCode::PN, VRCode::LO, "Doe^John^^", "Doe^John", 0},
   };
   for (const auto& aCase : aCases)
   {
      SCOPED_TRACE(aCase.itsName);
      VR aFirst(0x0010, 0x0010);
      VR aSecond(0x0010, 0x0020);
      aFirst.SetData(aCase.itsFirst.data(), static_cast<UINT32>(aCase.itsFirst.size()), ' ');
      aSecond.SetData(aCase.itsSecond.data(), static_cast<UINT32>(aCase.itsSecond.size()), ' ');
      aFirst.SetTypeCode(aCase.itsFirstCode);
      aSecond.SetTypeCode(aCase.itsSecondCode);
      EXPECT_EQ(aFirst.ValueEquals(aSecond), aCase.itsResult);
      EXPECT_EQ(aSecond.ValueEquals(aFirst), aCase.itsResult);
      EXPECT_EQ(aFirst.ValueAndTagEquals(aSecond), 0);
      aSecond.SetElement(0x0010);
      EXPECT_EQ(aFirst.ValueAndTagEquals(aSecond), aCase.itsResult);
   }
}

TEST(VR, RefusesSizesThatNoLengthFieldHolds)
{
   EXPECT_EQ(VR::ToLength(0xFFFFFFFE), 0xFFFFFFFEu);
   EXPECT_THROW(VR::ToLength(0xFFFFFFFF), BadAllocException);
   EXPECT_THROW(VR::ToLength(0x100000002), BadAllocException);
}
