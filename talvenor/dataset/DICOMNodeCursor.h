// Walks the elements of a node and its ancestors as one ascending sequence, the nearer element first hiding the others
// of its tag. A cursor belongs to its iterator, so that several may walk one dataset at once. Elements may come and go
// while it walks: it goes on behind the last tag that it returned. Not part of the library's interface.
#pragma once

#include <vector>

#include "talvenor/dataset/ElementTable.h"

class DICOMNode;
class VR;

class DICOMNodeCursor
{
public:
   explicit DICOMNodeCursor(const DICOMNode& theNode) : itsNode(theNode) {}

   void Rewind();

   // Goes on with the first element whose tag is theTag or above.
   void Seek(UINT32 theTag);

   VR* Next();   // null at the end

private:
   struct Place
   {
      const DICOMNode* itsNode;
      ElementTable::Position itsPosition;
      UINT32 itsVersion;
   };

   void Locate();   // finds every place anew, behind the last tag

   const DICOMNode& itsNode;
   std::vector<Place> itsPlaces;   // the node itself first
   bool itsStarted = false;
   UINT32 itsLastTag = 0;
};
