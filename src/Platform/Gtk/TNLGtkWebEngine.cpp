#include "Platform/Gtk/TNLGtkWebEngine.h"

#include <glib/gstdio.h>

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "Platform/Foundation/TNLJSON.h"
#include "Platform/Foundation/TNLPlatformLog.h"
#include "Platform/Gtk/TNLGtkWebScrollPeer.h"
#include "TarnelAd/Toolkit/TNLScrollView.h"
#include "TarnelAd/Toolkit/TNLWebView.h"

namespace {

constexpr char kScrollHandler[] = "tnlScroll";

// Navigations let start until WebKit tells their frame, and own loads waiting for their
// navigation; old ones (never answered) are dropped.
constexpr size_t kMaxStarted = 32;
constexpr size_t kMaxApiLoads = 8;

// WebKit's error for a load a content rule list refused (not among WebKitPolicyError's names).
constexpr int kBlockedByContentRuleCode = 104;

// No frame of a document under this policy can load, or even ask for, a "bridge:" address: a
// source list names the schemes a frame may show, and "*" stands for the web's own.
constexpr char kFramePolicy[] =
    R"(<meta http-equiv="Content-Security-Policy" content="frame-src * about: data: blob: javascript:">)";

// In the top frame: reports the page's scrolling.
constexpr char kScrollScript[] = R"JS((() => {
  const handlers = window.webkit && window.webkit.messageHandlers;
  const handler = handlers && handlers.tnlScroll;
  if (!handler) return;
  addEventListener('scroll', () => {
    try { handler.postMessage({x: window.scrollX, y: window.scrollY}); } catch (e) {}
  }, {passive: true});
})();)JS";

constexpr char kNoScrollCSS[] = "html, body { overflow: hidden !important; }";
constexpr char kNoBounceCSS[] = "html, body { overscroll-behavior: none !important; }";

bool isBridgeURL(const std::string& url) {
  return url.rfind("bridge:", 0) == 0;
}

// Documents of these schemes take the policy of the document that made them.
bool inheritsFramePolicy(const std::string& url) {
  for (const char* scheme : {"about:", "data:", "blob:"}) {
    if (url.rfind(scheme, 0) == 0) {
      return true;
    }
  }
  return false;
}

// A URL as WebKit writes it ("http://host" becomes "http://host/").
std::string normalized(const std::string& url) {
  auto request = TNLGObjectRef<WebKitURIRequest>::adopt(webkit_uri_request_new(url.c_str()));
  const char* uri = webkit_uri_request_get_uri(request.get());
  return uri ? uri : url;
}

bool startsWithIgnoringCase(std::string_view text, size_t at, std::string_view prefix) {
  return text.size() >= at + prefix.size() &&
         g_ascii_strncasecmp(text.data() + at, prefix.data(), prefix.size()) == 0;
}

// The page with the frame policy as its first element: after a byte order mark, blanks, comments
// and the doctype (anything else before the doctype would put the page in quirks mode); the
// parser puts a leading meta element in the head.
std::string withFramePolicy(const std::string& html) {
  size_t at = startsWithIgnoringCase(html, 0, "\xEF\xBB\xBF") ? 3 : 0;
  for (;;) {
    while (at < html.size() && g_ascii_isspace(html[at])) {
      ++at;
    }
    if (startsWithIgnoringCase(html, at, "<!--")) {
      const size_t end = html.find("-->", at + 4);
      if (end == std::string::npos) {
        break;
      }
      at = end + 3;
      continue;
    }
    if (startsWithIgnoringCase(html, at, "<!doctype")) {
      const size_t end = html.find('>', at);
      if (end != std::string::npos) {
        at = end + 1;
      }
    }
    break;
  }
  return html.substr(0, at) + kFramePolicy + html.substr(at);
}

// A content rule list pattern that matches `url` exactly.
std::string exactPattern(const std::string& url) {
  std::string pattern = "^";
  for (const char c : url) {
    if (std::string_view(".*+?^$()[]{}|\\").find(c) != std::string_view::npos) {
      pattern.push_back('\\');
    }
    pattern.push_back(c);
  }
  return pattern + "$";
}

