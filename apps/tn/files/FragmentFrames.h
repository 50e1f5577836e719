// Frames of encapsulated pixel data as the offset table and the fragments tell them, whatever is inside: the way to
// frames of transfer syntaxes whose codestreams nobody here understands, and to any frame without reading it.
#pragma once

#include <functional>
#include <vector>

#include "talvenor/foundation/BasicTypes.h"

class BasicOffsetTable;
class PixelDataFragmentInputStreamVR;

struct FragmentFrame
{
   UINT64 itsOffset;        // of the item of the first fragment, from that of the very first one
   UINT64 itsLength;        // of all fragments, in bytes
   std::size_t itsFragment; // the first one, from 0
   std::size_t itsCount;    // at least 1
};

// The lengths of the fragments that are still to come; their bytes are passed over. Throws IncompleteDataset when the
// file ends inside one, and what the stream throws.
std::vector<UINT32> ReadFragmentLengths(PixelDataFragmentInputStreamVR& thePixels);

// Hands the frames to theAction, one after the other. Without a table (null) every frame has to be a fragment, or the
// only frame all of them. Throws IncompleteDataset, after the frames before, where table and fragments do not fit.
void ForEachFragmentFrame(const std::vector<UINT32>& theLengths, INT32 theNumberOfFrames,
                          const BasicOffsetTable* theTable, const std::function<void(const FragmentFrame&)>& theAction);
