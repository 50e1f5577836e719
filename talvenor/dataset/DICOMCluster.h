// Lets many datasets that were loaded from files share one copy of their study-level and series-level attributes. A
// dataset that is normalised into a cluster keeps its instance-level elements and sees the shared ones through a chain
// of parent nodes: series, study, cluster root. Whatever would change a shared element copies it down first, so no
// dataset sees another's changes.
//
// Datasets in different byte orders share nothing. A cluster that is destroyed first copies the shared elements down
// into the datasets that are still attached. Normalize may be called from several threads.
#pragma once

#include "talvenor/dataset/DICOMNode.h"
#include "talvenor/foundation/Mutex.h"

class TALVENOR_API DICOMCluster : private DICOMNode
{
public:
   // A table of levels is a sequence of records of kWordsPerLevel words: the number n of listed tags (at most 50), the
   // key tag, then the n tags that move to the shared node (group in the high half). A record with n = 0 ends it.
   static constexpr unsigned int kWordsPerLevel = 52;

   DICOMCluster() = default;
   ~DICOMCluster() override;

   // Attaches a dataset's node. The first dataset with a key value donates the listed elements, later ones drop theirs.
   // Returns 0, and nothing moves, when a key is missing or empty. theLevels null is the built-in table: study by
   // (0020,000D), series by (0020,000E).
   int Normalize(DICOMNode& theNode, const UINT32* theLevels = nullptr);

   // Prints the tree to standard output, a line a node, depth first.
   void List() const;

private:
   Mutex itsNormalizeMutex;   // one Normalize at a time: two first datasets of a study must make one node
};
