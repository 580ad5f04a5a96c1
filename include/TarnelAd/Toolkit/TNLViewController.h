#pragma once

/// @file
/// @brief TNLViewController: a screen's controller, which presents and dismisses others.

#include <functional>
#include <memory>

#include "TarnelAd/TNLExport.h"
#include "TarnelAd/Toolkit/TNLEdgeInsets.h"
#include "TarnelAd/Toolkit/TNLSize.h"

class TNLView;
class TNLWindow;

/// A screen's controller: it owns a view made on first access and is told when that view
/// appears, disappears or changes size. Hosts subclass it; make it with std::make_shared (the
/// controller hands itself out when presenting). Main thread only.
///
/// Presentation covers the presenting controller's window with the presented controller's view
/// (full screen, on top; the covered views stay in the tree). The calls come in the platform's
/// order:
/// @code
/// present:  presenting.viewWillDisappear, presented.viewWillAppear, (transition),
///           presented.viewDidAppear, presenting.viewDidDisappear, completion
/// dismiss:  presented.viewWillDisappear, presenting.viewWillAppear, (transition),
///           presenting.viewDidAppear, presented.viewDidDisappear, completion
/// @endcode
/// The transition is the backend's and always ends on a later main-loop iteration, so the
/// completion never runs inside present or dismiss. Presentations and dismissals run one at a
/// time in the order asked; one asked during another starts when that one has finished.
class TNL_EXPORT TNLViewController : public std::enable_shared_from_this<TNLViewController> {
 public:
  /// A controller without a view yet; own it with std::make_shared.
  TNLViewController();
  virtual ~TNLViewController();
  TNLViewController(const TNLViewController&) = delete;
  TNLViewController& operator=(const TNLViewController&) = delete;

  /// The view, owned by the controller, made by loadView on first access and followed by
  /// viewDidLoad.
  std::shared_ptr<TNLView> view();
  /// Whether the view was made.
  bool isViewLoaded() const { return view_ != nullptr; }
  /// Replaces the view without loadView or viewDidLoad.
  void setView(const std::shared_ptr<TNLView>& view);

  /// Makes the view; the default is a plain view the size of the main screen.
  virtual void loadView();
  /// The view was made.
  virtual void viewDidLoad() {}
  /// The view is about to appear and has appeared; it is about to disappear and has disappeared
  /// (order: see the class).
  ///@{
  virtual void viewWillAppear(bool /*animated*/) {}
  virtual void viewDidAppear(bool /*animated*/) {}
  virtual void viewWillDisappear(bool /*animated*/) {}
  virtual void viewDidDisappear(bool /*animated*/) {}
  ///@}
  /// Called before the view takes the new size (rotation, window resize).
  virtual void viewWillTransitionToSize(const TNLSize& /*size*/) {}

  /// Presents `controller` over this one. Refused, with a line in the platform log and without
  /// the completion, when this controller's view is not in a window, when it already presents
  /// one, or when `controller` is already presented. This controller keeps the presented one
  /// until it is dismissed; the completion runs on the main thread, later.
  void present(const std::shared_ptr<TNLViewController>& controller, bool animated,
               std::function<void()> completion = {});
  /// On a presenting controller: dismisses the controller it presents and any above that. On a
  /// presented one: dismisses itself. Otherwise nothing happens and the completion is not run.
  /// The completion runs on the main thread, later.
  void dismiss(bool animated, std::function<void()> completion = {});

  /// The controller this one is presented over (held weakly), and the one it presents (held
  /// strongly); null when there is none.
  ///@{
  std::shared_ptr<TNLViewController> presentingViewController() const { return presenting_.lock(); }
  std::shared_ptr<TNLViewController> presentedViewController() const { return presented_; }
  ///@}

  /// Insets added to the safe area of this controller's view (and of the views inside it).
  ///@{
  TNLEdgeInsets additionalSafeAreaInsets() const { return additionalSafeAreaInsets_; }
  void setAdditionalSafeAreaInsets(const TNLEdgeInsets& insets);
  ///@}

 private:
  friend class TNLWindow;
  friend class TNLView;

  void startPresentation(const std::shared_ptr<TNLViewController>& controller, bool animated,
                         std::function<void()> completion, std::function<void()> done);
  void startDismissal(bool animated, std::function<void()> completion, std::function<void()> done);

  std::shared_ptr<TNLView> view_;
  std::weak_ptr<TNLViewController> presenting_;
  std::shared_ptr<TNLViewController> presented_;
  TNLEdgeInsets additionalSafeAreaInsets_;
};
