#include <gtest/gtest.h>

#include <chrono>
#include <regex>

#include "Ads/Macros/TNLMacros.h"
#include "Ads/Macros/TNLUrlParser.h"
#include "TarnelAd/TNLConstants.h"
#include "TarnelAd/TNLSetup.h"
#include "support/TNLTestDeviceFacts.h"

namespace {

using Orientation = TNLDeviceFacts::Orientation;

TEST(TNLUrlParser, FillsStoredAndPerCallValuesThenEncodesTheWholeText) {
  TNLTestDeviceFacts::install();
  const TNLUrlParser parser;
  const TNLMacroDict rewarded{{TNL_ZONE_MACRO, "Z1"}, {TNL_PRODUCT_MACRO, "2"}};
  EXPECT_EQ(parser.fillMacrosForUrl("https://ads.example/v1?z=%ZONE%&p=%PRODUCT%", rewarded),
            "https://ads.example/v1?z=Z1&p=2");
  // Without per-call values the stored (empty) ones are used.
  EXPECT_EQ(parser.fillMacrosForUrl("https://ads.example/v1?z=%ZONE%&m=%MODEL%", std::nullopt),
            "https://ads.example/v1?z=&m=x86_64");

  EXPECT_EQ(parser.fillMacrosForUrl("http://h/a b?q=%FOO%&e=%20", std::nullopt),
            "http://h/a%20b?q=%25FOO%25&e=%2520");
  // Values go in raw; only characters a query does not allow are encoded.
  EXPECT_EQ(
      parser.fillMacrosForUrl("http://h/?z=%ZONE%", TNLMacroDict{{TNL_ZONE_MACRO, "a&b=c+d e/é"}}),
      "http://h/?z=a&b=c+d%20e/%C3%A9");
  EXPECT_EQ(parser.fillMacrosForUrl("http://h/?ua=%USER_AGENT%", std::nullopt),
            "http://h/?ua=Game/2.1%20x86_64%20TestOS/12.4%20CFNetwork/8.5.0%20Darwin/6.1.0");
}

TEST(TNLUrlParser, QueryEncodingKeepsExactlyTheQueryCharacters) {
  std::string every;
  for (int c = 1; c < 128; ++c) {
    every.push_back(static_cast<char>(c));
  }
  const std::string encoded = TNLUrlParser::percentEncodeForQuery(every);
  std::string kept;
  for (size_t i = 0; i < encoded.size(); ++i) {
    if (encoded[i] == '%') {
      i += 2;
    } else {
      kept.push_back(encoded[i]);
    }
  }
  EXPECT_EQ(kept,
            "!$&'()*+,-./0123456789:;=?@ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopqrstuvwxyz~");
  EXPECT_EQ(TNLUrlParser::percentEncodeForQuery("#[]%\"<>\\^`{|}\x7f"),
            "%23%5B%5D%25%22%3C%3E%5C%5E%60%7B%7C%7D%7F");
}

TEST(TNLUrlParser, FreshValuesAreComputedOncePerCall) {
  const auto facts = TNLTestDeviceFacts::install();
  const TNLUrlParser parser;

  const std::string twice = parser.fillMacrosForUrl("http://h/?a=%RAND%&b=%RAND%", std::nullopt);
  std::smatch match;
  ASSERT_TRUE(std::regex_match(twice, match, std::regex(R"(http://h/\?a=(\d+)&b=(\d+))"))) << twice;
  EXPECT_EQ(match[1], match[2]);
  EXPECT_LE(std::stoull(match[1]), 4294967294ull);
  EXPECT_NE(parser.fillMacrosForUrl("%RAND%%RAND%", std::nullopt),
            parser.fillMacrosForUrl("%RAND%%RAND%", std::nullopt));
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  EXPECT_NEAR(std::stoll(parser.fillMacrosForUrl("%TIME_STAMP%", std::nullopt)),
              std::chrono::duration_cast<std::chrono::seconds>(now).count(), 2);

  // Anything but the two portraits is landscape.
  const std::pair<Orientation, const char*> orientations[] = {
      {Orientation::PortraitUpsideDown, "portrait"},
      {Orientation::FaceUp, "landscape"},
  };
  for (const auto& [orientation, word] : orientations) {
    facts->update([&](auto& v) { v.orientation = orientation; });
    EXPECT_EQ(parser.fillMacrosForUrl("o=%DEVICE_ORI%", std::nullopt), std::string("o=") + word);
  }

  // The connection is measured now, not read from the table's value.
  EXPECT_EQ(TNLMacros::sharedMacroDict().at(TNL_CONNECTIONTYPE_MACRO), "Wifi");
  facts->update([](auto& v) { v.flags = 0; });
  EXPECT_EQ(parser.fillMacrosForUrl("c=%CONN_TYPE%", std::nullopt), "c=No%20Connection");
}

}  // namespace
