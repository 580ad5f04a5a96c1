#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "Platform/Foundation/TNLError.h"
#include "Platform/Script/TNLJSValue.h"

class OMIDTarnelLightJSExecutor;
class TNLJSContext;

// The network service of `omidNative` (sendUrl, downloadJavaScriptResource) for the scripts of a
// light executor, and the loader of verification scripts. Completions run on the executor's queue.
class OMIDTarnelJSNetworkBridge : public std::enable_shared_from_this<OMIDTarnelJSNetworkBridge> {
 public:
  // The error numbers that downloadJavaScriptResource hands to its failure callback.
  static constexpr int kNotConnectedError = 0;
  static constexpr int kResourceUnavailableError = 1;
  static constexpr int kNoDataError = 2;
  static constexpr int kOtherError = 3;

  // The executor that runs the callbacks; held weakly.
  void setJsInvoker(std::weak_ptr<OMIDTarnelLightJSExecutor> jsInvoker);

  // Installs sendUrl and downloadJavaScriptResource on `object`.
  void setupMethodsForJSObject(TNLJSContext& context, const TNLJSValue& object);

  // Pings the URL once; calls `success` when it completed without a transport error, else
  // `failure`, both without arguments.
  void sendUrl(const std::string& url, const TNLJSValue& success, const TNLJSValue& failure);
  // Loads the URL once as text; calls `success` with the text, or `failure` with getOMIDError's
  // number for the error.
  void downloadJavaScriptResource(const std::string& url, const TNLJSValue& success,
                                  const TNLJSValue& failure);
  // Loads a verification script and runs it wrapped in a function called with the global object
  // as `this`, so that its top-level declarations stay its own. A failed load is dropped.
  void injectJavaScriptFromURL(const std::string& url);

  // 0 not connected (-1009), 1 resource unavailable (-1008), 2 no data (the largest signed code),
  // 3 anything else.
  static int getOMIDError(const TNLErrorPtr& error);

 private:
  std::shared_ptr<OMIDTarnelLightJSExecutor> invoker() const;

  mutable std::mutex mutex_;
  std::weak_ptr<OMIDTarnelLightJSExecutor> jsInvoker_;
};
