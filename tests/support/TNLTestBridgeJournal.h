#pragma once

#include <string>
#include <vector>

#include "Ads/TNLBridge.h"

// Writes every bridge delegate call into a journal, e.g. "expandPixels 300 touch".
class TNLTestBridgeJournal : public TNLBridgeDelegate {
 public:
  void bridgeOpened(TNLBridge&) override { calls.push_back("opened"); }
  void closeActionSentByBridge(TNLBridge&) override { calls.push_back("close"); }
  void openUrl(const std::string& url, TNLBridge&) override { calls.push_back("open " + url); }
  void enableRedirectActionSentByBridge(TNLBridge&) override { calls.push_back("enableRedirect"); }
  void displayOptinSentByBridge(TNLBridge&) override { calls.push_back("optin display"); }
  void videoOptinSentByBridge(TNLBridge&) override { calls.push_back("optin video"); }
  void deviceDataRequestSentByBridge(TNLBridge&) override { calls.push_back("deviceData"); }
  void allowScroll(bool allow, TNLBridge&) override {
    calls.push_back(std::string("allowScroll ") + (allow ? "yes" : "no"));
  }
  void expandPixels(float pixels, bool touch, TNLBridge&) override {
    calls.push_back("expandPixels " + number(pixels) + (touch ? " touch" : ""));
  }
  void expandPercent(float percent, bool touch, TNLBridge&) override {
    calls.push_back("expandPercent " + number(percent) + (touch ? " touch" : ""));
  }
  void collapseActionSentByBridge(TNLBridge&) override { calls.push_back("collapse"); }
  void rewardActionSentByBridge(TNLBridge&) override { calls.push_back("reward"); }

  static std::string number(float value) {
    std::string text = std::to_string(value);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') {
      text.pop_back();
    }
    return text;
  }

  std::vector<std::string> calls;
};
