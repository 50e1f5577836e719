// An image box: the place of one image on a film (PS3.4 H.4.3), with the image in its dataset. Owns what is applied to
// that image.
#pragma once

#include "talvenor/print/AbstractPrintBoxes.h"

class TALVENOR_API AbstractImageBox : public PrintObject
{
public:
   explicit AbstractImageBox(AbstractPrintManagementMeta& theMeta);
   ~AbstractImageBox() override;

   // Append theBox, which this object owns then.
   void Add(AbstractOverlayBox* theBox) { AppendPart(itsOverlayBoxes, theBox); }
   void Add(AbstractLUTBox* theBox) { AppendPart(itsLUTBoxes, theBox); }
   void Add(AbstractPrintOverlayBox* theBox) { AppendPart(itsPrintOverlayBoxes, theBox); }
   void Add(AbstractPresentationLUTBox* theBox) { AppendPart(itsPresentationLUTBoxes, theBox); }
   void DeleteAll();

   const PrintParts<AbstractOverlayBox>& GetOverlayBoxes() const { return itsOverlayBoxes; }
   const PrintParts<AbstractLUTBox>& GetLUTBoxes() const { return itsLUTBoxes; }
   const PrintParts<AbstractPrintOverlayBox>& GetPrintOverlayBoxes() const { return itsPrintOverlayBoxes; }
   const PrintParts<AbstractPresentationLUTBox>& GetPresentationLUTBoxes() const { return itsPresentationLUTBoxes; }

   // For an SCP: destroys the children and takes the instance UID that the film session issues, if it does, for the SOP
   // class of the meta's image boxes; both UIDs become empty when it has none.
   void ProtoGen();

   // Bring the children in line with the dataset, one for each reference: (2020,0130) to overlay and print overlay
   // boxes, (2020,0140) to look-up tables, (2050,0500) to presentation look-up tables. A child that is referenced stays
   // with its attributes, others go, those that are missing are made.
   void ResyncAbstractOverlayBoxs();
   void ResyncAbstractPrintOverlayBoxs();
   void ResyncAbstractLUTBoxs();
   void ResyncAbstractPresentationLUTBoxs();

private:
   PrintParts<AbstractOverlayBox> itsOverlayBoxes;
   PrintParts<AbstractLUTBox> itsLUTBoxes;
   PrintParts<AbstractPrintOverlayBox> itsPrintOverlayBoxes;
   PrintParts<AbstractPresentationLUTBox> itsPresentationLUTBoxes;
};
