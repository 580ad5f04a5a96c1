// Presentation on GTK: a presented controller covers its window with a window of its own, in
// the model's order of appearance calls, and dismissal takes the cover away.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TarnelAd/Toolkit/TNLButton.h"
#include "TarnelAd/Toolkit/TNLViewController.h"
#include "TarnelAd/Toolkit/TNLWebView.h"
#include "TarnelAd/Toolkit/TNLWindow.h"
#include "e2e/TNLGtkTestSupport.h"
#include "support/TNLTestServer.h"

namespace {

using namespace tnl_e2e;

class Controller : public TNLViewController {
 public:
  Controller(std::string name, std::vector<std::string>& log) : name_(std::move(name)), log_(log) {}
  void viewWillAppear(bool) override { log_.push_back(name_ + ".willAppear"); }
  void viewDidAppear(bool) override { log_.push_back(name_ + ".didAppear"); }
  void viewWillDisappear(bool) override { log_.push_back(name_ + ".willDisappear"); }
  void viewDidDisappear(bool) override { log_.push_back(name_ + ".didDisappear"); }
  void viewWillTransitionToSize(const TNLSize& size) override { sizes.push_back(size); }
  std::vector<TNLSize> sizes;

 private:
  std::string name_;
  std::vector<std::string>& log_;
};

// The GtkWindow that shows a controller's view.
GtkWindow* windowShowing(const std::shared_ptr<TNLViewController>& controller) {
  GtkWidget* widget = widgetOf(controller->view());
  GtkWidget* toplevel = widget ? gtk_widget_get_toplevel(widget) : nullptr;
  return toplevel && GTK_IS_WINDOW(toplevel) ? GTK_WINDOW(toplevel) : nullptr;
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

class PresentationTest : public GtkTest {
 protected:
  void SetUp() override {
    GtkTest::SetUp();
    root = std::make_shared<Controller>("root", log);
    window = TNLWindow::create({30.0, 20.0, 360.0, 480.0});
    window->setRootViewController(root);
    window->makeKeyAndVisible();
    main = windowShowing(root);
    ASSERT_NE(main, nullptr);
    ASSERT_TRUE(waitUntilMapped(GTK_WIDGET(main)));
    log.clear();
  }

  void present(const std::shared_ptr<TNLViewController>& from,
               const std::shared_ptr<TNLViewController>& controller) {
    bool done = false;
    from->present(controller, true, [&] { done = true; });
    ASSERT_TRUE(waitFor([&] { return done; })) << "the presentation did not end";
  }

  void dismiss(const std::shared_ptr<TNLViewController>& controller) {
    bool done = false;
    controller->dismiss(true, [&] { done = true; });
    ASSERT_TRUE(waitFor([&] { return done; })) << "the dismissal did not end";
  }

  std::vector<std::string> log;
  std::shared_ptr<Controller> root;
  std::shared_ptr<TNLWindow> window;
  GtkWindow* main = nullptr;
};

TEST_F(PresentationTest, PresentingMapsACoveringWindowAndDismissingUnmapsIt) {
  const auto ad = std::make_shared<Controller>("ad", log);
  present(root, ad);
  GtkWindow* cover = windowShowing(ad);
  ASSERT_NE(cover, nullptr);
  EXPECT_NE(cover, main);
  EXPECT_TRUE(gtk_widget_get_mapped(GTK_WIDGET(cover)));
  EXPECT_EQ(gtk_window_get_transient_for(cover), main);
  EXPECT_TRUE(waitFor([&] { return geometryOf(cover) == geometryOf(main); }));
  // The model keeps the cover in the window's tree, over the presenting view.
  EXPECT_EQ(ad->view()->window(), window);
  EXPECT_EQ(window->subviews().back(), ad->view());

  // A click on the cover goes to the presented view.
  int taps = 0;
  const auto done = TNLButton::create();
  done->setFrame({10.0, 10.0, 100.0, 40.0});
  done->setTitle("Done", TNLControlState::normal);
  done->addTapAction([&](TNLButton&) { ++taps; });
  ad->view()->addSubview(done);
  click(widgetOf(done), 50, 20);
  EXPECT_TRUE(waitFor([&] { return taps == 1; }));

  GtkWidget* coverWidget = GTK_WIDGET(cover);
  g_object_ref(coverWidget);
  dismiss(ad);
  EXPECT_FALSE(gtk_widget_get_mapped(coverWidget));
  EXPECT_EQ(windowShowing(ad), nullptr);
  EXPECT_EQ(ad->view()->superview(), nullptr);
  g_object_unref(coverWidget);
  EXPECT_TRUE(gtk_widget_get_mapped(GTK_WIDGET(main)));
}

TEST_F(PresentationTest, AWebPageKeepsItsStateWhenItsViewMovesIntoTheCover) {
  TNLTestServer server;
  server.on("GET", "/report", TNLTestServer::Response(204));
  const auto ad = std::make_shared<Controller>("ad", log);
  const auto page = TNLWebView::create({0.0, 0.0, 360.0, 480.0}, {});
  ad->setView(page);
  const auto delegate = std::make_shared<RecordingDelegate>();
  page->setNavigationDelegate(delegate);
  page->loadHTMLString("<script>window.state = 'loaded before showing'</script>",
                       server.url("/creative.html"));
  ASSERT_TRUE(waitFor([&] { return delegate->finished == 1; }));

  present(root, ad);
  page->evaluateJavaScript("fetch('/report?state=' + encodeURIComponent(window.state))");
  ASSERT_TRUE(waitFor([&] { return !server.requestsTo("/report").empty(); }));
  EXPECT_EQ(server.requestsTo("/report").front().query, "state=loaded%20before%20showing");
  EXPECT_EQ(delegate->finished, 1);
}

TEST_F(PresentationTest, ControllersPresentedOverEachOtherStackTheirCoversAndGoTogether) {
  const auto ad = std::make_shared<Controller>("ad", log);
  const auto browser = std::make_shared<Controller>("browser", log);
  present(root, ad);
  present(ad, browser);

  GtkWindow* adCover = windowShowing(ad);
  GtkWindow* browserCover = windowShowing(browser);
  ASSERT_NE(browserCover, nullptr);
  EXPECT_NE(browserCover, adCover);
  EXPECT_EQ(gtk_window_get_transient_for(browserCover), adCover);
  EXPECT_TRUE(gtk_widget_get_mapped(GTK_WIDGET(browserCover)));

  // The browser's "Done": the ad is shown again.
  dismiss(browser);
  EXPECT_EQ(windowShowing(browser), nullptr);
  EXPECT_EQ(windowShowing(ad), adCover);

  // Dismissing from the root takes everything above it.
  present(ad, browser);
  dismiss(root);
  EXPECT_EQ(windowShowing(ad), nullptr);
  EXPECT_EQ(windowShowing(browser), nullptr);
  EXPECT_EQ(window->subviews().size(), 1u);
}

TEST_F(PresentationTest, ACoverFollowsItsWindowsSizeAndTheControllersAreTold) {
  const auto ad = std::make_shared<Controller>("ad", log);
  present(root, ad);
  GtkWindow* cover = windowShowing(ad);
  ASSERT_NE(cover, nullptr);

  gtk_window_resize(main, 480, 360);
  ASSERT_TRUE(waitFor([&] { return window->frame().size == TNLSize{480.0, 360.0}; }));
  EXPECT_TRUE(waitFor([&] {
    int width = 0;
    int height = 0;
    gtk_window_get_size(cover, &width, &height);
    return width == 480 && height == 360;
  }));
  ASSERT_FALSE(ad->sizes.empty());
  EXPECT_EQ(ad->sizes.back(), (TNLSize{480.0, 360.0}));
  EXPECT_EQ(root->sizes.back(), (TNLSize{480.0, 360.0}));
  EXPECT_EQ(ad->view()->frame().size, (TNLSize{480.0, 360.0}));
}

}  // namespace
