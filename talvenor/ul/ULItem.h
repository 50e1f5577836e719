// What the items and sub-items of association PDUs have in common (PS3.8 9.3.2, annex D; PS3.7 annex D): each is a
// value that begins with its type, a reserved byte and its length, and knows its layout. Item is the class that derives
// from this. Items are read inside a PDU: none is ever read beyond its end.
#pragma once

#include "talvenor/Export.h"
#include "talvenor/foundation/BasicTypes.h"

class FieldDumper;
class FieldReader;
class LogStream;
class PDUInputStream;
class PDUOutputStream;

template <class Item>
class TALVENOR_API ULItem
{
public:
   // The number of bytes behind the length field, as of the last Size, Write or ReadDynamic.
   UINT16 GetItemLength() const { return itsItemLength; }

   // The encoded size in bytes, with the 4 of the header; also brings the length fields inside up to date.
   unsigned int Size();

   // Returns 0 when the item cannot be encoded; part of it may be queued then. Throws what the stream throws.
   int Write(PDUOutputStream& theStream);

   // Read reads and tests the type and calls ReadDynamic, which reads what follows it. theBytesRead is set to the
   // number of bytes read, by ReadDynamic without the type. They return 0 or throw StreamIOException when the PDU ends
   // too early, and throw for a wrong type (TN_ITEM_TYPE_MISMATCH), a length that is not that of the contents
   // (TN_ITEM_LENGTH_MISMATCH), and contents that there are not (TN_INVALID_ITEM). After a failure the item is partly
   // filled.
   int Read(PDUInputStream& theStream, unsigned int& theBytesRead);
   int ReadDynamic(PDUInputStream& theStream, unsigned int& theBytesRead);

   // Additions: one line for each field, as in the trace, below a heading where the item has one; and the lines alone,
   // for the item that this one is part of.
   void Dump(LogStream& theLog) const;
   void Dump(FieldDumper& theDumper) const;

   // Items are equal when their contents are: the length follows from them.
   bool operator==(const ULItem&) const { return true; }

protected:
   ULItem() = default;
   ULItem(const ULItem&) = default;
   ULItem& operator=(const ULItem&) = default;
   ~ULItem() = default;

   UINT16 itsItemLength = 0;
};
