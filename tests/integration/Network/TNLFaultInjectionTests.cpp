#include <gtest/gtest.h>
#include <sys/resource.h>

#include <string>
#include <thread>

#include "TNLLog.h"
#include "TNLNetworkClient.h"
#include "TarnelAd/TNLConstants.h"
#include "TarnelAd/TarnelAd.h"
#include "support/TNLHostileServer.h"
#include "support/TNLLogCapture.h"
#include "support/TNLTestServer.h"
#include "support/TNLTestSignal.h"

using namespace std::chrono_literals;
using Behaviour = TNLHostileServer::Behaviour;
using Route = TNLHostileServer::Route;

namespace {

// Peak resident memory of this process so far (each test case runs in a process of its own).
long peakResidentMB() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss / 1024;
}

// Whatever the attacks send (gigabytes, unbounded), the request ends with one transport error and
// one log line naming the limit, and the process grows by a few bodies' worth at most (with room
// for a sanitizer's shadow memory). The bounds are tight, so that every attack ends within seconds.
TEST(FaultInjection, EachAttackEndsItsRequestWithOneTransportErrorAndOneLogLine) {
  TNLNetworkLimits limits;
  limits.maxResponseBytes = 1 << 20;
  limits.connectTimeout = 1s;
  limits.stallTimeout = 1s;
  limits.totalTimeout = 3s;
  limits.maxRedirects = 5;
  ASSERT_TRUE(TNLSetup::setNetworkLimits(limits));
  TNLLog::sharedLogger()->setShowLogs(true);
  TNLHostileServer hostile;
  TNLLogCapture log;
  const long baselineMB = peakResidentMB();

  struct Attack {
    const char* name;
    Route route;
    long code;
    const char* logged;  // the log line's reason, or null when no limit is involved
  };
  const Attack attacks[] = {
      {"endless", Route{Behaviour::endlessBody}, TNLURLError::DataLengthExceedsMaximum,
       "the response body passed 1048576 bytes"},
      {"gzip-bomb", Route{Behaviour::gzipBomb}, TNLURLError::DataLengthExceedsMaximum,
       "the response body passed 1048576 bytes"},
      {"cut-off", Route{Behaviour::cutOff, R"({"creative_tag":"x"})"},
       TNLURLError::NetworkConnectionLost, nullptr},
      // Never a second without data, never a whole body.
      {"drip", Route{Behaviour::drip}, TNLURLError::TimedOut, "not complete within 3000 ms"},
      {"silent", Route{Behaviour::silent}, TNLURLError::TimedOut, "no data for 1000 ms"},
      {"redirect-loop", Route{Behaviour::redirectLoop}, TNLURLError::HTTPTooManyRedirects,
       "more than 5 redirects"},
      {"refused", {}, TNLURLError::CannotConnectToHost, nullptr},
  };
  for (const auto& attack : attacks) {
    SCOPED_TRACE(attack.name);
    const std::string path = std::string("/") + attack.name;
    hostile.on(path, attack.route);
    const std::string url = attack.name == std::string("refused")
                                ? "http://127.0.0.1:" + std::to_string(TNLTestServer::closedPort())
                                : hostile.url(path);
    TNLTestSignal signal;
    TNLErrorPtr error;
    TNLNetworkClient::makeURLRequestWithURL(
        url, GET_METHOD, [&](const std::string&) { signal.record(); },
        [&](const TNLErrorPtr& e) { signal.record([&] { error = e; }); });
    ASSERT_TRUE(signal.waitFor(1, 10s));
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(signal.count(), 1u);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->domain(), TNLURLErrorDomain);
    EXPECT_EQ(error->code(), attack.code);
    const std::string line = "Network request to " + url + " stopped: ";
    EXPECT_EQ(log.count(line), attack.logged ? 1u : 0u);
    if (attack.logged) {
      EXPECT_TRUE(log.contains(line + attack.logged));
    }
  }
  // The self-redirect was followed five times after the first request.
  EXPECT_EQ(hostile.requestsTo("/redirect-loop"), 6u);
  EXPECT_LT(peakResidentMB() - baselineMB, 192);
}

}  // namespace
