#include "apps/tn/print/PrintCommand.h"

#include <charconv>
#include <iostream>
#include <map>

#include <CLI/CLI.hpp>

#include "apps/tn/base/Dictionaries.h"
#include "apps/tn/base/ErrorText.h"
#include "apps/tn/base/ExitCode.h"
#include "apps/tn/base/Interruption.h"
#include "apps/tn/base/NumberCheck.h"
#include "apps/tn/files/DatasetChecks.h"
#include "apps/tn/files/InputFile.h"
#include "apps/tn/network/NetworkFailure.h"
#include "apps/tn/print/PrintTags.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/foundation/OneLine.h"

namespace
{
using namespace PrintTags;

constexpr unsigned int kMostOnSide = 20;

// "2x3": columns and rows.
bool ReadLayout(const std::string& theText, unsigned int& theColumns, unsigned int& theRows)
{
   const char* const anEnd = theText.data() + theText.size();
   const auto aColumns = std::from_chars(theText.data(), anEnd, theColumns);
   if (aColumns.ec != std::errc() || aColumns.ptr == anEnd || *aColumns.ptr != 'x')
   {
      return false;
   }
   const auto aRows = std::from_chars(aColumns.ptr + 1, anEnd, theRows);
   return aRows.ec == std::errc() && aRows.ptr == anEnd && theColumns >= 1 && theColumns <= kMostOnSide &&
          theRows >= 1 && theRows <= kMostOnSide;
}

// A code string (PS3.5 6.2), as sizes and media are; only printers know which they have.
std::string CheckCode(const std::string& theText)
{
   const bool isCode =
       theText.size() <= 16 && theText.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789 _") == std::string::npos;
   return isCode ? "" : theText + ": at most 16 capital letters, digits, blanks and _";
}
} // namespace

PrintCommand::PrintCommand(CLI::App& theProgram)
    : Command(theProgram, "print", "Print images on a DICOM printer"), itsRequester(itsOptions), itsTracing(itsOptions)
{
   itsOptions.add_option("FILE", itsPaths, "DICOM files with images, in the order in which they come on the films");
   itsOptions.add_flag("--status", itsIsStatus, "Only ask how the printer is");
   AddFilmOptions();
   itsOptions.add_option("--frame", itsFrame, "Which frame of each file")
       ->type_name("N")
       ->check(Positive())
       ->capture_default_str();
   itsOptions.add_flag("--colour,--color", itsForm.itsIsColour, "Print colours; otherwise they become grey");
   itsOptions.add_option("--bits", itsForm.itsBits, "Bits of grey levels")
       ->check(CLI::IsMember({8, 12}))
       ->capture_default_str();
   itsOptions.add_flag("--session", itsIsWhole, "Send all films and print them at once, instead of film by film");
   itsOptions.footer(
       "Images are prepared for the printer: rescaled, in their window or VOI LUT (in the whole range of their levels "
       "if\n"
       "they have none), MONOCHROME1 and palettes resolved, compressed ones decompressed.\n\n"
       "Exit codes: 0 all printed, 1 some files could not be, or the printer tells FAILURE to --status, 2 wrong use,\n"
       "3 no file could be read, 5 no connection, 6 association rejected, 7 printing is not accepted, 8 the printer\n"
       "failed or refused, 9 no answer in time, 10 interrupted.\n\n"
       "Examples:\n  tn print --status PRINTER@printer.example:104\n"
       "  tn print --film 2x3 --size 14INX17IN PRINTER@printer.example:104 *.dcm");
}

void PrintCommand::AddFilmOptions()
{
   itsOptions.add_option("--film", itsLayout, "How many images side by side, and one above the other")
       ->type_name("COLSxROWS")
       ->capture_default_str();
   itsOptions.add_option("--size", itsSize, "Film size, as 14INX17IN, A4 or 24CMX30CM; otherwise the printer's")
       ->check(CheckCode);
   itsOptions.add_option("--orientation", itsOrientation, "Otherwise the printer's")
       ->transform(CLI::CheckedTransformer(
           std::map<std::string, std::string>{{"portrait", "PORTRAIT"}, {"landscape", "LANDSCAPE"}}));
   itsOptions.add_option("--copies", itsCopies, "Of each film")->check(CLI::Range(1, 999))->capture_default_str();
   itsOptions.add_option("--medium", itsMedium, "As PAPER, \"CLEAR FILM\" or \"BLUE FILM\"; otherwise the printer's")
       ->check(CheckCode);
   itsOptions.add_option("--priority", itsPriority, "Otherwise the printer's")
       ->transform(CLI::CheckedTransformer(
           std::map<std::string, std::string>{{"low", "LOW"}, {"medium", "MED"}, {"high", "HIGH"}}));
}

