// Presentation on GTK: a presented controller covers its window with a window of its own, which
// follows the presenting window's size; dismissal takes the cover away.

#include <gtest/gtest.h>

#include "TarnelAd/Toolkit/TNLButton.h"
#include "TarnelAd/Toolkit/TNLViewController.h"
#include "TarnelAd/Toolkit/TNLWindow.h"
#include "e2e/TNLGtkTestSupport.h"
#include "support/TNLTestServer.h"

namespace {

using namespace tnl_e2e;

class Controller : public TNLViewController {
 public:
  void viewWillTransitionToSize(const TNLSize& size) override { sizes.push_back(size); }
  void viewWillDisappear(bool) override { disappeared = true; }
  std::vector<TNLSize> sizes;
  bool disappeared = false;
};

// The GtkWindow that shows a controller's view.
GtkWindow* windowShowing(const std::shared_ptr<TNLViewController>& controller) {
  GtkWidget* widget = widgetOf(controller->view());
  GtkWidget* toplevel = widget ? gtk_widget_get_toplevel(widget) : nullptr;
  return toplevel && GTK_IS_WINDOW(toplevel) ? GTK_WINDOW(toplevel) : nullptr;
}

TNLSize allocationOf(GtkWidget* widget) {
  return {static_cast<double>(gtk_widget_get_allocated_width(widget)),
          static_cast<double>(gtk_widget_get_allocated_height(widget))};
}

TNLRect geometryOf(GtkWindow* window) {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  gdk_window_get_origin(gtk_widget_get_window(GTK_WIDGET(window)), &x, &y);
  gtk_window_get_size(window, &width, &height);
  return {static_cast<double>(x), static_cast<double>(y), static_cast<double>(width),
          static_cast<double>(height)};
}

using PresentationTest = GtkTest;

TEST_F(PresentationTest, CoversOverTheWindowTakeClicksFollowItsSizeAndGoWithTheirPresenter) {
  const auto root = std::make_shared<Controller>();
  const auto ad = std::make_shared<Controller>();
  const auto window = TNLWindow::create({30.0, 20.0, 360.0, 480.0});
  window->setRootViewController(root);
  window->makeKeyAndVisible();
  GtkWindow* main = windowShowing(root);
  ASSERT_NE(main, nullptr);
  ASSERT_TRUE(waitUntilMapped(GTK_WIDGET(main)));
  const auto present = [](const auto& from, const auto& controller) {
    bool done = false;
    from->present(controller, true, [&] { done = true; });
    return waitFor([&] { return done; });
  };

  // A page loaded before it is shown keeps its state when its view moves into the cover.
  TNLTestServer server;
  server.on("GET", "/report", TNLTestServer::Response(204));
  const auto page = TNLWebView::create({0.0, 0.0, 360.0, 480.0}, {});
  ad->setView(page);
  const auto delegate = std::make_shared<RecordingDelegate>();
  page->setNavigationDelegate(delegate);
  page->loadHTMLString("<script>window.state = 'loaded'</script>", server.url("/creative.html"));
  ASSERT_TRUE(waitFor([&] { return delegate->finished == 1; }));

  ASSERT_TRUE(present(root, ad));
  GtkWindow* cover = windowShowing(ad);
  ASSERT_NE(cover, nullptr);
  EXPECT_NE(cover, main);
  EXPECT_TRUE(gtk_widget_get_mapped(GTK_WIDGET(cover)));
  EXPECT_EQ(gtk_window_get_transient_for(cover), main);
  EXPECT_TRUE(waitFor([&] { return geometryOf(cover) == geometryOf(main); }));
  // The model keeps the cover in the window's tree, over the presenting view.
  EXPECT_EQ(window->subviews().back(), ad->view());
  page->evaluateJavaScript("fetch('/report?state=' + window.state)");
  ASSERT_TRUE(waitFor([&] { return !server.requestsTo("/report").empty(); }));
  EXPECT_EQ(server.requestsTo("/report").front().query, "state=loaded");
  EXPECT_EQ(delegate->finished, 1);

  int taps = 0;
  const auto done = TNLButton::create();
  done->setFrame({10.0, 10.0, 100.0, 40.0});
  done->setTitle("Done", TNLControlState::normal);
  done->addTapAction([&](TNLButton&) { ++taps; });
  ad->view()->addSubview(done);
  click(widgetOf(done), 50, 20);
  EXPECT_TRUE(waitFor([&] { return taps == 1; }));

  // A browser presented over the ad covers the ad's cover; the covers follow the window's size,
  // and dismissing from the root takes them all.
  const auto browser = std::make_shared<Controller>();
  ASSERT_TRUE(present(ad, browser));
  GtkWindow* browserCover = windowShowing(browser);
  ASSERT_NE(browserCover, nullptr);
  EXPECT_EQ(gtk_window_get_transient_for(browserCover), cover);
  EXPECT_TRUE(gtk_widget_get_mapped(GTK_WIDGET(browserCover)));
  gtk_window_resize(main, 480, 360);
  ASSERT_TRUE(waitFor([&] { return window->frame().size == TNLSize{480.0, 360.0}; }));
  EXPECT_TRUE(waitFor([&] {
    return geometryOf(cover).size == TNLSize{480.0, 360.0} &&
           geometryOf(browserCover).size == TNLSize{480.0, 360.0};
  }));
  for (const auto& controller : {root, ad}) {
    ASSERT_FALSE(controller->sizes.empty());
    EXPECT_EQ(controller->sizes.back(), (TNLSize{480.0, 360.0}));
  }
  EXPECT_EQ(ad->view()->frame().size, (TNLSize{480.0, 360.0}));
  EXPECT_TRUE(waitFor([&] { return allocationOf(widgetOf(ad->view())) == TNLSize{480.0, 360.0}; }));
  // The model resizes the window, and the covers with it.
  window->transitionToSize({320.0, 400.0});
  EXPECT_TRUE(waitFor([&] {
    return geometryOf(main).size == TNLSize{320.0, 400.0} &&
           geometryOf(browserCover).size == TNLSize{320.0, 400.0};
  }));

  GtkWidget* coverWidget = GTK_WIDGET(g_object_ref(cover));
  bool dismissed = false;
  root->dismiss(true, [&] { dismissed = true; });
  ASSERT_TRUE(waitFor([&] { return dismissed; }));
  EXPECT_FALSE(gtk_widget_get_mapped(coverWidget));
  g_object_unref(coverWidget);
  EXPECT_EQ(windowShowing(ad), nullptr);
  EXPECT_EQ(windowShowing(browser), nullptr);
  EXPECT_EQ(window->subviews().size(), 1u);
  EXPECT_TRUE(gtk_widget_get_mapped(GTK_WIDGET(main)));

  // Hidden by the user (closed): the model's window hides, and its root controller disappears.
  root->disappeared = false;
  gtk_widget_hide(GTK_WIDGET(main));
  EXPECT_TRUE(window->isHidden());
  EXPECT_TRUE(root->disappeared);
}

}  // namespace
