#include "apps/tn/files/DatasetChecks.h"

#include "apps/tn/base/ErrorText.h"
#include "talvenor/dictionary/MUIDDictionary.h"
#include "talvenor/dictionary/MUIDDictionaryEntry.h"
#include "talvenor/file/Part10InputStream.h"
#include "talvenor/transfer/InputTransferSyntax.h"
#include "talvenor/transfer/TransferSyntaxManager.h"

void CheckIsServed(const Part10InputStream& theStream)
{
   const RWCString& aUID = theStream.GetTransferSyntaxUID();
   if (TransferSyntaxManager::GetDefaultInstance().GetTransferSyntaxType(aUID) == nullptr)
   {
      const MUIDDictionaryEntry* const anEntry = MUIDDictionary::GetDefaultUIDDictionary().FindUID(aUID);
      throw IncompleteDataset("its transfer syntax is not supported: " + aUID +
                              (anEntry != nullptr ? " (" + anEntry->GetDescription() + ")" : ""));
   }
}

std::string FaultText(const ExceptionBase& theException, const InputTransferSyntax& theDecoder,
                      const Part10InputStream& theStream)
{
   const std::string aPlace = "byte " + std::to_string(theStream.GetStreamPosition());
   return ErrorText(theException) + " (" +
          (theDecoder.GetFaultPath().empty() ? aPlace : "in " + theDecoder.GetFaultPath() + ", " + aPlace) + ")";
}

void CheckIsWhole(const InputTransferSyntax& theDecoder, Part10InputStream& theStream, std::size_t theCount)
{
   if (theDecoder.IsCut())
   {
      throw IncompleteDataset("the file ends inside " + theDecoder.GetFaultPath() +
                              ": a delimiter or a part is missing");
   }
   if (theDecoder.GetItemCount() != 0)
   {
      throw IncompleteDataset("an item stands outside any sequence; its elements were taken as the dataset's own");
   }
   unsigned char aByte;
   if (theDecoder.GetLevelEnd() == InputTransferSyntax::AtDelimiter && theStream.Read(&aByte, 1) == 1)
   {
      throw IncompleteDataset("a delimiter at the top of the dataset ends it before byte " +
                              std::to_string(theStream.GetStreamPosition() - 1) + "; what follows was not read");
   }
   if (theCount == 0 && theStream.GetPart10Header() == nullptr)
   {
      throw IncompleteDataset("not a DICOM file");
   }
}
