// One walk of the measured view tree: what the main thread spends on each 0.2-second tick while a
// session is active. Trees of 100, 1,000 and 10,000 views in one window, built breadth-first with
// eight children per view, plus one ad view. Where the ad is drawn decides how much is described:
// drawn last, only the path to it; in the middle, also everything drawn after it (a possible
// cover); drawn first, the whole tree.
//
//   build/default/bench/tarnel_bench --benchmark_filter=TreeWalk
//
// "described" counts the views a walk put into the hierarchy; "tick_share_%" is the wall time of
// one walk as a share of the 0.2-second tick.

#include <benchmark/benchmark.h>

#include <chrono>
#include <deque>
#include <memory>
#include <vector>

#include "AppVerificationLibrary/OMIDAdSession.h"
#include "AppVerificationLibrary/OMIDAdSessionConfiguration.h"
#include "AppVerificationLibrary/OMIDAdSessionContext.h"
#include "AppVerificationLibrary/OMIDAdSessionRegistry.h"
#include "AppVerificationLibrary/OMIDPartner.h"
#include "AppVerificationLibrary/OMIDSDK.h"
#include "AppVerificationLibrary/OMIDTreeWalker.h"
#include "AppVerificationLibrary/OMIDTreeWalkerTimeLogger.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "TarnelAd/Toolkit/TNLWebView.h"
#include "TarnelAd/Toolkit/TNLWindow.h"

using namespace std::chrono_literals;

namespace {

constexpr int kChildrenPerView = 8;

class ObjectCounter : public OMIDTarnelTreeWalkerTimeLogger {
 public:
  void didProcessObjectsCount(size_t count, double) override { last = count; }
  size_t last = 0;
};

enum class Placement { first = 0, middle = 1, last = 2 };

struct Tree {
  std::shared_ptr<TNLWindow> window;
  std::shared_ptr<TNLWebView> adView;
};

void collectInDrawingOrder(const std::shared_ptr<TNLView>& view,
                           std::vector<std::shared_ptr<TNLView>>& order) {
  order.push_back(view);
  for (const auto& subview : view->subviews()) {
    collectInDrawingOrder(subview, order);
  }
}

// `views` views under a full-screen window, breadth-first, and the ad view placed as asked.
Tree buildTree(int views, Placement placement) {
  Tree tree;
  tree.window = TNLWindow::create({0, 0, 375, 667});
  tree.window->makeKeyAndVisible();
  std::deque<std::shared_ptr<TNLView>> parents{tree.window};
  int made = 0;
  while (made < views) {
    const auto parent = parents.front();
    parents.pop_front();
    const TNLRect bounds = parent->bounds();
    for (int i = 0; i < kChildrenPerView && made < views; ++i, ++made) {
      const auto view =
          TNLView::create({(i % 4) * bounds.width() / 4, (i / 4) * bounds.height() / 2,
                           bounds.width() / 4, bounds.height() / 2});
      parent->addSubview(view);
      parents.push_back(view);
    }
  }
  tree.adView = TNLWebView::create({0, 0, 10, 10}, TNLWebViewConfiguration());
  if (placement == Placement::first) {
    tree.window->insertSubview(tree.adView, 0);
  } else {
    std::vector<std::shared_ptr<TNLView>> order;
    collectInDrawingOrder(tree.window, order);
    const size_t host = placement == Placement::last ? order.size() - 1 : order.size() / 2;
    order[host]->addSubview(tree.adView);
  }
  return tree;
}

void BM_TreeWalk(benchmark::State& state) {
  const int views = static_cast<int>(state.range(0));
  const auto placement = static_cast<Placement>(state.range(1));
  OMIDTarnelSDK::sharedInstance()->activateWithOMIDAPIVersion(R"({"v":"1.2.4","a":"1"})", nullptr);
  Tree tree = buildTree(views, placement);

  const auto session = OMIDTarnelAdSession::create(
      OMIDTarnelAdSessionConfiguration::create(1, 3, false, nullptr),
      OMIDTarnelAdSessionContext::create(OMIDTarnelPartner::create("Tarnel", "1.0.0.001"),
                                         tree.adView, "", nullptr),
      nullptr);
  session->setMainAdView(tree.adView);
  session->start();
  const auto registry = OMIDTarnelAdSessionRegistry::getInstance();
  TNLMainQueue::runUntil([&] { return registry->isActive(); });
  // The ticks are driven here, one walk per iteration.
  const auto walker = OMIDTarnelTreeWalker::getInstance();
  walker->pause();
  const auto counter = std::make_shared<ObjectCounter>();
  walker->setTimeLogger(counter);

  const auto began = std::chrono::steady_clock::now();
  for (auto _ : state) {
    walker->onTick();
  }
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - began;
  state.counters["described"] = static_cast<double>(counter->last);
  state.counters["tick_share_%"] =
      elapsed.count() / static_cast<double>(state.iterations()) / 0.2 * 100.0;

  session->finish();
  TNLMainQueue::runUntil([&] { return !registry->isActive(); });
  TNLMainQueue::runFor(50ms);
}

BENCHMARK(BM_TreeWalk)
    ->ArgNames({"views", "adDrawn"})
    ->ArgsProduct({{100, 1000, 10000}, {2, 1, 0}})
    ->Unit(benchmark::kMicrosecond);

}  // namespace
