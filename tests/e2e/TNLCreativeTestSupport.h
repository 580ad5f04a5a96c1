#pragma once

#include <nlohmann/json.hpp>

#include <chrono>
#include <string>
#include <vector>

#include "Platform/Foundation/TNLJSON.h"
#include "TarnelAd/TarnelAd.h"
#include "e2e/TNLGtkTestSupport.h"
#include "support/TNLTestAdService.h"
#include "support/TNLTestServer.h"

// Creatives for the e2e tests of the ad flows: real pages served by the test's ad service that
// speak the bridge as a creative does, and report everything the library says to them back to
// the server, where the test reads it.
namespace tnl_e2e {

// An HTML creative: `body`, then the creative's side of the bridge, then `script`.
// Each call of receivePayload, ZENKO.* and omidBridge.* is reported to kReportPath as
// {seq, name, types, args}. `script` may use on(name, handler) (runs after such a call is
// reported), report(name, args) and bridge(action) (navigates to "bridge://" + action).
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

  explicit CreativeReports(TNLTestServer& server);

  // The reports numbered 0 to n - 1, without a gap (each travels on a connection of its own).
  std::vector<Call> calls() const;
  std::vector<std::string> names() const;
  std::vector<Call> named(const std::string& name) const;
  // Runs the main loop until `count` calls of that name have been counted.
  bool waitFor(const std::string& name, size_t count = 1) const;

 private:
  const TNLTestServer& server_;
};

// A host screen as the root of a real window (of windowFrame(), asked once the backend is in
// place), and the loopback ad service, whose one
// demand source answers with the HTML creative at /creative.html.
template <class Host>
class AdFlowTest : public GtkTest {
 protected:
  using Response = TNLTestServer::Response;
  using Names = std::vector<std::string>;

  void SetUp() override {
    GtkTest::SetUp();
    service.install();
    window = TNLWindow::create(windowFrame());
    window->setRootViewController(screen);
    window->makeKeyAndVisible();
    hostWindow = gtk_widget_get_toplevel(widgetOf(screen->view()));
    ASSERT_TRUE(waitUntilMapped(hostWindow));
    service.publishManifest({{0, "/ads"}});
    server.on("GET", "/ads", Response::json(adJSON()).after(TNLTestAdService::kContentDelay));
    ASSERT_TRUE(service.preloadManifest());
  }

  std::string adJSON() const {
    return TNLJSON::serialize({{"sdkType", "html"},
                               {"creative_tag", server.url("/creative.html")},
                               {"copy", {{"brandName", "Acme"}}},
                               {"payload", {{"level", 3}}}});
  }

  virtual TNLRect windowFrame() const = 0;

  void serveCreative(const std::string& body, const std::string& script) {
    server.on("GET", "/creative.html",
              Response(200, creativePage(body, script), "text/html")
                  .after(TNLTestAdService::kContentDelay));
  }

  TNLTestAdService service;
  TNLTestServer& server = service.server;
  CreativeReports reports{server};
  std::shared_ptr<Host> screen = std::make_shared<Host>();
  std::shared_ptr<TNLWindow> window;
  GtkWidget* hostWindow = nullptr;
};

}  // namespace tnl_e2e
