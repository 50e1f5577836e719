// The index of an archive while others store.
#include <atomic>
#include <chrono>
#include <future>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "apps/tn/archive/Index.h"
#include "support/TemporaryDirectory.h"

namespace
{
IndexedInstance Instance(const std::string& theUID)
{
   IndexedInstance anInstance;
   anInstance.itsKeys[Key::kSOPInstance] = theUID;
   anInstance.itsKeys[Key::kStudy] = "1.2";
   anInstance.itsKeys[Key::kSeries] = "1.2.3";
   anInstance.itsPath = "1.2/1.2.3/" + theUID + ".dcm";
   return anInstance;
}
} // namespace

// A query must not wait for a pause of those who store.
TEST(Index, WhatWasAddedIsThereAfterFlushWhileOthersAdd)
{
   const TemporaryDirectory aFolder;
   const std::string aPath = aFolder.File("index.db");
   Index anIndex(aPath);
   std::atomic<bool> isOver = false;
   std::thread aSender([&] {
      for (unsigned int i = 0; !isOver; ++i)
      {
         anIndex.Add(Instance("1.2.3.1." + std::to_string(i)), "1.2/1.2.3", nullptr);
      }
   });

   for (int i = 0; i < 5; ++i)
   {
      const std::string aUID = "1.2.3.2." + std::to_string(i);
      anIndex.Add(Instance(aUID), "1.2/1.2.3", nullptr);
      auto aFlush = std::async(std::launch::async, [&] { return anIndex.Flush(); });
      const bool isInTime = aFlush.wait_for(std::chrono::seconds(20)) == std::future_status::ready;
      isOver = isOver || !isInTime;
      EXPECT_TRUE(isInTime);
      EXPECT_TRUE(aFlush.get());
      EXPECT_TRUE(IndexDatabase(aPath).Find(aUID)) << aUID;
   }
   isOver = true;
   aSender.join();
}
