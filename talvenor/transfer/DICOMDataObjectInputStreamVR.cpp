#include "talvenor/transfer/DICOMDataObjectInputStreamVR.h"

#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/transfer/InputTransferSyntax.h"
#include "talvenor/transfer/TransferSyntaxType.h"
#include "talvenor/transfer/VRInputStreamVR.h"

DICOMDataObjectInputStreamVR::DICOMDataObjectInputStreamVR(const MAttributeTag& theTag, UINT32 theLength,
                                                           std::unique_ptr<InputTransferSyntax> theContent,
                                                           TNEndian::EndianType theEndian,
                                                           MemoryAllocater& theAllocator)
    : VR(theTag, theEndian, theAllocator), itsContent(std::move(theContent))
{
   SetLength(theLength);
   SetTypeCode(VRCode::SQ);
}

DICOMDataObjectInputStreamVR::~DICOMDataObjectInputStreamVR() = default;

VRInputStreamVR* DICOMDataObjectInputStreamVR::NextDICOMDataObject()
{
   if (!itsContent)
   {
      return nullptr;
   }
   itsMayMaterialise = false;
   std::unique_ptr<VR> anElement(itsContent->NextVR());
   if (!anElement)
   {
      itsContent.reset();
      return nullptr;
   }
   VRInputStreamVR* const anItem = anElement->GetAsVRInputStreamVR();
   if (anItem == nullptr)
   {
      itsContent->NoteFault();
      const RWCString aText =
          "DICOMDataObjectInputStreamVR::NextDICOMDataObject(): Expected VRInputStreamVR but got (" +
          MAttributeTag(anElement->GetGroup(), anElement->GetElement()).AsNumericString() + ") instead";
      throw StreamIOException(aText.c_str(), TN_INVALID_DELIMITER, 0);
   }
   anElement.release();
   return anItem;
}

bool DICOMDataObjectInputStreamVR::IsExplicit() const
{
   return itsContent != nullptr && itsContent->GetTransferSyntaxType().IsExplicit();
}

SequenceVR* DICOMDataObjectInputStreamVR::GetVR()
{
   std::exception_ptr aFailure;
   std::unique_ptr<VR> aSequence = Materialise(aFailure);
   if (aFailure)
   {
      std::rethrow_exception(aFailure);
   }
   return aSequence ? aSequence.release()->GetAsSequenceVR() : nullptr;
}

std::unique_ptr<VR> DICOMDataObjectInputStreamVR::Materialise(std::exception_ptr& theFailure)
{
   if (!itsContent || !itsMayMaterialise)
   {
      return nullptr;
   }
   auto aSequence = std::make_unique<SequenceVR>(GetGroup(), GetElement(), GetDataEndian(), GetMemoryAllocater());
   try
   {
      ReadItems(*aSequence);
   }
   catch (...)
   {
      theFailure = std::current_exception();
   }
   itsContent.reset();
   return aSequence;
}

void DICOMDataObjectInputStreamVR::ReadItems(SequenceVR& theSequence)
{
   const TNEndian::EndianType anEndian = itsContent->GetTransferSyntaxType().GetEndian();
   while (std::unique_ptr<VRInputStreamVR> anItem{NextDICOMDataObject()})
   {
      // The item joins the sequence first, so that its elements stay if reading fails further on.
      auto anObject = std::make_unique<DICOMDataObject>(anEndian);
      theSequence.AddSequenceItem(anObject.get());
      DICOMDataObject& anAdded = *anObject.release();
      while (VR* const aVR = anItem->NextVR())
      {
         if (!anAdded.Push(aVR))
         {
            throw StreamIOException("DICOMDataObjectInputStreamVR::GetVR(): error while saving VR to DICOMDataObject",
                                    TN_PARSE_TO_OBJECT_FAILED, 0);
         }
      }
   }
}
