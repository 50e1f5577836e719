// The Mersenne Twister MT19937: pseudo-random numbers for names, not for secrets. Not locked: one thread at a time.
#pragma once

#include <random>

#include "talvenor/foundation/BasicTypes.h"

class TALVENOR_API MTRandomGenerator
{
public:
   MTRandomGenerator(); // seeded from the clocks
   explicit MTRandomGenerator(unsigned int theSeed) { SetSeed(theSeed); }

   // Starts the sequence of theSeed, made odd: 2 and 3 give the same sequence.
   void SetSeed(unsigned int theSeed);

   UINT32 GetRandomNumber() { return static_cast<UINT32>(itsEngine()); } // 0 to 2^32 - 1

private:
   std::mt19937 itsEngine;
};
