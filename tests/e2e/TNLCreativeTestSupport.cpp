#include "e2e/TNLCreativeTestSupport.h"

#include <algorithm>
#include <map>

#include "Platform/Foundation/TNLMainQueue.h"

namespace tnl_e2e {

namespace {

// The creative's side of the bridge. Statements from the library arrive as calls of
// receivePayload, ZENKO and omidBridge; each is numbered in the order the page received it and
// reported to the ad server. The page answers through main-frame navigations to bridge://.
constexpr char kBridgeScript[] = R"JS(
  let reportCount = 0;
  function report(name, args) {
    const entry = {seq: reportCount++, name: name, types: args.map((arg) => typeof arg), args: args};
    return fetch('/report', {method: 'POST', keepalive: true, body: JSON.stringify(entry)});
  }
  function bridge(action) { window.location.href = 'bridge://' + action; }
  const handlers = {};
  function on(name, handler) { handlers[name] = handler; }
  function received(name, args) {
    report(name, args);
    if (handlers[name]) handlers[name].apply(null, args);
  }

  function receivePayload(ad) { received('receivePayload', [ad]); }
  window.ZENKO = {
    setVolume: (...args) => received('ZENKO.setVolume', args),
    isAdVisible: (...args) => received('ZENKO.isAdVisible', args),
    isScrollListenerSubscribed: (...args) => received('ZENKO.isScrollListenerSubscribed', args),
    scroll: (...args) => received('ZENKO.scroll', args),
    onDeviceData: (...args) => received('ZENKO.onDeviceData', args),
    onWebViewExpanded: (...args) => received('ZENKO.onWebViewExpanded', args),
    onWebViewCollapsed: (...args) => received('ZENKO.onWebViewCollapsed', args),
    orientationDidChange: (...args) => received('ZENKO.orientationDidChange', args),
  };
  // The measurement side: what the OM SDK publishes into the page.
  window.omidBridge = {
    init: (...args) => received('omidBridge.init', args),
    startSession: (...args) => received('omidBridge.startSession', args),
    finishSession: (...args) => received('omidBridge.finishSession', args),
    setNativeViewHierarchy: (...args) => received('omidBridge.setNativeViewHierarchy', args),
  };
)JS";

}  // namespace

std::string creativePage(const std::string& body, const std::string& script) {
  return "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><style>"
         "html, body { margin: 0; height: 100%; background: #fff; }</style></head><body>" +
         body + "<script>" + kBridgeScript + script + "</script></body></html>\n";
}

CreativeReports::CreativeReports(TNLTestServer& server) : server_(server) {
  server.on("POST", kReportPath, TNLTestServer::Response(204));
}

std::vector<CreativeReports::Call> CreativeReports::calls() const {
  std::map<int, Call> numbered;
  for (const auto& request : server_.requestsTo(kReportPath)) {
    const auto entry = nlohmann::json::parse(request.body, nullptr, false);
    if (!entry.is_object() || !entry.contains("seq")) {
      continue;
    }
    numbered[entry["seq"].get<int>()] = {entry.value("name", ""),
                                         entry.value("types", std::vector<std::string>{}),
                                         entry.value("args", nlohmann::json::array())};
  }
  std::vector<Call> ordered;
  for (const auto& [seq, call] : numbered) {
    if (seq != static_cast<int>(ordered.size())) {
      break;  // an earlier report is still on its way
    }
    ordered.push_back(call);
  }
  return ordered;
}

std::vector<std::string> CreativeReports::names() const {
  std::vector<std::string> result;
  for (const auto& call : calls()) {
    result.push_back(call.name);
  }
  return result;
}

std::vector<CreativeReports::Call> CreativeReports::named(const std::string& name) const {
  std::vector<Call> result;
  for (const auto& call : calls()) {
    if (call.name == name) {
      result.push_back(call);
    }
  }
  return result;
}

bool CreativeReports::waitFor(const std::string& name, size_t count,
                              std::chrono::milliseconds timeout) const {
  return TNLMainQueue::runUntil([&] { return named(name).size() >= count; }, timeout);
}

}  // namespace tnl_e2e
