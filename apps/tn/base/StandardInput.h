// The program's standard input as an input stream.
#pragma once

#include <iostream>

#include "talvenor/io/InputStream.h"

class StandardInput : public InputStream
{
public:
   unsigned int Read(unsigned char* theBuffer, unsigned int theCount) override
   {
      const auto aCount = std::cin.rdbuf()->sgetn(reinterpret_cast<char*>(theBuffer), theCount);
      return static_cast<unsigned int>(aCount);
   }
   void Close() override {}
};
