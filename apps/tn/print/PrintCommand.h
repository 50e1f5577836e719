// tn print: prints images on the films of a DICOM printer (PS3.4 H as SCU), and asks for its status.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "apps/tn/base/Command.h"
#include "apps/tn/base/Tracing.h"
#include "apps/tn/network/Requester.h"
#include "apps/tn/print/PrintImage.h"
#include "apps/tn/print/PrintSession.h"

class PrintCommand : public Command
{
public:
   explicit PrintCommand(CLI::App& theProgram);

   int Run() override;

private:
   void AddFilmOptions();
   void CheckUse();
   int ShowStatus();
   int Print();
   PrintSession::Images NextImages(std::size_t& theNext);
   PrintAttributes SessionAttributes() const;
   PrintAttributes FilmAttributes() const;
   void TellFile(const std::string& thePath, const std::string& theText);
   void Tell(const std::string& theText) const;

   Requester itsRequester;
   Tracing itsTracing;
   std::vector<std::string> itsPaths;
   bool itsIsStatus = false;
   bool itsIsWhole = false; // the session is printed at once
   std::string itsLayout = "1x1";
   unsigned int itsFilmColumns = 1;
   unsigned int itsFilmRows = 1;
   std::string itsSize;
   std::string itsOrientation;
   std::string itsMedium;
   std::string itsPriority;
   unsigned int itsCopies = 1;
   UINT32 itsFrame = 1;
   PrintImageForm itsForm;
   std::size_t itsFailed = 0; // files that cannot be printed
};
