// tn convert: writes DICOM files in another transfer syntax.
#pragma once

#include <string>

#include "apps/tn/Command.h"
class Conversion;

class ConvertCommand : public Command
{
public:
   explicit ConvertCommand(CLI::App& theProgram);

   int Run() override;

private:
   enum class Result
   {
      Done,
      Refused,
      NotDICOM,
      CouldNotRead,
      CouldNotWrite
   };

   Result ConvertFile(Conversion& theConversion, const std::string& theSource, const std::string& theTarget,
                      std::string& theFault);
   int ConvertOne(Conversion& theConversion);
   int ConvertFolder(Conversion& theConversion);

   std::string itsSource;
   std::string itsTarget;
   std::string itsSyntax = "same";
   std::string itsData;
   bool itsIsRecursive = false;
};
