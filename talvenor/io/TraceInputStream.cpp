#include "talvenor/io/TraceInputStream.h"

#include <algorithm>
#include <cstdio>
#include <ostream>

namespace
{

// Formatted apart from the stream, whose number base and fill belong to others.
void WriteByte(std::ostream& theText, UINT64 theOffset, unsigned int theByte)
{
   char aLine[80];
   const auto anOffset = static_cast<unsigned long long>(theOffset);
   std::snprintf(aLine, sizeof aLine, "%llu (0x%llx): 0x%x (%u)\n", anOffset, anOffset, theByte, theByte);
   theText << aLine;
}

} // namespace

unsigned int TraceInputStream::Read(unsigned char* theBuffer, unsigned int theCount)
{
   const unsigned int aCount = itsStream.Read(theBuffer, theCount);
   if (itsTrace != nullptr)
   {
      for (unsigned int i = 0; i < aCount; ++i)
      {
         WriteByte(*itsTrace, itsByteCounter + i, theBuffer[i]);
      }
   }
   Keep(theBuffer, aCount);
   itsByteCounter += aCount;
   return aCount;
}

void TraceInputStream::Keep(const unsigned char* theBytes, unsigned int theCount)
{
   const unsigned int aNew = std::min(theCount, itsHistorySize);
   const std::size_t anOldKept = std::min<std::size_t>(itsHistory.size(), itsHistorySize - aNew);
   itsHistory.erase(itsHistory.begin(), itsHistory.end() - static_cast<std::ptrdiff_t>(anOldKept));
   itsHistory.insert(itsHistory.end(), theBytes + (theCount - aNew), theBytes + theCount);
}

unsigned int TraceInputStream::Skip(unsigned int theCount)
{
   unsigned char aBuffer[2048];
   unsigned int aSkipped = 0;
   while (aSkipped < theCount)
   {
      const unsigned int aCount = Read(aBuffer, std::min<unsigned int>(theCount - aSkipped, sizeof aBuffer));
      if (aCount == 0)
      {
         break;
      }
      aSkipped += aCount;
   }
   return aSkipped;
}

void TraceInputStream::printHistory(std::ostream& theText) const
{
   UINT64 anOffset = itsByteCounter - itsHistory.size();
   for (const unsigned char aByte : itsHistory)
   {
      WriteByte(theText, anOffset++, aByte);
   }
}

void TraceInputStream::Seek(unsigned int thePosition)
{
   itsStream.Seek(thePosition);
}

int TraceInputStream::CanSeek() const
{
   return itsStream.CanSeek();
}

INT64 TraceInputStream::Length() const
{
   return itsStream.Length();
}

unsigned int TraceInputStream::GetStreamPosition() const
{
   return itsStream.GetStreamPosition();
}

void TraceInputStream::Pushback(const unsigned char* theBytes, unsigned int theCount)
{
   itsStream.Pushback(theBytes, theCount);
}

unsigned int TraceInputStream::GetPushbackLimit() const
{
   return itsStream.GetPushbackLimit();
}

unsigned int TraceInputStream::GetPreferredInputBlockSize() const
{
   return itsStream.GetPreferredInputBlockSize();
}

void TraceInputStream::SetPreferredInputBlockSize(unsigned int theSize)
{
   itsStream.SetPreferredInputBlockSize(theSize);
}

void TraceInputStream::Close()
{
   itsStream.Close();
}
