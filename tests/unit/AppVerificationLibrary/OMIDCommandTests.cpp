#include <gtest/gtest.h>

#include <vector>

#include "AppVerificationLibrary/OMIDAdSessionConfiguration.h"
#include "AppVerificationLibrary/OMIDCommand.h"
#include "AppVerificationLibrary/OMIDEventFilter.h"
#include "support/OMIDTestStatements.h"

namespace {

using OMIDTestStatements::wrapped;

// The texts that the session tests do not see.
TEST(OMIDTarnelCommand, CommandTexts) {
  const auto nativeOwned = OMIDTarnelAdSessionConfiguration::create(2, 9, nullptr);
  const std::vector<std::pair<std::string, std::string>> cases{
      // An owner without a name leaves its member out.
      {OMIDTarnelCommand::initCommand(*nativeOwned),
       R"(init({"impressionOwner":"native","isolateVerificationScripts":true}))"},
      {OMIDTarnelCommand::startSessionCommand("ID-1", TNLJson{{"k", "v"}}, std::nullopt),
       R"(startSession('ID-1',{"k":"v"}))"},
      {OMIDTarnelCommand::videoEventCommand("start", TNLJson{{"duration", 30.5}}),
       R"(publishVideoEvent('start',{"duration":30.5}))"},
      {OMIDTarnelCommand::errorCommand(5, "m"), "error(generic,m)"}};
  for (const auto& [command, call] : cases) {
    EXPECT_EQ(command, wrapped(call));
  }
}

TEST(OMIDTarnelEventFilter, EachEventOnceAndNothingAfterTheFinalOne) {
  OMIDTarnelEventFilter filter(OMIDTarnelSessionFinishEvent);
  EXPECT_FALSE(filter.acceptAnyEventWithRequiredEventCodes(OMIDTarnelSessionStartEvent));
  EXPECT_TRUE(filter.acceptEventWithCode(OMIDTarnelAdEventsCreatedEvent));
  EXPECT_FALSE(filter.acceptEventWithCode(OMIDTarnelAdEventsCreatedEvent));
  EXPECT_TRUE(filter.acceptEventWithCode(OMIDTarnelSessionStartEvent));
  EXPECT_TRUE(filter.acceptAnyEventWithRequiredEventCodes(OMIDTarnelSessionStartEvent));
  EXPECT_FALSE(filter.acceptAnyEventWithRequiredEventCodes(OMIDTarnelSessionStartEvent |
                                                           OMIDTarnelImpressionEvent));
  // A blocking code already accepted refuses the event without recording it.
  EXPECT_FALSE(filter.acceptEventWithCode(OMIDTarnelImpressionEvent, OMIDTarnelSessionStartEvent));
  EXPECT_TRUE(filter.acceptEventWithCode(OMIDTarnelImpressionEvent, 8));
  EXPECT_FALSE(filter.isFinalEventAccepted());

  EXPECT_TRUE(filter.acceptEventWithCode(OMIDTarnelSessionFinishEvent));
  EXPECT_TRUE(filter.isFinalEventAccepted());
  EXPECT_FALSE(filter.acceptEventWithCode(OMIDTarnelSessionFinishEvent));
  EXPECT_FALSE(filter.acceptEventWithCode(8));  // never seen, but after the final event
  EXPECT_FALSE(filter.acceptAnyEventWithRequiredEventCodes(0));
}

}  // namespace
