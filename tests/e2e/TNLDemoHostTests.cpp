#include <gtest/gtest.h>

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "Platform/Foundation/TNLJSON.h"
#include "Platform/Foundation/TNLStrings.h"
#include "support/TNLHostileServer.h"
#include "support/TNLTestServer.h"

namespace {

// AddressSanitizer's shadow memory makes any bound on a whole GTK host's peak meaningless.
#if defined(__SANITIZE_ADDRESS__)
#define TNL_ADDRESS_SANITIZER
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TNL_ADDRESS_SANITIZER
#endif
#endif

using Lines = std::vector<std::string>;
using Response = TNLTestServer::Response;

struct DemoRun {
  Lines lines;
  Lines errors;
  int exitCode = -1;
};

Lines nonEmptyLines(const std::string& text) {
  Lines lines = TNLStrings::split(text, "\n");
  std::erase(lines, "");
  return lines;
}

// Runs the demo host with the arguments; its stdout and stderr lines and its exit code.
DemoRun runDemo(const std::string& arguments) {
  const auto errors =
      std::filesystem::temp_directory_path() / ("tarnel-demo-" + std::to_string(::getpid()));
  FILE* pipe = popen((TNL_DEMO_BINARY " " + arguments + " 2>" + errors.string()).c_str(), "r");
  std::string output;
  std::array<char, 512> buffer{};
  while (pipe && fgets(buffer.data(), static_cast<int>(buffer.size()), pipe) != nullptr) {
    output += buffer.data();
  }
  const int status = pipe ? pclose(pipe) : -1;
  std::ifstream file(errors);
  DemoRun run{nonEmptyLines(output),
              nonEmptyLines(std::string(std::istreambuf_iterator<char>(file), {})),
              WIFEXITED(status) ? WEXITSTATUS(status) : -1};
  std::filesystem::remove(errors);
  return run;
}

Lines allFormats(const std::string& zone) {
  return {"ready interstitial " + zone, "closed interstitial " + zone, "ready rewarded " + zone,
          "rewarded rewarded " + zone,  "closed rewarded " + zone,     "ready banner " + zone,
          "closed banner " + zone};
}

// The pixels of the image whose colour is near `rgb`.
size_t pixelsNear(const std::filesystem::path& png, std::array<int, 3> rgb) {
  GdkPixbuf* image = gdk_pixbuf_new_from_file(png.c_str(), nullptr);
  if (image == nullptr) {
    return 0;
  }
  const int channels = gdk_pixbuf_get_n_channels(image), stride = gdk_pixbuf_get_rowstride(image);
  const guchar* pixels = gdk_pixbuf_read_pixels(image);
  size_t count = 0;
  for (int y = 0; y < gdk_pixbuf_get_height(image); ++y) {
    for (int x = 0; x < gdk_pixbuf_get_width(image); ++x) {
      const guchar* p = pixels + y * stride + x * channels;
      count += std::abs(p[0] - rgb[0]) + std::abs(p[1] - rgb[1]) + std::abs(p[2] - rgb[2]) < 60;
    }
  }
  g_object_unref(image);
  return count;
}

TEST(DemoHost, TheBundledServiceShowsEveryFormatPlaysTheClipAndScreenshotsIt) {
  const auto shots =
      std::filesystem::temp_directory_path() / ("tarnel-demo-shots-" + std::to_string(::getpid()));
  const DemoRun run = runDemo("--timeout 60 --screenshot " + shots.string());
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.lines, allFormats("demo-zone"));
  for (const char* format : {"interstitial", "rewarded", "banner"}) {
    // A PNG file, and not a blank one (which compresses to almost nothing).
    const auto shot = shots / (std::string(format) + ".png");
    std::ifstream file(shot, std::ios::binary);
    std::array<char, 8> signature{};
    file.read(signature.data(), signature.size());
    EXPECT_EQ(std::string(signature.data(), 8), "\x89PNG\r\n\x1a\n") << format;
    EXPECT_TRUE(std::filesystem::exists(shot) && std::filesystem::file_size(shot) > 10000)
        << format;
  }

