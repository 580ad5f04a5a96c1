#pragma once

#include <webkit2/webkit2.h>

#include <deque>
#include <functional>
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
// delegate allows is loaded. WebKitGTK does not say at decision time which frame a navigation
// targets, so a view that has a delegate is guarded by rules WebKit itself applies to the right
// frame, which no page content can change:
//   - the frame policy: the HTML the view loads carries a Content-Security-Policy whose frame-src
//     leaves out "bridge:", so no frame of that document (nor of the about:, data: and blob:
//     documents made from it, which inherit the policy) can even ask for a bridge URL;
//   - the main-frame guard: a content rule list that refuses every main-frame document load
//     except the view's own page, before any request is made.
// Decisions, in this order:
//   1. the view's own loads (loadHTMLString, loadRequest) are the main frame's; the delegate sees
//      the URL as it was given (the base URL for HTML, "about:blank" without one);
//   2. new-window actions (a link with a target of _blank, window.open) have no target frame;
//      no window is ever opened;
//   3. a bridge URL while the page is the view's own HTML and no frame holds a document from
//      elsewhere can only be the main frame's (step 4 otherwise): the delegate decides now.
//      Bridge URLs are never loaded: the decision is the delegate's, the load a no-op;
//   4. anything else starts, and WebKit tells the frame: a main-frame load is refused by the
//      guard (the delegate then hears it as the main frame's, with nothing left to carry out),
//      a frame's load reaches its response, whose decision is the delegate's. A main-frame load
//      of the own page is not refused and is decided at its response too.
// Refused without asking: a bridge URL or a guarded main-frame load while the main frame shows
// a document the view did not load (an about: page that the page navigated to), and step 4
// while the guard cannot be set up. Starting a navigation stops the page's loads in progress and
// fires beforeunload, as any navigation does in WebKit; step 3 spares the common case that.
// The finished-navigation event is a main-frame document that committed and did not fail.
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
  // What the main frame shows, as far as the view can vouch for it.
  enum class Document {
    own,      // HTML the view loaded, under the frame policy
    loaded,   // a page the view or its delegate let the main frame load
    unknown,  // anything else (the initial page, an about: page the page navigated to)
  };
  struct ApiLoad {
    std::string expected;  // as WebKit will report it
    std::string reported;  // as the caller gave it
    Document document;
  };
  struct Provisional {
    std::string url;  // as WebKit will report the committed page
    Document document;
  };
  enum class Guard { none, preparing, ready, failed };
  struct PendingDecision;
  struct FilterUnref {
    void operator()(WebKitUserContentFilter* filter) const {
      webkit_user_content_filter_unref(filter);
    }
  };

  static gboolean decidePolicy(WebKitWebView* view, WebKitPolicyDecision* decision,
                               WebKitPolicyDecisionType type, gpointer self);
  static GtkWidget* createWebView(WebKitWebView* view, WebKitNavigationAction* action,
                                  gpointer self);
  static void loadChanged(WebKitWebView* view, WebKitLoadEvent event, gpointer self);
  static gboolean loadFailed(WebKitWebView* view, WebKitLoadEvent event, gchar* uri, GError* error,
                             gpointer self);
  static void processTerminated(WebKitWebView* view, WebKitWebProcessTerminationReason reason,
                                gpointer self);
  static void scrollReceived(WebKitUserContentManager* manager, WebKitJavascriptResult* result,
                             gpointer self);

  bool guarded() const;
  // Runs `load` once the main-frame guard for a page at `ownURL` is in place (or has failed).
  void guardThen(const std::string& ownURL, std::function<void()> load);
  void guardPrepared(unsigned generation, WebKitUserContentFilter* filter);
  void expectLoad(const std::string& url, Document document);
  void decideNavigation(WebKitPolicyDecision* decision);
  void decideResponse(WebKitPolicyDecision* decision);
  // Lets a navigation whose frame is not known yet go on until WebKit tells the frame.
  void start(const std::string& url, WebKitPolicyDecision* decision);
  bool takeStarted(const std::string& url);
  void refuse(const std::string& url, const char* why, WebKitPolicyDecision* decision);
  // Asks the delegate, then uses or ignores `decision` (may be null: nothing to carry out).
  void askDelegate(const std::string& url, std::optional<Frame> frame,
                   WebKitPolicyDecision* decision);
  void updateStyleSheets();
  void addUserScripts();

  std::weak_ptr<TNLWebView> model_;
  TNLGObjectRef<WebKitUserContentManager> content_;
  std::shared_ptr<TNLGtkWebScrollPeer> scrollPeer_;
  std::vector<TNLSignalConnection> connections_;
  std::deque<ApiLoad> apiLoads_;
  std::deque<std::string> started_;
  std::optional<std::string> newWindowURL_;
  std::vector<std::shared_ptr<PendingDecision>> pending_;
  Guard guard_ = Guard::none;
  unsigned guardGeneration_ = 0;
  std::unique_ptr<WebKitUserContentFilter, FilterUnref> filter_;
  std::function<void()> guardedLoad_;
  Document document_ = Document::unknown;
  std::optional<Provisional> provisional_;
  // A frame of the committed document holds a document from elsewhere, which the frame policy
  // does not cover: its own frames could ask for bridge URLs.
  bool foreignFrames_ = false;
  bool documentCommitted_ = false;
  bool documentFailed_ = false;
  bool documentReported_ = false;
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
