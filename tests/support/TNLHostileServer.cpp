#include "support/TNLHostileServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
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
  return start == std::string::npos || end == std::string::npos
             ? ""
             : head.substr(start + 1, end - start - 1);
}

std::string head(const std::string& contentType, const std::string& extra) {
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
  for (bool open = true; open;) {
    const size_t chunk = std::min(inflated, zeros.size());
    inflated -= chunk;
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(zeros.data()));
    stream.avail_in = static_cast<uInt>(chunk);
    do {
      stream.next_out = reinterpret_cast<Bytef*>(out.data());
      stream.avail_out = static_cast<uInt>(out.size());
      deflate(&stream, inflated == 0 ? Z_FINISH : Z_NO_FLUSH);
      open = sendAll(fd, out.data(), out.size() - stream.avail_out);
    } while (open && stream.avail_out == 0);
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
  if (listener_ < 0 || ::bind(listener_, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
      ::listen(listener_, 128) != 0 ||
      ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
    throw std::runtime_error("hostile server could not listen on 127.0.0.1");
  }
  port_ = ntohs(address.sin_port);
  acceptor_ = std::thread([this] { acceptLoop(); });
}

TNLHostileServer::~TNLHostileServer() {
  std::vector<std::thread> connections;
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
    ::shutdown(listener_, SHUT_RDWR);  // ends a pending accept
    for (const int fd : sockets_) {
      ::shutdown(fd, SHUT_RDWR);  // unblocks a send or receive in progress
    }
  }
  stopped_.notify_all();
  acceptor_.join();
  {
    std::lock_guard lock(mutex_);
    connections.swap(connections_);
  }
  for (auto& connection : connections) {
    connection.join();
  }
  for (const int fd : sockets_) {
    ::close(fd);
  }
  ::close(listener_);
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
  for (;;) {
    const int fd = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    std::lock_guard lock(mutex_);
    if (stopping_) {
      if (fd >= 0) {
        ::close(fd);
      }
      return;
    }
    if (fd >= 0) {
      sockets_.push_back(fd);
      connections_.emplace_back([this, fd] { serve(fd); });
    }
  }
}

void TNLHostileServer::serve(int fd) {
  const std::string path = readPath(fd);
  if (path.empty()) {
    return;
  }
  Route route{Behaviour::body, "not found"};
  {
    std::lock_guard lock(mutex_);
    ++hits_[path];
    if (const auto it = routes_.find(path); it != routes_.end()) {
      route = it->second;
    }
  }
  // Waits `wait` (for ever when negative), or until the server stops; false when it stops.
  const auto pause = [this](std::chrono::milliseconds wait) {
    std::unique_lock lock(mutex_);
    const auto stopping = [this] { return stopping_.load(); };
    return wait.count() < 0 ? (stopped_.wait(lock, stopping), false)
                            : !stopped_.wait_for(lock, wait, stopping);
  };
  const std::string& body = route.body;
  switch (route.behaviour) {
    case Behaviour::body:
      sendAll(fd,
              head(route.contentType, "Content-Length: " + std::to_string(body.size()) + "\r\n") +
                  body);
      break;
    case Behaviour::endlessBody:
      if (sendAll(fd, head(route.contentType, ""))) {
        const std::string block(1 << 16, ' ');
        while (!stopping_ && sendAll(fd, block)) {
        }
      }
      break;
    case Behaviour::gzipBomb:
      if (sendAll(fd, head(route.contentType, "Content-Encoding: gzip\r\n"))) {
        sendGzipBomb(fd, size_t{1} << 30);
      }
      break;
    case Behaviour::cutOff:
      sendAll(fd, head(route.contentType,
                       "Content-Length: " + std::to_string(body.size() * 2 + 1) + "\r\n") +
                      body);
      break;
    case Behaviour::drip:
      if (sendAll(fd, head(route.contentType, "Content-Length: 1000000\r\n"))) {
        while (pause(std::chrono::milliseconds(200)) && sendAll(fd, " ")) {
        }
      }
      break;
    case Behaviour::silent:
      pause(std::chrono::milliseconds(-1));
      break;
    case Behaviour::redirectLoop:
      sendAll(fd, "HTTP/1.1 302 Found\r\nLocation: " + path +
                      "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
      break;
  }
  ::shutdown(fd, SHUT_WR);
}
