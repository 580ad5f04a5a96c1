#include "Public/TNLDelegateDispatch.h"

#include <atomic>

#include "Platform/Foundation/TNLMainQueue.h"

namespace {

std::atomic<bool> mainThreadCallbacks{false};

}  // namespace

void TNLDelegateDispatch::setOnMainThread(bool onMainThread) {
  mainThreadCallbacks = onMainThread;
}

bool TNLDelegateDispatch::onMainThread() {
  return mainThreadCallbacks;
}

void TNLDelegateDispatch::deliver(std::function<void()> callback) {
  if (mainThreadCallbacks && !TNLMainQueue::isMainThread()) {
    TNLMainQueue::async(std::move(callback));
  } else {
    callback();
  }
}
