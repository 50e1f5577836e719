#include "apps/tn/files/DumpCommand.h"

#include <cstdio>
#include <iostream>
#include <stdexcept>

#include <CLI/CLI.hpp>

#include "apps/tn/base/Dictionaries.h"
#include "apps/tn/base/ErrorText.h"
#include "apps/tn/base/ExitCode.h"
#include "apps/tn/base/JsonElements.h"
#include "apps/tn/base/JsonWriter.h"
#include "apps/tn/base/ValueText.h"
#include "apps/tn/files/DatasetChecks.h"
#include "apps/tn/files/ElementLister.h"
#include "apps/tn/files/InputFile.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/DICOMObjectDumper.h"
#include "talvenor/dataset/DICOMObjectIterator.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/file/DICOMObjectLoader.h"
#include "talvenor/foundation/LogStream.h"
#include "talvenor/foundation/OneLine.h"
#include "talvenor/transfer/InputTransferSyntax.h"

namespace
{
std::optional<UINT32> ParseTag(const std::string& theText)
{
   unsigned int aGroup = 0;
   unsigned int anElement = 0;
   char aRest = 0;
   if (std::sscanf(theText.c_str(), "%4x,%4x%c", &aGroup, &anElement, &aRest) != 2)
   {
      return std::nullopt;
   }
   return aGroup << 16 | anElement;
}

void RemoveFrom(DICOMObject& theObject, UINT32 theTag)
{
   DICOMObjectIterator anIterator(theObject, ExplicitNoGroupLength);
   while (const VR* const aVR = anIterator.Next())
   {
      if (aVR->GetElement() != 0 && aVR->GetTag() >= theTag)
      {
         delete theObject.RemoveVR(aVR->GetGroup(), aVR->GetElement());
      }
   }
}
} // namespace

DumpCommand::~DumpCommand() = default;

DumpCommand::DumpCommand(CLI::App& theProgram)
    : Command(theProgram, "dump", "Print the meta information and the dataset of DICOM files")
{
   itsOptions.add_option("FILE", itsFiles, "Files to print; - is standard input")->required();
   CLI::Option* const anElements = itsOptions.add_flag(
       "--elements", itsElementsOnly, "One tab-separated line an element: path, tag, VR, length, CRC-32 of the value");
   itsOptions
       .add_flag("--json", itsIsJson, "One JSON object a file: its meta information and its dataset, texts in UTF-8")
       ->excludes(anElements);
   itsOptions.add_option("--until", itsUntil, "Stop before this tag")->type_name("gggg,eeee");
   itsOptions.add_flag("--known-only", itsKnownOnly, "Leave out private elements that no dictionary knows")
       ->excludes(anElements);
   itsOptions.add_flag("--meta", itsMetaOnly, "The meta information alone");
   itsOptions.add_option("--data", itsData, "Folder of the dictionaries")->type_name("DIR");
   itsOptions.footer("Example:\n  tn dump --until 7fe0,0010 image.dcm");
}

int DumpCommand::Run()
{
   if (!itsUntil.empty())
   {
      itsEnd = ParseTag(itsUntil);
      if (!itsEnd)
      {
         std::cerr << "tn dump: --until " << itsUntil << ": a tag is written as gggg,eeee, for example 7fe0,0010\n";
         return ExitCode::kWrongUse;
      }
   }
   try
   {
      LoadDictionaries(itsData);
   }
   catch (const std::runtime_error& anError)
   {
      std::cerr << "tn dump: " << anError.what() << "\n";
      return ExitCode::kCouldNotRead;
   }
   int aResult = ExitCode::kDone;
   for (const std::string& aFile : itsFiles)
   {
      std::string aFault;
      try
      {
         DumpFile(aFile);
      }
      catch (const ExceptionBase& anException)
      {
         aFault = ErrorText(anException);
      }
      catch (const std::exception& anError)
      {
         aFault = anError.what();
      }
      std::cout.flush();
      if (!aFault.empty())
      {
         std::cerr << OnOneLine("tn dump: " + aFile + ": " + aFault) << "\n";
         aResult = ExitCode::kCouldNotRead;
      }
   }
   if (!std::cout)
   {
      std::cerr << "tn dump: cannot write to standard output\n";
      return ExitCode::kCouldNotWrite;
   }
   return aResult;
}

