#include "TarnelAd/Toolkit/TNLView.h"

#include <algorithm>
#include <cstdio>

#include "Platform/Foundation/TNLException.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "Platform/Toolkit/TNLLayoutSolver.h"
#include "Platform/Toolkit/TNLToolkitBackend.h"
#include "Platform/Toolkit/TNLViewPeer.h"
#include "TarnelAd/Toolkit/TNLLayoutConstraint.h"
#include "TarnelAd/Toolkit/TNLLayoutGuide.h"
#include "TarnelAd/Toolkit/TNLViewController.h"
#include "TarnelAd/Toolkit/TNLWindow.h"

namespace {

constexpr char kHiddenKey[] = "hidden";
constexpr char kAlphaKey[] = "alpha";

// The offset that takes a point in `view`'s coordinates into its superview's.
TNLPoint offsetInSuperview(const TNLView& view) {
  return {view.frame().origin.x - view.bounds().origin.x,
          view.frame().origin.y - view.bounds().origin.y};
}

// Walks up to the root of the tree, adding each step's offset: the point in root coordinates.
TNLPoint pointInRoot(const TNLView& view, TNLPoint point, const TNLView** root) {
  const TNLView* current = &view;
  std::shared_ptr<TNLView> superview = current->superview();
  while (superview) {
    const TNLPoint offset = offsetInSuperview(*current);
    point.x += offset.x;
    point.y += offset.y;
    current = superview.get();
    superview = current->superview();
  }
  *root = current;
  return point;
}

// A window's coordinates into the screen's.
TNLPoint windowToScreen(const TNLView& window, TNLPoint point) {
  const TNLPoint offset = offsetInSuperview(window);
  return {point.x + offset.x, point.y + offset.y};
}

TNLRect intersection(const TNLRect& a, const TNLRect& b) {
  const double minX = std::max(a.minX(), b.minX());
  const double minY = std::max(a.minY(), b.minY());
  const double maxX = std::max(minX, std::min(a.maxX(), b.maxX()));
  const double maxY = std::max(minY, std::min(a.maxY(), b.maxY()));
  return {minX, minY, maxX - minX, maxY - minY};
}

std::string describe(const void* object) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%p", object);
  return buffer;
}

}  // namespace

TNLView::TNLView(const TNLRect& frame) : frame_(frame) {}

std::shared_ptr<TNLView> TNLView::create(const TNLRect& frame) {
  return std::make_shared<TNLView>(frame);
}

TNLView::~TNLView() = default;

void TNLView::setFrame(const TNLRect& frame) {
  if (frame == frame_) {
    return;
  }
  applyFrame(frame);
  setNeedsLayout();
}

void TNLView::setFrameFromLayout(const TNLRect& frame) {
  if (frame != frame_) {
    applyFrame(frame);
  }
}

void TNLView::applyFrame(const TNLRect& frame) {
  const bool resized = frame.size != frame_.size;
  frame_ = frame;
  tellPeer([&](TNLViewPeer& peer) { peer.frameChanged(frame_); });
  if (resized) {
    tellPeer([&](TNLViewPeer& peer) { peer.boundsChanged(bounds()); });
    boundsDidChange();
  }
}

void TNLView::setBounds(const TNLRect& bounds) {
  if (bounds == this->bounds()) {
    return;
  }
  if (bounds.size != frame_.size) {
    const TNLPoint center = this->center();
    frame_ = {center.x - bounds.size.width / 2.0, center.y - bounds.size.height / 2.0,
              bounds.size.width, bounds.size.height};
    tellPeer([&](TNLViewPeer& peer) { peer.frameChanged(frame_); });
  }
  boundsOrigin_ = bounds.origin;
  tellPeer([&](TNLViewPeer& peer) { peer.boundsChanged(this->bounds()); });
  boundsDidChange();
  setNeedsLayout();
}

void TNLView::takeBoundsOriginFromPeer(const TNLPoint& origin) {
  if (origin == boundsOrigin_) {
    return;
  }
  boundsOrigin_ = origin;
  boundsDidChange();
  setNeedsLayout();
}

void TNLView::setHidden(bool hidden) {
  hidden_ = hidden;
  tellPeer([&](TNLViewPeer& peer) { peer.hiddenChanged(hidden_); });
  hiddenDidChange();
  didChangeValueForKey(kHiddenKey);
}

