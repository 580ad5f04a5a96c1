#pragma once

/// @file
/// @brief TNLAdConfiguration: a configuration fetched by a hosting component.

#include <utility>

#include <nlohmann/json.hpp>

#include "TarnelAd/TNLExport.h"

/// A configuration that a hosting component has already fetched for the application: the manifest
/// JSON object.
class TNL_EXPORT TNLAdConfiguration {
 public:
  /// Keeps a copy of the manifest object.
  explicit TNLAdConfiguration(nlohmann::ordered_json jsonData) : jsonData_(std::move(jsonData)) {}

  /// The manifest object.
  const nlohmann::ordered_json& jsonData() const { return jsonData_; }

 private:
  nlohmann::ordered_json jsonData_;
};
