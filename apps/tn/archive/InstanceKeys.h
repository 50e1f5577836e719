// What the index keeps of an instance: the attributes that peers ask for (PS3.4 C.6.1.1, C.6.2.1), taken from a dataset
// while it passes.
#pragma once

#include <array>
#include <span>
#include <stdexcept>
#include <string>

#include "talvenor/foundation/BasicTypes.h"

class InputTransferSyntax;
class VR;
class VRInputStream;

// Of the Patient Root information model, each level a table of the index.
enum class KeyLevel
{
   kPatient,
   kStudy,
   kSeries,
   kInstance
};

// A column, which bears the keyword of its attribute.
struct KeyColumn
{
   UINT32 itsTag;
   KeyLevel itsLevel;
   const char* itsName;
   UINT32 itsSequence = 0; // of whose first item it is; 0: the dataset's own
   bool itsIsIndexed = false;
};

namespace Key
{
// The keys that the program itself uses, by their place in GetColumns.
inline constexpr std::size_t kCharacterSet =
    0; // (0008,0005): no column of its own, it stands beside those of each level
inline constexpr std::size_t kSOPClass = 1;
inline constexpr std::size_t kSOPInstance = 2;
inline constexpr std::size_t kPatientID = 3;
inline constexpr std::size_t kIssuer = 4;
inline constexpr std::size_t kStudy = 5;
inline constexpr std::size_t kSeries = 6;
} // namespace Key

class InstanceKeys
{
public:
   static constexpr std::size_t kCount = 68;

   static std::span<const KeyColumn, kCount> GetColumns();

   // The text without blanks in front and at its end, in its character set; empty for none. Numbers are decimal,
   // several of them have "\" between them.
   const std::string& operator[](std::size_t theKey) const { return itsTexts[theKey]; }
   std::string& operator[](std::size_t theKey) { return itsTexts[theKey]; }

   // Reads theDecoder to the end of its dataset, which is not kept, and takes the keys. Throws BrokenDataset,
   // ExceptionBase.
   void ReadWhole(InputTransferSyntax& theDecoder);

   // Reads no further than the last key.
   void ReadFront(InputTransferSyntax& theDecoder);

private:
   void TakeElement(VR& theVR, UINT32 theSequence);
   void TakeItems(VRInputStream& theItem, UINT32 theSequence);
   void TakeValue(const VR& theVR, UINT32 theSequence);

   std::array<std::string, kCount> itsTexts;
};

// A dataset that can be decoded, but is not whole or is none. The text says why.
class BrokenDataset : public std::runtime_error
{
public:
   using std::runtime_error::runtime_error;
};
