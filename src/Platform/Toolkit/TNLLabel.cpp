#include "TarnelAd/Toolkit/TNLLabel.h"

#include "Platform/Toolkit/TNLToolkitBackend.h"
#include "Platform/Toolkit/TNLViewPeer.h"

TNLLabel::TNLLabel(const TNLRect& frame) : TNLView(frame) {}

std::shared_ptr<TNLLabel> TNLLabel::create(const TNLRect& frame) {
  return std::make_shared<TNLLabel>(frame);
}

void TNLLabel::setText(const std::optional<std::string>& text) {
  text_ = text;
  tellPeer([&](TNLViewPeer& peer) { peer.textChanged(text_); });
  invalidateIntrinsicContentSize();
}

TNLSize TNLLabel::intrinsicContentSize() const {
  // Only the peer knows the font's metrics; making it on demand is a cache fill.
  const auto peer = const_cast<TNLLabel*>(this)->peer();
  const auto measured = peer ? peer->intrinsicContentSize() : std::nullopt;
  return measured ? *measured : TNLView::intrinsicContentSize();
}

std::shared_ptr<TNLViewPeer> TNLLabel::makePeer(TNLToolkitBackend& backend) {
  return backend.createLabelPeer(std::static_pointer_cast<TNLLabel>(shared_from_this()));
}

void TNLLabel::replayState(TNLViewPeer& peer) {
  TNLView::replayState(peer);
  peer.textChanged(text_);
}
