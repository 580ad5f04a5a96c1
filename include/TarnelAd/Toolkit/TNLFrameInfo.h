#pragma once

/// @file
/// @brief TNLFrameInfo: the frame a navigation targets.

#include "TarnelAd/TNLExport.h"

/// The frame a navigation targets.
class TNL_EXPORT TNLFrameInfo {
 public:
  /// The main frame, or (false) an iframe.
  explicit TNLFrameInfo(bool mainFrame) : mainFrame_(mainFrame) {}

  /// False for an iframe.
  bool isMainFrame() const { return mainFrame_; }

 private:
  bool mainFrame_;
};
