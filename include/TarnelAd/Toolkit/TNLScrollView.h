#pragma once

#include <memory>

#include "TarnelAd/Toolkit/TNLView.h"

// A view whose content can be larger than itself and is scrolled by a content offset (the
// origin of its bounds).
class TNLScrollView : public TNLView {
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

  // Backend side: the user scrolled; the offset is taken without being reported back.
  void peerDidScroll(const TNLPoint& offset);

 protected:
  std::shared_ptr<TNLViewPeer> makePeer(TNLToolkitBackend& backend) override;
  void replayState(TNLViewPeer& peer) override;

 private:
  TNLSize contentSize_;
  bool scrollEnabled_ = true;
  bool bounces_ = true;
};
