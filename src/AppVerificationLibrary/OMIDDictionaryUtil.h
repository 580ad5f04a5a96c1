#pragma once

#include <string>

#include "Platform/Foundation/TNLJSON.h"

// JSON helpers of the measurement SDK.
class OMIDTarnelDictionaryUtil {
 public:
  // Compact UTF-8 JSON text, the form in which dictionaries travel inside commands.
  static std::string stringFromJSON(const TNLJson& json);
};
