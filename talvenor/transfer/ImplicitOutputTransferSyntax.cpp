#include "talvenor/transfer/ImplicitOutputTransferSyntax.h"

#include "talvenor/transfer/ElementEncoder.h"

struct ImplicitOutputTransferSyntax::Policy
{
   using Encoder = ImplicitOutputTransferSyntax;

   static constexpr char kPrefix[] = "ImplicitOutputTransferSyntax::";
   static constexpr GroupLengthEncodingType kWalk = ImplicitNoGroupLength;
   static constexpr bool kIsExplicit = false;

   // PS3.5 7.1.3.
   static void ComposeHeader(HeaderBytes& theHeader, UINT32, UINT16, UINT32 theLength, TNEndian::EndianType theEndian)
   {
      TNEndian::Store(theHeader.itsBytes + 4, theLength, theEndian);
      theHeader.itsCount = 8;
   }
};

void ImplicitOutputTransferSyntax::SaveDICOMObject(DICOMObject& theObject)
{
   ElementEncoder<Policy>(*this).SaveDICOMObject(theObject);
}

void ImplicitOutputTransferSyntax::SaveVR(VR& theVR)
{
   ElementEncoder<Policy>(*this).SaveVR(theVR);
}
