// A line of JSON as tn move takes it from standard input. What is read must be there again when it is read once more.
#include <stdexcept>
#include <string>

#include "apps/tn/base/JsonLine.h"
#include "fuzz/Fuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* theBytes, std::size_t theCount)
{
   const std::string aLine(reinterpret_cast<const char*>(theBytes), theCount);
   try
   {
      const auto aFirst = ReadJsonLine(aLine);
      Require(aFirst == ReadJsonLine(" " + aLine + "\n"), "white space makes a difference");
   }
   catch (const std::invalid_argument& anError)
   {
      Require(anError.what()[0] != '\0', "a refusal without a text");
   }
   return 0;
}
