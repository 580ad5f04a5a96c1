#pragma once

#include <string>

// The demo's creatives: HTML pages that receive their payload, play for a few seconds and close
// themselves through the bridge. The rewarded one plays the VAST ad's clip, requests the
// document's tracking pixels as it goes (its error pixel when the clip cannot play) and grants its
// reward when the clip has ended, before closing.
namespace TNLDemoCreatives {

// A full-screen HTML creative.
std::string interstitialPage();
// The template page into which VAST video ads are placed; the library fills its placeholders.
std::string vastTemplatePage();
// An inline banner creative.
std::string bannerPage();

}  // namespace TNLDemoCreatives
