// Lets many datasets that were loaded from files share one copy of their study-level and series-level attributes. A
// dataset that is normalised into a cluster keeps its instance-level elements and sees the shared ones through a chain
// of parent nodes: series, study, cluster root. Whatever would change a shared element copies it down first, so no
// dataset sees another's changes.
//
// Datasets in different byte orders share nothing. A cluster that is destroyed first copies the shared elements down
// into the datasets that are still attached; pointers to inherited elements end with it. Several threads may load
// datasets into one cluster, read and destroy them; only the destructor of the cluster must be the last to work on it.
#pragma once

#include <string>
#include <vector>

#include "talvenor/dataset/DICOMNode.h"
#include "talvenor/foundation/Mutex.h"
#include "talvenor/io/TNEndian.h"

class ClusterLevel;

class TALVENOR_API DICOMCluster : private DICOMNode
{
public:
   // A table of levels is a sequence of records of kWordsPerLevel words: the number n of listed tags (at most 50), the
   // key tag, then the n tags that move to the shared node (group in the high half). A record with n = 0 ends it.
   static constexpr unsigned int kWordsPerLevel = 52;

   DICOMCluster();
   ~DICOMCluster() override;

   // Attaches a dataset's node. The first dataset with a key value donates the listed elements; later ones drop theirs,
   // also where they differ. Returns 0, and nothing moves, when a key is missing or has no value but padding, or when a
   // record lists more than 50 tags. theLevels null is the built-in table: study by (0020,000D), series by (0020,000E).
   // A node that is attached already is copied down and attached anew.
   //
   // DICOMObject::LoadFromFile does this for the dataset that it loads. A host that does it by hand locks the dataset
   // meanwhile, and does not push an item (DICOMObject::Push of a DICOMDataObject) before it has pushed the item's
   // sequence again: the sequence pushed last may have moved to a shared node or be gone.
   int Normalize(DICOMNode& theNode, const UINT32* theLevels = nullptr);

   // Prints the tree to standard output, a line a node, depth first.
   void List() const;

private:
   struct Key
   {
      std::string itsText;
      TNEndian::EndianType itsEndian;
   };

   static bool FindKeys(const DICOMNode& theNode, ClusterLevel theLevel, std::vector<Key>& theKeys);
   static DICOMNode& Share(DICOMNode& theParent, DICOMNode& theNode, const ClusterLevel& theLevel, const Key& theKey);
   static void ReleaseDatasets(DICOMNode& theNode);
   static void List(const DICOMNode& theNode, int theLevel);

   mutable Mutex itsTreeMutex; // one Normalize at a time: two first datasets of a study must make one node
};
