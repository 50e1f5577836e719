// The storage classes: one for each SOP class (PS3.4 B.5), one for any, and one whose SOP class is chosen at run time.
// See StandardStorage. A host that stores derives from one and overrides DoStore.
#pragma once

#include "talvenor/dictionary/UID.h"
#include "talvenor/services/StandardStorage.h"

namespace StorageSOPClass
{
inline constexpr char kCR[] = "1.2.840.10008.5.1.4.1.1.1";
inline constexpr char kCT[] = "1.2.840.10008.5.1.4.1.1.2";
inline constexpr char kUSMultiframe[] = "1.2.840.10008.5.1.4.1.1.3";
inline constexpr char kMR[] = "1.2.840.10008.5.1.4.1.1.4";
inline constexpr char kNM[] = "1.2.840.10008.5.1.4.1.1.5";
inline constexpr char kUS[] = "1.2.840.10008.5.1.4.1.1.6";
inline constexpr char kSC[] = "1.2.840.10008.5.1.4.1.1.7";
inline constexpr char kStandaloneOverlay[] = "1.2.840.10008.5.1.4.1.1.8";
inline constexpr char kStandaloneCurve[] = "1.2.840.10008.5.1.4.1.1.9";
inline constexpr char kStandaloneModalityLUT[] = "1.2.840.10008.5.1.4.1.1.10";
inline constexpr char kStandaloneVOILUT[] = "1.2.840.10008.5.1.4.1.1.11";
inline constexpr char kGEMR[] = "1.2.840.113619.4.2"; // private to a vendor, as is the next
inline constexpr char kGECT[] = "1.2.840.113619.4.3";
} // namespace StorageSOPClass

template <const char* SOPClass>
class StorageOf : public StandardStorage
{
public:
   int GetUID(UID& theUID) const override
   {
      theUID.Set(SOPClass, -1);
      return 1;
   }
   int uGetUID(UID& theUID) const override { return GetUID(theUID); }
};

class TALVENOR_API CRStorage : public StorageOf<StorageSOPClass::kCR>
{};
class TALVENOR_API CTStorage : public StorageOf<StorageSOPClass::kCT>
{};
class TALVENOR_API USMultiframeStorage : public StorageOf<StorageSOPClass::kUSMultiframe>
{};
class TALVENOR_API MRStorage : public StorageOf<StorageSOPClass::kMR>
{};
class TALVENOR_API NMStorage : public StorageOf<StorageSOPClass::kNM>
{};
class TALVENOR_API USStorage : public StorageOf<StorageSOPClass::kUS>
{};
class TALVENOR_API SCStorage : public StorageOf<StorageSOPClass::kSC>
{};
class TALVENOR_API StandaloneOverlayStorage : public StorageOf<StorageSOPClass::kStandaloneOverlay>
{};
class TALVENOR_API StandaloneCurveStorage : public StorageOf<StorageSOPClass::kStandaloneCurve>
{};
class TALVENOR_API StandaloneModalityLUTStorage : public StorageOf<StorageSOPClass::kStandaloneModalityLUT>
{};
class TALVENOR_API StandaloneVOILUTStorage : public StorageOf<StorageSOPClass::kStandaloneVOILUT>
{};
class TALVENOR_API GEMRStorage : public StorageOf<StorageSOPClass::kGEMR>
{};
class TALVENOR_API GECTStorage : public StorageOf<StorageSOPClass::kGECT>
{};

// Serves every SOP class as SCP.
class TALVENOR_API UnknownStorage : public StandardStorage
{
public:
   int uGetUID(UID&) const override { return 0; }
};

// A storage whose SOP class is known at run time only. It sends; as SCP it refuses every instance (0xC006) unless a
// host derives.
class TALVENOR_API RunTimeClassStorage : public StandardStorage
{
public:
   RunTimeClassStorage() = default;
   explicit RunTimeClassStorage(const RWCString& theSOPClass) : itsSOPClass(theSOPClass) {}

   int GetUID(UID& theUID) const override
   {
      theUID = itsSOPClass;
      return 1;
   }
   int uGetUID(UID& theUID) const override { return GetUID(theUID); }

   int DoStore(DICOMDataObject&, InputTransferSyntax&, const RWCString&, const RWCString&, UINT16&, RWCString&,
               RWTValOrderedVector<MAttributeTag>&) override
   {
      return 0;
   }

private:
   UID itsSOPClass;
};
