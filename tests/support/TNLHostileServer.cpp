#include "support/TNLHostileServer.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <stdexcept>

namespace {

bool sendAll(int fd, const char* data, size_t size) {
  while (size > 0) {
    const ssize_t sent = ::send(fd, data, size, MSG_NOSIGNAL);
    if (sent <= 0) {
      return false;
    }
    data += sent;
    size -= static_cast<size_t>(sent);
  }
  return true;
}

bool sendAll(int fd, const std::string& text) {
  return sendAll(fd, text.data(), text.size());
}

// Reads the request head; returns its path without the query, or "" when none arrived.
std::string readPath(int fd) {
  std::string head;
  char buffer[4096];
  while (head.find("\r\n\r\n") == std::string::npos && head.size() < 65536) {
    const ssize_t got = ::recv(fd, buffer, sizeof(buffer), 0);
    if (got <= 0) {
      return "";
    }
    head.append(buffer, static_cast<size_t>(got));
  }
  const size_t start = head.find(' ');
  const size_t end = head.find_first_of(" ?", start + 1);
  if (start == std::string::npos || end == std::string::npos) {
    return "";
  }
  return head.substr(start + 1, end - start - 1);
}

std::string statusLine(const std::string& contentType, const std::string& extra) {
  return "HTTP/1.1 200 OK\r\nContent-Type: " + contentType + "\r\nConnection: close\r\n" + extra +
         "\r\n";
}

// Streams a gzip member of `inflated` zero bytes while the client reads.
void sendGzipBomb(int fd, size_t inflated) {
  z_stream stream{};
  if (deflateInit2(&stream, 9, Z_DEFLATED, 15 + 16, 9, Z_DEFAULT_STRATEGY) != Z_OK) {
    return;
  }
  static const std::string zeros(1 << 16, '\0');
  std::string out(1 << 16, '\0');
  bool open = true;
  while (open) {
    const size_t chunk = std::min(inflated, zeros.size());
    inflated -= chunk;
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(zeros.data()));
    stream.avail_in = static_cast<uInt>(chunk);
    const int flush = inflated == 0 ? Z_FINISH : Z_NO_FLUSH;
    do {
      stream.next_out = reinterpret_cast<Bytef*>(out.data());
      stream.avail_out = static_cast<uInt>(out.size());
      deflate(&stream, flush);
      const size_t produced = out.size() - stream.avail_out;
      if (produced > 0 && !sendAll(fd, out.data(), produced)) {
        open = false;
        break;
      }
    } while (stream.avail_out == 0);
    open = open && inflated > 0;
  }
  deflateEnd(&stream);
}

}  // namespace

TNLHostileServer::TNLHostileServer() {
  listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof(address);
  int pipe[2];
  if (listener_ < 0 || ::bind(listener_, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
      ::listen(listener_, 128) != 0 ||
      ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length) != 0 ||
      ::pipe2(pipe, O_CLOEXEC) != 0) {
    throw std::runtime_error("hostile server could not listen on 127.0.0.1");
  }
  port_ = ntohs(address.sin_port);
  wakeRead_ = pipe[0];
  wakeWrite_ = pipe[1];
  acceptor_ = std::thread([this] { acceptLoop(); });
}

TNLHostileServer::~TNLHostileServer() {
  stopping_ = true;
  [[maybe_unused]] const ssize_t woken = ::write(wakeWrite_, "x", 1);
  acceptor_.join();
  std::vector<std::thread> connections;
  {
    std::lock_guard lock(mutex_);
    for (const int fd : sockets_) {
      ::shutdown(fd, SHUT_RDWR);  // unblocks a send or receive in progress
    }
    connections.swap(connections_);
  }
  for (auto& connection : connections) {
    connection.join();
  }
  for (const int fd : sockets_) {
    ::close(fd);
  }
  ::close(listener_);
  ::close(wakeRead_);
  ::close(wakeWrite_);
}

void TNLHostileServer::on(const std::string& path, Route route) {
  std::lock_guard lock(mutex_);
  routes_[path] = std::move(route);
}

std::string TNLHostileServer::url(const std::string& path) const {
  return "http://127.0.0.1:" + std::to_string(port_) + path;
}

size_t TNLHostileServer::requestsTo(const std::string& path) const {
  std::lock_guard lock(mutex_);
  const auto it = hits_.find(path);
  return it == hits_.end() ? 0 : it->second;
}

void TNLHostileServer::acceptLoop() {
  while (!stopping_) {
    pollfd fds[2] = {{listener_, POLLIN, 0}, {wakeRead_, POLLIN, 0}};
    if (::poll(fds, 2, -1) <= 0 || (fds[1].revents & POLLIN) != 0) {
      continue;
    }
    const int fd = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (fd < 0) {
      continue;
    }
    std::lock_guard lock(mutex_);
    sockets_.push_back(fd);
    connections_.emplace_back([this, fd] { serve(fd); });
  }
}

TNLHostileServer::Route TNLHostileServer::routeFor(const std::string& path) {
  std::lock_guard lock(mutex_);
  ++hits_[path];
  const auto it = routes_.find(path);
  if (it == routes_.end()) {
    Route notFound;
    notFound.body = "not found";
    return notFound;
  }
  return it->second;
}

void TNLHostileServer::serve(int fd) {
  const std::string path = readPath(fd);
  if (path.empty()) {
    return;
  }
  const Route route = routeFor(path);
  // Waits `wait`, or until the server stops; false when it stops.
  const auto pause = [this](int waitMs) {
    pollfd wake{wakeRead_, POLLIN, 0};
    ::poll(&wake, 1, waitMs);
    return !stopping_;
  };
  switch (route.behaviour) {
    case Behaviour::body:
      sendAll(fd, statusLine(route.contentType,
                             "Content-Length: " + std::to_string(route.body.size()) + "\r\n") +
                      route.body);
      break;
    case Behaviour::endlessBody: {
      const std::string block(1 << 16, ' ');
      if (sendAll(fd, statusLine(route.contentType, ""))) {
        while (!stopping_ && sendAll(fd, block)) {
        }
      }
      break;
    }
    case Behaviour::gzipBomb:
      if (sendAll(fd, statusLine(route.contentType, "Content-Encoding: gzip\r\n"))) {
        sendGzipBomb(fd, route.inflatedBytes);
      }
      break;
    case Behaviour::cutOff:
      sendAll(fd,
              statusLine(route.contentType,
                         "Content-Length: " + std::to_string(route.body.size() * 2 + 1) + "\r\n") +
                  route.body);
      break;
    case Behaviour::drip:
      if (sendAll(fd, statusLine(route.contentType, "Content-Length: 1000000\r\n"))) {
        while (pause(static_cast<int>(route.interval.count())) && sendAll(fd, " ")) {
        }
      }
      break;
    case Behaviour::silent:
      pause(-1);
      break;
    case Behaviour::redirectLoop:
      sendAll(fd, "HTTP/1.1 302 Found\r\nLocation: " + path +
                      "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
      break;
  }
  ::shutdown(fd, SHUT_WR);
}
