// Gives a file another patient ID and a comment, a UID of its own, and writes it as explicit VR little endian.
//
//    change-and-save FILE NEW-FILE PATIENT-ID
#include <iostream>

#include <talvenor/data/CompiledDictionaries.h>
#include <talvenor/dataset/DICOMDataObject.h>
#include <talvenor/dataset/VR.h>
#include <talvenor/dictionary/UID.h>
#include <talvenor/foundation/MUIDFactory.h>

namespace
{
void PushText(DICOMDataObject& theDataset, UINT16 theGroup, UINT16 theElement, const RWCString& theText)
{
   // The dataset owns what is pushed. An element that is not typed gets its representation from the dictionary.
   const char* const aText = theText.c_str();
   theDataset.Push(new VR(theGroup, theElement, aText, static_cast<UINT32>(theText.size())));
}
} // namespace

int main(int theCount, char** theArguments)
{
   DICOMDataObject aDataset;
   TNResultCode aResult = TN_NO_ERROR;
   int aSystemError = 0;
   if (theCount != 4 || !CompiledDictionaries::Load() || !aDataset.LoadFromFile(theArguments[1], aResult, aSystemError))
   {
      std::cerr << "change-and-save: cannot read: " << TNResult::Describe(aResult) << "\n";
      return 1;
   }

   PushText(aDataset, 0x0010, 0x0020, theArguments[3]);
   PushText(aDataset, 0x0010, 0x4000, "identification corrected");
   aDataset.Push(new VR(0x0008, 0x0018, UID(MUIDFactory::GetInstance().GetUID())));
   aDataset.RemoveVRList({MAttributeTag(0x0010, 0x1000), MAttributeTag(0x0010, 0x1001)}); // other IDs and names

   // The meta information of the new file is made from the dataset, so that the two agree.
   aDataset.RemoveGroup(0x0002);
   if (!aDataset.SaveToFile(theArguments[2], GivenOrLittleEndianExplicitFile, aResult, aSystemError))
   {
      std::cerr << "change-and-save: cannot write: " << TNResult::Describe(aResult) << "\n";
      return 1;
   }
}
