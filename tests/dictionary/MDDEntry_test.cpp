#include "talvenor/dictionary/MDDEntry.h"

#include <gtest/gtest.h>

#include "support/MessageOf.h"
#include "talvenor/foundation/Exceptions.h"

namespace
{
// tag|type|description|name|minimum|maximum
RWCString Described(const MDDEntry& theEntry)
{
   return theEntry.AsNumericString() + "|" + MDDEntry::ValueTypeToString(theEntry.GetType()) + "|" +
          theEntry.Description() + "|" + theEntry.Name() + "|" + std::to_string(theEntry.VMMin()) + "|" +
          std::to_string(theEntry.VMMax());
}
} // namespace

TEST(MDDEntry, ReadsTheFieldsOfALine)
{
   const struct
   {
      const char *itsName, *itsLine, *itsExpected;
   } kCases[] = {
       {"blanks everywhere", " \t0010 ,\t0010\t, PN ,\"a\" \t, b ,1 , 1 ", "0010, 0010|PN|a|b|1|1"},
       {"comma between quotes", "0010,0010,PN,\"a,b\",n,1,1", "0010, 0010|PN|a,b|n|1|1"},
       {"comma behind the first quote", "0010,0010,PN,\",b\",n,1,1", "0010, 0010|PN|,b|n|1|1"},
       {"blanks between quotes stay", "0010,0010,PN,\" a \",n,1,1", "0010, 0010|PN| a |n|1|1"},
       {"empty description", "0010,0010,PN,\"\",n,1,1", "0010, 0010|PN||n|1|1"},
       {"quote inside an unquoted field", "0010,0010,PN,\"a\" b,n,1,1", "0010, 0010|PN|\"a\" b|n|1|1"},
       {"quote that does not end", "0010,0010,PN,\"a,n,1,1", "0010, 0010|PN|\"a|n|1|1"},
       {"hexadecimal prefix", "0x7fe0,0X10,OW_or_OB,d,n,1,1", "7fe0, 0010|OW_or_OB|d|n|1|1"},
       {"any number of values", "0008,0008,CS,d,n,2,4294967295", "0008, 0008|CS|d|n|2|4294967295"},
       {"letters behind the last number", "0008,0008,US_US_or_SS_US,d,n,1,3n", "0008, 0008|US_US_or_SS_US|d|n|1|3"},
   };
   for (const auto& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      EXPECT_EQ(Described(MDDEntry(RWCString(aCase.itsLine))), aCase.itsExpected);
   }
}

TEST(MDDEntry, RefusesLinesThatAreNotEntries)
{
   const char* const kLines[] = {
       "",
       "0010,0010,PN,d,n,1,",           // no number in the last
       "001g,0010,PN,d,n,1,1",          // not hexadecimal
       "0010,10010,PN,d,n,1,1",         // more than 16 bits
       "-1,0010,PN,d,n,1,1",            // a sign
       ",0010,PN,d,n,1,1",              // a field without text
       "0010,0010,PN,d,\"\",1,1",       // only the description may be empty
       "0010,0010,PN,d,n,1a,1",         // the minimum is all number
       "0010,0010,PN,d,n,4294967296,1", // more than 32 bits
   };
   for (const char* aLine : kLines)
   {
      EXPECT_EQ(MessageOf<InvalidEntryDescriptionException>([=] { MDDEntry{RWCString(aLine)}; }), aLine);
   }
}

// The unknown text is met before the missing fields behind it.
TEST(MDDEntry, UnknownRepresentationIsAnErrorOfItsOwn)
{
   for (const char* aLine : {"0010,0010,XX,d,n,1,1", "0010,0010,pn,"})
   {
      EXPECT_EQ(MessageOf<InvalidValueTypeException>([=] { MDDEntry{RWCString(aLine)}; }), "Invalid type code: 0x20");
   }
   EXPECT_THROW(MDDEntry(RWCString("0010,0010,pn")), InvalidEntryDescriptionException); // no field without its comma
}

TEST(MDDEntry, TypeMustBeOneOfTheThirtyTwo)
{
   MDDEntry anEntry(0x0010, 0x0010, MDDEntry::PN, 1, 1, "n", "d");
   EXPECT_THROW(anEntry.SetType(static_cast<MDDEntry::ValueType>(32)), InvalidValueTypeException);
   EXPECT_THROW(anEntry.SetType(static_cast<MDDEntry::ValueType>(-1)), InvalidValueTypeException);
   EXPECT_EQ(anEntry.GetType(), MDDEntry::PN);
   anEntry.SetType(MDDEntry::LO);
   EXPECT_EQ(anEntry.GetTypeAsUshort(), VRCode::LO);
}

TEST(MDDEntry, TypesBecomeTwoLetters)
{
   const auto aCodeOf = [](int theType) {
      return MDDEntry::ValueTypeToUShort(static_cast<MDDEntry::ValueType>(theType));
   };
   EXPECT_EQ(aCodeOf(MDDEntry::OW_or_OB), 0x4F57);
   EXPECT_EQ(aCodeOf(MDDEntry::US_US_or_SS_US), 0x5553);
   EXPECT_EQ(aCodeOf(MDDEntry::NONE), 0x554E);
   EXPECT_EQ(aCodeOf(32), 0x554E);
   EXPECT_EQ(aCodeOf(-1), 0x554E);
   EXPECT_EQ(MDDEntry::UShortToValueType(0x5553), MDDEntry::US);
   EXPECT_EQ(MDDEntry::UShortToValueType(0x4F44), 32); // OD
}

TEST(MDDEntry, TextsOfTypesAreExact)
{
   for (int aType = 0; aType < 32; ++aType)
   {
      const auto aValue = static_cast<MDDEntry::ValueType>(aType);
      EXPECT_EQ(MDDEntry::StringToValueType(MDDEntry::ValueTypeToString(aValue)), aValue);
   }
   EXPECT_EQ(MDDEntry::ValueTypeToString(static_cast<MDDEntry::ValueType>(32)), "");
   for (const char* aText : {"", "P", "pn", "PN ", "OB_or_OW", "none"})
   {
      EXPECT_EQ(MDDEntry::StringToValueType(aText), 32) << aText;
   }
   EXPECT_EQ(MDDEntry::TypeStringToUShort("PN1"), 0x554E);
   EXPECT_EQ(MDDEntry::UShortToTypeString(0x7A41), "zA");
}
