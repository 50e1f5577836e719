// The print jobs that an association has made (PS3.4 H.4.5). A job is over when its client learns of it: films are
// acknowledged once they are written. It can be asked for as long as the association lasts, also when the film session
// is gone; of very many the last ones.
#pragma once

#include <deque>
#include <memory>
#include <string>

#include "talvenor/print/AbstractPrinter.h"

class PrintJobs
{
public:
   static constexpr std::size_t kMost = 100;

   // The job of a print of theSession, which outlives it.
   const AbstractPrintJob& Add(AbstractPrintManagementMeta& theSession, const std::string& thePrinter,
                               const std::string& theOriginator);

   // Null when there is none.
   AbstractPrintJob* Find(const UID& theInstance) const;

private:
   std::deque<std::unique_ptr<AbstractPrintJob>> itsJobs;
};
