#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "AppVerificationLibrary/OMIDAdSessionConfiguration.h"
#include "AppVerificationLibrary/OMIDCommand.h"
#include "AppVerificationLibrary/OMIDEventFilter.h"
#include "AppVerificationLibrary/OMIDMethodInvoker.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "support/OMIDTestStatements.h"

namespace {

using OMIDTestStatements::wrapped;

// The texts that the session tests do not see.
TEST(OMIDTarnelCommand, CommandTexts) {
  const auto nativeOwned = OMIDTarnelAdSessionConfiguration::create(2, 9, nullptr);
  const std::vector<std::pair<std::string, std::string>> cases{
      // An owner without a name leaves its member out.
      {OMIDTarnelCommand::initCommand(*nativeOwned),
       R"(init({"impressionOwner":"native","isolateVerificationScripts":true}))"},
      {OMIDTarnelCommand::startSessionCommand("ID-1", TNLJson{{"k", "v"}}, std::nullopt),
       R"(startSession('ID-1',{"k":"v"}))"},
      {OMIDTarnelCommand::videoEventCommand("start", TNLJson{{"duration", 30.5}}),
       R"(publishVideoEvent('start',{"duration":30.5}))"},
      {OMIDTarnelCommand::errorCommand(5, "m"), "error(generic,m)"}};
  for (const auto& [command, call] : cases) {
    EXPECT_EQ(command, wrapped(call));
  }
}

TEST(OMIDTarnelEventFilter, EachEventOnceAndNothingAfterTheFinalOne) {
  OMIDTarnelEventFilter filter(OMIDTarnelSessionFinishEvent);
  EXPECT_FALSE(filter.acceptAnyEventWithRequiredEventCodes(OMIDTarnelSessionStartEvent));
  EXPECT_TRUE(filter.acceptEventWithCode(OMIDTarnelAdEventsCreatedEvent));
  EXPECT_FALSE(filter.acceptEventWithCode(OMIDTarnelAdEventsCreatedEvent));
  EXPECT_TRUE(filter.acceptEventWithCode(OMIDTarnelSessionStartEvent));
  EXPECT_TRUE(filter.acceptAnyEventWithRequiredEventCodes(OMIDTarnelSessionStartEvent));
  EXPECT_FALSE(filter.acceptAnyEventWithRequiredEventCodes(OMIDTarnelSessionStartEvent |
                                                           OMIDTarnelImpressionEvent));
  // A blocking code already accepted refuses the event without recording it.
  EXPECT_FALSE(filter.acceptEventWithCode(OMIDTarnelImpressionEvent, OMIDTarnelSessionStartEvent));
  EXPECT_TRUE(filter.acceptEventWithCode(OMIDTarnelImpressionEvent, 8));
  EXPECT_FALSE(filter.isFinalEventAccepted());

  EXPECT_TRUE(filter.acceptEventWithCode(OMIDTarnelSessionFinishEvent));
  EXPECT_TRUE(filter.isFinalEventAccepted());
  EXPECT_FALSE(filter.acceptEventWithCode(OMIDTarnelSessionFinishEvent));
  EXPECT_FALSE(filter.acceptEventWithCode(8));  // never seen, but after the final event
  EXPECT_FALSE(filter.acceptAnyEventWithRequiredEventCodes(0));
}

TEST(OMIDTarnelEventFilter, ConcurrentAcceptancesLetExactlyOneThrough) {
  for (int round = 0; round < 50; ++round) {
    OMIDTarnelEventFilter filter(OMIDTarnelSessionFinishEvent);
    std::atomic<int> accepted{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 6; ++i) {
      threads.emplace_back([&] {
        accepted += filter.acceptEventWithCode(OMIDTarnelSessionStartEvent);
        accepted += filter.acceptEventWithCode(OMIDTarnelSessionFinishEvent);
      });
    }
    for (auto& thread : threads) {
      thread.join();
    }
    ASSERT_EQ(accepted, 2);
  }
}

// On the main thread both forms run at once (the session tests rely on it).
TEST(OMIDTarnelMethodInvoker, FromOtherThreadsTheSyncFormWaitsForTheMainLoop) {
  std::vector<int> ran;  // written on the main thread only
  std::atomic<bool> done{false};
  std::thread worker([&] {
    OMIDTarnelMethodInvoker::performSelectorAsync(
        [&] { ran.push_back(TNLMainQueue::isMainThread() ? 1 : -1); });
    OMIDTarnelMethodInvoker::performSelectorSync(
        [&] { ran.push_back(TNLMainQueue::isMainThread() ? 2 : -2); });
    EXPECT_EQ(ran, (std::vector<int>{1, 2}));
    done = true;
  });
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return done.load(); }));
  worker.join();
}

}  // namespace
