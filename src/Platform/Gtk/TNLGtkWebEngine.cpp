#include "Platform/Gtk/TNLGtkWebEngine.h"

#include <algorithm>
#include <cstdio>

#include "Platform/Foundation/TNLPlatformLog.h"
#include "Platform/Gtk/TNLGtkWebScrollPeer.h"
#include "TarnelAd/Toolkit/TNLScrollView.h"
#include "TarnelAd/Toolkit/TNLWebView.h"

namespace {

constexpr char kHintHandler[] = "tnlNavigation";
constexpr char kScrollHandler[] = "tnlScroll";

// A hint belongs to a navigation that follows at once; an old one is from a navigation that
// never came (a lazily loaded frame, a cancelled click) and is not trusted.
constexpr gint64 kHintLifetimeMicroseconds = G_USEC_PER_SEC;
// Unknown navigations waiting for their response, and own loads waiting for their navigation;
// old ones (never answered) are dropped.
constexpr size_t kMaxAwaitingResponse = 32;
constexpr size_t kMaxApiLoads = 8;

// In every frame, before the page's own scripts: tells the engine which frame a navigation that
// the page is about to start targets, where the page shows it. Frame elements (inserted, or
// given a new src) navigate a child frame; a followed link navigates the frame it targets.
constexpr char kHintScript[] = R"JS((() => {
  const handlers = window.webkit && window.webkit.messageHandlers;
  const handler = handlers && handlers.tnlNavigation;
  if (!handler) return;
  const isTop = window === window.top;
  const post = (url, frame) => { try { handler.postMessage({url: String(url), frame}); } catch (e) {} };
  const resolve = (value) => { try { return new URL(value, document.baseURI).href; } catch (e) { return null; } };
  const isFrameElement = (node) =>
      node && node.nodeType === 1 && (node.localName === 'iframe' || node.localName === 'frame');
  const frameURL = (element) => {
    if (element.localName === 'iframe' && element.hasAttribute('srcdoc')) return 'about:srcdoc';
    const src = (element.getAttribute('src') || '').trim();
    return src === '' ? 'about:blank' : resolve(src);
  };
  const hintFrame = (element) => {
    if (!element.isConnected) return;  // removed again: it navigates nowhere
    const url = frameURL(element);
    if (url) post(url, 'child');
  };
  const collect = (node, frames) => {
    if (isFrameElement(node)) frames.add(node);
    if (node.nodeType === 1 && node.querySelectorAll) node.querySelectorAll('iframe, frame').forEach((f) => frames.add(f));
  };
  new MutationObserver((records) => {
    // One hint per frame element and batch: the records of a batch may name a frame more than
    // once (its own insertion, its parent's, a new src), and one navigation follows. A hint left
    // over would be taken by a later navigation to the same URL, perhaps the main frame's.
    const frames = new Set();
    for (const record of records) {
      if (record.type === 'attributes') { if (isFrameElement(record.target)) frames.add(record.target); }
      else record.addedNodes.forEach((node) => collect(node, frames));
    }
    frames.forEach(hintFrame);
  }).observe(document, {childList: true, subtree: true, attributes: true, attributeFilter: ['src', 'srcdoc']});
  addEventListener('click', (event) => {
    const start = event.target;
    const link = start && start.closest ? start.closest('a[href], area[href]') : null;
    if (!link) return;
    let target = link.getAttribute('target');
    if (target === null) { const base = document.querySelector('base[target]'); target = base ? base.getAttribute('target') : ''; }
    target = (target || '').toLowerCase();
    let frame = null;
    if (target === '' || target === '_self') frame = isTop ? 'main' : 'child';
    else if (target === '_top') frame = 'main';
    else if (target === '_parent') frame = window.parent === window.top ? 'main' : 'child';
    if (frame) post(link.href, frame);
  }, true);
})();)JS";

// In the top frame: reports the page's scrolling.
constexpr char kScrollScript[] = R"JS((() => {
  const handlers = window.webkit && window.webkit.messageHandlers;
  const handler = handlers && handlers.tnlScroll;
  if (!handler) return;
  addEventListener('scroll', () => {
    try { handler.postMessage({x: window.scrollX, y: window.scrollY}); } catch (e) {}
  }, {passive: true});
})();)JS";

// Counts the page's frames; evaluated after a navigation was asked for, it also lets every hint
// sent before it arrive first (the page's process answers in order).
constexpr char kFrameCountScript[] = R"JS((() => {
  let count = 0;
  const walk = (w) => { for (let i = 0; i < w.length; i++) { count++; try { walk(w[i]); } catch (e) {} } };
  walk(window);
  return count;
})())JS";