// The main-frame guard of a page at `ownURL`: every main-frame document load is refused, before
// any request, except the page's own.
std::string guardRules(const std::string& ownURL) {
  const TNLJson mainDocument = {{"resource-type", {"document"}}, {"load-context", {"top-frame"}}};
  TNLJson refuse = {{"trigger", mainDocument}, {"action", {{"type", "block"}}}};
  refuse["trigger"]["url-filter"] = ".*";
  TNLJson own = {{"trigger", mainDocument}, {"action", {{"type", "ignore-previous-rules"}}}};
  own["trigger"]["url-filter"] = exactPattern(normalized(ownURL));
  own["trigger"]["url-filter-is-case-sensitive"] = true;
  return TNLJson::array({refuse, own}).dump();
}

// One guard being compiled. WebKit compiles rule lists into a store on disk: each compilation
// gets a private directory, which is emptied and removed once the list is in memory.
struct GuardCompilation {
  std::weak_ptr<TNLGtkWebEngine> engine;
  unsigned generation = 0;
  std::string directory;
  TNLGObjectRef<WebKitUserContentFilterStore> store;
  std::function<void(unsigned, WebKitUserContentFilter*)> done;

  static constexpr char kIdentifier[] = "guard";

  static void saved(GObject* store, GAsyncResult* result, gpointer data) {
    auto* compilation = static_cast<GuardCompilation*>(data);
    GError* error = nullptr;
    WebKitUserContentFilter* filter = webkit_user_content_filter_store_save_finish(
        WEBKIT_USER_CONTENT_FILTER_STORE(store), result, &error);
    if (error) {
      TNLPlatformLog(std::string("TNLWebView: the main-frame guard could not be compiled: ") +
                     error->message);
      g_error_free(error);
    }
    compilation->done(compilation->generation, filter);
    webkit_user_content_filter_store_remove(WEBKIT_USER_CONTENT_FILTER_STORE(store), kIdentifier,
                                            nullptr, &GuardCompilation::removed, compilation);
  }

  static void removed(GObject* store, GAsyncResult* result, gpointer data) {
    std::unique_ptr<GuardCompilation> compilation(static_cast<GuardCompilation*>(data));
    webkit_user_content_filter_store_remove_finish(WEBKIT_USER_CONTENT_FILTER_STORE(store), result,
                                                   nullptr);
    g_rmdir(compilation->directory.c_str());
  }
};

double numberMember(JSCValue* object, const char* name) {
  auto value = TNLGObjectRef<JSCValue>::adopt(jsc_value_object_get_property(object, name));
  return value && jsc_value_is_number(value.get()) ? jsc_value_to_double(value.get()) : 0.0;
}

}  // namespace

struct TNLGtkWebEngine::PendingDecision {
  TNLGObjectRef<WebKitPolicyDecision> decision;
  bool done = false;
};

TNLGtkWebEngine::TNLGtkWebEngine(const std::shared_ptr<TNLWebView>& webView,
                                 WebKitWebContext* context)
    : TNLGtkPeer(webView),
      model_(webView),
      content_(TNLGObjectRef<WebKitUserContentManager>::adopt(webkit_user_content_manager_new())) {
  const TNLWebViewConfiguration& configuration = webView->configuration();
  auto settings = TNLGObjectRef<WebKitSettings>::adopt(webkit_settings_new());
  webkit_settings_set_enable_javascript(settings.get(), configuration.javaScriptEnabled);
  webkit_settings_set_media_playback_requires_user_gesture(
      settings.get(),
      configuration.mediaTypesRequiringUserActionForPlayback != TNLAudiovisualMediaTypes::none);
  webkit_settings_set_media_playback_allows_inline(settings.get(),
                                                   configuration.allowsInlineMediaPlayback);

  addUserScripts();
  GtkWidget* view =
      GTK_WIDGET(g_object_new(WEBKIT_TYPE_WEB_VIEW, "web-context", context, "settings",
                              settings.get(), "user-content-manager", content_.get(), nullptr));
  box_.setContent(view);

  connections_.emplace_back(view, "decide-policy", G_CALLBACK(&TNLGtkWebEngine::decidePolicy),
                            this);
  connections_.emplace_back(view, "create", G_CALLBACK(&TNLGtkWebEngine::createWebView), this);
  connections_.emplace_back(view, "load-changed", G_CALLBACK(&TNLGtkWebEngine::loadChanged), this);
  connections_.emplace_back(view, "load-failed", G_CALLBACK(&TNLGtkWebEngine::loadFailed), this);
  connections_.emplace_back(view, "web-process-terminated",
                            G_CALLBACK(&TNLGtkWebEngine::processTerminated), this);
}