void TNLView::setAlpha(double alpha) {
  // The platform reads values outside 0...1 as the nearest bound.
  alpha_ = std::clamp(alpha, 0.0, 1.0);
  tellPeer([&](TNLViewPeer& peer) { peer.alphaChanged(alpha_); });
  didChangeValueForKey(kAlphaKey);
}

void TNLView::setClipsToBounds(bool clips) {
  clipsToBounds_ = clips;
  tellPeer([&](TNLViewPeer& peer) { peer.clipsToBoundsChanged(clips); });
}

void TNLView::setZPosition(double zPosition) {
  zPosition_ = zPosition;
  tellPeer([&](TNLViewPeer& peer) { peer.zPositionChanged(zPosition); });
  if (auto superview = this->superview()) {
    superview->reportSubviews();
  }
}

void TNLView::setBackgroundColor(const std::optional<TNLColor>& color) {
  backgroundColor_ = color;
  tellPeer([&](TNLViewPeer& peer) { peer.backgroundColorChanged(color); });
}

void TNLView::setOpaque(bool opaque) {
  opaque_ = opaque;
  tellPeer([&](TNLViewPeer& peer) { peer.opaqueChanged(opaque); });
}

void TNLView::setUserInteractionEnabled(bool enabled) {
  userInteractionEnabled_ = enabled;
  tellPeer([&](TNLViewPeer& peer) { peer.userInteractionEnabledChanged(enabled); });
}

std::vector<std::shared_ptr<TNLView>> TNLView::subviewsInZOrder() const {
  std::vector<std::shared_ptr<TNLView>> ordered = subviews_;
  std::stable_sort(ordered.begin(), ordered.end(),
                   [](const std::shared_ptr<TNLView>& a, const std::shared_ptr<TNLView>& b) {
                     return a->zPosition_ < b->zPosition_;
                   });
  return ordered;
}

void TNLView::addSubview(const std::shared_ptr<TNLView>& view) {
  insertSubview(view, subviews_.size());
}

void TNLView::insertSubview(const std::shared_ptr<TNLView>& view, size_t index) {
  // A view cannot contain itself or one of its ancestors.
  if (!view || isDescendantOfView(*view)) {
    return;
  }
  const std::shared_ptr<TNLView> self = weak_from_this().lock();
  if (!self) {
    return;
  }
  const std::shared_ptr<TNLView> moving = view;
  if (auto former = moving->superview()) {
    std::erase(former->subviews_, moving);
    if (former != self) {
      former->reportSubviews();
      former->setNeedsLayout();
    }
  }
  index = std::min(index, subviews_.size());
  subviews_.insert(subviews_.begin() + static_cast<std::ptrdiff_t>(index), moving);
  moving->superview_ = self;
  reportSubviews();
  setNeedsLayout();
}

void TNLView::removeFromSuperview() {
  const std::shared_ptr<TNLView> superview = this->superview();
  if (!superview) {
    return;
  }
  // The superview may hold the last reference.
  const std::shared_ptr<TNLView> keepAlive = shared_from_this();
  std::erase(superview->subviews_, keepAlive);
  superview_.reset();
  superview->reportSubviews();
  superview->setNeedsLayout();
}

bool TNLView::isDescendantOfView(const TNLView& view) const {
  if (this == &view) {
    return true;
  }
  for (auto ancestor = superview(); ancestor; ancestor = ancestor->superview()) {
    if (ancestor.get() == &view) {
      return true;
    }
  }
  return false;
}

std::shared_ptr<TNLWindow> TNLView::window() const {
  std::shared_ptr<TNLView> top = superview();
  if (!top) {
    return nullptr;
  }
  while (auto up = top->superview()) {
    top = up;
  }
  return std::dynamic_pointer_cast<TNLWindow>(top);
}

TNLPoint TNLView::pointToView(const TNLPoint& point, const TNLView* view) const {
  const TNLView* fromRoot = nullptr;
  TNLPoint inRoot = pointInRoot(*this, point, &fromRoot);
  if (view == nullptr) {
    return inRoot;
  }
  const TNLView* toRoot = nullptr;
  const TNLPoint origin = pointInRoot(*view, {0.0, 0.0}, &toRoot);
  // Between two windows the way goes through the screen.
  if (fromRoot != toRoot && dynamic_cast<const TNLWindow*>(fromRoot) != nullptr &&
      dynamic_cast<const TNLWindow*>(toRoot) != nullptr) {
    inRoot = windowToScreen(*fromRoot, inRoot);
    const TNLPoint toOffset = offsetInSuperview(*toRoot);
    inRoot = {inRoot.x - toOffset.x, inRoot.y - toOffset.y};
  }
  return {inRoot.x - origin.x, inRoot.y - origin.y};
}