constexpr char kNoScrollCSS[] = "html, body { overflow: hidden !important; }";
constexpr char kNoBounceCSS[] = "html, body { overscroll-behavior: none !important; }";

bool isBridgeURL(const std::string& url) {
  return url.rfind("bridge:", 0) == 0;
}

// A URL as WebKit writes it ("http://host" becomes "http://host/").
std::string normalized(const std::string& url) {
  auto request = TNLGObjectRef<WebKitURIRequest>::adopt(webkit_uri_request_new(url.c_str()));
  const char* uri = webkit_uri_request_get_uri(request.get());
  return uri ? uri : url;
}

std::string stringMember(JSCValue* object, const char* name) {
  auto value = TNLGObjectRef<JSCValue>::adopt(jsc_value_object_get_property(object, name));
  if (!value || !jsc_value_is_string(value.get())) {
    return {};
  }
  char* text = jsc_value_to_string(value.get());
  std::string result = text ? text : "";
  g_free(text);
  return result;
}

double numberMember(JSCValue* object, const char* name) {
  auto value = TNLGObjectRef<JSCValue>::adopt(jsc_value_object_get_property(object, name));
  return value && jsc_value_is_number(value.get()) ? jsc_value_to_double(value.get()) : 0.0;
}

// A navigation waiting for the round trip to its page.
struct Barrier {
  std::weak_ptr<TNLGtkWebEngine> engine;
  TNLGObjectRef<WebKitPolicyDecision> decision;
  std::string url;
};

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
      content_.get(), kHintHandler, kScriptWorld);
  webkit_user_content_manager_unregister_script_message_handler_in_world(
      content_.get(), kScrollHandler, kScriptWorld);
}

std::shared_ptr<TNLGtkWebEngine> TNLGtkWebEngine::of(const std::shared_ptr<TNLWebView>& webView) {
  return webView ? std::dynamic_pointer_cast<TNLGtkWebEngine>(webView->peer()) : nullptr;
}

void TNLGtkWebEngine::addUserScripts() {
  WebKitUserContentManager* manager = content_.get();
  connections_.emplace_back(manager, "script-message-received::tnlNavigation",
                            G_CALLBACK(&TNLGtkWebEngine::hintReceived), this);
  connections_.emplace_back(manager, "script-message-received::tnlScroll",
                            G_CALLBACK(&TNLGtkWebEngine::scrollReceived), this);
  webkit_user_content_manager_register_script_message_handler_in_world(manager, kHintHandler,
                                                                       kScriptWorld);
  webkit_user_content_manager_register_script_message_handler_in_world(manager, kScrollHandler,
                                                                       kScriptWorld);
  auto hints = webkit_user_script_new_for_world(kHintScript, WEBKIT_USER_CONTENT_INJECT_ALL_FRAMES,
                                                WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START,
                                                kScriptWorld, nullptr, nullptr);
  webkit_user_content_manager_add_script(manager, hints);
  webkit_user_script_unref(hints);
  auto scroll = webkit_user_script_new_for_world(
      kScrollScript, WEBKIT_USER_CONTENT_INJECT_TOP_FRAME,
      WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START, kScriptWorld, nullptr, nullptr);
  webkit_user_content_manager_add_script(manager, scroll);
  webkit_user_script_unref(scroll);
}

void TNLGtkWebEngine::loadHTMLString(const std::string& html,
                                     const std::optional<std::string>& baseURL) {
  const std::string reported = baseURL ? *baseURL : "about:blank";
  expectLoad(reported);
  webkit_web_view_load_html(webKitView(), html.c_str(), baseURL ? baseURL->c_str() : nullptr);
}

void TNLGtkWebEngine::loadRequest(const std::string& url) {
  expectLoad(url);
  webkit_web_view_load_uri(webKitView(), url.c_str());
}

void TNLGtkWebEngine::expectLoad(const std::string& url) {
  apiLoads_.push_back({normalized(url), url});
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
      const std::string reported = own->reported;
      // Loads asked for before this one were superseded without a navigation of their own.
      apiLoads_.erase(apiLoads_.begin(), own + 1);
      askDelegate(reported, Frame::main, decision);
      return;
    }
  }
  webkit_web_view_evaluate_javascript(
      webKitView(), kFrameCountScript, -1, kScriptWorld, nullptr, nullptr,
      &TNLGtkWebEngine::barrierDone,
      new Barrier{weak_from_this(), TNLGObjectRef<WebKitPolicyDecision>::retain(decision), url});
}

