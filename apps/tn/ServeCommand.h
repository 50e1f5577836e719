// tn serve: a DICOM node that answers its peers.
#pragma once

#include "apps/tn/Command.h"
#include "apps/tn/Node.h"
#include "apps/tn/PrintOptions.h"
#include "apps/tn/QueryOptions.h"
#include "apps/tn/StorageOptions.h"
#include "apps/tn/Tracing.h"

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
