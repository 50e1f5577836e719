#include "talvenor/ul/PDUInputStream.h"

#include <algorithm>

#include "talvenor/foundation/TNTrace.h"
#include "talvenor/io/TNEndian.h"
#include "talvenor/ul/DULStream.h"
#include "talvenor/ul/FieldDumper.h"
#include "talvenor/ul/ULFailure.h"

namespace
{
// A header, and the body of the smallest PDU but one: reading that far ahead waits for nothing that does not come.
constexpr unsigned int kReadAheadOfHeader = 10;

constexpr char kEndInSkip[] = "PDUInputStream::Skip: EOF before end of PDU data";

void TraceStep(const char* theText)
{
   if (gTNTracer(TNTrace::TNTracePDUVerbose))
   {
      LogEntry anEntry(gTNTracer);
      anEntry << "PDUInputStream::Start(): " << theText << "\n";
   }
}

[[noreturn]] void RaiseHeaderFailure(const char* theText, unsigned char theType, const char* theEnd,
                                     TNResultCode theCode)
{
   RaiseULFailure("PDUInputStream::ReadHeader(): ", theText + PDUTypes::PDUTypeToString(theType) + theEnd, theCode);
}
} // namespace

UINT32 PDUInputStream::itsDefaultMaxPDUReceiveLength = 32768;

PDUInputStream::PDUInputStream(DULStream& theStream)
    : itsStream(&theStream), itsMaxPDUReceiveLength(itsDefaultMaxPDUReceiveLength)
{}

PDUInputStream::PDUInputStream(const PDUInputStream& theOther) = default;

PDUInputStream::~PDUInputStream() = default;

int PDUInputStream::Start()
{
   if (gTNTracer(TNTrace::TNTracePDUVerbose))
   {
      LogEntry anEntry(gTNTracer);
      anEntry << "PDUInputStream::Start() entered: HasMoreData() == " << HasMoreData() << "\n";
   }
   if (itsRemainingLength == 0)
   {
      TraceStep("calling ReadHeader()");
      return ReadHeader();
   }
   if (itsRemainingLength == itsPDULength)
   {
      TestHeaderAgain();
   }
   TraceStep("return now - more data available in current PDU");
   return 1;
}

// The type is looked at before anything else is waited for: who speaks another protocol learns it from its first byte.
int PDUInputStream::ReadHeader()
{
   itsStream->SetReadAheadLimit(kReadAheadOfHeader);
   unsigned char aType = 0;
   if (ReadFromTransport(&aType, 1) == 0)
   {
      return 0;
   }
   itsPDUType = IsPDUType(aType) ? aType : 0;
   if (itsPDUType == 0)
   {
      RaiseHeaderFailure("Received ", itsPDUType, "", TN_INVALID_PDU);
   }

   unsigned char aRest[5] = {}; // reserved byte and length
   const unsigned int aCount = ReadFromTransport(aRest, sizeof aRest);
   if (aCount < 2)
   {
      return 0;
   }
   itsReserved = aRest[0];
   if (aCount < sizeof aRest)
   {
      RaiseHeaderFailure("Short read while reading PDU length of ", itsPDUType, "", TN_END_OF_FILE);
   }
   itsPDULength = TNEndian::Load<UINT32, TNEndian::BigEndian>(aRest + 1);
   if (itsMaxPDUReceiveLength != 0 && itsPDULength > itsMaxPDUReceiveLength)
   {
      RaiseHeaderFailure("Received ", itsPDUType, " with length exceeding allowed maximum length",
                         TN_PDU_LENGTH_MISMATCH);
   }

   itsRemainingLength = itsPDULength;
   itsStream->SetReadAheadLimit(itsPDULength);
   if (gTNTracer(TNTrace::TNTracePDU))
   {
      LogEntry anEntry(gTNTracer);
      anEntry << "PDUInputStream::ReadHeader(): Read PDU Header: \n";
      Dump(gTNTracer);
   }
   return 1;
}

// The type was tested when it was read; the maximum may have changed since, and now includes the header.
void PDUInputStream::TestHeaderAgain() const
{
   if (itsMaxPDUReceiveLength != 0 && UINT64{itsPDULength} + 6 > itsMaxPDUReceiveLength)
   {
      TraceStep("throwing exception: length exceeding allowed maximum length");
      RaiseHeaderFailure("Received ", itsPDUType, " with length exceeding allowed maximum length",
                         TN_PDU_LENGTH_MISMATCH);
   }
}

