// Prints values of a DICOM file, by tag and by name, and the first item of a sequence.
//
//    read-value FILE
#include <iostream>

#include <talvenor/data/CompiledDictionaries.h>
#include <talvenor/dataset/DICOMDataObject.h>
#include <talvenor/dataset/SequenceVR.h>

int main(int theCount, char** theArguments)
{
   // Names and value representations come from the dictionaries; values by tag could do without.
   DICOMDataObject aDataset;
   TNResultCode aResult = TN_NO_ERROR;
   int aSystemError = 0;
   if (theCount != 2 || !CompiledDictionaries::Load() || !aDataset.LoadFromFile(theArguments[1], aResult, aSystemError))
   {
      std::cerr << "read-value: " << TNResult::Describe(aResult) << "\n";
      return 1;
   }

   RWCString aName;
   if (aDataset.GetString(0x0010, 0x0010, aName))
   {
      std::cout << "patient   " << aName << "\n";
   }
   UINT16 aRows = 0;
   UINT16 aColumns = 0;
   if (aDataset.GetUINT16("Rows", aRows) && aDataset.GetUINT16("Columns", aColumns))
   {
      std::cout << "size      " << aColumns << " x " << aRows << "\n";
   }
   DOUBLE aThickness = 0;
   if (aDataset.GetDOUBLE(0x0018, 0x0050, aThickness)) // a decimal string in the file
   {
      std::cout << "thickness " << aThickness << " mm\n";
   }

   const VR* const aReferences = aDataset.GetVR(0x0008, 0x1140);
   const SequenceVR* const aSequence = aReferences != nullptr ? aReferences->GetAsSequenceVR() : nullptr;
   if (aSequence != nullptr && !aSequence->IsEmpty())
   {
      for (const DICOMDataObject* anItem : *aSequence->GetSequenceArray())
      {
         RWCString anInstance;
         if (anItem->GetString(0x0008, 0x1155, anInstance))
         {
            std::cout << "refers to " << anInstance << "\n";
         }
      }
   }
}
