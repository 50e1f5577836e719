#include "apps/tn/files/Conversion.h"

#include "apps/tn/base/ErrorText.h"
#include "apps/tn/codec/Decompression.h"
#include "apps/tn/files/DatasetChecks.h"
#include "apps/tn/files/DatasetCopy.h"
#include "apps/tn/files/DecompressedCopy.h"
#include "apps/tn/files/InputFile.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/dictionary/MUIDDictionary.h"
#include "talvenor/dictionary/MUIDDictionaryEntry.h"
#include "talvenor/file/Part10FileOutputStream.h"
#include "talvenor/file/Part10Header.h"
#include "talvenor/foundation/LibraryIdentity.h"
#include "talvenor/transfer/InputTransferSyntax.h"
#include "talvenor/transfer/OutputTransferSyntax.h"
#include "talvenor/transfer/TransferSyntaxManager.h"

namespace
{
constexpr UINT32 kSOPClassUID = 0x00080016;
constexpr UINT32 kSOPInstanceUID = 0x00080018;

const char kMediaStorageDirectory[] = "1.2.840.10008.1.3.10";

using Elements = std::vector<std::unique_ptr<VR>>;

// Tells a failure of the output from one of the input: streamed elements are read and written in one call.
template <class Action>
void Writing(Action theAction)
{
   try
   {
      theAction();
   }
   catch (const ExceptionBase& anException)
   {
      throw WriteFailure(ErrorText(anException));
   }
}

class Output : public OutputStream
{
public:
   explicit Output(OutputStream& theStream) : itsStream(theStream) {}

   using OutputStream::Write;
   void Write(const unsigned char* theBytes, unsigned int theCount) override
   {
      Writing([&] { itsStream.Write(theBytes, theCount); });
   }
   void Flush() override
   {
      Writing([&] { itsStream.Flush(); });
   }
   void Close() override
   {
      Writing([&] { itsStream.Close(); });
   }

private:
   OutputStream& itsStream;
};

RWCString NameOf(const RWCString& theUID)
{
   const MUIDDictionaryEntry* const anEntry = MUIDDictionary::GetDefaultUIDDictionary().FindUID(theUID);
   return anEntry != nullptr ? anEntry->GetDescription() : theUID;
}

RWCString ValueOf(const VR& theVR)
{
   RWCString aText(reinterpret_cast<const char*>(theVR.GetData()), theVR.GetData() != nullptr ? theVR.GetLength() : 0);
   aText.erase(aText.find_last_not_of(std::string_view(" \0", 2)) + 1);
   return aText;
}

// A file without meta information names its object in the dataset only: reads that far, and keeps what it read.
Elements ReadIdentity(InputTransferSyntax& theDecoder, RWCString& theClass, RWCString& theInstance)
{
   Elements anElements;
   while (std::unique_ptr<VR> aVR{theDecoder.NextVR()})
   {
      if (aVR->IsStreamBuffered())
      {
         if (aVR->GetTag() > kSOPInstanceUID)
         {
            anElements.push_back(std::move(aVR));
            break;
         }
         std::exception_ptr aFailure;
         aVR = aVR->Materialise(aFailure);
         if (aFailure)
         {
            std::rethrow_exception(aFailure);
         }
         if (!aVR)
         {
            throw IncompleteDataset("an item stands outside any sequence");
         }
      }
      if (aVR->GetTag() == kSOPClassUID && theClass.empty())
      {
         theClass = ValueOf(*aVR);
      }
      if (aVR->GetTag() == kSOPInstanceUID && theInstance.empty())
      {
         theInstance = ValueOf(*aVR);
      }
      const bool isBehind = aVR->GetTag() >= kSOPInstanceUID;
      anElements.push_back(std::move(aVR));
      if (isBehind)
      {
         break;
      }
   }
   return anElements;
}

// That of the source, as far as it has one; theLeading become the elements that had to be read for it. The preamble may
// hold another file format's view of the source, which will not be true of the copy.
Part10Header MakeHeader(const Part10InputStream& theStream, InputTransferSyntax& theDecoder,
                        const TransferSyntaxType& theType, Elements& theLeading)
{
   const Part10Header* const aSource = theStream.GetPart10Header();
   Part10Header aHeader = aSource != nullptr ? *aSource : Part10Header("", "", "", "", "");
   RWCString aClass = aHeader.GetSOPClassUID();
   RWCString anInstance = aHeader.GetSOPInstanceUID();
   if (aClass.empty() || anInstance.empty())
   {
      DecodeWhole(theDecoder, theStream, [&] { theLeading = ReadIdentity(theDecoder, aClass, anInstance); });
      if (aClass.empty() || anInstance.empty())
      {
         throw IncompleteDataset("it has no SOP class UID and instance UID, which every DICOM file needs");
      }
   }
   if (aClass == kMediaStorageDirectory)
   {
      throw ConversionRefused(
          "it is a media directory, whose records point at each other by offsets; tn dicomdir create "
          "makes a new one");
   }
   aHeader.SetPreamble(nullptr);
   aHeader.SetSOPClassUID(aClass);
   aHeader.SetSOPInstanceUID(anInstance);
   aHeader.SetTransferSyntaxUID(theType.GetUID());
   aHeader.SetImplementationClassUID(kImplementationClassUID);
   aHeader.SetImplementationVersionName(kImplementationVersionName);
   return aHeader;
}
} // namespace

