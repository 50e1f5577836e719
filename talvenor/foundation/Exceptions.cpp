#include "talvenor/foundation/Exceptions.h"

#include <cstdio>

namespace
{

RWCString Hexadecimal(UINT32 theNumber, int theMinimumDigits)
{
   char aText[16];
   std::snprintf(aText, sizeof aText, "%0*x", theMinimumDigits, static_cast<unsigned int>(theNumber));
   return aText;
}

RWCString Quoted(const RWCString& theText)
{
   return "\"" + theText + "\"";
}

RWCString AtLine(int theLine)
{
   return ", line " + std::to_string(theLine) + ": ";
}

RWCString InvalidTypeCode(UINT32 theTypeCode, const char* theFile, int theLine)
{
   const RWCString aPlace = theFile ? Quoted(theFile) + AtLine(theLine) : RWCString();
   return aPlace + "Invalid type code: 0x" + Hexadecimal(theTypeCode, 1);
}

} // namespace

InvalidValueTypeException::InvalidValueTypeException(UINT32 theTypeCode, const char* theFile, int theLine)
    : ConcreteException(InvalidTypeCode(theTypeCode, theFile, theLine).c_str())
{}

InvalidUIDTypeException::InvalidUIDTypeException(UINT32 theTypeCode, const char* theFile, int theLine)
    : ConcreteException(InvalidTypeCode(theTypeCode, theFile, theLine).c_str())
{}

InvalidEntryDescriptionException::InvalidEntryDescriptionException(const char* theWhere, const RWCString& theFile,
                                                                   int theLine)
    : ConcreteException(theWhere)
{
   const RWCString aFile = theFile.empty() ? RWCString() : Quoted(theFile);
   const RWCString aLine = theLine > 0 ? AtLine(theLine) : RWCString();
   SetMessage((aFile + aLine + GetMessage()).c_str());
}

VRAttributeNotFoundException::VRAttributeNotFoundException(const char* theWhere, const RWCString& thePrivateCreator,
                                                           UINT16 theElement)
    : ConcreteException(theWhere)
{
   SetMessage(
       (GetMessage() + ": Private Block: " + Quoted(thePrivateCreator) + ", Element " + Hexadecimal(theElement, 4))
           .c_str());
}

BadAllocException::BadAllocException(std::size_t theRequested)
    : ConcreteException(("Memory allocation (" +
                         (theRequested ? std::to_string(theRequested) : RWCString("Unspecified")) +
                         " bytes requested) failed.")
                            .c_str()),
      itsRequested(theRequested)
{}
