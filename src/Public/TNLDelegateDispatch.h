#pragma once

#include <functional>

// Where the full-screen facades call their delegates: on the thread that completed the work (the
// default), or, when the host asked for it (TNLSetup::setCallbacksOnMainThread), on the main
// thread, queued in the order the callbacks were made.
class TNLDelegateDispatch {
 public:
  static void setOnMainThread(bool onMainThread);
  static bool onMainThread();
  // Runs `callback` now, or queues it on the main queue when callbacks belong on the main thread
  // and this is another thread.
  static void deliver(std::function<void()> callback);
};
