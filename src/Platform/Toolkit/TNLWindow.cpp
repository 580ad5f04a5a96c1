#include "TarnelAd/Toolkit/TNLWindow.h"

#include "Platform/Toolkit/TNLToolkitBackend.h"
#include "Platform/Toolkit/TNLViewPeer.h"
#include "TarnelAd/Toolkit/TNLApplication.h"
#include "TarnelAd/Toolkit/TNLScreen.h"
#include "TarnelAd/Toolkit/TNLViewController.h"

TNLWindow::TNLWindow(const TNLRect& frame) : TNLView(frame) {
  setHidden(true);
}

std::shared_ptr<TNLWindow> TNLWindow::create() {
  return create(TNLScreen::mainScreen()->bounds());
}

std::shared_ptr<TNLWindow> TNLWindow::create(const TNLRect& frame) {
  auto window = std::make_shared<TNLWindow>(frame);
  window->registerWithApplication();
  return window;
}

void TNLWindow::registerWithApplication() {
  if (auto self = std::static_pointer_cast<TNLWindow>(weak_from_this().lock())) {
    TNLApplication::sharedApplication()->registerWindow(self);
  }
}

void TNLWindow::setRootViewController(const std::shared_ptr<TNLViewController>& controller) {
  if (controller == rootViewController_) {
    return;
  }
  registerWithApplication();
  const std::shared_ptr<TNLViewController> former = rootViewController_;
  const bool visible = shown_;
  if (former && visible) {
    former->viewWillDisappear(false);
  }
  if (former && former->view_ && former->view_->superview().get() == this) {
    former->view_->removeFromSuperview();
  }
  rootViewController_ = controller;
  if (controller) {
    const auto view = controller->view();
    if (visible) {
      controller->viewWillAppear(false);
    }
    view->setFrame(bounds());
    insertSubview(view, 0);
    view->layoutIfNeeded();
  }
  if (former && visible) {
    former->viewDidDisappear(false);
  }
  if (controller && visible) {
    controller->viewDidAppear(false);
  }
}

void TNLWindow::makeKeyAndVisible() {
  makeKeyWindow();
  setHidden(false);
}

void TNLWindow::makeKeyWindow() {
  registerWithApplication();
  if (auto self = std::static_pointer_cast<TNLWindow>(weak_from_this().lock())) {
    TNLApplication::sharedApplication()->setKeyWindow(self);
  }
}

bool TNLWindow::isKeyWindow() const {
  return TNLApplication::sharedApplication()->keyWindow().get() == this;
}

void TNLWindow::keyWindowDidChange(bool isKey) {
  tellPeer([&](TNLViewPeer& peer) { peer.keyWindowChanged(isKey); });
}

void TNLWindow::setWindowSafeAreaInsets(const TNLEdgeInsets& insets) {
  windowSafeAreaInsets_ = insets;
  setNeedsLayout();
}

void TNLWindow::hiddenDidChange() {
  const bool showing = !isHidden();
  if (showing == shown_) {
    return;
  }
  shown_ = showing;
  const std::shared_ptr<TNLViewController> root = rootViewController_;
  if (showing) {
    registerWithApplication();
    // A window on screen needs its peer (and so the peers of its whole tree).
    peer();
    if (root) {
      root->viewWillAppear(false);
      root->viewDidAppear(false);
    }
  } else if (root) {
    root->viewWillDisappear(false);
    root->viewDidDisappear(false);
  }
}

void TNLWindow::transitionToSize(const TNLSize& size) {
  const std::shared_ptr<TNLView> keepAlive = weak_from_this().lock();
  std::vector<std::shared_ptr<TNLViewController>> controllers;
  for (auto controller = rootViewController_; controller;
       controller = controller->presentedViewController()) {
    controllers.push_back(controller);
  }
  for (const auto& controller : controllers) {
    controller->viewWillTransitionToSize(size);
  }
  setFrame({frame().origin, size});
  for (const auto& controller : controllers) {
    if (controller->view_ && controller->view_->superview().get() == this) {
      controller->view_->setFrame(bounds());
    }
  }
  layoutIfNeeded();
}

std::shared_ptr<TNLViewPeer> TNLWindow::makePeer(TNLToolkitBackend& backend) {
  return backend.createWindowPeer(std::static_pointer_cast<TNLWindow>(shared_from_this()));
}

void TNLWindow::replayState(TNLViewPeer& peer) {
  TNLView::replayState(peer);
  peer.keyWindowChanged(isKeyWindow());
}