void TNLGtkWebEngine::barrierDone(GObject* view, GAsyncResult* result, gpointer data) {
  std::unique_ptr<Barrier> barrier(static_cast<Barrier*>(data));
  GError* error = nullptr;
  auto value = TNLGObjectRef<JSCValue>::adopt(
      webkit_web_view_evaluate_javascript_finish(WEBKIT_WEB_VIEW(view), result, &error));
  int frameCount = -1;  // not known
  if (value && jsc_value_is_number(value.get())) {
    frameCount = jsc_value_to_int32(value.get());
  }
  g_clear_error(&error);
  if (const auto engine = barrier->engine.lock()) {
    engine->attribute(barrier->url, barrier->decision.get(), frameCount);
  } else {
    webkit_policy_decision_ignore(barrier->decision.get());
  }
}

void TNLGtkWebEngine::attribute(const std::string& url, WebKitPolicyDecision* decision,
                                int frameCount) {
  const auto hint = takeHint(url);
  if (frameCount == 0) {
    askDelegate(url, Frame::main, decision);
  } else if (hint) {
    askDelegate(url, *hint, decision);
  } else if (isBridgeURL(url)) {
    askDelegate(url, Frame::main, decision);
  } else {
    // The response will tell; WebKit goes on until then.
    awaitingResponse_.push_back(url);
    if (awaitingResponse_.size() > kMaxAwaitingResponse) {
      awaitingResponse_.pop_front();
    }
    webkit_policy_decision_use(decision);
  }
}

void TNLGtkWebEngine::decideResponse(WebKitPolicyDecision* decision) {
  auto* response = WEBKIT_RESPONSE_POLICY_DECISION(decision);
  const std::string url =
      webkit_uri_request_get_uri(webkit_response_policy_decision_get_request(response));
  const auto awaiting = std::find(awaitingResponse_.begin(), awaitingResponse_.end(), url);
  if (awaiting == awaitingResponse_.end()) {
    webkit_policy_decision_use(decision);  // decided before it was requested
    return;
  }
  awaitingResponse_.erase(awaiting);
  const bool main = webkit_response_policy_decision_is_main_frame_main_resource(response);
  askDelegate(url, main ? Frame::main : Frame::child, decision);
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

std::optional<TNLGtkWebEngine::Frame> TNLGtkWebEngine::takeHint(const std::string& url) {
  const gint64 now = g_get_monotonic_time();
  std::erase_if(hints_, [now](const Hint& hint) {
    return now - hint.receivedAt > kHintLifetimeMicroseconds;
  });
  const auto found =
      std::find_if(hints_.begin(), hints_.end(), [&](const Hint& hint) { return hint.url == url; });
  if (found == hints_.end()) {
    return std::nullopt;
  }
  const Frame frame = found->frame;
  hints_.erase(found);
  return frame;
}

void TNLGtkWebEngine::hintReceived(WebKitUserContentManager* /*manager*/,
                                   WebKitJavascriptResult* result, gpointer self) {
  auto* engine = static_cast<TNLGtkWebEngine*>(self);
  JSCValue* message = webkit_javascript_result_get_js_value(result);
  if (!jsc_value_is_object(message)) {
    return;
  }
  const std::string url = stringMember(message, "url");
  const std::string frame = stringMember(message, "frame");
  if (url.empty() || (frame != "main" && frame != "child")) {
    return;
  }
  engine->hints_.push_back(
      {url, frame == "main" ? Frame::main : Frame::child, g_get_monotonic_time()});
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

void TNLGtkWebEngine::loadChanged(WebKitWebView* /*view*/, WebKitLoadEvent event, gpointer self) {
  auto* engine = static_cast<TNLGtkWebEngine*>(self);
  switch (event) {
    case WEBKIT_LOAD_STARTED:
      engine->committed_ = false;
      engine->failed_ = false;
      break;
    case WEBKIT_LOAD_REDIRECTED:
      break;
    case WEBKIT_LOAD_COMMITTED:
      engine->committed_ = true;
      break;
    case WEBKIT_LOAD_FINISHED: {
      // WebKit also ends a failed load with FINISHED; only a page that loaded counts.
      const bool loaded = engine->committed_ && !engine->failed_;
      engine->committed_ = false;
      engine->failed_ = false;
      if (!loaded) {
        break;
      }
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

gboolean TNLGtkWebEngine::loadFailed(WebKitWebView* /*view*/, WebKitLoadEvent /*event*/,
                                     gchar* /*uri*/, GError* /*error*/, gpointer self) {
  static_cast<TNLGtkWebEngine*>(self)->failed_ = true;
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
