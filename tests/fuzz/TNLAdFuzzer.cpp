// Ad JSON from a demand source into the ad factory, and the payload the creative receives.
#include <cstdlib>

#include "Ads/TNLAd.h"
#include "Ads/TNLAdFactory.h"
#include "Platform/Foundation/TNLFormat.h"
#include "Platform/Foundation/TNLJSON.h"
#include "TNLFuzzSupport.h"
#include "TarnelAd/TNLConstants.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  TNLFuzz::setUp();
  const TNLJson value = TNLJSON::parse(std::string_view(reinterpret_cast<const char*>(data), size));
  if (!value.is_object()) {
    return 0;
  }
  const auto ad = TNLAdFactory::generateAdFromDictionary(value);
  if (!ad) {
    return 0;
  }
  ad->adIsValid();
  // The complete ad always carries the SDK's own two entries, whatever the response held.
  if (!ad->fullAd().contains("sdkVars") || ad->fullAd()["sdkName"] != "Tarnel-1.0") {
    std::abort();
  }
  TNLFormat(TNL_BRIDGE_RECIEVEPAYLOAD_CMD, TNLJSON::serialize(ad->fullAd(), true));
  return 0;
}
