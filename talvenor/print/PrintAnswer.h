// What the SCP of print management answers a request with.
#pragma once

#include <functional>

#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dictionary/MAttributeTag.h"
#include "talvenor/foundation/BasicTypes.h"

struct PrintAnswer
{
   UINT16 itsStatus = 0;
   RWCString itsComment; // 64 characters at most (LO)
   RWTValOrderedVector<MAttributeTag> itsOffending;
   DICOMDataObject* itsDataset = nullptr; // attributes to tell; borrowed until the answer is sent

   // Success, or a warning: the request was carried out (PS3.7 C).
   bool IsDone() const
   {
      return itsStatus == 0 || itsStatus == 0x0107 || itsStatus == 0x0116 || (itsStatus & 0xF000) == 0xB000;
   }
   bool HasDataset() const { return itsDataset != nullptr && !itsDataset->IsEmpty(); }
};

// Carries a request out, once its data set has been read, and says what to answer. Called with that data set, which is
// empty when the request had none.
using PrintDecision = std::function<PrintAnswer(DICOMDataObject& theDataset)>;
