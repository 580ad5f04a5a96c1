#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "AppVerificationLibrary/OMIDJSExecutor.h"
#include "AppVerificationLibrary/OMIDLoadTask.h"
#include "Platform/Foundation/TNLJSON.h"
#include "Platform/Script/TNLJSValue.h"

class OMIDTarnelJSNetworkBridge;
class OMIDTarnelJSTimer;
class TNLJSContext;
class TNLSerialQueue;

// Runs a native ad's verification scripts in a script-engine context of its own, with the timer
// and network services on `omidNative`. The engine is used only on the executor's private serial
// queue: injections, timer callbacks and network completions all run there, so publishers may
// inject from any thread.
class OMIDTarnelLightJSExecutor : public OMIDTarnelJSExecutor,
                                  public std::enable_shared_from_this<OMIDTarnelLightJSExecutor> {
 public:
  // A new executor with a new timer service and network bridge.
  static std::shared_ptr<OMIDTarnelLightJSExecutor> lightJSExecutor();
  // Makes the executor the invoker of both services; the context and `omidNative` are set up on
  // the queue before anything injected later runs.
  static std::shared_ptr<OMIDTarnelLightJSExecutor> create(
      std::shared_ptr<OMIDTarnelJSTimer> timer,
      std::shared_ptr<OMIDTarnelJSNetworkBridge> networkBridge);

  bool supportBackgroundThread() const override { return true; }
  // The TNLJSContext; null until the queue has set it up.
  std::shared_ptr<void> jsEnvironment() const override;
  // Queues the script on the executor's queue.
  void injectJavaScriptFromString(const std::string& javaScript) override;

  // Evaluates the script unless it is the empty string. Runs on the queue (hops onto it when
  // called from elsewhere).
  void invokeScript(const std::string& script);
  // A string callback is evaluated as a script; anything else but undefined and null is called
  // without arguments.
  void invokeCallback(const TNLJSValue& callback);
  // Calls the callback with one argument made from the JSON value.
  void invokeCallback(const TNLJSValue& callback, const TNLJson& argument);

  std::shared_ptr<TNLJSContext> jsContext() const;
  const std::shared_ptr<OMIDTarnelJSTimer>& timer() const { return timer_; }
  const std::shared_ptr<OMIDTarnelJSNetworkBridge>& networkBridge() const { return networkBridge_; }
  const std::shared_ptr<TNLSerialQueue>& dispatchQueue() const { return dispatchQueue_; }
  // Queues completions on the executor's queue; dropped once the executor is gone.
  OMIDTarnelLoadTask::CompletionQueue completionQueue() const;

 private:
  OMIDTarnelLightJSExecutor(std::shared_ptr<OMIDTarnelJSTimer> timer,
                            std::shared_ptr<OMIDTarnelJSNetworkBridge> networkBridge);
  void setUpContext();
  // Runs the task on the queue: at once when already there.
  void onQueue(std::function<void()> task);

  const std::shared_ptr<OMIDTarnelJSTimer> timer_;
  const std::shared_ptr<OMIDTarnelJSNetworkBridge> networkBridge_;
  const std::shared_ptr<TNLSerialQueue> dispatchQueue_;
  mutable std::mutex mutex_;
  std::shared_ptr<TNLJSContext> jsContext_;
};
