#include "talvenor/dictionary/MDDEntry.h"

#include <gtest/gtest.h>

#include "talvenor/foundation/Exceptions.h"

namespace
{
struct LineCase
{
   const char* itsName;
   const char* itsLine;
   const char* itsExpected; // tag|type|description|name|minimum|maximum
};

RWCString Described(const MDDEntry& theEntry)
{
   return theEntry.AsNumericString() + "|" + MDDEntry::ValueTypeToString(theEntry.GetType()) + "|" +
          theEntry.Description() + "|" + theEntry.Name() + "|" + std::to_string(theEntry.VMMin()) + "|" +
          std::to_string(theEntry.VMMax());
}
} // namespace

TEST(MDDEntry, ReadsTheFieldsOfALine)
{
   const LineCase kCases[] = {
       {"quoted description", "0010,0010,PN,\"Patient's Name\",PatientName,1,1",
        "0010, 0010|PN|Patient's Name|PatientName|1|1"},
       {"spaces after commas", "0010, 0010, PN, \"Patient's Name\", PatientName, 1, 1",
        "0010, 0010|PN|Patient's Name|PatientName|1|1"},
       {"blanks everywhere", " \t0010 ,\t0010\t, PN ,\"a\" \t, b ,1 , 1 ", "0010, 0010|PN|a|b|1|1"},
       {"comma between quotes", "0010,0010,PN,\"a,b\",n,1,1", "0010, 0010|PN|a,b|n|1|1"},
       {"blanks between quotes stay", "0010,0010,PN,\" a \",n,1,1", "0010, 0010|PN| a |n|1|1"},
       {"everything quoted", "\"0010\",\"0010\",\"PN\",\"d\",\"n\",\"1\",\"2\"", "0010, 0010|PN|d|n|1|2"},
       {"empty description", "0010,0010,PN,\"\",n,1,1", "0010, 0010|PN||n|1|1"},
       {"quote inside an unquoted field", "0010,0010,PN,\"a\" b,n,1,1", "0010, 0010|PN|\"a\" b|n|1|1"},
       {"quote that does not end", "0010,0010,PN,\"a,n,1,1", "0010, 0010|PN|\"a|n|1|1"},
       {"hexadecimal prefix", "0x7fe0,0X10,OW_or_OB,d,n,1,1", "7fe0, 0010|OW_or_OB|d|n|1|1"},
       {"any number of values", "0008,0008,CS,d,n,2,4294967295", "0008, 0008|CS|d|n|2|4294967295"},
       {"text behind the last number", "0008,0008,CS,d,n,1,1,RET", "0008, 0008|CS|d|n|1|1"},
       {"letters behind the last number", "0008,0008,US_US_or_SS_US,d,n,1,3n", "0008, 0008|US_US_or_SS_US|d|n|1|3"},
   };
   for (const LineCase& aCase : kCases)
   {
      SCOPED_TRACE(aCase.itsName);
      EXPECT_EQ(Described(MDDEntry(RWCString(aCase.itsLine))), aCase.itsExpected);
   }
}

TEST(MDDEntry, RefusesLinesThatAreNotEntries)
{
   const char* const kLines[] = {
       "",
       "0010",
       "0010,0010,PN,d,n,1",            // six fields
       "0010,0010,PN,d,n,1,",           // no number in the last
       "001g,0010,PN,d,n,1,1",          // not hexadecimal
       "0010,10010,PN,d,n,1,1",         // more than 16 bits
       "-1,0010,PN,d,n,1,1",            // a sign
       ",0010,PN,d,n,1,1",              // a field without text
       "0010,0010,PN, ,n,1,1",          // blanks are no text
       "0010,0010,PN,d,\"\",1,1",       // only the description may be empty
       "0010,0010,\"\",d,n,1,1",        // also not the representation
       "0010,0010,PN,d,n,1a,1",         // the minimum is all number
       "0010,0010,PN,d,n,4294967296,1", // more than 32 bits
       "0010,0010,PN,d,n,1,x1",
   };
   for (const char* aLine : kLines)
   {
      SCOPED_TRACE(aLine);
      try
      {
         MDDEntry anEntry{RWCString(aLine)};
         ADD_FAILURE() << "was read as " << Described(anEntry);
      }
      catch (const InvalidEntryDescriptionException& anException)
      {
         EXPECT_EQ(anException.GetMessage(), aLine);
      }
   }
}

