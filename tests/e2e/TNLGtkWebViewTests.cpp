// The web view on WebKitGTK: real pages from a loopback server, their scripts, the navigation
// policy with its frames (and that no frame acts for a creative), the scroll view and
// transparency.

#include <gtest/gtest.h>
#include <webkit2/webkit2.h>

#include <algorithm>
#include <array>

#include "Ads/TNLAd.h"
#include "Ads/TNLAdWebView.h"
#include "Platform/Gtk/TNLGtkWebEngine.h"
#include "TarnelAd/TNLSetup.h"
#include "TarnelAd/Toolkit/TNLScrollView.h"
#include "TarnelAd/Toolkit/TNLWindow.h"
#include "e2e/TNLGtkTestSupport.h"
#include "support/TNLTestBridgeJournal.h"
#include "support/TNLTestDeviceFacts.h"
#include "support/TNLTestServer.h"

namespace {

using namespace tnl_e2e;
using Policy = TNLNavigationActionPolicy;
using Response = TNLTestServer::Response;

Response html(const std::string& body) {
  return Response(200, body, "text/html");
}

TNLWebViewConfiguration creativeConfiguration() {
  TNLWebViewConfiguration configuration;
  configuration.mediaTypesRequiringUserActionForPlayback = TNLAudiovisualMediaTypes::none;
  configuration.allowsInlineMediaPlayback = true;
  return configuration;
}

// Runs a script in the page of `webView` and returns its result as a string.
std::string evaluateIn(const std::shared_ptr<TNLWebView>& webView, const std::string& script) {
  struct Result {
    bool done = false;
    std::string value;
  } result;
  webkit_web_view_evaluate_javascript(
      TNLGtkWebEngine::of(webView)->webKitView(), script.c_str(), -1, nullptr, nullptr, nullptr,
      [](GObject* view, GAsyncResult* async, gpointer data) {
        auto* out = static_cast<Result*>(data);
        JSCValue* value =
            webkit_web_view_evaluate_javascript_finish(WEBKIT_WEB_VIEW(view), async, nullptr);
        if (value) {
          char* text = jsc_value_to_string(value);
          out->value = text;
          g_free(text);
          g_object_unref(value);
        }
        out->done = true;
      },
      &result);
  waitFor([&] { return result.done; });
  return result.value;
}

class WebViewTest : public GtkTest {
 protected:
  void SetUp() override {
    GtkTest::SetUp();
    window = TNLWindow::create({0.0, 0.0, 400.0, 400.0});
    window->makeKeyAndVisible();
    webView = TNLWebView::create({0.0, 0.0, 400.0, 400.0}, creativeConfiguration());
    window->addSubview(webView);
    delegate = std::make_shared<RecordingDelegate>();
    webView->setNavigationDelegate(delegate);
  }

  // As a creative's view decides: its own page and everything outside the main frame are
  // allowed, other main-frame navigations cancelled.
  void allowOnly(const std::string& ownPage) {
    delegate->policy = [ownPage](const TNLNavigationAction& action) {
      const auto& frame = action.targetFrame();
      return action.requestURL() == ownPage || !frame || !frame->isMainFrame() ? Policy::allow
                                                                               : Policy::cancel;
    };
  }

  // Loads `body` as the creative at `base` and waits until it has finished.
  void loadCreative(const std::string& body, const std::string& base) {
    webView->loadHTMLString(body, base);
    ASSERT_TRUE(waitFor([&] { return delegate->finished >= 1; })) << "the page did not finish";
  }

  bool waitForRequest(const std::string& path) {
    return waitFor([&] { return !server.requestsTo(path).empty(); });
  }

  std::string evaluate(const std::string& script) { return evaluateIn(webView, script); }