TNLPoint TNLView::convertPoint(const TNLPoint& point,
                               const std::shared_ptr<const TNLView>& view) const {
  return pointToView(point, view.get());
}

TNLRect TNLView::convertRect(const TNLRect& rect,
                             const std::shared_ptr<const TNLView>& view) const {
  return {pointToView(rect.origin, view.get()), rect.size};
}

TNLRect TNLView::convertRectToScreen(const TNLRect& rect) const {
  const TNLView* root = nullptr;
  TNLPoint point = pointInRoot(*this, rect.origin, &root);
  if (dynamic_cast<const TNLWindow*>(root) != nullptr) {
    point = windowToScreen(*root, point);
  }
  return {point, rect.size};
}

bool TNLView::pointInside(const TNLPoint& point) const {
  return bounds().contains(point);
}

std::shared_ptr<TNLView> TNLView::hitTest(const TNLPoint& point) {
  // Like the platform: hidden, non-interactive and nearly transparent views take no touches.
  if (hidden_ || !userInteractionEnabled_ || alpha_ <= 0.01 || !pointInside(point)) {
    return nullptr;
  }
  const auto ordered = subviewsInZOrder();
  for (auto it = ordered.rbegin(); it != ordered.rend(); ++it) {
    const TNLPoint offset = offsetInSuperview(**it);
    if (auto hit = (*it)->hitTest({point.x - offset.x, point.y - offset.y})) {
      return hit;
    }
  }
  return weak_from_this().lock();
}

void TNLView::addObserver(const void* observer, const std::string& keyPath,
                          KeyValueCallback callback) {
  observations_.push_back(std::make_shared<KeyValueObservation>(
      KeyValueObservation{observer, keyPath, std::move(callback), false}));
}

void TNLView::removeObserver(const void* observer, const std::string& keyPath) {
  const auto found = std::find_if(observations_.begin(), observations_.end(),
                                  [&](const std::shared_ptr<KeyValueObservation>& o) {
                                    return o->observer == observer && o->keyPath == keyPath;
                                  });
  if (found == observations_.end()) {
    throw TNLException(TNLRangeException, "Cannot remove an observer <" + describe(observer) +
                                              "> for the key path \"" + keyPath + "\" from <" +
                                              className() + " " + describe(this) +
                                              "> because it is not registered as an observer.");
  }
  (*found)->removed = true;
  observations_.erase(found);
}

void TNLView::didChangeValueForKey(const std::string& keyPath) {
  std::vector<std::shared_ptr<KeyValueObservation>> matching;
  for (const auto& observation : observations_) {
    if (observation->keyPath == keyPath) {
      matching.push_back(observation);
    }
  }
  if (matching.empty()) {
    return;
  }
  // An observer may remove the view from its tree, or itself from the observers.
  const std::shared_ptr<TNLView> keepAlive = weak_from_this().lock();
  for (const auto& observation : matching) {
    if (!observation->removed && observation->callback) {
      observation->callback(keyPath, *this);
    }
  }
}

void TNLView::setTranslatesAutoresizingMaskIntoConstraints(bool translates) {
  translatesAutoresizingMask_ = translates;
  setNeedsLayout();
}

void TNLView::addConstraint(const std::shared_ptr<TNLLayoutConstraint>& constraint) {
  if (!constraint ||
      std::find(constraints_.begin(), constraints_.end(), constraint) != constraints_.end()) {
    return;
  }
  constraints_.push_back(constraint);
  constraint->installedView_ = weak_from_this();
  setNeedsLayout();
}

void TNLView::addConstraints(const std::vector<std::shared_ptr<TNLLayoutConstraint>>& constraints) {
  for (const auto& constraint : constraints) {
    addConstraint(constraint);
  }
}

void TNLView::removeConstraint(const std::shared_ptr<TNLLayoutConstraint>& constraint) {
  if (std::erase(constraints_, constraint) > 0) {
    constraint->installedView_.reset();
    setNeedsLayout();
  }
}