void Conversion::Convert(const std::string& theSource, const std::string& theTarget)
{
   itsLeftOutCount = 0;
   InputFile aFile(theSource);
   Part10InputStream& aStream = aFile.GetStream();
   CheckIsServed(aStream);
   const TransferSyntaxType& aType =
       *TransferSyntaxManager::GetDefaultInstance().GetTransferSyntaxType(aStream.GetTransferSyntaxUID());
   try
   {
      Copy(aStream, ChooseSyntax(aType), theTarget);
   }
   catch (const IncompleteDataset& anError)
   {
      if (aStream.GetPart10Header() != nullptr)
      {
         throw;
      }
      throw NoDICOMFile(std::string("not a DICOM file, or a damaged one without meta information: ") + anError.what());
   }
}

const TransferSyntaxType& Conversion::ChooseSyntax(const TransferSyntaxType& theSource) const
{
   if (itsSyntax.empty() || itsSyntax == theSource.GetUID())
   {
      return theSource;
   }
   if (theSource.IsEncapsulated() && !Decompression::IsServed(theSource.GetUID()))
   {
      throw ConversionRefused("its pixel data is compressed (" + NameOf(theSource.GetUID()) +
                              "), which tn cannot decompress: only --to same is possible");
   }
   return *TransferSyntaxManager::GetDefaultInstance().GetTransferSyntaxType(itsSyntax);
}

void Conversion::Copy(Part10InputStream& theStream, const TransferSyntaxType& theType, const std::string& theTarget)
{
   // One dictionary for both: the creators that the encoder writes type the private elements behind them.
   InstanceSpecificDataDictionary aDictionary(
       InstanceSpecificDataDictionary::GetDefaultInstanceSpecificDataDictionary());
   const std::unique_ptr<InputTransferSyntax> aDecoder = theStream.CreateDecoder();
   aDecoder->SetDataDictionary(aDictionary);

   Elements aLeading;
   const Part10Header aHeader = MakeHeader(theStream, *aDecoder, theType, aLeading);
   AtomicFile aFile(theTarget);
   std::unique_ptr<Part10FileOutputStream> aFileStream;
   Writing([&] { aFileStream = std::make_unique<Part10FileOutputStream>(aFile.GetTemporaryPath(), aHeader); });
   Output anOutput(*aFileStream);
   const std::unique_ptr<OutputTransferSyntax> anEncoder(theType.CreateOutputTransferSyntax(anOutput));
   anEncoder->SetDataDictionary(aDictionary);

   std::size_t aCount = aLeading.size();
   DecodeWhole(*aDecoder, theStream, [&] {
      if (aDecoder->GetTransferSyntaxType().IsEncapsulated() && !theType.IsEncapsulated())
      {
         aCount = CopyDecompressed(*aDecoder, *anEncoder, aDictionary, std::move(aLeading));
         return;
      }
      for (std::unique_ptr<VR>& aVR : aLeading)
      {
         SaveElement(*anEncoder, std::move(aVR));
      }
      for (; std::unique_ptr<VR> aVR{aDecoder->NextVR()}; ++aCount)
      {
         SaveElement(*anEncoder, std::move(aVR));
      }
   });
   CheckIsWhole(*aDecoder, theStream, aCount);
   itsLeftOutCount = anEncoder->GetLeftOutCount();
   anOutput.Close();
   aFile.Commit();
}
