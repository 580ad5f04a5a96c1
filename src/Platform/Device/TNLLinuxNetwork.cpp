#include "Platform/Device/TNLLinuxNetwork.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if_arp.h>
#include <netinet/in.h>
#include <sys/stat.h>

#include <array>
#include <charconv>
#include <limits>
#include <memory>
#include <mutex>

#include "Platform/Device/TNLLinuxNetworkMonitor.h"
#include "Platform/Device/TNLLinuxSystem.h"
#include "Platform/Foundation/TNLNoDestructor.h"
#include "Platform/Foundation/TNLStrings.h"

namespace TNLLinuxNetwork {

namespace {

constexpr unsigned kRouteUp = 0x1;       // RTF_UP
constexpr unsigned kRouteGateway = 0x2;  // RTF_GATEWAY

std::vector<std::string> fields(std::string_view line) {
  std::vector<std::string> out;
  size_t i = 0;
  while (i < line.size()) {
    while (i < line.size() && (line[i] == ' ' || line[i] == '\t')) {
      ++i;
    }
    const size_t start = i;
    while (i < line.size() && line[i] != ' ' && line[i] != '\t') {
      ++i;
    }
    if (i > start) {
      out.emplace_back(line.substr(start, i - start));
    }
  }
  return out;
}

std::optional<unsigned long> hexNumber(const std::string& text) {
  unsigned long value = 0;
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
  if (ec != std::errc() || end != text.data() + text.size()) {
    return std::nullopt;
  }
  return value;
}

std::optional<long> decimalNumber(const std::string& text) {
  long value = 0;
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (ec != std::errc() || end != text.data() + text.size()) {
    return std::nullopt;
  }
  return value;
}

bool exists(const std::string& path) {
  struct stat info {};
  return ::stat(path.c_str(), &info) == 0;
}

std::string firstLine(const std::optional<std::string>& text) {
  if (!text) {
    return "";
  }
  return TNLStrings::trimWhitespaceAndNewlines(TNLStrings::splitLines(*text).front());
}

}  // namespace

std::optional<DefaultRoute> defaultRoute(std::string_view routeTable) {
  std::optional<DefaultRoute> best;
  long bestMetric = std::numeric_limits<long>::max();
  const auto lines = TNLStrings::splitLines(routeTable);
  // The first line names the columns: Iface Destination Gateway Flags RefCnt Use Metric Mask ...
  for (size_t i = 1; i < lines.size(); ++i) {
    const auto columns = fields(lines[i]);
    if (columns.size() < 8) {
      continue;
    }
    const auto destination = hexNumber(columns[1]);
    const auto gateway = hexNumber(columns[2]);
    const auto flags = hexNumber(columns[3]);
    const auto metric = decimalNumber(columns[6]);
    const auto mask = hexNumber(columns[7]);
    if (!destination || !gateway || !flags || !metric || !mask) {
      continue;
    }
    if (*destination != 0 || *mask != 0 || (*flags & kRouteUp) == 0) {
      continue;
    }
    if (*metric < bestMetric) {
      bestMetric = *metric;
      best = DefaultRoute{columns[0], (*flags & kRouteGateway) != 0 && *gateway != 0};
    }
  }
  return best;
}

std::optional<DefaultRoute> currentDefaultRoute() {
  const auto table = TNLLinuxSystem::readFile("/proc/net/route");
  return table ? defaultRoute(*table) : std::nullopt;
}

InterfaceState interfaceState(const std::string& name, const std::string& sysClassNet) {
  const std::string directory = sysClassNet + "/" + name;
  InterfaceState state;

  const std::string operstate = firstLine(TNLLinuxSystem::readFile(directory + "/operstate"));
  // "unknown" is what tunnels and many virtual links report while they carry traffic.
  state.up = operstate.empty() || operstate == "up" || operstate == "unknown";

  const auto type = decimalNumber(firstLine(TNLLinuxSystem::readFile(directory + "/type")));
  const std::string uevent = TNLLinuxSystem::readFile(directory + "/uevent").value_or("");
  const bool wwanDevice = TNLStrings::contains(uevent, "DEVTYPE=wwan");
  const bool cellularName =
      TNLStrings::hasPrefix(name, "wwan") || TNLStrings::hasPrefix(name, "rmnet") ||
      TNLStrings::hasPrefix(name, "ppp") || TNLStrings::hasPrefix(name, "ccmni");

  if (name == "lo" || type == ARPHRD_LOOPBACK) {
    state.kind = InterfaceKind::Loopback;
  } else if (wwanDevice || cellularName || type == ARPHRD_PPP) {
    state.kind = InterfaceKind::Cellular;
  } else if (exists(directory + "/wireless") || exists(directory + "/phy80211") ||
             TNLStrings::contains(uevent, "DEVTYPE=wlan")) {
    state.kind = InterfaceKind::Wireless;
  } else if (type == ARPHRD_ETHER) {
    state.kind = InterfaceKind::Wired;
  }
  return state;
}

uint32_t reachabilityFlags(const std::optional<DefaultRoute>& route, const InterfaceState& state) {
  if (!route || !state.up) {
    return 0;
  }
  uint32_t flags = TNLDeviceFacts::kFlagReachable;
  if (state.kind == InterfaceKind::Cellular) {
    flags |= TNLDeviceFacts::kFlagIsWWAN;
  }
  if (state.kind == InterfaceKind::Loopback) {
    flags |= TNLDeviceFacts::kFlagIsLocalAddress | TNLDeviceFacts::kFlagIsDirect;
  }
  if (!route->viaGateway) {
    flags |= TNLDeviceFacts::kFlagIsDirect;
  }
  return flags;
}

std::optional<std::vector<TNLDeviceFacts::InterfaceAddress>> interfaceAddresses() {
  ifaddrs* list = nullptr;
  if (::getifaddrs(&list) != 0) {
    return std::nullopt;
  }
  const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> owner(list, &::freeifaddrs);
  std::vector<TNLDeviceFacts::InterfaceAddress> addresses;
  for (const ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
    if (entry->ifa_addr == nullptr || entry->ifa_name == nullptr) {
      continue;
    }
    TNLDeviceFacts::InterfaceAddress address;
    address.name = entry->ifa_name;
    address.family = entry->ifa_addr->sa_family;
    if (address.family == AF_INET) {
      std::array<char, INET_ADDRSTRLEN> text{};
      const auto* ipv4 = reinterpret_cast<const sockaddr_in*>(entry->ifa_addr);
      if (::inet_ntop(AF_INET, &ipv4->sin_addr, text.data(), text.size()) != nullptr) {
        address.address = text.data();
      }
    }
    addresses.push_back(std::move(address));
  }
  return addresses;
}

std::shared_ptr<const Snapshot> currentSnapshot() {
  struct Cache {
    std::mutex mutex;
    std::shared_ptr<const Snapshot> snapshot;
  };
  static TNLNoDestructor<Cache> cache;
  std::lock_guard lock(cache->mutex);
  // The monitor is asked first, so that a change during the reading below is told next time.
  if (TNLLinuxNetworkMonitor::shared().changedSinceLastCall() || !cache->snapshot) {
    auto snapshot = std::make_shared<Snapshot>();
    snapshot->route = currentDefaultRoute();
    if (snapshot->route) {
      snapshot->routeInterface = interfaceState(snapshot->route->interface);
    }
    snapshot->addresses = interfaceAddresses();
    cache->snapshot = std::move(snapshot);
  }
  return cache->snapshot;
}

}  // namespace TNLLinuxNetwork