// The unknown text is met before the missing fields behind it.
TEST(MDDEntry, UnknownRepresentationIsAnErrorOfItsOwn)
{
   for (const char* aLine : {"0010,0010,XX,d,n,1,1", "0010,0010,pn", "0010,0010,pn,", "0010,0010,US_or_ss,d,n,1,1"})
   {
      SCOPED_TRACE(aLine);
      MDDEntry::Fields aFields;
      if (MDDEntry::Parse(aLine, aFields)) // without a comma behind it the text is no field
      {
         try
         {
            MDDEntry anEntry{RWCString(aLine)};
            ADD_FAILURE() << "was read as " << Described(anEntry);
         }
         catch (const InvalidValueTypeException& anException)
         {
            EXPECT_EQ(anException.GetMessage(), "Invalid type code: 0x20");
         }
      }
      else
      {
         EXPECT_STREQ(aLine, "0010,0010,pn");
      }
   }
}

TEST(MDDEntry, TypeMustBeOneOfTheThirtyTwo)
{
   MDDEntry anEntry(0x0010, 0x0010, MDDEntry::PN, 1, 1, "n", "d");
   EXPECT_THROW(anEntry.SetType(static_cast<MDDEntry::ValueType>(255)), InvalidValueTypeException);
   EXPECT_THROW(anEntry.SetType(static_cast<MDDEntry::ValueType>(-1)), InvalidValueTypeException);
   EXPECT_EQ(anEntry.GetType(), MDDEntry::PN);
   anEntry.SetType(MDDEntry::NONE);
   EXPECT_EQ(anEntry.GetType(), 31);
}

TEST(MDDEntry, TypesBecomeTwoLetters)
{
   struct
   {
      int itsType;
      UINT16 itsCode;
   } const kCases[] = {
       {MDDEntry::AE, 0x4145},
       {MDDEntry::UI, 0x5549},
       {MDDEntry::OW_or_OB, 0x4F57},
       {MDDEntry::US_US_or_SS_US, 0x5553},
       {MDDEntry::US_or_SS, 0x5553},
       {MDDEntry::US_or_SS_or_OW, 0x5553},
       {MDDEntry::NONE, 0x554E},
       {32, 0x554E},
       {-1, 0x554E},
   };
   for (const auto& aCase : kCases)
   {
      EXPECT_EQ(MDDEntry::ValueTypeToUShort(static_cast<MDDEntry::ValueType>(aCase.itsType)), aCase.itsCode)
          << aCase.itsType;
   }
   EXPECT_EQ(MDDEntry::UShortToValueType(0x5553), MDDEntry::US);
   EXPECT_EQ(MDDEntry::UShortToValueType(0x4F44), 32); // OD
   EXPECT_EQ(MDDEntry::UShortToValueType(0), 32);
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
   EXPECT_EQ(MDDEntry::TypeStringToUShort("zz"), 0x7A7A);
   EXPECT_EQ(MDDEntry::TypeStringToUShort(""), 0x554E);
   EXPECT_EQ(MDDEntry::TypeStringToUShort("PN1"), 0x554E);
   EXPECT_EQ(MDDEntry::UShortToTypeString(0x7A41), "zA");
}

TEST(VRTypingError, NamesTypeAndTag)
{
   const VRTypingError anError("W", 0x0010, 0x0010, "UINT16", MDDEntry::ValueTypeToUShort(MDDEntry::PN));
   EXPECT_EQ(anError.GetMessage(),
             "W: Data type passed (UINT16 is incompatible with dictionary type PN for element (0010, 0010)");
}
