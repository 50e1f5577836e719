#include "talvenor/dataset/DICOMCluster.h"

#include <cstdio>
#include <memory>
#include <thread>

#include "talvenor/dataset/ClusterLevels.h"
#include "talvenor/dataset/DICOMNodeShared.h"
#include "talvenor/dataset/VR.h"
#include "talvenor/dataset/VRAccessEndian.h"
#include "talvenor/foundation/CriticalSectionWhileInScope.h"
#include "talvenor/foundation/MutexWhileInScope.h"

static_assert(DICOMCluster::kWordsPerLevel == ClusterLevel::kWords);

DICOMCluster::DICOMCluster() : DICOMNode(std::string()) {}

DICOMCluster::~DICOMCluster()
{
   ReleaseDatasets(*this);
}

int DICOMCluster::Normalize(DICOMNode& theNode, const UINT32* theLevels)
{
   const MutexWhileInScope aTreeGuard(itsTreeMutex);
   const CriticalSectionWhileInScope aGuard(theNode.itsLock);
   ClusterLevel aLevel(theLevels != nullptr ? theLevels : kBuiltInClusterLevels.data());
   std::vector<Key> aKeys;
   if (!FindKeys(theNode, aLevel, aKeys))
   {
      return 0;
   }
   theNode.CopyDown();
   DICOMNode* aParent = this;
   for (const Key& aKey : aKeys)
   {
      aParent = &Share(*aParent, theNode, aLevel, aKey);
      aLevel = aLevel.GetNext();
   }
   theNode.AttachTo(*aParent);
   return 1;
}

// The keys of all levels are known before anything moves: a dataset that lacks the last one must keep the elements of
// the first.
bool DICOMCluster::FindKeys(const DICOMNode& theNode, ClusterLevel theLevel, std::vector<Key>& theKeys)
{
   for (; !theLevel.IsEnd(); theLevel = theLevel.GetNext())
   {
      const VR* aVR = theLevel.IsValid() ? theNode.Find(theLevel.GetKeyTag()) : nullptr;
      Key aKey = {};
      if (aVR == nullptr || !VRAccessLE(*aVR).GetString(aKey.itsText) || aKey.itsText.empty())
      {
         return false;
      }
      aKey.itsEndian = aVR->GetDataEndian();
      theKeys.push_back(std::move(aKey));
   }
   return true;
}

// The node that theKey stands for, made from theNode's elements when it is the first; theNode has none of the level's
// elements afterwards.
DICOMNode& DICOMCluster::Share(DICOMNode& theParent, DICOMNode& theNode, const ClusterLevel& theLevel,
                               const Key& theKey)
{
   const CriticalSectionWhileInScope aGuard(theParent.itsLock);
   Shared& aFamily = *theParent.itsShared;
   Shared::NodesByName& aNodes = aFamily.ByName(theKey.itsEndian);
   if (const auto aFound = aNodes.find(theKey.itsText); aFound != aNodes.end())
   {
      for (const UINT32 aTag : theLevel.GetTags())
      {
         delete theNode.itsElements.Remove(aTag);
      }
      return *aFound->second;
   }

   std::unique_ptr<DICOMNode> anOwned(new DICOMNode(theKey.itsText));
   DICOMNode& aNew = *anOwned;
   aFamily.itsNodes.push_back(std::move(anOwned));
   aNodes.emplace(theKey.itsText, &aNew);
   aNew.itsParent = &theParent;
   for (const UINT32 aTag : theLevel.GetTags())
   {
      if (VR* aVR = theNode.itsElements.Remove(aTag); aVR != nullptr)
      {
         aNew.itsElements.Insert(aVR);
      }
   }
   return aNew;
}

// Copies down and detaches every dataset below theNode. A dataset may be about to go, or be in use, in another thread
// that holds its lock and waits for ours; so its lock is only tried while ours is held, and ours is given up between
// two tries. While a dataset is in the list and our lock is held it cannot end.
void DICOMCluster::ReleaseDatasets(DICOMNode& theNode)
{
   for (bool isDone = false; !isDone;)
   {
      {
         const CriticalSectionWhileInScope aGuard(theNode.itsLock);
         const std::vector<DICOMNode*>& aDatasets = theNode.itsShared->itsDatasets;
         while (!aDatasets.empty() && aDatasets.back()->itsLock.TryEnter())
         {
            DICOMNode& aDataset = *aDatasets.back();
            aDataset.CopyDown();
            aDataset.itsLock.Leave();
         }
         isDone = aDatasets.empty();
      }
      if (!isDone)
      {
         std::this_thread::yield();
      }
   }
   for (const std::unique_ptr<DICOMNode>& aNode : theNode.itsShared->itsNodes)
   {
      ReleaseDatasets(*aNode);
   }
}

void DICOMCluster::List() const
{
   const MutexWhileInScope aTreeGuard(itsTreeMutex);
   List(*this, 0);
}

// Shared nodes stay while the tree mutex is held; datasets may leave at any time.
void DICOMCluster::List(const DICOMNode& theNode, int theLevel)
{
   static constexpr char kLine[] = "%sLevel %d - %d children\n";
   const auto anIndentOf = [](int theDepth) { return std::string(3 * static_cast<std::size_t>(theDepth), ' '); };
   std::size_t aDatasetCount = 0;
   {
      const CriticalSectionWhileInScope aGuard(theNode.itsLock);
      aDatasetCount = theNode.itsShared->itsDatasets.size();
   }
   const std::vector<std::unique_ptr<DICOMNode>>& aNodes = theNode.itsShared->itsNodes;
   std::printf(kLine, anIndentOf(theLevel).c_str(), theLevel, static_cast<int>(aNodes.size() + aDatasetCount));
   for (const std::unique_ptr<DICOMNode>& aNode : aNodes)
   {
      List(*aNode, theLevel + 1);
   }
   for (; aDatasetCount > 0; --aDatasetCount)
   {
      std::printf(kLine, anIndentOf(theLevel + 1).c_str(), theLevel + 1, 0);
   }
}