unsigned int PDUInputStream::ReadFromTransport(unsigned char* theBuffer, unsigned int theCount)
{
   unsigned int aTotal = 0;
   while (aTotal < theCount)
   {
      const unsigned int aCount = itsStream->Read(theBuffer + aTotal, theCount - aTotal);
      if (aCount == 0)
      {
         break;
      }
      aTotal += aCount;
   }
   return aTotal;
}

unsigned int PDUInputStream::Read(unsigned char* theBuffer, unsigned int theCount)
{
   const unsigned int aWanted = std::min(theCount, itsRemainingLength);
   unsigned int aTotal = 0;
   while (aTotal < aWanted)
   {
      const unsigned int aCount = itsStream->Read(theBuffer + aTotal, aWanted - aTotal);
      if (aCount == 0)
      {
         if (aTotal != 0)
         {
            RaiseULFailure("PDUInputStream::Read: EOF before end of PDU data", TN_END_OF_FILE);
         }
         break;
      }
      aTotal += aCount;
      itsRemainingLength -= aCount;
      if (gTNTracer(TNTrace::TNTracePDU))
      {
         LogEntry anEntry(gTNTracer);
         anEntry << "PDUInputStream::Read(uchar_t* theBuffer, size_t theLength): Read PDU data: requested " << theCount
                 << ", this pass " << aCount << ", total " << aTotal << "\n";
      }
   }
   return aTotal;
}

unsigned int PDUInputStream::Skip(unsigned int theCount)
{
   const unsigned int aWanted = std::min(theCount, itsRemainingLength);
   unsigned int aTotal = 0;
   while (aTotal < aWanted)
   {
      const unsigned int aCount = itsStream->Skip(aWanted - aTotal);
      if (aCount == 0)
      {
         if (aTotal != 0)
         {
            RaiseULFailure(kEndInSkip, TN_END_OF_FILE);
         }
         break;
      }
      aTotal += aCount;
      itsRemainingLength -= aCount;
   }
   return aTotal;
}

// The end of the connection inside a field is told by the count: whoever reads fields names the one that is missing.
unsigned int PDUInputStream::DULRead(unsigned char* theBuffer, unsigned int theCount)
{
   const unsigned int aCount = ReadFromTransport(theBuffer, std::min(theCount, itsRemainingLength));
   itsRemainingLength -= aCount;
   return aCount;
}

template <class T>
unsigned int PDUInputStream::ReadNumber(T& theValue)
{
   unsigned char aBytes[sizeof(T)];
   const unsigned int aCount = DULRead(aBytes, sizeof aBytes);
   if (aCount == sizeof(T))
   {
      theValue = TNEndian::Load<T, TNEndian::BigEndian>(aBytes);
   }
   return aCount;
}

unsigned int PDUInputStream::DULRead(unsigned char& theValue)
{
   return DULRead(&theValue, sizeof theValue);
}

unsigned int PDUInputStream::DULRead(unsigned short& theValue)
{
   return ReadNumber(theValue);
}

unsigned int PDUInputStream::DULRead(unsigned int& theValue)
{
   return ReadNumber(theValue);
}

int PDUInputStream::DiscardPDU()
{
   return Start() && Skip(itsRemainingLength) > 0;
}

unsigned int PDUInputStream::SkipRemaining()
{
   const UINT32 aLength = itsRemainingLength;
   if (Skip(aLength) != aLength)
   {
      RaiseULFailure(kEndInSkip, TN_END_OF_FILE);
   }
   return aLength;
}

unsigned int PDUInputStream::GetPreferredInputBlockSize() const
{
   return itsStream->GetPreferredInputBlockSize();
}

void PDUInputStream::SetPreferredInputBlockSize(unsigned int theSize)
{
   itsStream->SetPreferredInputBlockSize(theSize);
}

void PDUInputStream::Close()
{
   itsStream->Close();
}

void PDUInputStream::Dump(LogStream& theLog) const
{
   FieldDumper aDumper(theLog);
   aDumper.Line("PDU Type", std::to_string(itsPDUType) + " " + PDUTypeToString(itsPDUType));
   aDumper.Number("Reserved", itsReserved);
   aDumper.Number("PDU Length", itsPDULength);
   aDumper.Number("Remaining PDU Length", itsRemainingLength);
}
