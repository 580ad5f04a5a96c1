// bridge:// navigations of a creative into the action parser and its delegate.
#include "Ads/TNLBridge.h"
#include "TNLFuzzSupport.h"
#include "TarnelAd/TNLBridgeDelegate.h"
#include "TarnelAd/TNLConstants.h"

namespace {

// Implements every operation, so that every action reaches a delegate call.
class Delegate : public TNLBridgeDelegate {
 public:
  void bridgeOpened(TNLBridge&) override {}
  void closeActionSentByBridge(TNLBridge&) override {}
  void openUrl(const std::string&, TNLBridge&) override {}
  void enableRedirectActionSentByBridge(TNLBridge&) override {}
  void displayOptinSentByBridge(TNLBridge&) override {}
  void videoOptinSentByBridge(TNLBridge&) override {}
  void deviceDataRequestSentByBridge(TNLBridge&) override {}
  void allowScroll(bool, TNLBridge&) override {}
  void expandPixels(float, bool, TNLBridge&) override {}
  void expandPercent(float, bool, TNLBridge&) override {}
  void collapseActionSentByBridge(TNLBridge&) override {}
  void rewardActionSentByBridge(TNLBridge&) override {}
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const auto delegate = std::make_shared<Delegate>();
  TNLBridge bridge;
  bridge.setDelegate(delegate);
  const std::string url =
      TNL_BRIDGE_CALLOUT + std::string(reinterpret_cast<const char*>(data), size);
  bridge.respondToBridgeAction(TNLBridge::actionForURL(url));
  return 0;
}
