#include <gtest/gtest.h>

#include <regex>

#include "Ads/Macros/TNLMacros.h"
#include "Ads/Macros/TNLUrlParser.h"
#include "TNLNetworkClient.h"
#include "TarnelAd/TNLConstants.h"
#include "TarnelAd/TNLSetup.h"
#include "support/TNLTestDeviceFacts.h"
#include "support/TNLTestServer.h"

namespace {

// Fills the template, GETs it and returns the query the server saw.
std::string queryAsReceived(TNLTestServer& server, const std::string& path,
                            const std::string& templateQuery,
                            const std::optional<TNLMacroDict>& individual = std::nullopt) {
  const std::string url =
      TNLUrlParser().fillMacrosForUrl(server.url(path) + "?" + templateQuery, individual);
  const size_t before = server.requestsTo(path).size();
  TNLNetworkClient::makeURLRequestWithURL(
      url, GET_METHOD, [](const std::string&) {}, [](const TNLErrorPtr&) {});
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (server.requestsTo(path).size() == before && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  const auto requests = server.requestsTo(path);
  return requests.size() > before ? requests.back().query : "<no request>";
}

TEST(TNLUrlFilling, FilledUrlsReachTheServerExactlyAsEncoded) {
  TNLTestDeviceFacts::install();
  TNLTestServer server;

  const TNLMacroDict rewarded{{TNL_ZONE_MACRO, "Z1"}, {TNL_PRODUCT_MACRO, "2"}};
  EXPECT_EQ(queryAsReceived(server, "/ad", "z=%ZONE%&p=%PRODUCT%", rewarded), "z=Z1&p=2");
  EXPECT_EQ(queryAsReceived(server, "/ad", "q=%FOO%"), "q=%25FOO%25");
  EXPECT_EQ(queryAsReceived(server, "/ad", "v=%20"), "v=%2520");
  EXPECT_EQ(queryAsReceived(server, "/ad", "z=%ZONE%", TNLMacroDict{{TNL_ZONE_MACRO, "a&b=c+d"}}),
            "z=a&b=c+d");
  EXPECT_EQ(queryAsReceived(server, "/ad", "m=%MODEL%&os=%OS%&res=%DEVICE_RES%"),
            "m=x86_64&os=iOS&res=667X375");

  const std::string random = queryAsReceived(server, "/ad", "a=%RAND%&b=%RAND%");
  std::smatch match;
  ASSERT_TRUE(std::regex_match(random, match, std::regex(R"(a=(\d+)&b=(\d+))"))) << random;
  EXPECT_EQ(match[1], match[2]);
}

}  // namespace
