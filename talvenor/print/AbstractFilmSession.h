// A film session: the sheets that are printed together (PS3.4 H.4.1), with copies, priority, medium and other
// attributes in its dataset. Owns the film boxes and the print jobs. Its only use is as base of
// AbstractPrintManagementMeta.
#pragma once

#include "talvenor/print/AbstractFilmBox.h"
#include "talvenor/print/AbstractPrinter.h"

class TALVENOR_API AbstractFilmSession : public PrintObject, public BusyMark
{
public:
   explicit AbstractFilmSession(AbstractPrintManagementMeta& theMeta);
   ~AbstractFilmSession() override;

   // The UID of a new instance of theSOPClass, and non-zero. The base has none to give, sets theInstance to a text that
   // is none and returns 0; an SCP that issues UIDs itself overrides it. Without an override it makes them with
   // MUIDFactory.
   virtual int GetNewSOPInstanceUID(const UID& theSOPClass, UID& theInstance);

   // Hooks for hosts that store and retrieve prints. The base does nothing and returns 1.
   virtual int ActionStore(DICOMDataObject& theInformation);
   virtual int ActionRetreive(DICOMDataObject& theInformation);

   // Append the part, which this object owns then.
   void Add(AbstractFilmBox* theBox) { AppendPart(itsFilmBoxes, theBox); }
   void Add(AbstractPrintJob* theJob) { AppendPart(itsPrintJobs, theJob); }
   void DeleteAll();

   const PrintParts<AbstractFilmBox>& GetFilmBoxes() const { return itsFilmBoxes; }
   const PrintParts<AbstractPrintJob>& GetPrintJobs() const { return itsPrintJobs; }

   // For an SCP: waits while the session is busy, destroys the children and takes the instance UID that
   // GetNewSOPInstanceUID issues, if it does.
   void ProtoGen();

   // Brings the film boxes in line with the dataset, one for each reference of (2000,0500). A film box that is
   // referenced stays with its attributes and children, others go, those that are missing are made.
   void ResyncAbstractFilmBoxs();

protected:
   // Take the children out, for the time of a ProtoGen, or one of them for good.
   PrintParts<AbstractFilmBox>& FilmBoxes() { return itsFilmBoxes; }
   PrintParts<AbstractPrintJob>& PrintJobs() { return itsPrintJobs; }

private:
   PrintParts<AbstractFilmBox> itsFilmBoxes;
   PrintParts<AbstractPrintJob> itsPrintJobs;
};