TNLGtkWebEngine::~TNLGtkWebEngine() {
  connections_.clear();
  // A decision the delegate never made: nothing more of it is loaded.
  for (const auto& pending : pending_) {
    if (!pending->done) {
      pending->done = true;
      webkit_policy_decision_ignore(pending->decision.get());
    }
  }
  if (WebKitWebView* view = webKitView()) {
    webkit_web_view_stop_loading(view);
  }
  webkit_user_content_manager_unregister_script_message_handler_in_world(
      content_.get(), kScrollHandler, kScriptWorld);
}

std::shared_ptr<TNLGtkWebEngine> TNLGtkWebEngine::of(const std::shared_ptr<TNLWebView>& webView) {
  return webView ? std::dynamic_pointer_cast<TNLGtkWebEngine>(webView->peer()) : nullptr;
}

void TNLGtkWebEngine::addUserScripts() {
  WebKitUserContentManager* manager = content_.get();
  connections_.emplace_back(manager, "script-message-received::tnlScroll",
                            G_CALLBACK(&TNLGtkWebEngine::scrollReceived), this);
  webkit_user_content_manager_register_script_message_handler_in_world(manager, kScrollHandler,
                                                                       kScriptWorld);
  auto scroll = webkit_user_script_new_for_world(
      kScrollScript, WEBKIT_USER_CONTENT_INJECT_TOP_FRAME,
      WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START, kScriptWorld, nullptr, nullptr);
  webkit_user_content_manager_add_script(manager, scroll);
  webkit_user_script_unref(scroll);
}

void TNLGtkWebEngine::loadHTMLString(const std::string& html,
                                     const std::optional<std::string>& baseURL) {
  const std::string reported = baseURL ? *baseURL : "about:blank";
  const auto load = [this, baseURL, reported](const std::string& page, Document document) {
    expectLoad(reported, document);
    webkit_web_view_load_html(webKitView(), page.c_str(), baseURL ? baseURL->c_str() : nullptr);
  };
  if (!guarded()) {
    load(html, Document::loaded);
    return;
  }
  guardThen(reported, [load, page = withFramePolicy(html)] { load(page, Document::own); });
}

void TNLGtkWebEngine::loadRequest(const std::string& url) {
  const auto load = [this, url] {
    expectLoad(url, Document::loaded);
    webkit_web_view_load_uri(webKitView(), url.c_str());
  };
  if (guarded()) {
    guardThen(url, load);
  } else {
    load();
  }
}

bool TNLGtkWebEngine::guarded() const {
  const auto webView = model_.lock();
  return webView && webView->navigationDelegate();
}

void TNLGtkWebEngine::guardThen(const std::string& ownURL, std::function<void()> load) {
  // A load asked for while an earlier one waits replaces it, as it would replace its navigation.
  guardedLoad_ = std::move(load);
  guard_ = Guard::preparing;
  const unsigned generation = ++guardGeneration_;
  gchar* directory = g_dir_make_tmp("tarnelad-guard-XXXXXX", nullptr);
  if (!directory) {
    TNLPlatformLog("TNLWebView: no directory to compile the main-frame guard in");
    guardPrepared(generation, nullptr);
    return;
  }
  auto* compilation = new GuardCompilation;
  compilation->engine = weak_from_this();
  compilation->generation = generation;
  compilation->directory = directory;
  compilation->store = TNLGObjectRef<WebKitUserContentFilterStore>::adopt(
      webkit_user_content_filter_store_new(directory));
  g_free(directory);
  compilation->done = [weakEngine = compilation->engine](unsigned generation,
                                                         WebKitUserContentFilter* filter) {
    if (const auto engine = weakEngine.lock()) {
      engine->guardPrepared(generation, filter);
    } else if (filter) {
      webkit_user_content_filter_unref(filter);
    }
  };
  const std::string rules = guardRules(ownURL);
  GBytes* source = g_bytes_new(rules.data(), rules.size());
  webkit_user_content_filter_store_save(compilation->store.get(), GuardCompilation::kIdentifier,
                                        source, nullptr, &GuardCompilation::saved, compilation);
  g_bytes_unref(source);
}

