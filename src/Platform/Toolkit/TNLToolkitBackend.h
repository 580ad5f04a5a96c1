#pragma once

#include <functional>
#include <memory>
#include <string>

#include "TarnelAd/TNLExport.h"
#include "TarnelAd/Toolkit/TNLRect.h"

class TNLButton;
class TNLLabel;
class TNLScrollView;
class TNLView;
class TNLViewController;
class TNLViewPeer;
class TNLWebEnginePeer;
class TNLWebView;
class TNLWindow;

// What a backend gives the view model: a peer for each object, the transitions of presentation
// and dismissal, and the screen. All calls come on the main thread.
//
// The model stays the single source of truth: frames, hierarchy, z order, presentation and
// layout are decided in the model and mirrored by peers, so the same library code runs on every
// backend. A backend reports events back through the model's own calls:
//   TNLWindow::transitionToSize           the window was resized (or rotated)
//   TNLApplication::setApplicationState   focus lost or gained, minimised, restored
//   TNLApplication::setStatusBarOrientation / setDeviceOrientation
//   TNLScreen::setBounds / setScale       the display changed
//   TNLButton::sendTap                    a click on a button
//   TNLScrollView::peerDidScroll          the user scrolled
//   TNLWebView::engineDecidePolicyForNavigationAction / engineDidFinishNavigation
//   TNLView::invalidateIntrinsicContentSize  text metrics changed
//
// Exported from the core library for the GTK backend, its own shared library; the header is not
// installed.
class TNL_EXPORT TNLToolkitBackend {
 public:
  virtual ~TNLToolkitBackend() = default;

  virtual std::string name() const = 0;

  // The main screen when the backend is installed.
  virtual TNLRect mainScreenBounds() const = 0;
  virtual double mainScreenScale() const = 0;

  // Peers. The model object is passed so that the peer can keep a weak reference to report
  // back; the model replays its state into the peer right after.
  virtual std::shared_ptr<TNLViewPeer> createViewPeer(const std::shared_ptr<TNLView>& view) = 0;
  virtual std::shared_ptr<TNLViewPeer> createScrollViewPeer(
      const std::shared_ptr<TNLScrollView>& scrollView) = 0;
  virtual std::shared_ptr<TNLViewPeer> createLabelPeer(const std::shared_ptr<TNLLabel>& label) = 0;
  virtual std::shared_ptr<TNLViewPeer> createButtonPeer(
      const std::shared_ptr<TNLButton>& button) = 0;
  virtual std::shared_ptr<TNLViewPeer> createWindowPeer(
      const std::shared_ptr<TNLWindow>& window) = 0;
  // The engine reads the configuration from the web view.
  virtual std::shared_ptr<TNLWebEnginePeer> createWebEngine(
      const std::shared_ptr<TNLWebView>& webView) = 0;

  // Transitions. When presentViewController is called the model has already put the presented
  // controller's view over the presenting one (full window, laid out, on top); when
  // dismissViewController is called the dismissed view is still in place and the model removes
  // it once the transition has finished. The backend animates if it wants to and then calls
  // `finished` exactly once, on the main queue and never from inside the call itself.
  virtual void presentViewController(const std::shared_ptr<TNLViewController>& presenting,
                                     const std::shared_ptr<TNLViewController>& presented,
                                     bool animated, std::function<void()> finished) = 0;
  virtual void dismissViewController(const std::shared_ptr<TNLViewController>& presenting,
                                     const std::shared_ptr<TNLViewController>& presented,
                                     bool animated, std::function<void()> finished) = 0;

  // The installed backend; the headless one is installed on first use when none was chosen.
  static std::shared_ptr<TNLToolkitBackend> current();
  // Installs a backend for the objects made from now on and takes its screen.
  static void install(std::shared_ptr<TNLToolkitBackend> backend);
};
