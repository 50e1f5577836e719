#include "talvenor/print/PrintRequest.h"

#include <algorithm>
#include <iterator>

namespace
{
constexpr const NService* kRequests[] = {&kNGet, &kNSet, &kNAction, &kNCreate, &kNDelete};
}

const NService* FindRequest(UINT16 theField)
{
   const auto aPlace = std::find_if(std::begin(kRequests), std::end(kRequests), [theField](const NService* theKind) {
      return theKind->itsRequest.itsField == theField;
   });
   return aPlace != std::end(kRequests) ? *aPlace : nullptr;
}
