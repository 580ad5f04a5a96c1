// bridge:// navigations of a creative into the action parser and its delegate.
#include <cstdlib>

#include "Ads/TNLBridge.h"
#include "TNLFuzzSupport.h"
#include "TarnelAd/TNLConstants.h"
#include "support/TNLTestBridgeJournal.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // Implements every operation, so that every action can reach a delegate call.
  static const auto journal = std::make_shared<TNLTestBridgeJournal>();
  journal->calls.clear();
  TNLBridge bridge;
  bridge.setDelegate(journal);
  const std::string url =
      TNL_BRIDGE_CALLOUT + std::string(reinterpret_cast<const char*>(data), size);
  bridge.respondToBridgeAction(TNLBridge::actionForURL(url));
  // One navigation is at most one action.
  if (journal->calls.size() > 1) {
    std::abort();
  }
  return 0;
}
