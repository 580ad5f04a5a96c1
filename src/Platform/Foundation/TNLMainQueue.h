#pragma once

#include <chrono>
#include <functional>

#include "TarnelAd/TNLExport.h"

// The main queue: tasks run on the thread that runs GLib's default main context (the process's
// main thread, where a GTK host runs its loop). Nothing here includes GLib. async and isMainThread
// are exported for the GTK backend library.
class TNLMainQueue {
 public:
  // Queues the task; it runs on a later iteration of the main loop, never inline.
  TNL_EXPORT static void async(std::function<void()> task);

  // Runs the task on the main thread and waits for it: inline when called on the main thread,
  // otherwise queued and waited for (the main loop must be running).
  static void sync(const std::function<void()>& task);

  // True on the process's main thread.
  TNL_EXPORT static bool isMainThread();

  // Runs the main loop on the calling (main) thread until `done` returns true or `timeout`
  // passes; returns the last value of `done`. For tests and tools.
  static bool runUntil(const std::function<bool()>& done,
                       std::chrono::milliseconds timeout = std::chrono::seconds(10));

  // Runs the main loop for the given time.
  static void runFor(std::chrono::milliseconds duration);
};