  // The rewarded ad's template page reports the clip with VAST pixels: every step once and in
  // order, the video's playhead moving on between them, and no error pixel.
  const std::string prefix = "ad service: event VAST event=";
  Lines events;
  std::vector<double> playheads;
  for (const auto& line : run.errors) {
    if (line.rfind(prefix, 0) != 0 || line.find("source=inline") == std::string::npos) {
      continue;
    }
    events.push_back(line.substr(prefix.size(), line.find('&') - prefix.size()));
    const auto playhead = line.find("playhead=00%3A00%3A");  // HH:MM:SS.mmm, URL-encoded
    if (playhead != std::string::npos) {
      playheads.push_back(std::stod(line.substr(playhead + 19)));
    }
  }
  // The impression and the start leave together, on connections of their own, and may arrive
  // in either order.
  if (events.size() >= 2 && events[0] == "start") {
    std::swap(events[0], events[1]);
  }
  EXPECT_EQ(events, (Lines{"impression", "start", "firstQuartile", "midpoint", "thirdQuartile",
                           "complete"}));
  ASSERT_EQ(playheads.size(), 5u);
  EXPECT_EQ(std::adjacent_find(playheads.begin(), playheads.end(), std::greater_equal<>()),
            playheads.end())
      << "the playhead moves on";
  EXPECT_GE(playheads.back(), 3.9);

  // Taken while it plays, in the ad's cover window: the clip's colour bars are on screen.
  for (const auto& bar :
       {std::array{255, 255, 0}, std::array{0, 255, 255}, std::array{255, 0, 255}}) {
    EXPECT_GT(pixelsNear(shots / "rewarded.png", bar), 2000u);
  }
  std::filesystem::remove_all(shots);
}

// A creative of this test's own ad service: it runs `actions` once it has its payload.
Response creative(const std::string& actions) {
  return Response(200,
                  "<html><body style='background:#396'><script>"
                  "window.ZENKO = { isAdVisible: function(){}, setVolume: function(){} };"
                  "window.receivePayload = function () {" +
                      actions + "};</script></body></html>",
                  "text/html");
}

// An ad service of the test's own: one source for every format (VAST for rewarded), creatives
// that close themselves, and a monitoring endpoint on a host of its own (as monitoring usually
// is) that answers after `monitorDelay`. The first ad answer waits as long: the process's first
// manifest fetches race the first load, and the trackers must have their monitoring section
// before that load's OnAdReturned, or it is dropped by design.
struct OtherService {
  explicit OtherService(std::chrono::milliseconds monitorDelay = {}) {
    server.on("GET", "/ads", [this, monitorDelay](const TNLTestServer::Request& request) {
      return answer(request).after(adAnswers++ == 0 ? monitorDelay : std::chrono::milliseconds{});
    });
    // They close themselves soon, the video template after granting its reward.
    const auto closeAfter = [](int ms) {
      return "setTimeout(() => { location.href = 'bridge://close'; }, " + std::to_string(ms) + ");";
    };
    server.on("GET", "/interstitial.html", creative(closeAfter(300)));
    server.on("GET", "/banner.html", creative(closeAfter(300)));
    server.on("GET", "/template.html",
              creative("setTimeout(() => { location.href = 'bridge://reward'; }, 200);" +
                       closeAfter(600)));
    monitor.on("GET", "/monitor", Response(204).after(monitorDelay));
    publish({server.url("/ads")});
  }

  Response answer(const TNLTestServer::Request& request) const {
    if (request.query.find("p=2") != std::string::npos) {
      return Response::xml(
          "<VAST version=\"3.0\"><Ad><InLine><AdSystem>t</AdSystem><AdTitle>t</AdTitle>"
          "<Creatives><Creative><Linear><MediaFiles><MediaFile type=\"video/mp4\" "
          "delivery=\"progressive\">" +
          server.url("/clip.mp4") +
          "</MediaFile></MediaFiles></Linear></Creative></Creatives></InLine></Ad></VAST>");
    }
    const bool banner = request.query.find("p=3") != std::string::npos;
    return Response::json(TNLJSON::serialize(
        {{"creative_tag", server.url(banner ? "/banner.html" : "/interstitial.html")}}));
  }

  // The waterfall: one source per URL, in rank order.
  void publish(const std::vector<std::string>& sources) {
    TNLJson list = TNLJson::array();
    for (const auto& url : sources) {
      list.push_back(
          {{"source", url}, {"rank", list.size()}, {"url", url + "?z=%ZONE%&p=%PRODUCT%"}});
    }
    const TNLJson manifest = {{"ttl", 600},
                              {"monitoring",
                               {{"method", "GET"},
                                {"baseuri", monitor.baseURL()},
                                {"uri_content", "/monitor?e=%EVENT_NAME%"}}},
                              {"demandsources", {{"demandsource", list}}},
                              {"vast_template_uri", server.url("/template.html")}};
    server.on("POST", "/v4/manifest/other-app", Response::json(TNLJSON::serialize(manifest)));
  }

