#include <algorithm>
#include <cstring>

#include <gtest/gtest.h>

#include "support/CountingAllocater.h"
#include "support/CountingBytes.h"
#include "support/PiecewiseInputStream.h"
#include "support/RecordingOutputStream.h"
#include "support/StreamErrors.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/io/EndianHandlingReader.h"
#include "talvenor/io/EndianHandlingWriter.h"
#include "talvenor/io/MemoryStreams.h"

namespace
{
using Bytes = std::vector<unsigned char>;

struct FieldCase
{
   const char* itsName;
   int (VR::*itsRead)(EndianHandlingReader&);
   void (VR::*itsWrite)(EndianHandlingWriter&) const;
   UINT32 (*itsField)(const VR&);
   Bytes itsLittle, itsBig;
   UINT32 itsValue;
   const char* itsSizeOf;
};

template <auto theGetter>
UINT32 Field(const VR& theVR)
{
   return (theVR.*theGetter)();
}

// clang-format off
const FieldCase kFieldCases[] = {
    {"Group", &VR::ReadGroup, &VR::WriteGroup, Field<&VR::GetGroup>, {0xE0, 0x7F}, {0x7F, 0xE0}, 0x7FE0, "itsGroup"},
    {"Element", &VR::ReadElement, &VR::WriteElement, Field<&VR::GetElement>, {16, 32}, {32, 16}, 0x2010, "itsElement"},
    {"Length16", &VR::ReadLength16, &VR::WriteLength16, Field<&VR::GetLength>, {3, 1}, {1, 3}, 0x0103, "UINT16"},
    {"Length32", &VR::ReadLength32, &VR::WriteLength32, Field<&VR::GetLength>, {4, 3, 2, 1}, {1, 2, 3, 4}, 0x01020304,
     "UINT32"},
    {"Filler16", &VR::ReadFiller16, &VR::WriteFiller16, [](const VR&) { return UINT32{0}; }, {0, 0}, {0, 0}, 0,
     "UINT16"},
    {"TypeCode", &VR::ReadTypeCode, &VR::WriteTypeCode, Field<&VR::GetTypeCode>, {'U', 'I'}, {'U', 'I'}, 0x5549,
     "itsTypeCode"},
};
// clang-format on

// An element with fields that no case reads.
VR OldElement()
{
   VR aVR(0x1111, 0x2222);
   aVR.SetLength(0x33333333);
   aVR.SetTypeCode(VRCode::OB);
   return aVR;
}

const StreamError kNothing = {"(nothing was thrown)", TN_NO_ERROR, 0}; // how it compares

Bytes ValueOf(const VR& theVR)
{
   return {theVR.GetData(), theVR.GetData() + theVR.GetLength()};
}

Bytes Written(const VR& theVR, void (VR::*theWrite)(EndianHandlingWriter&) const, TNEndian::EndianType theEndian)
{
   RecordingOutputStream aStream;
   EndianHandlingWriter aWriter(aStream, theEndian);
   (theVR.*theWrite)(aWriter);
   return aStream.Bytes();
}
} // namespace

TEST(VRStreamIO, ReadsFieldsInTheReadersOrder)
{
   for (const FieldCase& aCase : kFieldCases)
   {
      for (const auto anEndian : {TNEndian::LittleEndian, TNEndian::BigEndian})
      {
         SCOPED_TRACE(aCase.itsName);
         PiecewiseInputStream aStream(anEndian == TNEndian::LittleEndian ? aCase.itsLittle : aCase.itsBig, 1);
         EndianHandlingReader aReader(aStream, anEndian);
         VR aVR;
         EXPECT_EQ((aVR.*aCase.itsRead)(aReader), 1);
         EXPECT_EQ(aCase.itsField(aVR), aCase.itsValue);
         EXPECT_EQ(aStream.Consumed(), aCase.itsLittle.size());
      }
   }
}

TEST(VRStreamIO, AFieldCutShortIsAnErrorAndAMissingOneTheEnd)
{
   for (const FieldCase& aCase : kFieldCases)
   {
      for (std::size_t aCut = 0; aCut < aCase.itsLittle.size(); ++aCut)
      {
         SCOPED_TRACE(aCase.itsName + std::string(" cut at ") + std::to_string(aCut));
         PiecewiseInputStream aStream(Bytes(aCut, 0x41), 1);
         EndianHandlingReader aReader(aStream, TNEndian::LittleEndian);
         VR aVR = OldElement();
         int aResult = -1;
         const StreamError anExpected{std::string("VR::Read") + aCase.itsName + "(EndianHandlingReader): Short read " +
                                          std::to_string(aCut) + " bytes != sizeof(" + aCase.itsSizeOf + ")",
                                      TN_END_OF_FILE, 0};
         EXPECT_EQ(StreamErrorOf([&] { aResult = (aVR.*aCase.itsRead)(aReader); }), aCut == 0 ? kNothing : anExpected);
         EXPECT_EQ(aResult, aCut == 0 ? 0 : -1);
         EXPECT_EQ(aCase.itsField(aVR), aCase.itsField(OldElement())) << "unchanged";
      }
   }
}

