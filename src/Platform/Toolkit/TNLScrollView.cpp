#include "TarnelAd/Toolkit/TNLScrollView.h"

#include "Platform/Toolkit/TNLToolkitBackend.h"
#include "Platform/Toolkit/TNLViewPeer.h"

TNLScrollView::TNLScrollView(const TNLRect& frame) : TNLView(frame) {}

std::shared_ptr<TNLScrollView> TNLScrollView::create(const TNLRect& frame) {
  return std::make_shared<TNLScrollView>(frame);
}

void TNLScrollView::setContentOffset(const TNLPoint& offset) {
  setBounds({offset, bounds().size});
  tellPeer([&](TNLViewPeer& peer) { peer.contentOffsetChanged(offset); });
}

void TNLScrollView::peerDidScroll(const TNLPoint& offset) {
  takeBoundsOriginFromPeer(offset);
}

void TNLScrollView::setContentSize(const TNLSize& size) {
  contentSize_ = size;
  tellPeer([&](TNLViewPeer& peer) { peer.contentSizeChanged(size); });
}

void TNLScrollView::setScrollEnabled(bool enabled) {
  scrollEnabled_ = enabled;
  tellPeer([&](TNLViewPeer& peer) { peer.scrollEnabledChanged(enabled); });
}

void TNLScrollView::setBounces(bool bounces) {
  bounces_ = bounces;
  tellPeer([&](TNLViewPeer& peer) { peer.bouncesChanged(bounces); });
}

std::shared_ptr<TNLViewPeer> TNLScrollView::makePeer(TNLToolkitBackend& backend) {
  return backend.createScrollViewPeer(std::static_pointer_cast<TNLScrollView>(shared_from_this()));
}

void TNLScrollView::replayState(TNLViewPeer& peer) {
  TNLView::replayState(peer);
  peer.contentOffsetChanged(contentOffset());
  peer.contentSizeChanged(contentSize_);
  peer.scrollEnabledChanged(scrollEnabled_);
  peer.bouncesChanged(bounces_);
}

void TNLScrollView::boundsDidChange() {
  TNLView::boundsDidChange();
  // A resize changes the bounds too; only a new offset is a scroll.
  if (contentOffset() == reportedOffset_) {
    return;
  }
  reportedOffset_ = contentOffset();
  const auto self = std::static_pointer_cast<TNLScrollView>(weak_from_this().lock());
  if (const auto listener = delegate(); listener && self) {
    listener->scrollViewDidScroll(self);
  }
}
