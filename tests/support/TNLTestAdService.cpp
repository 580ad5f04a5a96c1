#include "support/TNLTestAdService.h"

#include <atomic>
#include <thread>

#include "Ads/Macros/TNLMacros.h"
#include "Manifest/TNLManifestHandler.h"
#include "Platform/Foundation/TNLJSON.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "TarnelAd/TNLConstants.h"
#include "TarnelAd/TNLSetup.h"

TNLTestAdService::TNLTestAdService(std::string appId) : appId_(std::move(appId)) {
  server.on("GET", kMonitorPath, TNLTestServer::Response(200));
}

void TNLTestAdService::install() {
  TNLSetup::setManifestBaseURL(server.baseURL());
  TNLSetup::setDeviceFacts(facts);
  TNLMacros::setValueInMacroDictionary(appId_, TNL_APPID_MACRO);
}

bool TNLTestAdService::preloadManifest() {
  const auto done = std::make_shared<std::atomic<int>>(0);
  TNLManifestHandler::retrieveManifestWithSuccess([done](const auto&) { *done = 1; },
                                                  [done](const auto&) { *done = -1; });
  TNLMainQueue::runUntil([&] { return *done != 0; }, std::chrono::seconds(10));
  return *done == 1 && waitForEvents(1);
}

void TNLTestAdService::publishManifest(const std::vector<Source>& sources, int ttl,
                                       std::optional<std::string> vastTemplateURI) {
  TNLJson list = TNLJson::array();
  for (const auto& source : sources) {
    list.push_back(
        {{"source", source.path},
         {"rank", source.rank},
         {"timeout", 5},
         {"autofetch", false},
         {"url", (source.path.starts_with("http") ? source.path : server.url(source.path)) +
                     "?z=%ZONE%&p=%PRODUCT%"}});
  }
  TNLJson manifest = {
      {"ttl", ttl},
      {"developer",
       {{"publisherid", "P1"},
        {"applicationid", appId_},
        {"applicationname", "Test App"},
        {"active", true}}},
      {"privacy", {{"coppa", false}, {"gdpr", false}}},
      {"monitoring",
       {{"loglevel", "info"},
        {"method", "GET"},
        {"baseuri", server.baseURL()},
        {"uri_content", std::string(kMonitorPath) + "?e=%EVENT_NAME%"}}},
      {"demandsources", {{"workflow", "waterfall"}, {"demandsource", list}}},
      {"vast_template_uri", vastTemplateURI.value_or(server.url(kTemplatePath))},
  };
  server.on("POST", manifestPath(), TNLTestServer::Response::json(TNLJSON::serialize(manifest)));
}

std::vector<std::string> TNLTestAdService::events() const {
  std::vector<std::string> names;
  for (const auto& request : server.requestsTo(kMonitorPath)) {
    names.push_back(request.query.substr(request.query.find('=') + 1));
  }
  return names;
}

bool TNLTestAdService::waitForEvents(size_t count, std::chrono::milliseconds timeout) const {
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  while (events().size() < count) {
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

std::vector<std::string> TNLTestAdService::queriesTo(const std::string& path) const {
  std::vector<std::string> queries;
  for (const auto& request : server.requestsTo(path)) {
    queries.push_back(request.query);
  }
  return queries;
}
