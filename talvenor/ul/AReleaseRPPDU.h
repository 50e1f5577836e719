// A-RELEASE-RP (PS3.8 9.3.7): agrees to the end of the association. It carries nothing.
#pragma once

#include "talvenor/ul/ULPDU.h"

class TALVENOR_API AReleaseRPPDU : public ULPDU<AReleaseRPPDU>
{
public:
   static constexpr unsigned char itsPDUType = 6;

   bool operator==(const AReleaseRPPDU& theOther) const = default;

private:
   friend class ULPDU<AReleaseRPPDU>;
   template <class Self, class Visitor>
   static int Fields(Self& thePDU, Visitor& theVisitor);
};

extern template class ULPDU<AReleaseRPPDU>;
