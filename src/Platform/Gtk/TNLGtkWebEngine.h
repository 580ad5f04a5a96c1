#pragma once

#include <webkit2/webkit2.h>

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Gtk/TNLGObjectRef.h"
#include "Platform/Gtk/TNLGtkPeer.h"
#include "Platform/Toolkit/TNLWebEnginePeer.h"
#include "TarnelAd/Toolkit/TNLNavigationDelegate.h"

class TNLGtkWebScrollPeer;
class TNLWebView;

// A web view's engine: a WebKitWebView in the view's box.
//
// Set-up: JavaScript as configured, media playback without a user gesture when no media type
// requires one, inline playback as configured, a transparent background while the view is not
// opaque. Statements run in the page's main world without waiting for a result.
//
// Navigation policy. Every navigation is put to the web view's navigation delegate
// (TNLWebView::engineDecidePolicyForNavigationAction) with its target frame, and only what the
// delegate allows is loaded. WebKitGTK does not say which frame a navigation action targets, so
// the engine works it out, in this order:
//   1. its own loads (loadHTMLString, loadRequest) are the main frame's; the delegate sees the
//      URL as it was given (the base URL for HTML, "about:blank" without one);
//   2. new-window actions (a link with a target of _blank, window.open) have no target frame;
//      no window is ever opened;
//   3. for any other navigation the decision waits for one round trip to the page, which tells
//      how many frames the page has and delivers the hints that a script in every frame (in an
//      isolated world, out of the page's reach) has sent: an iframe or frame element inserted or
//      given a new src is a child frame's navigation, a followed link targets its own frame, the
//      top one or the parent. A page without subframes can only navigate its main frame.
//   4. a "bridge:" URL without a hint is taken as the main frame's (the creative's own script
//      calls the bridge; an iframe's script navigating itself to "bridge:" is the case this gets
//      wrong). Bridge URLs are never loaded: the decision is the delegate's, the load a no-op.
//   5. anything else stays unknown: WebKit goes ahead until the response, whose policy decision
//      does say whether it is the main frame's main resource, and the delegate decides there.
//      Until then the request has been sent, and a main-frame navigation has already stopped
//      the page's own loads, as WebKit does when a navigation starts.
// The finished-navigation event is a main-frame load that committed and did not fail.
//
// The web view's scroll view acts on the page: scrolling off hides the page's overflow, bounces
// off stops overscroll, a content offset scrolls the page, and the page's scrolling is reported
// back with peerDidScroll.
class TNLGtkWebEngine : public TNLGtkPeer<TNLWebEnginePeer>,
                        public std::enable_shared_from_this<TNLGtkWebEngine> {
 public:
  // The isolated script world of the engine's own scripts.
  static constexpr char kScriptWorld[] = "tarnelad";

  TNLGtkWebEngine(const std::shared_ptr<TNLWebView>& webView, WebKitWebContext* context);
  ~TNLGtkWebEngine() override;

  // The engine of a web view under the GTK backend (made now if it has none); null otherwise.
  static std::shared_ptr<TNLGtkWebEngine> of(const std::shared_ptr<TNLWebView>& webView);

  WebKitWebView* webKitView() const { return WEBKIT_WEB_VIEW(box_.content()); }
  // How many finished navigations were reported to the model.
  size_t finishedNavigationCount() const { return finishedCount_; }

  // TNLWebEnginePeer
  void loadHTMLString(const std::string& html, const std::optional<std::string>& baseURL) override;
  void loadRequest(const std::string& url) override;
  void evaluateJavaScript(const std::string& statement) override;
  std::shared_ptr<TNLViewPeer> scrollViewPeer() override;
  void opaqueChanged(bool opaque) override;

  // The scroll view's side (TNLGtkWebScrollPeer).
  void scrollPageTo(const TNLPoint& offset);
  void setPageScrollEnabled(bool enabled);
  void setPageBounces(bool bounces);

 private:
  enum class Frame { main, child, none };
  struct Hint {
    std::string url;
    Frame frame;
    gint64 receivedAt;
  };
  struct ApiLoad {
    std::string expected;  // as WebKit will report it
    std::string reported;  // as the caller gave it
  };
  struct PendingDecision;

  static gboolean decidePolicy(WebKitWebView* view, WebKitPolicyDecision* decision,
                               WebKitPolicyDecisionType type, gpointer self);
  static GtkWidget* createWebView(WebKitWebView* view, WebKitNavigationAction* action,
                                  gpointer self);
  static void loadChanged(WebKitWebView* view, WebKitLoadEvent event, gpointer self);
  static gboolean loadFailed(WebKitWebView* view, WebKitLoadEvent event, gchar* uri, GError* error,
                             gpointer self);
  static void processTerminated(WebKitWebView* view, WebKitWebProcessTerminationReason reason,
                                gpointer self);
  static void hintReceived(WebKitUserContentManager* manager, WebKitJavascriptResult* result,
                           gpointer self);
  static void scrollReceived(WebKitUserContentManager* manager, WebKitJavascriptResult* result,
                             gpointer self);
  static void barrierDone(GObject* view, GAsyncResult* result, gpointer data);

  void expectLoad(const std::string& url);
  void decideNavigation(WebKitPolicyDecision* decision);
  void attribute(const std::string& url, WebKitPolicyDecision* decision, int frameCount);
  void decideResponse(WebKitPolicyDecision* decision);
  // Asks the delegate, then uses or ignores `decision` (may be null: nothing to carry out).
  void askDelegate(const std::string& url, std::optional<Frame> frame,
                   WebKitPolicyDecision* decision);
  std::optional<Frame> takeHint(const std::string& url);
  void updateStyleSheets();
  void addUserScripts();

  std::weak_ptr<TNLWebView> model_;
  TNLGObjectRef<WebKitUserContentManager> content_;
  std::shared_ptr<TNLGtkWebScrollPeer> scrollPeer_;
  std::vector<TNLSignalConnection> connections_;
  std::deque<ApiLoad> apiLoads_;
  std::deque<Hint> hints_;
  std::deque<std::string> awaitingResponse_;
  std::optional<std::string> newWindowURL_;
  std::vector<std::shared_ptr<PendingDecision>> pending_;
  bool committed_ = false;
  bool failed_ = false;
  size_t finishedCount_ = 0;
  bool scrollEnabled_ = true;
  bool bounces_ = true;
  TNLPoint contentOffset_;
  struct StyleSheetUnref {
    void operator()(WebKitUserStyleSheet* sheet) const { webkit_user_style_sheet_unref(sheet); }
  };
  using StyleSheetRef = std::unique_ptr<WebKitUserStyleSheet, StyleSheetUnref>;
  StyleSheetRef noScrollSheet_;
  StyleSheetRef noBounceSheet_;
};
