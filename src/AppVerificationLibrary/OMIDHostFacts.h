#pragma once

#include <optional>
#include <string>

// The facts about the host application and the machine that the measurement SDK reports (the app
// identifier and the device record), read from the library's device facts.
class OMIDTarnelHostFacts {
 public:
  // The host application's bundle identifier.
  static std::string bundleIdentifier();
  // The hardware model (uname's machine), the system name and its version; null when the facts
  // cannot tell or a value is empty.
  static std::optional<std::string> hardwareModel();
  static std::optional<std::string> systemName();
  static std::optional<std::string> systemVersion();
};
