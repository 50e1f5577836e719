// The visitors of the field lists of PDUs and items: each list is written once, as the wire has it, and these walk over
// it to measure, to write and to read (FieldDumper.h: to dump).
//
//    return theVisitor.Number(nullptr, theItem.itsID)              // 1, 2 or 4 bytes, big-endian
//        && theVisitor.Reserved("Reserved", 3)                     // zeros, not tested on receipt
//        && theVisitor.SubItem(theItem.itsAbstractSyntax, "...");  // with its header
//
// Every operation returns 0 to end the walk. A label names the field in dumps and traces. Texts of failures begin
// behind the name of the class. Internal.
#pragma once

#include <algorithm>
#include <iterator>

#include "talvenor/foundation/AETitle.h"
#include "talvenor/ul/ImplementationVersionName.h"
#include "talvenor/ul/OwnedList.h"
#include "talvenor/ul/PDUInputStream.h"
#include "talvenor/ul/PDUOutputStream.h"
#include "talvenor/ul/ULFailure.h"
#include "talvenor/ul/ULUID.h"

// A member of a list, which holds items or pointers to items.
template <class Member>
auto& ItemOf(Member& theMember)
{
   if constexpr (requires { *theMember; })
   {
      return *theMember;
   }
   else
   {
      return theMember;
   }
}

// Adds up the encoded size.
class FieldSizer
{
public:
   UINT32 GetSize() const { return itsSize; }

   template <class T>
   int Number(const char*, T)
   {
      return Add(sizeof(T));
   }
   int Coded(const char*, unsigned char, const char*) { return Add(1); }
   int Reserved(const char*, unsigned int theCount) { return Add(theCount); }
   int Title(const char*, const AETitle& theTitle) { return Add(theTitle.GetSize()); }
   int Name(const char*, const ImplementationVersionName& theName) { return Add(theName.GetSize()); }
   int UIDText(const char*, const ULUID& theUID) { return Add(theUID.GetSize()); }
   int CountedUID(const char*, const ULUID& theUID) { return Add(2 + theUID.GetSize()); }
   int AtLeast(unsigned int, const char*) { return 1; }
   int Ignored(const char*, UINT32) { return 1; }

   template <class Item>
   int SubItem(Item& theItem, const char* = nullptr)
   {
      return Add(theItem.Size());
   }
   template <class Item>
   int SyntaxIfAccepted(Item& theItem, bool)
   {
      return SubItem(theItem);
   }
   template <class List>
   int Members(List& theList)
   {
      for (auto& aMember : theList)
      {
         SubItem(ItemOf(aMember));
      }
      return 1;
   }
   template <class List>
   int OneOrMore(const char*, List& theList, const char*)
   {
      return Members(theList);
   }

private:
   int Add(UINT32 theSize)
   {
      itsSize += theSize;
      return 1;
   }

   UINT32 itsSize = 0;
};

class FieldWriter
{
public:
   explicit FieldWriter(PDUOutputStream& theStream) : itsStream(theStream) {}

   template <class T>
   int Number(const char*, T theValue)
   {
      itsStream.DULWrite(theValue);
      return 1;
   }
   int Coded(const char*, unsigned char theValue, const char*) { return Number(nullptr, theValue); }
   int Reserved(const char*, unsigned int theCount);
   int Title(const char*, const AETitle& theTitle) { return theTitle.Write(itsStream); }
   int Name(const char*, const ImplementationVersionName& theName) { return theName.Write(itsStream); }
   int UIDText(const char*, const ULUID& theUID) { return theUID.Write(itsStream); }
   int CountedUID(const char*, const ULUID& theUID);
   int AtLeast(unsigned int, const char*) { return 1; }
   int Ignored(const char*, UINT32) { return 1; }

   template <class Item>
   int SubItem(Item& theItem, const char* = nullptr)
   {
      return theItem.Write(itsStream);
   }
   template <class Item>
   int SyntaxIfAccepted(Item& theItem, bool)
   {
      return SubItem(theItem);
   }
   template <class List>
   int Members(List& theList)
   {
      return std::all_of(theList.begin(), theList.end(),
                         [this](auto& theMember) { return this->SubItem(ItemOf(theMember)); });
   }
   template <class List>
   int OneOrMore(const char*, List& theList, const char*)
   {
      return !theList.empty() && Members(theList);
   }

private:
   PDUOutputStream& itsStream;
};

// What a PDU or an item makes of the sub-items that it finds, by their type.
template <class Owner>
struct SubItemRow
{
   unsigned char itsType;
   // Reads what follows the type; 0: the text is raised.
   int (*itsRead)(Owner& theOwner, PDUInputStream& theStream, unsigned int& theBytesRead);
   const char* itsFailure;
};

