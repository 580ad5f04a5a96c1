#pragma once

/// @file
/// @brief TNLWindow: the root of a view tree, on the screen.

#include <memory>

#include "TarnelAd/TNLExport.h"
#include "TarnelAd/Toolkit/TNLView.h"

class TNLViewController;

/// A window: the root of a view tree, with its frame in screen coordinates. Windows start hidden;
/// makeKeyAndVisible shows one and makes it the application's key window. A window registers
/// itself with the application (TNLApplication::windows()) when made by create() or first shown.
class TNL_EXPORT TNLWindow : public TNLView {
 public:
  /// A hidden window at `frame`, in screen coordinates; own it with std::shared_ptr.
  explicit TNLWindow(const TNLRect& frame);
  /// A window over the whole main screen, or at `frame`, registered with the application.
  ///@{
  static std::shared_ptr<TNLWindow> create();
  static std::shared_ptr<TNLWindow> create(const TNLRect& frame);
  ///@}

  /// "TNLWindow".
  std::string className() const override { return "TNLWindow"; }
  /// Null: a window is not in a window.
  std::shared_ptr<TNLWindow> window() const override { return nullptr; }

  /// The root view controller's view fills the window; on a visible window the controller gets
  /// viewWillAppear and viewDidAppear (and the one it replaces the disappearing calls). The
  /// window holds it strongly.
  ///@{
  std::shared_ptr<TNLViewController> rootViewController() const { return rootViewController_; }
  void setRootViewController(const std::shared_ptr<TNLViewController>& controller);
  ///@}

  /// Shows the window and makes it the key window.
  void makeKeyAndVisible();
  /// Makes it the application's key window.
  void makeKeyWindow();
  /// Whether it is the key window.
  bool isKeyWindow() const;

  /// Windows are listed by ascending level (normal 0), then in registration order.
  ///@{
  double windowLevel() const { return windowLevel_; }
  void setWindowLevel(double level) { windowLevel_ = level; }
  ///@}

  /// The insets the window's surroundings impose (status bar, rounded corners); the backend
  /// sets them. Zero by default.
  ///@{
  TNLEdgeInsets windowSafeAreaInsets() const { return windowSafeAreaInsets_; }
  void setWindowSafeAreaInsets(const TNLEdgeInsets& insets);
  ///@}

  /// The window changes size, as on rotation or when the user resizes it: the root controller
  /// and every controller it presents get viewWillTransitionToSize first, then the window and
  /// their views take the size and are laid out. Called by backends and tests.
  void transitionToSize(const TNLSize& size);

 protected:
  /// The window's own kind of peer, and its state.
  ///@{
  std::shared_ptr<TNLViewPeer> makePeer(TNLToolkitBackend& backend) override;
  void replayState(TNLViewPeer& peer) override;
  ///@}
  /// Shown windows register with the application.
  void hiddenDidChange() override;

 private:
  friend class TNLApplication;

  void registerWithApplication();
  void keyWindowDidChange(bool isKey);

  std::shared_ptr<TNLViewController> rootViewController_;
  bool shown_ = false;
  double windowLevel_ = 0.0;
  TNLEdgeInsets windowSafeAreaInsets_;
};
