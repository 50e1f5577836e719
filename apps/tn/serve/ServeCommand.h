// tn serve: a DICOM node that answers its peers.
#pragma once

#include "apps/tn/answers/QueryOptions.h"
#include "apps/tn/archive/StorageOptions.h"
#include "apps/tn/base/Command.h"
#include "apps/tn/base/Tracing.h"
#include "apps/tn/node/Node.h"
#include "apps/tn/print/PrintOptions.h"

class ServeCommand : public Command
{
public:
   explicit ServeCommand(CLI::App& theProgram);
   int Run() override;

private:
   void SetDefaults() const;

   Node::Settings itsSettings;
   unsigned int itsMaxPDU = 131072; // bytes; 0: without limit
   StorageOptions itsStorage;
   QueryOptions itsQuery;
   PrintOptions itsPrint;
   Tracing itsTracing;
};
