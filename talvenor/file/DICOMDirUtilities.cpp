#include "talvenor/file/DICOMDirUtilities.h"

#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/DICOMObjectIterator.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/dictionary/VRType.h"
#include "talvenor/file/CaughtException.h"
#include "talvenor/file/Part10Header.h"
#include "talvenor/file/Part10InputStream.h"
#include "talvenor/file/Part10OutputStreamOutputStream.h"
#include "talvenor/foundation/LibraryIdentity.h"
#include "talvenor/foundation/OneLine.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/foundation/TNTrace.h"
#include "talvenor/io/EndianHandlingWriter.h"
#include "talvenor/io/NullStreams.h"
#include "talvenor/transfer/DICOMDataObjectInputStreamVR.h"
#include "talvenor/transfer/ElementHeader.h"
#include "talvenor/transfer/InputTransferSyntax.h"
#include "talvenor/transfer/OutputTransferSyntax.h"
#include "talvenor/transfer/TransferSyntaxManager.h"
#include "talvenor/transfer/VRInputStreamVR.h"

namespace
{
constexpr UINT32 kDirectoryRecordSequence = 0x00041220;

void Log(const char* theOperation, const RWCString& theText)
{
   const RWCString aLine = OnOneLine(RWCString("DICOMDirUtilities::") + theOperation + ": " + theText);
   startentry(gTNErrorLog) << aLine << "\n" << endentry;
}

// Returns 0, which the operation returns too.
int Report(const char* theOperation, TNResultCode& theResult, int& theSystemError)
{
   const CaughtException aFailure;
   theResult = aFailure.itsResult;
   theSystemError = aFailure.itsSystemError;
   Log(theOperation, aFailure.itsText + ": " + TNResult::Describe(theResult));
   return 0;
}

void CloseQuietly(Part10InputStream& theStream)
{
   try
   {
      theStream.Close();
   }
   catch (const ExceptionBase&)
   {
      // Reading has failed already, and that is what is told.
   }
}
} // namespace

// --- Reading ---------------------------------------------------------------------------------------------------------

int DICOMDirUtilities::LoadFromStream(DICOMDataObject& theDirectory, Part10InputStream& theStream,
                                      TNResultCode& theResult, int& theSystemError, Offsets& theOffsets)
{
   bool isCut = false;
   return LoadFromStream(theDirectory, theStream, theResult, theSystemError, theOffsets, isCut);
}

int DICOMDirUtilities::LoadFromStream(DICOMDataObject& theDirectory, Part10InputStream& theStream,
                                      TNResultCode& theResult, int& theSystemError, Offsets& theOffsets, bool& theIsCut)
{
   static constexpr char kOperation[] = "LoadFromStream";
   theResult = TN_NO_ERROR;
   theSystemError = 0;
   theIsCut = false;
   theDirectory.Reset();
   theDirectory.SetEndian(TNEndian::LittleEndian);
   theOffsets.clear();
   if (TransferSyntaxManager::GetDefaultInstance().GetTransferSyntaxType(theStream.GetTransferSyntaxUID()) == nullptr)
   {
      theResult = TN_TRANSFER_SYNTAX_UNSUPPORTED;
      Log(kOperation, RWCString("Unknown transfer syntax type: ") + TNResult::Describe(theResult));
      CloseQuietly(theStream);
      return 0;
   }
   try
   {
      const std::unique_ptr<InputTransferSyntax> aDecoder = theStream.CreateDecoder();
      aDecoder->SetDataDictionary(theDirectory.GetDataDictionary());
      while (std::unique_ptr<VR> aVR{aDecoder->NextVR()})
      {
         DICOMDataObjectInputStreamVR* const aSequence = aVR->GetAsDICOMDataObjectInputStreamVR();
         const bool isOfRecords = aVR->GetTag() == kDirectoryRecordSequence && aSequence != nullptr;
         theDirectory.Push(isOfRecords ? GetDirectoryRecordSequenceVR(*aSequence, theStream, theOffsets)
                                       : aVR.release());
      }
      theIsCut = aDecoder->IsCut();
      theStream.Close();
      return 1;
   }
   catch (...)
   {
      Report(kOperation, theResult, theSystemError);
      CloseQuietly(theStream);
      return 0;
   }
}

