#pragma once

#include <optional>
#include <string>

// The facts about the host application and the machine that the measurement SDK reports (the app
// identifier and the device record). Kept in one place so that they can be taken from the
// library's device facts once those exist; until then they are read from the process and uname.
class OMIDTarnelHostFacts {
 public:
  // The host application's bundle identifier. For now the name the process was started as.
  static std::string bundleIdentifier();
  // uname: the hardware model (machine), the system name and its release; null when uname fails
  // or a field is empty.
  static std::optional<std::string> hardwareModel();
  static std::optional<std::string> systemName();
  static std::optional<std::string> systemVersion();
};
