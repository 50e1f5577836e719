// A DICOM unique identifier (PS3.5 9) by value: up to 64 characters in a fixed buffer, and the even length that the
// value has when it is encoded. The text must begin with a digit or a full stop; nothing else about it is checked.
// Threads: as an int.
#pragma once

#include "talvenor/foundation/BasicTypes.h"

class MUIDDictionary;
class PDUInputStream;
class PDUOutputStream;
class ULUID;
class VR;

class TALVENOR_API UID
{
public:
   static constexpr unsigned int kMaximumLength = 64;

   // Empty, with the default UID dictionary, which every constructor sets.
   UID() = default;
   UID(const VR& theVR);
   UID(const RWCString& theText);
   UID(const char* theText, int theLength = -1);
   UID(const ULUID& theUID);
   // Copies of a UID do not share or borrow its dictionary.
   UID(const UID& theOther);
   ~UID();

   // The text only: this UID keeps its own dictionary.
   UID& operator=(const UID& theOther);
   UID& operator=(const VR& theVR);

   // With a length of 0 or more: so many characters, of which a last one that is neither digit nor full stop is
   // dropped (a pad byte); more than 64 make the UID empty. With a negative length: a NUL-terminated text, cut at 64.
   // Then trailing spaces and NULs go. Null, or a text that begins otherwise than a UID, makes the UID empty.
   void Set(const char* theText, int theLength);
   void Set(const RWCString& theText);
   void Set(const UID& theOther);
   void Set(const VR& theVR);

   // Cuts the text at theSize, at most 64; the size is that rounded up to even.
   void SetLength(unsigned int theSize);
   // The encoded length: even, 0 to 64.
   unsigned int GetSize() const { return itsSize; }
   bool IsNull() const { return itsText[0] == '\0'; }

   operator const char*() const { return itsText; }
   operator RWCString() const { return itsText; }
   // An addition: `RWCString(aUID)` is ambiguous between the two conversions.
   RWCString ToString() const { return itsText; }

   // Equality of the texts. A null pointer equals an empty UID.
   bool operator==(const char* theText) const;
   bool operator==(const RWCString& theText) const;
   bool operator==(const UID& theOther) const;
   bool operator==(const ULUID& theUID) const;

   // A value of a PDU. Reading more than 64 bytes, or fewer than asked for, empties the UID and returns 0. Writing
   // needs an even length of at most 64: the bytes of the buffer, in which NULs follow the text.
   int Read(PDUInputStream& theStream, unsigned int theLength);
   int Write(PDUOutputStream& theStream, unsigned int theLength) const;

   // A dictionary of its own, loaded from a file; 0 when that fails, and then there is none.
   int SetUIDDictionary(const RWCString& theFileName);
   // Borrowed.
   void SetUIDDictionary(MUIDDictionary& theDictionary);
   // Afterwards there is none.
   void UnsetDictionary();
   // An addition: the dictionary, or null.
   const MUIDDictionary* GetUIDDictionary() const { return itsDictionary; }

private:
   static MUIDDictionary* DefaultDictionary();
   void Clear();

   unsigned int itsSize = 0;
   char itsText[kMaximumLength + 1] = {}; // NUL from the end of the text to the end of the buffer, unless Read
   MUIDDictionary* itsDictionary = DefaultDictionary();
   int itsOwnsDictionary = 0;
};
