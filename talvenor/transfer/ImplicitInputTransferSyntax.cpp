#include "talvenor/transfer/ImplicitInputTransferSyntax.h"

#include <algorithm>
#include <iterator>

#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/transfer/ElementDecoder.h"
#include "talvenor/transfer/TransferSyntaxType.h"

namespace
{
// Attributes whose type depends on others (PS3.5 A.1, PS3.6 "US or SS"): 0 stands for US or, with signed pixels, SS.
struct AmbiguousType
{
   UINT32 itsTag;
   UINT16 itsTypeCode;
};

constexpr UINT16 kBySign = VRCode::None;
constexpr AmbiguousType kAmbiguousTypes[] = {
    // in ascending order
    {0x00280106, kBySign},    {0x00280107, kBySign},    {0x00280108, kBySign},    {0x00280109, kBySign},
    {0x00280110, kBySign},    {0x00280111, kBySign},    {0x00280120, kBySign},    {0x00281101, kBySign},
    {0x00281102, kBySign},    {0x00281103, kBySign},    {0x00281111, kBySign},    {0x00281112, kBySign},
    {0x00281113, kBySign},    {0x00283002, kBySign},    {0x00283006, VRCode::OW}, {0x00409211, kBySign},
    {0x00409216, kBySign},    {0x00609211, kBySign},    {0x00609216, kBySign},    {0x54000110, VRCode::OW},
    {0x54000112, VRCode::OW}, {0x5400100A, VRCode::OW}, {0x54001010, VRCode::OW},
};

const AmbiguousType* FindAmbiguousType(UINT32 theTag)
{
   const auto* aRow =
       std::lower_bound(std::begin(kAmbiguousTypes), std::end(kAmbiguousTypes), theTag,
                        [](const AmbiguousType& theRow, UINT32 theKey) { return theRow.itsTag < theKey; });
   return aRow != std::end(kAmbiguousTypes) && aRow->itsTag == theTag ? aRow : nullptr;
}
} // namespace

struct ImplicitInputTransferSyntax::Policy
{
   using Decoder = ImplicitInputTransferSyntax;

   static constexpr char kPrefix[] = "ImplicitInputTransferSyntax::";
   static constexpr UINT16 kNativePixelType = VRCode::OW; // PS3.5 A.1

   static HeaderEnd ReadHeader(InputStream& theStream, TNEndian::EndianType theEndian, StopLimit theLimit,
                               ElementHeader& theHeader)
   {
      return ReadImplicitHeader(theStream, theEndian, theLimit, theHeader);
   }

   static void SetType(const Decoder& theDecoder, ElementHeader& theHeader)
   {
      const UINT16 aType = theDecoder.GetLookupDictionary().TypeCodeOf(theHeader.itsGroup, theHeader.itsElement);
      theHeader.itsTypeCode = aType != VRCode::None ? aType : VRCode::UN;
      if (const AmbiguousType* aRow = FindAmbiguousType(theHeader.GetTag()))
      {
         const UINT16 aSignedType = theDecoder.itsIsSigned ? VRCode::SS : VRCode::US;
         theHeader.itsTypeCode = aRow->itsTypeCode == kBySign ? aSignedType : aRow->itsTypeCode;
      }
   }

   static const TransferSyntaxType& ContentType(const Decoder& theDecoder, const ElementHeader&)
   {
      return theDecoder.GetTransferSyntaxType();
   }

   static void NoteValue(Decoder& theDecoder, const VR& theVR)
   {
      if (theVR.GetTag() == ElementHeader::kPixelRepresentation && theVR.GetLength() >= 2 &&
          TNEndian::Load<UINT16>(theVR.GetData(), theVR.GetDataEndian()) != 0)
      {
         theDecoder.itsIsSigned = true;
      }
   }

   static const char* EncapsulatedFault(TNEndian::EndianType)
   {
      return "Encapsulated pixel data element invalid for this syntax type";
   }

   static void LogHeaderFailure(const StreamIOException&)
   {
      startentry(gTNErrorLog) << kPrefix << "NextVR(): "
                              << "Exception while reading group code, element code or length while reading VR # 1\n"
                              << endentry;
   }
};

VR* ImplicitInputTransferSyntax::NextVR()
{
   return ElementDecoder<Policy>(*this).Next();
}

void ImplicitInputTransferSyntax::Pushback(VR* theVR)
{
   ElementDecoder<Policy>::Pushback(*this, theVR);
}
