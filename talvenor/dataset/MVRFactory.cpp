#include "talvenor/dataset/MVRFactory.h"

#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/dictionary/MDDEntry.h"
#include "talvenor/dictionary/UID.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/foundation/Exceptions.h"

// What an operation and its kind of value are called in a failure text, and which types that kind fits.
struct MVRFactoryOperation
{
   const char* itsText;
   const char* itsKind;
   bool (*itsAccepts)(UINT16 theCode);
};

namespace
{
template <UINT16... Codes>
bool IsOneOf(UINT16 theCode)
{
   return ((theCode == Codes) || ...);
}

bool IsTextOrUnknown(UINT16 theCode)
{
   return IsStringVRCode(theCode) || theCode == VRCode::UN;
}

constexpr MVRFactoryOperation kFromUINT16 = {"MVRFactory<VRType>::InternalGetVR(UINT16, UINT16, UINT16)", "UINT16",
                                             IsOneOf<VRCode::US, VRCode::UN>};
constexpr MVRFactoryOperation kFromUINT32 = {"MVRFactory<VRType>::InternalGetVR(UINT16, UINT16, UINT32)", "UINT32",
                                             IsOneOf<VRCode::UL, VRCode::UN>};
constexpr MVRFactoryOperation kFromText = {"MVRFactory<VRType>::InternalGetVR(UINT16, UINT16, const RWCString&, char)",
                                           "string", IsTextOrUnknown};
constexpr MVRFactoryOperation kFromUID = {"MVRFactory<VRType>::InternalGetVR(UINT16, UINT16, const UID&)", "UID",
                                          IsOneOf<VRCode::UI, VRCode::UN>};
constexpr MVRFactoryOperation kFromTexts = {
    "MVRFactory<VRType>::InternalGetVR(UINT16, UINT16, const RWTValOrderedVector<RWCString>&, char)",
    "multi-valued string", IsTextOrUnknown};
constexpr MVRFactoryOperation kFromTags = {
    "MVRFactory<VRType>::InternalGetVR(UINT16, UINT16, RWTValOrderedVector<MAttributeTag>&)",
    "RWTValOrderedVector<MAttributeTag>", IsOneOf<VRCode::AT, VRCode::UN>};
constexpr MVRFactoryOperation kFromBytes = {
    "MVRFactory<VRType>::InternalGetVR(UINT16, UINT16, const unsigned char*, size_t, char)",
    "binary byte, float, or word", IsOneOf<VRCode::OB, VRCode::OF, VRCode::OW, VRCode::UN>};
constexpr MVRFactoryOperation kSequence = {"MVRFactory<VRType>::InternalGetSequenceVR(UINT16, UINT16, UINT16)",
                                           "sequence", IsOneOf<VRCode::SQ>};
} // namespace

MVRFactory::MVRFactory(TNEndian::EndianType theEndian, bool theTypingCheck,
                       const InstanceSpecificDataDictionary* theDictionary, MemoryAllocater& theAllocator,
                       MemoryAllocater& thePixelAllocator)
    : itsEndian(theEndian), itsTypingCheck(theTypingCheck), itsDictionary(theDictionary), itsAllocator(theAllocator),
      itsPixelAllocator(thePixelAllocator)
{}

VR* MVRFactory::InternalGetVR(UINT16 theGroup, UINT16 theElement, UINT16 theValue, const MDDEntry* theEntry) const
{
   std::unique_ptr<VR> aVR = MakeTyped(kFromUINT16, theGroup, theElement, theEntry);
   TNEndian::Store(&theValue, theValue, itsEndian);
   aVR->SetData(&theValue, sizeof theValue, '\0');
   return aVR.release();
}

VR* MVRFactory::InternalGetVR(UINT16 theGroup, UINT16 theElement, UINT32 theValue, const MDDEntry* theEntry) const
{
   std::unique_ptr<VR> aVR = MakeTyped(kFromUINT32, theGroup, theElement, theEntry);
   TNEndian::Store(&theValue, theValue, itsEndian);
   aVR->SetData(&theValue, sizeof theValue, '\0');
   return aVR.release();
}

VR* MVRFactory::InternalGetVR(UINT16 theGroup, UINT16 theElement, const RWCString& theText, char thePad,
                              const MDDEntry* theEntry) const
{
   return MakeText(kFromText, theGroup, theElement, theText, thePad, theEntry);
}

VR* MVRFactory::InternalGetVR(UINT16 theGroup, UINT16 theElement, const UID& theUID, const MDDEntry* theEntry) const
{
   auto aVR = std::make_unique<VR>(theGroup, theElement, theUID, itsEndian, AllocaterFor(theGroup, theElement));
   Type(kFromUID, *aVR, theEntry);
   aVR->SetTypeCode(VRCode::UI);
   return aVR.release();
}

