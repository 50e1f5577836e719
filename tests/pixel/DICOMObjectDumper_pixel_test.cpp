// Dumps of encapsulated pixel data (PS3.5 A.4).
#include <gtest/gtest.h>

#include <cstring>
#include <sstream>

#include "talvenor/dataset/DICOMObjectDumper.h"
#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/dictionary/MDataDictionary.h"
#include "talvenor/dictionary/PrivateDataDictionaryCatalog.h"
#include "talvenor/foundation/LogStream.h"
#include "talvenor/io/MemoryStreams.h"
#include "talvenor/pixel/EncapsulatedPixelVR.h"

namespace
{
using Bytes = std::vector<unsigned char>;

PixelDataFragment* NewFragment(const Bytes& theBytes)
{
   auto* aFragment = new MemoryBufferedPixelDataFragment(static_cast<UINT32>(theBytes.size()));
   if (!theBytes.empty())
   {
      std::memcpy(static_cast<PixelDataFragment*>(aFragment)->GetData(), theBytes.data(), theBytes.size());
   }
   return aFragment;
}

// The value in the line of the element and what follows it.
std::string DumpOf(const EncapsulatedPixelVR& theVR)
{
   const MDataDictionary aPublic;
   const PrivateDataDictionaryCatalog aCatalog;
   std::ostringstream anOutput;
   LogStream aLog(anOutput);
   DICOMObjectDumper(aLog).DumpVR(theVR, InstanceSpecificDataDictionary(aPublic, aCatalog));
   const std::string aText = anOutput.str();
   return aText.substr(aText.find("\": ") + 3);
}

// theItems begin with the offset table.
std::string DumpOf(const std::vector<Bytes>& theItems)
{
   auto* aList = new EncapsulatedPixelVR::FragmentList;
   for (const Bytes& anItem : theItems)
   {
      aList->push_back(NewFragment(anItem));
   }
   return DumpOf(EncapsulatedPixelVR(aList));
}

TEST(DICOMObjectDumperPixel, ShowsFramesAndFragments)
{
   struct Case
   {
      const char* itsName;
      std::vector<Bytes> itsItems;
      std::string itsExpected;
   };
   const Case kCases[] = {
       {"two frames, the second of two fragments",
        {{0, 0, 0, 0, 10, 0, 0, 0}, {0x01, 0x02}, {0x03, 0x04}, Bytes(18, 0x05)},
        "[Encapsulated Pixel VR Containing 2 Frame(s)]\n"
        "  [Frame # 0] First Fragment Index: 1, Fragments in Frame: 1, Data Bytes in Frame: 2\n"
        "    [Frame.Fragment: 0.1] Raw Data: 0x01 0x02\n"
        "  [Frame # 1] First Fragment Index: 2, Fragments in Frame: 2, Data Bytes in Frame: 20\n"
        "    [Frame.Fragment: 1.2] Raw Data: 0x03 0x04\n"
        "    [Frame.Fragment: 1.3] Raw Data: 0x05 0x05 0x05 0x05 0x05 0x05 0x05 0x05 0x05 0x05 0x05 0x05 0x05 0x05"
        " 0x05 0x05...\n"},
       {"an empty offset table",
        {{}, {0x01, 0x02}, {}},
        "[Encapsulated Pixel VR containing unknown number of frames (empty basic offset table) (2 fragment(s))]\n"
        "    [Fragment: 1] Raw Data: 0x01 0x02\n"
        "    [Fragment: 2] Raw Data: \n"},
       {"nothing at all", {}, "[Encapsulated Pixel VR Containing 0 Frame(s)]\n"},
       {"an offset inside a fragment",
        {{0, 0, 0, 0, 9, 0, 0, 0}, {0x01, 0x02}, {0x03, 0x04}},
        "[Encapsulated Pixel VR containing unknown number of frames (EncapsulatedPixelVR::GetFrameStartIndices: Offset "
        "doesn't match fragment lengths for basic item offset entry 1) (2 fragment(s))]\n"
        "    [Fragment: 1] Raw Data: 0x01 0x02\n"
        "    [Fragment: 2] Raw Data: 0x03 0x04\n"},
   };
   for (const Case& aCase : kCases)
   {
      EXPECT_EQ(DumpOf(aCase.itsItems), aCase.itsExpected) << aCase.itsName;
   }
}

TEST(DICOMObjectDumperPixel, AFragmentInAStreamIsLeftThere)
{
   const unsigned char aBytes[] = {1, 2, 3, 4};
   MemoryInputStream aStream(aBytes, sizeof aBytes);
   auto* aFragment = new StreamBufferedPixelDataFragment(aStream, sizeof aBytes);
   const EncapsulatedPixelVR aVR(new EncapsulatedPixelVR::FragmentList{NewFragment({}), aFragment});
   EXPECT_EQ(DumpOf(aVR), "[Encapsulated Pixel VR Containing 1 Frame(s)]\n"
                          "  [Frame # 0] First Fragment Index: 1, Fragments in Frame: 1, Data Bytes in Frame: 4\n"
                          "    [Frame.Fragment: 0.1] Raw Data: [Data pending on input stream]\n");
   EXPECT_EQ(aStream.GetStreamPosition(), 0u);
}
} // namespace
