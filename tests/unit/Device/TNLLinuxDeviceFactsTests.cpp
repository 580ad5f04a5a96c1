#include <gtest/gtest.h>

#include <sys/utsname.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "Platform/Device/TNLLinuxDeviceFacts.h"
#include "Platform/Device/TNLLinuxNetwork.h"
#include "Platform/Device/TNLLinuxNetworkMonitor.h"
#include "Platform/Device/TNLLinuxSystem.h"
#include "Platform/Foundation/TNLNotificationCenter.h"

namespace {

namespace fs = std::filesystem;
using Facts = TNLDeviceFacts;
using TNLLinuxNetwork::InterfaceKind;

constexpr char kRouteTable[] =
    "Iface\tDestination\tGateway \tFlags\tRefCnt\tUse\tMetric\tMask\t\tMTU\tWindow\tIRTT\n"
    "wlan0\t0000A8C0\t00000000\t0001\t0\t0\t600\t00FFFFFF\t0\t0\t0\n"
    "docker0\t00000000\t00000000\t0000\t0\t0\t0\t00000000\t0\t0\t0\n"
    "wlan0\t00000000\t0100A8C0\t0003\t0\t0\t600\t00000000\t0\t0\t0\n"
    "eth0\t00000000\t0101A8C0\t0003\t0\t0\t100\t00000000\t0\t0\t0\n";

// A sysfs-like tree of one interface, removed afterwards.
class FakeInterface {
 public:
  FakeInterface(const std::string& name,
                std::initializer_list<std::pair<std::string, std::string>> files)
      : root_(fs::temp_directory_path() / ("tnl-net-" + std::to_string(::getpid()) + "-" + name)),
        name_(name) {
    fs::create_directories(root_ / name);
    for (const auto& [file, content] : files) {
      if (content == "<dir>") {
        fs::create_directories(root_ / name / file);
      } else {
        std::ofstream(root_ / name / file) << content;
      }
    }
  }
  ~FakeInterface() { fs::remove_all(root_); }
  TNLLinuxNetwork::InterfaceState state() const {
    return TNLLinuxNetwork::interfaceState(name_, root_.string());
  }

