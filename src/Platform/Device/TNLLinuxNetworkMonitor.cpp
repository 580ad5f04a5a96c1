#include "Platform/Device/TNLLinuxNetworkMonitor.h"

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "Platform/Foundation/TNLNoDestructor.h"

TNLLinuxNetworkMonitor& TNLLinuxNetworkMonitor::shared() {
  static TNLNoDestructor<TNLLinuxNetworkMonitor> monitor;
  return *monitor;
}

TNLLinuxNetworkMonitor::TNLLinuxNetworkMonitor()
    : socket_(::socket(AF_NETLINK, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, NETLINK_ROUTE)) {
  if (socket_ < 0) {
    return;
  }
  sockaddr_nl address{};
  address.nl_family = AF_NETLINK;
  address.nl_groups =
      RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR | RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE;
  if (::bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
    ::close(socket_);
    socket_ = -1;
  }
}

TNLLinuxNetworkMonitor::~TNLLinuxNetworkMonitor() {
  if (socket_ >= 0) {
    ::close(socket_);
  }
}

bool TNLLinuxNetworkMonitor::changedSinceLastCall() {
  std::lock_guard lock(mutex_);
  if (socket_ < 0) {
    return true;
  }
  bool changed = first_;
  first_ = false;
  // The messages themselves do not matter, only that one came; reading them all leaves the
  // socket empty for the next question.
  std::array<char, 8192> buffer{};
  while (true) {
    const ssize_t length = ::recv(socket_, buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (length > 0) {
      changed = true;
      continue;
    }
    if (length < 0 && errno == EINTR) {
      continue;
    }
    // ENOBUFS: the kernel dropped messages, so anything may have changed.
    if (length < 0 && errno == ENOBUFS) {
      changed = true;
      continue;
    }
    return changed;
  }
}
