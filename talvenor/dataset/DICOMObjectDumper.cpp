#include "talvenor/dataset/DICOMObjectDumper.h"

#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/dataset/DICOMDataObject.h"
#include "talvenor/dataset/DICOMObjectIterator.h"
#include "talvenor/dataset/DumpText.h"
#include "talvenor/dataset/DumpValue.h"
#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/dictionary/InstanceSpecificDataDictionary.h"
#include "talvenor/foundation/LogStream.h"

LogStream* DICOMObjectDumper::itsDefaultStream = nullptr;
bool DICOMObjectDumper::itsOwnsDefaultStream = false;

namespace
{
void PrintElement(DumpText& theText, const VR& theVR, TNEndian::EndianType theEndian,
                  const InstanceSpecificDataDictionary& theDictionary);

// A dictionary that a dataset has not made yet need not be made for the dump: it would know what the default one does.
const InstanceSpecificDataDictionary& DictionaryOf(const DICOMObject& theObject)
{
   return theObject.HasDataDictionary() ? theObject.GetDataDictionary()
                                        : InstanceSpecificDataDictionary::GetDefaultInstanceSpecificDataDictionary();
}

void PrintFrame(DumpText& theText, std::string_view theEdge, std::string_view theTitle)
{
   theText.StartLine();
   theText << "--------- " << theEdge << " of " << theTitle << " ---------";
   theText.EndLine();
}

void PrintSet(DumpText& theText, const DICOMObject& theObject, std::string_view theTitle)
{
   PrintFrame(theText, "Start", theTitle);
   const InstanceSpecificDataDictionary& aDictionary = DictionaryOf(theObject);
   const TNEndian::EndianType anEndian = theObject.GetEndian();
   DICOMObjectIterator anIterator(theObject, theObject.GetType() == DICOMObject::CommandObject ? ImplicitNoGroupLength
                                                                                               : ExplicitNoGroupLength);
   while (const VR* aVR = anIterator.Next())
   {
      PrintElement(theText, *aVR, anEndian, aDictionary);
   }
   PrintFrame(theText, "End", theTitle);
}

void PrintItem(DumpText& theText, const DICOMDataObject* theItem, std::size_t theIndex, std::size_t theCount)
{
   const RWCString aTitle = "Item " + std::to_string(theIndex) + " of " + std::to_string(theCount);
   theText.EnterItem();
   if (theItem != nullptr)
   {
      PrintSet(theText, *theItem, aTitle);
   }
   else
   {
      theText.StartLine();
      theText << "NULL pointer to Embedded DICOM Object (" << aTitle << ") in sequence array";
      theText.EndLine();
   }
   theText.LeaveItem();
}

void PrintSequence(DumpText& theText, const SequenceVR& theSequence, std::string_view theName)
{
   theText.StartLine();
   theText << "Start of Sequence (" << theName << ')';
   theText.EndLine();
   if (const SequenceVR::Items* anItems = theSequence.GetSequenceArray())
   {
      for (std::size_t i = 0; i < anItems->size(); ++i)
      {
         PrintItem(theText, (*anItems)[i], i, anItems->size());
      }
   }
   theText.StartLine();
   theText << "End of Sequence (" << theName << ')';
   theText.EndLine();
}

struct TypeAndDescription
{
   UINT16 itsTypeCode; // 0 when neither element nor dictionary has a type
   std::string_view itsDescription;
};

TypeAndDescription Describe(const VR& theVR, const MDDEntry* theEntry)
{
   const UINT16 aTypeCode = theVR.GetTypeCode();
   const bool isUntyped = aTypeCode == VRCode::None || aTypeCode == VRCode::UN;
   if (theEntry != nullptr)
   {
      return {isUntyped ? theEntry->GetTypeAsUshort() : aTypeCode, theEntry->Description()};
   }
   if (InstanceSpecificDataDictionary::IsValidPrivateCreatorAllocation(theVR.GetGroup(), theVR.GetElement()))
   {
      return {isUntyped ? VRCode::LO : aTypeCode, "Private Creator Allocation"};
   }
   return {aTypeCode, {}};
}

void PrintTypeAndDescription(DumpText& theText, const TypeAndDescription& theElement)
{
   if (theElement.itsTypeCode == VRCode::None)
   {
      theText << "?? \"\": ";
      return;
   }
   const char aType[] = {static_cast<char>(theElement.itsTypeCode >> 8), static_cast<char>(theElement.itsTypeCode)};
   theText.Escaped({aType, sizeof aType}) << " \"" << theElement.itsDescription << "\": ";
}

void PrintElementValue(DumpText& theText, const VR& theVR, UINT16 theTypeCode, TNEndian::EndianType theEndian,
                       const InstanceSpecificDataDictionary& theDictionary)
{
   if (const EncapsulatedPixelVR* aPixels = theVR.GetAsEncapsulatedPixelVR())
   {
      PrintEncapsulatedPixels(theText, *aPixels);
      return;
   }
   if (theVR.IsStreamBuffered())
   {
      theText << "[Data pending on input stream]";
      return;
   }
   PrintValue(theText, {theVR.GetData(), theVR.GetLength(), theEndian, &theDictionary}, theTypeCode);
   if (theVR.GetGroup() == 0x0000)
   {
      PrintCommandAnnotation(theText, theVR, theEndian);
   }
}

void PrintElement(DumpText& theText, const VR& theVR, TNEndian::EndianType theEndian,
                  const InstanceSpecificDataDictionary& theDictionary)
{
   const MDDEntry* anEntry = theDictionary.Find(MAttributeTag(theVR.GetGroup(), theVR.GetElement()));
   if (const SequenceVR* aSequence = theVR.GetAsSequenceVR())
   {
      PrintSequence(theText, *aSequence, anEntry ? std::string_view(anEntry->Description()) : "UNKNOWN Sequence");
      return;
   }
   const TypeAndDescription anElement = Describe(theVR, anEntry);
   theText.StartLine();
   theText.Tag(theVR.GetTag()) << ' ';
   theText.Number(theVR.GetLength()) << '/';
   PrintTypeAndDescription(theText, anElement);
   PrintElementValue(theText, theVR, anElement.itsTypeCode, theEndian, theDictionary);
   theText.EndLine();
}

std::unique_ptr<LogStream> OpenLog(const RWCString& theFileName)
{
   return std::make_unique<LogStream>(theFileName.c_str(), OpenMode::Append, OpenMode::Shared);
}
} // namespace

