#include "talvenor/foundation/ErrorDescription.h"

#include <gtest/gtest.h>

namespace
{

TEST(ErrorDescription, TextsAreNeverNull)
{
   ErrorDescription aDefault;
   ErrorDescription aNull(nullptr, 0, nullptr, nullptr, nullptr, ErrorDescription::UnknownError,
                          ErrorDescription::CStore, 0, nullptr, nullptr);
   ErrorDescription aCleared("f", 1, "c", "m", "t", ErrorDescription::UnknownError, ErrorDescription::CStore, 0,
                             nullptr, nullptr);
   aCleared.SetFile(nullptr);
   aCleared.SetClass(nullptr);
   aCleared.SetMethod(nullptr);
   aCleared.SetMessage(nullptr);
   for (const ErrorDescription* anError : {&aDefault, &aNull, &aCleared})
   {
      EXPECT_STREQ(anError->GetFile(), "");
      EXPECT_STREQ(anError->GetClass(), "");
      EXPECT_STREQ(anError->GetMethod(), "");
      EXPECT_STREQ(anError->GetMessage(), "");
      EXPECT_EQ(anError->GetOperation(), 1);
      EXPECT_EQ(anError->GetErrorType(), 0);
   }
}

TEST(ErrorDescription, CopiesEveryField)
{
   const int aCommandStandIn = 0, aDatasetStandIn = 0; // the record never looks at what it points to
   const auto* aCommand = reinterpret_cast<const DICOMObject*>(&aCommandStandIn);
   const auto* aDataset = reinterpret_cast<const DICOMObject*>(&aDatasetStandIn);
   const ErrorDescription anOriginal("f.cpp", -3, "C", "M", "text", ErrorDescription::StatusError,
                                     ErrorDescription::NCreate, 0xA700, aCommand, aDataset);
   const ErrorDescription aCopy(anOriginal);
   ErrorDescription anAssigned;
   anAssigned = anOriginal;
   for (const ErrorDescription* anError : {&anOriginal, &aCopy, static_cast<const ErrorDescription*>(&anAssigned)})
   {
      EXPECT_STREQ(anError->GetFile(), "f.cpp");
      EXPECT_EQ(anError->GetLine(), -3);
      EXPECT_STREQ(anError->GetClass(), "C");
      EXPECT_STREQ(anError->GetMethod(), "M");
      EXPECT_STREQ(anError->GetMessage(), "text");
      EXPECT_EQ(anError->GetErrorType(), ErrorDescription::StatusError);
      EXPECT_EQ(anError->GetOperation(), ErrorDescription::NCreate);
      EXPECT_EQ(anError->GetDICOMStatus(), 0xA700);
      EXPECT_EQ(anError->GetResponseCommand(), aCommand);
      EXPECT_EQ(anError->GetResponseDataset(), aDataset);
   }
}

} // namespace
