// The items of association PDUs by type, and what their readers say. One regular scheme with a few exceptions, which
// peers' logs and hosts rely on: the table holds them all. Internal.
#pragma once

struct ULItemTexts
{
   unsigned char itsType;
   const char* itsClass; // which begins every text of a failure
   const char* itsNoType;
   const char* itsWrongType; // both types follow when it ends with "("
   // When the reserved byte and the length, or what follows them, come short; null: ReadDynamic returns 0.
   const char* itsNoHeader;
   const char* itsNoBody;
   // In a dump: a heading that ends with a space is completed by the item, null is none.
   const char* itsHeading;
   const char* itsLengthLabel;
};

// Of the item of that type, which must be one of the ten.
const ULItemTexts& TextsOfULItem(unsigned char theType);
