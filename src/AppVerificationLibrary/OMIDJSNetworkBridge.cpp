#include "AppVerificationLibrary/OMIDJSNetworkBridge.h"

#include <climits>

#include "AppVerificationLibrary/OMIDLightJSExecutor.h"
#include "AppVerificationLibrary/OMIDLoadTask.h"
#include "Platform/Foundation/TNLFormat.h"
#include "Platform/Script/TNLJSContext.h"

namespace {

constexpr char kScriptWrapper[] = "(function() { %@ }).call(this);";

TNLJSValue argumentAt(const std::vector<TNLJSValue>& arguments, size_t index) {
  return index < arguments.size() ? arguments[index] : TNLJSValue();
}

}  // namespace

void OMIDTarnelJSNetworkBridge::setJsInvoker(std::weak_ptr<OMIDTarnelLightJSExecutor> jsInvoker) {
  std::lock_guard lock(mutex_);
  jsInvoker_ = std::move(jsInvoker);
}

std::shared_ptr<OMIDTarnelLightJSExecutor> OMIDTarnelJSNetworkBridge::invoker() const {
  std::lock_guard lock(mutex_);
  return jsInvoker_.lock();
}

void OMIDTarnelJSNetworkBridge::setupMethodsForJSObject(TNLJSContext& context,
                                                        const TNLJSValue& object) {
  const std::weak_ptr<OMIDTarnelJSNetworkBridge> weakSelf = weak_from_this();
  context.setFunction(object, "sendUrl",
                      [weakSelf](TNLJSContext& ctx, const std::vector<TNLJSValue>& arguments) {
                        if (const auto self = weakSelf.lock()) {
                          self->sendUrl(argumentAt(arguments, 0).toString(),
                                        argumentAt(arguments, 1), argumentAt(arguments, 2));
                        }
                        return ctx.undefinedValue();
                      });
  context.setFunction(object, "downloadJavaScriptResource",
                      [weakSelf](TNLJSContext& ctx, const std::vector<TNLJSValue>& arguments) {
                        if (const auto self = weakSelf.lock()) {
                          self->downloadJavaScriptResource(argumentAt(arguments, 0).toString(),
                                                           argumentAt(arguments, 1),
                                                           argumentAt(arguments, 2));
                        }
                        return ctx.undefinedValue();
                      });
}

void OMIDTarnelJSNetworkBridge::sendUrl(const std::string& url, const TNLJSValue& success,
                                        const TNLJSValue& failure) {
  const auto executor = invoker();
  if (executor == nullptr) {
    return;
  }
  const std::weak_ptr<OMIDTarnelLightJSExecutor> weakExecutor = executor;
  OMIDTarnelLoadTask::taskToSendPingToURL(
      url, executor->completionQueue(),
      [weakExecutor, success, failure](const OMIDTarnelLoadTask::Result&,
                                       const TNLErrorPtr& error) {
        if (const auto executor = weakExecutor.lock()) {
          executor->invokeCallback(error == nullptr ? success : failure);
        }
      })
      ->start();
}

void OMIDTarnelJSNetworkBridge::downloadJavaScriptResource(const std::string& url,
                                                           const TNLJSValue& success,
                                                           const TNLJSValue& failure) {
  const auto executor = invoker();
  if (executor == nullptr) {
    return;
  }
  const std::weak_ptr<OMIDTarnelLightJSExecutor> weakExecutor = executor;
  OMIDTarnelLoadTask::taskToLoadStringFromURL(
      url, 1, executor->completionQueue(),
      [weakExecutor, success, failure](const OMIDTarnelLoadTask::Result& text,
                                       const TNLErrorPtr& error) {
        const auto executor = weakExecutor.lock();
        if (executor == nullptr) {
          return;
        }
        if (error == nullptr) {
          executor->invokeCallback(success, text ? TNLJson(*text) : TNLJson(nullptr));
        } else {
          executor->invokeCallback(failure, TNLJson(getOMIDError(error)));
        }
      })
      ->start();
}

void OMIDTarnelJSNetworkBridge::injectJavaScriptFromURL(const std::string& url) {
  const auto executor = invoker();
  if (executor == nullptr) {
    return;
  }
  const std::weak_ptr<OMIDTarnelLightJSExecutor> weakExecutor = executor;
  OMIDTarnelLoadTask::taskToLoadStringFromURL(
      url, 1, executor->completionQueue(),
      [weakExecutor](const OMIDTarnelLoadTask::Result& text, const TNLErrorPtr& error) {
        const auto executor = weakExecutor.lock();
        if (executor == nullptr || error != nullptr) {
          return;
        }
        executor->invokeScript(TNLFormat(kScriptWrapper, text));
      })
      ->start();
}

int OMIDTarnelJSNetworkBridge::getOMIDError(const TNLErrorPtr& error) {
  const long code = error != nullptr ? error->code() : 0;
  switch (code) {
    case TNLURLError::NotConnectedToInternet:
      return kNotConnectedError;
    case TNLURLError::ResourceUnavailable:
      return kResourceUnavailableError;
    case LONG_MAX:
      return kNoDataError;
    default:
      return kOtherError;
  }
}
