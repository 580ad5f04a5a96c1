#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "Platform/Foundation/TNLMainQueue.h"
#include "Platform/Foundation/TNLNotificationCenter.h"
#include "Platform/Foundation/TNLSerialQueue.h"

using namespace std::chrono_literals;

namespace {

TEST(TNLMainQueue, AsyncIsQueuedInOrderAndSyncFromAnotherThreadWaitsForTheLoop) {
  ASSERT_TRUE(TNLMainQueue::isMainThread());
  std::vector<int> order;
  TNLMainQueue::async([&] { order.push_back(1); });
  TNLMainQueue::async([&] { order.push_back(TNLMainQueue::isMainThread() ? 2 : -2); });
  EXPECT_TRUE(order.empty());  // never inline
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return order.size() == 2; }));
  EXPECT_EQ(order, (std::vector<int>{1, 2}));

  std::atomic<bool> finished{false};
  bool onMain = false;
  std::thread worker([&] {
    TNLMainQueue::sync([&] { onMain = TNLMainQueue::isMainThread(); });
    finished = true;
  });
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return finished.load(); }));
  worker.join();
  EXPECT_TRUE(onMain);
}

TEST(TNLSerialQueue, RunsTasksSeriallyInDueOrderOnItsOwnThread) {
  TNLSerialQueue queue("test.queue");
  std::vector<int> order;  // written by the queue's thread only
  std::atomic<int> concurrent{0};
  std::atomic<bool> wrong{false};
  const auto record = [&](int value) {
    return [&, value] {
      wrong = wrong || ++concurrent > 1 || !queue.isCurrent();
      order.push_back(value);
      --concurrent;
    };
  };
  queue.asyncAfter(30ms, record(3));
  queue.async(record(1));
  queue.async(record(2));
  std::this_thread::sleep_for(80ms);
  queue.sync([] {});
  EXPECT_FALSE(queue.isCurrent());
  EXPECT_FALSE(wrong);
  EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

TEST(TNLSerialQueue, TheLastOwnerMayLetGoFromOneOfItsTasks) {
  // Objects that own their queue are often released by a task on that queue. The worker must
  // finish cleanly; the address sanitizer checks that nothing of the queue is touched afterwards.
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
  EXPECT_TRUE(ran && droppedTaskDestroyed);
  std::this_thread::sleep_for(20ms);  // lets the detached worker leave its loop
}

TEST(TNLNotificationCenter, DeliversByNameAndSenderUntilRemovedEvenDuringAPost) {
  TNLNotificationCenter center;
  int sender = 0;
  int other = 0;
  std::vector<std::string> seen;
  center.addObserver(&seen, "N", nullptr, [&](const TNLNotification& n) {
    seen.push_back("any:" + n.userInfo.value("k", ""));
  });
  center.addObserver(&seen, "N", &sender, [&](const TNLNotification&) {
    seen.push_back("sender");
    center.removeObserver(&other);  // removed while the post runs: not called
  });
  center.addObserver(&other, "N", nullptr, [&](const TNLNotification&) { seen.push_back("x"); });
  center.post("N", &sender, {{"k", "v"}});
  center.post("N", &other);
  center.post("M", &sender);
  EXPECT_EQ(seen, (std::vector<std::string>{"any:v", "sender", "any:"}));
  center.removeObserver(&seen);
  EXPECT_EQ(center.observerCount(), 0u);
}

}  // namespace
