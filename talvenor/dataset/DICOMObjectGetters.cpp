// The typed getters of DICOMObject: every family in every form of addressing.
#include "talvenor/dataset/DICOMObject.h"

#include "talvenor/dataset/VR.h"
#include "talvenor/dataset/VRAccessEndian.h"
#include "talvenor/foundation/CriticalSectionWhileInScope.h"

namespace
{
int HasValue(const VR* theVR)
{
   return theVR != nullptr && !theVR->IsEmpty();
}
} // namespace

// An accessor is two words on the stack: cheaper to make for each call than to keep one and point it about.
template <class Reader, class... Address>
inline int DICOMObject::Read(const Reader& theRead, const Address&... theAddress) const
{
   CriticalSectionWhileInScope aGuard(itsLock);
   const VR* aVR = itsNode.Find(TagOf(theAddress...));
   if (aVR == nullptr)
   {
      return 0;
   }
   return itsEndian == TNEndian::LittleEndian ? theRead(VRAccessLE(aVR)) : theRead(VRAccessBE(aVR));
}

// A family is a row: the name, which is also that of the accessor's operation, the parameters that take the result, and
// the same as arguments. Four forms of addressing are common to all families; a name alone addresses in some of them.
#define LIST(...) __VA_ARGS__

#define GETTERS(Name, Parameters, Arguments)                                                                           \
   int DICOMObject::Name(const MAttributeTag& theTag, Parameters) const                                                \
   {                                                                                                                   \
      return Name(theTag.Group(), theTag.Element(), Arguments);                                                        \
   }                                                                                                                   \
   int DICOMObject::Name(const RWCString& theCreator, const RWCString& theName, Parameters) const                      \
   {                                                                                                                   \
      return Read([&](const auto& theAccess) { return theAccess.Name(Arguments); }, theCreator, theName);              \
   }                                                                                                                   \
   int DICOMObject::Name(const RWCString& theCreator, UINT16 theElement, Parameters, UINT16 theGroup) const            \
   {                                                                                                                   \
      return Read([&](const auto& theAccess) { return theAccess.Name(Arguments); }, theCreator, theElement, theGroup); \
   }                                                                                                                   \
   int DICOMObject::Name(UINT16 theGroup, UINT16 theElement, Parameters) const                                         \
   {                                                                                                                   \
      return Read([&](const auto& theAccess) { return theAccess.Name(Arguments); }, theGroup, theElement);             \
   }

#define GETTER_BY_NAME(Name, Parameters, Arguments)                                                                    \
   int DICOMObject::Name(const RWCString& theName, Parameters) const                                                   \
   {                                                                                                                   \
      return Read([&](const auto& theAccess) { return theAccess.Name(Arguments); }, theName);                          \
   }

#define GETTERS_AND_BY_NAME(Name, Parameters, Arguments)                                                               \
   GETTERS(Name, LIST(Parameters), LIST(Arguments))                                                                    \
   GETTER_BY_NAME(Name, LIST(Parameters), LIST(Arguments))

// clang-format off
GETTERS_AND_BY_NAME(GetUINT16, UINT16& theValue, theValue)
GETTERS_AND_BY_NAME(GetINT16, INT16& theValue, theValue)
GETTERS_AND_BY_NAME(GetINT32, INT32& theValue, theValue)
GETTERS_AND_BY_NAME(GetUINT32, UINT32& theValue, theValue)
GETTERS(GetINT64, INT64& theValue, theValue)
GETTERS(GetUINT64, UINT64& theValue, theValue)
GETTERS_AND_BY_NAME(GetFLOAT, FLOAT& theValue, theValue)
GETTERS_AND_BY_NAME(GetDOUBLE, DOUBLE& theValue, theValue)
GETTERS_AND_BY_NAME(GetString, RWCString& theText, theText)
GETTERS_AND_BY_NAME(GetString, LIST(char* theBuffer, unsigned int theCapacity), LIST(theBuffer, theCapacity))
GETTERS(GetStringCopy, char*& theText, theText)
GETTERS(GetBytes, LIST(unsigned char* theBuffer, unsigned int theCapacity), LIST(theBuffer, theCapacity))
GETTERS(GetBytesCopy, unsigned char*& theBytes, theBytes)
GETTERS(GetWords, LIST(UINT16* theBuffer, unsigned int theCapacity), LIST(theBuffer, theCapacity))
GETTERS(GetWordsCopy, UINT16*& theWords, theWords)
GETTERS(GetAttributeList, TagList& theTags, theTags)
// clang-format on

UINT16 DICOMObject::GetUINT16(UINT16 theGroup, UINT16 theElement) const
{
   UINT16 aValue = 0;
   return GetUINT16(theGroup, theElement, aValue) ? aValue : UINT16(0);
}

VR* DICOMObject::GetVR(UINT16 theGroup, UINT16 theElement) const
{
   CriticalSectionWhileInScope aGuard(itsLock);
   return itsNode.Find(TagOf(theGroup, theElement));
}

VR* DICOMObject::GetVR(const MAttributeTag& theTag) const
{
   return GetVR(theTag.Group(), theTag.Element());
}

VR* DICOMObject::GetVR(const RWCString& theCreator, const RWCString& theName) const
{
   CriticalSectionWhileInScope aGuard(itsLock);
   return itsNode.Find(TagOf(theCreator, theName));
}

VR* DICOMObject::GetVR(const RWCString& theCreator, UINT16 theElement, UINT16 theGroup) const
{
   CriticalSectionWhileInScope aGuard(itsLock);
   return itsNode.Find(TagOf(theCreator, theElement, theGroup));
}

int DICOMObject::HasAttribute(UINT16 theGroup, UINT16 theElement) const
{
   return GetVR(theGroup, theElement) != nullptr;
}

int DICOMObject::HasAttribute(const MAttributeTag& theTag) const
{
   return HasAttribute(theTag.Group(), theTag.Element());
}

int DICOMObject::HasAttribute(const RWCString& theCreator, const RWCString& theName) const
{
   return GetVR(theCreator, theName) != nullptr;
}

int DICOMObject::HasAttribute(const RWCString& theCreator, UINT16 theElement, UINT16 theGroup) const
{
   return GetVR(theCreator, theElement, theGroup) != nullptr;
}

int DICOMObject::HasNonNullAttribute(UINT16 theGroup, UINT16 theElement) const
{
   CriticalSectionWhileInScope aGuard(itsLock);
   return HasValue(GetVR(theGroup, theElement));
}

int DICOMObject::HasNonNullAttribute(const MAttributeTag& theTag) const
{
   return HasNonNullAttribute(theTag.Group(), theTag.Element());
}

int DICOMObject::HasNonNullAttribute(const RWCString& theCreator, const RWCString& theName) const
{
   CriticalSectionWhileInScope aGuard(itsLock);
   return HasValue(GetVR(theCreator, theName));
}

int DICOMObject::HasNonNullAttribute(const RWCString& theCreator, UINT16 theElement, UINT16 theGroup) const
{
   CriticalSectionWhileInScope aGuard(itsLock);
   return HasValue(GetVR(theCreator, theElement, theGroup));
}
