#include "apps/tn/send/SendPlan.h"

#include <algorithm>
#include <map>
#include <utility>

#include "apps/tn/codec/Decompression.h"
#include "apps/tn/files/DatasetSyntax.h"
#include "apps/tn/send/SendFile.h"

namespace
{
// Files that share their contexts: those of a SOP class that are native, or compressed in one syntax.
struct Group
{
   RWCString itsSOPClassUID;
   std::vector<RWCString> itsSyntaxes; // the files' own
   bool itsIsNative = false;
   std::vector<std::size_t> itsFiles;

   bool CanBeNative(bool theIsDecompressed) const
   {
      return itsIsNative || (theIsDecompressed && Decompression::IsServed(itsSyntaxes.front()));
   }

   std::vector<SendContext> MakeContexts(bool theIsDecompressed) const
   {
      std::vector<SendContext> aContexts;
      for (const RWCString& aSyntax : itsSyntaxes)
      {
         aContexts.push_back({itsSOPClassUID, {aSyntax}});
      }
      SendContext anOthers{itsSOPClassUID, {}};
      for (const RWCString* const aSyntax : NativeSyntaxes())
      {
         if (CanBeNative(theIsDecompressed) &&
             std::find(itsSyntaxes.begin(), itsSyntaxes.end(), *aSyntax) == itsSyntaxes.end())
         {
            anOthers.itsTransferSyntaxUIDs.push_back(*aSyntax);
         }
      }
      if (!anOthers.itsTransferSyntaxUIDs.empty())
      {
         aContexts.push_back(std::move(anOthers));
      }
      return aContexts;
   }
};

// In the order in which the files first name them.
std::vector<Group> MakeGroups(std::span<const SendFile> theFiles)
{
   std::vector<Group> aGroups;
   std::map<std::pair<RWCString, RWCString>, std::size_t> anIndex;
   for (std::size_t i = 0; i < theFiles.size(); ++i)
   {
      const SendFile& aFile = theFiles[i];
      const bool isNative = SyntaxOf(aFile.itsTransferSyntaxUID).IsNative();
      const auto [aPlace, isNew] = anIndex.try_emplace(
          {aFile.itsSOPClassUID, isNative ? RWCString() : aFile.itsTransferSyntaxUID}, aGroups.size());
      if (isNew)
      {
         aGroups.push_back({aFile.itsSOPClassUID, {}, isNative, {}});
      }
      Group& aGroup = aGroups[aPlace->second];
      if (std::find(aGroup.itsSyntaxes.begin(), aGroup.itsSyntaxes.end(), aFile.itsTransferSyntaxUID) ==
          aGroup.itsSyntaxes.end())
      {
         aGroup.itsSyntaxes.push_back(aFile.itsTransferSyntaxUID);
      }
      aGroup.itsFiles.push_back(i);
   }
   return aGroups;
}
} // namespace

std::vector<SendBatch> PlanBatches(std::span<const SendFile> theFiles, std::size_t theMostContexts,
                                   bool theIsDecompressed)
{
   std::vector<SendBatch> aBatches;
   for (const Group& aGroup : MakeGroups(theFiles))
   {
      std::vector<SendContext> aContexts = aGroup.MakeContexts(theIsDecompressed);
      if (aBatches.empty() || aBatches.back().itsContexts.size() + aContexts.size() > theMostContexts)
      {
         aBatches.emplace_back().itsIsDecompressed = theIsDecompressed;
      }
      SendBatch& aBatch = aBatches.back();
      std::move(aContexts.begin(), aContexts.end(), std::back_inserter(aBatch.itsContexts));
      aBatch.itsFiles.insert(aBatch.itsFiles.end(), aGroup.itsFiles.begin(), aGroup.itsFiles.end());
   }
   for (SendBatch& aBatch : aBatches)
   {
      std::sort(aBatch.itsFiles.begin(), aBatch.itsFiles.end());
   }
   return aBatches;
}
