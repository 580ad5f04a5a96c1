#pragma once

#include "TarnelAd/TNLExport.h"

// The frame a navigation targets.
class TNL_EXPORT TNLFrameInfo {
 public:
  explicit TNLFrameInfo(bool mainFrame) : mainFrame_(mainFrame) {}

  // False for an iframe.
  bool isMainFrame() const { return mainFrame_; }

 private:
  bool mainFrame_;
};
