// Copies a dataset of a compressed transfer syntax into a native one, decompressed on the way. What stands in front of
// the pixel data is in memory meanwhile, and one frame.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

class InputTransferSyntax;
class InstanceSpecificDataDictionary;
class OutputTransferSyntax;
class VR;

// theLeading are the elements that have been read already. theDictionary is that of decoder and encoder. Returns the
// number of elements, theLeading included. Throws as SaveElement and Decompression do.
std::size_t CopyDecompressed(InputTransferSyntax& theDecoder, OutputTransferSyntax& theEncoder,
                             InstanceSpecificDataDictionary& theDictionary,
                             std::vector<std::unique_ptr<VR>> theLeading = {});
