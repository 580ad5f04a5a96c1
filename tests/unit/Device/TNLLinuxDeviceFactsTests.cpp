#include <gtest/gtest.h>

#include <sys/utsname.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>

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

// Writes a sysfs-like tree of interfaces ("<dir>" makes a directory) and reads their states.
std::map<std::string, TNLLinuxNetwork::InterfaceState> interfaceStates(
    const std::map<std::string, std::map<std::string, std::string>>& tree) {
  const fs::path root = fs::temp_directory_path() / ("tnl-net-" + std::to_string(::getpid()));
  std::map<std::string, TNLLinuxNetwork::InterfaceState> states;
  for (const auto& [name, files] : tree) {
    fs::create_directories(root / name);
    for (const auto& [file, content] : files) {
      if (content == "<dir>") {
        fs::create_directories(root / name / file);
      } else {
        std::ofstream(root / name / file) << content;
      }
    }
    states.emplace(name, TNLLinuxNetwork::interfaceState(name, root.string()));
  }
  fs::remove_all(root);
  return states;
}

TEST(TNLLinuxNetwork, DefaultRouteIsTheUsableOneOfLowestMetric) {
  const std::string head =
      "Iface\tDestination\tGateway\tFlags\tRefCnt\tUse\tMetric\tMask\tMTU\tWindow\tIRTT\n";
  using Route = std::optional<TNLLinuxNetwork::DefaultRoute>;
  const std::pair<std::string, Route> cases[] = {
      {kRouteTable, TNLLinuxNetwork::DefaultRoute{"eth0", true}},
      {head + "tun0\t00000000\t00000000\t0001\t0\t0\t50\t00000000\t0\t0\t0\n",
       TNLLinuxNetwork::DefaultRoute{"tun0", false}},
      {head + "eth0\t0000A8C0\t00000000\t0001\t0\t0\t100\t00FFFFFF\t0\t0\t0\n", std::nullopt},
      {"", std::nullopt},
  };
  for (const auto& [table, expected] : cases) {
    const auto route = TNLLinuxNetwork::defaultRoute(table);
    ASSERT_EQ(route.has_value(), expected.has_value()) << table;
    if (route) {
      EXPECT_EQ(route->interface, expected->interface);
      EXPECT_EQ(route->viaGateway, expected->viaGateway);
    }
  }
}

TEST(TNLLinuxNetwork, InterfaceKindAndFlagsFollowTheRouteAndTheLink) {
  const auto states = interfaceStates({
      {"wlp2s0", {{"type", "1\n"}, {"operstate", "up\n"}, {"wireless", "<dir>"}}},
      {"cdc0",
       {{"type", "1\n"}, {"operstate", "up\n"}, {"uevent", "DEVTYPE=wwan\nINTERFACE=cdc0\n"}}},
      {"enp3s0", {{"type", "1\n"}, {"operstate", "up\n"}}},
      {"enp4s0", {{"type", "1\n"}, {"operstate", "down\n"}}},
      {"lo", {{"type", "772\n"}, {"operstate", "unknown\n"}}},
  });
  const TNLLinuxNetwork::DefaultRoute gateway{"x", true};
  const TNLLinuxNetwork::DefaultRoute onLink{"x", false};
  const uint32_t R = Facts::kFlagReachable;
  struct Case {
    std::string name;
    InterfaceKind kind;
    uint32_t viaGateway, direct;  // the flags with each kind of default route
  };
  const Case cases[] = {
      {"wlp2s0", InterfaceKind::Wireless, R, R | Facts::kFlagIsDirect},
      {"cdc0", InterfaceKind::Cellular, R | Facts::kFlagIsWWAN,
       R | Facts::kFlagIsWWAN | Facts::kFlagIsDirect},
      {"enp3s0", InterfaceKind::Wired, R, R | Facts::kFlagIsDirect},
      {"enp4s0", InterfaceKind::Wired, 0, 0},
      {"lo", InterfaceKind::Loopback, R | Facts::kFlagIsLocalAddress | Facts::kFlagIsDirect,
       R | Facts::kFlagIsLocalAddress | Facts::kFlagIsDirect},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const auto& state = states.at(c.name);
    EXPECT_EQ(state.kind, c.kind);
    EXPECT_EQ(TNLLinuxNetwork::reachabilityFlags(gateway, state), c.viaGateway);
    EXPECT_EQ(TNLLinuxNetwork::reachabilityFlags(onLink, state), c.direct);
    EXPECT_EQ(TNLLinuxNetwork::reachabilityFlags(std::nullopt, state), 0u);
  }
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

  // What Linux cannot know comes from the host.
  EXPECT_EQ(facts->bundleIdentifier(), "");
  EXPECT_FALSE(facts->isAdvertisingTrackingEnabled());
  bool failed = false;
  facts->locationSource()->requestLocation([](const auto&) {},
                                           [&](const std::string&) { failed = true; });
  EXPECT_TRUE(failed);
  TNLHostApplicationInfo info;
  info.bundleIdentifier = "com.example.game";
  info.advertisingTrackingEnabled = true;
  const auto hosted = TNLDeviceFacts::linuxFacts(info);
  EXPECT_EQ(hosted->bundleIdentifier(), "com.example.game");
  EXPECT_TRUE(hosted->isAdvertisingTrackingEnabled());
}

// The volume is clamped to [0, 1], and each setting is announced with the new value.
TEST(TNLDeviceFacts, SettingTheVolumePostsTheSystemVolumeNotification) {
  const auto facts = TNLDeviceFacts::linuxFacts();
  std::vector<float> seen;
  const auto center = TNLNotificationCenter::defaultCenter();
  center->addObserver(
      &seen, "AVSystemController_SystemVolumeDidChangeNotification", facts.get(),
      [&](const TNLNotification& n) {
        seen.push_back(
            n.userInfo.at("AVSystemController_AudioVolumeNotificationParameter").get<float>());
      });
  facts->setOutputVolume(0.25f);
  facts->setOutputVolume(3.0f);
  center->removeObserver(&seen);
  EXPECT_EQ(facts->outputVolume(), 1.0f);
  EXPECT_EQ(seen, (std::vector<float>{0.25f, 1.0f}));
}

}  // namespace
