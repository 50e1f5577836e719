// Writes what PDUs and items contain into a log, one line a field:
//
//    User Information:
//       Item Length:                    58
//       Implementation Class:           1.2.3 (5 bytes)
//
// The operations with a label are those of every visitor of a field list (see FieldVisitors.h) and always return 1.
// Text that came from outside can begin no line of its own. Internal.
#pragma once

#include "talvenor/foundation/AETitle.h"
#include "talvenor/foundation/LogStream.h"
#include "talvenor/ul/ImplementationVersionName.h"
#include "talvenor/ul/ULUID.h"

class FieldDumper
{
public:
   explicit FieldDumper(LogStream& theLog) : itsLog(theLog) {}

   void Heading(const RWCString& theText) { itsLog << theText << "\n"; }
   void Line(const char* theLabel, const RWCString& theValue);

   // A field without label has its place elsewhere.
   int Number(const char* theLabel, UINT32 theValue);
   int Coded(const char* theLabel, unsigned char theValue, const char* theText);
   int Title(const char* theLabel, const AETitle& theTitle);
   int Name(const char* theLabel, const ImplementationVersionName& theName);
   int UIDText(const char* theLabel, const ULUID& theUID);
   int CountedUID(const char* theLabel, const ULUID& theUID) { return UIDText(theLabel, theUID); }
   int Reserved(const char*, unsigned int) { return 1; }
   int AtLeast(unsigned int, const char*) { return 1; }
   int Ignored(const char* theLabel, UINT32 theLength) { return Number(theLabel, theLength); }

   template <class Item>
   int SubItem(const Item& theItem, const char* = nullptr)
   {
      theItem.Dump(*this);
      return 1;
   }
   template <class Item>
   int SyntaxIfAccepted(const Item& theItem, bool)
   {
      return SubItem(theItem);
   }
   template <class List>
   int OneOrMore(const char* theLabel, const List& theList, const char* = nullptr)
   {
      Counted(theLabel, theList.size());
      return Members(theList);
   }
   // Members of lists are items or pointers to items.
   template <class List>
   int Members(const List& theList)
   {
      for (const auto& aMember : theList)
      {
         if constexpr (requires { *aMember; })
         {
            SubItem(*aMember);
         }
         else
         {
            SubItem(aMember);
         }
      }
      return 1;
   }

   // "theLabel (n):"
   void Counted(const char* theLabel, std::size_t theCount);

private:
   LogStream& itsLog;
};