  TNLTestServer server;
  std::shared_ptr<TNLWindow> window;
  std::shared_ptr<TNLWebView> webView;
  std::shared_ptr<RecordingDelegate> delegate;
};

TEST_F(WebViewTest, HTMLWithABaseURLRunsItsScriptAndFinishesAsTheMainFrame) {
  server.on("GET", "/ran", Response(204));
  // Relative URLs resolve against the base; the delegate sees the base as it was given.
  loadCreative("<script>fetch('/ran')</script>", server.baseURL());

  EXPECT_TRUE(waitForRequest("/ran"));
  ASSERT_FALSE(delegate->seen.empty());
  EXPECT_EQ(delegate->seen.front(), server.baseURL() + " main");
  settle(200ms);
  EXPECT_EQ(delegate->finished, 1);

  // Without a base URL the page has no origin.
  webView->loadHTMLString("<p>blank</p>", std::nullopt);
  ASSERT_TRUE(waitFor([&] { return delegate->finished == 2; }));
  EXPECT_EQ(delegate->seen.back(), "about:blank main");
}

TEST_F(WebViewTest, APageLoadsAndRunsBeforeItsViewIsOnScreen) {
  // Full-screen ads load before they are presented.
  server.on("POST", "/report", Response(204));
  const auto offscreen = TNLWebView::create({0.0, 0.0, 320.0, 480.0}, creativeConfiguration());
  const auto offscreenDelegate = std::make_shared<RecordingDelegate>();
  offscreen->setNavigationDelegate(offscreenDelegate);
  offscreen->loadHTMLString(
      "<script>setTimeout(() => fetch('/report', {method: 'POST', body: 'timer'}), 10)</script>",
      server.url("/creative.html"));
  ASSERT_TRUE(waitFor([&] { return offscreenDelegate->finished == 1; }));
  ASSERT_TRUE(waitForRequest("/report"));
  EXPECT_EQ(server.requestsTo("/report").front().body, "timer");
  EXPECT_EQ(gtk_widget_get_toplevel(widgetOf(offscreen)), widgetOf(offscreen));
}

TEST_F(WebViewTest, RequestsAreMainFrameNavigationsAndACancelledOneLoadsNothing) {
  server.on("GET", "/page", html("<script>fetch('/page-ran')</script>"));
  server.on("GET", "/page-ran", Response(204));
  server.on("GET", "/refused", html("<script>fetch('/refused-ran')</script>"));
  delegate->policy = [&](const TNLNavigationAction& action) {
    return action.requestURL().ends_with("/refused") ? Policy::cancel : Policy::allow;
  };

  webView->loadRequest(server.url("/page"));
  ASSERT_TRUE(waitFor([&] { return delegate->finished == 1; }));
  EXPECT_TRUE(waitForRequest("/page-ran"));
  EXPECT_EQ(delegate->seen.front(), server.url("/page") + " main");

  webView->loadRequest(server.url("/refused"));
  ASSERT_TRUE(waitFor([&] { return delegate->saw(server.url("/refused") + " main"); }));
  settle(300ms);
  EXPECT_TRUE(server.requestsTo("/refused").empty());
  EXPECT_EQ(delegate->finished, 1);
}

TEST_F(WebViewTest, MainFrameBridgeNavigationIsCancelledAndThePageCarriesOn) {
  server.on("GET", "/slow", Response(200, "done").after(700ms));
  server.on("GET", "/report", Response(204));
  const std::string page = server.url("/creative.html");
  allowOnly(page);
  // The page is loading something when it calls the bridge; the call must not stop it.
  loadCreative(R"(<script>
      window.marker = 'original';
      fetch('/slow').then((r) => r.text()).then(
          (text) => fetch('/report?fetch=' + text + '&page=' + window.marker),
          () => fetch('/report?fetch=aborted'));
      setTimeout(() => { location.href = 'bridge://close'; }, 50);
    </script>)",
               page);

  ASSERT_TRUE(waitForRequest("/report"));
  EXPECT_EQ(server.requestsTo("/report").front().query, "fetch=done&page=original");
  EXPECT_TRUE(delegate->saw("bridge://close main"));
  settle(200ms);
  EXPECT_EQ(delegate->finished, 1);
}

TEST_F(WebViewTest, ADecisionTakenLaterHoldsTheNavigationUntilThen) {
  server.on("GET", "/landing", html("landing"));
  // A delegate that keeps the landing page's handler to answer later.
  class Holding : public RecordingDelegate {
   public:
    void webViewDecidePolicyForNavigationActionDecisionHandler(
        const std::shared_ptr<TNLWebView>& webView, const TNLNavigationAction& action,
        DecisionHandler handler) override {
      if (action.requestURL().ends_with("/landing")) {
        held = std::move(handler);
        return;
      }
      RecordingDelegate::webViewDecidePolicyForNavigationActionDecisionHandler(webView, action,
                                                                               std::move(handler));
    }
    DecisionHandler held;
  };
  auto holding = std::make_shared<Holding>();
  webView->setNavigationDelegate(holding);
  webView->loadRequest(server.url("/landing"));

  ASSERT_TRUE(waitFor([&] { return static_cast<bool>(holding->held); }));
  settle(300ms);
  EXPECT_TRUE(server.requestsTo("/landing").empty());
  holding->held(Policy::allow);
  EXPECT_TRUE(waitForRequest("/landing"));
  EXPECT_TRUE(waitFor([&] { return holding->finished == 1; }));
}

