#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "AppVerificationLibrary/OMIDAdSession.h"
#include "AppVerificationLibrary/OMIDAdSessionConfiguration.h"
#include "AppVerificationLibrary/OMIDAdSessionContext.h"
#include "AppVerificationLibrary/OMIDPartner.h"
#include "AppVerificationLibrary/OMIDSDK.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "Platform/Toolkit/Headless/TNLHeadlessWebEngine.h"
#include "TarnelAd/Toolkit/TNLWebView.h"

// Reading the OMID commands that reached a headless web view, and making the sessions that send
// them.
namespace OMIDTestStatements {

inline constexpr char kPrefix[] = "(function(){if(this.omidBridge!==undefined){this.omidBridge.";
inline constexpr char kSuffix[] = "}})()";

inline std::string wrapped(const std::string& call) {
  return kPrefix + call + kSuffix;
}

// "name(arguments)" of an OMID statement; the statement itself when it is not one.
inline std::string call(const std::string& statement) {
  if (!statement.starts_with(kPrefix) || !statement.ends_with(kSuffix)) {
    return statement;
  }
  return statement.substr(sizeof(kPrefix) - 1,
                          statement.size() - sizeof(kPrefix) - sizeof(kSuffix) + 2);
}

inline const std::vector<std::string>& statements(const std::shared_ptr<TNLWebView>& webView) {
  return TNLHeadlessWebEngine::of(webView)->evaluatedStatements();
}

// The command names, in the order they reached the page.
inline std::vector<std::string> names(const std::shared_ptr<TNLWebView>& webView) {
  std::vector<std::string> result;
  for (const auto& statement : statements(webView)) {
    const std::string text = call(statement);
    result.push_back(text.substr(0, text.find('(')));
  }
  return result;
}

// The calls ("name(arguments)") of the commands with this name, in order.
inline std::vector<std::string> calls(const std::shared_ptr<TNLWebView>& webView,
                                      const std::string& commandName) {
  std::vector<std::string> result;
  for (const auto& statement : statements(webView)) {
    if (call(statement).starts_with(commandName + "(")) {
      result.push_back(call(statement));
    }
  }
  return result;
}

inline size_t count(const std::shared_ptr<TNLWebView>& webView, const std::string& commandName) {
  return calls(webView, commandName).size();
}

// Runs the main loop until the page has received `n` commands of the name.
inline bool waitFor(const std::shared_ptr<TNLWebView>& webView, const std::string& commandName,
                    size_t n = 1,
                    std::chrono::milliseconds timeout = std::chrono::milliseconds(3000)) {
  return TNLMainQueue::runUntil([&] { return count(webView, commandName) >= n; }, timeout);
}

// A session of an ad in the web view, not yet started, with the SDK activated.
inline std::shared_ptr<OMIDTarnelAdSession> htmlSession(const std::shared_ptr<TNLWebView>& webView,
                                                        OMIDTarnelOwner impressionOwner = 1,
                                                        OMIDTarnelOwner videoEventsOwner = 3) {
  OMIDTarnelSDK::sharedInstance()->activateWithOMIDAPIVersion(R"({"v":"1.2.4","a":"1"})", nullptr);
  const auto context = OMIDTarnelAdSessionContext::create(
      OMIDTarnelPartner::create("Tarnel", "1.0.0.001"), webView, "ref", nullptr);
  return OMIDTarnelAdSession::create(
      OMIDTarnelAdSessionConfiguration::create(impressionOwner, videoEventsOwner, false, nullptr),
      context, nullptr);
}

// "code message" of an OMID error, "none" without one.
inline std::string described(const TNLErrorPtr& error) {
  if (!error) {
    return "none";
  }
  const std::string domain = error->domain() == "com.omid.library" ? "" : error->domain() + " ";
  return domain + std::to_string(error->code()) + " " + error->localizedDescription();
}

}  // namespace OMIDTestStatements
