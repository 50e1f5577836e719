#include "apps/tn/print/PrintRole.h"

#include <algorithm>
#include <iterator>

#include "apps/tn/node/NodeLog.h"
#include "apps/tn/print/PrintedFilm.h"
#include "talvenor/association/PDU_Service.h"
#include "talvenor/dataset/DICOMCommandObject.h"
#include "talvenor/print/PrintManagementMetas.h"

namespace
{
// Printer and presentation LUTs belong to no meta SOP class in particular; the gray session serves them.
const char* const kAccepted[] = {PrintMetaSOPClass::kBasicGrayscale, PrintMetaSOPClass::kBasicColor,
                                 PrintSOPClass::kPresentationLUT, PrintSOPClass::kPrinter};

constexpr UINT16 kPrintQueueFull = 0xC601; // PS3.4 H.4.2.2.4
} // namespace

// A print session of one kind. A film is written before its client is told that it is printed.
template <class Meta>
class PrintRole::Session : public Meta
{
public:
   explicit Session(PrintRole& theRole) : itsRole(theRole) {}

   PresentationLUTBox* GetPresentationLUTBox() override { return &this->itsPresentationLUTBoxMessages; }

   PrintAnswer AcceptPrint(const AbstractFilmBox* theFilmBox) override
   {
      if (itsRole.Print(*this, theFilmBox))
      {
         return {};
      }
      return {kPrintQueueFull, "The film cannot be written", {}, nullptr};
   }
   int ActionPrintFilmBox(AbstractFilmBox*, DICOMDataObject&) override { return 1; }

   // Those of an SCU.
   void PrinterEventCallback(AbstractPrinter&, DICOMDataObject&, UINT16, void*) override {}
   void PrintJobEventCallback(AbstractPrintJob&, DICOMDataObject&, UINT16, void*) override {}
   int ErrorCallback(const ErrorDescription&) override { return 0; }

private:
   PrintRole& itsRole;
};

PrintRole::PrintRole(const std::string& theFolder)
    : itsFolder(theFolder), itsGraySession(std::make_unique<Session<BasicGrayscalePrintManagementMeta>>(*this)),
      itsColorSession(std::make_unique<Session<BasicColorPrintManagementMeta>>(*this))
{}

PrintRole::~PrintRole() = default;

UINT64 PrintRole::GetLongestDataset() const
{
   return AbstractPrintManagementMeta::kDefaultMemoryLimit;
}

bool PrintRole::Accepts(const RWCString& theAbstractSyntax) const
{
   return std::find(std::begin(kAccepted), std::end(kAccepted), theAbstractSyntax) != std::end(kAccepted);
}

AbstractPrintManagementMeta& PrintRole::FindSession(const PDU_Service& theService)
{
   const UsablePresentationContext* const aContext = theService.GetCurrentPresentationContext();
   const bool isColor = aContext != nullptr && *aContext == UID(PrintMetaSOPClass::kBasicColor);
   return isColor ? *itsColorSession : *itsGraySession;
}

int PrintRole::Serve(PDU_Service& theService, DICOMCommandObject& theCommand)
{
   itsService = &theService;
   theService.SetResultCode(TN_NO_ERROR);
   if (FindSession(theService).Read(theService, theCommand))
   {
      return 1;
   }
   const bool isAnswered = theService.Connected() && theService.GetResultCode() == TN_NO_ERROR;
   itsRefused += isAnswered;
   return isAnswered;
}

// Of the whole session without a film box.
bool PrintRole::Print(const AbstractPrintManagementMeta& theSession, const AbstractFilmBox* theFilmBox)
{
   for (const auto& aFilmBox : theSession.GetFilmBoxes())
   {
      if (theFilmBox != nullptr && aFilmBox.get() != theFilmBox)
      {
         continue;
      }
      try
      {
         NodeLog::Line(*itsService, "printed " + WritePrintedFilm(itsFolder, theSession, *aFilmBox));
         ++itsFilms;
      }
      catch (const std::exception& anError)
      {
         NodeLog::Line(*itsService, std::string("film not printed: ") + anError.what());
         return false;
      }
   }
   return true;
}

std::string PrintRole::Describe() const
{
   std::string aText =
       itsFilms == 0 ? "" : std::to_string(itsFilms) + (itsFilms == 1 ? " film" : " films") + " printed";
   if (itsRefused != 0)
   {
      aText += (aText.empty() ? "" : ", ") + std::to_string(itsRefused) + " print requests refused";
   }
   return aText;
}
