// A UID as the PDUs of an association carry it: up to 64 characters without padding (PS3.8 F, PS3.5 9). What Set takes
// is made fit: a text that does not begin with a digit or a full stop becomes the empty UID. What Read takes is what
// the peer sent. Threads: as an int.
#pragma once

#include "talvenor/dictionary/UID.h"

class TALVENOR_API ULUID
{
public:
   static constexpr unsigned int kMaximumLength = UID::kMaximumLength;

   ULUID() = default;
   ULUID(const RWCString& theText) { Set(theText); }
   ULUID(const char* theText, int theLength = -1) { Set(theText, theLength); }
   ULUID(const UID& theUID) { Set(theUID); }
   ULUID(const VR& theVR) : itsUID(theVR) {}
   // Copies are of the text: they do not share or borrow the dictionary.

   // As in UID: a length of 0 or more takes so many characters, of which a last one that is neither digit nor full stop
   // is dropped; with a negative one the text ends at its NUL, and after 64. Trailing spaces go. Null, or a length
   // above 64, makes the UID empty.
   void Set(const char* theText, int theLength) { itsUID.Set(theText, theLength); }
   void Set(const RWCString& theText) { itsUID.Set(theText); }
   void Set(const ULUID& theUID) { itsUID.Set(theUID.itsUID); }
   void Set(const UID& theUID) { itsUID.Set(theUID); }

   // Cuts the text at theLength.
   void SetLength(unsigned int theLength) { itsUID.SetLength(theLength); }
   // The number of characters.
   unsigned int GetSize() const;
   bool IsNull() const { return itsUID.IsNull(); }

   operator const char*() const { return itsUID; }
   operator RWCString() const { return itsUID; }
   // An addition: `RWCString(aUID)` is ambiguous between the two conversions.
   RWCString ToString() const { return itsUID.ToString(); }

   // Equality of the texts. Null equals nothing.
   bool operator==(const ULUID& theOther) const { return itsUID == theOther.itsUID; }
   bool operator==(const UID& theUID) const { return itsUID == theUID; }
   bool operator==(const RWCString& theText) const { return itsUID == theText; }
   bool operator==(const char* theText) const { return theText != nullptr && itsUID == theText; }

   // theLength bytes; the text ends at the first NUL among them. More than 64 are not read. Returns 0, and the UID is
   // empty, for those and when fewer bytes arrive.
   int Read(PDUInputStream& theStream, unsigned int theLength);
   // The first theLength characters, NULs behind the text; 0 for more than 64. Without a length: the text.
   int Write(PDUOutputStream& theStream, unsigned int theLength) const;
   int Write(PDUOutputStream& theStream) const { return Write(theStream, GetSize()); }

   // The dictionary that gives the name in a trace: the library's, unless one of these is called. The first loads one
   // of its own from a file; when that fails it returns 0, and there is none. The second borrows.
   int SetUIDDictionary(const RWCString& theFileName) { return itsUID.SetUIDDictionary(theFileName); }
   void SetUIDDictionary(MUIDDictionary& theDictionary) { itsUID.SetUIDDictionary(theDictionary); }
   void UnsetDictionary() { itsUID.UnsetDictionary(); }

   // An addition: the text, its length and, when the dictionary knows the UID, its name, fit for a trace.
   RWCString Describe() const;

private:
   UID itsUID;
};
