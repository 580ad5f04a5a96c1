#pragma once

/// @file
/// @brief TNLView: a view of the retained view model.

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "TarnelAd/TNLExport.h"
#include "TarnelAd/Toolkit/TNLColor.h"
#include "TarnelAd/Toolkit/TNLEdgeInsets.h"
#include "TarnelAd/Toolkit/TNLLayoutItem.h"
#include "TarnelAd/Toolkit/TNLRect.h"

class TNLLayoutConstraint;
class TNLLayoutGuide;
class TNLToolkitBackend;
class TNLViewController;
class TNLViewPeer;
class TNLWindow;

/// Marks "no intrinsic size" along an axis (see intrinsicContentSize()).
inline constexpr double TNLViewNoIntrinsicMetric = -1.0;

/// A view of the retained view model: a rectangle in its superview with appearance flags, ordered
/// subviews and layout constraints. Views are owned by std::shared_ptr (a superview owns its
/// subviews, a subview holds its superview weakly) and used on the main thread only.
///
/// The model is what the library reads and writes; a backend renders it through a peer that the
/// view makes when it is first needed (when it joins a tree that is on screen, or when a web view
/// loads) and then tells of every change. Without a peer a view still works in full.
class TNL_EXPORT TNLView : public TNLLayoutItem, public std::enable_shared_from_this<TNLView> {
 public:
  /// Called with the key path ("hidden" or "alpha") and the view, after the value was set.
  using KeyValueCallback = std::function<void(const std::string& keyPath, TNLView& view)>;

  /// A view at `frame`; own it with std::shared_ptr (create() does).
  ///@{
  explicit TNLView(const TNLRect& frame = {});
  static std::shared_ptr<TNLView> create(const TNLRect& frame = {});
  ///@}
  ~TNLView() override;
  TNLView(const TNLView&) = delete;
  TNLView& operator=(const TNLView&) = delete;

  /// The class name that the view-tree walk reports; subclasses return their own.
  virtual std::string className() const { return "TNLView"; }

  /// The frame, in the superview's coordinates.
  ///@{
  TNLRect frame() const { return frame_; }
  void setFrame(const TNLRect& frame);
  ///@}
  /// The view's own coordinate space: origin normally zero (the content offset for a scroll
  /// view), the frame's size. A new bounds size resizes the frame about its centre.
  ///@{
  TNLRect bounds() const { return {boundsOrigin_, frame_.size}; }
  void setBounds(const TNLRect& bounds);
  ///@}
  /// The frame's centre, in the superview's coordinates.
  TNLPoint center() const { return {frame_.midX(), frame_.midY()}; }

  /// Whether the view (with its subviews) is hidden; key-value observable as "hidden".
  ///@{
  bool isHidden() const { return hidden_; }
  void setHidden(bool hidden);
  ///@}
  /// The opacity, 0 to 1; key-value observable as "alpha".
  ///@{
  double alpha() const { return alpha_; }
  void setAlpha(double alpha);
  ///@}
  /// Whether subviews are cut off at the bounds.
  ///@{
  bool clipsToBounds() const { return clipsToBounds_; }
  void setClipsToBounds(bool clips);
  ///@}
  /// Views of one superview with a higher z position are drawn over those with a lower one.
  ///@{
  double zPosition() const { return zPosition_; }
  void setZPosition(double zPosition);
  ///@}
  /// The colour painted behind the content; none paints nothing.
  ///@{
  std::optional<TNLColor> backgroundColor() const { return backgroundColor_; }
  void setBackgroundColor(const std::optional<TNLColor>& color);
  ///@}
  /// Whether the view paints every pixel (a web view that is not opaque shows what is behind).
  ///@{
  bool isOpaque() const { return opaque_; }
  void setOpaque(bool opaque);
  ///@}
  /// Whether the view takes touches (see hitTest).
  ///@{
  bool isUserInteractionEnabled() const { return userInteractionEnabled_; }
  void setUserInteractionEnabled(bool enabled);
  ///@}