DICOMObjectDumper::DICOMObjectDumper() = default;

DICOMObjectDumper::DICOMObjectDumper(LogStream& theStream) : itsStream(&theStream) {}

DICOMObjectDumper::~DICOMObjectDumper() = default;

void DICOMObjectDumper::SetStream(LogStream& theStream)
{
   itsOwnStream.reset();
   itsStream = &theStream;
}

void DICOMObjectDumper::SetStream(std::ostream& theStream)
{
   itsOwnStream = std::make_unique<LogStream>(theStream);
   itsStream = itsOwnStream.get();
}

void DICOMObjectDumper::SetStream(const RWCString& theFileName)
{
   itsOwnStream = OpenLog(theFileName);
   itsStream = itsOwnStream.get();
}

void DICOMObjectDumper::UnsetStream()
{
   itsOwnStream.reset();
   itsStream = nullptr;
}

void DICOMObjectDumper::SetDefaultStream(LogStream& theStream)
{
   if (&theStream != itsDefaultStream) // setting it again leaves its owner as it is
   {
      ReplaceDefaultStream(&theStream, false);
   }
}

void DICOMObjectDumper::SetDefaultStream(std::ostream& theStream)
{
   ReplaceDefaultStream(new LogStream(theStream), true);
}

void DICOMObjectDumper::SetDefaultStream(const RWCString& theFileName)
{
   ReplaceDefaultStream(OpenLog(theFileName).release(), true);
}

void DICOMObjectDumper::UnsetDefaultStream()
{
   ReplaceDefaultStream(nullptr, false);
}

void DICOMObjectDumper::ReplaceDefaultStream(LogStream* theStream, bool theOwns)
{
   if (itsOwnsDefaultStream)
   {
      delete itsDefaultStream;
   }
   itsDefaultStream = theStream;
   itsOwnsDefaultStream = theOwns;
}

