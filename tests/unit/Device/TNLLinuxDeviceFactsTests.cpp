#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>

#include "Platform/Device/TNLLinuxDeviceFacts.h"
#include "Platform/Device/TNLLinuxNetwork.h"
#include "Platform/Device/TNLLinuxSystem.h"

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

TEST(TNLLinuxSystem, ParsesOsReleaseAndLocales) {
  EXPECT_EQ(
      TNLLinuxSystem::parseOSRelease("# c\nVERSION_ID='12'\nPRETTY_NAME=\"A \\\"q\\\" n\"\n\n"),
      (std::map<std::string, std::string>{{"VERSION_ID", "12"}, {"PRETTY_NAME", "A \"q\" n"}}));
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

}  // namespace