  /// The superview, held weakly; null at the root.
  std::shared_ptr<TNLView> superview() const { return superview_.lock(); }
  /// The subviews, owned by this view, in the order added; the last is drawn on top among
  /// subviews of equal z position.
  const std::vector<std::shared_ptr<TNLView>>& subviews() const { return subviews_; }
  /// Back to front: subviews stably sorted by ascending z position.
  std::vector<std::shared_ptr<TNLView>> subviewsInZOrder() const;
  /// Moves the view here from any former superview and puts it on top.
  void addSubview(const std::shared_ptr<TNLView>& view);
  /// As addSubview, at `index` of the subviews (the end when past it).
  void insertSubview(const std::shared_ptr<TNLView>& view, size_t index);
  /// Leaves the superview, which releases its reference.
  void removeFromSuperview();
  /// Whether `view` is this view or one of its ancestors.
  bool isDescendantOfView(const TNLView& view) const;
  /// The window at the root of this view's tree; null when the tree has none. A window's own
  /// window() is null.
  virtual std::shared_ptr<TNLWindow> window() const;

  /// Coordinates. convertRect converts a rectangle in this view's coordinates into `view`'s; a
  /// null `view` means the window (or, outside any window, the root of the tree). Both views must
  /// share a root. convertRectToScreen goes on from the window to the screen.
  ///@{
  TNLRect convertRect(const TNLRect& rect, const std::shared_ptr<const TNLView>& view) const;
  TNLPoint convertPoint(const TNLPoint& point, const std::shared_ptr<const TNLView>& view) const;
  TNLRect convertRectToWindow(const TNLRect& rect) const { return convertRect(rect, nullptr); }
  TNLRect convertRectToScreen(const TNLRect& rect) const;
  ///@}

  /// Whether a touch at `point`, in this view's coordinates, is the view's; the default is the
  /// bounds test.
  virtual bool pointInside(const TNLPoint& point) const;
  /// The deepest visible, interactive view that takes a touch at `point` (this view's
  /// coordinates); null when none does.
  std::shared_ptr<TNLView> hitTest(const TNLPoint& point);

  /// Key-value observation of "hidden" and "alpha": every set of the property calls the
  /// observers, in registration order, whether or not the value changed. An observer is
  /// identified by its address; removing an observer that is not registered for the key path
  /// raises an exception derived from std::runtime_error, as the platform does. The view keeps
  /// the callback until it is removed; it runs on the thread that sets the property.
  ///@{
  void addObserver(const void* observer, const std::string& keyPath, KeyValueCallback callback);
  void removeObserver(const void* observer, const std::string& keyPath);
  ///@}

  /// Layout. Constraints are solved for views whose translatesAutoresizingMaskIntoConstraints is
  /// off; other views keep the frames they are given.
  ///@{
  bool translatesAutoresizingMaskIntoConstraints() const { return translatesAutoresizingMask_; }
  void setTranslatesAutoresizingMaskIntoConstraints(bool translates);
  ///@}
  /// The constraints added to this view (it owns them); they may relate any views of its tree.
  /// Each change schedules a layout pass.
  ///@{
  const std::vector<std::shared_ptr<TNLLayoutConstraint>>& constraints() const {
    return constraints_;
  }
  void addConstraint(const std::shared_ptr<TNLLayoutConstraint>& constraint);
  void addConstraints(const std::vector<std::shared_ptr<TNLLayoutConstraint>>& constraints);
  void removeConstraint(const std::shared_ptr<TNLLayoutConstraint>& constraint);
  ///@}
  /// Asks for a layout pass of this view's tree on the main queue (one pass for many requests).
  void setNeedsLayout();
  /// Solves the constraints of this view's whole tree now.
  void layoutIfNeeded();
  /// The size the view wants when constraints fix only its position; TNLViewNoIntrinsicMetric
  /// along an axis that has none. Labels and buttons measure their text through their peer.
  virtual TNLSize intrinsicContentSize() const;
  /// The intrinsic size changed: schedules a layout pass.
  void invalidateIntrinsicContentSize() { setNeedsLayout(); }

