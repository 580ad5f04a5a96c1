#pragma once

#include <mutex>

// Tells of changes to the machine's links, addresses and routes, from a netlink socket that the
// kernel writes a message to on each of them. Asking costs one non-blocking read, so facts
// derived from the network can be kept until it changes instead of being read again for every ad.
class TNLLinuxNetworkMonitor {
 public:
  // The process-wide monitor.
  static TNLLinuxNetworkMonitor& shared();

  TNLLinuxNetworkMonitor();
  ~TNLLinuxNetworkMonitor();
  TNLLinuxNetworkMonitor(const TNLLinuxNetworkMonitor&) = delete;
  TNLLinuxNetworkMonitor& operator=(const TNLLinuxNetworkMonitor&) = delete;

  // True when the network may have changed since the previous call: on the first call, after
  // any change message, when the kernel dropped messages, and always when no socket could be
  // opened (then nothing can be kept). Safe from any thread.
  bool changedSinceLastCall();

 private:
  std::mutex mutex_;
  int socket_ = -1;
  bool first_ = true;
};
