#pragma once

#include <algorithm>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Platform/Foundation/TNLMainQueue.h"
#include "Platform/Http/TNLHttpSession.h"
#include "TarnelAd/TarnelAd.h"

// Host screens for the ad tests: the view controller ads are shown from and the delegate of the
// ads, noting each callback with the thread it came on (" @http", " @main" or " @other").
class TNLTestCallLog {
 public:
  std::vector<std::string> calls() const {
    std::lock_guard lock(mutex_);
    return calls_;
  }
  // Runs the main loop until `count` callbacks have come.
  bool waitForCalls(size_t count) const {
    return TNLMainQueue::runUntil([&] { return calls().size() >= count; });
  }
  bool waitForCall(const std::string& call) const {
    return TNLMainQueue::runUntil([&] {
      const auto all = calls();
      return std::find(all.begin(), all.end(), call) != all.end();
    });
  }

 protected:
  void note(const std::string& call) {
    const char* thread = TNLHttpSession::sharedSession()->isSessionThread() ? " @http"
                         : TNLMainQueue::isMainThread()                     ? " @main"
                                                                            : " @other";
    std::lock_guard lock(mutex_);
    calls_.push_back(call + thread);
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> calls_;
};

class TNLTestFullScreenHost : public TNLViewController,
                              public TNLInterstitialAdDelegate,
                              public TNLRewardedAdDelegate,
                              public TNLTestCallLog {
 public:
  void onInterstitialAdReadyForZone(const std::string& zone) override {
    note("interstitial ready " + zone);
  }
  void onInterstitialAdFailedForZone(const std::string& zone) override {
    note("interstitial failed " + zone);
  }
  void onInterstitialAdClosedForZone(const std::string& zone) override {
    note("interstitial closed " + zone);
  }
  void onRewardedAdReadyForZone(const std::string& zone) override {
    note("rewarded ready " + zone);
  }
  void onRewardedAdFailedForZone(const std::string& zone) override {
    note("rewarded failed " + zone);
  }
  void onRewardedAdClosedForZone(const std::string& zone) override {
    note("rewarded closed " + zone);
  }
  void onRewardedAdRewardedForZone(const std::string& zone) override {
    note("rewarded reward " + zone);
  }
  void viewDidAppear(bool) override { ++appeared; }
  void viewDidDisappear(bool) override { ++disappeared; }

  int appeared = 0;
  int disappeared = 0;
};

// Banner callbacks are promised on the main thread; the banner each one names is kept.
class TNLTestBannerHost : public TNLViewController,
                          public TNLBannerAdDelegate,
                          public TNLTestCallLog {
 public:
  void onBannerAdReadyForZone(const std::shared_ptr<TNLBannerAdView>& banner,
                              const std::string& zone) override {
    noteBanner("ready " + zone, banner);
  }
  void onBannerAdFailedForZone(const std::shared_ptr<TNLBannerAdView>& banner,
                               const std::string& zone) override {
    noteBanner("failed " + zone, banner);
  }
  void onBannerAdClosedForZone(const std::shared_ptr<TNLBannerAdView>& banner,
                               const std::string& zone) override {
    noteBanner("closed " + zone, banner);
  }

  std::vector<std::shared_ptr<TNLBannerAdView>> banners;

 private:
  void noteBanner(const std::string& call, const std::shared_ptr<TNLBannerAdView>& banner) {
    note(call);
    banners.push_back(banner);
  }
};
