#include "apps/tn/DumpCommand.h"

#include <cstdio>
#include <iostream>
#include <stdexcept>

#include "apps/tn/Dictionaries.h"
#include "apps/tn/ElementLister.h"
#include "apps/tn/ErrorText.h"
#include "apps/tn/ExitCode.h"
#include "apps/tn/InputFile.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/DICOMObjectDumper.h"
#include "talvenor/dataset/DICOMObjectIterator.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/MUIDDictionary.h"
#include "talvenor/dictionary/MUIDDictionaryEntry.h"
#include "talvenor/file/DICOMObjectLoader.h"
#include "talvenor/foundation/LogStream.h"
#include "talvenor/foundation/OneLine.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/transfer/TransferSyntaxManager.h"

namespace
{
// What is wrong with a file whose elements could be read.
class Incomplete : public std::runtime_error
{
public:
   using std::runtime_error::runtime_error;
};

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

// Says which transfer syntax it is that is not served.
void CheckTransferSyntax(const Part10InputStream& theStream)
{
   const RWCString& aUID = theStream.GetTransferSyntaxUID();
   if (TransferSyntaxManager::GetDefaultInstance().GetTransferSyntaxType(aUID) == nullptr)
   {
      const MUIDDictionaryEntry* const anEntry = MUIDDictionary::GetDefaultUIDDictionary().FindUID(aUID);
      throw Incomplete("its transfer syntax is not supported: " + aUID +
                       (anEntry != nullptr ? " (" + anEntry->GetDescription() + ")" : ""));
   }
}

std::string At(const InputTransferSyntax& theDecoder, const Part10InputStream& theStream)
{
   const std::string aPlace = "byte " + std::to_string(theStream.GetStreamPosition());
   return theDecoder.GetFaultPath().empty() ? aPlace : "in " + theDecoder.GetFaultPath() + ", " + aPlace;
}

// A decoder ends quietly where its bytes end between two elements; a file that is not whole is to be told.
void CheckEnd(const InputTransferSyntax& theDecoder, Part10InputStream& theStream, size_t theCount)
{
   if (theDecoder.IsCut())
   {
      throw Incomplete("the file ends inside " + theDecoder.GetFaultPath() + ": a delimiter or a part is missing");
   }
   if (theDecoder.GetItemCount() != 0)
   {
      throw Incomplete("an item stands outside any sequence; its elements are shown as the dataset's own");
   }
   unsigned char aByte;
   if (theDecoder.GetLevelEnd() == InputTransferSyntax::AtDelimiter && theStream.Read(&aByte, 1) == 1)
   {
      throw Incomplete("a delimiter at the top of the dataset ends it before byte " +
                       std::to_string(theStream.GetStreamPosition() - 1) + "; what follows was not read");
   }
   if (theCount == 0 && theStream.GetPart10Header() == nullptr)
   {
      throw Incomplete("not a DICOM file");
   }
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

// Decodes and, when that fails, says where.
template <class Action>
void Decode(const InputTransferSyntax& theDecoder, const Part10InputStream& theStream, Action theAction)
{
   try
   {
      theAction();
   }
   catch (const ExceptionBase& anException)
   {
      throw Incomplete(ErrorText(anException) + " (" + At(theDecoder, theStream) + ")");
   }
}
} // namespace

DumpCommand::~DumpCommand() = default;

DumpCommand::DumpCommand(CLI::App& theProgram)
{
   CLI::App& aCommand = *theProgram.add_subcommand("dump", "Print the meta information and the dataset of DICOM files");
   aCommand.add_option("FILE", itsFiles, "Files to print; - is standard input")->required();
   CLI::Option* const anElements = aCommand.add_flag(
       "--elements", itsElementsOnly, "One tab-separated line an element: path, tag, VR, length, CRC-32 of the value");
   aCommand.add_option("--until", itsUntil, "Stop before this tag")->type_name("gggg,eeee");
   aCommand.add_flag("--known-only", itsKnownOnly, "Leave out private elements that no dictionary knows")
       ->excludes(anElements);
   aCommand.add_flag("--meta", itsMetaOnly, "The meta information alone");
   aCommand.add_option("--data", itsData, "Folder of the dictionaries")->type_name("DIR");
   aCommand.footer("Example:\n  tn dump --until 7fe0,0010 image.dcm");
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
   CheckTransferSyntax(aStream);
   const size_t aMetaCount = aLister.GetCount();
   const std::unique_ptr<InputTransferSyntax> aDecoder = aStream.CreateDecoder();
   aDecoder->SetStopAtGroup(GetStopGroup());
   aDecoder->SetStopAtElement(GetStopElement());
   Decode(*aDecoder, aStream, [&] { aLister.List(*aDecoder, itsEnd); });
   CheckEnd(*aDecoder, aStream, aLister.GetCount() - aMetaCount);
}

void DumpCommand::DumpSets(InputFile& theFile)
{
   Part10InputStream& aStream = theFile.GetStream();
   if (const DICOMDataObject* aMeta = aStream.GetMetaInformation())
   {
      PrintSet(*aMeta);
   }
   if (itsMetaOnly)
   {
      return;
   }
   CheckTransferSyntax(aStream);
   itsObject = std::make_unique<DICOMDataObject>();
   DICOMObjectLoader aLoader(*itsObject, aStream);
   aLoader.SetStopAt(GetStopGroup(), GetStopElement());
   aLoader.SetKnownTagsOnly(itsKnownOnly);
   std::exception_ptr aFailure;
   try
   {
      Decode(aLoader.GetDecoder(), aStream, [&] { aLoader.Load(); });
   }
   catch (const Incomplete&)
   {
      aFailure = std::current_exception(); // what had been read is printed first
   }
   if (itsEnd)
   {
      // The decoder's limit lets later groups through whose element numbers are low.
      RemoveFrom(*itsObject, *itsEnd);
   }
   PrintSet(*itsObject);
   if (aFailure)
   {
      std::rethrow_exception(aFailure);
   }
   CheckEnd(aLoader.GetDecoder(), aStream, itsObject->Entries());
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
