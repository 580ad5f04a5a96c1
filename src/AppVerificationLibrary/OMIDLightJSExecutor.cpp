#include "AppVerificationLibrary/OMIDLightJSExecutor.h"

#include "AppVerificationLibrary/OMIDJSNetworkBridge.h"
#include "AppVerificationLibrary/OMIDJSTimer.h"
#include "Platform/Foundation/TNLSerialQueue.h"
#include "Platform/Script/TNLJSContext.h"

std::shared_ptr<OMIDTarnelLightJSExecutor> OMIDTarnelLightJSExecutor::lightJSExecutor() {
  return create(std::make_shared<OMIDTarnelJSTimer>(),
                std::make_shared<OMIDTarnelJSNetworkBridge>());
}

std::shared_ptr<OMIDTarnelLightJSExecutor> OMIDTarnelLightJSExecutor::create(
    std::shared_ptr<OMIDTarnelJSTimer> timer,
    std::shared_ptr<OMIDTarnelJSNetworkBridge> networkBridge) {
  const auto executor = std::shared_ptr<OMIDTarnelLightJSExecutor>(
      new OMIDTarnelLightJSExecutor(std::move(timer), std::move(networkBridge)));
  executor->timer_->setJsInvoker(executor);
  executor->networkBridge_->setJsInvoker(executor);
  executor->dispatchQueue_->async([weakExecutor = std::weak_ptr(executor)] {
    if (const auto self = weakExecutor.lock()) {
      self->setUpContext();
    }
  });
  return executor;
}

OMIDTarnelLightJSExecutor::OMIDTarnelLightJSExecutor(
    std::shared_ptr<OMIDTarnelJSTimer> timer,
    std::shared_ptr<OMIDTarnelJSNetworkBridge> networkBridge)
    : timer_(std::move(timer)),
      networkBridge_(std::move(networkBridge)),
      dispatchQueue_(std::make_shared<TNLSerialQueue>("omid.light-executor")) {}

void OMIDTarnelLightJSExecutor::setUpContext() {
  const auto context = TNLJSContext::create();
  context->evaluateScript("this.omidNative = {};");
  const TNLJSValue omidNative = context->globalObject().property("omidNative");
  timer_->setupMethodsForJSObject(*context, omidNative);
  networkBridge_->setupMethodsForJSObject(*context, omidNative);
  std::lock_guard lock(mutex_);
  jsContext_ = context;
}

std::shared_ptr<TNLJSContext> OMIDTarnelLightJSExecutor::jsContext() const {
  std::lock_guard lock(mutex_);
  return jsContext_;
}

std::shared_ptr<void> OMIDTarnelLightJSExecutor::jsEnvironment() const {
  return jsContext();
}

OMIDTarnelLoadTask::CompletionQueue OMIDTarnelLightJSExecutor::completionQueue() const {
  return [weakQueue = std::weak_ptr(dispatchQueue_)](std::function<void()> task) {
    if (const auto queue = weakQueue.lock()) {
      queue->async(std::move(task));
    }
  };
}

void OMIDTarnelLightJSExecutor::onQueue(std::function<void()> task) {
  if (dispatchQueue_->isCurrent()) {
    task();
  } else {
    dispatchQueue_->async(std::move(task));
  }
}

void OMIDTarnelLightJSExecutor::injectJavaScriptFromString(const std::string& javaScript) {
  dispatchQueue_->async([weakSelf = weak_from_this(), javaScript] {
    if (const auto self = weakSelf.lock()) {
      self->invokeScript(javaScript);
    }
  });
}

void OMIDTarnelLightJSExecutor::invokeScript(const std::string& script) {
  onQueue([weakSelf = weak_from_this(), script] {
    const auto self = weakSelf.lock();
    const auto context = self != nullptr ? self->jsContext() : nullptr;
    if (context != nullptr && !script.empty()) {
      context->evaluateScript(script);
    }
  });
}

void OMIDTarnelLightJSExecutor::invokeCallback(const TNLJSValue& callback) {
  onQueue([weakSelf = weak_from_this(), callback] {
    const auto self = weakSelf.lock();
    const auto context = self != nullptr ? self->jsContext() : nullptr;
    if (context == nullptr) {
      return;
    }
    if (callback.isString()) {
      context->evaluateScript(callback.toString());
    } else if (!callback.isUndefined() && !callback.isNull()) {
      callback.call();
    }
  });
}

void OMIDTarnelLightJSExecutor::invokeCallback(const TNLJSValue& callback,
                                               const TNLJson& argument) {
  onQueue([weakSelf = weak_from_this(), callback, argument] {
    const auto self = weakSelf.lock();
    const auto context = self != nullptr ? self->jsContext() : nullptr;
    if (context == nullptr) {
      return;
    }
    callback.call({context->valueFromJSON(TNLJSON::serialize(argument))});
  });
}
