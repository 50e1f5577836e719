// The operations of ULPDU. A source that defines the field list of a PDU includes this and ends with
//
//    template class ULPDU<ThePDU>;
//
// Internal.
#pragma once

#include "talvenor/foundation/TNTrace.h"
#include "talvenor/ul/FieldDumper.h"
#include "talvenor/ul/FieldVisitors.h"
#include "talvenor/ul/ULPDU.h"
#include "talvenor/ul/ULPDUTexts.h"

constexpr UINT32 kPDUHeaderLength = 6; // type, reserved, length
constexpr UINT32 kLongestULPDU = 1 << 20;

template <class PDU>
void TraceULPDU(const ULPDU<PDU>& thePDU, const char* theText)
{
   if (theText != nullptr && gTNTracer(TNTrace::TNTraceAssociation))
   {
      const RWCString aText = TextsOfULPDU(PDU::itsPDUType).itsClass + RWCString(theText);
      LogEntry anEntry(gTNTracer);
      anEntry << aText << "\n";
      if (aText.back() == ' ')
      {
         thePDU.Dump(gTNTracer);
      }
   }
}

template <class PDU>
ULPDU<PDU>::~ULPDU() = default;

template <class PDU>
unsigned int ULPDU<PDU>::Size()
{
   FieldSizer aSizer;
   PDU::Fields(static_cast<PDU&>(*this), aSizer);
   itsPDULength = aSizer.GetSize();
   return itsPDULength + kPDUHeaderLength;
}

template <class PDU>
int ULPDU<PDU>::Write(PDUOutputStream& theStream)
{
   const ULPDUTexts& aText = TextsOfULPDU(PDU::itsPDUType);
   Size();
   TraceULPDU(*this, aText.itsBeforeWriting);
   theStream.SetPDUType(PDU::itsPDUType);
   FieldWriter aWriter(theStream);
   if (!PDU::Fields(static_cast<PDU&>(*this), aWriter))
   {
      theStream.DropPDU();
      return 0;
   }
   theStream.FinishPDU();
   theStream.FlushOutput();
   TraceULPDU(*this, aText.itsAfterWriting);
   return 1;
}

template <class PDU>
int ULPDU<PDU>::Read(PDUInputStream& theStream, unsigned int& theBytesRead)
{
   const ULPDUTexts& aText = TextsOfULPDU(PDU::itsPDUType);
   theBytesRead = 0;
   if (!theStream.Start())
   {
      RaiseULFailure(aText.itsClass, "::Read: EOF while reading PDU Header", TN_END_OF_FILE);
   }
   if (theStream.GetPDUType() != PDU::itsPDUType)
   {
      RWCString aTail = aText.itsWrongType;
      if (aTail.back() == '(')
      {
         aTail += WrongTypeText(theStream.GetPDUType(), PDU::itsPDUType);
      }
      RaiseULFailure(aText.itsClass, aTail, TN_PDU_TYPE_MISMATCH);
   }
   ReadDynamic(theStream, theBytesRead);
   ++theBytesRead;
   return 1;
}

template <class PDU>
int ULPDU<PDU>::ReadDynamic(PDUInputStream& theStream, unsigned int& theBytesRead)
{
   const ULPDUTexts& aText = TextsOfULPDU(PDU::itsPDUType);
   itsReserved = theStream.GetReserved();
   itsPDULength = theStream.GetPDULength();
   TraceULPDU(*this, aText.itsBeforeReading);

   FieldReader aReader(theStream, aText.itsClass);
   if (itsPDULength > kLongestULPDU)
   {
      aReader.Raise("::ReadDynamic: invalid PDU length", TN_PDU_LENGTH_MISMATCH);
   }
   aReader.Begin(itsPDULength);
   const int isRead = PDU::Fields(static_cast<PDU&>(*this), aReader);
   theBytesRead = kPDUHeaderLength - 1 + aReader.GetBytesRead();
   if (!isRead)
   {
      aReader.Raise("::ReadDynamic: EOF while reading body", TN_END_OF_FILE);
   }
   if (aReader.GetBytesLeft() != 0)
   {
      const RWCString aCounts = "::ReadDynamic(): error: Bytes read (" + std::to_string(theBytesRead) +
                                ") != Length received (" + std::to_string(itsPDULength) + ")";
      TraceULPDU(*this, aCounts.c_str());
      aReader.Raise(aText.itsWrongLength, aText.itsWrongLengthCode);
   }
   TraceULPDU(*this, aText.itsAfterReading);
   return 1;
}

template <class PDU>
void ULPDU<PDU>::Dump(LogStream& theLog) const
{
   FieldDumper aDumper(theLog);
   aDumper.Heading(TextsOfULPDU(PDU::itsPDUType).itsClass + RWCString(":"));
   PDU::Fields(static_cast<const PDU&>(*this), aDumper);
}
