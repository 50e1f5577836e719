#include "talvenor/foundation/MTRandomGenerator.h"

#include "talvenor/foundation/SystemClock.h"
#include "talvenor/platform/Clock.h"

MTRandomGenerator::MTRandomGenerator()
    : MTRandomGenerator(static_cast<UINT32>(
          (TNPlatform::ProcessorClockCount() ^ static_cast<UINT64>(SystemClock::Get().WallMilliseconds())) + 4357))
{}

void MTRandomGenerator::SetSeed(unsigned int theSeed)
{
   itsEngine.seed(theSeed | 1u);
}
