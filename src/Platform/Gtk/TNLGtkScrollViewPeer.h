#pragma once

#include <memory>

#include "Platform/Gtk/TNLGtkPeer.h"

class TNLScrollView;

// A scroll view: its subviews move by the content offset (the bounds origin, which every box
// applies), and wheel and touchpad scrolling over it move the offset within the content size
// when scrolling is enabled, reported to the model with peerDidScroll.
class TNLGtkScrollViewPeer : public TNLGtkPeer<TNLViewPeer> {
 public:
  explicit TNLGtkScrollViewPeer(const std::shared_ptr<TNLScrollView>& scrollView);

  void contentSizeChanged(const TNLSize& size) override { contentSize_ = size; }
  void scrollEnabledChanged(bool enabled) override { scrollEnabled_ = enabled; }

 private:
  bool scroll(const GdkEventScroll& event);

  std::weak_ptr<TNLScrollView> model_;
  TNLSize contentSize_;
  bool scrollEnabled_ = true;
};
