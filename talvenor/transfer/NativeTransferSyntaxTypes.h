// One object of each native type, for the decoders and encoders that every host may make without the registry. They
// have no state. Not part of the library's interface.
#pragma once

#include "talvenor/transfer/TransferSyntaxTypes.h"

inline constinit const LittleEndianImplicitTransferSyntaxType kLittleEndianImplicitType;
inline constinit const LittleEndianExplicitTransferSyntaxType kLittleEndianExplicitType;
inline constinit const BigEndianExplicitTransferSyntaxType kBigEndianExplicitType;
