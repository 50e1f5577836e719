// Walks the elements of a node and its ancestors as one ascending sequence, the nearer element first hiding the others
// of its tag. A cursor belongs to its iterator, so that several may walk one dataset at once. Elements may come and go
// while it walks, and the node may be attached and detached: it goes on behind the last tag that it returned.
//
// Threads: the node's owner guards the cursor as it guards the node (a dataset by its own lock). Locks of nodes are
// taken only while there is a parent, for then a cluster or its other datasets may be at work. Exported for tests; not
// part of the library's interface.
#pragma once

#include <vector>

#include "talvenor/Export.h"
#include "talvenor/dataset/ElementTable.h"

class DICOMNode;
class VR;

class TALVENOR_API DICOMNodeCursor
{
public:
   // theNode is borrowed and must outlive the cursor.
   explicit DICOMNodeCursor(const DICOMNode& theNode) : itsNode(theNode) {}

   void Rewind() { Seek(0); }

   // Goes on with the first element whose tag is theTag or above.
   void Seek(UINT32 theTag);

   VR* Next(); // null at the end

   // The tag under which the node holds the element that Next returned last.
   UINT32 GetTag() const { return static_cast<UINT32>(itsNextTag - 1); }

private:
   // Where one node of the chain stands: at its first element not below itsNextTag, once it has been brought up to
   // date.
   struct Place
   {
      const DICOMNode* itsNode = nullptr; // null while the position means nothing
      ElementTable::Position itsPosition = {};
      UINT32 itsVersion = 0;
   };
   struct Candidate
   {
      VR* itsVR;
      UINT32 itsTag;
   };

   Candidate FirstOf(const DICOMNode& theNode, Place& thePlace) const;
   Candidate FirstOfChain(const DICOMNode& theNode, std::size_t theLevel);

   const DICOMNode& itsNode;
   UINT64 itsNextTag = 0; // what is still to come starts here; 2^32 behind the highest tag
   Place itsPlace;
   std::vector<Place> itsAncestors; // the parent's place first
};