TEST_F(WebViewTest, NewWindowActionsHaveNoTargetFrameAndOpenNothing) {
  server.on("GET", "/popup", html("popup"));
  server.on("GET", "/opened", html("opened"));
  // The top half is a link to a new window, the bottom half opens one from script; both need
  // a user's click to get past the pop-up blocker.
  loadCreative(R"HTML(<body style="margin:0">
      <a href="/popup" target="_blank" style="display:block;height:200px;background:#0f0">link</a>
      <div onclick="window.open('/opened')" style="height:200px;background:#00f">open</div>
    </body>)HTML",
               server.url("/creative.html"));
  GtkWidget* widget = widgetOf(webView);
  ASSERT_NE(widget, nullptr);
  // Top-level windows, not counting pop-ups (the link's tooltip).
  const auto windows = [] {
    GList* toplevels = gtk_window_list_toplevels();
    size_t count = 0;
    for (GList* item = toplevels; item; item = item->next) {
      count += gtk_window_get_window_type(GTK_WINDOW(item->data)) == GTK_WINDOW_TOPLEVEL ? 1 : 0;
    }
    g_list_free(toplevels);
    return count;
  };
  const size_t windowsBefore = windows();

  click(widget, 100, 100);
  EXPECT_TRUE(waitFor([&] { return delegate->saw(server.url("/popup") + " none"); }));
  click(widget, 100, 300);
  EXPECT_TRUE(waitFor([&] { return delegate->saw(server.url("/opened") + " none"); }));

  settle(300ms);
  EXPECT_EQ(windows(), windowsBefore);
  EXPECT_EQ(delegate->finished, 1);
  // Each new-window action is put to the delegate once.
  EXPECT_EQ(
      std::count(delegate->seen.begin(), delegate->seen.end(), server.url("/popup") + " none"), 1);
}

TEST_F(WebViewTest, TheScrollViewActsOnThePageAndThePageReportsItsScrolling) {
  loadCreative("<div style='height:3000px;width:10px'></div>", server.url("/creative.html"));
  const auto scrollView = webView->scrollView();

  scrollView->setContentOffset({0.0, 500.0});
  EXPECT_TRUE(waitFor([&] { return evaluate("window.scrollY") == "500"; }));

  scrollView->setScrollEnabled(false);
  EXPECT_TRUE(waitFor([&] {
    return evaluate("getComputedStyle(document.documentElement).overflowY") == "hidden";
  }));
  scrollView->setBounces(false);
  EXPECT_TRUE(waitFor([&] {
    return evaluate("getComputedStyle(document.documentElement).overscrollBehaviorY") == "none";
  }));
  scrollView->setScrollEnabled(true);
  scrollView->setBounces(true);
  EXPECT_TRUE(waitFor([&] {
    return evaluate("getComputedStyle(document.documentElement).overflowY") != "hidden";
  }));

  // The page scrolls by itself: the model follows.
  evaluate("window.scrollTo(0, 800)");
  EXPECT_TRUE(waitFor([&] { return scrollView->contentOffset().y == 800.0; }));
}

TEST_F(WebViewTest, AViewThatIsNotOpaqueShowsWhatLiesBehindIt) {
  window->setBackgroundColor(TNLColor{1.0, 0.0, 0.0, 1.0});
  loadCreative("<body style='margin:0'></body>", server.url("/creative.html"));
  GtkWidget* toplevel = gtk_widget_get_toplevel(widgetOf(webView));
  ASSERT_TRUE(waitUntilMapped(toplevel));

  const auto pixel = [&](int x, int y) { return pixelAt(toplevel, x, y, 300ms); };
  // Opaque (the default): the page's white.
  EXPECT_TRUE(waitFor([&] { return pixel(200, 200) == std::array<int, 3>{255, 255, 255}; }, 5s));
  webView->setOpaque(false);
  EXPECT_TRUE(waitFor([&] { return pixel(200, 200) == std::array<int, 3>{255, 0, 0}; }, 5s));
}