void TNLGtkWebEngine::guardPrepared(unsigned generation, WebKitUserContentFilter* filter) {
  std::unique_ptr<WebKitUserContentFilter, FilterUnref> prepared(filter);
  if (generation != guardGeneration_) {
    return;  // a later load brings its own guard
  }
  if (filter_) {
    webkit_user_content_manager_remove_filter(content_.get(), filter_.get());
  }
  filter_ = std::move(prepared);
  if (filter_) {
    webkit_user_content_manager_add_filter(content_.get(), filter_.get());
  }
  guard_ = filter_ ? Guard::ready : Guard::failed;
  if (auto load = std::exchange(guardedLoad_, nullptr)) {
    load();
  }
}

void TNLGtkWebEngine::expectLoad(const std::string& url, Document document) {
  apiLoads_.push_back({normalized(url), url, document});
  if (apiLoads_.size() > kMaxApiLoads) {
    apiLoads_.pop_front();
  }
}

void TNLGtkWebEngine::evaluateJavaScript(const std::string& statement) {
  // The main world, no result awaited: statements run in the order given.
  webkit_web_view_evaluate_javascript(webKitView(), statement.c_str(),
                                      static_cast<gssize>(statement.size()), nullptr, nullptr,
                                      nullptr, nullptr, nullptr);
}

std::shared_ptr<TNLViewPeer> TNLGtkWebEngine::scrollViewPeer() {
  if (!scrollPeer_) {
    scrollPeer_ = std::make_shared<TNLGtkWebScrollPeer>(weak_from_this());
  }
  return scrollPeer_;
}

void TNLGtkWebEngine::opaqueChanged(bool opaque) {
  // Not opaque: the page's own background, or what lies behind the view, shows through.
  const GdkRGBA color = opaque ? GdkRGBA{1.0, 1.0, 1.0, 1.0} : GdkRGBA{0.0, 0.0, 0.0, 0.0};
  webkit_web_view_set_background_color(webKitView(), &color);
}

void TNLGtkWebEngine::scrollPageTo(const TNLPoint& offset) {
  contentOffset_ = offset;
  char script[96];
  std::snprintf(script, sizeof script, "window.scrollTo(%.3f, %.3f)", offset.x, offset.y);
  webkit_web_view_evaluate_javascript(webKitView(), script, -1, kScriptWorld, nullptr, nullptr,
                                      nullptr, nullptr);
}

void TNLGtkWebEngine::setPageScrollEnabled(bool enabled) {
  scrollEnabled_ = enabled;
  updateStyleSheets();
}

void TNLGtkWebEngine::setPageBounces(bool bounces) {
  bounces_ = bounces;
  updateStyleSheets();
}

void TNLGtkWebEngine::updateStyleSheets() {
  // User style sheets apply to the page already shown as well as to later ones.
  const auto sync = [this](StyleSheetRef& sheet, bool wanted, const char* css) {
    if (wanted && !sheet) {
      sheet.reset(webkit_user_style_sheet_new(css, WEBKIT_USER_CONTENT_INJECT_TOP_FRAME,
                                              WEBKIT_USER_STYLE_LEVEL_USER, nullptr, nullptr));
      webkit_user_content_manager_add_style_sheet(content_.get(), sheet.get());
    } else if (!wanted && sheet) {
      webkit_user_content_manager_remove_style_sheet(content_.get(), sheet.get());
      sheet.reset();
    }
  };
  sync(noScrollSheet_, !scrollEnabled_, kNoScrollCSS);
  sync(noBounceSheet_, !bounces_, kNoBounceCSS);
}

gboolean TNLGtkWebEngine::decidePolicy(WebKitWebView* /*view*/, WebKitPolicyDecision* decision,
                                       WebKitPolicyDecisionType type, gpointer self) {
  auto* engine = static_cast<TNLGtkWebEngine*>(self);
  switch (type) {
    case WEBKIT_POLICY_DECISION_TYPE_NAVIGATION_ACTION:
      engine->decideNavigation(decision);
      return TRUE;
    case WEBKIT_POLICY_DECISION_TYPE_NEW_WINDOW_ACTION: {
      WebKitNavigationAction* action = webkit_navigation_policy_decision_get_navigation_action(
          WEBKIT_NAVIGATION_POLICY_DECISION(decision));
      const std::string url =
          webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
      // WebKit asks for the new window next ("create"); it is the same navigation.
      engine->newWindowURL_ = url;
      engine->askDelegate(url, std::nullopt, decision);
      return TRUE;
    }
    case WEBKIT_POLICY_DECISION_TYPE_RESPONSE:
      engine->decideResponse(decision);
      return TRUE;
  }
  return FALSE;
}

