#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>

class OMIDTarnelAdSession;
class OMIDTarnelPartner;
class TNLWebView;

// The library's single point of contact with the measurement SDK: activates it once, opens one
// ad session per ad web view whose creative opts in, reports the impression and closes the
// session when the ad goes away. Sessions and their web views are filed under the web view's
// address ("%p" of the object). Used from the main thread, whose loop runs the delayed removal.
class TNLOMHandler {
 public:
  static std::shared_ptr<TNLOMHandler> sharedHandler();

  // The OMID API version the integration was written against, and the partner it reports.
  static constexpr char kOMIDAPIVersion[] = R"({"v":"1.2.4","a":"1"})";
  static constexpr char kPartnerName[] = "Tarnel";
  static constexpr char kPartnerVersion[] = "1.0.0.001";

  // The creative's opt-in: "display" or "video" opens and starts a session measuring the web
  // view, unless it already has one; any other word does nothing.
  void createOMIDSessionForWebView(const std::shared_ptr<TNLWebView>& webView,
                                   const std::string& type);
  // Makes the SDK's native impression call for the web view's session. Every session leaves the
  // impression to the measurement scripts in the creative, so the SDK declines it and nothing is
  // sent; the call is kept as the integration has always made it.
  void sendImpressionEventForWebView(const std::shared_ptr<TNLWebView>& webView);
  // Finishes the web view's session at once and forgets it (and the web view) one second later,
  // so that the finish can still reach the scripts in the page.
  void destroyOMIDSessionForWebView(const std::shared_ptr<TNLWebView>& webView);

  // The key of a web view: its address, as the ad web view prints its own ("%p").
  static std::string addressForWebView(const TNLWebView& webView);

  bool sdkStarted() const { return sdkStarted_; }
  const std::shared_ptr<OMIDTarnelPartner>& partner() const { return partner_; }
  std::map<std::string, std::shared_ptr<OMIDTarnelAdSession>> omidSessions() const;
  std::map<std::string, std::shared_ptr<TNLWebView>> webviews() const;

 private:
  TNLOMHandler();

  std::shared_ptr<OMIDTarnelAdSession> sessionForWebView(const TNLWebView& webView) const;
  void removeSession(const std::string& key, const std::shared_ptr<OMIDTarnelAdSession>& finished);

  const bool sdkStarted_;
  const std::shared_ptr<OMIDTarnelPartner> partner_;
  // The dictionaries are only touched briefly under the lock; the SDK is never called under it.
  mutable std::mutex mutex_;
  std::map<std::string, std::shared_ptr<OMIDTarnelAdSession>> omidSessions_;
  std::map<std::string, std::shared_ptr<TNLWebView>> webviews_;
};
