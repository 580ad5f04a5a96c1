#pragma once

// The frame a navigation targets.
class TNLFrameInfo {
 public:
  explicit TNLFrameInfo(bool mainFrame) : mainFrame_(mainFrame) {}

  // False for an iframe.
  bool isMainFrame() const { return mainFrame_; }

 private:
  bool mainFrame_;
};
