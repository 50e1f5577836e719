#include "talvenor/ul/FieldVisitors.h"

#include <cassert>

#include "talvenor/foundation/TNTrace.h"

namespace
{
constexpr unsigned int kLongestReserved = 32; // in A-ASSOCIATE-RQ and -AC
}

int FieldWriter::Reserved(const char*, unsigned int theCount)
{
   constexpr unsigned char kZeros[kLongestReserved] = {};
   assert(theCount <= kLongestReserved);
   itsStream.Write(kZeros, theCount);
   return 1;
}

int FieldWriter::CountedUID(const char*, const ULUID& theUID)
{
   itsStream.DULWrite(static_cast<UINT16>(theUID.GetSize()));
   return theUID.Write(itsStream);
}

int FieldReader::Reserved(const char* theLabel, unsigned int theCount)
{
   unsigned char aBytes[kLongestReserved];
   assert(theCount <= kLongestReserved);
   return itsStream.DULRead(aBytes, theCount) == theCount || IsShort(theLabel);
}

int FieldReader::CountedUID(const char* theLabel, ULUID& theUID)
{
   UINT16 aLength = 0;
   return Number(theLabel, aLength) && (theUID.Read(itsStream, aLength) || IsShort(theLabel));
}

bool FieldReader::IsShort(const char* theLabel) const
{
   if (theLabel != nullptr && gTNTracer(TNTrace::TNTraceAssociation))
   {
      LogEntry anEntry(gTNTracer);
      anEntry << itsClass << "::ReadDynamic(): EOF while reading " << theLabel << "\n";
   }
   return false;
}

unsigned char FieldReader::ReadSubItemType(const SubItemTexts& theTexts)
{
   unsigned char aType = 0;
   if (itsStream.DULRead(aType) != sizeof aType)
   {
      Raise(theTexts.itsNoType, TN_END_OF_FILE);
   }
   return aType;
}

void FieldReader::RefuseSubItem(const SubItemTexts& theTexts)
{
   if (theTexts.isUnknownSkipped)
   {
      itsStream.Skip(static_cast<unsigned int>(GetBytesLeft()));
   }
   Raise(theTexts.itsUnknownType, TN_INVALID_ITEM);
}
