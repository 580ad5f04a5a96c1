// The web view on WebKitGTK: real pages from a loopback server, their scripts, the navigation
// policy with its frames (and that no frame acts for a creative), the scroll view and
// transparency.

#include <gtest/gtest.h>

#include <algorithm>

#include "Ads/TNLAd.h"
#include "Ads/TNLAdWebView.h"
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

// The value of a script's expression in the page of `webView`, as the page posts it to `server`.
std::string valueIn(const std::shared_ptr<TNLWebView>& webView, TNLTestServer& server,
                    const std::string& expression) {
  server.on("POST", "/value", Response(204));
  const size_t before = server.requestsTo("/value").size();
  webView->evaluateJavaScript("fetch('/value', {method: 'POST', body: String(" + expression +
                              ")})");
  waitFor([&] { return server.requestsTo("/value").size() > before; });
  const auto posted = server.requestsTo("/value");
  return posted.size() > before ? posted.back().body : "";
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

  // Loads `body` as the creative at `base` and waits until it has finished.
  void loadCreative(const std::string& body, const std::string& base) {
    webView->loadHTMLString(body, base);
    ASSERT_TRUE(waitFor([&] { return delegate->finished >= 1; })) << "the page did not finish";
  }

  bool waitForRequest(const std::string& path) {
    return waitFor([&] { return !server.requestsTo(path).empty(); });
  }

  std::string evaluate(const std::string& expression) {
    return valueIn(webView, server, expression);
  }

  TNLTestServer server;
  std::shared_ptr<TNLWindow> window;
  std::shared_ptr<TNLWebView> webView;
  std::shared_ptr<RecordingDelegate> delegate;
};

TEST_F(WebViewTest, LoadsAreMainFrameNavigationsThatTheDelegateMayCancelOrDecideLater) {
  server.on("GET", "/ran", Response(204));
  server.on("GET", "/page", html("<script>fetch('/page-ran')</script>"));
  server.on("GET", "/page-ran", Response(204));
  server.on("GET", "/refused", html("refused"));
  server.on("GET", "/later", html("later"));
  delegate->policy = [&](const TNLNavigationAction& action) {
    return action.requestURL().ends_with("/refused") ? Policy::cancel : Policy::allow;
  };
  // Relative URLs resolve against the base; the delegate sees the base as it was given.
  loadCreative("<script>fetch('/ran')</script>", server.baseURL());
  EXPECT_TRUE(waitForRequest("/ran"));
  webView->loadHTMLString("<p>blank</p>", std::nullopt);
  ASSERT_TRUE(waitFor([&] { return delegate->finished == 2; }));
  webView->loadRequest(server.url("/page"));
  ASSERT_TRUE(waitFor([&] { return delegate->finished == 3; }));
  EXPECT_TRUE(waitForRequest("/page-ran"));
  webView->loadRequest(server.url("/refused"));
  ASSERT_TRUE(waitFor([&] { return delegate->saw(server.url("/refused") + " main"); }));
  // A decision taken later holds its navigation until then.
  delegate->hold = true;
  webView->loadRequest(server.url("/later"));
  ASSERT_TRUE(waitFor([&] { return static_cast<bool>(delegate->held); }));
  settle(300ms);
  EXPECT_TRUE(server.requestsTo("/later").empty());
  delegate->held(Policy::allow);
  EXPECT_TRUE(waitForRequest("/later"));
  ASSERT_TRUE(waitFor([&] { return delegate->finished == 4; }));

  // Without JavaScript a page loads but its script does not run.
  TNLWebViewConfiguration plain;
  plain.javaScriptEnabled = false;
  const auto quiet = TNLWebView::create({0.0, 0.0, 100.0, 100.0}, plain);
  window->addSubview(quiet);
  const auto quietDelegate = std::make_shared<RecordingDelegate>();
  quiet->setNavigationDelegate(quietDelegate);
  quiet->loadHTMLString("<script>fetch('/quiet')</script>", server.baseURL());
  ASSERT_TRUE(waitFor([&] { return quietDelegate->finished == 1; }));

  settle(300ms);
  EXPECT_EQ(delegate->seen,
            (std::vector<std::string>{
                server.baseURL() + " main", "about:blank main", server.url("/page") + " main",
                server.url("/refused") + " main", server.url("/later") + " main"}));
  EXPECT_EQ(delegate->finished, 4);
  EXPECT_TRUE(server.requestsTo("/refused").empty());
  EXPECT_TRUE(server.requestsTo("/quiet").empty());
}

