#include "talvenor/foundation/ErrorDescription.h"

#include <gtest/gtest.h>

namespace
{

TEST(ErrorDescription, TextsAreNeverNull)
{
   ErrorDescription aDefault;
   ErrorDescription aNull(nullptr, 0, nullptr, nullptr, nullptr, ErrorDescription::NoError,
                          ErrorDescription::NoOperation, 0, nullptr, nullptr);
   for (const ErrorDescription* anError : {&aDefault, &aNull})
   {
      EXPECT_STREQ(anError->GetFile(), "");
      EXPECT_STREQ(anError->GetClass(), "");
      EXPECT_STREQ(anError->GetMethod(), "");
      EXPECT_STREQ(anError->GetMessage(), "");
   }
}

} // namespace
