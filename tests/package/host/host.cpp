// A host application built against the installed package, outside the source tree: it loads an
// interstitial and a rewarded ad, without a display, from the ad service whose base URL it is
// given, and prints each callback. Exit status 0 when both were ready.

#include <chrono>
#include <condition_variable>
#include <iostream>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include <TarnelAd/TarnelAd.h>
#ifdef TNL_HOST_GTK
#include <TarnelAd/Gtk/TNLGtkToolkit.h>
#endif

namespace {

class Host : public TNLViewController,
             public TNLInterstitialAdDelegate,
             public TNLRewardedAdDelegate {
 public:
  void onInterstitialAdReadyForZone(const std::string& zone) override {
    report("ready interstitial " + zone, true);
  }
  void onInterstitialAdFailedForZone(const std::string& zone) override {
    report("failed interstitial " + zone, false);
  }
  void onRewardedAdReadyForZone(const std::string& zone) override {
    report("ready rewarded " + zone, true);
  }
  void onRewardedAdFailedForZone(const std::string& zone) override {
    report("failed rewarded " + zone, false);
  }

  // Waits for the next callback (ready and failed arrive on the library's network thread).
  bool nextWasReady() {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, std::chrono::seconds(30), [this] { return ready_.has_value(); });
    return std::exchange(ready_, std::nullopt).value_or(false);
  }

 private:
  void report(const std::string& line, bool ready) {
    std::lock_guard lock(mutex_);
    std::cout << line << std::endl;
    ready_ = ready;
    changed_.notify_all();
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::optional<bool> ready_;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: host MANIFEST-BASE-URL\n";
    return 2;
  }
#ifdef TNL_HOST_GTK
  std::cout << "GTK backend " << (TNLGtkToolkit::isInstalled() ? "installed" : "linked") << "\n";
#endif
  TNLSetup::setManifestBaseURL(argv[1]);
  auto host = std::make_shared<Host>();
  TNLInterstitialAd::setInterstitialAdDelegate(host, "tarnel-demo");
  TNLRewardedAd::setRewardedAdDelegate(host, "tarnel-demo");

  TNLInterstitialAd::loadInterstitialAdForZone("level-end");
  const bool interstitial = host->nextWasReady();
  TNLRewardedAd::loadRewardedAdForZone("extra-life");
  return interstitial && host->nextWasReady() ? 0 : 1;
}
