// The levels by which a cluster shares attributes: what names a shared node, and what moves to it. Not part of the
// library's interface.
#pragma once

#include <algorithm>
#include <array>
#include <iterator>
#include <span>

#include "talvenor/foundation/BasicTypes.h"

// One record of a table of levels, read where it stands.
class ClusterLevel
{
public:
   static constexpr UINT32 kMaximumTags = 50;
   static constexpr UINT32 kWords = kMaximumTags + 2; // number of tags, key tag, tags

   constexpr explicit ClusterLevel(const UINT32* theWords) : itsWords(theWords) {}

   constexpr bool IsEnd() const { return itsWords[0] == 0; }
   constexpr bool IsValid() const { return itsWords[0] <= kMaximumTags; }
   constexpr UINT32 GetKeyTag() const { return itsWords[1]; }
   constexpr std::span<const UINT32> GetTags() const { return {itsWords + 2, itsWords[0]}; }
   constexpr ClusterLevel GetNext() const { return ClusterLevel(itsWords + kWords); }

private:
   const UINT32* itsWords;
};

inline constexpr UINT32 kStudyKey = 0x0020000D;  // Study Instance UID
inline constexpr UINT32 kSeriesKey = 0x0020000E; // Series Instance UID

// clang-format off
inline constexpr UINT32 kStudyTags[] = {
   0x00080020, 0x00080030, 0x00080050, 0x00081060, 0x00080090, 0x00081030, 0x00081032, 0x00081048, 0x00081080,
   0x00081110, 0x00081120, 0x00100010, 0x00100020, 0x00100021, 0x00100030, 0x00100032, 0x00100040, 0x00101000,
   0x00101001, 0x00101010, 0x00101020, 0x00101030, 0x00102160, 0x00102180, 0x001021B0, 0x00104000, 0x0020000D,
};
inline constexpr UINT32 kSeriesTags[] = {
   0x00080021, 0x00080031, 0x00080060, 0x00080070, 0x00080080, 0x00080081, 0x00081010, 0x0008103E, 0x00081040,
   0x00081050, 0x00081070, 0x00081090, 0x00081111, 0x00081250, 0x00180015, 0x00181000, 0x00181020, 0x00181030,
   0x00181050, 0x00181200, 0x00181201, 0x00185100, 0x0020000E, 0x00200011, 0x00200060, 0x00280108, 0x00280109,
   0x00280120, 0x00400241, 0x00400242, 0x00400243, 0x00400244, 0x00400245, 0x00400250, 0x00400251, 0x00400252,
   0x00400253, 0x00400254, 0x00400255, 0x00400260, 0x00400275, 0x00400280,
};
// clang-format on
static_assert(std::size(kStudyTags) == 27 && std::size(kSeriesTags) == 42);

// The built-in table in the form that hosts give their own: records of ClusterLevel::kWords words, the last one empty.
inline constexpr auto kBuiltInClusterLevels = [] {
   std::array<UINT32, 3 * ClusterLevel::kWords> aTable = {};
   const auto Fill = [&](UINT32 theLevel, UINT32 theKey, std::span<const UINT32> theTags) {
      UINT32* aRecord = aTable.data() + theLevel * ClusterLevel::kWords;
      aRecord[0] = static_cast<UINT32>(theTags.size());
      aRecord[1] = theKey;
      std::copy(theTags.begin(), theTags.end(), aRecord + 2);
   };
   Fill(0, kStudyKey, kStudyTags);
   Fill(1, kSeriesKey, kSeriesTags);
   return aTable;
}();
