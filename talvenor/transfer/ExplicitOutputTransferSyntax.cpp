#include "talvenor/transfer/ExplicitOutputTransferSyntax.h"

#include "talvenor/transfer/ElementEncoder.h"

struct ExplicitOutputTransferSyntax::Policy
{
   using Encoder = ExplicitOutputTransferSyntax;

   static constexpr char kPrefix[] = "ExplicitOutputTransferSyntax::";
   static constexpr GroupLengthEncodingType kWalk = ExplicitNoGroupLength;
   static constexpr bool kIsExplicit = true;

   // PS3.5 7.1.2.
   static void ComposeHeader(HeaderBytes& theHeader, UINT32 theTag, UINT16 theTypeCode, UINT32 theLength,
                             TNEndian::EndianType theEndian)
   {
      theHeader.itsBytes[4] = static_cast<unsigned char>(theTypeCode >> 8);
      theHeader.itsBytes[5] = static_cast<unsigned char>(theTypeCode);
      if (HasLongHeaderVRCode(theTypeCode))
      {
         theHeader.itsBytes[6] = 0;
         theHeader.itsBytes[7] = 0;
         TNEndian::Store(theHeader.itsBytes + 8, theLength, theEndian);
         theHeader.itsCount = 12;
         return;
      }
      if (theLength > kLongestValue)
      {
         ThrowTooLong(theTag, theLength);
      }
      TNEndian::Store(theHeader.itsBytes + 6, static_cast<UINT16>(theLength), theEndian);
      theHeader.itsCount = 8;
   }

private:
   static constexpr UINT32 kLongestValue = 32768; // under a 16-bit length

   [[noreturn]] static void ThrowTooLong(UINT32 theTag, UINT32 theLength)
   {
      const RWCString aText =
          kPrefix + ("SaveVR: Length (" + std::to_string(theLength)) + ") > 32768 for VR with 16 bit length; Tag = (" +
          MAttributeTag(static_cast<UINT16>(theTag >> 16), static_cast<UINT16>(theTag)).AsNumericString() + ")";
      throw StreamIOException(aText.c_str(), TN_INVALID_ELEMENT_HEADER, 0);
   }
};

void ExplicitOutputTransferSyntax::SaveDICOMObject(DICOMObject& theObject)
{
   ElementEncoder<Policy>(*this).SaveDICOMObject(theObject);
}

void ExplicitOutputTransferSyntax::SaveVR(VR& theVR)
{
   ElementEncoder<Policy>(*this).SaveVR(theVR);
}
