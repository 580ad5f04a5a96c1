#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Foundation/TNLMainQueue.h"
#include "Platform/Toolkit/Headless/TNLHeadlessWebEngine.h"
#include "TarnelAd/Toolkit/TNLWebView.h"

// Reading the OMID commands that reached a headless web view.
namespace OMIDTestStatements {

inline constexpr char kPrefix[] = "(function(){if(this.omidBridge!==undefined){this.omidBridge.";
inline constexpr char kSuffix[] = "}})()";

// The statement that calls omidBridge.<call>.
inline std::string wrapped(const std::string& call) {
  return kPrefix + call + kSuffix;
}

// "name(arguments)" of an OMID statement; the statement itself when it is not one.
inline std::string call(const std::string& statement) {
  const std::string prefix = kPrefix;
  const std::string suffix = kSuffix;
  if (statement.rfind(prefix, 0) != 0 || statement.size() < prefix.size() + suffix.size()) {
    return statement;
  }
  return statement.substr(prefix.size(), statement.size() - prefix.size() - suffix.size());
}

inline std::string name(const std::string& statement) {
  const std::string text = call(statement);
  return text.substr(0, text.find('('));
}

inline const std::vector<std::string>& statements(const std::shared_ptr<TNLWebView>& webView) {
  return TNLHeadlessWebEngine::of(webView)->evaluatedStatements();
}

// The command names, in the order they reached the page.
inline std::vector<std::string> names(const std::shared_ptr<TNLWebView>& webView) {
  std::vector<std::string> result;
  for (const auto& statement : statements(webView)) {
    result.push_back(name(statement));
  }
  return result;
}

// The calls ("name(arguments)") of the commands with this name, in order.
inline std::vector<std::string> calls(const std::shared_ptr<TNLWebView>& webView,
                                      const std::string& commandName) {
  std::vector<std::string> result;
  for (const auto& statement : statements(webView)) {
    if (name(statement) == commandName) {
      result.push_back(call(statement));
    }
  }
  return result;
}

inline size_t count(const std::shared_ptr<TNLWebView>& webView, const std::string& commandName) {
  const auto all = names(webView);
  return static_cast<size_t>(std::count(all.begin(), all.end(), commandName));
}

// Runs the main loop until the page has received `n` commands of the name.
inline bool waitFor(const std::shared_ptr<TNLWebView>& webView, const std::string& commandName,
                    size_t n = 1,
                    std::chrono::milliseconds timeout = std::chrono::milliseconds(3000)) {
  return TNLMainQueue::runUntil([&] { return count(webView, commandName) >= n; }, timeout);
}

}  // namespace OMIDTestStatements