void TNLView::setNeedsLayout() {
  std::shared_ptr<TNLView> root = weak_from_this().lock();
  if (!root) {
    return;
  }
  while (auto up = root->superview()) {
    root = up;
  }
  if (root->layoutScheduled_) {
    return;
  }
  root->layoutScheduled_ = true;
  TNLMainQueue::async([weakRoot = std::weak_ptr<TNLView>(root)] {
    if (auto scheduled = weakRoot.lock()) {
      scheduled->layoutScheduled_ = false;
      scheduled->layoutIfNeeded();
    }
  });
}

void TNLView::layoutIfNeeded() {
  // Constraints may relate any two items of a tree, so the whole tree is solved.
  const TNLView* root = this;
  for (auto up = superview(); up; up = up->superview()) {
    root = up.get();
  }
  TNLLayoutSolver::solve(const_cast<TNLView&>(*root));
}

TNLSize TNLView::intrinsicContentSize() const {
  return {TNLViewNoIntrinsicMetric, TNLViewNoIntrinsicMetric};
}

TNLRect TNLView::safeRectInRoot() const {
  const TNLRect mine = {pointToView(bounds().origin, nullptr), frame_.size};
  TNLRect safe = mine;
  if (const auto superview = this->superview()) {
    safe = intersection(superview->safeRectInRoot(), mine);
  } else if (const auto* window = dynamic_cast<const TNLWindow*>(this)) {
    safe = mine.inset(window->windowSafeAreaInsets());
  }
  if (const auto controller = viewController_.lock()) {
    safe = intersection(safe, mine.inset(controller->additionalSafeAreaInsets()));
  }
  return safe;
}

TNLEdgeInsets TNLView::safeAreaInsets() const {
  const TNLRect mine = {pointToView(bounds().origin, nullptr), frame_.size};
  const TNLRect safe = safeRectInRoot();
  const double height = std::max(0.0, mine.height());
  const double width = std::max(0.0, mine.width());
  return {std::clamp(safe.minY() - mine.minY(), 0.0, height),
          std::clamp(safe.minX() - mine.minX(), 0.0, width),
          std::clamp(mine.maxY() - safe.maxY(), 0.0, height),
          std::clamp(mine.maxX() - safe.maxX(), 0.0, width)};
}

std::shared_ptr<TNLLayoutGuide> TNLView::safeAreaLayoutGuide() {
  if (!safeAreaLayoutGuide_) {
    safeAreaLayoutGuide_ = std::make_shared<TNLLayoutGuide>(weak_from_this());
  }
  return safeAreaLayoutGuide_;
}

std::shared_ptr<TNLViewPeer> TNLView::peer() {
  if (peer_ || peerSuppliedByOwner_) {
    return peer_;
  }
  // The backend's peer keeps a weak reference to report back, so the view must be shared.
  if (weak_from_this().expired()) {
    return nullptr;
  }
  auto made = makePeer(*TNLToolkitBackend::current());
  if (made) {
    peer_ = std::move(made);
    replayState(*peer_);
  }
  return peer_;
}

void TNLView::attachPeer(std::shared_ptr<TNLViewPeer> peer) {
  peer_ = std::move(peer);
  if (peer_) {
    replayState(*peer_);
  }
}

std::shared_ptr<TNLViewPeer> TNLView::makePeer(TNLToolkitBackend& backend) {
  return backend.createViewPeer(shared_from_this());
}

void TNLView::replayState(TNLViewPeer& peer) {
  peer.frameChanged(frame_);
  peer.boundsChanged(bounds());
  peer.hiddenChanged(hidden_);
  peer.alphaChanged(alpha_);
  peer.clipsToBoundsChanged(clipsToBounds_);
  peer.zPositionChanged(zPosition_);
  peer.backgroundColorChanged(backgroundColor_);
  peer.opaqueChanged(opaque_);
  peer.userInteractionEnabledChanged(userInteractionEnabled_);
  reportSubviews();
}

void TNLView::reportSubviews() {
  if (!peer_) {
    return;
  }
  std::vector<std::shared_ptr<TNLViewPeer>> peers;
  for (const auto& subview : subviewsInZOrder()) {
    if (auto subviewPeer = subview->peer()) {
      peers.push_back(std::move(subviewPeer));
    }
  }
  peer_->subviewsChanged(peers);
}
