#include <gtest/gtest.h>

#include "TNLLog.h"
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

}  // namespace
