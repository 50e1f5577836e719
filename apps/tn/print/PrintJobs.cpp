#include "apps/tn/print/PrintJobs.h"

#include <algorithm>

#include "apps/tn/base/LocalTime.h"
#include "apps/tn/base/Tags.h"
#include "apps/tn/base/ValueText.h"
#include "apps/tn/print/PrintTags.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/foundation/MUIDFactory.h"
#include "talvenor/print/AbstractPrintManagementMeta.h"

const AbstractPrintJob& PrintJobs::Add(AbstractPrintManagementMeta& theSession, const std::string& thePrinter,
                                       const std::string& theOriginator)
{
   auto aJob = std::make_unique<AbstractPrintJob>(theSession);
   aJob->SetSOPClassUID(PrintSOPClass::kPrintJob);
   aJob->SetSOPInstanceUID(MUIDFactory::GetInstance().GetUID());
   const std::string aNow = LocalTimeText("%Y%m%d%H%M%S");
   const std::string aPriority = TextOf(theSession, PrintTags::kPrintPriority);
   const bool isKnown = aPriority == "LOW" || aPriority == "HIGH"; // others are kept with the session, and may be long

   // PS3.3 C.13.8
   const struct
   {
      UINT32 itsTag;
      UINT16 itsType;
      std::string itsText;
   } kAttributes[] = {
       {PrintTags::kPrintPriority, VRCode::CS, isKnown ? aPriority : "MED"},
       {PrintTags::kExecutionStatus, VRCode::CS, "DONE"},
       {PrintTags::kExecutionStatusInfo, VRCode::CS, "NORMAL"},
       {PrintTags::kCreationDate, VRCode::DA, aNow.substr(0, 8)},
       {PrintTags::kCreationTime, VRCode::TM, aNow.substr(8)},
       {PrintTags::kOriginator, VRCode::AE, theOriginator},
       {PrintTags::kPrinterName, VRCode::LO, thePrinter},
   };
   for (const auto& anAttribute : kAttributes)
   {
      aJob->DICOMObject::Push(MakeElement(anAttribute.itsTag, anAttribute.itsType, anAttribute.itsText).release());
   }
   itsJobs.push_back(std::move(aJob));
   if (itsJobs.size() > kMost)
   {
      itsJobs.pop_front();
   }
   return *itsJobs.back();
}

AbstractPrintJob* PrintJobs::Find(const UID& theInstance) const
{
   const auto aPlace = std::find_if(itsJobs.begin(), itsJobs.end(),
                                    [&](const auto& theJob) { return theJob->GetSOPInstanceUID() == theInstance; });
   return aPlace != itsJobs.end() ? aPlace->get() : nullptr;
}
