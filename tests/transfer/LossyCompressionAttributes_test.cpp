// The updates of the attributes of lossy compression, PS3.3 C.7.6.1.1.5.
#include <gtest/gtest.h>
#include <map>
#include <memory>

#include "support/Dictionaries.h"
#include "support/Elements.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/transfer/TransferSyntaxTypes.h"

namespace
{
constexpr UINT32 kImageType = 0x00080008;
constexpr UINT32 kClassUID = 0x00080016;
constexpr UINT32 kInstanceUID = 0x00080018;
constexpr UINT32 kDescription = 0x00082111;
constexpr UINT32 kSources = 0x00082112;
constexpr UINT32 kPhotometric = 0x00280004;
constexpr UINT32 kMarker = 0x00282110;
constexpr UINT32 kRatio = 0x00282112;
constexpr UINT32 kMethod = 0x00282114;

const LittleEndianExplicitTransferSyntaxType kNative;
const JPEG50TransferSyntaxType kBaseline;
const JPEG51TransferSyntaxType kExtended;
const JPEG57TransferSyntaxType kLossless;
const JPEGNLSTransferSyntaxType kNearLossless;
const JPEG2KTransferSyntaxType kJPEG2K;

using Texts = std::map<UINT32, std::string>; // values by tag

// What the updates store is typed without a dictionary, too.
const std::map<UINT32, UINT16> kStoredTypes = {
    {kMarker, VRCode::CS}, {kMethod, VRCode::CS}, {kRatio, VRCode::DS}, {kDescription, VRCode::ST}};

Texts TextsOf(const DICOMDataObject& theObject)
{
   Texts aTexts;
   for (const UINT32 aTag : TagsOf(theObject))
   {
      aTexts[aTag] = TextOf(theObject, aTag);
      if (const auto aType = kStoredTypes.find(aTag); aType != kStoredTypes.end())
      {
         EXPECT_EQ(theObject.GetVR(static_cast<UINT16>(aTag >> 16), static_cast<UINT16>(aTag))->GetTypeCode(),
                   aType->second);
      }
   }
   return aTexts;
}

void Push(DICOMDataObject& theObject, const Texts& theTexts)
{
   for (const auto& [aTag, aText] : theTexts)
   {
      const auto aType = kStoredTypes.find(aTag);
      theObject.Push(TextElement(aTag, aText, aType != kStoredTypes.end() ? aType->second : VRCode::LO));
   }
}

// theTexts with theChanges in place of what is there.
Texts With(Texts theTexts, const Texts& theChanges)
{
   for (const auto& [aTag, aText] : theChanges)
   {
      theTexts[aTag] = aText;
   }
   return theTexts;
}

// The library's own private attributes, in a block of group 0009.
class PrivateSet : private Dictionaries
{
public:
   PrivateSet()
       : Dictionaries("", "PrivateCreator = CORVAN0\n"
                          "0009,01,UI,Original,OrigSOPInstUID,1,1\n"
                          "0009,02,US,Version,CORVANDemoFileVersion,1,1\n")
   {
      itsSet.SetDataDictionary(new InstanceSpecificDataDictionary(itsPublic, itsCatalog));
   }

   void Push(UINT16 theVersion)
   {
      itsSet.DICOMObject::Push("CORVAN0", "CORVANDemoFileVersion", NumberElement(0x00090002, VRCode::US, theVersion));
   }

