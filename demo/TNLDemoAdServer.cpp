#include "TNLDemoAdServer.h"

#include <chrono>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <httplib.h>
#include <nlohmann/json.hpp>

#include "TNLDemoCreatives.h"

namespace {

using Json = nlohmann::ordered_json;

// The rewarded ad's clip, made at build time by scripts/make-demo-clip.sh.
std::string clip() {
  std::ifstream file(TNL_DEMO_CLIP, std::ios::binary);
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

// A VAST tracking pixel: the template page fills in the playhead ("[CONTENTPLAYHEAD]").
std::string pixel(const std::string& base, const std::string& event, const std::string& source) {
  return base + "/vast/pixel?event=" + event + "&source=" + source + "&playhead=[CONTENTPLAYHEAD]";
}

std::string wrapper(const std::string& id, const std::string& next, const std::string& base) {
  return R"(<?xml version="1.0" encoding="UTF-8"?>
<VAST version="3.0">
  <Ad id=")" +
         id + R"(">
    <Wrapper>
      <AdSystem>Tarnel demo exchange</AdSystem>
      <VASTAdTagURI><![CDATA[)" +
         next + R"(]]></VASTAdTagURI>
      <Impression><![CDATA[)" +
         base + "/vast/pixel?event=impression&source=" + id + R"(]]></Impression>
      <Creatives>
        <Creative>
          <Linear>
            <TrackingEvents>
              <Tracking event="complete"><![CDATA[)" +
         pixel(base, "complete", id) + R"(]]></Tracking>
            </TrackingEvents>
          </Linear>
        </Creative>
      </Creatives>
    </Wrapper>
  </Ad>
</VAST>
)";
}

std::string inlineAd(const std::string& base) {
  std::string tracking;
  for (const char* event : {"start", "firstQuartile", "midpoint", "thirdQuartile", "complete"}) {
    tracking += std::string("\n              <Tracking event=\"") + event + "\"><![CDATA[" +
                pixel(base, event, "inline") + "]]></Tracking>";
  }
  return R"(<?xml version="1.0" encoding="UTF-8"?>
<VAST version="3.0">
  <Ad id="tarnel-demo-video">
    <InLine>
      <AdSystem>Tarnel demo</AdSystem>
      <AdTitle>Tarnel demo video</AdTitle>
      <Error><![CDATA[)" +
         base + R"(/vast/pixel?event=error&source=inline&code=[ERRORCODE]]]></Error>
      <Impression><![CDATA[)" +
         base + R"(/vast/pixel?event=impression&source=inline]]></Impression>
      <Creatives>
        <Creative>
          <Linear>
            <Duration>00:00:04</Duration>
            <TrackingEvents>)" +
         tracking + R"(
            </TrackingEvents>
            <MediaFiles>
              <MediaFile delivery="progressive" type="video/mp4" width="640" height="360"><![CDATA[)" +
         base + R"(/media/clip.mp4]]></MediaFile>
            </MediaFiles>
          </Linear>
        </Creative>
      </Creatives>
    </InLine>
  </Ad>
</VAST>
)";
}

}  // namespace

TNLDemoAdServer::TNLDemoAdServer(std::string appId, EventSink onEvent)
    : appId_(std::move(appId)),
      onEvent_(std::move(onEvent)),
      server_(std::make_unique<httplib::Server>()) {
  addRoutes();
  // One request per connection, so that stopping never waits for an idle keep-alive read.
  server_->set_keep_alive_max_count(1);
  port_ = server_->bind_to_any_port("127.0.0.1");
  if (port_ <= 0) {
    throw std::runtime_error("the demo ad server could not bind to 127.0.0.1");
  }
  thread_ = std::thread([this] { server_->listen_after_bind(); });
  while (!server_->is_running()) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

TNLDemoAdServer::~TNLDemoAdServer() {
  server_->stop();
  if (thread_.joinable()) {
    thread_.join();
  }
}

std::string TNLDemoAdServer::baseURL() const {
  return "http://127.0.0.1:" + std::to_string(port_);
}

void TNLDemoAdServer::addRoutes() {
  // The manifest: three sources in rank order and the monitoring endpoint.
  server_->Post("/v4/manifest/" + appId_, [this](const httplib::Request&, httplib::Response& res) {
    const std::string base = baseURL();
    const Json manifest = {
        {"ttl", 300},
        {"developer",
         {{"publisherid", "tarnel-demo"},
          {"applicationid", appId_},
          {"applicationname", "Tarnel demo"},
          {"active", true}}},
        {"privacy", {{"coppa", false}, {"gdpr", false}}},
        {"viewability", {{"tarnel-om", {{"active", true}, {"included", true}}}}},
        {"monitoring",
         {{"loglevel", "info"},
          {"method", "GET"},
          {"baseuri", base},
          {"uri_content", "/monitor?event=%EVENT_NAME%&app=%APP_ID%&session=%SESSION_ID%"}}},
        {"demandsources",
         {{"workflow", "waterfall"},
          {"demandsource",
           Json::array({
               {{"source", "unavailable"},
                {"rank", 0},
                {"timeout", 5},
                {"autofetch", false},
                {"url", base + "/ads/unavailable?zone=%ZONE%&product=%PRODUCT%"}},
               {{"source", "html"},
                {"rank", 1},
                {"timeout", 5},
                {"autofetch", false},
                {"url", base + "/ads/html?zone=%ZONE%&product=%PRODUCT%&app=%APP_ID%"}},
               {{"source", "video"},
                {"rank", 2},
                {"timeout", 5},
                {"autofetch", false},
                {"url", base + "/ads/vast?zone=%ZONE%&product=%PRODUCT%"}},
           })}}},
        {"vast_template_uri", base + "/creatives/vast-template.html"},
    };
    res.set_content(manifest.dump(2), "application/json");
  });

  // A source that is down: its answer is neither an ad record nor VAST.
  server_->Get("/ads/unavailable", [](const httplib::Request&, httplib::Response& res) {
    res.status = 503;
    res.set_content("service unavailable", "text/plain");
  });

  // HTML ads for interstitials (product 1) and banners (product 3); no rewarded HTML ad, so a
  // rewarded request falls through to the video source.
  server_->Get("/ads/html", [this](const httplib::Request& req, httplib::Response& res) {
    const std::string product = req.get_param_value("product");
    if (product != "1" && product != "3") {
      res.status = 204;
      return;
    }
    const bool banner = product == "3";
    const Json ad = {
        {"sdkType", "html"},
        {"creative_tag",
         baseURL() + (banner ? "/creatives/banner.html" : "/creatives/interstitial.html")},
        {"copy",
         {{"brandName", "Tarnel Demo"},
          {"headline", banner ? "Banners that behave" : "Ads that load fast"}}},
        {"assets", {{"background", banner ? "#ff7e5f" : "#2b5876"}}},
        {"flags", {{"demo", true}}},
        {"trackers", Json::object()},
        {"payload", {{"zone", req.get_param_value("zone")}}},
    };
    res.set_content(ad.dump(), "application/json");
  });

  // Video: two wrappers, then the inline ad.
  server_->Get("/ads/vast", [this](const httplib::Request&, httplib::Response& res) {
    res.set_content(wrapper("exchange", baseURL() + "/vast/wrapper-2", baseURL()),
                    "application/xml");
  });
  server_->Get("/vast/wrapper-2", [this](const httplib::Request&, httplib::Response& res) {
    res.set_content(wrapper("network", baseURL() + "/vast/inline", baseURL()), "application/xml");
  });
  server_->Get("/vast/inline", [this](const httplib::Request&, httplib::Response& res) {
    res.set_content(inlineAd(baseURL()), "application/xml");
  });
  // VAST pixels, reported as the event "VAST" with their query (event, source, playhead).
  server_->Get("/vast/pixel", [this](const httplib::Request& req, httplib::Response& res) {
    report("VAST", req);
    res.status = 204;
  });
  // The clip; cpp-httplib answers range requests, which media players make.
  server_->Get("/media/clip.mp4", [](const httplib::Request&, httplib::Response& res) {
    res.set_content(clip(), "video/mp4");
  });

  server_->Get("/creatives/interstitial.html", [](const httplib::Request&, httplib::Response& res) {
    res.set_content(TNLDemoCreatives::interstitialPage(), "text/html; charset=utf-8");
  });
  server_->Get("/creatives/banner.html", [](const httplib::Request&, httplib::Response& res) {
    res.set_content(TNLDemoCreatives::bannerPage(), "text/html; charset=utf-8");
  });
  server_->Get("/creatives/vast-template.html",
               [](const httplib::Request&, httplib::Response& res) {
                 res.set_content(TNLDemoCreatives::vastTemplatePage(), "text/html; charset=utf-8");
               });

  server_->Get("/monitor", [this](const httplib::Request& req, httplib::Response& res) {
    report(req.get_param_value("event"), req);
    res.status = 204;
  });
}

void TNLDemoAdServer::report(const std::string& event, const httplib::Request& request) const {
  if (onEvent_) {
    const auto query = request.target.find('?');
    onEvent_(event, query == std::string::npos ? "" : request.target.substr(query + 1));
  }
}
