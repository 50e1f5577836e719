#include "apps/tn/archive/StoredPath.h"

#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

namespace
{
TEST(StoredPath, OnlyValidUIDsMakeNames)
{
   const struct
   {
      std::string itsText;
      bool itsIsUID;
   } kCases[] = {
       {"1.2.840.10008.1.1", true}, // PS3.5 9.1: numbers without needless zeros, 64 characters
       {"0", true},
       {"1.0.2", true},
       {std::string(64, '1'), true},
       {std::string(65, '1'), false},
       {"", false},
       {".", false},
       {"..", false},
       {"1..2", false},
       {".1", false},
       {"1.", false},
       {"1.02", false},
       {"1.00", false},
       {"1.2 ", false},
       {"1.2a", false},
       {"1/2", false},
       {"../../x", false},
       {std::string("1.2\0", 4), false},
       {"1.2\n", false},
       {"-1", false},
   };
   for (const auto& aCase : kCases)
   {
      EXPECT_EQ(StoredPath::IsUID(aCase.itsText), aCase.itsIsUID) << aCase.itsText;
      if (!aCase.itsIsUID)
      {
         EXPECT_THROW(StoredPath::OfStudy(aCase.itsText, "1.2", "1.3"), std::invalid_argument) << aCase.itsText;
         EXPECT_THROW(StoredPath::OfStudy("1.2", aCase.itsText, "1.3"), std::invalid_argument) << aCase.itsText;
         EXPECT_THROW(StoredPath::OfStudy("1.2", "1.3", aCase.itsText), std::invalid_argument) << aCase.itsText;
      }
   }
   EXPECT_EQ(StoredPath::OfStudy("1.2", "1.2.3", "1.2.3.4").GetText(), "1.2/1.2.3/1.2.3.4.dcm");
}
} // namespace
