#include <gtest/gtest.h>

#include <glib.h>

#include <string>
#include <utility>
#include <vector>

#include "TNLLog.h"
#include "TarnelAd/TNLInterstitialAd.h"
#include "support/TNLLogCapture.h"

namespace {

TEST(TNLLog, OffPrintsNothingNotEvenTheMisformatLine) {
  TNLLogCapture capture;
  auto logger = TNLLog::sharedLogger();
  EXPECT_FALSE(logger->showLogs());
  logger->log("message");
  logger->log("%@ %@", 1);
  logger->log("%@", 1, 2);
  EXPECT_TRUE(capture.lines().empty());
}

TEST(TNLLog, OnPrintsMessagesLiterallyAndFillsFormats) {
  TNLLogCapture capture;
  auto logger = TNLLog::sharedLogger();
  logger->showTNLLogs(true);
  logger->log("rate is 5%d");
  logger->log("Failed to load full screen ad due to exception: %@", std::runtime_error("boom"));
  logger->log("%@ and %@", "a", "b");
  logger->log("%@/%@/%@", 1, 2, 3);
  EXPECT_EQ(capture.lines(), (std::vector<std::string>{
                                 "rate is 5%d",
                                 "Failed to load full screen ad due to exception: boom",
                                 "a and b",
                                 "1/2/3",
                             }));
}

TEST(TNLLog, TooFewObjectsPrintTheMisformatLine) {
  TNLLogCapture capture;
  auto logger = TNLLog::sharedLogger();
  logger->setShowLogs(true);
  EXPECT_NO_THROW(logger->log("%@ %@", "only"));
  ASSERT_EQ(capture.lines().size(), 1u);
  EXPECT_EQ(capture.lines()[0].rfind("Misformatted TNLLog: %@ %@\nException: ", 0), 0u);
}

// GLib's writer is the host's to choose: what it hears, by log domain and message. Set once per
// process (every case runs in its own).
std::vector<std::pair<std::string, std::string>> glibMessages;

GLogWriterOutput recordMessage(GLogLevelFlags level, const GLogField* fields, gsize count,
                               gpointer) {
  std::string domain, message;
  for (gsize i = 0; i < count; ++i) {
    const std::string key = fields[i].key;
    if (key == "GLIB_DOMAIN" || key == "MESSAGE") {
      (key == "MESSAGE" ? message : domain) = static_cast<const char*>(fields[i].value);
    }
  }
  if ((level & G_LOG_LEVEL_MESSAGE) != 0) {
    glibMessages.emplace_back(domain, message);
  }
  return G_LOG_WRITER_HANDLED;
}

TEST(TNLLog, PlatformLinesReachTheHostsGLibWriterUnderTheLibraryDomain) {
  g_log_set_writer_func(recordMessage, nullptr, nullptr);
  TNLLog::sharedLogger()->showTNLLogs(false);
  TNLLog::sharedLogger()->log("switched off");
  TNLInterstitialAd::loadInterstitialAdForZone("zone");  // no delegate: always printed
  TNLLog::sharedLogger()->showTNLLogs(true);
  TNLLog::sharedLogger()->log("switched on");
  ASSERT_EQ(glibMessages.size(), 2u);
  EXPECT_EQ(glibMessages[0].first, "TarnelAd");
  EXPECT_EQ(glibMessages[0].second.rfind("Need to set delegate for TNLInterstitialAd using", 0),
            0u);
  EXPECT_EQ(glibMessages[1], std::make_pair(std::string("TarnelAd"), std::string("switched on")));
}

}  // namespace
