#include "talvenor/print/AbstractImageBox.h"

#include "talvenor/print/AbstractPrintManagementMeta.h"
#include "talvenor/print/PrintReferences.h"

AbstractImageBox::AbstractImageBox(AbstractPrintManagementMeta& theMeta) : PrintObject(theMeta) {}

AbstractImageBox::~AbstractImageBox() = default;

void AbstractImageBox::DeleteAll()
{
   itsOverlayBoxes.clear();
   itsLUTBoxes.clear();
   itsPrintOverlayBoxes.clear();
   itsPresentationLUTBoxes.clear();
}

void AbstractImageBox::ProtoGen()
{
   DeleteAll();
   UID aSOPClass;
   StandardBox* const aMessages = GetMeta().GetImageBox();
   if (aMessages == nullptr || !aMessages->GetUID(aSOPClass))
   {
      SetSOPClassUID(UID());
      SetSOPInstanceUID(UID());
      return;
   }
   TakeNewInstanceUID(*this, aSOPClass);
}

void AbstractImageBox::ResyncAbstractOverlayBoxs()
{
   ResyncParts(itsOverlayBoxes, ReadReferences(*this, PrintTag::kReferencedOverlays, PrintSOPClass::kImageOverlayBox),
               GetMeta());
}

void AbstractImageBox::ResyncAbstractPrintOverlayBoxs()
{
   ResyncParts(itsPrintOverlayBoxes,
               ReadReferences(*this, PrintTag::kReferencedOverlays, PrintSOPClass::kPrintOverlayBox), GetMeta());
}

void AbstractImageBox::ResyncAbstractLUTBoxs()
{
   ResyncParts(itsLUTBoxes, ReadReferences(*this, PrintTag::kReferencedVOILUTs), GetMeta());
}

void AbstractImageBox::ResyncAbstractPresentationLUTBoxs()
{
   ResyncParts(itsPresentationLUTBoxes, ReadReferences(*this, PrintTag::kReferencedPresentationLUTs), GetMeta());
}