SequenceVR* DICOMDirUtilities::GetDirectoryRecordSequenceVR(DICOMDataObjectInputStreamVR& theSequence,
                                                            Part10InputStream& theStream, Offsets& theOffsets)
{
   const TNEndian::EndianType anEndian = theSequence.GetDataEndian();
   auto aSequence = std::make_unique<SequenceVR>(theSequence.GetGroup(), theSequence.GetElement(), anEndian);
   for (;;)
   {
      const auto anOffset = static_cast<int>(theStream.GetStreamPosition());
      const std::unique_ptr<VRInputStreamVR> anItem(theSequence.NextDICOMDataObject());
      if (!anItem)
      {
         return aSequence.release();
      }
      theOffsets.push_back(anOffset);
      auto aRecord = std::make_unique<DICOMDataObject>(anEndian);
      while (VR* const aVR = anItem->NextVR())
      {
         if (!aRecord->Push(aVR))
         {
            throw StreamIOException("DICOMDataObjectInputStreamVR::GetVR(): error while saving VR to DICOMDataObject",
                                    TN_PARSE_TO_OBJECT_FAILED, 0);
         }
      }
      aSequence->AddSequenceItem(aRecord.release());
   }
}

// --- Writing ---------------------------------------------------------------------------------------------------------

int DICOMDirUtilities::CalculateDirectoryRecordOffsets(DICOMDataObject& theDirectory,
                                                       const RWCString& theSOPInstanceUID, TNResultCode& theResult,
                                                       int& theSystemError, Offsets& theOffsets)
{
   theResult = TN_NO_ERROR;
   theSystemError = 0;
   theOffsets.clear();
   try
   {
      const Part10Header aHeader(kSOPClassUID, theSOPInstanceUID, TransferSyntaxType::TSLEExplicitUID,
                                 kImplementationClassUID, kImplementationVersionName, kSourceAETitle);
      NullOutputStream aTarget;
      Part10OutputStreamOutputStream aStream(aHeader);
      aStream.Open(aTarget);
      const TransferSyntaxType* const aType =
          TransferSyntaxManager::GetDefaultInstance().GetTransferSyntaxType(TransferSyntaxType::TSLEExplicitUID);
      if (aType == nullptr)
      {
         throw StreamIOException("Unable to create output transfer syntax type!", TN_TRANSFER_SYNTAX_UNSUPPORTED, 0);
      }
      const std::unique_ptr<OutputTransferSyntax> anEncoder(aType->CreateOutputTransferSyntax(aStream));
      if (!anEncoder)
      {
         throw StreamIOException("Unable to create output transfer!", TN_INTERNAL_ERROR, 0);
      }
      anEncoder->SetDataDictionary(theDirectory.GetDataDictionary());
      DICOMObjectIterator anIterator(theDirectory, ExplicitNoGroupLength);
      while (VR* const aVR = anIterator.Next())
      {
         SequenceVR* const aSequence = aVR->GetAsSequenceVR();
         if (aVR->GetTag() == kDirectoryRecordSequence && aSequence != nullptr)
         {
            SaveDirectoryRecordSequenceVR(*aSequence, *anEncoder, theOffsets);
         }
         else if (aVR->GetElement() != 0)
         {
            anEncoder->SaveVR(*aVR);
         }
      }
      aStream.Flush();
      aStream.Close();
      return 1;
   }
   catch (...)
   {
      return Report("CalculateDirectoryRecordOffsets", theResult, theSystemError);
   }
}

// As an encoder writes a sequence, noting where the items begin.
void DICOMDirUtilities::SaveDirectoryRecordSequenceVR(SequenceVR& theSequence, OutputTransferSyntax& theEncoder,
                                                      Offsets& theOffsets)
{
   OutputStream& aStream = theEncoder.GetStream();
   EndianHandlingWriter& aWriter = theEncoder.GetEndianHandlingWriter();
   theSequence.WriteGroup(aWriter);
   theSequence.WriteElement(aWriter);
   theSequence.WriteTypeCode(aWriter);
   theSequence.WriteFiller16(aWriter);
   aWriter.Write(VR::kUndefinedLength);
   if (!theSequence.IsEmpty())
   {
      for (DICOMDataObject* const aRecord : *theSequence.GetSequenceArray())
      {
         theOffsets.push_back(static_cast<int>(aStream.GetStreamPosition()));
         theEncoder.WriteItemHeader(aStream, ElementHeader::kItem, VR::kUndefinedLength);
         if (aRecord != nullptr)
         {
            const std::unique_ptr<OutputTransferSyntax> aClone(theEncoder.Clone(aStream));
            aClone->SaveDICOMObject(*aRecord);
         }
         theEncoder.WriteItemHeader(aStream, ElementHeader::kItemDelimitation, 0);
      }
   }
   theEncoder.WriteItemHeader(aStream, ElementHeader::kSequenceDelimitation, 0);
}
