#include "talvenor/dataset/DICOMNodeCursor.h"

#include <algorithm>

#include "talvenor/dataset/DICOMNode.h"
#include "talvenor/foundation/CriticalSectionWhileInScope.h"

void DICOMNodeCursor::Seek(UINT32 theTag)
{
   itsNextTag = theTag;
   itsPlace.itsNode = nullptr;
   itsAncestors.clear();
}

VR* DICOMNodeCursor::Next()
{
   const bool isAlone = !itsNode.HasParent();
   const Candidate aFirst = isAlone ? FirstOf(itsNode, itsPlace) : FirstOfChain(itsNode, 0);
   if (aFirst.itsVR != nullptr)
   {
      itsNextTag = static_cast<UINT64>(aFirst.itsTag) + 1;
      if (isAlone)
      {
         itsNode.itsElements.Advance(itsPlace.itsPosition); // saves the next call a look at the element behind us
      }
   }
   return aFirst.itsVR;
}

// The node's own first element from itsNextTag on.
inline DICOMNodeCursor::Candidate DICOMNodeCursor::FirstOf(const DICOMNode& theNode, Place& thePlace) const
{
   const ElementTable& anElements = theNode.itsElements;
   if (thePlace.itsNode != &theNode || thePlace.itsVersion != anElements.GetVersion())
   {
      if (itsNextTag > 0xFFFFFFFF)
      {
         return {nullptr, 0};
      }
      thePlace = {&theNode, anElements.LowerBound(static_cast<UINT32>(itsNextTag)), anElements.GetVersion()};
   }
   while (VR* aVR = anElements.At(thePlace.itsPosition))
   {
      const UINT32 aTag = anElements.TagAt(thePlace.itsPosition);
      if (aTag >= itsNextTag)
      {
         return {aVR, aTag};
      }
      anElements.Advance(thePlace.itsPosition);
   }
   return {nullptr, 0};
}

// The same for a node and everything above it. Of equal tags the nearer one wins; the others are then below itsNextTag.
DICOMNodeCursor::Candidate DICOMNodeCursor::FirstOfChain(const DICOMNode& theNode, std::size_t theLevel)
{
   const CriticalSectionWhileInScope aGuard(theNode.itsLock);
   itsAncestors.resize(std::max(itsAncestors.size(), theLevel));
   const Candidate aNear = FirstOf(theNode, theLevel == 0 ? itsPlace : itsAncestors[theLevel - 1]);
   const DICOMNode* aParent = theNode.itsParent;
   if (aParent == nullptr)
   {
      return aNear;
   }
   const Candidate aFar = FirstOfChain(*aParent, theLevel + 1);
   return aNear.itsVR == nullptr || (aFar.itsVR != nullptr && aFar.itsTag < aNear.itsTag) ? aFar : aNear;
}
