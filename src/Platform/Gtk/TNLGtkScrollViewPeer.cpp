#include "Platform/Gtk/TNLGtkScrollViewPeer.h"

#include <algorithm>

#include "TarnelAd/Toolkit/TNLScrollView.h"

namespace {

// Points per wheel notch, as GTK's own scrolled windows move a line.
constexpr double kStep = 40.0;

}  // namespace

TNLGtkScrollViewPeer::TNLGtkScrollViewPeer(const std::shared_ptr<TNLScrollView>& scrollView)
    : TNLGtkPeer(scrollView), model_(scrollView) {
  box_.setScrollHandler([this](const GdkEventScroll& event) { return scroll(event); });
}

bool TNLGtkScrollViewPeer::scroll(const GdkEventScroll& event) {
  const auto model = model_.lock();
  if (!model || !scrollEnabled_) {
    return false;
  }
  double dx = 0.0;
  double dy = 0.0;
  switch (event.direction) {
    case GDK_SCROLL_UP:
      dy = -kStep;
      break;
    case GDK_SCROLL_DOWN:
      dy = kStep;
      break;
    case GDK_SCROLL_LEFT:
      dx = -kStep;
      break;
    case GDK_SCROLL_RIGHT:
      dx = kStep;
      break;
    case GDK_SCROLL_SMOOTH:
      dx = event.delta_x * kStep;
      dy = event.delta_y * kStep;
      break;
  }
  const TNLRect bounds = model->bounds();
  const double maxX = std::max(0.0, contentSize_.width - bounds.width());
  const double maxY = std::max(0.0, contentSize_.height - bounds.height());
  const TNLPoint offset{std::clamp(bounds.origin.x + dx, 0.0, maxX),
                        std::clamp(bounds.origin.y + dy, 0.0, maxY)};
  if (offset == bounds.origin) {
    return false;  // at the edge: let an enclosing scroller have it
  }
  box_.setBoundsOrigin(offset);
  model->peerDidScroll(offset);
  return true;
}
