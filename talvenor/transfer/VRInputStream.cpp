#include "talvenor/transfer/VRInputStream.h"

VRInputStream::~VRInputStream() = default;
