#include <gtest/gtest.h>

#include <glib.h>

#include <map>
#include <string>
#include <vector>

#include "TNLLog.h"
#include "TarnelAd/TNLInterstitialAd.h"
#include "support/TNLLogCapture.h"

namespace {

TEST(TNLLog, PrintsOnlyWhenOnFillingFormatsOrNamingTheMisformat) {
  TNLLogCapture capture;
  auto logger = TNLLog::sharedLogger();
  logger->log("%@ %@", 1);  // off: not even the misformat line
  EXPECT_TRUE(capture.lines().empty());

  logger->showTNLLogs(true);
  logger->log("rate is 5%d");
  logger->log("Failed due to exception: %@", std::runtime_error("boom"));
  logger->log("%@/%@/%@", 1, "b", 3);
  EXPECT_NO_THROW(logger->log("%@ %@", "only"));
  const auto lines = capture.lines();
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(std::vector<std::string>(lines.begin(), lines.begin() + 3),
            (std::vector<std::string>{"rate is 5%d", "Failed due to exception: boom", "1/b/3"}));
  EXPECT_EQ(lines[3].rfind("Misformatted TNLLog: %@ %@\nException: ", 0), 0u);
}

// GLib's writer is the host's to choose: what it hears, as "domain: message". Set once per
// process (every case runs in its own).
std::vector<std::string> glibMessages;

GLogWriterOutput recordMessage(GLogLevelFlags level, const GLogField* fields, gsize count,
                               gpointer) {
  std::map<std::string, std::string> field;
  for (gsize i = 0; i < count; ++i) {
    field[fields[i].key] = fields[i].length < 0 ? static_cast<const char*>(fields[i].value) : "";
  }
  if ((level & G_LOG_LEVEL_MESSAGE) != 0) {
    glibMessages.push_back(field["GLIB_DOMAIN"] + ": " + field["MESSAGE"]);
  }
  return G_LOG_WRITER_HANDLED;
}

TEST(TNLLog, PlatformLinesReachTheHostsGLibWriterUnderTheLibraryDomain) {
  g_log_set_writer_func(recordMessage, nullptr, nullptr);
  TNLLog::sharedLogger()->log("switched off");
  TNLInterstitialAd::loadInterstitialAdForZone("zone");  // no delegate: always printed
  TNLLog::sharedLogger()->showTNLLogs(true);
  TNLLog::sharedLogger()->log("switched on");
  ASSERT_EQ(glibMessages.size(), 2u);
  EXPECT_EQ(glibMessages[0].rfind("TarnelAd: Need to set delegate for TNLInterstitialAd using", 0),
            0u);
  EXPECT_EQ(glibMessages[1], "TarnelAd: switched on");
}

}  // namespace
