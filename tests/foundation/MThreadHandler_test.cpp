#include "talvenor/foundation/MThreadHandler.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iostream>
#include <sstream>
#include <sys/resource.h>
#include <thread>

#include "support/TemporaryFile.h"
#include "talvenor/foundation/Exceptions.h"
#include "talvenor/foundation/StreamIOException.h"
#include "talvenor/foundation/TNTrace.h"

namespace
{

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

unsigned int ThreadCount()
{
   MThreadHandler::IncrementThreadCount();
   return MThreadHandler::DecrementThreadCount();
}

void WaitForThreads()
{
   while (ThreadCount() > 1)
   {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
   }
}

void CallFunction(void* theFunction)
{
   (*static_cast<std::function<void()>*>(theFunction))();
}

// What gTNErrorLog and gTNTracer, with thread tracing, write during its life.
class LogText
{
public:
   LogText()
   {
      gTNErrorLog.On(itsText);
      gTNTracer.On(gTNErrorLog);
      gTNTracer.SetTrace(TNTrace::TNTraceThreads);
   }
   ~LogText()
   {
      gTNTracer.Clear();
      gTNTracer.Off();
      gTNErrorLog.Off();
   }
   std::string Text() const { return itsText.str(); }

private:
   std::ostringstream itsText;
};

TEST(MThreadHandler, RunsTheFunctionOnAStackOfAnySizeAndTracesItsThread)
{
   std::atomic<unsigned int> aCountInside = 0;
   std::function<void()> aFunction = [&] { aCountInside = ThreadCount(); };
   LogText aLog;
   for (const int aStackSize : {-1, 1, 100000, 1 << 20})
   {
      aCountInside = 0;
      EXPECT_EQ(MThreadHandler::CreateDetachedThread(CallFunction, &aFunction, aStackSize), 0) << aStackSize;
      WaitForThreads();
      EXPECT_EQ(aCountInside, 2u) << aStackSize;
   }
   const std::string aText = aLog.Text();
   EXPECT_THAT(aText, HasSubstr("MThreadHandler::CreateDetachedThread() Created thread. (ID =  "));
   EXPECT_THAT(aText, HasSubstr("MThreadHandler::StartThread() Thread starting. (ID =  "));
   EXPECT_THAT(aText, HasSubstr("MThreadHandler::StartThread() Thread is history. (ID =  "));
   EXPECT_THAT(aText, HasSubstr("MThreadHandler::EndThread() Ending thread "));
   EXPECT_THAT(aText, AllOf(HasSubstr(" Thread count now 1\n"), Not(HasSubstr("Process exiting"))));
   EXPECT_LT(aText.find("Created thread."), aText.find("Ending thread ")) << "counted down before counted";
}

TEST(MThreadHandler, CountDoesNotFallBelowNothing)
{
   EXPECT_EQ(MThreadHandler::DecrementThreadCount(), 0u);
   EXPECT_EQ(MThreadHandler::DecrementThreadCount(), 0u);
   EXPECT_EQ(MThreadHandler::IncrementThreadCount(), 1u);
}

template <class Exception, class... Arguments>
std::function<void()> Throw(Arguments... theArguments)
{
   return [=] { throw Exception(theArguments...); };
}

TEST(MThreadHandler, ReportsWhatEscapesAThreadFunction)
{
   struct
   {
      std::function<void()> itsFunction;
      const char* itsText;
   } aCases[] = {
       {Throw<RWBoundsErr>("m"), "RWBoundsErr: m"},
       {Throw<RWxmsg>("m"), "RWxmsg: m"},
       {Throw<BadAllocException>(8u), "BadAllocException: Memory allocation (8 bytes requested) failed."},
       {Throw<InvalidValueTypeException>(32u, nullptr, 0), "InvalidValueTypeException: Invalid type code: 0x20"},
       {Throw<StreamIOException>("m", TN_END_OF_FILE, 0), "Unknown exception"},
       {Throw<int>(3), "Unknown exception"},
   };
   for (auto& aCase : aCases)
   {
      LogText aLog;
      testing::internal::CaptureStderr();
      EXPECT_EQ(MThreadHandler::CreateDetachedThread(CallFunction, &aCase.itsFunction, 0), 0);
      WaitForThreads();
      const std::string anEnd = std::string(". Thread terminating...\nException: ") + aCase.itsText + "\n";
      const std::string anOutput = testing::internal::GetCapturedStderr();
      EXPECT_THAT(anOutput, testing::StartsWith("Unhandled exception in thread ")) << aCase.itsText;
      EXPECT_THAT(anOutput, testing::EndsWith(anEnd));
      EXPECT_THAT(aLog.Text(), HasSubstr("MThreadHandler::StartThread() " + anOutput));
   }
}

// A thread that its function ends by other means is unwound past the catch clauses.
TEST(MThreadHandler, LetsAThreadEndItself)
{
   struct Handler : MThreadHandler
   {
      static void End(void*) { EndThread(); }
   };
   LogText aLog;
   EXPECT_EQ(MThreadHandler::CreateDetachedThread(Handler::End, nullptr, 0), 0);
   WaitForThreads();
   EXPECT_THAT(aLog.Text(), AllOf(HasSubstr("Thread count now 1"), Not(HasSubstr("history"))));
}

// The end of the main thread and of the process can only be seen from outside: these tests run themselves again in a
// process of their own and read what it writes. What the test framework owns in the frames of main is lost with them,
// so the child does not look for leaks.
constexpr char kChildMark[] = "TALVENOR_TEST_CHILD";

void ExpectOfChild(const testing::Matcher<std::string>& theOutput)
{
   const testing::TestInfo& aTest = *testing::UnitTest::GetInstance()->current_test_info();
   const TemporaryFile anOutput;
   const std::string aCommand = std::string("ASAN_OPTIONS=detect_leaks=0 ") + kChildMark + "=1 '" +
                                std::filesystem::read_symlink("/proc/self/exe").string() +
                                "' --gtest_catch_exceptions=0 --gtest_filter=" + aTest.test_suite_name() + "." +
                                aTest.name() + " >" + anOutput.Name() + " 2>&1";
   EXPECT_EQ(std::system(aCommand.c_str()), 0) << anOutput.Contents();
   EXPECT_THAT(anOutput.Contents(), theOutput);
}

bool IsChild()
{
   return std::getenv(kChildMark) != nullptr;
}

TEST(MThreadHandlerProcess, LivesUntilTheLastCountedThreadEnds)
{
   if (!IsChild())
   {
      ExpectOfChild(AllOf(HasSubstr("Thread count now 1\n"), HasSubstr("last words"), HasSubstr("Thread count now 0\n"),
                          HasSubstr("MThreadHandler::EndThread() Process exiting.\n")));
      return;
   }
   static std::atomic<bool> isMainEnding = false;
   gTNTracer.On(std::cout);
   gTNTracer.SetTrace(TNTrace::TNTraceThreads);
   MThreadHandler::CreateDetachedThread(
       [](void*) {
          while (!isMainEnding || ThreadCount() > 1)
          {
             std::this_thread::sleep_for(std::chrono::milliseconds(1));
          }
          std::cout << "last words" << std::endl;
       },
       nullptr, 0);
   isMainEnding = true;
   MThreadHandler::EndMainThread();
}

TEST(MThreadHandlerProcess, TellsWhenNoThreadCanBeHad)
{
   if (!IsChild())
   {
      ExpectOfChild(HasSubstr("PASSED"));
      return;
   }
   // Room for a gigabyte more: not for the stack asked for.
   rlim_t aPages = 0;
   std::ifstream("/proc/self/statm") >> aPages;
   const rlim_t aLimit = aPages * 4096 + (rlim_t{1} << 30);
   const rlimit aRoom = {aLimit, aLimit};
   ASSERT_EQ(setrlimit(RLIMIT_AS, &aRoom), 0);
   LogText aLog;
   const int anError = MThreadHandler::CreateDetachedThread([](void*) {}, nullptr, 0x7FFFFFFF);
   EXPECT_EQ(errno, anError);
   EXPECT_EQ(anError, EAGAIN);
   EXPECT_EQ(ThreadCount(), 1u);
   EXPECT_THAT(aLog.Text(), HasSubstr("MThreadHandler::CreateDetachedThread() Failed to create thread. (errno = " +
                                      std::to_string(EAGAIN) + ")\n"));
}

} // namespace
