#pragma once

#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Foundation/TNLMainQueue.h"
#include "Platform/Gtk/TNLGtkBoxed.h"
#include "Platform/Gtk/TNLGtkViewBox.h"
#include "TarnelAd/Gtk/TNLGtkToolkit.h"
#include "TarnelAd/Toolkit/TNLNavigationDelegate.h"
#include "TarnelAd/Toolkit/TNLView.h"
#include "TarnelAd/Toolkit/TNLWebView.h"

// Helpers of the GTK e2e tests: the backend under Xvfb, waiting on the main loop, real pointer
// input through the X server, and a navigation delegate that records what it decided.
namespace tnl_e2e {

using namespace std::chrono_literals;

// Every test process chooses the GTK backend once, before any view.
class GtkTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(TNLGtkToolkit::useGtkBackend()) << "the e2e tests need a display (Xvfb)";
  }
};

inline bool waitFor(const std::function<bool()>& condition,
                    std::chrono::milliseconds timeout = 10s) {
  return TNLMainQueue::runUntil(condition, timeout);
}

// Lets pending main-loop work (layout, idle passes, X round trips) run.
inline void settle(std::chrono::milliseconds duration = 100ms) {
  TNLMainQueue::runFor(duration);
}

inline GtkWidget* widgetOf(const std::shared_ptr<TNLView>& view) {
  TNLGtkViewBox* box = view ? TNLGtkBoxed::boxOf(view->existingPeer()) : nullptr;
  return box ? box->widget() : nullptr;
}

// The widget's point (x, y) on the screen.
inline std::pair<int, int> screenPoint(GtkWidget* widget, int x, int y) {
  GtkWidget* toplevel = gtk_widget_get_toplevel(widget);
  int inToplevelX = 0;
  int inToplevelY = 0;
  gtk_widget_translate_coordinates(widget, toplevel, x, y, &inToplevelX, &inToplevelY);
  int originX = 0;
  int originY = 0;
  gdk_window_get_origin(gtk_widget_get_window(toplevel), &originX, &originY);
  return {originX + inToplevelX, originY + inToplevelY};
}

// Real pointer input through the X server at the widget's point (x, y), once layout and input
// routing have caught up with the model, so GDK picks the window under the pointer as for a
// user: a click of the first button, or `notches` turns of the wheel down (negative: up).
void click(GtkWidget* widget, int x, int y);
void scroll(GtkWidget* widget, int x, int y, int notches);
// Moves the pointer to the screen's far corner, away from the tests' windows (without a window
// manager the window under the pointer gets the keyboard focus).
void movePointerAway();

// Makes the display's only monitor the right half of its screen, through RandR, while it lives
// (made before GTK opens the display, which reads the monitors then).
class RightHalfMonitor {
 public:
  RightHalfMonitor();
  ~RightHalfMonitor();
  RightHalfMonitor(const RightHalfMonitor&) = delete;
  RightHalfMonitor& operator=(const RightHalfMonitor&) = delete;
  bool isSet() const { return set_; }

 private:
  void* display_ = nullptr;  // the X connection (the monitor goes with it), of a type the X
                             // headers' macros keep out of here
  bool set_ = false;
};

// Waits until the GtkWindow is on screen: mapped by GTK and, as the X server's map
// notification tells, no longer withdrawn.
inline bool waitUntilMapped(GtkWidget* window) {
  return waitFor([&] {
    GdkWindow* gdkWindow = gtk_widget_get_window(window);
    return gtk_widget_get_mapped(window) && gdkWindow && gdk_window_is_viewable(gdkWindow) &&
           (gdk_window_get_state(gdkWindow) & GDK_WINDOW_STATE_WITHDRAWN) == 0;
  });
}

// Records every navigation put to it ("<url> main|iframe|none") and decides with `policy`
// (allow everything unless told otherwise), or holds the decision.
class RecordingDelegate : public TNLNavigationDelegate {
 public:
  using Policy = std::function<TNLNavigationActionPolicy(const TNLNavigationAction&)>;

  void webViewDecidePolicyForNavigationActionDecisionHandler(
      const std::shared_ptr<TNLWebView>& /*webView*/, const TNLNavigationAction& action,
      DecisionHandler decisionHandler) override {
    seen.push_back(describe(action));
    if (hold) {
      held = std::move(decisionHandler);  // to be answered later
      return;
    }
    decisionHandler(policy ? policy(action) : TNLNavigationActionPolicy::allow);
  }

  void webViewDidFinishNavigation(const std::shared_ptr<TNLWebView>& /*webView*/) override {
    ++finished;
  }

  static std::string describe(const TNLNavigationAction& action) {
    const auto& frame = action.targetFrame();
    return action.requestURL() + " " + (!frame ? "none" : frame->isMainFrame() ? "main" : "iframe");
  }

  bool saw(const std::string& entry) const {
    return std::find(seen.begin(), seen.end(), entry) != seen.end();
  }

  std::vector<std::string> seen;
  int finished = 0;
  Policy policy;
  bool hold = false;
  DecisionHandler held;
};

}  // namespace tnl_e2e