void DumpCommand::DumpFile(const std::string& theName)
{
   InputFile aFile(theName);
   if (itsIsJson)
   {
      DumpJson(theName, aFile);
      return;
   }
   if (itsFiles.size() > 1)
   {
      std::cout << "# " << theName << "\n";
   }
   itsElementsOnly ? DumpElements(aFile) : DumpSets(aFile);
}

void DumpCommand::DumpElements(InputFile& theFile)
{
   Part10InputStream& aStream = theFile.GetStream();
   ElementLister aLister(std::cout);
   if (const DICOMDataObject* aMeta = aStream.GetMetaInformation())
   {
      DICOMObjectIterator anIterator(*aMeta, ExplicitNoGroupLength);
      while (VR* const aVR = anIterator.Next())
      {
         if (aVR->GetElement() != 0)
         {
            aLister.ListElement(*aVR);
         }
      }
   }
   if (itsMetaOnly)
   {
      return;
   }
   CheckIsServed(aStream);
   const size_t aMetaCount = aLister.GetCount();
   const std::unique_ptr<InputTransferSyntax> aDecoder = aStream.CreateDecoder();
   aDecoder->SetStopAtGroup(GetStopGroup());
   aDecoder->SetStopAtElement(GetStopElement());
   DecodeWhole(*aDecoder, aStream, [&] { aLister.List(*aDecoder, itsEnd); });
   CheckIsWhole(*aDecoder, aStream, aLister.GetCount() - aMetaCount);
}

void DumpCommand::DumpSets(InputFile& theFile)
{
   Part10InputStream& aStream = theFile.GetStream();
   if (const DICOMDataObject* aMeta = aStream.GetMetaInformation())
   {
      PrintSet(*aMeta);
   }
   if (!itsMetaOnly)
   {
      Load(aStream, [&] { PrintSet(*itsObject); });
   }
}

void DumpCommand::DumpJson(const std::string& theName, InputFile& theFile)
{
   Part10InputStream& aStream = theFile.GetStream();
   const auto aShow = [&] {
      JsonWriter aJson(std::cout);
      const auto aWrite = [&](const char* theMember, const DICOMDataObject& theSet) {
         aJson.BeginObject(theMember);
         WriteJsonElements(aJson, theSet, CharacterSetOf(theSet));
         aJson.EndObject();
      };
      aJson.BeginObject();
      aJson.Text("file", theName);
      if (const DICOMDataObject* aMeta = aStream.GetMetaInformation())
      {
         aWrite("meta", *aMeta);
      }
      if (!itsMetaOnly)
      {
         aWrite("dataset", *itsObject);
      }
      aJson.EndObject();
      std::cout << "\n";
   };
   itsMetaOnly ? aShow() : Load(aStream, aShow);
}

void DumpCommand::Load(Part10InputStream& theStream, const std::function<void()>& theShow)
{
   CheckIsServed(theStream);
   itsObject = std::make_unique<DICOMDataObject>();
   DICOMObjectLoader aLoader(*itsObject, theStream);
   aLoader.SetStopAt(GetStopGroup(), GetStopElement());
   aLoader.SetKnownTagsOnly(itsKnownOnly);
   std::exception_ptr aFailure;
   try
   {
      DecodeWhole(aLoader.GetDecoder(), theStream, [&] { aLoader.Load(); });
   }
   catch (const IncompleteDataset&)
   {
      aFailure = std::current_exception();
   }
   if (itsEnd)
   {
      // The decoder's limit lets later groups through whose element numbers are low.
      RemoveFrom(*itsObject, *itsEnd);
   }
   theShow();
   if (aFailure)
   {
      std::rethrow_exception(aFailure);
   }
   CheckIsWhole(aLoader.GetDecoder(), theStream, itsObject->Entries());
}

void DumpCommand::PrintSet(const DICOMDataObject& theSet)
{
   LogStream aLog(std::cout);
   DICOMObjectDumper(aLog).Dump(theSet);
}

UINT16 DumpCommand::GetStopGroup() const
{
   return itsEnd ? static_cast<UINT16>(*itsEnd >> 16) : UINT16{0};
}

UINT16 DumpCommand::GetStopElement() const
{
   return itsEnd ? static_cast<UINT16>(*itsEnd) : UINT16{0};
}
