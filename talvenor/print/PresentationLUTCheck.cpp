#include "talvenor/print/PresentationLUTCheck.h"

#include <algorithm>
#include <iterator>

#include "talvenor/dataset/SequenceVR.h"
#include "talvenor/print/PrintStatus.h"

namespace
{
struct Tag
{
   UINT16 itsGroup;
   UINT16 itsElement;
};
constexpr Tag kSequence = {0x2050, 0x0010};
constexpr Tag kShape = {0x2050, 0x0020};
constexpr Tag kDescriptor = {0x0028, 0x3002};
constexpr Tag kData = {0x0028, 0x3006};

constexpr const char* kShapes[] = {"IDENTITY", "LIN OD", "INVERSE"}; // the last is for screens (C.11.6)

PrintAnswer Refusal(UINT16 theStatus, const Tag& theTag, const char* theComment)
{
   return {theStatus, theComment, {{theTag.itsGroup, theTag.itsElement}}};
}

const VR* Find(const DICOMDataObject& theObject, const Tag& theTag)
{
   return theObject.GetVR(theTag.itsGroup, theTag.itsElement);
}

// PS3.3 C.11.4: the number of entries (0 stands for 65536), the first value mapped, which is 0, and the bits of an
// entry.
PrintAnswer CheckTable(const DICOMDataObject& theTable)
{
   constexpr unsigned int kLeastBits = 8; // 10 in the standard; 8 in the field
   constexpr unsigned int kMostBits = 16;
   const VR* const aDescriptor = Find(theTable, kDescriptor);
   const VR* const aData = Find(theTable, kData);
   if (aDescriptor == nullptr || aData == nullptr)
   {
      return Refusal(PrintStatus::kMissingAttribute, aDescriptor == nullptr ? kDescriptor : kData,
                     "A LUT without descriptor or data");
   }
   if (aDescriptor->GetData() == nullptr || aDescriptor->GetLength() != 6)
   {
      return Refusal(PrintStatus::kInvalidValue, kDescriptor, "Not three numbers");
   }
   const auto aNumber = [&](unsigned int theIndex) {
      return TNEndian::Load<UINT16>(aDescriptor->GetData() + 2 * theIndex, aDescriptor->GetDataEndian());
   };
   if (aNumber(1) != 0 || aNumber(2) < kLeastBits || aNumber(2) > kMostBits)
   {
      return Refusal(PrintStatus::kInvalidValue, kDescriptor, "Not from 0, or not of 8 to 16 bits");
   }
   const UINT32 aCount = aNumber(0) == 0 ? 65536 : aNumber(0);
   if (aData->GetData() == nullptr || aData->GetLength() != 2 * aCount)
   {
      return Refusal(PrintStatus::kInvalidValue, kData, "Not as many entries as the descriptor says");
   }
   return {};
}
} // namespace

PrintAnswer CheckPresentationLUT(const DICOMDataObject& theAttributes)
{
   if (theAttributes.HasAttribute(kShape.itsGroup, kShape.itsElement))
   {
      RWCString aShape;
      theAttributes.GetString(kShape.itsGroup, kShape.itsElement, aShape);
      if (std::find(std::begin(kShapes), std::end(kShapes), aShape) == std::end(kShapes))
      {
         return Refusal(aShape.empty() ? PrintStatus::kMissingValue : PrintStatus::kInvalidValue, kShape,
                        "Unknown shape of a presentation LUT");
      }
   }
   const VR* const aVR = Find(theAttributes, kSequence);
   if (aVR == nullptr)
   {
      return {};
   }
   const SequenceVR* const aSequence = aVR->GetAsSequenceVR();
   if (aSequence == nullptr)
   {
      return Refusal(PrintStatus::kInvalidValue, kSequence, "Not a sequence");
   }
   if (aSequence->IsEmpty())
   {
      return Refusal(PrintStatus::kMissingValue, kSequence, "No LUT in the sequence");
   }
   const SequenceVR::Items& anItems = *aSequence->GetSequenceArray();
   if (anItems.size() != 1 || anItems.front() == nullptr)
   {
      return Refusal(PrintStatus::kInvalidValue, kSequence, "More than one LUT");
   }
   return CheckTable(*anItems.front());
}
