// A demand source's answer into the path that decides JSON or VAST and runs the VAST workflow.
// The input is the answer, then the answers to the wrapper targets it leads to, separated by
// "\n--next--\n"; nothing reaches the network.
#include <cstdlib>

#include "Ads/TNLAd.h"
#include "Ads/TNLAdClient.h"
#include "TNLFuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const auto session = TNLFuzz::setUp();
  auto parts = TNLFuzz::split(data, size, "\n--next--\n");
  const std::string response = std::move(parts.front());
  parts.erase(parts.begin());
  session->answerWith(std::move(parts));
  TNLAdClient().generateAdFromData(
      response,
      [](const std::shared_ptr<TNLAd>& ad) {
        // A VAST ad's document reaches the page on one line.
        if (ad && ad->isVast() && ad->xml().find('\n') != std::string::npos) {
          std::abort();
        }
      },
      [](const TNLErrorPtr&) {});
  return 0;
}
