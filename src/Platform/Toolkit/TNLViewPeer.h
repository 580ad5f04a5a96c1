#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "TarnelAd/Toolkit/TNLColor.h"
#include "TarnelAd/Toolkit/TNLRect.h"

// A backend's rendering of one model object (view, scroll view, label, button, window). The
// model calls these after each change of its state, on the main thread, and a new peer is told
// the whole state through the same calls right after it is made. Every operation has an empty
// default so that a peer implements only what its kind of object has. A peer must not call back
// into the model from inside these calls; it reports back through the model object it was made
// for (see TNLToolkitBackend).
class TNLViewPeer {
 public:
  virtual ~TNLViewPeer() = default;

  // Every view.
  virtual void frameChanged(const TNLRect& /*frame*/) {}
  virtual void boundsChanged(const TNLRect& /*bounds*/) {}
  virtual void hiddenChanged(bool /*hidden*/) {}
  virtual void alphaChanged(double /*alpha*/) {}
  virtual void clipsToBoundsChanged(bool /*clips*/) {}
  virtual void zPositionChanged(double /*zPosition*/) {}
  virtual void backgroundColorChanged(const std::optional<TNLColor>& /*color*/) {}
  virtual void opaqueChanged(bool /*opaque*/) {}
  virtual void userInteractionEnabledChanged(bool /*enabled*/) {}
  // The peers of the subviews, back to front (ascending z position, then subview order); sent
  // whenever a subview is added, removed or changes z position.
  virtual void subviewsChanged(const std::vector<std::shared_ptr<TNLViewPeer>>& /*subviews*/) {}
  // The size the content wants (text metrics); none when it has no preference.
  virtual std::optional<TNLSize> intrinsicContentSize() const { return std::nullopt; }

  // Labels.
  virtual void textChanged(const std::optional<std::string>& /*text*/) {}
  // Buttons: the title shown (the normal state's).
  virtual void titleChanged(const std::optional<std::string>& /*title*/) {}
  // Scroll views, and a web view's own scroll view.
  virtual void contentOffsetChanged(const TNLPoint& /*offset*/) {}
  virtual void contentSizeChanged(const TNLSize& /*size*/) {}
  virtual void scrollEnabledChanged(bool /*enabled*/) {}
  virtual void bouncesChanged(bool /*bounces*/) {}
  // Windows.
  virtual void keyWindowChanged(bool /*isKey*/) {}
};
