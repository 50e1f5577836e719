// A-RELEASE-RQ (PS3.8 9.3.6): asks the peer to end the association. It carries nothing.
#pragma once

#include "talvenor/ul/ULPDU.h"

class TALVENOR_API AReleaseRQPDU : public ULPDU<AReleaseRQPDU>
{
public:
   static constexpr unsigned char itsPDUType = 5;

   bool operator==(const AReleaseRQPDU& theOther) const = default;

private:
   friend class ULPDU<AReleaseRQPDU>;
   template <class Self, class Visitor>
   static int Fields(Self& thePDU, Visitor& theVisitor);
};

extern template class ULPDU<AReleaseRQPDU>;
