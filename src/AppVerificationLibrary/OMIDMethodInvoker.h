#pragma once

#include <functional>
#include <memory>
#include <utility>

// Runs operations on the main thread: at once when already there, otherwise through the main
// queue. The target of an operation is kept alive until it has run.
class OMIDTarnelMethodInvoker {
 public:
  // Runs at once on the main thread; from another thread queues it and returns.
  static void performSelectorAsync(std::function<void()> operation);
  // Runs at once on the main thread; from another thread waits until the main loop has run it.
  static void performSelectorSync(const std::function<void()>& operation);

  template <class T>
  static void performSelectorAsync(void (T::*selector)(), std::shared_ptr<T> target) {
    performSelectorAsync([selector, target = std::move(target)] { ((*target).*selector)(); });
  }
  template <class T, class Parameter, class Argument>
  static void performSelectorAsync(void (T::*selector)(Parameter), std::shared_ptr<T> target,
                                   Argument argument) {
    performSelectorAsync([selector, target = std::move(target), argument = std::move(argument)] {
      ((*target).*selector)(argument);
    });
  }
  template <class T, class Parameter, class Argument>
  static void performSelectorSync(void (T::*selector)(Parameter), const std::shared_ptr<T>& target,
                                  const Argument& argument) {
    performSelectorSync([&] { ((*target).*selector)(argument); });
  }
};
