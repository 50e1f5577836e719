// Copies elements from a decoder to an encoder of another transfer syntax, or of the same: what all commands that
// re-encode datasets on the fly have in common.
#pragma once

#include <memory>

class OutputTransferSyntax;
class VR;

// Writes one element of the top level. Group lengths, which are retired and seldom true of what is written, and
// elements of meta information are left out. Throws IncompleteDataset for what cannot stand in the dataset that is
// written, ExceptionBase when reading or writing fails.
void SaveElement(OutputTransferSyntax& theEncoder, std::unique_ptr<VR> theVR);