VR* MVRFactory::InternalGetVR(UINT16 theGroup, UINT16 theElement, const RWTValOrderedVector<RWCString>& theTexts,
                              char thePad, const MDDEntry* theEntry) const
{
   return MakeText(kFromTexts, theGroup, theElement, VR::JoinValues(theTexts), thePad, theEntry);
}

VR* MVRFactory::InternalGetVR(UINT16 theGroup, UINT16 theElement, RWTValOrderedVector<MAttributeTag>& theTags,
                              const MDDEntry* theEntry) const
{
   std::unique_ptr<VR> aVR = MakeTyped(kFromTags, theGroup, theElement, theEntry);
   const UINT32 aLength = VR::ToLength(theTags.size() * 4);
   auto* aPlace = static_cast<unsigned char*>(aVR->AllocateData(aLength));
   aVR->SetLength(aLength);
   for (const MAttributeTag& aTag : theTags)
   {
      TNEndian::Store(aPlace, aTag.GetGroup(), itsEndian);
      TNEndian::Store(aPlace + 2, aTag.GetElement(), itsEndian);
      aPlace += 4;
   }
   return aVR.release();
}

VR* MVRFactory::InternalGetVR(UINT16 theGroup, UINT16 theElement, const unsigned char* theBytes, std::size_t theLength,
                              char thePad, const MDDEntry* theEntry) const
{
   std::unique_ptr<VR> aVR = MakeTyped(kFromBytes, theGroup, theElement, theEntry);
   aVR->SetData(theBytes, VR::ToLength(theLength), thePad);
   return aVR.release();
}

SequenceVR* MVRFactory::InternalGetSequenceVR(UINT16 theGroup, UINT16 theElement, const MDDEntry* theEntry) const
{
   auto aSequence = std::make_unique<SequenceVR>(theGroup, theElement, itsEndian, AllocaterFor(theGroup, theElement));
   Type(kSequence, *aSequence, theEntry);
   return aSequence.release();
}

VR* MVRFactory::GetPrivateVR(const RWCString& theCreator, const RWCString& theName, UINT16 theValue) const
{
   const MDDEntry* anEntry = GetDictionary().Find(theName, theCreator);
   if (anEntry == nullptr)
   {
      const RWCString aText = "MVRFactory<VRType>::GetPrivateVR(" + theCreator + ", " + theName + ", UINT16)";
      throw VRAttributeNotFoundException(aText.c_str());
   }
   return InternalGetVR(anEntry->Group(), anEntry->Element(), theValue, anEntry);
}

std::unique_ptr<VR> MVRFactory::MakeTyped(const MVRFactoryOperation& theOperation, UINT16 theGroup, UINT16 theElement,
                                          const MDDEntry* theEntry) const
{
   auto aVR = std::make_unique<VR>(theGroup, theElement, itsEndian, AllocaterFor(theGroup, theElement));
   Type(theOperation, *aVR, theEntry);
   return aVR;
}

VR* MVRFactory::MakeText(const MVRFactoryOperation& theOperation, UINT16 theGroup, UINT16 theElement,
                         const RWCString& theText, char thePad, const MDDEntry* theEntry) const
{
   std::unique_ptr<VR> aVR = MakeTyped(theOperation, theGroup, theElement, theEntry);
   const char aPad = aVR->GetTypeCode() == VRCode::UI ? '\0' : thePad;
   aVR->SetData(theText.data(), VR::ToLength(theText.size()), aPad);
   return aVR.release();
}

void MVRFactory::Type(const MVRFactoryOperation& theOperation, VR& theVR, const MDDEntry* theEntry) const
{
   if (!itsTypingCheck)
   {
      return;
   }
   const UINT16 aCode = theEntry != nullptr ? theEntry->GetTypeAsUshort()
                                            : GetDictionary().TypeCodeOf(theVR.GetGroup(), theVR.GetElement());
   if (aCode == VRCode::None)
   {
      return; // nobody knows the tag
   }
   if (!theOperation.itsAccepts(aCode))
   {
      throw VRTypingError(theOperation.itsText, theVR.GetGroup(), theVR.GetElement(), theOperation.itsKind, aCode);
   }
   theVR.SetTypeCode(aCode);
}

const InstanceSpecificDataDictionary& MVRFactory::GetDictionary() const
{
   return itsDictionary != nullptr ? *itsDictionary
                                   : InstanceSpecificDataDictionary::GetDefaultInstanceSpecificDataDictionary();
}

MemoryAllocater& MVRFactory::AllocaterFor(UINT16 theGroup, UINT16 theElement) const
{
   return theGroup == 0x7FE0 && theElement == 0x0010 ? itsPixelAllocator : itsAllocator;
}
