#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "Platform/Gtk/TNLGtkBoxed.h"
#include "Platform/Gtk/TNLGtkViewBox.h"
#include "Platform/Toolkit/TNLViewPeer.h"

// The view state every GTK peer mirrors onto its box: frame, bounds origin, hidden, alpha,
// clipping, background and subviews. `Base` is TNLViewPeer or one of its refinements (the web
// engine's), so each kind of peer adds only what its kind of view has. A plain view's peer is
// TNLGtkPeer<TNLViewPeer> itself.
template <class Base>
class TNLGtkPeer : public Base, public TNLGtkBoxed {
 public:
  explicit TNLGtkPeer(const std::shared_ptr<TNLView>& view) : box_(view) {}

  TNLGtkViewBox& box() override { return box_; }

  void frameChanged(const TNLRect& frame) override { box_.setFrame(frame); }
  void boundsChanged(const TNLRect& bounds) override { box_.setBoundsOrigin(bounds.origin); }
  void hiddenChanged(bool hidden) override { box_.setHidden(hidden); }
  void alphaChanged(double alpha) override { box_.setAlpha(alpha); }
  void clipsToBoundsChanged(bool clips) override { box_.setClipsToBounds(clips); }
  void backgroundColorChanged(const std::optional<TNLColor>& color) override {
    box_.setBackgroundColor(color);
  }
  // Interaction only changes where input goes.
  void userInteractionEnabledChanged(bool /*enabled*/) override { TNLGtkViewBox::scheduleSync(); }
  void subviewsChanged(const std::vector<std::shared_ptr<TNLViewPeer>>& subviews) override {
    std::vector<TNLGtkViewBox*> boxes;
    boxes.reserve(subviews.size());
    for (const auto& subview : subviews) {
      if (auto* child = TNLGtkBoxed::boxOf(subview)) {
        boxes.push_back(child);
      }
    }
    box_.setChildren(boxes);
  }

 protected:
  TNLGtkViewBox box_;
};
