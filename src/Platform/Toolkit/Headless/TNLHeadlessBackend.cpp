#include "Platform/Toolkit/Headless/TNLHeadlessBackend.h"

#include "Platform/Foundation/TNLMainQueue.h"
#include "Platform/Toolkit/Headless/TNLHeadlessViewPeer.h"
#include "Platform/Toolkit/Headless/TNLHeadlessWebEngine.h"

std::shared_ptr<TNLViewPeer> TNLHeadlessBackend::createViewPeer(
    const std::shared_ptr<TNLView>& /*view*/) {
  return std::make_shared<TNLHeadlessViewPeer>(TNLHeadlessViewPeer::Kind::view);
}

std::shared_ptr<TNLViewPeer> TNLHeadlessBackend::createScrollViewPeer(
    const std::shared_ptr<TNLScrollView>& /*scrollView*/) {
  return std::make_shared<TNLHeadlessViewPeer>(TNLHeadlessViewPeer::Kind::scrollView);
}

std::shared_ptr<TNLViewPeer> TNLHeadlessBackend::createLabelPeer(
    const std::shared_ptr<TNLLabel>& /*label*/) {
  return std::make_shared<TNLHeadlessViewPeer>(TNLHeadlessViewPeer::Kind::label);
}

std::shared_ptr<TNLViewPeer> TNLHeadlessBackend::createButtonPeer(
    const std::shared_ptr<TNLButton>& /*button*/) {
  return std::make_shared<TNLHeadlessViewPeer>(TNLHeadlessViewPeer::Kind::button);
}

std::shared_ptr<TNLViewPeer> TNLHeadlessBackend::createWindowPeer(
    const std::shared_ptr<TNLWindow>& /*window*/) {
  return std::make_shared<TNLHeadlessViewPeer>(TNLHeadlessViewPeer::Kind::window);
}

std::shared_ptr<TNLWebEnginePeer> TNLHeadlessBackend::createWebEngine(
    const std::shared_ptr<TNLWebView>& webView) {
  return std::make_shared<TNLHeadlessWebEngine>(webView);
}

void TNLHeadlessBackend::presentViewController(
    const std::shared_ptr<TNLViewController>& /*presenting*/,
    const std::shared_ptr<TNLViewController>& /*presented*/, bool /*animated*/,
    std::function<void()> finished) {
  // No animation, but never inside the call: completions run on a later loop iteration.
  TNLMainQueue::async(std::move(finished));
}

void TNLHeadlessBackend::dismissViewController(
    const std::shared_ptr<TNLViewController>& /*presenting*/,
    const std::shared_ptr<TNLViewController>& /*presented*/, bool /*animated*/,
    std::function<void()> finished) {
  TNLMainQueue::async(std::move(finished));
}
