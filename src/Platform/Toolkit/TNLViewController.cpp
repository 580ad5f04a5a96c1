#include "TarnelAd/Toolkit/TNLViewController.h"

#include <cstdio>
#include <string>
#include <vector>

#include "Platform/Foundation/TNLPlatformLog.h"
#include "Platform/Toolkit/TNLToolkitBackend.h"
#include "Platform/Toolkit/TNLTransitionQueue.h"
#include "TarnelAd/Toolkit/TNLScreen.h"
#include "TarnelAd/Toolkit/TNLView.h"
#include "TarnelAd/Toolkit/TNLWindow.h"

namespace {

std::string describe(const TNLViewController* controller) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "<TNLViewController %p>",
                static_cast<const void*>(controller));
  return buffer;
}

}  // namespace

TNLViewController::TNLViewController() = default;

TNLViewController::~TNLViewController() = default;

std::shared_ptr<TNLView> TNLViewController::view() {
  if (!view_) {
    loadView();
    if (!view_) {
      TNLViewController::loadView();
    }
    viewDidLoad();
  }
  return view_;
}

void TNLViewController::setView(const std::shared_ptr<TNLView>& view) {
  if (view_) {
    view_->viewController_.reset();
  }
  view_ = view;
  if (view_) {
    view_->viewController_ = weak_from_this();
  }
}

void TNLViewController::loadView() {
  setView(TNLView::create(TNLScreen::mainScreen()->bounds()));
}

void TNLViewController::setAdditionalSafeAreaInsets(const TNLEdgeInsets& insets) {
  additionalSafeAreaInsets_ = insets;
  if (view_) {
    view_->setNeedsLayout();
  }
}

void TNLViewController::present(const std::shared_ptr<TNLViewController>& controller, bool animated,
                                std::function<void()> completion) {
  const std::shared_ptr<TNLViewController> self = weak_from_this().lock();
  if (!self) {
    TNLPlatformLog("Attempt to present " + describe(controller.get()) + " from " + describe(this) +
                   ", which is not owned by a std::shared_ptr");
    return;
  }
  TNLTransitionQueue::shared().enqueue(
      [self, controller, animated,
       completion = std::move(completion)](std::function<void()> done) mutable {
        self->startPresentation(controller, animated, std::move(completion), std::move(done));
      });
}

void TNLViewController::startPresentation(const std::shared_ptr<TNLViewController>& controller,
                                          bool animated, std::function<void()> completion,
                                          std::function<void()> done) {
  const auto refuse = [&](const std::string& reason) {
    TNLPlatformLog("Attempt to present " + describe(controller.get()) + " on " + describe(this) +
                   reason);
    done();
  };
  if (!controller || controller.get() == this) {
    refuse(", which cannot be presented");
    return;
  }
  if (presented_) {
    refuse(" which is already presenting " + describe(presented_.get()));
    return;
  }
  if (controller->presenting_.lock() || controller->presented_) {
    refuse(", which is already presented");
    return;
  }
  const std::shared_ptr<TNLWindow> window = view_ ? view_->window() : nullptr;
  if (!window) {
    refuse(" whose view is not in the window hierarchy!");
    return;
  }
  const std::shared_ptr<TNLViewController> self = shared_from_this();
  presented_ = controller;
  controller->presenting_ = self;
  const std::shared_ptr<TNLView> cover = controller->view();

  viewWillDisappear(animated);
  controller->viewWillAppear(animated);
  cover->setFrame(window->bounds());
  window->addSubview(cover);
  cover->layoutIfNeeded();

  TNLToolkitBackend::current()->presentViewController(
      self, controller, animated,
      [self, controller, animated, completion = std::move(completion), done = std::move(done)] {
        controller->viewDidAppear(animated);
        self->viewDidDisappear(animated);
        if (completion) {
          completion();
        }
        done();
      });
}

void TNLViewController::dismiss(bool animated, std::function<void()> completion) {
  const std::shared_ptr<TNLViewController> self = weak_from_this().lock();
  if (!self) {
    return;
  }
  TNLTransitionQueue::shared().enqueue(
      [self, animated, completion = std::move(completion)](std::function<void()> done) mutable {
        self->startDismissal(animated, std::move(completion), std::move(done));
      });
}

void TNLViewController::startDismissal(bool animated, std::function<void()> completion,
                                       std::function<void()> done) {
  // A presenting controller dismisses what it presents; a presented one dismisses itself.
  std::shared_ptr<TNLViewController> base;
  if (presented_) {
    base = shared_from_this();
  } else {
    base = presenting_.lock();
  }
  if (!base) {
    done();
    return;
  }
  std::vector<std::shared_ptr<TNLViewController>> dismissed;
  for (auto controller = base->presented_; controller; controller = controller->presented_) {
    dismissed.push_back(controller);
  }
  const std::shared_ptr<TNLViewController> top = dismissed.back();

  top->viewWillDisappear(animated);
  base->viewWillAppear(animated);

  TNLToolkitBackend::current()->dismissViewController(
      base, top, animated,
      [base, dismissed, animated, completion = std::move(completion), done = std::move(done)] {
        for (auto it = dismissed.rbegin(); it != dismissed.rend(); ++it) {
          if ((*it)->view_) {
            (*it)->view_->removeFromSuperview();
          }
        }
        base->viewDidAppear(animated);
        dismissed.back()->viewDidDisappear(animated);
        base->presented_.reset();
        for (const auto& controller : dismissed) {
          controller->presenting_.reset();
          controller->presented_.reset();
        }
        if (completion) {
          completion();
        }
        done();
      });
}
