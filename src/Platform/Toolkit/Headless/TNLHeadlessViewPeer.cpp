#include "Platform/Toolkit/Headless/TNLHeadlessViewPeer.h"

#include "TarnelAd/Toolkit/TNLView.h"

namespace {

// Characters, not bytes: UTF-8 continuation bytes are not counted.
double characterCount(const std::optional<std::string>& text) {
  if (!text) {
    return 0.0;
  }
  size_t count = 0;
  for (const unsigned char byte : *text) {
    count += (byte & 0xC0) != 0x80 ? 1 : 0;
  }
  return static_cast<double>(count);
}

}  // namespace

std::shared_ptr<TNLHeadlessViewPeer> TNLHeadlessViewPeer::of(const std::shared_ptr<TNLView>& view) {
  return view ? std::dynamic_pointer_cast<TNLHeadlessViewPeer>(view->peer()) : nullptr;
}

std::vector<std::shared_ptr<TNLViewPeer>> TNLHeadlessViewPeer::subviews() const {
  std::vector<std::shared_ptr<TNLViewPeer>> live;
  for (const auto& subview : subviews_) {
    if (auto strong = subview.lock()) {
      live.push_back(std::move(strong));
    }
  }
  return live;
}

void TNLHeadlessViewPeer::subviewsChanged(
    const std::vector<std::shared_ptr<TNLViewPeer>>& subviews) {
  subviews_.assign(subviews.begin(), subviews.end());
}

std::optional<TNLSize> TNLHeadlessViewPeer::intrinsicContentSize() const {
  switch (kind_) {
    case Kind::label:
      // An empty label takes no room.
      return text_ && !text_->empty()
                 ? TNLSize{characterCount(text_) * kCharacterWidth, kLabelLineHeight}
                 : TNLSize{0.0, 0.0};
    case Kind::button:
      return TNLSize{characterCount(title_) * kCharacterWidth, kButtonHeight};
    default:
      return std::nullopt;
  }
}
