#include "apps/tn/files/DicomdirCommand.h"

#include <filesystem>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <vector>

#include <CLI/CLI.hpp>

#include "apps/tn/base/AtomicFile.h"
#include "apps/tn/base/Dictionaries.h"
#include "apps/tn/base/ErrorText.h"
#include "apps/tn/base/ExitCode.h"
#include "apps/tn/base/FilesBelow.h"
#include "apps/tn/files/DatasetChecks.h"
#include "apps/tn/files/DirectoryBuilder.h"
#include "apps/tn/files/DirectoryLister.h"
#include "apps/tn/files/InputFile.h"
#include "apps/tn/files/InstanceHeader.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/file/DICOMDirUtilities.h"
#include "talvenor/file/Part10FileOutputStream.h"
#include "talvenor/file/Part10Header.h"
#include "talvenor/foundation/LibraryIdentity.h"
#include "talvenor/foundation/MUIDFactory.h"
#include "talvenor/foundation/OneLine.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/foundation/TNXInitializer.h"
#include "talvenor/transfer/ConcreteOutputTransferSyntaxes.h"
#include "talvenor/transfer/TransferSyntaxManager.h"

namespace fs = std::filesystem;

namespace
{
constexpr char kDirectoryName[] = "DICOMDIR";
constexpr std::size_t kMostFaults = 20;      // told of one directory: a false one has one for each record
constexpr unsigned int kHeaderBuffer = 8192; // bytes; what is read of each file holds the keys of nearly all images

void Tell(const std::string& theText)
{
   std::cerr << OnOneLine("tn dicomdir: " + theText) << "\n";
}

std::string Count(std::size_t theNumber, const char* theOne, const char* theMany)
{
   return std::to_string(theNumber) + " " + (theNumber == 1 ? theOne : theMany);
}

// A value of VR CS: up to 16 of A-Z, 0-9, blank and "_".
bool IsFileSetID(const std::string& theText)
{
   return theText.size() <= 16 &&
          theText.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_ ") == std::string::npos;
}
} // namespace

DicomdirCommand::DicomdirCommand(CLI::App& theProgram)
    : Command(theProgram, "dicomdir", "Write and print the directories of media (DICOMDIR)")
{
   itsOptions.require_subcommand(1);
   itsOptions.footer("tn dicomdir COMMAND --help tells of each.");
   AddCreate();
   AddList();
}

void DicomdirCommand::AddCreate()
{
   itsCreate = itsOptions.add_subcommand("create", "Write the directory of the DICOM files in a folder");
   itsCreate->add_option("DIR", itsFolder, "Folder of the files, and of those in the folders below")->required();
   itsCreate->add_option("-o,--output", itsOutput, "File to write; DIR/DICOMDIR if not given. Its paths begin at DIR")
       ->type_name("FILE");
   itsCreate->add_flag("--any-names", itsTakesAnyNames,
                       "Include files whose names are not 1 to 8 characters of A-Z, 0-9 and _");
   itsCreate->add_option("--id", itsFileSetID, "Name of the file-set, up to 16 characters")->type_name("NAME");
   itsCreate->add_option("--data", itsData, "Folder of the dictionaries")->type_name("DIR");
   itsCreate->footer("Files that are not DICOM are skipped.\n\nExample:\n  tn dicomdir create --id TRIAL_7 /media/cd");
}

void DicomdirCommand::AddList()
{
   CLI::App& aList = *itsOptions.add_subcommand("list", "Print a directory as a tree");
   aList.add_option("FILE", itsFile, "Directory to print, or its folder; - is standard input")->required();
   aList.add_flag("--offsets", itsShowsOffsets, "Begin each line with the offset of its record in the file");
   aList.add_flag("--json", itsIsJson,
                  "One JSON object a line for each record, with its offset and its depth in the tree");
   aList.add_option("--data", itsData, "Folder of the dictionaries")->type_name("DIR");
   aList.footer(
       "The files that a directory refers to are not opened.\n\nExample:\n  tn dicomdir list /media/cd/DICOMDIR");
}

int DicomdirCommand::Run()
{
   try
   {
      LoadDictionaries(itsData);
   }
   catch (const std::runtime_error& anError)
   {
      Tell(anError.what());
      return ExitCode::kCouldNotRead;
   }
   return itsCreate->parsed() ? Create() : List();
}

// --- create ----------------------------------------------------------------------------------------------------------

int DicomdirCommand::Create()
{
   if (!IsFileSetID(itsFileSetID))
   {
      Tell("--id " + itsFileSetID + ": up to 16 characters of A-Z, 0-9, _ and blank");
      return ExitCode::kWrongUse;
   }
   TNXInitializer::SetDefaultFileBufferSize(kHeaderBuffer);
   bool isWhole = true;
   const auto onFault = [&](const std::string& theText) {
      Tell(theText);
      isWhole = false;
   };
   DirectoryBuilder aBuilder;
   for (const std::string& aPath : FilesBelow(itsFolder, onFault))
   {
      isWhole = AddFile(aBuilder, aPath) && isWhole;
   }
   const DirectoryBuilder::Counts& aCounts = aBuilder.GetCounts();
   if (aCounts.itsInstances == 0)
   {
      Tell(itsFolder + ": no file to write a directory of");
      return ExitCode::kCouldNotRead;
   }
   const std::string anOutput = itsOutput.empty() ? (fs::path(itsFolder) / kDirectoryName).string() : itsOutput;
   try
   {
      Write(aBuilder, anOutput);
   }
   catch (const ExceptionBase& anException)
   {
      Tell(anOutput + ": " + ErrorText(anException));
      return ExitCode::kCouldNotWrite;
   }
   catch (const std::runtime_error& anError)
   {
      Tell(anOutput + ": " + anError.what());
      return ExitCode::kCouldNotWrite;
   }
   std::cout << OnOneLine(anOutput) << ": " << Count(aCounts.itsPatients, "patient", "patients") << ", "
             << Count(aCounts.itsStudies, "study", "studies") << ", " << Count(aCounts.itsSeries, "series", "series")
             << ", " << Count(aCounts.itsInstances, "instance", "instances") << "\n";
   return isWhole ? ExitCode::kDone : ExitCode::kSomeFailed;
}

