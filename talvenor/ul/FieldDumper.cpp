#include "talvenor/ul/FieldDumper.h"

#include <algorithm>

#include "talvenor/foundation/OneLine.h"

namespace
{
constexpr std::size_t kValueColumn = 32;

RWCString WithSize(const RWCString& theText, unsigned int theSize)
{
   return OnOneLine(theText) + " (" + std::to_string(theSize) + " bytes)";
}
} // namespace

void FieldDumper::Line(const char* theLabel, const RWCString& theValue)
{
   RWCString aLine = RWCString("\t") + theLabel + ":";
   aLine.resize(std::max(aLine.size() + 1, kValueColumn), ' ');
   itsLog << aLine + theValue + "\n";
}

int FieldDumper::Number(const char* theLabel, UINT32 theValue)
{
   if (theLabel != nullptr)
   {
      Line(theLabel, std::to_string(theValue));
   }
   return 1;
}

int FieldDumper::Coded(const char* theLabel, unsigned char theValue, const char* theText)
{
   Line(theLabel, std::to_string(theValue) + " " + theText);
   return 1;
}

int FieldDumper::Title(const char* theLabel, const AETitle& theTitle)
{
   Line(theLabel, WithSize(theTitle.GetTitle(), theTitle.GetSize()));
   return 1;
}

int FieldDumper::Name(const char* theLabel, const ImplementationVersionName& theName)
{
   Line(theLabel, WithSize(RWCString(theName), theName.GetSize()));
   return 1;
}

int FieldDumper::UIDText(const char* theLabel, const ULUID& theUID)
{
   Line(theLabel, theUID.Describe());
   return 1;
}

void FieldDumper::Counted(const char* theLabel, std::size_t theCount)
{
   itsLog << "\t" << theLabel << " (" << theCount << "):\n";
}
