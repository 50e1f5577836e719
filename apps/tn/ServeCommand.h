// tn serve: a DICOM node that answers its peers.
#pragma once

#include "apps/tn/Command.h"
#include "apps/tn/Node.h"
#include "apps/tn/Tracing.h"

class ServeCommand : public Command
{
public:
   explicit ServeCommand(CLI::App& theProgram);
   int Run() override;

private:
   Node::Settings itsSettings;
   Tracing itsTracing;
};