TEST_F(WebViewTest, MainFrameBridgeNavigationIsCancelledAndThePageCarriesOn) {
  server.on("GET", "/slow", Response(200, "done").after(700ms));
  server.on("GET", "/report", Response(204));
  delegate->policy = [](const TNLNavigationAction& action) {
    return action.requestURL().starts_with("bridge:") ? Policy::cancel : Policy::allow;
  };
  // The page is loading something when it calls the bridge; the call must not stop it.
  loadCreative(R"(<script>
      window.marker = 'original';
      fetch('/slow').then((r) => r.text()).then(
          (text) => fetch('/report?fetch=' + text + '&page=' + window.marker),
          () => fetch('/report?fetch=aborted'));
      setTimeout(() => { location.href = 'bridge://close'; }, 50);
    </script>)",
               server.url("/creative.html"));

  ASSERT_TRUE(waitForRequest("/report"));
  EXPECT_EQ(server.requestsTo("/report").front().query, "fetch=done&page=original");
  EXPECT_TRUE(delegate->saw("bridge://close main"));
  settle(200ms);
  EXPECT_EQ(delegate->finished, 1);
}

TEST_F(WebViewTest, NewWindowActionsHaveNoTargetFrameAndOpenNothing) {
  // The top half links to a new window, the bottom half opens one from script; both need a
  // user's click to get past the pop-up blocker.
  loadCreative(R"HTML(<body style="margin:0">
      <a href="/popup" target="_blank" style="display:block;height:200px;background:#0f0">link</a>
      <div onclick="window.open('/opened')" style="height:200px;background:#00f">open</div>
    </body>)HTML",
               server.url("/creative.html"));
  click(widgetOf(webView), 100, 100);
  click(widgetOf(webView), 100, 300);
  EXPECT_TRUE(waitFor([&] { return delegate->saw(server.url("/opened") + " none"); }));
  settle(300ms);
  EXPECT_EQ(delegate->seen, (std::vector<std::string>{server.url("/creative.html") + " main",
                                                      server.url("/popup") + " none",
                                                      server.url("/opened") + " none"}));
  EXPECT_EQ(delegate->finished, 1);
}

TEST_F(WebViewTest, TheScrollViewActsOnThePageAndThePageReportsItsScrolling) {
  loadCreative("<div style='height:3000px;width:10px'></div>", server.url("/creative.html"));
  const auto scrollView = webView->scrollView();

  scrollView->setContentOffset({0.0, 500.0});
  EXPECT_TRUE(waitFor([&] { return evaluate("window.scrollY") == "500"; }));

  const auto style = [&](const std::string& property) {
    return evaluate("getComputedStyle(document.documentElement)." + property);
  };
  scrollView->setScrollEnabled(false);
  EXPECT_TRUE(waitFor([&] { return style("overflowY") == "hidden"; }));
  scrollView->setBounces(false);
  EXPECT_TRUE(waitFor([&] { return style("overscrollBehaviorY") == "none"; }));
  scrollView->setScrollEnabled(true);
  EXPECT_TRUE(waitFor([&] { return style("overflowY") != "hidden"; }));

  // The page scrolls by itself: the model follows.
  webView->evaluateJavaScript("window.scrollTo(0, 800)");
  EXPECT_TRUE(waitFor([&] { return scrollView->contentOffset().y == 800.0; }));
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
    EXPECT_TRUE(waitFor([&] { return heard("opened"); })) << body;
    return adView;
  }

  bool heard(const std::string& call) const {
    return std::find(journal->calls.begin(), journal->calls.end(), call) != journal->calls.end();
  }

  // The bridge's dispatches, without "opened".
  std::vector<std::string> dispatched() const {
    auto calls = journal->calls;
    std::erase(calls, "opened");
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
    ASSERT_EQ(valueIn(adView, server, "document.compatMode"), "CSS1Compat");
    ASSERT_TRUE(waitFor([&] { return server.requestsTo("/tried").size() > tries; }));
    settle(300ms);
    adView->evaluateJavaScript("location.href = 'bridge://reward'");
    ASSERT_TRUE(waitFor([&] { return heard("reward"); }));
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
  ASSERT_TRUE(waitFor([&] { return heard("open " + server.url("/landing")); }));
  settle(300ms);
  EXPECT_TRUE(server.requestsTo("/landing").empty());
  EXPECT_EQ(dispatched(), std::vector<std::string>{"open " + server.url("/landing")});
}

}  // namespace
