// Composes the messages of a print dialogue (PS3.7 10, PS3.4 H.4) on context 1, and a host to hold it with.
#pragma once

#include <string>
#include <vector>

#include "support/CommandBytes.h"
#include "support/PDUBytes.h"
#include "talvenor/print/PrintManagementMetas.h"

namespace PrintBytes
{
using CommandBytes::US;

inline const std::string kMeta = "1.2.840.10008.5.1.1.9";
inline const std::string kSession = "1.2.840.10008.5.1.1.1", kFilm = "1.2.840.10008.5.1.1.2",
                         kGray = "1.2.840.10008.5.1.1.4", kColor = "1.2.840.10008.5.1.4.1",
                         kAnnotation = "1.2.840.10008.5.1.1.15", kLUT = "1.2.840.10008.5.1.1.23",
                         kPrinter = "1.2.840.10008.5.1.1.16", kJob = "1.2.840.10008.5.1.1.14";
inline const std::string kPrinterInstance = "1.2.840.10008.5.1.1.17";

inline std::string Padded(std::string theText, char thePad = '\0')
{
   if (theText.size() % 2 != 0)
   {
      theText += thePad;
   }
   return theText;
}

inline std::string UI(UINT32 theElement, const std::string& theUID)
{
   return theUID.empty() ? "" : CommandBytes::Element(theElement, Padded(theUID));
}

// A command set, and theDataset behind it when that is not empty.
inline std::string Message(const std::string& theElements, const std::string& theDataset)
{
   return PDUBytes::PData(PDUBytes::PDV(1, 3, CommandBytes::CommandSet(theElements))) +
          (theDataset.empty() ? "" : PDUBytes::PData(PDUBytes::PDV(1, 2, theDataset)));
}

inline std::string Type(const std::string& theDataset)
{
   return US(0x0800, theDataset.empty() ? 0x0101 : 0x0102);
}

// A request; an empty instance is left out. N-CREATE and N-EVENT-REPORT speak of affected instances.
inline std::string Request(UINT16 theField, const std::string& theClass, const std::string& theInstance,
                           const std::string& theDataset = "", const std::string& theExtra = "")
{
   const bool isAffected = theField == 0x0140 || theField == 0x0100;
   return Message((isAffected ? UI(0x0002, theClass) : UI(0x0003, theClass)) + US(0x0100, theField) + US(0x0110, 7) +
                      Type(theDataset) + UI(isAffected ? 0x1000 : 0x1001, theInstance) + theExtra,
                  theDataset);
}

// A response with as little as real printers send.
inline std::string Response(UINT16 theField, UINT16 theStatus, const std::string& theInstance = "",
                            const std::string& theDataset = "", UINT16 theAnswered = 0)
{
   return Message(US(0x0100, theField) + US(0x0120, theAnswered) + Type(theDataset) + US(0x0900, theStatus) +
                      UI(0x1000, theInstance),
                  theDataset);
}

inline std::string Text(UINT32 theTag, const char* theType, const std::string& theText)
{
   return DatasetBytes().Element(theTag, theType, Padded(theText, ' ')).Bytes();
}
inline std::string Number(UINT32 theTag, UINT16 theNumber)
{
   return DatasetBytes().Element(theTag, "US", DatasetBytes().Number(theNumber, 2).Bytes()).Bytes();
}

inline std::string Sequence(UINT32 theTag, const std::vector<std::string>& theItems)
{
   DatasetBytes aSequence;
   aSequence.Sequence(theTag);
   for (const std::string& anItem : theItems)
   {
      aSequence.Item().Raw(anItem).ItemEnd();
   }
   return aSequence.SequenceEnd().Bytes();
}

inline std::string Reference(const std::string& theClass, const std::string& theInstance)
{
   return DatasetBytes()
       .Element(0x00081150, "UI", Padded(theClass))
       .Element(0x00081155, "UI", Padded(theInstance))
       .Bytes();
}

// A monochrome image of that size, with a wrong description of its pixels or too few of them where asked for.
struct Image
{
   UINT16 itsRows = 2, itsColumns = 2;
   UINT16 itsSamples = 1;
   UINT16 itsStored = 8;
   const char* itsPhotometric = "MONOCHROME2";
   std::size_t itsPixelBytes = 4; // 0 for no element

   std::string Bytes() const
   {
      const std::string aStart = Number(0x00280002, itsSamples) + Text(0x00280004, "CS", itsPhotometric) +
                                 Number(0x00280010, itsRows) + Number(0x00280011, itsColumns) + Number(0x00280100, 8) +
                                 Number(0x00280101, itsStored) +
                                 Number(0x00280102, static_cast<UINT16>(itsStored - 1)) + Number(0x00280103, 0);
      return itsPixelBytes == 0
                 ? aStart
                 : aStart + DatasetBytes().Element(0x7FE00010, "OW", std::string(itsPixelBytes, 'x')).Bytes();
   }
};

// A grayscale print session whose callbacks leave notes, and whose instances are 1.2.1, 1.2.2 and so on.
class Host : public BasicGrayscalePrintManagementMeta
{
public:
   int GetNewSOPInstanceUID(const UID&, UID& theInstance) override
   {
      theInstance.Set("1.2." + std::to_string(++itsLastInstance));
      return 1;
   }
   void PrinterEventCallback(AbstractPrinter&, DICOMDataObject& theInformation, UINT16 theType, void* theArg) override
   {
      Note("printer event", theInformation, theType, theArg);
   }
   void PrintJobEventCallback(AbstractPrintJob& theJob, DICOMDataObject& theInformation, UINT16 theType,
                              void* theArg) override
   {
      Note("event of " + theJob.GetSOPInstanceUID().ToString(), theInformation, theType, theArg);
   }
   int ErrorCallback(const ErrorDescription& theError) override
   {
      itsNotes.push_back(std::string(theError.GetClass()) + "::" + theError.GetMethod() + ": " + theError.GetMessage() +
                         " (" + std::to_string(theError.GetOperation()) + ", " +
                         std::to_string(theError.GetErrorType()) + ")");
      return itsTolerance;
   }
   PrintAnswer AcceptPrint(const AbstractFilmBox*) override { return itsPrintAnswer; }
   int ActionPrintFilmBox(AbstractFilmBox* theFilmBox, DICOMDataObject&) override
   {
      itsNotes.push_back("print film " + theFilmBox->GetSOPInstanceUID().ToString());
      return 1;
   }
   int ActionPrint(AbstractFilmSession* theSession, DICOMDataObject&) override
   {
      itsNotes.push_back("print session " + theSession->GetSOPInstanceUID().ToString());
      return 1;
   }

   std::vector<std::string> itsNotes;
   int itsTolerance = 0;
   PrintAnswer itsPrintAnswer;

private:
   void Note(const std::string& theWhat, const DICOMDataObject& theInformation, UINT16 theType, const void* theArg)
   {
      RWCString aText;
      theInformation.GetString(0x2110, 0x0020, aText);
      itsNotes.push_back(theWhat + " " + std::to_string(theType) + " " + aText + (theArg == this ? " mine" : ""));
   }

   int itsLastInstance = 0;
};
} // namespace PrintBytes
