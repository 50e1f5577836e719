// A request to the SCP of print management, as its command set says it. Not part of the library's interface.
#pragma once

#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dimse/NMessage.h"
#include "talvenor/print/AbstractPrintManagementMeta.h"
#include "talvenor/print/PrintStatus.h"

// Null for the Command Field of no request that an SCP takes.
const NService* FindRequest(UINT16 theField);

inline constexpr UINT16 kPrintAction = 1; // Action Type ID, PS3.4 H.4.1.2.4

struct AbstractPrintManagementMeta::Request
{
   PDU_Service& itsService;
   const DICOMCommandObject& itsCommand;
   const NService& itsKind;
   UID itsSOPClass;
   UID itsInstance;

   bool Is(const NService& theKind) const { return &itsKind == &theKind; }
   bool HasData() const { return HasDataset(itsCommand); }

   // Answers instead of what was asked for.
   int Refuse(const PrintAnswer& theAnswer) const
   {
      UID aSOPClass = itsSOPClass;
      const UINT16 aType = itsKind.itsTypeID != 0 ? itsCommand.GetUINT16(0, itsKind.itsTypeID) : UINT16{0};
      SendNResponse(itsKind, itsService, aSOPClass,
                    {itsCommand, itsInstance, theAnswer.itsStatus, theAnswer.itsComment, theAnswer.itsOffending,
                     DataSetType::kNoDataset, aType});
      return 0;
   }
   int Refuse(UINT16 theStatus, const char* theComment) const { return Refuse({theStatus, theComment, {}}); }
};