GtkWidget* TNLGtkWebEngine::createWebView(WebKitWebView* /*view*/, WebKitNavigationAction* action,
                                          gpointer self) {
  auto* engine = static_cast<TNLGtkWebEngine*>(self);
  const std::string url = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
  if (engine->newWindowURL_ == url) {
    engine->newWindowURL_.reset();  // decided as a new-window action already
  } else {
    // window.open: no policy decision comes before it.
    engine->askDelegate(url, std::nullopt, nullptr);
  }
  // Ad web views open no windows of their own.
  return nullptr;
}

void TNLGtkWebEngine::decideNavigation(WebKitPolicyDecision* decision) {
  WebKitNavigationAction* action = webkit_navigation_policy_decision_get_navigation_action(
      WEBKIT_NAVIGATION_POLICY_DECISION(decision));
  const std::string url = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
  const auto webView = model_.lock();
  if (!webView || !webView->navigationDelegate()) {
    // Nobody to ask: everything is allowed (the click-out browser navigates freely).
    webkit_policy_decision_use(decision);
    return;
  }
  if (!webkit_navigation_action_is_redirect(action)) {
    const auto own = std::find_if(apiLoads_.begin(), apiLoads_.end(), [&](const ApiLoad& load) {
      return load.expected == url || load.reported == url;
    });
    if (own != apiLoads_.end()) {
      const ApiLoad load = *own;
      // Loads asked for before this one were superseded without a navigation of their own.
      apiLoads_.erase(apiLoads_.begin(), own + 1);
      provisional_ = Provisional{load.expected, load.document};
      askDelegate(load.reported, Frame::main, decision);
      return;
    }
  }
  if (isBridgeURL(url)) {
    if (document_ == Document::unknown) {
      refuse(url, "the main frame shows a page the view did not load", decision);
      return;
    }
    if (document_ == Document::own && !foreignFrames_) {
      // The frame policy keeps every frame of this page from asking for a bridge URL.
      askDelegate(url, Frame::main, decision);
      return;
    }
  }
  if (guard_ != Guard::ready) {
    refuse(url, "the main-frame guard is not in place", decision);
    return;
  }
  start(url, decision);
}

void TNLGtkWebEngine::start(const std::string& url, WebKitPolicyDecision* decision) {
  started_.push_back(url);
  if (started_.size() > kMaxStarted) {
    started_.pop_front();
  }
  webkit_policy_decision_use(decision);
}

bool TNLGtkWebEngine::takeStarted(const std::string& url) {
  const auto found = std::find(started_.begin(), started_.end(), url);
  if (found == started_.end()) {
    return false;
  }
  started_.erase(found);
  return true;
}

void TNLGtkWebEngine::refuse(const std::string& url, const char* why,
                             WebKitPolicyDecision* decision) {
  TNLPlatformLog("TNLWebView: " + url + " refused: " + why);
  if (decision) {
    webkit_policy_decision_ignore(decision);
  }
}

void TNLGtkWebEngine::decideResponse(WebKitPolicyDecision* decision) {
  auto* response = WEBKIT_RESPONSE_POLICY_DECISION(decision);
  const std::string url =
      webkit_uri_request_get_uri(webkit_response_policy_decision_get_request(response));
  const bool main = webkit_response_policy_decision_is_main_frame_main_resource(response);
  if (main) {
    // A page from the network for the main frame: the view's own load, or one the guard let
    // through and the delegate now decides.
    provisional_ = Provisional{url, Document::loaded};
  } else if (!inheritsFramePolicy(url)) {
    foreignFrames_ = true;
  }
  if (takeStarted(url)) {
    askDelegate(url, main ? Frame::main : Frame::child, decision);
  } else {
    webkit_policy_decision_use(decision);
  }
}

