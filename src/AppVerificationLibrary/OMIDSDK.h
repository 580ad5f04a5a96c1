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
  // also sets up the view-state machinery (see setManagerSetup). An incompatible version fails with
  // code 1 and leaves the SDK as it was.
  bool activateWithOMIDAPIVersion(const std::string& version, TNLErrorPtr* error);
  bool isActive() const { return active_.load(); }

  // What the first successful activation of the process runs once: by default the setup of the
  // view-state machinery (OMIDTarnelManager). Replacing it before the first activation measures
  // without that machinery (tools) or observes the once-only rule (tests); one installed after an
  // activation that ran none runs at once. It runs on the activating thread.
  static void setManagerSetup(std::function<void()> setup);

 private:
  std::atomic<bool> active_{false};
};