TEST(VRStreamIO, WritesFieldsInTheWritersOrder)
{
   VR aVR(0x7FE0, 0x2010);
   aVR.SetTypeCode(VRCode::UI);
   for (const FieldCase& aCase : kFieldCases)
   {
      SCOPED_TRACE(aCase.itsName);
      aVR.SetLength(aCase.itsSizeOf == std::string("UINT32") ? 0x01020304 : 0x0103);
      EXPECT_EQ(Written(aVR, aCase.itsWrite, TNEndian::LittleEndian), aCase.itsLittle);
      EXPECT_EQ(Written(aVR, aCase.itsWrite, TNEndian::BigEndian), aCase.itsBig);
   }
   aVR.SetLength(0x01FF);
   EXPECT_EQ(Written(aVR, &VR::WriteLength16Plus1, TNEndian::LittleEndian), (Bytes{0x00, 0x02}));
   EXPECT_EQ(Written(aVR, &VR::WriteLength32Plus1, TNEndian::BigEndian), (Bytes{0x00, 0x00, 0x02, 0x00}));
}

TEST(VRStreamIO, AValueCutShortIsAnErrorAndAMissingOneTheEnd)
{
   const Bytes aBytes = CountingBytes(9);
   const std::string aText = " bytes read != 10 bytes requested while reading attribute (0010, 0020) with type code LO"
                             " at stream offset ";
   for (unsigned int aCut = 0; aCut < 10; ++aCut)
   {
      SCOPED_TRACE("cut at " + std::to_string(aCut));
      MemoryInputStream aSeekable(aBytes.data(), aCut);
      PiecewiseInputStream aForwardOnly(Bytes(aBytes.begin(), aBytes.begin() + aCut), 2);
      for (InputStream* aStream : std::initializer_list<InputStream*>{&aSeekable, &aForwardOnly})
      {
         EndianHandlingReader aReader(*aStream, TNEndian::LittleEndian);
         VR aVR(0x0010, 0x0020);
         aVR.SetTypeCode(VRCode::LO);
         aVR.SetLength(10);
         const std::string anOffset = aStream == &aSeekable ? std::to_string(aCut) : "unknown";
         const StreamError anExpected{"VR::ReadData(EndianHandlingReader): Short read " + std::to_string(aCut) + aText +
                                          anOffset,
                                      TN_END_OF_FILE, 0};
         int aResult = -1;
         EXPECT_EQ(StreamErrorOf([&] { aResult = aVR.ReadData(aReader); }), aCut == 0 ? kNothing : anExpected);
         EXPECT_EQ(aResult, aCut == 0 ? 0 : -1);
         EXPECT_EQ(aVR.GetData(), nullptr) << "memory that was never filled is no value";
      }
   }
}

TEST(VRStreamIO, RefusesAnUndefinedLength)
{
   PiecewiseInputStream anInput(CountingBytes(4));
   EndianHandlingReader aReader(anInput, TNEndian::LittleEndian);
   VR aVR(0x0010, 0x0020);
   aVR.SetLength(VR::kUndefinedLength);
   EXPECT_EQ(StreamErrorOf([&] { aVR.ReadData(aReader); }),
             (StreamError{"VR::ReadData(EndianHandlingReader): read data of undefined length requested",
                          TN_INTERNAL_ERROR, 0}));
   EXPECT_EQ(StreamErrorOf([&] { Written(aVR, &VR::WriteData, TNEndian::LittleEndian); }),
             (StreamError{"VR::WriteData(EndianHandlingWriter): Write data of undefined length requested",
                          TN_INTERNAL_ERROR, 0}));
   aVR.SetLength(4);
   EXPECT_EQ(StreamErrorOf([&] { Written(aVR, &VR::WriteData, TNEndian::LittleEndian); }).itsCode, TN_INTERNAL_ERROR)
       << "a length without data";
}

