#pragma once

/// @file
/// @brief TNLToolkit: the choice of the backend that renders views.

#include <string>

#include "TarnelAd/TNLExport.h"

/// Chooses the backend that renders the toolkit's views. Choose once, at start-up, before any
/// view is made: objects keep the peers of the backend that made them. When nothing was chosen
/// the headless backend is used.
class TNL_EXPORT TNLToolkit {
 public:
  /// Everything in memory, no display: the web view runs no engine and tests drive it.
  static void useHeadlessBackend();
  /// "headless", or the name of the backend installed by another call.
  static std::string backendName();
};