void TNLGtkWebEngine::askDelegate(const std::string& url, std::optional<Frame> frame,
                                  WebKitPolicyDecision* decision) {
  const auto webView = model_.lock();
  if (!webView) {
    if (decision) {
      webkit_policy_decision_ignore(decision);
    }
    return;
  }
  std::shared_ptr<PendingDecision> pending;
  if (decision) {
    pending = std::make_shared<PendingDecision>();
    pending->decision = TNLGObjectRef<WebKitPolicyDecision>::retain(decision);
    std::erase_if(pending_, [](const auto& earlier) { return earlier->done; });
    pending_.push_back(pending);
  }
  std::optional<TNLFrameInfo> target;
  if (frame && *frame != Frame::none) {
    target = TNLFrameInfo(*frame == Frame::main);
  }
  // A bridge URL has nothing to load: the delegate's decision is all there is to it.
  const bool loadable = !isBridgeURL(url);
  webView->engineDecidePolicyForNavigationAction(
      TNLNavigationAction(url, target), [pending, loadable](TNLNavigationActionPolicy policy) {
        if (!pending || pending->done) {
          return;
        }
        pending->done = true;
        if (policy == TNLNavigationActionPolicy::allow && loadable) {
          webkit_policy_decision_use(pending->decision.get());
        } else {
          webkit_policy_decision_ignore(pending->decision.get());
        }
      });
}

void TNLGtkWebEngine::scrollReceived(WebKitUserContentManager* /*manager*/,
                                     WebKitJavascriptResult* result, gpointer self) {
  auto* engine = static_cast<TNLGtkWebEngine*>(self);
  JSCValue* message = webkit_javascript_result_get_js_value(result);
  const auto webView = engine->model_.lock();
  if (!webView || !jsc_value_is_object(message)) {
    return;
  }
  const TNLPoint offset{numberMember(message, "x"), numberMember(message, "y")};
  engine->contentOffset_ = offset;
  webView->scrollView()->peerDidScroll(offset);
}

void TNLGtkWebEngine::loadChanged(WebKitWebView* view, WebKitLoadEvent event, gpointer self) {
  auto* engine = static_cast<TNLGtkWebEngine*>(self);
  switch (event) {
    case WEBKIT_LOAD_STARTED:
    case WEBKIT_LOAD_REDIRECTED:
      break;
    case WEBKIT_LOAD_COMMITTED: {
      const char* uri = webkit_web_view_get_uri(view);
      const auto& provisional = engine->provisional_;
      engine->document_ =
          provisional && uri && provisional->url == uri ? provisional->document : Document::unknown;
      engine->provisional_.reset();
      engine->foreignFrames_ = false;
      engine->documentCommitted_ = true;
      engine->documentFailed_ = false;
      engine->documentReported_ = false;
      break;
    }
    case WEBKIT_LOAD_FINISHED: {
      // WebKit also ends a load that failed, or that the guard refused, with FINISHED: only a
      // page that committed and did not fail counts, once (a refused load started while the
      // page was still loading stopped its loads, and ends it).
      if (!engine->documentCommitted_ || engine->documentFailed_ || engine->documentReported_) {
        break;
      }
      engine->documentReported_ = true;
      if (engine->contentOffset_ != TNLPoint{}) {
        engine->scrollPageTo(engine->contentOffset_);
      }
      ++engine->finishedCount_;
      if (const auto webView = engine->model_.lock()) {
        webView->engineDidFinishNavigation();
      }
      break;
    }
  }
}

gboolean TNLGtkWebEngine::loadFailed(WebKitWebView* /*view*/, WebKitLoadEvent event, gchar* uri,
                                     GError* error, gpointer self) {
  auto* engine = static_cast<TNLGtkWebEngine*>(self);
  if (event == WEBKIT_LOAD_COMMITTED) {
    engine->documentFailed_ = true;  // the page itself failed
  }
  // The guard refused a main-frame load that was let start: now the frame is known.
  if (uri && error && error->domain == WEBKIT_POLICY_ERROR &&
      error->code == kBlockedByContentRuleCode && engine->takeStarted(uri)) {
    if (engine->document_ == Document::unknown) {
      engine->refuse(uri, "the main frame shows a page the view did not load", nullptr);
    } else {
      engine->askDelegate(uri, Frame::main, nullptr);
    }
  }
  return TRUE;  // no error page: the view keeps what it shows
}

void TNLGtkWebEngine::processTerminated(WebKitWebView* /*view*/,
                                        WebKitWebProcessTerminationReason reason,
                                        gpointer /*self*/) {
  TNLPlatformLog(std::string("TNLWebView: the web content process ended (") +
                 (reason == WEBKIT_WEB_PROCESS_CRASHED                 ? "crashed"
                  : reason == WEBKIT_WEB_PROCESS_EXCEEDED_MEMORY_LIMIT ? "out of memory"
                                                                       : "terminated") +
                 ")");
}
