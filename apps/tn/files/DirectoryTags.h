// The elements of a directory and of its records that hold it together (PS3.3 F.3.2).
#pragma once

#include "talvenor/foundation/BasicTypes.h"

inline constexpr UINT32 kFileSetID = 0x00041130;
inline constexpr UINT32 kFirstRootOffset = 0x00041200;
inline constexpr UINT32 kLastRootOffset = 0x00041202;
inline constexpr UINT32 kConsistency = 0x00041212;
inline constexpr UINT32 kRecords = 0x00041220;
inline constexpr UINT32 kNextOffset = 0x00041400;
inline constexpr UINT32 kInUse = 0x00041410;
inline constexpr UINT32 kLowerOffset = 0x00041420;
inline constexpr UINT32 kRecordType = 0x00041430;
inline constexpr UINT32 kReferencedFileID = 0x00041500;
inline constexpr UINT32 kReferencedClass = 0x00041510;
inline constexpr UINT32 kReferencedInstance = 0x00041511;
