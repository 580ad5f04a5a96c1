#include "e2e/TNLCreativeTestSupport.h"

#include <map>

#include "Platform/Foundation/TNLMainQueue.h"

namespace tnl_e2e {

namespace {

// Numbered in the order the page received them; the page answers through main-frame
// navigations to bridge://.
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
  const methods = (object, names) => Object.fromEntries(
      names.map((name) => [name, (...args) => received(object + '.' + name, args)]));
  window.ZENKO = methods('ZENKO', ['setVolume', 'isAdVisible', 'isScrollListenerSubscribed',
      'scroll', 'onDeviceData', 'orientationDidChange']);
  window.omidBridge = methods('omidBridge', ['init', 'startSession', 'finishSession',
      'setNativeViewHierarchy']);
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
  auto result = calls();
  std::erase_if(result, [&](const Call& call) { return call.name != name; });
  return result;
}

bool CreativeReports::waitFor(const std::string& name, size_t count) const {
  return TNLMainQueue::runUntil([&] { return named(name).size() >= count; });
}

}  // namespace tnl_e2e
