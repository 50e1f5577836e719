// The operations of ULItem. A source that defines the field list of an item includes this and ends with
//
//    template class ULItem<TheItem>;
//
// Internal.
#pragma once

#include "talvenor/ul/FieldDumper.h"
#include "talvenor/ul/FieldVisitors.h"
#include "talvenor/ul/ULItem.h"
#include "talvenor/ul/ULItemTexts.h"

constexpr UINT32 kItemHeaderLength = 4; // type, reserved, length

template <class Item>
unsigned int ULItem<Item>::Size()
{
   FieldSizer aSizer;
   Item::Fields(static_cast<Item&>(*this), aSizer);
   itsItemLength = static_cast<UINT16>(aSizer.GetSize());
   return aSizer.GetSize() + kItemHeaderLength;
}

template <class Item>
int ULItem<Item>::Write(PDUOutputStream& theStream)
{
   if (Size() != itsItemLength + kItemHeaderLength)
   {
      return 0; // longer than the length field can tell
   }
   theStream.DULWrite(Item::itsItemType);
   theStream.DULWrite(static_cast<unsigned char>(0));
   theStream.DULWrite(itsItemLength);
   FieldWriter aWriter(theStream);
   return Item::Fields(static_cast<Item&>(*this), aWriter);
}

template <class Item>
int ULItem<Item>::Read(PDUInputStream& theStream, unsigned int& theBytesRead)
{
   const ULItemTexts& aText = TextsOfULItem(Item::itsItemType);
   unsigned char aType = 0;
   theBytesRead = theStream.DULRead(aType);
   if (theBytesRead != sizeof aType)
   {
      RaiseULFailure(aText.itsClass, aText.itsNoType, TN_END_OF_FILE);
   }
   if (aType != Item::itsItemType)
   {
      RWCString aTail = aText.itsWrongType;
      if (aTail.back() == '(')
      {
         aTail += WrongTypeText(aType, Item::itsItemType);
      }
      RaiseULFailure(aText.itsClass, aTail, TN_ITEM_TYPE_MISMATCH);
   }
   const int isRead = ReadDynamic(theStream, theBytesRead);
   ++theBytesRead;
   if (!isRead)
   {
      RaiseULFailure(aText.itsClass, "::Read: EOF while reading body", TN_END_OF_FILE);
   }
   return 1;
}

template <class Item>
int ULItem<Item>::ReadDynamic(PDUInputStream& theStream, unsigned int& theBytesRead)
{
   const ULItemTexts& aText = TextsOfULItem(Item::itsItemType);
   FieldReader aReader(theStream, aText.itsClass);
   const auto comesShort = [&](const char* theText) {
      if (theText != nullptr)
      {
         aReader.Raise(theText, TN_END_OF_FILE);
      }
      return 0;
   };

   const bool hasHeader = aReader.Reserved("Reserved", 1) && aReader.Number("Item Length", itsItemLength);
   theBytesRead = aReader.GetBytesRead();
   if (!hasHeader)
   {
      return comesShort(aText.itsNoHeader);
   }
   aReader.Begin(itsItemLength);
   const int isRead = Item::Fields(static_cast<Item&>(*this), aReader);
   theBytesRead += aReader.GetBytesRead();
   if (!isRead)
   {
      return comesShort(aText.itsNoBody);
   }
   if (aReader.GetBytesLeft() != 0)
   {
      aReader.Raise("::ReadDynamic: invalid item length", TN_ITEM_LENGTH_MISMATCH);
   }
   return 1;
}

// What completes the heading of a dump.
template <class Item>
RWCString HeadingDetail(const Item&)
{
   return RWCString();
}

template <class Item>
void ULItem<Item>::Dump(FieldDumper& theDumper) const
{
   const ULItemTexts& aText = TextsOfULItem(Item::itsItemType);
   const Item& anItem = static_cast<const Item&>(*this);
   if (aText.itsHeading != nullptr)
   {
      theDumper.Heading(aText.itsHeading + HeadingDetail(anItem));
      theDumper.Number(aText.itsLengthLabel, itsItemLength);
   }
   Item::Fields(anItem, theDumper);
}

template <class Item>
void ULItem<Item>::Dump(LogStream& theLog) const
{
   FieldDumper aDumper(theLog);
   Dump(aDumper);
}
