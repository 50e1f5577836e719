#include "apps/tn/files/ConvertCommand.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "apps/tn/base/Dictionaries.h"
#include "apps/tn/base/ErrorText.h"
#include "apps/tn/base/ExitCode.h"
#include "apps/tn/base/FilesBelow.h"
#include "apps/tn/base/Progress.h"
#include "apps/tn/files/Conversion.h"
#include "apps/tn/files/DatasetChecks.h"
#include "apps/tn/files/InputFile.h"
#include "talvenor/foundation/OneLine.h"
#include "talvenor/transfer/TransferSyntaxType.h"

namespace fs = std::filesystem;

namespace
{
struct SyntaxName
{
   const char* itsName;
   const RWCString& itsUID;
};

const RWCString kSame;
const SyntaxName kSyntaxes[] = {
    {"same", kSame},
    {"implicit", TransferSyntaxType::TSLEImplicitUID},
    {"explicit", TransferSyntaxType::TSLEExplicitUID},
    {"big-endian", TransferSyntaxType::TSBEExplicitUID},
};

std::vector<std::string> Names()
{
   std::vector<std::string> aNames;
   for (const SyntaxName& aSyntax : kSyntaxes)
   {
      aNames.push_back(aSyntax.itsName);
   }
   return aNames;
}

const RWCString& FindUID(const std::string& theName)
{
   return std::find_if(std::begin(kSyntaxes), std::end(kSyntaxes),
                       [&](const SyntaxName& theSyntax) { return theSyntax.itsName == theName; })
       ->itsUID;
}

void Tell(const std::string& theFile, const std::string& theText)
{
   std::cerr << OnOneLine("tn convert: " + theFile + ": " + theText) << "\n";
}
} // namespace

ConvertCommand::ConvertCommand(CLI::App& theProgram)
    : Command(theProgram, "convert", "Write DICOM files in another transfer syntax")
{
   itsOptions.add_option("IN", itsSource, "File to read; - is standard input; with -r a folder")->required();
   itsOptions.add_option("OUT", itsTarget, "File to write, may be IN; a folder to write into under the name of IN")
       ->required();
   itsOptions.add_option("--to", itsSyntax, "Transfer syntax; compressed files are decompressed")
       ->check(CLI::IsMember(Names()))
       ->capture_default_str();
   itsOptions.add_flag("-r,--recursive", itsIsRecursive, "All files below the folder IN, into the same tree below OUT");
   itsOptions.add_option("--data", itsData, "Folder of the dictionaries")->type_name("DIR");
   itsOptions.footer("Files of any size pass in a few megabytes of memory, and appear whole or not at all.\n\n"
                     "Examples:\n  tn convert --to explicit old.dcm new.dcm\n"
                     "  tn convert -r --to implicit archive/ converted/");
}

int ConvertCommand::Run()
{
   try
   {
      LoadDictionaries(itsData);
      Conversion aConversion(FindUID(itsSyntax));
      return itsIsRecursive ? ConvertFolder(aConversion) : ConvertOne(aConversion);
   }
   catch (const std::exception& anError)
   {
      std::cerr << OnOneLine(std::string("tn convert: ") + anError.what()) << "\n";
      return ExitCode::kCouldNotRead;
   }
}

int ConvertCommand::ConvertOne(Conversion& theConversion)
{
   fs::path aTarget = itsTarget;
   if (std::error_code anIgnored; fs::is_directory(aTarget, anIgnored)) // writing it tells
   {
      aTarget /= fs::path(itsSource).filename();
   }
   std::string aText;
   const Result aResult = ConvertFile(theConversion, itsSource, aTarget.string(), aText);
   if (!aText.empty())
   {
      Tell(aResult == Result::CouldNotWrite ? aTarget.string() : itsSource, aText);
   }
   switch (aResult)
   {
   case Result::Done: return ExitCode::kDone;
   case Result::Refused: return ExitCode::kSomeFailed;
   case Result::CouldNotWrite: return ExitCode::kCouldNotWrite;
   default: return ExitCode::kCouldNotRead;
   }
}

int ConvertCommand::ConvertFolder(Conversion& theConversion)
{
   bool isWhole = true;
   const std::vector<std::string> aFiles = FilesBelow(itsSource, [&](const std::string& theText) {
      std::cerr << OnOneLine("tn convert: " + theText) << "\n";
      isWhole = false;
   });
   if (aFiles.empty() && !isWhole)
   {
      return ExitCode::kCouldNotRead;
   }
   std::vector<std::pair<std::string, std::string>> aRemarks; // on files, in order
   std::size_t aDone = 0;
   std::size_t aStrangers = 0;
   {
      Progress aProgress(aFiles.size());
      for (const std::string& aPath : aFiles)
      {
         const std::string aFile = (fs::path(itsSource) / aPath).string();
         aProgress.Begin(aFile);
         const std::string aTarget = (fs::path(itsTarget) / aPath).string();
         std::string aText;
         const Result aResult = ConvertFile(theConversion, aFile, aTarget, aText);
         aDone += aResult == Result::Done;
         aStrangers += aResult == Result::NoDICOMFile;
         if (!aText.empty())
         {
            aRemarks.emplace_back(aResult == Result::CouldNotWrite ? aTarget : aFile, aText);
         }
         std::error_code anIgnored;
         aProgress.End(fs::file_size(aFile, anIgnored));
      }
   }
   for (const auto& [aFile, aText] : aRemarks)
   {
      Tell(aFile, aText);
   }
   const std::size_t aFailed = aFiles.size() - aDone - aStrangers;
   std::cout << aDone << " converted, " << aFailed << " failed, " << aStrangers << " not DICOM files" << std::endl;
   return aFailed == 0 && isWhole ? ExitCode::kDone : ExitCode::kSomeFailed;
}

ConvertCommand::Result ConvertCommand::ConvertFile(Conversion& theConversion, const std::string& theSource,
                                                   const std::string& theTarget, std::string& theText)
{
   try
   {
      if (const fs::path aFolder = fs::path(theTarget).parent_path(); itsIsRecursive && !aFolder.empty())
      {
         std::error_code anError;
         fs::create_directories(aFolder, anError);
         if (anError)
         {
            throw WriteFailure("its folder cannot be made: " + anError.message());
         }
      }
      theConversion.Convert(theSource, theTarget);
      if (const UINT32 aCount = theConversion.GetLeftOutCount(); aCount != 0)
      {
         theText = "converted without " + std::to_string(aCount) +
                   (aCount == 1 ? " element that no dataset may hold" : " elements that no dataset may hold") +
                   " (private without its creator, creator twice, or an illegal group)";
      }
      return Result::Done;
   }
   catch (const NotDICOM& anException)
   {
      theText = ErrorText(anException);
      return Result::NoDICOMFile;
   }
   catch (const ExceptionBase& anException)
   {
      theText = ErrorText(anException);
      return Result::CouldNotRead;
   }
   catch (const IncompleteDataset& anError)
   {
      theText = anError.what();
      return Result::CouldNotRead;
   }
   catch (const NoDICOMFile& anError)
   {
      theText = anError.what();
      return Result::NoDICOMFile;
   }
   catch (const ConversionRefused& anError)
   {
      theText = anError.what();
      return Result::Refused;
   }
   catch (const WriteFailure& anError)
   {
      theText = anError.what();
      return Result::CouldNotWrite;
   }
   catch (const std::exception& anError) // a file too large for the memory must not end the run
   {
      theText = anError.what();
      return Result::CouldNotRead;
   }
}