  /// Safe area: the part of the view not covered by the window's insets (status bar, cut-outs)
  /// or by the additional insets of the view controllers on the way down; as insets, and as a
  /// layout guide (made on first use and kept by the view) for constraints.
  ///@{
  TNLEdgeInsets safeAreaInsets() const;
  std::shared_ptr<TNLLayoutGuide> safeAreaLayoutGuide();
  ///@}

  /// The frame, in the superview's space (TNLLayoutItem).
  ///@{
  TNLRect layoutItemRect() const override { return frame_; }
  std::shared_ptr<TNLView> layoutItemSpace() const override { return superview(); }
  ///@}

  /// Backend side. peer() makes the peer through the current backend on first call (null while
  /// the view is not owned by a std::shared_ptr, or while an owner is to supply it); the new
  /// peer is then told the whole current state through the same calls that report changes.
  std::shared_ptr<TNLViewPeer> peer();
  /// The peer if one was made, without making one.
  std::shared_ptr<TNLViewPeer> existingPeer() const { return peer_; }
  /// For an object whose peer is made by another one (a web view's scroll view, whose peer is
  /// part of the web engine): the view never makes its own, and attachPeer hands it one.
  ///@{
  void setPeerSuppliedByOwner(bool supplied) { peerSuppliedByOwner_ = supplied; }
  void attachPeer(std::shared_ptr<TNLViewPeer> peer);
  ///@}

 protected:
  /// Makes this kind of view's peer; subclasses with their own kind of peer override it.
  virtual std::shared_ptr<TNLViewPeer> makePeer(TNLToolkitBackend& backend);
  /// Tells a new peer the whole state; subclasses call the base and add their own.
  virtual void replayState(TNLViewPeer& peer);
  /// Hooks for subclasses, called after the change was made and reported.
  ///@{
  virtual void boundsDidChange() {}
  virtual void hiddenDidChange() {}
  ///@}
  /// A new bounds origin that the peer itself produced (scrolling): not reported back to it.
  void takeBoundsOriginFromPeer(const TNLPoint& origin);

  /// Calls `report` with the peer when there is one.
  template <class Report>
  void tellPeer(Report&& report) {
    if (peer_) {
      report(*peer_);
    }
  }

 private:
  friend class TNLLayoutSolver;
  friend class TNLViewController;

  struct KeyValueObservation {
    const void* observer;
    std::string keyPath;
    KeyValueCallback callback;
    bool removed;
  };

  void didChangeValueForKey(const std::string& keyPath);
  void reportSubviews();
  /// The frame set by a layout pass: reported like any change, but schedules no further pass.
  void setFrameFromLayout(const TNLRect& frame);
  void applyFrame(const TNLRect& frame);
  /// A point in this view's coordinates in `view`'s (null: the root's).
  TNLPoint pointToView(const TNLPoint& point, const TNLView* view) const;
  /// The rectangle of the safe area in the coordinates of the tree's root.
  TNLRect safeRectInRoot() const;

  TNLRect frame_;
  TNLPoint boundsOrigin_;
  bool hidden_ = false;
  double alpha_ = 1.0;
  bool clipsToBounds_ = false;
  double zPosition_ = 0.0;
  std::optional<TNLColor> backgroundColor_;
  bool opaque_ = true;
  bool userInteractionEnabled_ = true;
  bool translatesAutoresizingMask_ = true;
  bool layoutScheduled_ = false;
  bool peerSuppliedByOwner_ = false;

  std::weak_ptr<TNLView> superview_;
  std::vector<std::shared_ptr<TNLView>> subviews_;
  std::vector<std::shared_ptr<TNLLayoutConstraint>> constraints_;
  std::vector<std::shared_ptr<KeyValueObservation>> observations_;
  std::shared_ptr<TNLLayoutGuide> safeAreaLayoutGuide_;
  /// Set while the view is a view controller's root view; its additional insets apply here.
  std::weak_ptr<TNLViewController> viewController_;
  std::shared_ptr<TNLViewPeer> peer_;
};
