#pragma once

#include <memory>

#include "Platform/Toolkit/TNLViewPeer.h"

class TNLGtkWebEngine;

// The peer of a web view's own scroll view: its switches and content offset act on the page
// through the engine.
class TNLGtkWebScrollPeer : public TNLViewPeer {
 public:
  explicit TNLGtkWebScrollPeer(std::weak_ptr<TNLGtkWebEngine> engine)
      : engine_(std::move(engine)) {}

  void contentOffsetChanged(const TNLPoint& offset) override;
  void scrollEnabledChanged(bool enabled) override;
  void bouncesChanged(bool bounces) override;

 private:
  std::weak_ptr<TNLGtkWebEngine> engine_;
};
