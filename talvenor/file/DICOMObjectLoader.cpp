#include "talvenor/file/DICOMObjectLoader.h"

#include <algorithm>

#include "talvenor/dataset/DICOMObject.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/dictionary/PrivateDataDictionaryCatalog.h"
#include "talvenor/file/Part10InputStream.h"
#include "talvenor/pixel/PixelDataFragmentInputStreamVR.h"
#include "talvenor/pixel/PixelInputStreamVR.h"
#include "talvenor/transfer/DICOMDataObjectInputStreamVR.h"
#include "talvenor/transfer/TransferSyntaxType.h"
#include "talvenor/transfer/VRInputStreamVR.h"

namespace
{
constexpr size_t kKnownBlockPlaces = 249;
constexpr UINT32 kLongestCreator = 265;

// Reads what is left of a stream-valued element, so that its decoder stands behind it.
void Drain(VR& theVR)
{
   if (DICOMDataObjectInputStreamVR* aSequence = theVR.GetAsDICOMDataObjectInputStreamVR())
   {
      while (const std::unique_ptr<VRInputStreamVR> anItem{aSequence->NextDICOMDataObject()})
      {
         Drain(*anItem);
      }
   }
   else if (VRInputStreamVR* anItem = theVR.GetAsVRInputStreamVR())
   {
      while (const std::unique_ptr<VR> aVR{anItem->NextVR()})
      {
         Drain(*aVR);
      }
   }
   else if (PixelDataFragmentInputStreamVR* aFragments = theVR.GetAsPixelDataFragmentInputStreamVR())
   {
      aFragments->SkipToEOF();
   }
   else if (PixelInputStreamVR* aPixels = theVR.GetAsPixelInputStreamVR())
   {
      aPixels->Skip(theVR.GetLength());
   }
}
} // namespace

DICOMObjectLoader::DICOMObjectLoader(DICOMObject& theObject, Part10InputStream& theStream)
    : itsObject(theObject), itsDecoder(theStream.CreateDecoder())
{
   itsDecoder->SetDataDictionary(theObject.GetDataDictionary()); // shared: creators that are pushed type what follows
   theObject.SetEndian(itsDecoder->GetTransferSyntaxType().GetEndian());
}

DICOMObjectLoader::~DICOMObjectLoader() = default;

void DICOMObjectLoader::SetStopAt(UINT16 theGroup, UINT16 theElement)
{
   itsDecoder->SetStopAtGroup(theGroup);
   itsDecoder->SetStopAtElement(theElement);
}

void DICOMObjectLoader::Load()
{
   while (std::unique_ptr<VR> aVR{itsDecoder->NextVR()})
   {
      if (itsKnownTagsOnly && !IsKnown(*aVR))
      {
         Drain(*aVR);
      }
      else
      {
         itsObject.Push(aVR.release()); // one that is refused is a creator whose block is taken, or an item astray
      }
   }
}

bool DICOMObjectLoader::IsKnown(const VR& theVR)
{
   const UINT16 aGroup = theVR.GetGroup();
   const UINT16 anElement = theVR.GetElement();
   if ((aGroup & 1) == 0 || InstanceSpecificDataDictionary::IsCorvanHackGroup(aGroup))
   {
      return true;
   }
   if (anElement < 0x0010 || anElement > 0x00FF)
   {
      const UINT32 aBlock = theVR.GetTag() & 0xFFFFFF00;
      return std::find(itsKnownBlocks.begin(), itsKnownBlocks.end(), aBlock) != itsKnownBlocks.end();
   }
   if (theVR.GetLength() == 0 || theVR.GetLength() > kLongestCreator || theVR.GetData() == nullptr)
   {
      return false;
   }
   std::string_view aCreator(reinterpret_cast<const char*>(theVR.GetData()), theVR.GetLength());
   aCreator.remove_prefix(std::min(aCreator.find_first_not_of(' '), aCreator.size()));
   aCreator.remove_suffix(aCreator.size() - (aCreator.find_last_not_of(' ') + 1));
   if (!PrivateDataDictionaryCatalog::GetDefaultPrivateDataDictionaryCatalog().Contains(RWCString(aCreator)))
   {
      return false;
   }
   const UINT32 aBlock = UINT32{aGroup} << 16 | UINT32{anElement} << 8;
   if (itsKnownBlocks.size() < kKnownBlockPlaces)
   {
      itsKnownBlocks.push_back(aBlock);
   }
   else
   {
      itsKnownBlocks[itsNextBlock] = aBlock;
      itsNextBlock = (itsNextBlock + 1) % kKnownBlockPlaces;
   }
   return true;
}