  DemoRun run(const std::string& arguments = "") {
    return runDemo("--timeout 60 --app-id other-app --zone Z9 --manifest-base " + server.baseURL() +
                   " " + arguments);
  }

  // The events received, sorted, without OnManifestLoaded.
  Lines events() const {
    Lines names;
    for (const auto& request : monitor.requestsTo("/monitor")) {
      names.push_back(request.query.substr(2));
    }
    std::erase(names, "OnManifestLoaded");
    std::sort(names.begin(), names.end());
    return names;
  }

  std::atomic<int> adAnswers{0};
  TNLTestServer server;
  TNLTestServer monitor;
};

// The host exits right after the last close, and the monitoring server takes a second to answer
// each tracker: every one still arrives, the last close included. (The first load's
// OnAdRequested goes before the trackers have their monitoring section and is dropped by design;
// so may the OnManifestLoaded of the first two fetches, depending on which completes first, so
// that event is not counted.)
TEST(DemoHost, EveryTrackerReachesASlowMonitoringServerBeforeTheHostExits) {
  struct Case {
    std::string arguments;
    Lines lines;
    Lines events;
  };
  const Case cases[] = {
      {"",
       allFormats("Z9"),
       {"OnAdClosed", "OnAdClosed", "OnAdClosed", "OnAdReady", "OnAdReady", "OnAdRequested",
        "OnAdRequested", "OnAdReturned", "OnAdReturned", "OnAdReturned", "OnAdRewarded",
        "OnAdShowing", "OnAdShowing", "OnAdShowing"}},
      {"--format interstitial",
       {"ready interstitial Z9", "closed interstitial Z9"},
       {"OnAdClosed", "OnAdReady", "OnAdReturned", "OnAdShowing"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.arguments);
    OtherService service(std::chrono::seconds(1));
    const DemoRun run = service.run(c.arguments);
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.lines, c.lines);
    EXPECT_EQ(service.events(), c.events);
  }
}

// Sources that send an endless body, a gzip bomb, JSON nested a million deep and a VAST entity
// fan-out come first: each fails like any failed source, and every format still shows from the
// good one, in a host that never grows past a few hundred megabytes.
TEST(DemoHost, HostileSourcesAheadOfAGoodOneCostLittleMemory) {
  OtherService service;
  TNLHostileServer hostile;
  using Behaviour = TNLHostileServer::Behaviour;
  std::string references;
  for (int i = 0; i < 20'000; ++i) {
    references += "&e;";
  }
  hostile.on("/endless", {Behaviour::endlessBody});
  hostile.on("/gzip-bomb", {Behaviour::gzipBomb});
  hostile.on("/deep-json",
             {Behaviour::body, R"({"creative_tag":")" + service.server.url("/interstitial.html") +
                                   R"(","deep":)" + std::string(1'000'000, '[') +
                                   std::string(1'000'000, ']') + "}"});
  hostile.on("/entities",
             {Behaviour::body,
              R"(<!DOCTYPE VAST [<!ENTITY e ")" + std::string(60'000, 'A') +
                  R"(">]><VAST version="3.0"><Ad><InLine><Creatives><Creative><Linear>)"
                  R"(<MediaFiles><MediaFile type="video/mp4">)" +
                  references +
                  "</MediaFile></MediaFiles></Linear></Creative></Creatives>"
                  "</InLine></Ad></VAST>",
              "application/xml"});
  service.publish({hostile.url("/endless"), hostile.url("/gzip-bomb"), hostile.url("/deep-json"),
                   hostile.url("/entities"), service.server.url("/ads")});

  const DemoRun run = service.run();
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.lines, allFormats("Z9"));
  for (const char* path : {"/endless", "/gzip-bomb", "/deep-json", "/entities"}) {
    EXPECT_EQ(hostile.requestsTo(path), 3u) << path;
  }
#ifndef TNL_ADDRESS_SANITIZER
  rusage children{};
  getrusage(RUSAGE_CHILDREN, &children);
  EXPECT_LT(children.ru_maxrss / 1024, 250) << "peak resident MB of the demo host";
#endif
}

}  // namespace
