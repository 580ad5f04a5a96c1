#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "Platform/Foundation/TNLMainQueue.h"
#include "TarnelAd/Toolkit/TNLView.h"
#include "TarnelAd/Toolkit/TNLViewController.h"
#include "TarnelAd/Toolkit/TNLWindow.h"
#include "support/TNLLogCapture.h"

namespace {

// Writes every lifecycle call into a shared journal as "<name>.<call>".
class JournalController : public TNLViewController {
 public:
  JournalController(std::string name, std::shared_ptr<std::vector<std::string>> journal)
      : name_(std::move(name)), journal_(std::move(journal)) {}

  void viewDidLoad() override { note("viewDidLoad"); }
  void viewWillAppear(bool animated) override { note("viewWillAppear", animated); }
  void viewDidAppear(bool animated) override { note("viewDidAppear", animated); }
  void viewWillDisappear(bool animated) override { note("viewWillDisappear", animated); }
  void viewDidDisappear(bool animated) override { note("viewDidDisappear", animated); }
  void note(const std::string& call) { journal_->push_back(name_ + "." + call); }
  void note(const std::string& call, bool animated) { note(call + (animated ? "(animated)" : "")); }

 private:
  std::string name_;
  std::shared_ptr<std::vector<std::string>> journal_;
};

struct Stage {
  std::shared_ptr<std::vector<std::string>> journal = std::make_shared<std::vector<std::string>>();
  std::shared_ptr<TNLWindow> window = TNLWindow::create({0, 0, 320, 480});
  std::shared_ptr<JournalController> root = make("root");

  Stage() {
    window->setRootViewController(root);
    window->makeKeyAndVisible();
    journal->clear();
  }
  std::shared_ptr<JournalController> make(const std::string& name) {
    return std::make_shared<JournalController>(name, journal);
  }
  std::vector<std::string> take() {
    auto taken = *journal;
    journal->clear();
    return taken;
  }
};

TEST(TNLViewController, PresentAndDismissCallTheLifecycleInOrderAndCompleteLater) {
  Stage stage;
  auto ad = stage.make("ad");
  bool presented = false;
  stage.root->present(ad, true, [&] {
    presented = true;
    stage.journal->push_back("completion");
  });
  // Links are made at once; the completion waits for the transition.
  EXPECT_EQ(ad->presentingViewController(), stage.root);
  EXPECT_FALSE(presented);
  EXPECT_EQ(stage.take(),
            (std::vector<std::string>{"ad.viewDidLoad", "root.viewWillDisappear(animated)",
                                      "ad.viewWillAppear(animated)"}));
  // The cover goes on top of the covered view, which stays in place.
  EXPECT_EQ(stage.window->subviews().back(), ad->view());

  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return presented; }));
  EXPECT_EQ(stage.take(),
            (std::vector<std::string>{"ad.viewDidAppear(animated)",
                                      "root.viewDidDisappear(animated)", "completion"}));

  // The ad closes itself, not animated; the controller is released with its view.
  std::weak_ptr<TNLViewController> weakAd = ad;
  bool adClosed = false;
  ad->dismiss(false, [&] { adClosed = true; });
  ad.reset();
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return adClosed; }));
  EXPECT_EQ(stage.take(), (std::vector<std::string>{"ad.viewWillDisappear", "root.viewWillAppear",
                                                    "root.viewDidAppear", "ad.viewDidDisappear"}));
  EXPECT_TRUE(weakAd.expired());
  EXPECT_EQ(stage.window->subviews(), (std::vector<std::shared_ptr<TNLView>>{stage.root->view()}));
}

TEST(TNLViewController, APresentationOverAnotherIsRefusedLoggedAndNotCompleted) {
  TNLLogCapture log;
  Stage stage;
  auto first = stage.make("first");
  auto second = stage.make("second");
  int completions = 0;
  stage.root->present(first, true, [&] { ++completions; });
  stage.root->present(second, true, [&] { ++completions; });  // already presenting
  TNLMainQueue::runFor(std::chrono::milliseconds(50));

  EXPECT_EQ(completions, 1);
  EXPECT_EQ(second->presentingViewController(), nullptr);
  EXPECT_EQ(log.count("which is already presenting"), 1u);
}

}  // namespace
