#pragma once

#include <string>

#include "Platform/Foundation/TNLJSON.h"

// The device record reported to measurement scripts in the session context.
class OMIDTarnelDevice {
 public:
  // The hardware model identifier; "n/a" when it cannot be read.
  static std::string deviceType();
  // The system's name and version; "n/a" when missing.
  static std::string deviceOs();
  static std::string deviceOsVersion();
  // {"deviceType", "os", "osVersion"}, made on first use and kept.
  static TNLJson deviceDictionary();
  static TNLJson toJSON() { return deviceDictionary(); }
};
