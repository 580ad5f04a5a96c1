#pragma once

/// @file
/// @brief TNLScrollView: a view that scrolls its content, and its delegate.

#include <memory>

#include "TarnelAd/TNLExport.h"
#include "TarnelAd/Toolkit/TNLView.h"

class TNLScrollView;

/// Hears a scroll view's scrolling, on the main thread; held weakly by the scroll view. A host that
/// shows a banner in a scroll view passes each scroll on with
/// TNLBannerAdView::informBannerAdOfScrollViewEvent.
class TNL_EXPORT TNLScrollViewDelegate {
 public:
  virtual ~TNLScrollViewDelegate() = default;
  /// The content offset changed, by the user or by setContentOffset. Main thread.
  virtual void scrollViewDidScroll(const std::shared_ptr<TNLScrollView>& scrollView) = 0;
};

/// A view whose content can be larger than itself and is scrolled by a content offset (the
/// origin of its bounds).
class TNL_EXPORT TNLScrollView : public TNLView {
 public:
  /// A scroll view at `frame`; own it with std::shared_ptr.
  ///@{
  explicit TNLScrollView(const TNLRect& frame = {});
  static std::shared_ptr<TNLScrollView> create(const TNLRect& frame = {});
  ///@}

  /// "TNLScrollView".
  std::string className() const override { return "TNLScrollView"; }

  /// The scrolled distance: the origin of the bounds. Setting it tells the delegate.
  ///@{
  TNLPoint contentOffset() const { return bounds().origin; }
  void setContentOffset(const TNLPoint& offset);
  ///@}
  /// The size of the content.
  ///@{
  TNLSize contentSize() const { return contentSize_; }
  void setContentSize(const TNLSize& size);
  ///@}
  /// Whether the user may scroll.
  ///@{
  bool isScrollEnabled() const { return scrollEnabled_; }
  void setScrollEnabled(bool enabled);
  ///@}
  /// Whether scrolling bounces at the content's edges.
  ///@{
  bool bounces() const { return bounces_; }
  void setBounces(bool bounces);
  ///@}

  /// The delegate, held weakly.
  ///@{
  std::shared_ptr<TNLScrollViewDelegate> delegate() const { return delegate_.lock(); }
  void setDelegate(const std::shared_ptr<TNLScrollViewDelegate>& delegate) { delegate_ = delegate; }
  ///@}

  /// Backend side: the user scrolled; the offset is taken without being reported back.
  void peerDidScroll(const TNLPoint& offset);

 protected:
  /// The scroll view's own kind of peer, and its state.
  ///@{
  std::shared_ptr<TNLViewPeer> makePeer(TNLToolkitBackend& backend) override;
  void replayState(TNLViewPeer& peer) override;
  ///@}
  /// Tells the delegate of a new offset.
  void boundsDidChange() override;

 private:
  std::weak_ptr<TNLScrollViewDelegate> delegate_;
  TNLPoint reportedOffset_;
  TNLSize contentSize_;
  bool scrollEnabled_ = true;
  bool bounces_ = true;
};