bool DicomdirCommand::AddFile(DirectoryBuilder& theBuilder, const std::string& thePath)
{
   try
   {
      const InstanceHeader aHeader((fs::path(itsFolder) / thePath).string());
      const FileID aFileID = SplitFileID(thePath, '/');
      if (const std::string aFault = FaultOfFileID(aFileID, itsTakesAnyNames); !aFault.empty())
      {
         throw std::runtime_error(aFault);
      }
      theBuilder.Add(aHeader, aFileID,
                     [&](const std::string& theText) { Tell("note on " + thePath + ": " + theText); });
      return true;
   }
   catch (const InstanceHeader::NotDICOM& aReason)
   {
      if (thePath != kDirectoryName)
      {
         Tell("skipped " + thePath + ": " + aReason.what());
      }
      return true;
   }
   catch (const std::exception& anError)
   {
      Tell("left out " + thePath + ": " + anError.what());
      return false;
   }
}

void DicomdirCommand::Write(DirectoryBuilder& theBuilder, const std::string& theOutput) const
{
   const RWCString anInstanceUID = MUIDFactory::GetInstance().GetUID();
   const std::unique_ptr<DICOMDataObject> aDirectory = theBuilder.Build(itsFileSetID, anInstanceUID);
   const Part10Header aHeader(DICOMDirUtilities::kSOPClassUID, anInstanceUID, TransferSyntaxType::TSLEExplicitUID,
                              kImplementationClassUID, kImplementationVersionName,
                              DirectoryBuilder::GetSourceAETitle());
   AtomicFile aFile(theOutput);
   Part10FileOutputStream aStream(aFile.GetTemporaryPath(), aHeader);
   LittleEndianExplicitOutputTransferSyntax(aStream).SaveDICOMObject(*aDirectory);
   aStream.Close();
   aFile.Commit();
}

// --- list ------------------------------------------------------------------------------------------------------------

int DicomdirCommand::List()
{
   std::error_code anIgnored; // opening it tells
   const std::string aFile =
       fs::is_directory(itsFile, anIgnored) ? (fs::path(itsFile) / kDirectoryName).string() : itsFile;
   int aResult;
   try
   {
      aResult = ListDirectory(aFile);
   }
   catch (const ExceptionBase& anException)
   {
      Tell(aFile + ": " + ErrorText(anException));
      return ExitCode::kCouldNotRead;
   }
   catch (const std::runtime_error& anError)
   {
      Tell(aFile + ": " + anError.what());
      return ExitCode::kCouldNotRead;
   }
   std::cout.flush();
   if (!std::cout)
   {
      Tell("cannot write to standard output");
      return ExitCode::kCouldNotWrite;
   }
   return aResult;
}

int DicomdirCommand::ListDirectory(const std::string& theFile)
{
   InputFile anInput(theFile);
   Part10InputStream& aStream = anInput.GetStream();
   CheckIsServed(aStream);
   const TNEndian::EndianType anEndian =
       TransferSyntaxManager::GetDefaultInstance().GetTransferSyntaxType(aStream.GetTransferSyntaxUID())->GetEndian();
   DICOMDataObject aDirectory;
   DICOMDirUtilities::Offsets anOffsets;
   TNResultCode aResult;
   int anError;
   bool isCut;
   if (!DICOMDirUtilities::LoadFromStream(aDirectory, aStream, aResult, anError, anOffsets, isCut))
   {
      const std::string aText = "the directory cannot be read beyond byte " +
                                std::to_string(aStream.GetStreamPosition()) + ": " + TNResult::Describe(aResult);
      throw StreamIOException(aText.c_str(), aResult, anError);
   }
   aDirectory.SetEndian(anEndian);
   if (!aDirectory.HasAttribute(0x0004, 0x1220))
   {
      throw std::runtime_error("not a media directory");
   }
   std::size_t aFaults = 0;
   DirectoryLister aLister(aDirectory, anOffsets, std::cout, [&](const std::string& theText) {
      if (aFaults++ < kMostFaults)
      {
         Tell(theFile + ": " + theText);
      }
   });
   aLister.List(itsIsJson         ? DirectoryLister::Form::Json
                : itsShowsOffsets ? DirectoryLister::Form::TreeWithOffsets
                                  : DirectoryLister::Form::Tree);
   if (aFaults > kMostFaults)
   {
      Tell(theFile + ": " + Count(aFaults - kMostFaults, "more fault", "more faults"));
   }
   if (isCut)
   {
      throw std::runtime_error("the file ends inside the directory");
   }
   return aFaults == 0 ? ExitCode::kDone : ExitCode::kSomeFailed;
}
