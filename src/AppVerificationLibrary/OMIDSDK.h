#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>

#include "Platform/Foundation/TNLError.h"

// The measurement SDK's entry: activation against the OMID API version an integration was written
// for. One process-wide instance.
class OMIDTarnelSDK {
 public:
  static std::shared_ptr<OMIDTarnelSDK> sharedInstance();

  // "1.2.4-Tarnel".
  static std::string versionString();
  // True when `version` is a JSON object whose "v" has the SDK's major version. Other keys are
  // ignored; text that is not a JSON object is not compatible.
  static bool isCompatibleWithOMIDAPIVersion(const std::string& version);
  // The integer value of the text before the first "." ("1.2.4-Tarnel" gives 1); 0 when it does
  // not start with a number.
  static long majorVersionFrom(const std::string& version);

  // Activates the SDK when the API version is compatible; the first activation of the process
  // also starts the view-state machinery (see setManagerSetup). An incompatible version fails with
  // code 1 and leaves the SDK as it was.
  bool activateWithOMIDAPIVersion(const std::string& version, TNLErrorPtr* error);
  bool isActive() const { return active_.load(); }

  // Extension point for the view-tree manager, which needs the view toolkit: the operation that
  // the first successful activation runs once per process (the manager's setup). Until one is
  // installed activation starts nothing further; installing one after the SDK was activated runs
  // it at once, so the order of set-up does not matter. It runs on the activating thread.
  static void setManagerSetup(std::function<void()> setup);

 private:
  std::atomic<bool> active_{false};
};
