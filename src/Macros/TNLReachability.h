#pragma once

#include <sys/socket.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

class TNLTimer;

// A network reachability test for one target. On Linux every target other than a loopback
// address reports the flags of the internet connection, which the device facts derive from the
// default route; loopback targets are reachable, local and direct.
class TNLReachability : public std::enable_shared_from_this<TNLReachability> {
 public:
  enum NetworkStatus : long { NotReachable = 0, ReachableViaWiFi = 1, ReachableViaWWAN = 2 };

  // Null when the target cannot be tested (an empty host name, an address of another family).
  static std::shared_ptr<TNLReachability> reachabilityWithHostName(const std::string& hostName);
  static std::shared_ptr<TNLReachability> reachabilityWithAddress(const sockaddr* address);
  // The all-zero IPv4 address: the internet connection as a whole.
  static std::shared_ptr<TNLReachability> reachabilityForInternetConnection();

  ~TNLReachability();
  TNLReachability(const TNLReachability&) = delete;
  TNLReachability& operator=(const TNLReachability&) = delete;

  // NotReachable when the flags cannot be read.
  long currentReachabilityStatus() const;
  // Prints the flag line to the platform log whatever the log switch says, then maps the flags.
  long networkStatusForFlags(uint32_t flags) const;
  bool connectionRequired() const;

  // Watches the flags from the main loop and posts kReachabilityChangedNotification, with this
  // object as the sender, when they change. True when the watch started.
  bool startNotifier();
  void stopNotifier();

 private:
  explicit TNLReachability(bool loopback);
  std::optional<uint32_t> flags() const;

  const bool loopback_;
  mutable std::mutex mutex_;
  std::shared_ptr<TNLTimer> notifier_;
};