   DICOMDataObject itsSet;
};

// Class and instance UID of every item of (0008,2112).
std::vector<std::string> SourcesOf(const DICOMDataObject& theObject)
{
   std::vector<std::string> aSources;
   const VR* aVR = theObject.GetVR(0x0008, 0x2112);
   const SequenceVR* aSequence = aVR != nullptr ? aVR->GetAsSequenceVR() : nullptr;
   if (aSequence != nullptr && aSequence->GetSequenceArray() != nullptr)
   {
      for (const DICOMDataObject* anItem : *aSequence->GetSequenceArray())
      {
         EXPECT_EQ(anItem->GetVR(0x0008, 0x0018)->GetTypeCode(), VRCode::UI);
         aSources.push_back(TextOf(*anItem, kClassUID) + " " + TextOf(*anItem, kInstanceUID));
      }
   }
   return aSources;
}

TEST(LossyCompressionAttributes, OutgoingFillsWhatIsEmpty)
{
   const Texts kDerived = {{kImageType, "DERIVED\\PRIMARY"}};
   const Texts kOriginal = {{kImageType, "ORIGINAL\\PRIMARY"}};
   const Texts kFilled = {
       {kImageType, "DERIVED\\PRIMARY"}, {kDescription, "by hand"}, {kMethod, "MINE"}, {kRatio, "4"}};
   const struct
   {
      const char* itsName;
      Texts itsBefore;
      const TransferSyntaxType& itsSyntax;
      int itsRatio;
      Texts itsChanges;
   } kCases[] = {
       {"derived, baseline",
        kDerived,
        kBaseline,
        10,
        {{kMarker, "01"}, {kMethod, "ISO_10918_1"}, {kRatio, "10"}, {kDescription, "LOSSY JPEG COMPRESSION 10:1"}}},
       {"original", kOriginal, kBaseline, 10, {{kMarker, "01"}, {kMethod, "ISO_10918_1"}, {kRatio, "10"}}},
       {"ratio unknown",
        kDerived,
        kJPEG2K,
        0,
        {{kMarker, "01"}, {kMethod, "ISO_15444_1"}, {kDescription, "LOSSY JPEG 2000 COMPRESSION UNKNOWN RATIO"}}},
       {"method without a label",
        kDerived,
        kNearLossless,
        1,
        {{kMarker, "01"}, {kRatio, "1"}, {kDescription, "LOSSY COMPRESSION 1:1"}}},
       {"DERIVED as only value", {{kImageType, "DERIVED"}}, kNearLossless, 0, {{kMarker, "01"}}},
       {"nothing is empty", kFilled, kBaseline, 10, {{kMarker, "01"}}},
       {"lossless", kDerived, kLossless, 10, {}},
       {"marked as not lossy", With(kDerived, {{kMarker, "00"}}), kLossless, 10, {}},
       {"already lossy",
        With(kDerived, {{kMarker, "1"}}),
        kNative,
        10,
        {{kMarker, "01"}, {kRatio, "10"}, {kDescription, "LOSSY COMPRESSION 10:1"}}},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      const Texts anExpected = With(aCase.itsBefore, aCase.itsChanges);
      DICOMDataObject anOutgoing;
      Push(anOutgoing, aCase.itsBefore);
      anOutgoing.UpdateOutgoingLossyCompressionRelatedAttributes(aCase.itsSyntax, aCase.itsRatio, false);
      EXPECT_EQ(TextsOf(anOutgoing), anExpected);

      DICOMDataObject anIncoming; // not to be derived
      Push(anIncoming, aCase.itsBefore);
      anIncoming.UpdateIncomingLossyCompressionRelatedAttributes(aCase.itsSyntax, false, aCase.itsRatio);
      EXPECT_EQ(TextsOf(anIncoming), anExpected);
   }
}

TEST(LossyCompressionAttributes, BaselineJPEGIsYBRUpToVersion1)
{
   const struct
   {
      const char* itsName;
      int itsVersion; // -1: absent
      const TransferSyntaxType& itsSyntax;
      bool itsAdjust;
      const char* itsExpected;
   } kCases[] = {
       {"no version", -1, kBaseline, true, "YBR_FULL_422"},
       {"version 1", 1, kBaseline, true, "YBR_FULL_422"},
       {"version 2", 2, kBaseline, true, "RGB"},
       {"not asked for", -1, kBaseline, false, "RGB"},
       {"another lossy syntax", -1, kExtended, true, "RGB"},
   };
   for (const auto& aCase : kCases)
   {
      PrivateSet aSet;
      aSet.itsSet.Push(TextElement(kPhotometric, "RGB"));
      if (aCase.itsVersion >= 0)
      {
         aSet.Push(static_cast<UINT16>(aCase.itsVersion));
      }
      aSet.itsSet.UpdateOutgoingLossyCompressionRelatedAttributes(aCase.itsSyntax, 10, aCase.itsAdjust);
      EXPECT_EQ(TextOf(aSet.itsSet, kPhotometric), aCase.itsExpected) << aCase.itsName;
   }
}

TEST(LossyCompressionAttributes, IncomingDerives)
{
   const struct
   {
      const char* itsName;
      const char* itsImageType; // null: absent
      const TransferSyntaxType& itsSyntax;
      int itsRatio;
      const char* itsDerivedType;
      const char* itsDescription;
      const char* itsMethod;
   } kCases[] = {
       {"two values", "ORIGINAL\\PRIMARY", kBaseline, 10, "DERIVED\\PRIMARY\\\\JPEG LOSSY 10:1",
        "LOSSY JPEG COMPRESSION 10:1 (CORVAN)", "ISO_10918_1"},
       {"three values", "ORIGINAL\\PRIMARY\\AXIAL", kBaseline, 10, "DERIVED\\PRIMARY\\AXIAL\\JPEG LOSSY 10:1",
        "LOSSY JPEG COMPRESSION 10:1 (CORVAN)", "ISO_10918_1"},
       {"four values", "ORIGINAL\\SECONDARY\\\\X", kJPEG2K, 5, "DERIVED\\SECONDARY\\\\X\\JP2K LOSSY 5:1",
        "LOSSY JPEG 2000 COMPRESSION 5:1 (CORVAN)", "ISO_15444_1"},
       {"one value", "ORIGINAL", kBaseline, 0, "DERIVED\\PRIMARY\\\\JPEG LOSSY ?:1",
        "LOSSY JPEG COMPRESSION UNKNOWN RATIO (CORVAN)", "ISO_10918_1"},
       {"no image type, no labels", nullptr, kNearLossless, 10, "DERIVED\\PRIMARY\\\\LOSSY 10:1",
        "LOSSY COMPRESSION 10:1 (CORVAN)", "(none)"},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      DICOMDataObject anObject(TNEndian::BigEndian);
      Push(anObject, {{kClassUID, "1.2.3"}, {kInstanceUID, "1.2.3.4"}, {kDescription, "earlier"}});
      if (aCase.itsImageType != nullptr)
      {
         anObject.Push(TextElement(kImageType, aCase.itsImageType));
      }
      anObject.UpdateIncomingLossyCompressionRelatedAttributes(aCase.itsSyntax, true, aCase.itsRatio);
      EXPECT_EQ(TextOf(anObject, kImageType), aCase.itsDerivedType);
      EXPECT_EQ(TextOf(anObject, kDescription), aCase.itsDescription);
      EXPECT_EQ(TextOf(anObject, kMethod), aCase.itsMethod);
      EXPECT_FALSE(anObject.HasAttribute(0x0028, 0x2110) || anObject.HasAttribute(0x0028, 0x2112));
      EXPECT_EQ(SourcesOf(anObject), std::vector<std::string>{"1.2.3 1.2.3.4"});
   }
}

TEST(LossyCompressionAttributes, IncomingIsDerivedOnce)
{
   DICOMDataObject anObject;
   Push(anObject, {{kClassUID, "1.2.3"}, {kInstanceUID, "1.2.3.4"}});
   anObject.UpdateIncomingLossyCompressionRelatedAttributes(kBaseline, true, 10);
   const DICOMDataObject aFirst(anObject);
   anObject.UpdateIncomingLossyCompressionRelatedAttributes(kJPEG2K, true, 20);
   EXPECT_TRUE(anObject.ValueEquals(aFirst));

   DICOMDataObject aNative;
   aNative.UpdateIncomingLossyCompressionRelatedAttributes(kNative, true, 10);
   EXPECT_TRUE(aNative.IsEmpty()) << "uncompressed is not lossy";
}

TEST(LossyCompressionAttributes, TheSourceIsTheOriginalInstance)
{
   const auto Update = [](DICOMDataObject& theObject) {
      theObject.UpdateIncomingLossyCompressionRelatedAttributes(kBaseline, true, 10);
      return SourcesOf(theObject);
   };
   using Sources = std::vector<std::string>;

   PrivateSet aPrivate;
   Push(aPrivate.itsSet, {{kClassUID, "1.2.3"}, {kInstanceUID, "1.2.3.4"}});
   aPrivate.itsSet.ReplaceVR("CORVAN0", BytesElement(0x00090001, VRCode::UI, "1.2.3.9"));
   EXPECT_EQ(Update(aPrivate.itsSet), Sources{"1.2.3 1.2.3.9"}) << "of the private attribute";

   DICOMDataObject anotherOne;
   Push(anotherOne, {{kClassUID, "1.2.3"}, {kInstanceUID, "1.2.3.4"}});
   auto* anItem = new DICOMDataObject;
   Push(*anItem, {{kClassUID, "1.1"}});
   anItem->Push(BytesElement(kInstanceUID, VRCode::UI, "1.1.1"));
   anotherOne.DICOMObject::Push(static_cast<VR*>(new SequenceVR(0x0008, 0x2112)));
   anotherOne.DICOMObject::Push(anItem);
   EXPECT_EQ(Update(anotherOne), (Sources{"1.1 1.1.1", "1.2.3 1.2.3.4"})) << "after those that stand there";

   DICOMDataObject noSequence;
   Push(noSequence, {{kClassUID, "1.2.3"}, {kInstanceUID, "1.2.3.4"}, {kSources, "text"}});
   EXPECT_EQ(Update(noSequence), Sources{"1.2.3 1.2.3.4"}) << "in place of what is no sequence";

   DICOMDataObject noUID;
   Push(noUID, {{kClassUID, "1.2.3"}, {kSources, "text"}});
   EXPECT_EQ(Update(noUID), Sources{});
   EXPECT_EQ(TextOf(noUID, kSources), "text");
}
} // namespace
