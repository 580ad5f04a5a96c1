#include "TarnelAd/Toolkit/TNLButton.h"

#include "Platform/Toolkit/TNLToolkitBackend.h"
#include "Platform/Toolkit/TNLViewPeer.h"

TNLButton::TNLButton(TNLButtonType type) : type_(type) {}

std::shared_ptr<TNLButton> TNLButton::create(TNLButtonType type) {
  return std::make_shared<TNLButton>(type);
}

void TNLButton::setTitle(const std::optional<std::string>& title, TNLControlState state) {
  if (title) {
    titles_[state] = *title;
  } else {
    titles_.erase(state);
  }
  if (state == TNLControlState::normal) {
    tellPeer([&](TNLViewPeer& peer) { peer.titleChanged(title); });
    invalidateIntrinsicContentSize();
  }
}

std::optional<std::string> TNLButton::titleForState(TNLControlState state) const {
  auto found = titles_.find(state);
  if (found == titles_.end()) {
    found = titles_.find(TNLControlState::normal);
  }
  return found == titles_.end() ? std::nullopt : std::optional<std::string>(found->second);
}

void TNLButton::addTapAction(TapAction action) {
  if (action) {
    actions_.push_back(std::move(action));
  }
}

void TNLButton::sendTap() {
  // An action may add actions or release the button.
  const auto keepAlive = weak_from_this().lock();
  const auto actions = actions_;
  for (const auto& action : actions) {
    action(*this);
  }
}

TNLSize TNLButton::intrinsicContentSize() const {
  // Only the peer knows the font's metrics; making it on demand is a cache fill.
  const auto peer = const_cast<TNLButton*>(this)->peer();
  const auto measured = peer ? peer->intrinsicContentSize() : std::nullopt;
  return measured ? *measured : TNLView::intrinsicContentSize();
}

std::shared_ptr<TNLViewPeer> TNLButton::makePeer(TNLToolkitBackend& backend) {
  return backend.createButtonPeer(std::static_pointer_cast<TNLButton>(shared_from_this()));
}

void TNLButton::replayState(TNLViewPeer& peer) {
  TNLView::replayState(peer);
  peer.titleChanged(titleForState(TNLControlState::normal));
}
