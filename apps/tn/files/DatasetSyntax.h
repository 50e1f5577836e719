// What the bytes of a dataset look like in each transfer syntax (PS3.5 section 10 and annex A), also in those that the
// library does not decode.
#pragma once

#include <span>
#include <string>

#include "talvenor/foundation/BasicTypes.h"

struct DatasetSyntax
{
   enum class Pixels
   {
      Native,
      Encapsulated,
      Hidden // the dataset is compressed as a whole, or its encoding is not known: its elements cannot be seen
   };

   Pixels itsPixels;
   bool itsIsExplicit;
   bool itsIsLittleEndian;

   bool IsNative() const { return itsPixels == Pixels::Native; }
};

DatasetSyntax SyntaxOf(const RWCString& theUID);

// The three native transfer syntaxes, the ones to be preferred first.
std::span<const RWCString* const> NativeSyntaxes();

// Whether it is a value representation of explicit VR with a length of 32 bits (PS3.5 7.1.2) that the library does not
// know.
bool IsLaterVR(UINT16 theVR);