void PrintCommand::CheckUse()
{
   if (itsPaths.empty() != itsIsStatus)
   {
      throw std::invalid_argument(itsIsStatus ? "--status prints no files" : "no files to print are named");
   }
   if (!ReadLayout(itsLayout, itsFilmColumns, itsFilmRows))
   {
      throw std::invalid_argument("--film " + itsLayout + ": as 2x3, two columns and three rows, 20 at most");
   }
}

int PrintCommand::Run()
{
   return RunTellingFaults("print", itsRequester.GetPeer(), [this] {
      CheckUse();
      itsTracing.Begin();
      LoadDictionaries("");
      itsRequester.SetDefaults();
      Interruption::Take();
      return itsIsStatus ? ShowStatus() : Print();
   });
}

int PrintCommand::ShowStatus()
{
   PrintSession aSession(itsRequester, itsForm.itsIsColour, {}, [this](const std::string& theText) { Tell(theText); });
   const PrintSession::Status aStatus = aSession.AskPrinter();
   std::cout << itsRequester.GetPeer().Text() << " is " << aStatus.Text() << std::endl;
   aSession.End();
   return aStatus.itsStatus == "FAILURE" ? ExitCode::kSomeFailed : ExitCode::kDone;
}

// A printer in trouble may take films all the same, and print them later: it is told, and asked to.
int PrintCommand::Print()
{
   std::size_t aNext = 0;
   PrintSession::Images anImages = NextImages(aNext);
   if (anImages.empty())
   {
      return ExitCode::kCouldNotRead;
   }
   PrintSession aSession(itsRequester, itsForm.itsIsColour, SessionAttributes(),
                         [this](const std::string& theText) { Tell(theText); });
   const PrintSession::Status aStatus = aSession.AskPrinter();
   std::cout << itsRequester.GetPeer().Text() << " is " << aStatus.Text() << std::endl;
   unsigned int aFilms = 0;
   for (; !anImages.empty(); anImages = NextImages(aNext))
   {
      if (Interruption::HasCome())
      {
         throw NetworkFailure(ExitCode::kCancelled, "interrupted after " + std::to_string(aFilms) + " films");
      }
      const std::size_t aCount = anImages.size();
      aSession.SendFilm(FilmAttributes(), std::move(anImages));
      const std::string aJob = itsIsWhole ? "" : aSession.PrintFilm();
      std::cout << "film " << ++aFilms << ": " << aCount << (aCount == 1 ? " image" : " images")
                << (itsIsWhole ? " sent" : " printed") << OnOneLine(aJob.empty() ? "" : ", " + aJob) << std::endl;
   }
   if (itsIsWhole)
   {
      const std::string aJob = aSession.PrintAll();
      std::cout << aFilms << (aFilms == 1 ? " film" : " films") << " printed"
                << OnOneLine(aJob.empty() ? "" : ", " + aJob) << std::endl;
   }
   aSession.End();
   return itsFailed == 0 ? ExitCode::kDone : ExitCode::kSomeFailed;
}

// Those of the next film. A file that cannot be printed is named, and leaves no gap.
PrintSession::Images PrintCommand::NextImages(std::size_t& theNext)
{
   PrintSession::Images anImages;
   for (; theNext < itsPaths.size() && anImages.size() < std::size_t{itsFilmColumns} * itsFilmRows; ++theNext)
   {
      const std::string& aPath = itsPaths[theNext];
      try
      {
         anImages.push_back(PreparePrintImage(aPath, itsFrame, itsForm));
      }
      catch (const ExceptionBase& anException)
      {
         TellFile(aPath, ErrorText(anException));
      }
      catch (const IncompleteDataset& anError)
      {
         TellFile(aPath, anError.what());
      }
   }
   return anImages;
}

PrintAttributes PrintCommand::SessionAttributes() const
{
   PrintAttributes anAttributes = {{kNumberOfCopies, std::to_string(itsCopies)}};
   if (!itsPriority.empty())
   {
      anAttributes.emplace_back(kPrintPriority, itsPriority);
   }
   if (!itsMedium.empty())
   {
      anAttributes.emplace_back(kMediumType, itsMedium);
   }
   return anAttributes;
}

PrintAttributes PrintCommand::FilmAttributes() const
{
   PrintAttributes anAttributes = {
       {kDisplayFormat, "STANDARD\\" + std::to_string(itsFilmColumns) + "," + std::to_string(itsFilmRows)}};
   if (!itsOrientation.empty())
   {
      anAttributes.emplace_back(kFilmOrientation, itsOrientation);
   }
   if (!itsSize.empty())
   {
      anAttributes.emplace_back(kFilmSize, itsSize);
   }
   return anAttributes;
}

void PrintCommand::TellFile(const std::string& thePath, const std::string& theText)
{
   ++itsFailed;
   std::cerr << OnOneLine("tn print: " + thePath + ": " + theText) << "\n";
}

void PrintCommand::Tell(const std::string& theText) const
{
   TellPeerLines("print", itsRequester.GetPeer().Text(), theText);
}
