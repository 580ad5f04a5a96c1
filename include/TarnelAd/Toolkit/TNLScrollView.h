#pragma once

#include <memory>

#include "TarnelAd/TNLExport.h"
#include "TarnelAd/Toolkit/TNLView.h"

class TNLScrollView;

// Hears a scroll view's scrolling. A host that shows a banner in a scroll view passes each scroll
// on with TNLBannerAdView::informBannerAdOfScrollViewEvent.
class TNL_EXPORT TNLScrollViewDelegate {
 public:
  virtual ~TNLScrollViewDelegate() = default;
  // The content offset changed, by the user or by setContentOffset. Main thread.
  virtual void scrollViewDidScroll(const std::shared_ptr<TNLScrollView>& scrollView) = 0;
};

// A view whose content can be larger than itself and is scrolled by a content offset (the
// origin of its bounds).
class TNL_EXPORT TNLScrollView : public TNLView {
 public:
  explicit TNLScrollView(const TNLRect& frame = {});
  static std::shared_ptr<TNLScrollView> create(const TNLRect& frame = {});

  std::string className() const override { return "TNLScrollView"; }

  TNLPoint contentOffset() const { return bounds().origin; }
  void setContentOffset(const TNLPoint& offset);
  TNLSize contentSize() const { return contentSize_; }
  void setContentSize(const TNLSize& size);
  bool isScrollEnabled() const { return scrollEnabled_; }
  void setScrollEnabled(bool enabled);
  bool bounces() const { return bounces_; }
  void setBounces(bool bounces);

  // Held weakly.
  std::shared_ptr<TNLScrollViewDelegate> delegate() const { return delegate_.lock(); }
  void setDelegate(const std::shared_ptr<TNLScrollViewDelegate>& delegate) { delegate_ = delegate; }

  // Backend side: the user scrolled; the offset is taken without being reported back.
  void peerDidScroll(const TNLPoint& offset);

 protected:
  std::shared_ptr<TNLViewPeer> makePeer(TNLToolkitBackend& backend) override;
  void replayState(TNLViewPeer& peer) override;
  void boundsDidChange() override;

 private:
  std::weak_ptr<TNLScrollViewDelegate> delegate_;
  TNLPoint reportedOffset_;
  TNLSize contentSize_;
  bool scrollEnabled_ = true;
  bool bounces_ = true;
};
