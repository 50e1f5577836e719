// The PDUs whose body is four bytes (PS3.8 9.3.4, 9.3.6 to 9.3.8).
#include "talvenor/ul/AAbortRQPDU.h"
#include "talvenor/ul/AAssociateRJPDU.h"
#include "talvenor/ul/AReleaseRPPDU.h"
#include "talvenor/ul/AReleaseRQPDU.h"
#include "talvenor/ul/ULPDUBodies.h"

namespace
{
struct CodeText
{
   unsigned char itsSource; // 0: any
   unsigned char itsCode;
   const char* itsText;
};

// PS3.8 table 9-21.
constexpr CodeText kRejectResults[] = {{0, 1, "Rejected-Permanent"}, {0, 2, "Rejected-Transient"}};
constexpr CodeText kRejectSources[] = {
    {0, 1, "Service User"},
    {0, 2, "Service Provider (ASCE Related)"},
    {0, 3, "Service Provider (Presentation Related)"},
};
constexpr CodeText kRejectReasons[] = {
    {1, 1, "Not Given"},
    {1, 2, "Application Context Name Not Supported"},
    {1, 3, "Calling Application Entity Title Not Recognized"},
    {1, 7, "Called Application Entity Title Not Recognized"},
    {2, 1, "Not Given"},
    {2, 2, "Protocol version not supported"},
    {3, 1, "Temporary Congestion"},
    {3, 2, "Local Limit Exceeded"},
};

// PS3.8 table 9-26.
constexpr CodeText kAbortSources[] = {
    {0, 0, "Service User"},
    {0, 1, "Reserved (Shouldn't use)"},
    {0, 2, "Service Provider"},
};
constexpr CodeText kAbortReasons[] = {
    {0, 0, "Not Specified"},
    {0, 1, "Unrecognized PDU"},
    {0, 2, "Unexpected PDU"},
    {0, 3, "Reserved (Shouldn't use)"},
    {0, 4, "Unrecognized PDU Parameter"},
    {0, 5, "Unexpected PDU Parameter"},
    {0, 6, "Invalid PDU Parameter"},
};

template <std::size_t N>
const char* TextOf(const CodeText (&theTexts)[N], unsigned char theCode, const char* theOther,
                   unsigned char theSource = 0)
{
   for (const CodeText& aText : theTexts)
   {
      if (aText.itsCode == theCode && aText.itsSource == theSource)
      {
         return aText.itsText;
      }
   }
   return theOther;
}
} // namespace

template <class Self, class Visitor>
int AAssociateRJPDU::Fields(Self& thePDU, Visitor& theVisitor)
{
   return theVisitor.Reserved("itsReserved2", 1) &&
          theVisitor.Coded("Result", thePDU.itsResult,
                           TextOf(kRejectResults, thePDU.itsResult, "Invalid Result Code")) &&
          theVisitor.Coded("Source", thePDU.itsSource, TextOf(kRejectSources, thePDU.itsSource, "Invalid source")) &&
          theVisitor.Coded(
              "Reason", thePDU.itsReason,
              TextOf(kRejectReasons, thePDU.itsReason, "Invalid or Reserved Reason Code", thePDU.itsSource));
}

template <class Self, class Visitor>
int AReleaseRQPDU::Fields(Self&, Visitor& theVisitor)
{
   return theVisitor.Reserved("itsReserved2", 4);
}

template <class Self, class Visitor>
int AReleaseRPPDU::Fields(Self&, Visitor& theVisitor)
{
   return theVisitor.Reserved("itsReserved2", 4);
}

template <class Self, class Visitor>
int AAbortRQPDU::Fields(Self& thePDU, Visitor& theVisitor)
{
   return theVisitor.Reserved("itsReserved2", 1) && theVisitor.Reserved("itsReserved3", 1) &&
          theVisitor.Coded("Source", thePDU.itsSource, TextOf(kAbortSources, thePDU.itsSource, "Invalid Source")) &&
          theVisitor.Coded("Reason", thePDU.itsReason, TextOf(kAbortReasons, thePDU.itsReason, "Invalid Reason Code"));
}

template class ULPDU<AAssociateRJPDU>;
template class ULPDU<AReleaseRQPDU>;
template class ULPDU<AReleaseRPPDU>;
template class ULPDU<AAbortRQPDU>;
