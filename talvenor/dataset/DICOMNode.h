// The element store under a dataset: elements in ascending order of tags, which may inherit the elements of a parent
// node. Shared parents are made by DICOMCluster; each dataset owns the node at the end of such a chain. An element of a
// node hides one with the same tag in a node above it.
//
// Every operation takes the node's own lock, then those of its ancestors, always from the leaf upwards. A dataset takes
// its own lock before its node's. Nobody waits for a node's lock while holding the one of an ancestor.
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "talvenor/dataset/ElementTable.h"
#include "talvenor/foundation/BasicTypes.h"
#include "talvenor/foundation/CriticalSection.h"

class VR;

class TALVENOR_API DICOMNode
{
public:
   DICOMNode();
   DICOMNode(const DICOMNode&) = delete;
   DICOMNode& operator=(const DICOMNode&) = delete;

   // Destroys the node's own elements and detaches it from its parent.
   virtual ~DICOMNode();

   // Inserts theVR, which the node owns from now on, or replaces (and destroys) the node's own element of that tag.
   // When an ancestor holds the tag, the inherited elements are copied down first, so that the tag exists once. Returns
   // 0, and destroys theVR, when there is no memory for its place; theVR is also destroyed when copying down throws.
   int Insert(VR* theVR);

   // The nearest element with the tag, null when no node of the chain has it. It stays the property of its node: an
   // inherited one belongs to many datasets and must not be changed.
   VR* Find(UINT32 theTag) const;

   // The node's own element, null when it has none of that tag itself.
   VR* FindOwn(UINT32 theTag) const;

   // Unlinks the element and hands it to the caller, null when there is none. Removing an inherited element first
   // copies everything inherited into this node and detaches it.
   VR* Remove(UINT32 theTag);

   // Copies down, then destroys the elements of the group. Returns 1 if there was one.
   int RemoveGroup(UINT16 theGroup);

   // Destroys the node's own elements and detaches it from its parent; nothing is copied down.
   void Clear();

   // Copies every inherited element that this node does not have itself and detaches the node. Nothing happens to a
   // node without parent. Throws what VR::Copy throws, and std::bad_alloc; the node then is still attached and shows
   // the same elements as before.
   void CopyDown();

   // The number of elements, inherited ones included.
   UINT32 Entries() const;

   // Appends each group number from theLow to theHigh (both included) once, in ascending order.
   void ListGroupsInRange(std::vector<int>& theGroups, int theLow, int theHigh, bool theSkipOdd) const;

   bool HasParent() const { return itsParent.load(std::memory_order_acquire) != nullptr; }
   std::string GetName() const; // for a shared node, the key value that it stands for; else empty

protected:
   friend class DICOMNodeCursor;
   friend class DICOMCluster;

   // What only a shared node has; a dataset's own node stays small. A node is shared if and only if it has this.
   struct Shared;

   explicit DICOMNode(const std::string& theName); // a shared node

private:
   void CopyElementsTo(ElementTable& theTable) const;
   void AttachTo(DICOMNode& theParent);
   void Detach();

   ElementTable itsElements;
   std::atomic<DICOMNode*> itsParent = nullptr; // changes under the lock; a cursor looks at it without
   std::unique_ptr<Shared> itsShared;
   mutable CriticalSection itsLock;
   UINT32 itsPlaceInParent = 0; // among the parent's datasets; guarded by the parent's lock
};
static_assert(sizeof(DICOMNode) <= 104, "one in every dataset and every item");
