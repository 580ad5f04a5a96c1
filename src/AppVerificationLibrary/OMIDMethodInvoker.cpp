#include "AppVerificationLibrary/OMIDMethodInvoker.h"

#include "Platform/Foundation/TNLMainQueue.h"

void OMIDTarnelMethodInvoker::performSelectorAsync(std::function<void()> operation) {
  if (TNLMainQueue::isMainThread()) {
    operation();
    return;
  }
  TNLMainQueue::async(std::move(operation));
}

void OMIDTarnelMethodInvoker::performSelectorSync(const std::function<void()>& operation) {
  TNLMainQueue::sync(operation);
}
