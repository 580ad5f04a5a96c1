#pragma once

#include <nlohmann/json.hpp>

#include <chrono>
#include <string>
#include <vector>

#include "support/TNLTestServer.h"

// Creatives for the e2e tests of the ad flows: real pages served by the test's ad service that
// speak the bridge as a creative does, and report everything the library says to them back to
// the server, where the test reads it.
namespace tnl_e2e {

// An HTML creative: `body`, then the creative's side of the bridge, then `script`.
//
// The bridge side defines the global function receivePayload, the ZENKO object with every
// method the library calls on it, and an omidBridge with init, startSession, finishSession and
// setNativeViewHierarchy.
// Each call is reported to kReportPath as {seq, name, types, args}: name as the page was called
// ("receivePayload", "ZENKO.isAdVisible", "omidBridge.init"), the typeof of each argument and the
// arguments as JSON. `script` may use:
//   on(name, handler)    runs handler(...args) after a call of that name is reported;
//   report(name, args)   sends a report of its own (a promise of the request);
//   bridge(action)       sets location.href to "bridge://" + action, as creatives do.
std::string creativePage(const std::string& body, const std::string& script);

// What the page reported, in the order it received it.
class CreativeReports {
 public:
  static constexpr char kReportPath[] = "/report";

  struct Call {
    std::string name;
    std::vector<std::string> types;  // typeof of each argument
    nlohmann::json args;             // array
  };

  // Answers the page's reports on `server`.
  explicit CreativeReports(TNLTestServer& server);

  // The reports numbered 0 to n - 1, without a gap: each request travels on a connection of its
  // own, so a later one may arrive first; it is counted once those before it are in.
  std::vector<Call> calls() const;
  std::vector<std::string> names() const;
  // The calls of that name, in order.
  std::vector<Call> named(const std::string& name) const;
  // Runs the main loop until `count` calls of that name have been counted.
  bool waitFor(const std::string& name, size_t count = 1,
               std::chrono::milliseconds timeout = std::chrono::seconds(10)) const;

 private:
  const TNLTestServer& server_;
};

}  // namespace tnl_e2e
