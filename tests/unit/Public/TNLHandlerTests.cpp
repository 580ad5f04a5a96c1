#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Ads/Macros/TNLMacros.h"
#include "Manifest/TNLManifestHandler.h"
#include "Platform/Foundation/TNLException.h"
#include "TarnelAd/TNLConstants.h"
#include "TarnelAd/TNLHandler.h"
#include "TarnelAd/TNLSetup.h"
#include "support/TNLTestDeviceFacts.h"

namespace {

class HostingContext : public TNLTarnelContext {
 public:
  std::string applicationID() const override { return "HOSTED-APP"; }
  std::shared_ptr<const TNLAdConfiguration> adConfiguration() const override {
    // A complete manifest: were it installed, the holder would report it valid for an hour.
    return std::make_shared<TNLAdConfiguration>(nlohmann::ordered_json::parse(R"({
      "ttl": 3600,
      "developer": {"publisherid": "P", "applicationid": "HOSTED-APP", "active": true},
      "demandsources": {"workflow": "waterfall", "demandsource": [
        {"source": "s", "rank": 0, "timeout": 5, "autofetch": false, "url": "http://s.test/"}]}
    })"));
  }
};

TEST(TNLHandler, AFetchedConfigurationFailsAtTheApplicationIDAndInstallsNothing) {
  TNLTestDeviceFacts::install();
  TNLMacros::setValueInMacroDictionary("FACADE-APP", TNL_APPID_MACRO);
  const TNLMacroDict before = TNLMacros::sharedMacroDict();

  // Whatever handler receives the calls, the context is the shared handler's.
  TNLHandler other;
  const auto context = std::make_shared<HostingContext>();
  other.initializeWithTarnelContext(context);
  EXPECT_EQ(TNLHandler::sharedHandler()->context(), context);

  try {
    other.onDidFetchConfiguration();
    FAIL() << "the application ID has no attribute to go to";
  } catch (const TNLException& error) {
    EXPECT_EQ(error.name(), TNLUndefinedKeyException);
    EXPECT_NE(error.reason().find("not key value coding-compliant for the key %APP_ID%"),
              std::string::npos)
        << error.reason();
  }
  EXPECT_EQ(TNLManifestHandler::sharedHandler()->manifest(), nullptr);
  EXPECT_EQ(TNLMacros::sharedMacroDict(), before);
}

}  // namespace
