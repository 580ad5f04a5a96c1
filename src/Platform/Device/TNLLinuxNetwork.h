#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TarnelAd/TNLDeviceFacts.h"

// What Linux tells about the network, read the way the library needs it: the default route in
// place of the platform's Wi-Fi interface, and reachability flags derived from that route and the
// kind of interface it leaves through.
namespace TNLLinuxNetwork {

struct DefaultRoute {
  std::string interface;
  bool viaGateway = false;
};

enum class InterfaceKind { Loopback, Wired, Wireless, Cellular, Other };

struct InterfaceState {
  InterfaceKind kind = InterfaceKind::Other;
  bool up = true;
};

// The usable IPv4 default route of the lowest metric in the text of /proc/net/route.
std::optional<DefaultRoute> defaultRoute(std::string_view routeTable);
// The default route of this machine.
std::optional<DefaultRoute> currentDefaultRoute();

// The kind and link state of an interface, from its sysfs directory under `sysClassNet`.
InterfaceState interfaceState(const std::string& name,
                              const std::string& sysClassNet = "/sys/class/net");

// Reachable when a default route leaves through a live interface; is WWAN for cellular modems;
// is direct when the route needs no gateway; is local (and direct) for loopback.
uint32_t reachabilityFlags(const std::optional<DefaultRoute>& route, const InterfaceState& state);

// Every interface address of the machine (getifaddrs); null when the list cannot be read.
std::optional<std::vector<TNLDeviceFacts::InterfaceAddress>> interfaceAddresses();

// What the machine's network is now: read again only after the network monitor told of a change.
struct Snapshot {
  std::optional<DefaultRoute> route;
  InterfaceState routeInterface;  // of the default route's interface, when there is one
  std::optional<std::vector<TNLDeviceFacts::InterfaceAddress>> addresses;
};
std::shared_ptr<const Snapshot> currentSnapshot();

}  // namespace TNLLinuxNetwork