TEST_F(WebViewTest, WithoutJavaScriptThePageLoadsButItsScriptDoesNotRun) {
  TNLWebViewConfiguration plain;
  plain.javaScriptEnabled = false;
  const auto quiet = TNLWebView::create({0.0, 0.0, 100.0, 100.0}, plain);
  window->addSubview(quiet);
  const auto quietDelegate = std::make_shared<RecordingDelegate>();
  quiet->setNavigationDelegate(quietDelegate);
  server.on("GET", "/ran", Response(204));
  quiet->loadHTMLString("<script>fetch('/ran')</script>", server.baseURL());
  ASSERT_TRUE(waitFor([&] { return quietDelegate->finished == 1; }));
  settle(300ms);
  EXPECT_TRUE(server.requestsTo("/ran").empty());
}

// A creative in the ad web view, with a journal of what its bridge dispatches; frames come from
// the creative's own server and from a second one, of another origin.
class CreativeFramesTest : public GtkTest {
 protected:
  void SetUp() override {
    GtkTest::SetUp();
    TNLSetup::setDeviceFacts(std::make_shared<TNLTestDeviceFacts>());
    const std::string beacon = "<script>navigator.sendBeacon('" + server.url("/tried") + "');";
    for (TNLTestServer* site : {&server, &other}) {
      // Navigates its own frame to the bridge action in its fragment.
      site->on("GET", "/act.html",
               html(beacon + "location.href = 'bridge://' + location.hash.slice(1);</script>"));
      // Submits a form of its own to the bridge action in its fragment.
      site->on("GET", "/form.html",
               html("<form></form>" + beacon +
                    "document.forms[0].action = 'bridge://' + location.hash.slice(1);"
                    "document.forms[0].submit();</script>"));
      site->on("GET", "/plain.html", html("<p>frame</p>"));
      // Holds a frame of its own origin that navigates itself.
      site->on("GET", "/outer.html", html("<iframe src='/act.html#close'></iframe>"));
    }
    server.on("POST", "/tried", Response(204));
    window = TNLWindow::create({0.0, 0.0, 400.0, 400.0});
    window->makeKeyAndVisible();
  }

  // Shows `body` as the creative ({SAME} and {OTHER} stand for the two origins) and waits until
  // its page has loaded and its bridge opened.
  std::shared_ptr<TNLAdWebView> show(std::string body) {
    for (const auto& [token, site] : {std::pair{"{SAME}", &server}, std::pair{"{OTHER}", &other}}) {
      for (size_t at = body.find(token); at != std::string::npos; at = body.find(token)) {
        body.replace(at, std::string_view(token).size(), site->baseURL());
      }
    }
    auto ad = std::make_shared<TNLAd>("html", server.url("/creative.html"), TNLJson::object(),
                                      TNLJson::object(), TNLJson::object(), TNLJson::object(),
                                      TNLJson::object(), TNLJson::object());
    // As creatives are written: the frame policy goes after the doctype, in standards mode.
    ad->setHtml("<!DOCTYPE html>\n<!-- creative -->\n<html><body>" + body + "</body></html>");
    journal->calls.clear();
    auto adView = TNLAdWebView::create();
    adView->bridge()->setDelegate(journal);
    adView->setFrame(window->bounds());
    window->addSubview(adView);
    adView->loadAd(ad);
    EXPECT_TRUE(waitFor([&] { return !dispatched("opened").empty(); })) << body;
    return adView;
  }

  // The bridge's dispatches, without "opened" (or only those equal to `only`).
  std::vector<std::string> dispatched(const std::string& only = {}) const {
    std::vector<std::string> calls;
    for (const auto& call : journal->calls) {
      if (only.empty() ? call != "opened" : call == only) {
        calls.push_back(call);
      }
    }
    return calls;
  }

  TNLTestServer server;
  TNLTestServer other;
  std::shared_ptr<TNLWindow> window;
  std::shared_ptr<TNLTestBridgeJournal> journal = std::make_shared<TNLTestBridgeJournal>();
};