LogStream* DICOMObjectDumper::GetStreamInUse() const
{
   LogStream* aStream = itsStream != nullptr ? itsStream : itsDefaultStream;
   return aStream != nullptr && aStream->IsOn() ? aStream : nullptr;
}

void DICOMObjectDumper::DumpDOInternal(const DICOMObject& theObject, const char* theTitle)
{
   if (LogStream* aStream = GetStreamInUse())
   {
      DumpText aText(*aStream);
      PrintSet(aText, theObject, theTitle);
      aText.Flush();
   }
}

void DICOMObjectDumper::Dump(const DICOMObject& theObject)
{
   DumpDOInternal(theObject, "DICOM Object");
}

void DICOMObjectDumper::Dump(const DICOMDataObject& theObject)
{
   DumpDOInternal(theObject, "DICOM Data Object");
}

void DICOMObjectDumper::Dump(const DICOMCommandObject& theObject)
{
   DumpDOInternal(theObject, "DICOM Command Object");
}

void DICOMObjectDumper::Dump(const RWCString& theFileName)
{
   LogStream* aStream = GetStreamInUse();
   if (aStream == nullptr)
   {
      return;
   }
   DICOMDataObject anObject;
   TNResultCode aResult{};
   int aSystemError = 0;
   const int isLoaded = anObject.LoadFromFile(theFileName, aResult, aSystemError);
   const LogLock aLogGuard(*aStream);
   DumpText aText(*aStream);
   if (isLoaded)
   {
      aText << "DICOMObjectDumper: Loaded DICOM Object from file \"";
      aText.Escaped(theFileName) << '"';
      aText.EndLine();
      PrintSet(aText, anObject, "DICOM Data Object");
   }
   else
   {
      aText << "DICOMObjectDumper: Error loading file \"";
      aText.Escaped(theFileName) << "\": " << TNResult::Describe(aResult);
      if (aSystemError != 0)
      {
         aText << " (system error ";
         aText.Number(aSystemError) << ')';
      }
      aText.EndLine();
   }
   aText.Flush();
}

void DICOMObjectDumper::Dump(const VR& theVR, const InstanceSpecificDataDictionary& theDictionary)
{
   DumpVR(theVR, theVR.GetDataEndian(), theDictionary);
}

void DICOMObjectDumper::Dump(const VR& theVR, TNEndian::EndianType theEndian,
                             const InstanceSpecificDataDictionary& theDictionary)
{
   DumpVR(theVR, theEndian, theDictionary);
}

void DICOMObjectDumper::DumpVR(const VR& theVR, const InstanceSpecificDataDictionary& theDictionary)
{
   DumpVR(theVR, theVR.GetDataEndian(), theDictionary);
}

void DICOMObjectDumper::DumpVR(const VR& theVR, TNEndian::EndianType theEndian,
                               const InstanceSpecificDataDictionary& theDictionary)
{
   if (LogStream* aStream = GetStreamInUse())
   {
      DumpText aText(*aStream);
      PrintElement(aText, theVR, theEndian, theDictionary);
      aText.Flush();
   }
}

void DICOMObjectDumper::PrintData(UINT32 theLength, const unsigned char* theValue, UINT16 theTypeCode,
                                  TNEndian::EndianType theEndian, int theExplainsTag)
{
   if (LogStream* aStream = GetStreamInUse())
   {
      const InstanceSpecificDataDictionary* aDictionary =
          theExplainsTag ? &InstanceSpecificDataDictionary::GetDefaultInstanceSpecificDataDictionary() : nullptr;
      DumpText aText(*aStream);
      PrintValue(aText, {theValue, theLength, theEndian, aDictionary}, theTypeCode);
      aText.Flush();
   }
}

bool DICOMObjectDumper::IsAlpha(unsigned char theByte)
{
   return IsPrintable(theByte);
}

bool DICOMObjectDumper::IsDataAlpha(UINT32 theLength, const unsigned char* theValue)
{
   return ArePrintable(theValue, theLength);
}
