#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "Platform/Foundation/TNLMainQueue.h"
#include "Platform/Foundation/TNLNotificationCenter.h"
#include "Platform/Foundation/TNLSerialQueue.h"
#include "Platform/Foundation/TNLTimer.h"

using namespace std::chrono_literals;

namespace {

TEST(TNLMainQueue, AsyncIsAlwaysQueuedAndRunsInOrderOnTheMainThread) {
  ASSERT_TRUE(TNLMainQueue::isMainThread());
  std::vector<int> order;
  bool ranOnMain = true;
  TNLMainQueue::async([&] {
    order.push_back(1);
    ranOnMain = ranOnMain && TNLMainQueue::isMainThread();
  });
  TNLMainQueue::async([&] { order.push_back(2); });
  EXPECT_TRUE(order.empty());  // never inline
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return order.size() == 2; }));
  EXPECT_EQ(order, (std::vector<int>{1, 2}));
  EXPECT_TRUE(ranOnMain);
}

TEST(TNLMainQueue, SyncFromAnotherThreadWaitsForTheMainLoop) {
  std::atomic<bool> finished{false};
  bool onMain = false;
  std::thread worker([&] {
    EXPECT_FALSE(TNLMainQueue::isMainThread());
    TNLMainQueue::sync([&] { onMain = TNLMainQueue::isMainThread(); });
    finished = true;
  });
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return finished.load(); }));
  worker.join();
  EXPECT_TRUE(onMain);

  int inline_ = 0;
  TNLMainQueue::sync([&] { inline_ = 1; });  // on the main thread it runs at once
  EXPECT_EQ(inline_, 1);
}

TEST(TNLTimer, OneShotFiresOnceAndRepeatingUntilInvalidated) {
  int once = 0;
  int repeated = 0;
  // The one-shot timer fires although nobody keeps its handle.
  TNLTimer::scheduledTimer(10ms, false, [&] { ++once; });
  auto repeating = TNLTimer::scheduledTimer(10ms, true, [&] { ++repeated; });
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return repeated >= 3; }));
  repeating->invalidate();
  const int afterInvalidate = repeated;
  TNLMainQueue::runFor(60ms);
  EXPECT_EQ(once, 1);
  EXPECT_EQ(repeated, afterInvalidate);
  EXPECT_FALSE(repeating->isValid());

  bool cancelled = false;
  TNLTimer::scheduledTimer(20ms, false, [&] { cancelled = true; })->invalidate();
  TNLMainQueue::runFor(60ms);
  EXPECT_FALSE(cancelled);
}

TEST(TNLSerialQueue, RunsTasksSeriallyInDueOrderOnItsOwnThread) {
  TNLSerialQueue queue("test.queue");
  std::mutex mutex;
  std::vector<int> order;
  std::atomic<int> concurrent{0};
  std::atomic<bool> overlapped{false};
  const auto record = [&](int value) {
    return [&, value] {
      if (++concurrent > 1) {
        overlapped = true;
      }
      EXPECT_TRUE(queue.isCurrent());
      std::lock_guard lock(mutex);
      order.push_back(value);
      --concurrent;
    };
  };
  queue.asyncAfter(30ms, record(3));
  queue.async(record(1));
  queue.async(record(2));
  queue.sync([] {});
  std::this_thread::sleep_for(80ms);
  queue.sync([] {});
  EXPECT_FALSE(queue.isCurrent());
  EXPECT_FALSE(overlapped);
  std::lock_guard lock(mutex);
  EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

TEST(TNLSerialQueue, TheLastOwnerMayLetGoFromOneOfItsTasks) {
  // Objects that own their queue are often released by a task on that queue (a weak reference
  // locked inside the task). The worker must finish cleanly; the address sanitizer checks that
  // nothing of the destroyed queue is touched afterwards.
  std::atomic<bool> ran{false};
  std::atomic<bool> droppedTaskDestroyed{false};
  std::atomic<bool> released{false};
  {
    auto queue = std::make_shared<TNLSerialQueue>("test.owner");
    const auto marker = std::shared_ptr<int>(new int(0), [&](int* value) {
      delete value;
      droppedTaskDestroyed = true;
    });
    queue->asyncAfter(10s, [marker] {});  // never runs: dropped with the queue
    queue->async([owner = queue, &ran, &released]() mutable {
      while (!released) {
        std::this_thread::sleep_for(1ms);
      }
      owner.reset();  // the last owner
      ran = true;
    });
  }
  released = true;
  const auto deadline = std::chrono::steady_clock::now() + 5s;
  while (!(ran && droppedTaskDestroyed) && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(5ms);
  }
  EXPECT_TRUE(ran);
  EXPECT_TRUE(droppedTaskDestroyed);
  std::this_thread::sleep_for(20ms);  // lets the detached worker leave its loop
}

TEST(TNLNotificationCenter, DeliversByNameAndSenderUntilRemoved) {
  TNLNotificationCenter center;
  int sender = 0;
  int other = 0;
  std::vector<std::string> seen;
  center.addObserver(&seen, "N", nullptr, [&](const TNLNotification& n) {
    seen.push_back("any:" + n.userInfo.value("k", ""));
  });
  center.addObserver(&seen, "N", &sender,
                     [&](const TNLNotification&) { seen.push_back("sender"); });
  center.post("N", &sender, {{"k", "v"}});
  center.post("N", &other);
  center.post("M", &sender);
  EXPECT_EQ(seen, (std::vector<std::string>{"any:v", "sender", "any:"}));

  center.removeObserver(&seen, "N", &sender);
  seen.clear();
  center.post("N", &sender);
  EXPECT_EQ(seen, (std::vector<std::string>{"any:"}));

  center.removeObserver(&seen);
  center.post("N", &sender);
  EXPECT_EQ(center.observerCount(), 0u);
}

TEST(TNLNotificationCenter, AnObserverRemovedDuringAPostIsNotCalled) {
  TNLNotificationCenter center;
  int first = 0;
  int second = 0;
  center.addObserver(&first, "N", nullptr, [&](const TNLNotification&) {
    ++first;
    center.removeObserver(&second);
  });
  center.addObserver(&second, "N", nullptr, [&](const TNLNotification&) { ++second; });
  center.post("N");
  EXPECT_EQ(first, 1);
  EXPECT_EQ(second, 0);
}

}  // namespace