struct SubItemTexts
{
   const char* itsNoType;
   const char* itsUnknownType;
   bool isUnknownSkipped; // with all that follows it, before the failure
};

// Reads the contents of one PDU or item. What was read is told by the PDU stream, which counts down to the end of the
// PDU: no sum of lengths has to be kept, and none can overflow.
class FieldReader
{
public:
   // theLength is what the length field says: the number of bytes from here to the end.
   FieldReader(PDUInputStream& theStream, const char* theClass)
       : itsStream(theStream), itsClass(theClass), itsStart(theStream.GetRemainingLength())
   {}

   UINT32 GetBytesRead() const { return itsStart - itsStream.GetRemainingLength(); }

   // What follows has this length, if its length field tells the truth.
   void Begin(UINT32 theLength)
   {
      itsLength = theLength;
      itsStart = itsStream.GetRemainingLength();
   }
   INT64 GetBytesLeft() const { return INT64{itsLength} - GetBytesRead(); }

   [[noreturn]] void Raise(const char* theText, TNResultCode theCode) const
   {
      RaiseULFailure(itsClass, theText, theCode);
   }

   template <class T>
   int Number(const char* theLabel, T& theValue)
   {
      return itsStream.DULRead(theValue) == sizeof(T) || IsShort(theLabel);
   }
   int Coded(const char* theLabel, unsigned char& theValue, const char*) { return Number(theLabel, theValue); }
   int Reserved(const char* theLabel, unsigned int theCount);
   int Title(const char* theLabel, AETitle& theTitle) { return theTitle.Read(itsStream) || IsShort(theLabel); }
   int Name(const char*, ImplementationVersionName& theName) { return theName.Read(itsStream, itsLength); }
   int UIDText(const char* theLabel, ULUID& theUID) { return theUID.Read(itsStream, itsLength) || IsShort(theLabel); }
   int CountedUID(const char* theLabel, ULUID& theUID);
   int Ignored(const char*, UINT32) { return 1; }

   // The item has no room for what must come.
   int AtLeast(unsigned int theLength, const char* theText)
   {
      if (itsLength < theLength)
      {
         Raise(theText, TN_END_OF_FILE);
      }
      return 1;
   }

   template <class Item>
   int SubItem(Item& theItem, const char* theFailure)
   {
      unsigned int aCount = 0;
      if (!theItem.Read(itsStream, aCount))
      {
         Raise(theFailure, TN_END_OF_FILE);
      }
      return 1;
   }

   template <class Item>
   int OneOrMore(const char*, OwnedList<Item>& theList, const char* theFailure)
   {
      theList.clear();
      while (GetBytesLeft() > 0)
      {
         auto anItem = std::make_unique<Item>();
         SubItem(*anItem, theFailure);
         theList.push_back(std::move(anItem));
      }
      return 1;
   }

   // A transfer syntax is required with an acceptance, and optional with a refusal.
   template <class Item>
   int SyntaxIfAccepted(Item& theItem, bool isAccepted)
   {
      theItem = Item();
      if (GetBytesLeft() > 0)
      {
         return SubItem(theItem, "::ReadDynamic: EOF while reading TransferSyntax sub-item");
      }
      if (isAccepted)
      {
         Raise("::ReadDynamic: TransferSyntax sub-item was not sent", TN_END_OF_FILE);
      }
      return 1;
   }

   // Reads sub-items in any order until the length is used up. One that goes on behind it ends in a length mismatch.
   // theOthers, which may be null, reads those of other types; without it they are refused.
   template <class Owner, std::size_t N>
   int SubItemsByType(Owner& theOwner, const SubItemRow<Owner> (&theRows)[N], const SubItemTexts& theTexts,
                      const SubItemRow<Owner>* theOthers = nullptr)
   {
      while (GetBytesLeft() > 0)
      {
         const unsigned char aType = ReadSubItemType(theTexts);
         const auto* aRow = std::find_if(std::begin(theRows), std::end(theRows),
                                         [=](const auto& theRow) { return theRow.itsType == aType; });
         if (aRow == std::end(theRows))
         {
            aRow = theOthers;
         }
         if (aRow == nullptr)
         {
            RefuseSubItem(theTexts);
         }
         unsigned int aCount = 0;
         if (!aRow->itsRead(theOwner, itsStream, aCount))
         {
            Raise(aRow->itsFailure, TN_END_OF_FILE);
         }
      }
      return 1;
   }

private:
   // Always false.
   bool IsShort(const char* theLabel) const;
   unsigned char ReadSubItemType(const SubItemTexts& theTexts);
   [[noreturn]] void RefuseSubItem(const SubItemTexts& theTexts);

   PDUInputStream& itsStream;
   const char* itsClass;
   UINT32 itsStart; // the bytes left in the PDU at the beginning
   UINT32 itsLength = 0;
};
