// The exceptions that say no more than their message. Those that compose it do so in the constructor.
#pragma once

#include <cstddef>

#include "talvenor/foundation/ExceptionBase.h"

// An object could not be built.
class TALVENOR_API ConstructorError : public ConcreteException<ConstructorError, TalvenorException>
{
public:
   static constexpr char kTypeName[] = "ConstructorError";

   explicit ConstructorError(const char* theMessage) : ConcreteException(theMessage) {}
};

// A failure that no other class names.
class TALVENOR_API TNRuntimeException : public ConcreteException<TNRuntimeException, TalvenorException>
{
public:
   static constexpr char kTypeName[] = "TNRuntimeException";

   explicit TNRuntimeException(const char* theMessage) : ConcreteException(theMessage) {}
};

// A number or text that names no value representation. Message: "Invalid type code: 0x" and the code in hexadecimal,
// preceded by the quoted file and the line when theFile is not null.
class TALVENOR_API InvalidValueTypeException : public ConcreteException<InvalidValueTypeException, TalvenorException>
{
public:
   static constexpr char kTypeName[] = "InvalidValueTypeException";

   InvalidValueTypeException(UINT32 theTypeCode, const char* theFile, int theLine);
};

// A number that names no kind of UID. Message as for InvalidValueTypeException.
class TALVENOR_API InvalidUIDTypeException : public ConcreteException<InvalidUIDTypeException, TalvenorException>
{
public:
   static constexpr char kTypeName[] = "InvalidUIDTypeException";

   InvalidUIDTypeException(UINT32 theTypeCode, const char* theFile, int theLine);
};

// A line of a dictionary file that does not describe an entry. Message: theWhere, preceded by ", line N: " when theLine
// is greater than 0, preceded by the quoted file when theFile is not empty.
class TALVENOR_API InvalidEntryDescriptionException
    : public ConcreteException<InvalidEntryDescriptionException, TalvenorException>
{
public:
   static constexpr char kTypeName[] = "InvalidEntryDescriptionException";

   InvalidEntryDescriptionException(const char* theWhere, const RWCString& theFile, int theLine);
};

// A data element that is not there.
class TALVENOR_API VRAttributeNotFoundException
    : public ConcreteException<VRAttributeNotFoundException, TalvenorException>
{
public:
   static constexpr char kTypeName[] = "VRAttributeNotFoundException";

   explicit VRAttributeNotFoundException(const char* theMessage) : ConcreteException(theMessage) {}
   // An element of a private block (PS3.5 7.8), named by its private creator.
   VRAttributeNotFoundException(const char* theWhere, const RWCString& thePrivateCreator, UINT16 theElement);
};

// A value was given whose type does not fit the value representation that the dictionary has for the element.
class TALVENOR_API VRTypingError : public ConcreteException<VRTypingError, TalvenorException>
{
public:
   static constexpr char kTypeName[] = "VRTypingError";

   // Defined in dictionary/, which knows the texts of value representations and tags.
   VRTypingError(const char* theWhere, UINT16 theGroup, UINT16 theElement, const RWCString& thePassedType,
                 UINT16 theDictionaryType);
};

// A caller's buffer is too small, or an element's length does not fit its value representation.
class TALVENOR_API VRBufferLengthError : public ConcreteException<VRBufferLengthError, TalvenorException>
{
public:
   static constexpr char kTypeName[] = "VRBufferLengthError";

   explicit VRBufferLengthError(const char* theMessage) : ConcreteException(theMessage) {}
};

// A buffer could not be had. Not a std::bad_alloc: allocating code translates that into this.
class TALVENOR_API BadAllocException : public ConcreteException<BadAllocException, TalvenorException>
{
public:
   static constexpr char kTypeName[] = "BadAllocException";

   explicit BadAllocException(std::size_t theRequested); // in bytes; 0 when the size is not known

   std::size_t requested() const { return itsRequested; }

private:
   std::size_t itsRequested;
};
