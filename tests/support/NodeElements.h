// Elements for tests of dataset nodes: they are told apart by a number and count how many of them are alive.
#pragma once

#include <vector>

#include "talvenor/dataset/DICOMNode.h"
#include "talvenor/dataset/DICOMNodeCursor.h"
#include "talvenor/dataset/VR.h"

class CountedVR : public VR
{
public:
   explicit CountedVR(UINT32 theTag, int theNumber = 0)
       : VR(static_cast<UINT16>(theTag >> 16), static_cast<UINT16>(theTag)), itsNumber(theNumber)
   {
      ++itsLiving;
   }
   CountedVR(const CountedVR& theOther) : VR(theOther), itsNumber(theOther.itsNumber) { ++itsLiving; }
   CountedVR& operator=(const CountedVR&) = delete;
   ~CountedVR() override { --itsLiving; }
   VR* Copy() const override { return new CountedVR(*this); }

   static int NumberOf(const VR* theVR) { return static_cast<const CountedVR*>(theVR)->itsNumber; }
   static int GetLiving() { return itsLiving; }

private:
   inline static int itsLiving = 0;
   int itsNumber;
};

// What a walk over the node returns. Asks the cursor for the tags: an inherited element may be gone by now when a
// cluster ends in another thread.
inline std::vector<UINT32> TagsOf(const DICOMNode& theNode)
{
   std::vector<UINT32> aTags;
   DICOMNodeCursor aCursor(theNode);
   while (aCursor.Next() != nullptr)
   {
      aTags.push_back(aCursor.GetTag());
   }
   return aTags;
}
