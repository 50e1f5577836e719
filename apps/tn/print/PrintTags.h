// Attributes of print management (PS3.3 C.11.4, C.13), group in the high half.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

namespace PrintTags
{
inline constexpr UINT32 kManufacturer = 0x00080070;
inline constexpr UINT32 kModelName = 0x00081090;
inline constexpr UINT32 kNumberOfCopies = 0x20000010;
inline constexpr UINT32 kPrintPriority = 0x20000020;
inline constexpr UINT32 kMediumType = 0x20000030;
inline constexpr UINT32 kDisplayFormat = 0x20100010;
inline constexpr UINT32 kFilmOrientation = 0x20100040;
inline constexpr UINT32 kFilmSize = 0x20100050;
inline constexpr UINT32 kEmptyDensity = 0x20100110;
inline constexpr UINT32 kMinDensity = 0x20100120;
inline constexpr UINT32 kMaxDensity = 0x20100130;
inline constexpr UINT32 kIllumination = 0x2010015E;
inline constexpr UINT32 kReflectedAmbientLight = 0x20100160;
inline constexpr UINT32 kReferencedImageBoxes = 0x20100510;
inline constexpr UINT32 kImagePosition = 0x20200010;
inline constexpr UINT32 kPolarity = 0x20200020;
inline constexpr UINT32 kGrayscaleImageSequence = 0x20200110;
inline constexpr UINT32 kColorImageSequence = 0x20200111;
inline constexpr UINT32 kPresentationLUTSequence = 0x20500010;
inline constexpr UINT32 kPresentationLUTShape = 0x20500020;
inline constexpr UINT32 kReferencedPresentationLUTs = 0x20500500;
inline constexpr UINT32 kExecutionStatus = 0x21000020;
inline constexpr UINT32 kExecutionStatusInfo = 0x21000030;
inline constexpr UINT32 kCreationDate = 0x21000040;
inline constexpr UINT32 kCreationTime = 0x21000050;
inline constexpr UINT32 kOriginator = 0x21000070;
inline constexpr UINT32 kReferencedPrintJobs = 0x21000500;
inline constexpr UINT32 kPrinterStatus = 0x21100010;
inline constexpr UINT32 kPrinterStatusInfo = 0x21100020;
inline constexpr UINT32 kPrinterName = 0x21100030;
} // namespace PrintTags
