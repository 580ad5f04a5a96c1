// URL templates from the manifest filled with the macro table and per-call values, then read as
// the HTTP layer reads addresses. Input: template, zone and product separated by '\n'.
#include "Ads/Macros/TNLUrlParser.h"
#include "Platform/Http/TNLURLRequest.h"
#include "TNLFuzzSupport.h"
#include "TarnelAd/TNLConstants.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  TNLFuzz::setUp();
  auto parts = TNLFuzz::split(data, size, "\n");
  parts.resize(3);
  const std::string url = TNLUrlParser().fillMacrosForUrl(
      parts[0], TNLMacroDict{{TNL_ZONE_MACRO, parts[1]}, {TNL_PRODUCT_MACRO, parts[2]}});
  TNLURLRequest::parseURL(url);
  TNLUrlParser().fillMacrosForString(parts[0]);
  return 0;
}
