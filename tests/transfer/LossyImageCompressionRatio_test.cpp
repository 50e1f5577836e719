// DICOMDataObject::GetLossyImageCompressionRatio; the attributes are those of PS3.3 C.7.6.1.1.5.
#include <gtest/gtest.h>

#include "support/Elements.h"
#include "talvenor/transfer/TransferSyntaxTypes.h"

namespace
{
constexpr UINT32 kImageType = 0x00080008;
constexpr UINT32 kDerivationDescription = 0x00082111;
constexpr UINT32 kLossyCompression = 0x00282110;
constexpr UINT32 kLossyRatio = 0x00282112;

const LittleEndianExplicitTransferSyntaxType kNative;
const JPEG50TransferSyntaxType kLossy;
const JPEG57TransferSyntaxType kLossless;

constexpr const char* kAbsent = nullptr;

void PushText(DICOMDataObject& theObject, UINT32 theTag, const char* theText)
{
   if (theText != kAbsent)
   {
      theObject.Push(TextElement(theTag, theText, VRCode::LO));
   }
}

TEST(LossyImageCompressionRatio, ComesFromTheRatioElementOrTheDescription)
{
   struct Case
   {
      const char* itsName;
      const char* itsLossy;       // (0028,2110)
      const char* itsRatio;       // (0028,2112)
      const char* itsImageType;   // (0008,0008)
      const char* itsDescription; // (0008,2111)
      int itsExpected;
   };
   const char* const kDerived = "DERIVED\\PRIMARY";
   const Case kCases[] = {
       {"marked as not lossy", "00", "10", kDerived, "10:1", -1},
       {"marked 01", "01", "10", kAbsent, kAbsent, 10},
       {"truncated", "01", "10.9", kAbsent, kAbsent, 10},
       {"steps multiply", "01", "2.5\\4", kAbsent, kAbsent, 10},
       {"no ratio at all", "01", kAbsent, kAbsent, kAbsent, -1},
       {"product below 1", "01", "0.5", kAbsent, kAbsent, -1},
       {"two points", "01", "1.2.3", kAbsent, kAbsent, -1},
       {"exponent", "01", "1e1", kAbsent, kAbsent, -1},
       {"zero", "01", "10\\0", kAbsent, kAbsent, -1},
       {"empty value between", "01", "10\\\\2", kAbsent, kAbsent, -1},
       {"beyond an int", "01", "99999999999", kAbsent, kAbsent, 2147483647},

       {"one bad step leaves it to the description", "01", "10\\x", kDerived, "JPEG 7:1", 7},
       {"ratio element goes first", "01", "5", kDerived, "JPEG 7:1", 5},
       {"small letters in the image type", "01", kAbsent, "derived\\primary", "7:1", 7},
       {"another word", "01", kAbsent, "DERIVEDX\\PRIMARY", "7:1", -1},
       {"round brackets", "01", kAbsent, kDerived, "JPEG(8:1)", 8},
       {"bracket of another kind", "01", kAbsent, kDerived, "(8:1]", -1},
       {"bracket that does not open", "01", kAbsent, kDerived, "8:1)", -1},
       {"digit after it", "01", kAbsent, kDerived, "10:15", -1},
       {"a later place that fits", "01", kAbsent, kDerived, "at 10:15 by 6:1", 6},
       {"a second point is not of the number", "01", kAbsent, kDerived, "no.9.5:1", 9},
       {"below 1", "01", kAbsent, kDerived, "0.5:1", -1},
   };
   for (const Case& aCase : kCases)
   {
      DICOMDataObject anObject;
      PushText(anObject, kLossyCompression, aCase.itsLossy);
      PushText(anObject, kLossyRatio, aCase.itsRatio);
      PushText(anObject, kImageType, aCase.itsImageType);
      PushText(anObject, kDerivationDescription, aCase.itsDescription);
      EXPECT_EQ(anObject.GetLossyImageCompressionRatio(kNative), aCase.itsExpected) << aCase.itsName;
      EXPECT_EQ(anObject.GetLossyImageCompressionRatio(kLossless), aCase.itsExpected) << aCase.itsName;
   }
}

TEST(LossyImageCompressionRatio, ALossySyntaxIsMeasuredInsteadOfDescribed)
{
   struct Case
   {
      const char* itsName;
      const TransferSyntaxType& itsSyntax;
      const char* itsRatio;
      const char* itsFrames;
      UINT16 itsRows; // 0: absent
      UINT32 itsEnd;
      UINT32 itsStart;
      int itsExpected;
   };
   const Case kCases[] = {
       // 100 columns, 3 samples of 8 bits: 300 bytes a row
       {"one frame", kLossy, kAbsent, kAbsent, 100, 4000, 1000, 10},
       {"truncated", kLossy, kAbsent, kAbsent, 100, 4001, 1000, 9},
       {"several frames", kLossy, kAbsent, "3", 100, 4000, 1000, 30},
       {"number of frames that is none", kLossy, kAbsent, "x", 100, 4000, 1000, 10},
       {"ratio element below 1", kLossy, "0.4", kAbsent, 100, 4000, 1000, 10},
       {"grown by compression", kLossy, kAbsent, kAbsent, 1, 4000, 1000, -1},
       {"no rows", kLossy, kAbsent, kAbsent, 0, 4000, 1000, -1},
       {"no start", kLossy, kAbsent, kAbsent, 100, 4000, 0, -1},
       {"no end", kLossy, kAbsent, kAbsent, 100, 0, 1000, -1},
       {"end before start", kLossy, kAbsent, kAbsent, 100, 1000, 4000, -1},
       {"lossless syntax", kLossless, kAbsent, kAbsent, 100, 4000, 1000, 7},
   };
   for (const Case& aCase : kCases)
   {
      DICOMDataObject anObject;
      PushText(anObject, kLossyCompression, "01");
      PushText(anObject, kLossyRatio, aCase.itsRatio);
      PushText(anObject, kImageType, "DERIVED\\PRIMARY");
      PushText(anObject, kDerivationDescription, "7:1"); // of no use to a lossy syntax
      PushText(anObject, 0x00280008, aCase.itsFrames);
      anObject.Push(NumberElement<UINT16>(0x00280002, VRCode::US, 3));
      anObject.Push(NumberElement<UINT16>(0x00280011, VRCode::US, 100));
      anObject.Push(NumberElement<UINT16>(0x00280100, VRCode::US, 8));
      if (aCase.itsRows != 0)
      {
         anObject.Push(NumberElement(0x00280010, VRCode::US, aCase.itsRows));
      }
      EXPECT_EQ(anObject.GetLossyImageCompressionRatio(aCase.itsSyntax, aCase.itsEnd, aCase.itsStart),
                aCase.itsExpected)
          << aCase.itsName;
   }
}
} // namespace
