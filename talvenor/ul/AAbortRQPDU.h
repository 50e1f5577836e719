// A-ABORT (PS3.8 9.3.8): ends the association at once, and says who found what reason. Any two bytes can be received,
// and sent; the enumerations name those of the standard.
#pragma once

#include "talvenor/ul/ULPDU.h"

class TALVENOR_API AAbortRQPDU : public ULPDU<AAbortRQPDU>
{
public:
   static constexpr unsigned char itsPDUType = 7;

   // PS3.8 table 9-26.
   enum AbortSource : unsigned char
   {
      AbortSourceServiceUser = 0,
      AbortSourceReserved = 1,
      AbortSourceServiceProvider = 2
   };
   enum AbortReason : unsigned char
   {
      AbortReasonNotSpecified = 0,
      AbortReasonUnrecognizedPDU = 1,
      AbortReasonUnexpectedPDU = 2,
      AbortReasonReserved = 3,
      AbortReasonUnrecognizedPDUParameter = 4,
      AbortReasonUnexpectedPDUParameter = 5,
      AbortReasonInvalidPDUParameter = 6
   };

   AAbortRQPDU() = default;
   AAbortRQPDU(unsigned char theSource, unsigned char theReason) : itsSource(theSource), itsReason(theReason) {}

   bool operator==(const AAbortRQPDU& theOther) const = default;

   unsigned char GetSource() const { return itsSource; }
   void SetSource(unsigned char theSource) { itsSource = theSource; }
   unsigned char GetReason() const { return itsReason; }
   void SetReason(unsigned char theReason) { itsReason = theReason; }

private:
   friend class ULPDU<AAbortRQPDU>;
   template <class Self, class Visitor>
   static int Fields(Self& thePDU, Visitor& theVisitor);

   unsigned char itsSource = 3; // no source of the standard: to be set
   unsigned char itsReason = AbortReasonUnrecognizedPDU;
};

extern template class ULPDU<AAbortRQPDU>;
