#pragma once

#include "Platform/Toolkit/TNLToolkitBackend.h"

// The backend without a display: peers keep in memory what the model tells them
// (TNLHeadlessViewPeer), web views get an engine that runs no page (TNLHeadlessWebEngine), and
// transitions finish on the next main-loop iteration without animation. The main screen is
// 375 x 667 points at scale 2.0, a common phone size. Deterministic; main thread only.
class TNLHeadlessBackend : public TNLToolkitBackend {
 public:
  static constexpr double kScreenWidth = 375.0;
  static constexpr double kScreenHeight = 667.0;
  static constexpr double kScreenScale = 2.0;

  std::string name() const override { return "headless"; }

  TNLRect mainScreenBounds() const override { return {0.0, 0.0, kScreenWidth, kScreenHeight}; }
  double mainScreenScale() const override { return kScreenScale; }

  std::shared_ptr<TNLViewPeer> createViewPeer(const std::shared_ptr<TNLView>& view) override;
  std::shared_ptr<TNLViewPeer> createScrollViewPeer(
      const std::shared_ptr<TNLScrollView>& scrollView) override;
  std::shared_ptr<TNLViewPeer> createLabelPeer(const std::shared_ptr<TNLLabel>& label) override;
  std::shared_ptr<TNLViewPeer> createButtonPeer(const std::shared_ptr<TNLButton>& button) override;
  std::shared_ptr<TNLViewPeer> createWindowPeer(const std::shared_ptr<TNLWindow>& window) override;
  std::shared_ptr<TNLWebEnginePeer> createWebEngine(
      const std::shared_ptr<TNLWebView>& webView) override;

  void presentViewController(const std::shared_ptr<TNLViewController>& presenting,
                             const std::shared_ptr<TNLViewController>& presented, bool animated,
                             std::function<void()> finished) override;
  void dismissViewController(const std::shared_ptr<TNLViewController>& presenting,
                             const std::shared_ptr<TNLViewController>& presented, bool animated,
                             std::function<void()> finished) override;
};
