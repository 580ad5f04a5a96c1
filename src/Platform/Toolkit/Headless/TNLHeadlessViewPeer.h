#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Toolkit/TNLViewPeer.h"

class TNLView;

// A headless peer: it keeps what the model told it, so that tests can check what a rendering
// backend would have been asked to show. Text is measured with fixed metrics so that layout is
// exact: 9 points per character, lines 21 points high for labels and 30 for buttons.
class TNLHeadlessViewPeer : public TNLViewPeer {
 public:
  enum class Kind { view, scrollView, label, button, window };

  static constexpr double kCharacterWidth = 9.0;
  static constexpr double kLabelLineHeight = 21.0;
  static constexpr double kButtonHeight = 30.0;

  explicit TNLHeadlessViewPeer(Kind kind) : kind_(kind) {}

  // The view's headless peer, made now if it has none; null under another backend.
  static std::shared_ptr<TNLHeadlessViewPeer> of(const std::shared_ptr<TNLView>& view);

  Kind kind() const { return kind_; }
  const TNLRect& frame() const { return frame_; }
  const TNLRect& bounds() const { return bounds_; }
  bool isHidden() const { return hidden_; }
  double alpha() const { return alpha_; }
  bool clipsToBounds() const { return clipsToBounds_; }
  double zPosition() const { return zPosition_; }
  const std::optional<TNLColor>& backgroundColor() const { return backgroundColor_; }
  bool isOpaque() const { return opaque_; }
  bool isUserInteractionEnabled() const { return userInteractionEnabled_; }
  // Back to front, as last reported.
  std::vector<std::shared_ptr<TNLViewPeer>> subviews() const;
  const std::optional<std::string>& text() const { return text_; }
  const std::optional<std::string>& title() const { return title_; }
  const TNLPoint& contentOffset() const { return contentOffset_; }
  const TNLSize& contentSize() const { return contentSize_; }
  bool isScrollEnabled() const { return scrollEnabled_; }
  bool bounces() const { return bounces_; }
  bool isKeyWindow() const { return keyWindow_; }

  void frameChanged(const TNLRect& frame) override { frame_ = frame; }
  void boundsChanged(const TNLRect& bounds) override { bounds_ = bounds; }
  void hiddenChanged(bool hidden) override { hidden_ = hidden; }
  void alphaChanged(double alpha) override { alpha_ = alpha; }
  void clipsToBoundsChanged(bool clips) override { clipsToBounds_ = clips; }
  void zPositionChanged(double zPosition) override { zPosition_ = zPosition; }
  void backgroundColorChanged(const std::optional<TNLColor>& color) override {
    backgroundColor_ = color;
  }
  void opaqueChanged(bool opaque) override { opaque_ = opaque; }
  void userInteractionEnabledChanged(bool enabled) override { userInteractionEnabled_ = enabled; }
  void subviewsChanged(const std::vector<std::shared_ptr<TNLViewPeer>>& subviews) override;
  std::optional<TNLSize> intrinsicContentSize() const override;
  void textChanged(const std::optional<std::string>& text) override { text_ = text; }
  void titleChanged(const std::optional<std::string>& title) override { title_ = title; }
  void contentOffsetChanged(const TNLPoint& offset) override { contentOffset_ = offset; }
  void contentSizeChanged(const TNLSize& size) override { contentSize_ = size; }
  void scrollEnabledChanged(bool enabled) override { scrollEnabled_ = enabled; }
  void bouncesChanged(bool bounces) override { bounces_ = bounces; }
  void keyWindowChanged(bool isKey) override { keyWindow_ = isKey; }

 private:
  Kind kind_;
  TNLRect frame_;
  TNLRect bounds_;
  bool hidden_ = false;
  double alpha_ = 1.0;
  bool clipsToBounds_ = false;
  double zPosition_ = 0.0;
  std::optional<TNLColor> backgroundColor_;
  bool opaque_ = true;
  bool userInteractionEnabled_ = true;
  // Weak: the subviews' peers belong to the subviews.
  std::vector<std::weak_ptr<TNLViewPeer>> subviews_;
  std::optional<std::string> text_;
  std::optional<std::string> title_;
  TNLPoint contentOffset_;
  TNLSize contentSize_;
  bool scrollEnabled_ = true;
  bool bounces_ = true;
  bool keyWindow_ = false;
};