TEST(VRStreamIO, AValueIsReadWholeWithOneRequestToItsAllocator)
{
   constexpr UINT32 kMegabyte = 1024 * 1024;
   for (const UINT32 aLength : {5u, kMegabyte, 17 * kMegabyte + 3})
   {
      SCOPED_TRACE(aLength);
      CountingAllocater anAllocator;
      Bytes aBytes(aLength);
      for (std::size_t i = 0; i < aBytes.size(); ++i)
      {
         aBytes[i] = static_cast<unsigned char>(i * 7 + i / 251);
      }
      PiecewiseInputStream aStream(aBytes, 700001);
      EndianHandlingReader aReader(aStream, TNEndian::LittleEndian);
      VR aVR(0x7FE0, 0x0010, TNEndian::LittleEndian, anAllocator);
      aVR.SetLength(aLength);
      EXPECT_EQ(aVR.ReadData(aReader), 1);
      EXPECT_TRUE(ValueOf(aVR) == aBytes);
      EXPECT_TRUE(aLength % 2 == 0 || aVR.GetData()[aLength] == 0) << "an odd value stays odd in an even buffer";
      EXPECT_EQ(anAllocator.Sizes(), (std::vector<unsigned int>{aLength + aLength % 2}));
   }
}

TEST(VRStreamIO, ALengthThatLiesClaimsNoMemoryForIt)
{
   for (const std::size_t anArrived : {100, 5 * 1024 * 1024})
   {
      CountingAllocater anAllocator;
      PiecewiseInputStream aStream{Bytes(anArrived)};
      EndianHandlingReader aReader(aStream, TNEndian::LittleEndian);
      VR aVR(0x7FE0, 0x0010, TNEndian::LittleEndian, anAllocator);
      aVR.SetLength(0xFFFFFFFE);
      EXPECT_EQ(StreamErrorOf([&] { aVR.ReadData(aReader); }).itsCode, TN_END_OF_FILE);
      EXPECT_EQ(anAllocator.Sizes().size(), 0u);
      EXPECT_EQ(aVR.GetData(), nullptr);
   }
}

TEST(VRStreamIO, WritesAValueInTheWritersOrderByItsType)
{
   const Bytes aBytes = CountingBytes(10);
   const std::pair<UINT16, Bytes> kCases[] = {
       {VRCode::OW, {2, 1, 4, 3, 6, 5, 8, 7, 10, 9}}, {VRCode::AT, {2, 1, 4, 3, 6, 5, 8, 7, 10, 9}},
       {VRCode::FL, {4, 3, 2, 1, 8, 7, 6, 5, 9, 10}}, // the rest that fills no unit goes out as it is
       {VRCode::FD, {8, 7, 6, 5, 4, 3, 2, 1, 9, 10}}, {VRCode::OB, aBytes},
   };
   for (const auto& [aCode, anExpected] : kCases)
   {
      for (const auto anEndian : {TNEndian::LittleEndian, TNEndian::BigEndian})
      {
         VR aVR(0x0010, 0x0020, anEndian);
         aVR.SetTypeCode(aCode);
         SCOPED_TRACE(aVR.GetTypeCodeAsString());
         aVR.SetData(aBytes.data(), 10, '\0');
         const auto aForeign = anEndian == TNEndian::LittleEndian ? TNEndian::BigEndian : TNEndian::LittleEndian;
         EXPECT_EQ(Written(aVR, &VR::WriteData, anEndian), aBytes);
         EXPECT_EQ(Written(aVR, &VR::WriteData, aForeign), anExpected);
         EXPECT_EQ(ValueOf(aVR), aBytes) << "the element itself is unchanged";
      }
   }
}

TEST(VRStreamIO, ALongValueIsSwappedWholeAndWrittenInBlocks)
{
   const Bytes aBytes = CountingBytes(100003);
   VR aVR(0x7FE0, 0x0010);
   aVR.SetTypeCode(VRCode::OW);
   aVR.SetData(aBytes.data(), static_cast<UINT32>(aBytes.size()), '\0');
   aVR.SetLength(static_cast<UINT32>(aBytes.size()));
   Bytes anExpected = aBytes;
   for (std::size_t i = 0; i + 1 < anExpected.size(); i += 2)
   {
      std::swap(anExpected[i], anExpected[i + 1]);
   }
   RecordingOutputStream aStream;
   EndianHandlingWriter aWriter(aStream, TNEndian::BigEndian);
   aVR.WriteData(aWriter);
   EXPECT_TRUE(aStream.Bytes() == anExpected);
   EXPECT_LT(aStream.Writes(), 100u);
}
