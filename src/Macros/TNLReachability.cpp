#include "Macros/TNLReachability.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <chrono>

#include "Platform/Device/TNLCurrentDeviceFacts.h"
#include "Platform/Foundation/TNLFormat.h"
#include "Platform/Foundation/TNLNotificationCenter.h"
#include "Platform/Foundation/TNLPlatformLog.h"
#include "Platform/Foundation/TNLTimer.h"
#include "TarnelAd/TNLConstants.h"

namespace {

using Facts = TNLDeviceFacts;

// How often a started notifier looks at the flags.
constexpr std::chrono::milliseconds kNotifierInterval{500};

bool isLoopback(const sockaddr* address) {
  if (address->sa_family == AF_INET) {
    const auto* ipv4 = reinterpret_cast<const sockaddr_in*>(address);
    return (ntohl(ipv4->sin_addr.s_addr) >> 24) == 127;
  }
  const auto* ipv6 = reinterpret_cast<const sockaddr_in6*>(address);
  return IN6_IS_ADDR_LOOPBACK(&ipv6->sin6_addr);
}

}  // namespace

TNLReachability::TNLReachability(bool loopback) : loopback_(loopback) {}

TNLReachability::~TNLReachability() {
  stopNotifier();
}

std::shared_ptr<TNLReachability> TNLReachability::reachabilityWithHostName(
    const std::string& hostName) {
  if (hostName.empty()) {
    return nullptr;
  }
  in_addr ipv4{};
  in6_addr ipv6{};
  const bool loopback =
      hostName == "localhost" ||
      (::inet_pton(AF_INET, hostName.c_str(), &ipv4) == 1 && (ntohl(ipv4.s_addr) >> 24) == 127) ||
      (::inet_pton(AF_INET6, hostName.c_str(), &ipv6) == 1 && IN6_IS_ADDR_LOOPBACK(&ipv6));
  return std::shared_ptr<TNLReachability>(new TNLReachability(loopback));
}

std::shared_ptr<TNLReachability> TNLReachability::reachabilityWithAddress(const sockaddr* address) {
  if (address == nullptr || (address->sa_family != AF_INET && address->sa_family != AF_INET6)) {
    return nullptr;
  }
  return std::shared_ptr<TNLReachability>(new TNLReachability(isLoopback(address)));
}

std::shared_ptr<TNLReachability> TNLReachability::reachabilityForInternetConnection() {
  sockaddr_in zeroAddress{};
  zeroAddress.sin_family = AF_INET;
  return reachabilityWithAddress(reinterpret_cast<const sockaddr*>(&zeroAddress));
}

std::optional<uint32_t> TNLReachability::flags() const {
  if (loopback_) {
    return Facts::kFlagReachable | Facts::kFlagIsLocalAddress | Facts::kFlagIsDirect;
  }
  return TNLCurrentDeviceFacts()->reachabilityFlags();
}

long TNLReachability::currentReachabilityStatus() const {
  const auto current = flags();
  return current ? networkStatusForFlags(*current) : NotReachable;
}

long TNLReachability::networkStatusForFlags(uint32_t flags) const {
  const auto bit = [flags](uint32_t mask, char letter) {
    return (flags & mask) != 0 ? letter : '-';
  };
  const std::string line =
      TNLFormat("Reachability Flag Status: %c%c %c%c%c%c%c%c%c %s\n", bit(Facts::kFlagIsWWAN, 'W'),
                bit(Facts::kFlagReachable, 'R'), bit(Facts::kFlagTransientConnection, 't'),
                bit(Facts::kFlagConnectionRequired, 'c'), bit(Facts::kFlagConnectionOnTraffic, 'C'),
                bit(Facts::kFlagInterventionRequired, 'i'),
                bit(Facts::kFlagConnectionOnDemand, 'D'), bit(Facts::kFlagIsLocalAddress, 'l'),
                bit(Facts::kFlagIsDirect, 'd'), "networkStatusForFlags");
  // The platform log ends every entry itself, so the format's own line break is not repeated.
  TNLPlatformLog(line.substr(0, line.size() - 1));

  if ((flags & Facts::kFlagReachable) == 0) {
    return NotReachable;
  }
  long status = NotReachable;
  if ((flags & Facts::kFlagConnectionRequired) == 0) {
    status = ReachableViaWiFi;
  }
  if ((flags & (Facts::kFlagConnectionOnDemand | Facts::kFlagConnectionOnTraffic)) != 0 &&
      (flags & Facts::kFlagInterventionRequired) == 0) {
    status = ReachableViaWiFi;
  }
  if ((flags & Facts::kFlagIsWWAN) != 0) {
    status = ReachableViaWWAN;
  }
  return status;
}

bool TNLReachability::connectionRequired() const {
  const auto current = flags();
  return current && (*current & Facts::kFlagConnectionRequired) != 0;
}

bool TNLReachability::startNotifier() {
  std::lock_guard lock(mutex_);
  if (notifier_) {
    return true;
  }
  const std::weak_ptr<TNLReachability> weakSelf = weak_from_this();
  auto last = std::make_shared<std::optional<uint32_t>>(flags());
  notifier_ = TNLTimer::scheduledTimer(kNotifierInterval, true, [weakSelf, last] {
    const auto self = weakSelf.lock();
    if (!self) {
      return;
    }
    const auto now = self->flags();
    if (now != *last) {
      *last = now;
      TNLNotificationCenter::defaultCenter()->post(kReachabilityChangedNotification, self.get());
    }
  });
  return notifier_ != nullptr;
}

void TNLReachability::stopNotifier() {
  std::shared_ptr<TNLTimer> notifier;
  {
    std::lock_guard lock(mutex_);
    notifier.swap(notifier_);
  }
  if (notifier) {
    notifier->invalidate();
  }
}
