#pragma once

#include <memory>
#include <string>

// Runs the statements that a session publishes, in the environment where its measurement scripts
// live: the ad's web view for an HTML ad (web-view executors, used on the main thread), or the
// SDK's own script engine for a native ad (the light executor, with its own queue).
class OMIDTarnelJSExecutor {
 public:
  virtual ~OMIDTarnelJSExecutor() = default;

  // True when injectJavaScriptFromString may be called from any thread; publishers otherwise
  // queue their injections to the main thread.
  virtual bool supportBackgroundThread() const = 0;
  // The environment the scripts run in: the web view, or the script-engine context (TNLJSContext);
  // null once a weakly held web view is gone. Typed by the executor that made it.
  virtual std::shared_ptr<void> jsEnvironment() const = 0;
  // Runs the statement; its result is not waited for.
  virtual void injectJavaScriptFromString(const std::string& javaScript) = 0;
};
