#include "talvenor/print/PrintObject.h"

#include "talvenor/dataset/VR.h"
#include "talvenor/print/PrintOperations.h"

PrintObject::PrintObject(AbstractPrintManagementMeta& theMeta)
    : DICOMDataObject(TNEndian::LittleEndian), itsMeta(theMeta)
{}

PrintObject::~PrintObject() = default;

void PrintObject::Merge(DICOMDataObject& theSource)
{
   MergeAttributes(*this, theSource);
}

void MergeAttributes(DICOMDataObject& theTarget, DICOMDataObject& theSource)
{
   while (VR* const aVR = theSource.Pop())
   {
      if (aVR->GetAsSequenceVR() == nullptr && aVR->GetDataEndian() != theTarget.GetEndian())
      {
         aVR->SwapDataEndian();
      }
      theTarget.Push(aVR);
   }
}
