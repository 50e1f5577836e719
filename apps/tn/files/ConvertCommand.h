// tn convert: writes DICOM files in another transfer syntax.
#pragma once

#include <string>

#include "apps/tn/base/Command.h"
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
      NoDICOMFile,
      CouldNotRead,
      CouldNotWrite
   };

   // theText is what there is to say of the file, empty when all is well.
   Result ConvertFile(Conversion& theConversion, const std::string& theSource, const std::string& theTarget,
                      std::string& theText);
   int ConvertOne(Conversion& theConversion);
   int ConvertFolder(Conversion& theConversion);

   std::string itsSource;
   std::string itsTarget;
   std::string itsSyntax = "same";
   std::string itsData;
   bool itsIsRecursive = false;
};