 private:
  fs::path root_;
  std::string name_;
};

TEST(TNLLinuxNetwork, DefaultRouteIsTheUsableOneOfLowestMetric) {
  const auto route = TNLLinuxNetwork::defaultRoute(kRouteTable);
  ASSERT_TRUE(route);
  EXPECT_EQ(route->interface, "eth0");
  EXPECT_TRUE(route->viaGateway);

  const auto direct = TNLLinuxNetwork::defaultRoute(
      "Iface\tDestination\tGateway\tFlags\tRefCnt\tUse\tMetric\tMask\tMTU\tWindow\tIRTT\n"
      "tun0\t00000000\t00000000\t0001\t0\t0\t50\t00000000\t0\t0\t0\n");
  ASSERT_TRUE(direct);
  EXPECT_EQ(direct->interface, "tun0");
  EXPECT_FALSE(direct->viaGateway);

  EXPECT_FALSE(TNLLinuxNetwork::defaultRoute(
      "Iface\tDestination\tGateway\tFlags\tRefCnt\tUse\tMetric\tMask\tMTU\tWindow\tIRTT\n"
      "eth0\t0000A8C0\t00000000\t0001\t0\t0\t100\t00FFFFFF\t0\t0\t0\n"));
  EXPECT_FALSE(TNLLinuxNetwork::defaultRoute(""));
}

TEST(TNLLinuxNetwork, InterfaceKindAndFlagsFollowTheRouteAndTheLink) {
  const FakeInterface wifi("wlp2s0",
                           {{"type", "1\n"}, {"operstate", "up\n"}, {"wireless", "<dir>"}});
  const FakeInterface modem(
      "cdc0",
      {{"type", "1\n"}, {"operstate", "up\n"}, {"uevent", "DEVTYPE=wwan\nINTERFACE=cdc0\n"}});
  const FakeInterface wired("enp3s0", {{"type", "1\n"}, {"operstate", "up\n"}});
  const FakeInterface unplugged("enp4s0", {{"type", "1\n"}, {"operstate", "down\n"}});
  const FakeInterface loop("lo", {{"type", "772\n"}, {"operstate", "unknown\n"}});
  EXPECT_EQ(wifi.state().kind, InterfaceKind::Wireless);
  EXPECT_EQ(modem.state().kind, InterfaceKind::Cellular);
  EXPECT_EQ(wired.state().kind, InterfaceKind::Wired);
  EXPECT_EQ(loop.state().kind, InterfaceKind::Loopback);
  EXPECT_TRUE(loop.state().up);
  EXPECT_FALSE(unplugged.state().up);

  const TNLLinuxNetwork::DefaultRoute gateway{"x", true};
  const TNLLinuxNetwork::DefaultRoute onLink{"x", false};
  EXPECT_EQ(TNLLinuxNetwork::reachabilityFlags(std::nullopt, wired.state()), 0u);
  EXPECT_EQ(TNLLinuxNetwork::reachabilityFlags(gateway, unplugged.state()), 0u);
  EXPECT_EQ(TNLLinuxNetwork::reachabilityFlags(gateway, wired.state()), Facts::kFlagReachable);
  EXPECT_EQ(TNLLinuxNetwork::reachabilityFlags(gateway, wifi.state()), Facts::kFlagReachable);
  EXPECT_EQ(TNLLinuxNetwork::reachabilityFlags(gateway, modem.state()),
            Facts::kFlagReachable | Facts::kFlagIsWWAN);
  EXPECT_EQ(TNLLinuxNetwork::reachabilityFlags(onLink, wired.state()),
            Facts::kFlagReachable | Facts::kFlagIsDirect);
  EXPECT_EQ(TNLLinuxNetwork::reachabilityFlags(onLink, loop.state()),
            Facts::kFlagReachable | Facts::kFlagIsLocalAddress | Facts::kFlagIsDirect);
}

// Network facts are kept between questions only while the kernel reports no change.
TEST(TNLLinuxNetworkMonitor, TellsOfAChangeOnlyUntilAsked) {
  TNLLinuxNetworkMonitor monitor;
  EXPECT_TRUE(monitor.changedSinceLastCall()) << "nothing is known before the first question";
  EXPECT_FALSE(monitor.changedSinceLastCall()) << "an idle machine's network has not changed";
}

TEST(TNLLinuxSystem, ParsesOsReleaseAndLocales) {
  const auto release = TNLLinuxSystem::parseOSRelease(
      "# comment\nNAME=\"Debian GNU/Linux\"\nVERSION_ID='12'\nID=debian\nPRETTY_NAME=\"A "
      "\\\"quoted\\\" name\"\n\n");
  EXPECT_EQ(release.at("NAME"), "Debian GNU/Linux");
  EXPECT_EQ(release.at("VERSION_ID"), "12");
  EXPECT_EQ(release.at("ID"), "debian");
  EXPECT_EQ(release.at("PRETTY_NAME"), "A \"quoted\" name");

  EXPECT_EQ(TNLLinuxSystem::languageTag("en_US.UTF-8@euro"), "en-US");
  EXPECT_EQ(TNLLinuxSystem::languageTag("C.UTF-8"), "");
  using TNLLinuxSystem::preferredLanguages;
  using V = std::vector<std::string>;
  EXPECT_EQ(preferredLanguages("de_CH:fr:de_CH.UTF-8", std::nullopt, std::nullopt, "de_CH.UTF-8"),
            (V{"de-CH", "fr"}));
  EXPECT_EQ(preferredLanguages("fr", std::nullopt, std::nullopt, "C.UTF-8"),
            (V{"en"}));  // C ignores LANGUAGE
  EXPECT_EQ(preferredLanguages(std::nullopt, "pt_BR.UTF-8", "es_ES", "en_GB"), (V{"pt-BR"}));
  EXPECT_EQ(preferredLanguages(std::nullopt, std::nullopt, "es_ES", "en_GB"), (V{"es-ES"}));
  EXPECT_EQ(preferredLanguages(std::nullopt, std::nullopt, std::nullopt, std::nullopt), (V{"en"}));
}

TEST(TNLLinuxDeviceFacts, ReadsThisMachineAndFallsBackForWhatLinuxLacks) {
  const auto facts = TNLDeviceFacts::linuxFacts();
  struct utsname identity {};
  ASSERT_EQ(::uname(&identity), 0);
  EXPECT_EQ(facts->kernelRelease(), identity.release);
  EXPECT_EQ(facts->hardwareMachine(), std::string(identity.machine));
  char host[256] = {};
  ASSERT_EQ(::gethostname(host, sizeof(host) - 1), 0);
  EXPECT_EQ(facts->deviceName(), host);

  const auto addresses = facts->interfaceAddresses();
  ASSERT_TRUE(addresses);
  EXPECT_TRUE(std::any_of(addresses->begin(), addresses->end(), [](const auto& a) {
    return a.name == "lo" && a.family == 2 && a.address == "127.0.0.1";
  }));
  const auto route = TNLLinuxNetwork::currentDefaultRoute();
  EXPECT_EQ(facts->primaryInterfaceName(),
            route ? std::optional<std::string>(route->interface) : std::nullopt);
  ASSERT_TRUE(facts->reachabilityFlags());
  EXPECT_EQ((*facts->reachabilityFlags() & Facts::kFlagReachable) != 0,
            route && TNLLinuxNetwork::interfaceState(route->interface).up);

  EXPECT_EQ(facts->bundleIdentifier(), "");
  EXPECT_EQ(facts->advertisingIdentifier(), "00000000-0000-0000-0000-000000000000");
  EXPECT_FALSE(facts->isAdvertisingTrackingEnabled());
  EXPECT_EQ(facts->carrierName(), std::nullopt);
  const auto location = facts->locationSource();
  EXPECT_FALSE(location->locationServicesEnabled());
  bool failed = false;
  location->requestLocation([](const auto&) {}, [&](const std::string&) { failed = true; });
  EXPECT_TRUE(failed);

  // What Linux cannot know comes from the host.
  TNLHostApplicationInfo info;
  info.bundleIdentifier = "com.example.game";
  info.advertisingTrackingEnabled = true;
  const auto hosted = TNLDeviceFacts::linuxFacts(info);
  EXPECT_EQ(hosted->bundleIdentifier(), "com.example.game");
  EXPECT_TRUE(hosted->isAdvertisingTrackingEnabled());
}

TEST(TNLLinuxDeviceFacts, ScreenAndOrientationComeFromReplaceableProviders) {
  const auto facts = TNLDeviceFacts::linuxFacts();
  ASSERT_TRUE(facts->mainScreen());
  EXPECT_EQ(facts->mainScreen()->width, 375);
  EXPECT_EQ(facts->mainScreen()->height, 667);
  EXPECT_EQ(facts->mainScreen()->scale, 2.0);
  EXPECT_EQ(facts->deviceOrientation(), Facts::Orientation::Portrait);

  TNLLinuxDeviceFacts::setScreenProvider([] { return Facts::ScreenMetrics{1280, 720, 1.0}; });
  TNLLinuxDeviceFacts::setOrientationProvider([] { return Facts::Orientation::LandscapeLeft; });
  EXPECT_EQ(facts->mainScreen()->width, 1280);
  EXPECT_EQ(facts->deviceOrientation(), Facts::Orientation::LandscapeLeft);
  TNLLinuxDeviceFacts::setScreenProvider([] { return std::nullopt; });
  EXPECT_FALSE(facts->mainScreen());

  TNLLinuxDeviceFacts::setScreenProvider(nullptr);
  EXPECT_EQ(facts->mainScreen()->height, 667);
}

TEST(TNLDeviceFacts, SettingTheVolumePostsTheSystemVolumeNotification) {
  const auto facts = TNLDeviceFacts::linuxFacts();
  EXPECT_EQ(facts->outputVolume(), 1.0f);
  std::vector<TNLNotification> seen;
  const auto center = TNLNotificationCenter::defaultCenter();
  center->addObserver(&seen, "AVSystemController_SystemVolumeDidChangeNotification", nullptr,
                      [&](const TNLNotification& n) { seen.push_back(n); });
  facts->setOutputVolume(0.25f);
  facts->setOutputVolume(3.0f);
  center->removeObserver(&seen);
  EXPECT_EQ(facts->outputVolume(), 1.0f);
  ASSERT_EQ(seen.size(), 2u);
  EXPECT_EQ(seen[0].object, facts.get());
  EXPECT_EQ(seen[0].userInfo.at("AVSystemController_AudioVolumeNotificationParameter"), 0.25f);
  EXPECT_EQ(seen[1].userInfo.at("AVSystemController_AudioVolumeNotificationParameter"), 1.0f);
}

}  // namespace
