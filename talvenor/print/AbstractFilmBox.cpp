#include "talvenor/print/AbstractFilmBox.h"

#include <algorithm>
#include <iterator>

#include "talvenor/dataset/VR.h"
#include "talvenor/print/AbstractPrintManagementMeta.h"
#include "talvenor/print/PrintReferences.h"

namespace
{
constexpr UINT16 kImageBoxGroup = 0x2020;
constexpr UINT16 kImagePosition = 0x0010;
constexpr UINT16 kImageSequences[] = {0x0110, 0x0111}; // gray and colour

// Whether an image box has something to print.
bool HasImage(const AbstractImageBox& theBox)
{
   return std::any_of(std::begin(kImageSequences), std::end(kImageSequences), [&](UINT16 theElement) {
      const VR* const aVR = theBox.GetVR(kImageBoxGroup, theElement);
      return aVR != nullptr && !aVR->IsEmpty();
   });
}
} // namespace

AbstractFilmBox::AbstractFilmBox(AbstractPrintManagementMeta& theMeta) : PrintObject(theMeta) {}

AbstractFilmBox::~AbstractFilmBox() = default;

void AbstractFilmBox::DeleteAll()
{
   itsImageBoxes.clear();
   itsAnnotationBoxes.clear();
}

void AbstractFilmBox::ProtoGen()
{
   WaitWhileBusy();
   DeleteAll();
   TakeNewInstanceUID(*this, PrintSOPClass::kFilmBox);
}

void AbstractFilmBox::Regenerate()
{
   PrintParts<AbstractImageBox> anImageBoxes = std::move(itsImageBoxes);
   PrintParts<AbstractAnnotationBox> anAnnotationBoxes = std::move(itsAnnotationBoxes);
   const UID anInstance = GetSOPInstanceUID();
   ProtoGen();
   SetSOPInstanceUID(anInstance);
   itsImageBoxes = std::move(anImageBoxes);
   itsAnnotationBoxes = std::move(anAnnotationBoxes);
   ResyncAbstractImageBoxs();
   ResyncAbstractAnnotationBoxs();
}

void AbstractFilmBox::ResyncAbstractImageBoxs()
{
   ResyncParts(itsImageBoxes, ReadReferences(*this, PrintTag::kReferencedImageBoxes), GetMeta());
}

void AbstractFilmBox::ResyncAbstractAnnotationBoxs()
{
   ResyncParts(itsAnnotationBoxes, ReadReferences(*this, PrintTag::kReferencedAnnotationBoxes), GetMeta());
}

int AbstractFilmBox::SetImageBoxInstanceUIDS()
{
   return AssignReferences(itsImageBoxes, ReadReferences(*this, PrintTag::kReferencedImageBoxes));
}

int AbstractFilmBox::SetAnnotationBoxInstanceUIDS()
{
   return AssignReferences(itsAnnotationBoxes, ReadReferences(*this, PrintTag::kReferencedAnnotationBoxes));
}

bool AbstractFilmBox::HasImageCollision() const
{
   std::vector<UINT16> aPositions;
   for (const auto& aBox : itsImageBoxes)
   {
      UINT16 aPosition = 0;
      if (HasImage(*aBox) && aBox->GetUINT16(kImageBoxGroup, kImagePosition, aPosition))
      {
         aPositions.push_back(aPosition);
      }
   }
   std::sort(aPositions.begin(), aPositions.end());
   return std::adjacent_find(aPositions.begin(), aPositions.end()) != aPositions.end();
}
