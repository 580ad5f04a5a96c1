#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

#include "AppVerificationLibrary/OMIDAdSessionConfiguration.h"
#include "AppVerificationLibrary/OMIDBridge.h"
#include "AppVerificationLibrary/OMIDCommand.h"
#include "AppVerificationLibrary/OMIDEventFilter.h"
#include "AppVerificationLibrary/OMIDMethodInvoker.h"
#include "Platform/Foundation/TNLMainQueue.h"

namespace {

std::string wrapped(const std::string& call) {
  return "(function(){if(this.omidBridge!==undefined){this.omidBridge." + call + "}})()";
}

// The texts that the session tests do not see.
TEST(OMIDTarnelCommand, CommandTexts) {
  EXPECT_EQ(OMIDTarnelCommand::videoEventCommand("it's", std::nullopt),
            wrapped("publishVideoEvent('it's')"));  // never escaped
  // An owner without a name leaves its member out.
  const auto nativeOwned = OMIDTarnelAdSessionConfiguration::create(2, 9, nullptr);
  EXPECT_EQ(OMIDTarnelCommand::initCommand(*nativeOwned),
            wrapped(R"(init({"impressionOwner":"native","isolateVerificationScripts":true}))"));
  EXPECT_EQ(OMIDTarnelCommand::startSessionCommand("ID-1", TNLJson{{"k", "v"}}, std::nullopt),
            wrapped(R"(startSession('ID-1',{"k":"v"}))"));
  EXPECT_EQ(OMIDTarnelCommand::impressionEventCommand(), wrapped("publishImpressionEvent()"));
  EXPECT_EQ(OMIDTarnelCommand::videoEventCommand("start", std::nullopt),
            wrapped("publishVideoEvent('start')"));
  EXPECT_EQ(OMIDTarnelCommand::videoEventCommand("start", TNLJson{{"duration", 30.5}}),
            wrapped(R"(publishVideoEvent('start',{"duration":30.5}))"));
  EXPECT_EQ(OMIDTarnelCommand::errorCommand(5, "m"), wrapped("error(generic,m)"));
}

TEST(OMIDTarnelEventFilter, EachEventOnceAndNothingAfterTheFinalOne) {
  OMIDTarnelEventFilter filter(OMIDTarnelSessionFinishEvent);
  EXPECT_FALSE(filter.acceptAnyEventWithRequiredEventCodes(OMIDTarnelSessionStartEvent));
  EXPECT_TRUE(filter.acceptAnyEventWithRequiredEventCodes(0));
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
    std::atomic<int> starts{0};
    std::atomic<int> finishes{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 6; ++i) {
      threads.emplace_back([&] {
        starts += filter.acceptEventWithCode(OMIDTarnelSessionStartEvent);
        finishes += filter.acceptEventWithCode(OMIDTarnelSessionFinishEvent);
        filter.acceptAnyEventWithRequiredEventCodes(OMIDTarnelSessionStartEvent);
      });
    }
    for (auto& thread : threads) {
      thread.join();
    }
    ASSERT_EQ(starts, 1);
    ASSERT_EQ(finishes, 1);
  }
}

// An executor that must be used on the main thread, as web-view executors are.
class MainThreadExecutor : public OMIDTarnelJSExecutor {
 public:
  bool supportBackgroundThread() const override { return false; }
  std::shared_ptr<void> jsEnvironment() const override { return nullptr; }
  void injectJavaScriptFromString(const std::string& javaScript) override {
    std::lock_guard lock(mutex);
    injected.push_back(javaScript);
    allOnMain = allOnMain && TNLMainQueue::isMainThread();
  }
  std::mutex mutex;
  std::vector<std::string> injected;
  bool allOnMain = true;
};

TEST(OMIDTarnelBridge, MainThreadExecutorsGetEveryCommandQueuedInOrder) {
  const auto executor = std::make_shared<MainThreadExecutor>();
  const OMIDTarnelBridge bridge(executor);

  bridge.publishFinishSession();
  EXPECT_TRUE(executor->injected.empty());  // queued even on the main thread
  std::thread worker([&] {
    bridge.publishAppState("foregrounded");
    bridge.publishDeviceVolume(1);
  });
  worker.join();
  bridge.publishImpressionEvent();
  ASSERT_TRUE(TNLMainQueue::runUntil([&] {
    std::lock_guard lock(executor->mutex);
    return executor->injected.size() == 4;
  }));
  EXPECT_EQ(executor->injected,
            (std::vector<std::string>{OMIDTarnelCommand::finishSessionCommand(),
                                      OMIDTarnelCommand::appStateCommand("foregrounded"),
                                      OMIDTarnelCommand::deviceVolumeCommand(1),
                                      OMIDTarnelCommand::impressionEventCommand()}));
  EXPECT_TRUE(executor->allOnMain);
}

TEST(OMIDTarnelMethodInvoker, RunsOnTheMainThread) {
  ASSERT_TRUE(TNLMainQueue::isMainThread());
  int inlineRuns = 0;
  OMIDTarnelMethodInvoker::performSelectorAsync([&] { ++inlineRuns; });
  EXPECT_EQ(inlineRuns, 1);  // at once on the main thread

  struct Target {
    void add(int value) {
      total += value;
      onMain = onMain && TNLMainQueue::isMainThread();
    }
    void bump() { ++bumps; }
    std::atomic<int> total{0};
    std::atomic<int> bumps{0};
    std::atomic<bool> onMain{true};
  };
  auto target = std::make_shared<Target>();
  const std::weak_ptr<Target> weakTarget = target;
  std::atomic<bool> queued{false};
  std::atomic<bool> syncDone{false};
  std::thread worker([&, target = std::move(target)]() mutable {
    OMIDTarnelMethodInvoker::performSelectorAsync(&Target::add, target, 2);
    OMIDTarnelMethodInvoker::performSelectorAsync(&Target::bump, target);
    queued = true;
    // The sync form waits for the main loop, so the queued operations have run when it returns.
    OMIDTarnelMethodInvoker::performSelectorSync(&Target::add, target, 40);
    EXPECT_EQ(target->total, 42);
    syncDone = true;
    target.reset();  // the queue's copies keep the target alive until they have run
  });
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return syncDone.load(); }));
  worker.join();
  EXPECT_TRUE(weakTarget.expired());
}

}  // namespace
