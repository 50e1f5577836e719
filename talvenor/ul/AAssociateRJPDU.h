// A-ASSOCIATE-RJ (PS3.8 9.3.4): refuses an association, for now or for good, and says who found what reason. Any bytes
// can be received and sent; the enumerations name those of the standard.
#pragma once

#include "talvenor/ul/ULPDU.h"

class TALVENOR_API AAssociateRJPDU : public ULPDU<AAssociateRJPDU>
{
public:
   static constexpr unsigned char itsPDUType = 3;

   // PS3.8 table 9-21. What a reason means depends on the source.
   enum Result : unsigned char
   {
      RejectedPermanent = 1,
      RejectedTransient = 2
   };
   enum Source : unsigned char
   {
      ServiceUser = 1,
      ServiceProviderACSE = 2,
      ServiceProviderPresentation = 3
   };
   enum Reason : unsigned char
   {
      // source ServiceUser
      UserNotGiven = 1,
      ApplicationContextNameNotSupported = 2,
      CallingAETitleNotRecognized = 3,
      CalledAETitleNotRecognized = 7,
      // source ServiceProviderACSE
      ACSENotGiven = 1,
      ProtocolVersionNotSupported = 2,
      // source ServiceProviderPresentation
      TemporaryCongestion = 1,
      LocalLimitExceeded = 2
   };

   AAssociateRJPDU() = default;
   AAssociateRJPDU(unsigned char theResult, unsigned char theSource, unsigned char theReason)
       : itsResult(theResult), itsSource(theSource), itsReason(theReason)
   {}

   bool operator==(const AAssociateRJPDU& theOther) const = default;

   unsigned char GetResult() const { return itsResult; }
   void SetResult(unsigned char theResult) { itsResult = theResult; }
   unsigned char GetSource() const { return itsSource; }
   void SetSource(unsigned char theSource) { itsSource = theSource; }
   unsigned char GetReason() const { return itsReason; }
   void SetReason(unsigned char theReason) { itsReason = theReason; }

private:
   friend class ULPDU<AAssociateRJPDU>;
   template <class Self, class Visitor>
   static int Fields(Self& thePDU, Visitor& theVisitor);

   unsigned char itsResult = RejectedPermanent;
   unsigned char itsSource = ServiceProviderPresentation;
   unsigned char itsReason = TemporaryCongestion;
};

extern template class ULPDU<AAssociateRJPDU>;
