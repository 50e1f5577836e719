// A film box: one sheet of a print session (PS3.4 H.4.2), with its layout and other attributes in its dataset. Owns the
// boxes of its images and annotations.
#pragma once

#include "talvenor/print/AbstractImageBox.h"
#include "talvenor/print/BusyMark.h"

class TALVENOR_API AbstractFilmBox : public PrintObject, public BusyMark
{
public:
   explicit AbstractFilmBox(AbstractPrintManagementMeta& theMeta);
   ~AbstractFilmBox() override;

   // Append theBox, which this object owns then.
   void Add(AbstractImageBox* theBox) { AppendPart(itsImageBoxes, theBox); }
   void Add(AbstractAnnotationBox* theBox) { AppendPart(itsAnnotationBoxes, theBox); }
   void DeleteAll();

   const PrintParts<AbstractImageBox>& GetImageBoxes() const { return itsImageBoxes; }
   const PrintParts<AbstractAnnotationBox>& GetAnnotationBoxes() const { return itsAnnotationBoxes; }

   // For an SCP: waits while the film box is busy, destroys the children and takes the instance UID that the film
   // session issues, if it does.
   void ProtoGen();

   // For an SCP whose client has changed the film box: the same, but the film box keeps its UID, and the children that
   // its dataset references.
   void Regenerate();

   // Bring the children in line with the dataset, one for each reference: (2010,0510) to image boxes, (2010,0520) to
   // annotation boxes. A child that is referenced stays with its attributes and children, others go, those that are
   // missing are made.
   void ResyncAbstractImageBoxs();
   void ResyncAbstractAnnotationBoxs();

   // For an SCU: give the boxes, in their order, the UIDs of the same references, which come from the printer. 0 when
   // there are fewer references than boxes.
   int SetImageBoxInstanceUIDS();
   int SetAnnotationBoxInstanceUIDS();

   // Whether two image boxes with an image have the same position (2020,0010).
   bool HasImageCollision() const;

   // For an SCU: created at the printer, but not all boxes are sent.
   bool IsUnfinished() const { return itsIsUnfinished; }
   void SetUnfinished(bool theFlag) { itsIsUnfinished = theFlag; }

private:
   PrintParts<AbstractImageBox> itsImageBoxes;
   PrintParts<AbstractAnnotationBox> itsAnnotationBoxes;
   bool itsIsUnfinished = false;
};