TEST_F(CreativeFramesTest, NoFrameActsForTheCreativeWhileTheCreativeItselfIsHeard) {
  // The page's own script acts on a frame once the frame has loaded (then reports it).
  const auto onFrameLoad = [](const std::string& act) {
    return "onload=\"if (!this.acted) { this.acted = true; " + act +
           " navigator.sendBeacon('/tried'); }\"";
  };
  const std::string link =
      R"(<a id="go" target="named" href="bridge://open?url=https%3A%2F%2Fthird.test%2F">go</a>)";
  const std::string form = R"(<form id="go" target="named" action="bridge://close"></form>)";
  struct Case {
    std::string what;
    std::string body;
    std::vector<std::string> dispatched = {};  // before the creative's own reward
  };
  const std::vector<Case> cases = {
      {"a same-origin frame's script navigates its frame",
       R"(<iframe src="{SAME}/act.html#reward"></iframe>)"},
      {"a srcdoc frame's script navigates its frame",
       R"(<iframe srcdoc="<script>navigator.sendBeacon('/tried');
           location.href = 'bridge://reward';</script>"></iframe>)"},
      {"a cross-origin frame's script navigates its frame",
       R"(<iframe src="{OTHER}/act.html#close"></iframe>)"},
      {"the page sets a same-origin frame's location",
       R"(<iframe src="{SAME}/plain.html" )" +
           onFrameLoad("this.contentWindow.location = 'bridge://close';") + "></iframe>"},
      {"the page sets a cross-origin frame's location",
       R"(<iframe src="{OTHER}/plain.html" )" +
           onFrameLoad("this.contentWindow.location = 'bridge://reward';") + "></iframe>"},
      {"a link aimed at a named frame", link + R"(<iframe name="named" src="{OTHER}/plain.html" )" +
                                            onFrameLoad("document.getElementById('go').click();") +
                                            "></iframe>"},
      {"a form aimed at a named frame", form + R"(<iframe name="named" src="{SAME}/plain.html" )" +
                                            onFrameLoad("document.getElementById('go').submit();") +
                                            "></iframe>"},
      {"a form submitted inside a same-origin frame",
       R"(<iframe src="{SAME}/form.html#close"></iframe>)"},
      {"a form submitted inside a cross-origin frame",
       R"(<iframe src="{OTHER}/form.html#reward"></iframe>)"},
      {"a frame inside a cross-origin frame navigates itself",
       R"(<iframe src="{OTHER}/outer.html"></iframe>)"},
      // The frame asks first for what the page asks for right after: the page's call alone counts.
      {"a frame with the address the page navigates to next",
       R"(<script>
           const frame = document.createElement('iframe');
           frame.src = 'bridge://close';
           document.body.appendChild(frame);
           location.href = 'bridge://close';
           navigator.sendBeacon('/tried');
         </script>)",
       {"close"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const size_t tries = server.requestsTo("/tried").size();
    const auto adView = show(c.body);
    ASSERT_EQ(evaluateIn(adView, "document.compatMode"), "CSS1Compat");
    ASSERT_TRUE(waitFor([&] { return server.requestsTo("/tried").size() > tries; }));
    settle(300ms);
    adView->evaluateJavaScript("location.href = 'bridge://reward'");
    ASSERT_TRUE(waitFor([&] { return !dispatched("reward").empty(); }));
    settle(200ms);
    std::vector<std::string> expected = c.dispatched;
    expected.push_back("reward");
    EXPECT_EQ(dispatched(), expected);
    adView->removeFromSuperview();
  }
}

TEST_F(CreativeFramesTest, AMainFrameNavigationInAPageWithFramesSendsNoRequest) {
  server.on("GET", "/landing", html("landing"));
  const auto adView = show(R"(<iframe src="{OTHER}/plain.html"></iframe>
      <iframe src="{SAME}/plain.html"></iframe>)");
  ASSERT_TRUE(waitFor([&] { return !other.requestsTo("/plain.html").empty(); }));
  adView->enableRedirect(true);  // the hosting controller's answer to "enableRedirect"
  adView->evaluateJavaScript("location.href = '/landing'");
  ASSERT_TRUE(waitFor([&] { return !dispatched("open " + server.url("/landing")).empty(); }));
  settle(300ms);
  EXPECT_TRUE(server.requestsTo("/landing").empty());
  EXPECT_EQ(dispatched(), std::vector<std::string>{"open " + server.url("/landing")});
}

}  // namespace
