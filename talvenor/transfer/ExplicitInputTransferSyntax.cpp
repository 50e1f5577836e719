#include "talvenor/transfer/ExplicitInputTransferSyntax.h"

#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/transfer/ElementDecoder.h"
#include "talvenor/transfer/TransferSyntaxManager.h"

struct ExplicitInputTransferSyntax::Policy
{
   using Decoder = ExplicitInputTransferSyntax;

   static constexpr char kPrefix[] = "ExplicitInputTransferSyntax::";
   static constexpr UINT16 kNativePixelType = VRCode::None;

   static HeaderEnd ReadHeader(InputStream& theStream, TNEndian::EndianType theEndian, StopLimit theLimit,
                               ElementHeader& theHeader)
   {
      return ReadExplicitHeader(theStream, theEndian, theLimit, theHeader);
   }

   // UN is what a peer writes that does not know an attribute; the dictionary may know it better (PS3.5 6.2.2).
   static void SetType(const Decoder& theDecoder, ElementHeader& theHeader)
   {
      if (theHeader.itsTypeCode == VRCode::UN)
      {
         theHeader.itsCameAsUN = true;
         const UINT16 aType = theDecoder.GetLookupDictionary().TypeCodeOf(theHeader.itsGroup, theHeader.itsElement);
         theHeader.itsTypeCode = aType != VRCode::None ? aType : VRCode::UN;
      }
   }

   // A sequence written as UN holds implicit VR little endian (PS3.5 6.2.2, note 2).
   static const TransferSyntaxType& ContentType(const Decoder& theDecoder, const ElementHeader& theHeader)
   {
      if (theHeader.itsCameAsUN)
      {
         const TransferSyntaxType* anImplicit =
             TransferSyntaxManager::GetDefaultInstance().GetTransferSyntaxType(TransferSyntaxType::TSLEImplicitUID);
         if (anImplicit == nullptr)
         {
            throw StreamIOException(
                "ExplicitInputTransferSyntax::NextVR(): implicit VR little endian is not registered",
                TN_TRANSFER_SYNTAX_UNSUPPORTED, 0);
         }
         return *anImplicit;
      }
      return theDecoder.GetTransferSyntaxType();
   }

   static void NoteValue(Decoder&, const VR&) {}

   static const char* EncapsulatedFault(TNEndian::EndianType theEndian)
   {
      return theEndian == TNEndian::LittleEndian
                 ? nullptr
                 : "Encapsulated pixel data element encoded with big-endian explicit syntax type";
   }

   static void LogHeaderFailure(const StreamIOException& theException)
   {
      const RWCString aDescription = theException.ToString(); // may throw, which an open entry must not see
      startentry(gTNErrorLog) << kPrefix << "NextVR(): "
                              << "Exception while reading group code, element code or length: (Errno = "
                              << theException.GetSystemErrorCode() << ") " << aDescription << "\n"
                              << endentry;
   }
};

VR* ExplicitInputTransferSyntax::NextVR()
{
   return ElementDecoder<Policy>(*this).Next();
}

void ExplicitInputTransferSyntax::Pushback(VR* theVR)
{
   ElementDecoder<Policy>::Pushback(*this, theVR);
}
